// The program as users see it: command lines and their exit status, messages and files.
#if defined(MC3DS_PROGRAM)

#include <cstdlib>

#include "program.h"

namespace fs = std::filesystem;
using namespace chunks;

struct ProgramTest : SceneTest {};

struct Row {
    const char *arguments;
    int status;
    const char *says; // an expression that the messages match
    const char *files = "";
};

static const Row rows[] = {
    {"two.3ds", 0, "two.3ds: wrote two.mcx \\([0-9]+ bytes\\)", "two.mcx"},
    {"-q two.3ds", 0, "^$", "two.mcx"},
    {"-v two.3ds -o v.mcx", 0, "^(.*\n)?Reading File <two.3ds>\n", "v.mcx"},
    {"-v two.3ds", 0, "Object <BOX>\nObject <LID>\n", "two.mcx"},
    {"-vv two.3ds -o dir/x.y", 0, "Reading 3 vertices", "dir/x.y"},
    {"two.3ds --source --header --animation", 0, "wrote two.mca", "two.c two.h two.mca"},
    {"two.3ds --header=dir/two.mcx --animation=a -o two.mcx", 0, "wrote dir/two.mcx",
     "a dir/two.mcx two.mcx"},
    {"two.3ds --per-object", 0, "wrote two0.mcx to two1.mcx, 2 files, (1200|1254) bytes",
     "two0.mcx two1.mcx"},
    {"two.3ds --per-object --source -o dir/overlong_name.x", 0, "",
     "dir/overlong_name0.c dir/overlong_name1.c"},
    {"none.3ds", 1, "error: the scene has no objects"},
    {"text.3ds", 1, "error: File is not a 3DS file; nothing is written"},
    {"missing.3ds", 1, "error: cannot be opened: No such file or directory"},
    {"dir", 1, "error: .*it is a folder; --recursive"},
    {"two.3ds -o dir", 1, "cannot write \"dir\": it is a folder"},
    {"two.3ds -o lost/x.mcx", 1, "cannot write \"lost/x.mcx\": folder \"lost\": No such file"},
    {"two.3ds -o dir/../two.3ds", 1, "it is the scene itself"},
    {"two.3ds -o none.3ds", 1, "a scene or an animation of that name exists"},
    {"two.3ds --header=two.vue", 1, "it is the animation that belongs to the scene"},
    {"two.3ds --animation=./two.mcx", 1, "two of the files to write are one"},
    {"lost.3ds", 0, "warning: objects without a parent in the scene, left out: 1 of 2; --flat.*\"LID\"",
     "lost.mcx"},
    {"lost.3ds --animation", 0, "warning: no animation: there is no \"lost.vue\"", "lost.mcx"},
    {"", 2, "no scene is given"},
    {"--header x.h two.3ds", 2, "\"x.h\" is no scene.*as in --header=x.h"},
    {"two.3ds text.3ds -o x", 2, "--output can't be combined with more than one scene.*--output-dir"},
    {"two.3ds text.3ds --animation=x", 2, "--animation=FILE can't be combined with more than one scene"},
    {"dir --recursive --header=x", 2, "--header=FILE can't be combined with --recursive"},
    {"two.3ds -o x --output-dir dir", 2, "--output can't be combined with --output-dir"},
    {"two.3ds -o - --header", 2, "--header can't be combined with --output -"},
    {"two.3ds --info --source", 2, "--info can't be combined with --source"},
    {"two.3ds --json", 2, "--json needs --info"},
    {"two.3ds --preview x.gif", 2, "\"x.gif\" doesn't end in .png"},
    {"two.3ds --report r.txt", 2, "\"r.txt\" doesn't end in .html"},
    {"two.3ds --output-dir .", 0, "wrote .[/\\\\]two.mcx", "two.mcx"},
    {"two.3ds --hedaer=x", 2, "did you mean --header\\?"},
    {"two.3ds -j 256", 0, "", "two.mcx"},
    {"two.3ds --header=-", 2, "only --output can be -, the standard output"},
    {"two.3ds --preview p.png --preview-frame=-1", 2, "neither the number of a frame"},
    {"two.3ds --opacity 1", 0, "", "two.mcx"},
    {"two.3ds --opacity 0", 0, "", "two.mcx"},
    {"two.3ds -j 0", 2, "--jobs: \"0\" is no number from 1 to 256"},
    {"two.3ds --summary s.json", 0,
     "^3ds2mcx: two.3ds: wrote two.mcx [^\n]*\n3ds2mcx: wrote s.json \\([0-9]+ bytes\\)\n$",
     "s.json two.mcx"},
    {"two.3ds --summary lost/s.json", 1,
     "^3ds2mcx: error: cannot write \"lost/s.json\": folder \"lost\": No such file"},
    {"two.3ds --summary two.mcx", 2, "the summary and the output of \"two.3ds\" would both be"},
    {"two.3ds --summary two.vue", 2, "the summary would take the place of \"two.vue\""},
    {"--info --json two.3ds", 0, "^\\{\"scene\":\"two.3ds\""},
    {"two.3ds --bogus", 2, "--bogus"},
    {"two.3ds \"--b\x1bgus\"", 2, "--b\\\\x1bgus"},
    {"two.3ds --per-object --header", 2, "--per-object can't be combined with --header"},
    {"two.3ds --per-object --center", 2, "--per-object can't be combined with --centre"},
    {"two.3ds --flot", 2, "--flot; did you mean --flat\\?"},
    {"two.3ds --sourcing", 2, "--sourcing\n"},
    {"two.3ds --ames", 2, "--ames\n"},
    {"two.3ds --hedaer", 2, "did you mean --header\\?"},
    {"two.3ds --restore=pose,poise", 2, "\"poise\" is none of materials, pose, .*strays\nTry"},
    {"two.3ds --restored x.3ds", 2, "--restored needs --restore"},
    {"two.3ds --restore --restored x.mcx", 2, "\"x.mcx\" doesn't end in .3ds"},
    {"two.3ds --scale 0", 2, "^3ds2mcx: --scale: 0 is out of range: above 0\nTry"},
    {"two.3ds -o x.GLB", 2, "\"x.GLB\" would hold a script: --glb writes models, or call it \"x.mcx\""},
    {"two.3ds -o x.png --source", 2, "would hold C source: --preview draws pictures, or call it \"x.c\""},
    {"two.3ds -o x.vue", 2, "--animation writes the animation"},
    {"two.3ds --animation=x.vue", 2, "\"x.vue\" would hold statements of .*: call it \"x.mca\""},
    {"two.3ds -o x.C", 2, "\"x.C\" would hold a script: --source writes C, or call it \"x.mcx\""},
    {"two.3ds -o x.mcx --scale 2 -o y.mcx --scale 1", 0, "wrote y.mcx", "y.mcx"},
    {"two.3ds --scale 1 --size 1", 2, "--scale can't be combined with --size"},
    {"two.3ds --clump-name x", 2, "--clump-name needs --source"},
    {"two.3ds --clump-name azAZ_09 --source", 0, "wrote two.c", "two.c"},
    {"two.3ds --per-object -o -", 2, "the files of the objects need names"},
    {"--recursive dir", 1, "folder \"dir\" has no \\*.3ds files"},
    {"none.3ds text.3ds --info", 1, "text.3ds: error: "},
    {"two.3ds --info -v", 0, "Object <LID>\n"},
    {"two.3ds --clump-name a-b --source", 2, "--clump-name: \"a-b\" can't be part of a C name"},
    {"lost.3ds --strict", 1, "1 warning counts as failure", "lost.mcx"},
    {"two.3ds --texture-extension a.b", 2, "--texture-extension: \"a.b\" is no extension"},
    {"two.3ds --preview-size 15x16 --preview p.png", 2, "is no size WxH with sides of 16 to 4096 pixels"},
    {"two.3ds --preview-frame x --preview p.png", 2, "\"x\" is neither the number of a frame nor \"strip\""},
    {"two.3ds --scale 1,5", 2, "--scale: \"1,5\" is no number"},
    {"two.3ds --scale 0", 2, "--scale: 0 is out of range: above 0"},
    {"two.3ds --size 1e99", 2, "--size: 1e99 is out of range"},
    {"two.3ds --opacity 1.5", 2, "--opacity: 1.5 is out of range: 0 to 1"},
    {"two.3ds --weights 1,2", 2, "--weights: \"1,2\" is not three numbers"},
    {"--help", 0, "\n  --header\\[=FILE\\] +write a header"},
    {"--help", 0, "-o, --output OUTPUT [^-]*-[^-]*default: the scene's name"},
    {"--version --bogus", 0, "^3ds2mcx 3.0\n$"},
};

