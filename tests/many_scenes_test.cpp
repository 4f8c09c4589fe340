// Many scenes in one run of the program, and its warnings about odd ones.
#if defined(MC3DS_PROGRAM)

#include <algorithm>
#include <fstream>
#include <numeric>
#include <regex>
#include <set>

#include "program.h"

namespace fs = std::filesystem;
using namespace chunks;

struct ManyScenesTest : SceneTest {
    void SetUp() override
    {
        SceneTest::SetUp();
        MakeInputs();
        fs::create_directories("tree/sub");
        fs::copy_file("two.3ds", "tree/a.3ds");
        fs::copy_file("two.3ds", "tree/sub/B.3DS");
        fs::copy_file("lost.3ds", "tree/sub/c.3ds");
        fs::copy_file("lost.3ds", "tree/sub/d.3ds");
        WriteFile("tree/sub/bad.3Ds", "no scene");
        WriteFile("tree/note.txt", "no scene");
    }
};

TEST_F(ManyScenesTest, AFolderIsConvertedToTheEndWhateverFails)
{
    std::string bytes;
    for (const std::string jobs : {"", " -j 2", " -j 5", " -j 6"}) {
        SCOPED_TRACE(jobs);
        fs::remove_all("out");
        fs::remove("sum.json");
        const Outcome run = Start("--recursive tree --output-dir out --summary sum.json --no-clobber" + jobs);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(std::regex_replace(run.files, std::regex(" ?sum.json"), ""),
                  "out out/a.mcx out/sub out/sub/B.mcx out/sub/c.mcx out/sub/d.mcx");
        EXPECT_EQ(CountOf(run.said, "wrote"), 0u);
        EXPECT_TRUE(Says(run.said, "sub.bad.3Ds: error: File is not a 3DS file; nothing is written"));
        EXPECT_EQ(CountOf(run.said, ": warning: objects without a parent in the scene"), 2u) << run.said;
        EXPECT_TRUE(Says(run.said,
                         "5 scenes: 4 converted \\(2 with losses\\), 1 failed; 6 objects, "
                         "6 triangles, [0-9.]+ s\n"
                         "  2 scenes  objects without a parent in the scene \\(first: c.3ds\\)\n$"));
        const std::string summary = std::regex_replace(ReadFile("sum.json"), std::regex("\\s+"), "");
        EXPECT_TRUE(Says(summary,
                         "\"total\":\\{.*\"objects\":6,\"vertices\":18,\"triangles\":6,\"sceneObjects\":8,"));
        EXPECT_FALSE(Has(summary, "interrupted"));
        EXPECT_TRUE(ReadText("sum.json").ends_with("\n  ]\n}\n"));
        EXPECT_TRUE(Says(summary, "\"warnings\":\\[\\{[^{}]*\"scenes\":2,\"count\":2,"));
        EXPECT_TRUE(Says(summary, "bad.3Ds\",\"done\":false,\"error\":\"Fileisnot[^{}]*\"written\":\\[\\]"));
        EXPECT_TRUE(
            Says(summary, "c.3ds\",\"done\":true,[^{}]*\\{\"file\":\"out[^\"]*c.mcx\",\"bytes\":[0-9]+"));
        EXPECT_TRUE(bytes.empty() || bytes == ReadText("out/sub/B.mcx"));
        bytes = ReadText("out/sub/B.mcx");
    }
}

TEST_F(ManyScenesTest, LinesWithoutEndAreCutAndErrorsAreNot)
{
    std::vector<uint16_t> corners(65535);
    std::iota(corners.begin(), corners.end(), uint16_t{0});
    std::vector<float> places(3 * 65535, 1.0f), uvs(2 * 65535, 99.0f);
    uvs[0] = uvs[1] = 0.0f;
    const Bytes wide = Mesh({Points(places), TexVerts(uvs), Faces(corners)});
    WriteFile("wide.3ds", Scene({NamedObject("A", {wide})}));
    const std::string said = Start("wide.3ds none.3ds -v -j 2").said;
    EXPECT_EQ(CountOf(said, "3ds2mcx: wide.3ds: further lines left out\n"), 1u);
    EXPECT_LT(said.size(), size_t{5} << 20);
    EXPECT_TRUE(Has(said, "none.3ds: error: the scene has no objects"));
}

