// Folders from untrusted archives, files that fail or vanish during a run, and runs that end early.
#if defined(MC3DS_PROGRAM) && !defined(_WIN32)

#include <chrono>
#include <thread>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

#include "program.h"

using namespace chunks;
namespace fs = std::filesystem;

struct HostileFolderTest : SceneTest {
    void SetUp() override
    {
        SceneTest::SetUp();
        MakeInputs();
    }
};

// Finds control characters of a terminal, as single bytes or as UTF-8.
static bool HasControls(const std::string &text)
{
    unsigned char before = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if ((byte < 0x20 && byte != '\n') || byte == 0x7F)
            return true;
        if (byte >= 0x80 && byte < 0xA0 && before <= 0xC2) // no later byte of a character above U+009F
            return true;
        before = byte;
    }
    return false;
}

TEST_F(HostileFolderTest, AnUnpackedFolderIsConvertedAndNothingOutsideIsTouched)
{
    WriteFile("outside.mcx", "mine");
    WriteFile("outside.h", "mine");
    fs::create_directories("archive/deep");
    fs::create_directory("elsewhere");
    fs::copy_file("two.3ds", "elsewhere/away.3ds");
    for (const char *name :
         {"archive/link.3ds", "archive/\x1B[2J.3ds", "archive/\xC2\x9B.3ds", "archive/q\"uote.3ds",
          "archive/line\nbreak.3ds", "archive/latin\xE4.3ds", "archive/deep/two.3ds", "archive/deep/b.3ds"})
        fs::copy_file("two.3ds", name);
    fs::create_symlink("../outside.mcx", "archive/link.mcx");
    fs::create_symlink("../outside.h", "archive/link.h");
    fs::create_symlink("../elsewhere", "archive/way out");
    fs::create_symlink("/dev/zero", "archive/endless.3ds");
    fs::create_symlink("/dev/zero", "archive/deep/two.vue");
    ASSERT_EQ(mkfifo("archive/pipe.3ds", 0600), 0);
    for (const char *arguments : {"", "-v", "-j 2"}) {
        SCOPED_TRACE(arguments);
        const Outcome run = Start(std::string("--recursive --header archive ") + arguments, "timeout 60 ");
        EXPECT_EQ(run.status, 1) << "a device beside a scene, and a line break in a name";
        EXPECT_FALSE(HasControls(run.said)) << run.said;
        EXPECT_EQ(ReadFile("outside.mcx") + ReadFile("outside.h"), "minemine");
        EXPECT_FALSE(fs::is_symlink("archive/link.mcx"));
        EXPECT_FALSE(fs::exists("elsewhere/away.mcx"));
        EXPECT_FALSE(fs::exists("archive/endless.mcx"));
    }
    for (const char *arguments : {"--info", "--info --json"})
        EXPECT_FALSE(HasControls(Start(std::string("--recursive archive ") + arguments, "timeout 60 ").said));
    fs::create_directory("out");
    fs::create_symlink("../elsewhere", "out/deep");
    const Outcome away = Start("--recursive archive --output-dir out", "timeout 60 ");
    EXPECT_EQ(away.status, 1);
    EXPECT_TRUE(Has(away.said, "its folder \"out/deep\" is a link"));
    EXPECT_FALSE(fs::exists("elsewhere/two.mcx"));
}