TEST_F(ProgramTest, EachCommandLineHasItsStatusItsWordsAndItsFiles)
{
    for (const Row &row : rows) {
        SCOPED_TRACE(row.arguments);
        MakeInputs();
        const Outcome run = Start(row.arguments);
        EXPECT_EQ(run.status, row.status);
        EXPECT_TRUE(Says(run.said, row.says));
        EXPECT_EQ(run.files, row.files);
    }
}

TEST_F(ProgramTest, ARestoredSceneIsConvertedInPlaceOfTheOther)
{
    MakeInputs();
    const Bytes key = Track(0xB020, {{0, {0, 0, 3}}, {1, {0, 0, 4}}});
    for (const char *name : {"old.3DS", "b.3ds"})
        WriteFile(name, Scene({Material("WOOD", {Chunk(0xA020, {midGrey})}), Triangle("BOX", 0)},
                              {Kfhdr(2), ObjectNode("BOX", noParent, {key}), ObjectNode("BOX", 0, {key})}));
    EXPECT_TRUE(
        Says(Start("old.3DS -o plain.mcx").said,
             "note: keys of 1 object .*--restore completes them\n.*note: 1 object stands elsewhere in frame "
             "0; --restore(.*\n)*.*1 placement is lost; .*; --restore completes them\n"));
    const Outcome run =
        Start("old.3DS --restore --animation --restored dir/new.3ds --summary s.json --report p.html -vv");
    EXPECT_EQ(run.files, "dir/new.3ds dir/new.vue old.mca old.mcx p.html s.json");
    EXPECT_TRUE(
        Says(run.said,
             "restored: 1 material, the pose of 2 objects, 1 placement, keys of 2 objects over 2 frames\n"));
    EXPECT_TRUE(Has(run.said, "Reading File <old.3DS>\n"));
    EXPECT_TRUE(Has(run.said, "Reading File <old.vue>\n"));
    EXPECT_TRUE(Has(ReadFile("old.mcx"), "3D Studio File <old.3DS>"));
    EXPECT_TRUE(
        Says(ReadFile("s.json"), "\"restored\": \\[\\s*\\{\\s*\"kind\": \"materials\",\\s*\"count\": 1,"));
    EXPECT_TRUE(Has(ReadFile("p.html"), "<th>Restored</th>"));
    EXPECT_TRUE(Has(ReadFile("p.html"), "1 placement</bdi>: <bdi>BOX</bdi>"));
    Start("dir/new.3ds -o again.mcx --animation=again.mca -q");
    EXPECT_EQ(ReadFile("again.mca"), ReadFile("old.mca"));
    EXPECT_TRUE(Says(Start("--info --restore old.3DS").said,
                     "\nRestored\n  1 material: WOOD\n  the pose of 2 objects"));
    const Outcome both = Start("old.3DS b.3ds --restore=pose,materials --restored r.3ds -j 2");
    EXPECT_EQ(both.files, "b.mcx b.r.3ds old.r.3ds");
    EXPECT_EQ(CountOf(both.said, "restored: 1 material, the pose of 1 object\n"), 2u);
    EXPECT_EQ(Start("b.3ds --restore=motion --restored m.3ds -q -o m.mcx").files, "m.3ds m.mcx m.vue");
    EXPECT_EQ(ReadFile("m.3ds"), ReadFile("b.3ds"));
    EXPECT_TRUE(Says(Start("gone.3ds --restore").said, "gone.3ds: error: cannot be opened: "));
    WriteFile("b.vue", "frame 0 transform BOX 1 0 0 0 1 0 0 0 1 7 0 0");
    Start("b.3ds --restore --restored own.3ds --animation -q");
    EXPECT_EQ(ReadFile("own.vue"), ReadFile("b.vue"));
    EXPECT_TRUE(Has(ReadFile("b.mca"), " 7.000000 0.000000 "));
}