#if !defined(_WIN32)
// Where more workers can't be started, those that could do all the work.
TEST_F(ManyScenesTest, WorkersMakeDoWithTheDescriptorsThatThereAre)
{
    const Outcome run = Start("--recursive tree --output-dir out -j 8", "ulimit -n 12; ");
    EXPECT_EQ(run.files, "out out/a.mcx out/sub out/sub/B.mcx out/sub/c.mcx out/sub/d.mcx");
    EXPECT_EQ(CountOf(run.said, ": error: "), 1u) << run.said;
}
#endif

TEST_F(ManyScenesTest, ScenesOfOneNameInTwoFoldersDoNotMeet)
{
    fs::create_directories("twins/x");
    fs::create_directories("twins/y");
    fs::copy_file("two.3ds", "twins/x/a.3ds");
    fs::copy_file("two.3ds", "twins/y/a.3ds");
    const Outcome run = Start("--recursive twins --output-dir out");
    EXPECT_EQ(run.status, 0) << run.said;
    EXPECT_EQ(run.files, "out out/x out/x/a.mcx out/y out/y/a.mcx");
}

TEST_F(ManyScenesTest, TheLastLinesOfARunTakeEightyColumnsAtMost)
{
    const std::string start = "  1 scene   objects without a parent in the scene (first: ";
    for (const size_t length : {size_t{9}, 80 - start.size() - 1, 80 - start.size(), size_t{70}}) {
        const std::string name = std::string(length - 4, 'n') + ".3ds";
        fs::copy_file("lost.3ds", name);
        std::istringstream lines(Start("two.3ds " + name).said);
        std::string line, last;
        while (std::getline(lines, line))
            last = line.starts_with(start) ? line : last;
        EXPECT_LE(last.size(), 80u);
        EXPECT_EQ(last.ends_with(": " + name + ')'), start.size() + length + 1 <= 80) << last;
        EXPECT_TRUE(last.ends_with("n.3ds)")) << last;
    }
}