TEST_F(HostileFolderTest, ALinkThatIsNamedIsFollowed)
{
    WriteFile("outside.mcx", "mine");
    fs::create_symlink("outside.mcx", "named.mcx");
    EXPECT_EQ(Start("two.3ds -o named.mcx").status, 0);
    EXPECT_TRUE(fs::is_symlink("named.mcx"));
    EXPECT_NE(ReadFile("outside.mcx"), "mine");
    // One of the numbered files lies on another file system.
    const std::string far = "/dev/shm/mc3ds-" + fs::current_path().filename().string();
    fs::create_symlink(far, "far1.mcx");
    EXPECT_EQ(Start("two.3ds --per-object -o far.mcx").status, 0);
    EXPECT_TRUE(fs::is_symlink("far1.mcx"));
    EXPECT_EQ(ReadFile(far).find("# \n"), 0u);
    fs::remove(far);
    EXPECT_EQ(Start("two.3ds -o fresh.mcx").status, 0);
    EXPECT_EQ(fs::status("fresh.mcx").permissions() & ~fs::perms(0666), fs::perms::none);
    EXPECT_TRUE(Says(Start("two.3ds -o /proc/x.mcx").said,
                     "\"/proc/x.mcx\": folder \"/proc\" can't be written to: [A-Z][a-z]+"));
    EXPECT_TRUE(
        Has(Start("two.3ds --per-object -o /dev/null").said, "no file names can be made from \"/dev/null\""));
}

TEST_F(HostileFolderTest, WhatCannotBeReadToItsEndReplacesNothing)
{
    WriteFile("two.mcx", "old");
    WriteFile("cut.mcx", "old");
    const std::string whole = ReadFile("two.3ds");
    WriteFile("cut.3ds", whole.substr(0, whole.size() / 2));
    const std::string said = "error: the file is cut short: " + std::to_string(whole.size() / 2) + " of " +
                             std::to_string(whole.size()) + " bytes";
    Outcome run = Start("cut.3ds --summary s.json");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.said, said));
    EXPECT_TRUE(Has(ReadFile("s.json"), "the file is cut short"));
    EXPECT_NE(ReadFile("cut.mcx"), "old") << "what can be read is written";
    WriteFile("empty.3ds", "");
    EXPECT_TRUE(Has(Start("empty.3ds").said, "error: the file is empty; nothing is written"));
    WriteFile("padded.3ds", whole + std::string(100, '\0'));
    EXPECT_EQ(Start("padded.3ds").status, 0);

    fs::remove("two.vue");
    ASSERT_EQ(mkfifo("two.vue", 0600), 0);
    EXPECT_EQ(Start("two.3ds", "timeout 10 ").status, 1);
    fs::copy_file("none.3ds", "two1.3ds");
    EXPECT_EQ(Start("--per-object two.3ds two1.3ds", "timeout 10 ").status, 1);
    fs::remove("two.vue");
    fs::create_symlink("two.vue", "two.vue"); // can't be opened, although it exists
    EXPECT_EQ(Start("two.3ds --animation").status, 1);
    fs::remove("two.vue");
    fs::create_directory("two.vue"); // opens, and fails at the first read
    run = Start("two.3ds");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.said, "its animation \"two.vue\" cannot be read: Is a directory"));
    EXPECT_EQ(ReadFile("two.mcx"), "old");
}

TEST_F(HostileFolderTest, AFolderThatCannotBeReadIsNamedAndTheOthersAreConverted)
{
    if (geteuid() == 0)
        GTEST_SKIP() << "root reads all folders";
    fs::create_directories("many/shut");
    fs::copy_file("two.3ds", "many/two.3ds");
    fs::permissions("many/shut", fs::perms::none);
    const CommandResult run =
        RunCommand("{ " + Quoted(program.string()) + " --recursive many; echo status $?; }");
    fs::permissions("many/shut", fs::perms::all);
    EXPECT_TRUE(Has(run.output, "folder \"many/shut\" can't be read: "));
    EXPECT_TRUE(Has(run.output, "status 1"));
    EXPECT_TRUE(fs::exists("many/two.mcx"));
}

TEST_F(HostileFolderTest, AReaderThatLeavesEndsTheProgramQuietly)
{
    for (const char *arguments : {"--info two.3ds", "two.3ds -o -"}) {
        const CommandResult result = RunCommand("{ { sleep 0.2; " + Quoted(program.string()) + ' ' +
                                                arguments + "; echo status $? >&2; } | true; }");
        EXPECT_FALSE(Has(result.output, "error"));
        EXPECT_FALSE(Has(result.output, "wrote"));
        EXPECT_TRUE(Has(result.output, "status 0"));
    }
}