TEST_F(ProgramTest, EachOptionOfTheLibraryReachesTheOutput)
{
    const char *const fragments[][2] = {
        {"--protos", "ProtoInstance LID"},
        {"--flat", "    Tag 1\n"},
        {"--merged", "Triangle 4 5 6"},
        {"--centre", "0.0 -5.000000 0.000000 1.000000 1.0"},
        {"--scale 2.5", "Vertex[^\n]* 25.000000"},
        {"--size 5", "VertexExt +5.000000"},
        {"--texture-lit", "TextureModes Lit"},
        {"--texture-filter", "TextureModes Filter"},
        {"--texture-foreshorten", "TextureModes Foreshorten"},
        {"--no-textures", "Texture NULL # PANE.GIF"},
        {"--texture-extension .bmp", "Texture PANE.bmp"},
        {"--texture-extension \"\"", "Texture PANE\n"},
        {"--opacity 0.25", "Opacity 0.250000"},
        {"--weights 1,1,3", "Surface 1.000000"},
        {"--hint-hs", "Hints HS\n"},
        {"--hint-editable", "Hints EDITABLE"},
        {"--animation", " 7.000000 0.000000 "},
        {"--source", "McBuildtwo\\(void\\)"},
        {"--source --clump-name Other", "McBuildOther\\(void\\)"},
    };
    MakeInputs();
    ASSERT_EQ(Start("two.3ds -o plain").status, 0);
    const std::string plain = ReadText("plain");
    for (const auto &[arguments, fragment] : fragments) {
        SCOPED_TRACE(arguments);
        ASSERT_EQ(Start(std::string("two.3ds -o out ") + arguments).status, 0);
        EXPECT_TRUE(Says(ReadText("out"), fragment));
        EXPECT_FALSE(Says(plain, fragment));
    }
}