TEST_F(ManyScenesTest, ScenesThatWouldMeetInOneFileAreRefusedAndTheOthersAreConverted)
{
    std::string objects;
    for (int i = 0; i < 101; ++i)
        objects += Triangle("O" + std::to_string(i), 0);
    WriteFile("n.3ds", Scene({objects}));
    fs::copy_file("two.3ds", "n1.3ds");
    fs::copy_file("two.3ds", "n9.3ds");
    fs::copy_file("two.3ds", "n10.3ds");
    fs::copy_file("two.3ds", "two.mcx");
    const struct {
        const char *arguments, *says, *files;
    } rows[] = {
        {"two.3ds tree/a.3ds dir/../two.3ds",
         "two.3ds: error: \"two.3ds\" and \"dir.*two.3ds\" would both write .*; neither is converted\n"
         "3ds2mcx: dir/../two.3ds: error: \"two.3ds\" and",
         "tree/a.mcx"},
        {"tree/a.3ds two.mcx --header",
         "two.mcx: error: would be written to \"two.mcx\", a file of the scene", "tree/a.h"},
        {"n.3ds n1.3ds --per-object", "\"n1?.3ds\" and \"n1?.3ds\" would both write \"n10.mcx\"", ""},
        {"n.3ds n9.3ds --per-object", "would both write \"n90.mcx\"", ""},
        {"n.3ds n10.3ds --per-object", "\"n(10)?.3ds\" and \"n(10)?.3ds\" would both write \"n100.mcx\"", ""},
        {"tree/a.3ds n1.3ds --per-object -q", nullptr, "n10.mcx n11.mcx tree/a0.mcx tree/a1.mcx"},
        {"two.3ds dir/../two.3ds n9.3ds --output-dir out --header",
         "note: \"dir/../two.3ds\" is written as \"out.two-2.mcx\": \"two.3ds\" has the first name\n3 scenes",
         "out out/n9.h out/n9.mcx out/two-2.h out/two-2.mcx out/two.h out/two.mcx"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        const Outcome run = Start(row.arguments);
        EXPECT_EQ(run.status, !row.says || Has(row.says, "note") ? 0 : 1) << run.said;
        EXPECT_TRUE(Says(run.said, row.says ? row.says : "^$"));
        EXPECT_EQ(run.files, row.files);
    }
}

TEST_F(ManyScenesTest, ANumberTakesNoNameOfAnotherScene)
{
    for (const char *name : {"a/p.3ds", "b/p.3ds", "a/p-2.3ds"}) {
        fs::create_directories(fs::path(name).parent_path());
        fs::copy_file("two.3ds", name);
    }
    EXPECT_EQ(Start("-q a/p.3ds b/p.3ds a/p-2.3ds --output-dir out").files,
              "out out/p-2.mcx out/p-3.mcx out/p.mcx");
}

TEST_F(ManyScenesTest, FilesThatOtherProgramsLeaveAreNoScenes)
{
    fs::create_directory("a");
    fs::copy_file("two.3ds", "a/p.3ds");
    WriteFile("a/._p.3ds", "Mac");
    WriteFile("a/large.3ds", "version https://spec/v1\noid sha256:12\nsize 12345\n");
    WriteFile("a/version.3ds", "version 1\n");
    const Outcome run = Start("--recursive a");
    EXPECT_EQ(run.files, "a/p.mcx");
    EXPECT_TRUE(Says(run.said, "note: 2 files of other programs passed over: 1 that Macs .*, 1 that stand"));
    EXPECT_TRUE(Says(run.said, "version.3ds: error: .*no"));
}

TEST_F(ManyScenesTest, FilesThatExistAreLeftAloneOnRequest)
{
    WriteFile("two.mcx", "old");
    Outcome run = Start("two.3ds --no-clobber --header");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(Says(run.said, "left two.mcx alone: it exists already\n.*wrote two.h "));
    EXPECT_EQ(run.files, "two.h");
    EXPECT_EQ(ReadFile("two.mcx"), "old");
    EXPECT_TRUE(Says(Start("two.3ds --per-object").said, "wrote two0.mcx to two1.mcx, 2 files, "));
    EXPECT_TRUE(Says(Start("two.3ds --per-object --no-clobber").said,
                     "left two0.mcx to two1.mcx alone, 2 files: they exist already\n"));
    run = Start("two.3ds lost.3ds --no-clobber");
    EXPECT_TRUE(Says(run.said,
                     " 1 file left alone;\n  1 object, [^\n]*\n[^\n]*\n  --summary FILE lists them all\n$"));
    EXPECT_EQ(run.files, "lost.mcx");
}

TEST_F(ManyScenesTest, AnInterruptEndsAllProcessesAndTheirFiles)
{
#if !defined(_WIN32)
    fs::copy_file("two.3ds", "one.3ds");
    // Nobody reads the pipes: two processes have made their folders and wait, the third hasn't begun.
    const Outcome run = Start("two.3ds one.3ds tree/a.3ds -j 2 --output-dir out & "
                              "{ sleep 1; ls -A | grep -c 3ds2mcx-; kill $!; wait $!; }",
                              "mkdir out; mkfifo out/one.mcx out/two.mcx; export TMPDIR=$PWD; ");
    EXPECT_TRUE(Says(run.said, "^2\n"));
    EXPECT_EQ(run.status, 128 + 15);
    EXPECT_EQ(run.files, "out out/one.mcx out/two.mcx");
#endif
}

TEST_F(ManyScenesTest, TheStandardOutputGetsTheTextAndNothingElse)
{
    ASSERT_EQ(Start("two.3ds -q").status, 0);
    EXPECT_EQ(Start("two.3ds -o - -v 2>reports").status, 0);
#if !defined(_WIN32)
    EXPECT_EQ(Start("two.3ds -o - -v 2>reports").said, ReadFile("two.mcx"));
    EXPECT_TRUE(Says(ReadFile("reports"), "wrote standard output"));
    EXPECT_EQ(Start("two.3ds -o - >/dev/full").status, 1);
#endif
}

TEST_F(ManyScenesTest, EachKindOfWarningIsShownOnceAndCanCountAsFailure)
{
    WriteFile("eyes.3ds",
              Scene({Glass(), Triangle("BOX", 0)}, {Kfhdr(2), ObjectNode("EYE<1", noParent),
                                                    ObjectNode("EYE 2", 0), ObjectNode("EYE3\x1b", 0)}));
    const struct {
        const char *arguments;
        int status;
        size_t lines; // that report a name as not found
        const char *says;
    } rows[] = {
        {"", 0, 1, "warning: 3 times, the first: Object EYE<1 not found\n"},
        {"-v", 0, 3, "warning: Object EYE3\\\\x1b not found\n"},
        {"-q", 0, 0, "^$"},
        {"none.3ds", 1, 1,
         "eyes.3ds: warning: 3 times, [^\n]*not found\n.*none.3ds: error: [^\n]*\n2 scenes: "},
        {"--strict", 1, 1, "3 warnings count as failure"},
        {"--strict -q", 1, 0, "error: 3 warnings count as failure"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        fs::remove("eyes.mcx");
        const Outcome run = Start(std::string("eyes.3ds ") + row.arguments);
        EXPECT_EQ(run.status, row.status);
        EXPECT_EQ(CountOf(run.said, " not found"), row.lines) << run.said;
        EXPECT_TRUE(Says(run.said, row.says));
        EXPECT_EQ(run.files, "eyes.mcx");
    }
}

TEST_F(ManyScenesTest, WarningsThatDifferInNamesAndNumbersAreOfOneKind)
{
    const std::string place = " 1 0 0 0 1 0 0 0 1 0 0 0 ";
    WriteFile("kinds.vue", "frame 0 transform A" + place + "transform \"X 12\"" + place + "transform Y<3" +
                               place + "frame 7 transform A" + place + "frame 18 transform A" + place);
    const Bytes wide =
        Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), TexVerts({0, 0, 99, 0, 0, 1}), Faces({0, 1, 2})});
    WriteFile("kinds.3ds",
              Scene({NamedObject("A", {wide}), NamedObject("5 names < 6> of 7", {wide}),
                     NamedObject("\"names\"; of B", {wide}), NamedObject("X2-3 4.5 (6)", {wide})},
                    {Kfhdr(2), ObjectNode("A", noParent), ObjectNode("Q 1", noParent), ObjectNode("B", 77)}));
    ASSERT_EQ(Start("kinds.3ds --animation --summary sum.json -q").status, 0);
    const std::string summary = ReadFile("sum.json");
    const std::regex kind(
        "\"kind\": \"(.*)\",\n *\"loss\": [a-z]+,\n *\"scenes\": 1,\n *\"count\": ([0-9]+)");
    std::string kinds;
    for (std::sregex_iterator at(summary.begin(), summary.end(), kind), end; at != end; ++at)
        kinds += at->str(2) + ' ' + at->str(1) + '\n';
    const std::string said = Start("kinds.3ds two.3ds --animation").said;
    EXPECT_TRUE(Says(said, "kinds.3ds: warning: [^\n]*; and 5 more kinds\n"));
    EXPECT_TRUE(Says(said, "  1 scene   names are too long and were cut \\(first: kinds.3ds"));
    const float nan = std::numeric_limits<float>::quiet_NaN();
    WriteFile("a.3ds", Scene({Glass(9), NamedObject("HOLE", {Mesh({Points({0, 0, 0, nan, 0, 0})})})}));
    WriteFile("b.3ds",
              Scene({NamedObject("FAR", {Mesh({MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 1, nan, 0, 0})})})},
                    {Kfhdr(1), ObjectNode("FAR", noParent), ObjectNode("FAR", noParent)}));
    EXPECT_TRUE(Says(Start("kinds.3ds lost.3ds a.3ds b.3ds").said, "  and 1 more kind\n"));
    EXPECT_EQ(kinds, "1 bare-faces\n3 name-cut\n2 object-not-found\n2 vue-object-not-found\n"
                     "2 vue-frame-outside\n12 texture-range\n");
}

