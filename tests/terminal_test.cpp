// The program on a terminal: what it draws, and what keeps it from that.
#if defined(MC3DS_PROGRAM) && !defined(_WIN32)

#include <fstream>

#include "program.h"

// What a terminal gets, with those variables set and nothing else that matters.
static std::string OnTerminal(const std::string &variables, const std::string &arguments)
{
    const std::string line = "env -u NO_COLOR -u COLORTERM -u LC_ALL -u LC_CTYPE LANG=C " + variables + ' ' +
                             program.string() + ' ' + arguments;
    return RunCommand("script -qec '" + line + "' /dev/null < /dev/null").output;
}

using namespace chunks;

struct TerminalTest : SceneTest {};

TEST_F(TerminalTest, ColoursBoxesAndTheStatusLineFollowTheTerminal)
{
    if (RunCommand("command -v script").status != 0)
        GTEST_SKIP() << "no script";
    if (!std::filesystem::exists("/dev/pts/ptmx"))
        GTEST_SKIP() << "no /dev/pts, so no terminal can be made";
    MakeInputs();
    std::filesystem::copy_file("two.3ds", "b.3ds");
    const Bytes grey = Colour24(51, 51, 51);
    // Levels beside the limits of the table of 256 colours.
    WriteFile("edges.3ds", Scene({Chunk(0x2100, {Colour24(47, 48, 114)}),
                                  Material("A", {Finish(grey, Colour24(115, 154, 155), grey, 2)})}));
    const struct {
        const char *variables, *arguments;
        std::vector<const char *> has, hasNot;
    } rows[] = {
        {"TERM=xterm-256color",
         "--info two.3ds",
         {"\x1b[48;5;59m    \x1b[0m #333333 GLASS", "`- LID"},
         {"\x1b[48;2"}},
        {"TERM=xterm-256color", "--info edges.3ds", {"\x1b[48;5;23m", "\x1b[48;5;103m"}, {}},
        {"TERM=xterm-256color COLORTERM=truecolor", "--info two.3ds", {"\x1b[48;2;51;51;51m"}, {"\x1b[48;5"}},
        {"TERM=xterm-direct LC_ALL=C.UTF-8", "--info two.3ds", {"\x1b[48;2;51;51;51m", "└─ LID"}, {}},
        {"TERM=xterm LC_CTYPE=C.UTF-8", "--info two.3ds", {"└─ LID"}, {}},
        {"TERM=xterm LC_ALL=C LC_CTYPE=C.UTF-8", "--info two.3ds", {"`- LID"}, {}},
        {"TERM=xterm-256color NO_COLOR=1", "--info two.3ds", {"  #333333 GLASS"}, {"\x1b"}},
        {"TERM=xterm", "--info two.3ds", {"  #333333 GLASS"}, {"\x1b"}},
        {"TERM=dumb COLORTERM=truecolor", "--info two.3ds", {"  #333333 GLASS"}, {"\x1b"}},
        {"TERM=xterm",
         "two.3ds b.3ds",
         {"\r[1/2] two.3ds", "\r[2/2] b.3ds", "2 scenes: 2 converted; 4 objects"},
         {"[3/"}},
        {"TERM=xterm", "-q two.3ds b.3ds", {"\r[2/2] b.3ds  \r\r           \r"}, {}},
        {"TERM=xterm", "two.3ds b.3ds -j 2", {"\r[0/2] two.3ds", "\r[2/2] "}, {}},
        {"TERM=dumb", "two.3ds b.3ds", {"2 scenes: 2 converted"}, {"\r["}},
        {"TERM=xterm", "two.3ds b.3ds -v", {"wrote b.mcx"}, {"\r["}},
        {"TERM=xterm", "two.3ds", {"wrote two.mcx"}, {"\r["}},
    };
    for (const auto &row : rows) {
        const std::string shown = OnTerminal(row.variables, row.arguments);
        SCOPED_TRACE(std::string(row.variables) + ' ' + row.arguments);
        for (const char *part : row.has)
            EXPECT_TRUE(Has(shown, part));
        for (const char *part : row.hasNot)
            EXPECT_FALSE(Has(shown, part));
    }
}

TEST_F(TerminalTest, ALongRunHasABarAndALongNameItsEnd)
{
    if (RunCommand("command -v script").status != 0)
        GTEST_SKIP() << "no script";
    if (!std::filesystem::exists("/dev/pts/ptmx"))
        GTEST_SKIP() << "no /dev/pts, so no terminal can be made";
    MakeInputs();
    std::filesystem::copy_file("two.3ds", "b.3ds");
    // Nobody reads the first scene's output for more than a second, after which there is a bar.
    MustRun("mkfifo slow.mcx");
    std::filesystem::copy_file("two.3ds", "slow.3ds");
    const std::string slow =
        OnTerminal("TERM=xterm", "slow.3ds b.3ds two.3ds & sleep 1.2; cat slow.mcx; wait");
    EXPECT_TRUE(Has(slow, "\r[2/3] [######--------------] b.3ds"));
    EXPECT_TRUE(Has(slow, "\r[3/3] [#############-------] two.3ds"));
    // What is shown of a long name is its end, and no more than 78 columns.
    const std::string folder = std::string(60, 'd') + '/' + std::string(60, 'e');
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file("two.3ds", folder + "/last.3ds");
    const std::string shown = OnTerminal("TERM=xterm", "two.3ds " + folder + "/last.3ds");
    const size_t at = shown.find("\r[2/2] ...");
    ASSERT_NE(at, std::string::npos) << shown;
    EXPECT_EQ(shown.find("/last.3ds", at), at + 1 + 78 - 9) << shown;
}

#endif