// The animation's name replaces the last three characters, whatever they are.
TEST_F(ProgramTest, ASceneMayBeCalledByThreeLetters)
{
    MakeInputs();
    std::filesystem::copy_file("two.3ds", "abc");
    std::filesystem::copy_file("two.vue", "vue");
    const Outcome run = Start("abc --animation");
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(Has(run.said, "warning"));
    EXPECT_TRUE(Has(Start("abc -o vue").said, "it is the animation that belongs to the scene"));
    WriteFile("vue", "frame 0 transform BOX 1 0 0 0 1 0 0 0 1 1e999 0 0");
    EXPECT_TRUE(Has(Start("abc --animation").said, "placements that hold no finite numbers"));
}

TEST_F(ProgramTest, TheFunctionOfASceneIsCalledAsTheSceneWithoutWhatCDoesNotTake)
{
    MakeInputs();
    const std::pair<const char *, const char *> names[] = {
        {"0a", "_0a"}, {"9", "_9"}, {"aZ-z.A", "aZ_z_A"}, {"a9", "a9"}};
    for (const auto &[file, name] : names) {
        fs::copy_file("two.3ds", std::string(file) + ".3ds");
        ASSERT_EQ(Start(std::string(file) + ".3ds --source -o f.c").status, 0);
        EXPECT_TRUE(Has(ReadFile("f.c"), "McBuild" + std::string(name) + "(")) << name;
    }
}

TEST_F(ProgramTest, CommentsNameTheFileAsItWillBeCalled)
{
    MakeInputs();
    ASSERT_EQ(Start("two.3ds --per-object -o dir/overlong_name.mcx").status, 0);
    EXPECT_TRUE(Has(ReadFile("dir/overlong_name1.mcx"),
                    "# <overlong_name.mcx> Created from 3D Studio File <two.3ds>"));
}

// If the limit cuts off any file, document, header or animation, the run fails and leaves no new file.
TEST_F(ProgramTest, FilesAppearWholeOrNotAtAll)
{
#if !defined(_WIN32)
    int failed = 0, done = 0;
    for (int blocks = 1; blocks <= 12; ++blocks) {
        SCOPED_TRACE(blocks);
        MakeInputs();
        WriteFile("two.vue", ReadFile("two.vue") + "\nframe 1\n");
        WriteFile("out.c", "old");
        const std::string limit = "ulimit -f " + std::to_string(blocks) + " 2>&1; ";
        const Outcome run = Start("two.3ds --header --animation --source -o out.c", limit);
        if (run.status == 0) {
            ++done;
            EXPECT_EQ(run.files, "out.h out.mca");
        } else {
            ++failed;
            EXPECT_EQ(run.status, 1);
            EXPECT_TRUE(Has(run.said, "cannot write \"out."));
            EXPECT_TRUE(Has(run.said, "File too large"));
            EXPECT_EQ(run.files, "");
            EXPECT_EQ(ReadFile("out.c"), "old");
        }
    }
    EXPECT_GT(failed, 0);
    EXPECT_GT(done, 0);
#endif
}