TEST_F(ManyScenesTest, WhatTheLibraryKeepsQuietAboutIsSaid)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Bytes point = NamedObject("DOT", {Mesh({Points({5, 5, 5, 5, 5, 5, 5, 5, 5}), Faces({0, 1, 2})})});
    const Bytes hole = NamedObject("HOLE", {Mesh({Points({0, 0, 0, 1, nan, 0, 0, 1, 0}), Faces({0, 1, 2})})});
    const Bytes grey = Colour24(51, 51, 51);
    const Bytes wood = Material("GLASS", {Finish(grey, grey, grey, 2), Map(0xA200, "A \"B\".GIF")});
    const Bytes twice = Scene({Glass(), Triangle("BOX", 0), Triangle("BOX", 1), Triangle("A-B", 2)},
                              {Kfhdr(2), ObjectNode("BOX", noParent), ObjectNode("BOX", noParent)});
    const Bytes blank =
        Scene({Material("GLASS", {Finish(grey, grey, grey, 2), Map(0xA200, "A B")}), Triangle("BOX", 0)});
    const Bytes names = Scene({wood, Triangle("ROOT", 0), Triangle("END\\", 0)});
    const struct {
        const Bytes &scene;
        const char *arguments;
        const char *says; // empty: only the line of the written file
    } rows[] = {
        {twice, "",
         "meshes placed by several nodes, .*: 1; 1 placement is lost; .*\"BOX\", in 2 nodes; --restore "
         "completes them"},
        {twice, "--per-object", ""},
        {Scene({Glass(9), Triangle("BOX", 0)}), "",
         "1 of 1 faces have no material and are flat green\n"
         ".*Invalid Material Shading: material \"GLASS\" is left out; it costs 1 face; --restore completes "
         "them\n"},
        {Scene({Triangle("BOX", 0), Glass()}), "",
         "they name \"GLASS\", which comes later in the file; --restore completes them\n"},
        {twice, "--protos", "objects with the name of another one, .*: 1; the first: \"BOX\""},
        {twice, "--header",
         "TAG_ lines .* define a name again: 1; .*\"BOX\"\n(.*\n)*.*aren't valid in C: 1; .*\"A-B\""},
        {names, "--header", "define a name again: 1; the first: \"ROOT\""},
        {names, "--source --force-names", "break the C source: 2; the first: \"END\\\\\""},
        {names, "", "break the script: 1; the first: \"A \"B\".GIF\""},
        {names, "--no-textures", ""},
        {blank, "--source", ""},
        {blank, "", "break the script: 1; the first: \"A B\""},
        {Scene({point}), "--size 3", "no extent that --size could be made of"},
        {Scene({NamedObject("BIG", {Mesh({Points({0, 0, 0, 1e10f, 0, 0, 0, 1e10f, 0}), Faces({0, 1, 2})})})}),
         "--size 1e-38", "no extent that --size could be made of"},
        {Scene({point}), "--scale 3e38", "beyond what a number holds"},
        {Scene({hole}), "", "vertices that hold no finite numbers.*: 1; the first is in \"HOLE\""},
        {Scene({NamedObject("FAR", {Mesh({MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 1, nan, 0, 0})})})}), "",
         "placements that hold no finite numbers.*: 1; the first is that of \"FAR\""},
        {Scene({point}), "", "warning: 1 of 1 faces have no material and are flat green\n[^\n]*\n$"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments);
        WriteFile("odd.3ds", row.scene);
        const Outcome run = Start(std::string("odd.3ds ") + row.arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(Says(run.said, *row.says != '\0' ? row.says : "^3ds2mcx: odd.3ds: wrote [^\n]*\n$"));
    }
    WriteFile("odd.3ds",
              Scene({Glass(),
                     NamedObject("A", {Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}),
                                             Faces({0, 1, 2, 2, 1, 0}, {MaterialGroup("NOBODY'S", {0}),
                                                                        MaterialGroup("GLASS", {0}),
                                                                        MaterialGroup("LOST", {1})})})})}));
    EXPECT_TRUE(Says(Start("odd.3ds").said, "flat green; they name \"LOST\", which the file lacks\n"));
    WriteFile("odd.3ds", Scene({NamedObject("A", {Mesh({Points({0, 0, 0, 0, 0, 5, 0, 0, 2})})})}));
    EXPECT_FALSE(Has(Start("odd.3ds --size 3").said, "extent"));
    const Bytes track = Track(0xB020, {{0, {1, 2, 3}}, {1, {4, 5, 6}}});
    WriteFile("odd.3ds", Scene({Triangle("BOX", 0)}, {Kfhdr(2), ObjectNode("BOX", noParent, {track})}));
    EXPECT_TRUE(Says(Start("odd.3ds").said, "note: keys of 1 object move over 2 frames"));
    EXPECT_FALSE(Has(Start("odd.3ds two.3ds").said, "note:"));
    WriteFile("odd.3ds", Scene({Triangle("A0_Z9", 0), Triangle("az", 1)}));
    EXPECT_FALSE(Has(Start("odd.3ds --header").said, "valid in C"));
    const auto manyGroups = [](const Bytes &known, uint16_t count) {
        Bytes named;
        for (uint16_t face = 0; face < count; ++face)
            named += MaterialGroup("LOST" + std::to_string(face), {face});
        const Bytes faces = Faces({0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2}, {named});
        WriteFile("odd.3ds",
                  Scene({known, NamedObject("A\tB", {Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), faces})})}));
    };
    manyGroups("", 5);
    EXPECT_TRUE(Says(Start("odd.3ds -v").said, "\"LOST2\", which the file lacks and 2 more\n"));
    EXPECT_TRUE(Says(Start("odd.3ds -v").said, "Object <A\\\\x09B>\n"));
    manyGroups("", 3);
    EXPECT_TRUE(Says(Start("odd.3ds").said, "\"LOST2\", which the file lacks\n"));
    const Bytes black = Colour24(0, 0, 0);
    Bytes known;
    for (const char *name : {"LOST0", "LOST1", "LOST2", "LOST3", "LOST4", "LOST5"})
        known += Material(name, {Finish(black, black, black, 1)});
    manyGroups(known, 6);
    EXPECT_TRUE(Says(Start("odd.3ds --info").said, "; LOST0, LOST1, LOST2, LOST3 and 2 more\n"));
    WriteFile("odd.3ds",
              Scene({NamedObject("A", {Mesh({Points({0, 0, 0}), Faces(std::vector<uint16_t>(3000))})})}));
    EXPECT_TRUE(Says(Start("odd.3ds two.3ds").said, ", 1,002 triangles,"));
    EXPECT_EQ(Start("odd.3ds lacks.3ds --summary run.json").status, 1);
    EXPECT_TRUE(Says(ReadFile("run.json"), "\"lacks.3ds\",[^}]*\"bytes\": 0,"));