TEST_F(HostileFolderTest, ACurrentFolderThatIsGoneFailsNothingWithAbsolutePaths)
{
    const std::string here = fs::current_path().string();
    const Outcome run = Start(Quoted(here + "/two.3ds") + " -o " + Quoted(here + "/gone.mcx"),
                              "mkdir lost && cd lost && rmdir ../lost && ");
    EXPECT_EQ(run.status, 0) << run.said;
    EXPECT_TRUE(fs::exists("gone.mcx"));
    // The deleted folder can't be entered again once left, so a relative name fails.
    const std::string script = Quoted(here + "/two.3ds");
    fs::copy_file("two.3ds", "b.3ds");
    const Outcome two = Start(script + ' ' + Quoted(here + "/b.3ds") + " --preview ./p.png",
                              "mkdir lost && cd lost && rmdir ../lost && ");
    EXPECT_EQ(two.status, 1) << two.said;
    const Outcome next = Start(script + " b.3ds --output-dir " + Quoted(here + "/out"),
                               "mkdir lost && cd lost && rmdir ../lost && ");
    EXPECT_TRUE(Has(next.said, "cannot be converted: the current folder can't be entered any more"));
}

// The signal goes to the run, or to one of its workers, when a scene is done and the workers wait for pipes
// that nobody reads.
TEST_F(HostileFolderTest, ARunThatEndsEarlyLeavesItsSummaryAndNoTemporaryFiles)
{
    fs::create_directory("many");
    for (const char *scene : {"many/a.3ds", "many/b.3ds", "many/c.3ds", "many/d.3ds"})
        fs::copy_file("two.3ds", scene);
    const auto run = [](const std::string &jobs, const std::string &after) {
        for (const char *used : {"out", "tmp", "said", "s.json"})
            fs::remove_all(used);
        return RunCommand(
            "mkdir tmp out && mkfifo out/b.h out/c.h && export TMPDIR=$PWD/tmp && { " +
            Quoted(program.string()) + " --recursive many --header --output-dir out --summary s.json -v -j " +
            jobs + " >said 2>&1 & id=$!; until grep -qs 'wrote out/a.h' said && [ $(ls -A tmp | wc -l) = " +
            jobs + " ]; do sleep 0.01; done; " + after + "; wait $id; echo status $?; }");
    };
    const auto temporary = [] {
        std::string names;
        for (const char *folder : {"out", "tmp"})
            for (const fs::directory_entry &entry : fs::directory_iterator(folder))
                if (entry.path().filename().string().starts_with("."))
                    names += entry.path().string() + ' ';
        return names;
    };
    for (const char *jobs : {"1", "2"}) {
        SCOPED_TRACE(jobs);
        EXPECT_TRUE(Has(run(jobs, "kill -TERM $id").output, "status 143"));
        const std::string summary = ReadFile("s.json");
        EXPECT_TRUE(Has(summary, "\"interrupted\": true"));
        EXPECT_EQ(CountOf(summary, "\"scene\": "), 1u) << "only scenes that were converted";
        EXPECT_EQ(CountOf(summary, "\"done\": true"), 1u);
        EXPECT_EQ(temporary(), "");
    }
    const CommandResult result = run("2", "pkill -KILL -n -P $id; exec 3<>out/b.h 4<>out/c.h");
    EXPECT_TRUE(Has(result.output, "status 1"));
    EXPECT_TRUE(Has(ReadFile("said"), "its process was ended by a signal: Killed"));
    const std::string summary = ReadFile("s.json");
    EXPECT_TRUE(Has(summary, "\"failed\": 1"));
    EXPECT_EQ(CountOf(summary, "\"done\": true"), 3u);
    EXPECT_FALSE(Has(summary, "\"bytes\": 0,")) << "the killed one keeps its size";
    EXPECT_EQ(temporary(), "");
}

#endif