TEST_F(ProgramTest, TargetsThatAreNoPlainFilesStayWhatTheyAre)
{
#if !defined(_WIN32)
    MakeInputs();
    ASSERT_EQ(Start("two.3ds -q -o plain").status, 0);
    EXPECT_EQ(Start("two.3ds -o /dev/null --header=/dev/null").status, 0);
    EXPECT_EQ(fs::status("/dev/null").type(), fs::file_type::character);

    const Outcome full = Start("two.3ds -o x.mcx --header=/dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(Has(full.said, "cannot write \"/dev/full\": No space left on device"));
    EXPECT_EQ(full.files, "");
    const Outcome unread = Start("--info two.3ds >/dev/full");
    EXPECT_EQ(unread.status, 1);
    EXPECT_TRUE(Has(unread.said, "cannot write to the standard output: No space left"));
    EXPECT_EQ(Start("two.3ds -o good.mcx 2>/dev/full").status, 0) << "nobody reads the reports";
    EXPECT_TRUE(fs::exists("good.mcx"));
    EXPECT_EQ(Start("two.3ds -o /dev/null --header").status, 1); // not /dev/null.h

    fs::create_symlink("dir/seen.mcx", "link");
    WriteFile("dir/seen.mcx", "old");
    fs::permissions("dir/seen.mcx", fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Start("two.3ds -o link").status, 0);
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_NE(ReadFile("dir/seen.mcx"), "old");
    EXPECT_EQ(fs::status("link").permissions(), fs::perms::owner_read | fs::perms::owner_write);

    for (int i = 1; i < 40; ++i)
        fs::create_symlink(i == 1 ? "link" : "link" + std::to_string(i - 1), "link" + std::to_string(i));
    WriteFile("dir/seen.mcx", "old");
    EXPECT_EQ(Start("two.3ds -q -o link39").status, 0) << "40 links, as many as the system follows";
    EXPECT_TRUE(fs::is_symlink("link39"));
    EXPECT_NE(ReadFile("dir/seen.mcx"), "old");

    ASSERT_EQ(std::system("mkfifo pipe && { cat pipe >got & }"), 0);
    EXPECT_EQ(Start("two.3ds -q -o pipe; wait").status, 0);
    EXPECT_TRUE(fs::is_fifo("pipe"));
#endif
}

TEST_F(ProgramTest, AnInterruptedRunLeavesNothingBehind)
{
#if !defined(_WIN32)
    MakeInputs();
    // Nobody reads the pipe: the program has made its private folder and waits.
    const Outcome run = Start("two.3ds -o pipe & { sleep 0.5; ls -A | grep 3ds2mcx-; kill $!; wait $!; }",
                              "mkfifo pipe; export TMPDIR=$PWD; ");
    EXPECT_TRUE(Has(run.said, ".3ds2mcx-"));
    EXPECT_EQ(run.status, 128 + 15);
    EXPECT_EQ(run.files, "pipe");
#endif
}

// With stderr closed, the next file opened would get its descriptor.
TEST_F(ProgramTest, ReportsNeverEndUpInAFile)
{
#if !defined(_WIN32)
    const Bytes wide =
        Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), TexVerts({0, 0, 99, 0, 0, 1}), Faces({0, 1, 2})});
    WriteFile("wide.3ds", Scene({NamedObject("WIDE", {wide})}));
    ASSERT_TRUE(Has(Start("wide.3ds -o out").said, "co-ordinate range"));
    const std::string plain = ReadFile("out");
    ASSERT_EQ(Start("wide.3ds -o out 2>&-").status, 0);
    EXPECT_EQ(ReadFile("out"), plain);
#endif
}

TEST_F(ProgramTest, AnAnimationInOtherLettersIsPointedOut)
{
    MakeInputs();
    fs::rename("two.vue", "Two.VUE");
    if (fs::exists("two.vue"))
        GTEST_SKIP() << "the file system doesn't tell letters by case";
    const Outcome run = Start("two.3ds --animation");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(Has(run.said, "there is \"Two.VUE\", but it must be called \"two.vue\""));
    EXPECT_EQ(run.files, "two.mcx");
}

#endif