#if !defined(_WIN32) // where the names have another encoding
    // Of these names one would be cut inside a character.
    std::string accents;
    for (int i = 0; i < 60; ++i)
        accents += "\xc3\xa9";
    for (const std::string end : {".3ds", "x.3ds"}) {
        fs::copy_file("lost.3ds", accents + end);
        const std::string said = Start(accents + end + " two.3ds").said;
        const size_t first = said.find("(first: ..."), from = said.rfind('\n', first) + 1;
        EXPECT_EQ(said.find("\xc3\xa9", first), first + 11) << said;
        EXPECT_EQ(said.find('\n', first) - from, end == ".3ds" ? 80u : 79u) << said;
    }
#endif
    WriteFile("gone.3ds", Scene({Glass(), Triangle("BOX", 0)}, {Kfhdr(2), ObjectNode("BOX", 7)}));
    const Outcome gone = Start("gone.3ds --summary sum.json");
    EXPECT_EQ(gone.status, 1);
    EXPECT_TRUE(
        Says(gone.said, "the model has no triangles, the scene has 1; they hang from no object: --flat"));
    EXPECT_EQ(gone.files, "gone.mcx sum.json");
    EXPECT_TRUE(Says(ReadFile("sum.json"), "\"triangles\": 0,[^}]*\"sceneTriangles\": 1,"));
    EXPECT_EQ(Start("gone.3ds --flat").status, 0);
    // A face without all its vertices is no triangle of the model, whether a material claims it or not.
    const auto mesh = [](const Bytes &groups) {
        return NamedObject("A", {Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}),
                                       Faces({0, 1, 2, 3, 1, 2, 0, 3, 2, 0, 1, 3, 2, 1, 0}, {groups})})});
    };
    for (const Bytes &groups :
         {MaterialGroup("GLASS", {0, 1, 2, 3, 4}), MaterialGroup("GLASS", {0, 1}), Bytes()}) {
        WriteFile("cut.3ds", Scene({Glass(), mesh(groups)}));
        Start("cut.3ds --summary sum.json");
        EXPECT_TRUE(Says(ReadFile("sum.json"), "\"triangles\": 2,[^}]*\"sceneTriangles\": 5,"));
    }
    // What the library says is counted once, however often a model is built of the scene.
    const Bytes wide =
        Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), TexVerts({0, 0, 99, 0, 0, 1}), Faces({0, 1, 2})});
    WriteFile("wide.3ds", Scene({NamedObject("WIDE", {wide})}));
    std::string counts;
#if defined(MC3DS_HAVE_PNG) && defined(MC3DS_HAVE_MCLMODEL)
    const std::vector<const char *> forms = {"", "--preview p.png", "--glb g.glb",
                                             "--preview p.png --glb g.glb", "--info --glb g.glb"};
    WriteFile("odd.3ds", twice);
    EXPECT_TRUE(
        Says(Start("odd.3ds --protos --preview p.png").said, "library counted 1 error: McProtoBegin: "));
#else
    const std::vector<const char *> forms = {"", "--flat"};
#endif
    for (const char *arguments : forms) {
        Start(std::string("wide.3ds --summary sum.json ") + arguments);
        const std::string summary = ReadFile("sum.json");
        std::smatch found;
        ASSERT_TRUE(std::regex_search(summary, found, std::regex("texture-range[^}]*\"count\": [0-9]+")));
        EXPECT_TRUE(counts.empty() || counts == found.str()) << arguments << counts << found.str();
        counts = found.str();
    }
}

// Each row is one name in one place. breaksOut: the output would contain it as code or as a statement.
TEST_F(ManyScenesTest, NoNameBreaksOutOfAnOutputUnlessItIsForced)
{
    const struct {
        const char *object, *map, *arguments;
        bool breaksOut;
    } rows[] = {
        {"BOX", "\");exit(7);//", "--source", true},
        {"BOX", "\");exit(7);//", "--source --no-textures", false},
        {"BOX", "\");exit(7);//", "", false},
        {"BOX", "A\\B.GIF", "--source", true},
        {"BOX", "A?\?/B.GIF", "--source", true},
        {"BOX", "A\nend", "--source", true},
        {"BOX", "A\nModelEnd", "", true},
        {"BOX", "A\rModelEnd", "--no-textures", true},
        {"BOX", "A.\nB", "--texture-extension gif", false}, // the library removes the line break
        {"BOX", "A\\B.GIF", "--source --no-textures", false},
        {"BOX", "A\\", "--source --no-textures", true},
        {"BOX", "A?\?/ ", "--source --no-textures", true},
        {"BOX", "A\\.GIF", "--source --no-textures --texture-extension \"\"", true},
        {"B\"X", "", "--source", false},
        {"B\"X", "", "--source --protos", true},
        {"BOX\\", "", "--source --per-object", true},
        {"BOX?\?/", "", "--source", true},
        {"BOX\\", "", "", false},
        {"B\\X", "", "--source", false},
        {"B-X", "", "--header", false},
        {"B/*", "", "--header", true},
        {"B-f()+", "", "--header", true},
    };
    const Bytes grey = Colour24(51, 51, 51);
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.object) + ' ' + row.map + ' ' + row.arguments);
        MakeInputs();
        const Bytes map = *row.map ? Map(0xA200, row.map) : "";
        WriteFile("odd.3ds",
                  Scene({Material("GLASS", {Finish(grey, grey, grey, 2), map}), Triangle(row.object, 0)}));
        const Outcome run = Start(std::string("-q odd.3ds ") + row.arguments);
        EXPECT_EQ(run.status, row.breaksOut ? 1 : 0) << run.said;
        EXPECT_EQ(run.files.empty(), row.breaksOut) << run.files;
        EXPECT_EQ(CountOf(run.said, "error: this name would break out: "), row.breaksOut ? 1u : 0u);
        const Outcome forced = Start(std::string("-q --force-names odd.3ds ") + row.arguments);
        EXPECT_EQ(forced.status, 0) << forced.said;
        EXPECT_EQ(forced.files.empty(), !row.breaksOut);
    }
}

// The options in the lines of a text that begin a description. The expression captures them.
static std::set<std::string> OptionsIn(std::string text, const char *lines)
{
    std::set<std::string> options;
    text = std::regex_replace(text, std::regex("\\\\(f[BIR]|(?=-))"), "");
    const std::regex line(lines), option("-(-[a-z-]+|[a-z])");
    for (std::sregex_iterator at(text.begin(), text.end(), line), end; at != end; ++at) {
        const std::string names = (*at)[1];
        for (std::sregex_iterator name(names.begin(), names.end(), option); name != end; ++name)
            options.insert(name->str());
    }
    return options;
}

TEST_F(ManyScenesTest, HelpAndManualHaveTheSameOptions)
{
    const fs::path top = fs::path(MC3DS_SAMPLES_DIR).parent_path();
    const std::set<std::string> help = OptionsIn(Start("--help").said, "\n  (-[^ ,]+(, -[^ ,]+)*)");
    const std::set<std::string> manual = OptionsIn(ReadText(top / "host/3ds2mcx.1"), "\n\\.TP\n(-[^\n]+)");
    const std::set<std::string> readme = OptionsIn(ReadText(top / "README.md"), "\n\\| `(-[^|]+)\\|");
    EXPECT_GT(help.size(), 40u);
#if defined(MC3DS_HAVE_PNG) && !defined(_WIN32)
    EXPECT_TRUE(MatchesGolden(Start("--help").said, "help.txt"));
#endif
    EXPECT_EQ(manual, help);
    EXPECT_GE(readme.size(), 10u);
    EXPECT_TRUE(std::includes(help.begin(), help.end(), readme.begin(), readme.end()));
}

#endif
