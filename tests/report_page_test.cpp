// The page that --report writes, as text, and in a browser if one is installed.
#if defined(MC3DS_PROGRAM)

#include <regex>

#include "program.h"
#if defined(MC3DS_HAVE_PNG)
#include "picture.h"
#endif

namespace fs = std::filesystem;

struct ReportPageTest : SceneTest {
    void SetUp() override
    {
        SceneTest::SetUp();
        MakeInputs();
        fs::create_directories("tree/sub");
        fs::copy_file("two.3ds", "tree/a & b#.3ds");
        fs::copy_file("lost.3ds", "tree/sub/c.3ds");
        fs::copy_file("text.3ds", "tree/z.3ds");
    }
};

static void ExpectInOrder(const std::string &page, const std::vector<const char *> &parts)
{
    size_t at = 0;
    for (const char *part : parts) {
        const size_t found = page.find(part, at);
        EXPECT_NE(found, std::string::npos) << part << '\n' << page;
        at = found == std::string::npos ? at : found;
    }
}

TEST_F(ReportPageTest, FailedScenesComeFirstAndLinksLeadToTheFiles)
{
    std::string before;
    for (const std::string jobs : {"", " -j 2"}) {
        const Outcome run = Start("--recursive tree --output-dir out --report dir/r.html" + jobs);
        EXPECT_EQ(run.status, 1);
        std::string page = ReadText("dir/r.html");
        ExpectInOrder(page, {"3 scenes: 2 done (1 with", "), 1 failed; 3 objects, 9 vertices, 3 triangles, ",
                             "z.3ds", "failed: ", "c.3ds", "objects without a parent in the scene",
                             "../out/sub/c.mcx\"", " bytes</li>", "a &amp; b#.3ds",
                             "missing texture <bdi>PANE.GIF", "\"./../out/a%20%26%20b%23.mcx\""});
#if defined(MC3DS_HAVE_PNG) && defined(MC3DS_HAVE_MCLMODEL)
        EXPECT_TRUE(Has(page, "iVBORw0KGgoAAAANSUhEUgAAAUAAAADw")) << "a PNG of 320 x 240";
#endif
        page = std::regex_replace(page, std::regex("[0-9.e-]+ s</p>"), "");
        EXPECT_TRUE(before.empty() || before == page);
        before = page;
    }
}

TEST_F(ReportPageTest, AnOverviewOfOneObjectHasItsPicture)
{
    WriteFile("box.3ds", chunks::Scene({Triangle("BOX", 0)}));
    WriteFile("dot.3ds",
              chunks::Scene({chunks::NamedObject("DOT", {chunks::Mesh({chunks::Points({0, 0, 0})})})}));
    EXPECT_EQ(Start("box.3ds --info --report r.html").status, 0);
#if defined(MC3DS_HAVE_PNG) && defined(MC3DS_HAVE_MCLMODEL)
    EXPECT_TRUE(Has(ReadText("r.html"), "iVBORw0KGgoAAAANSUhEUgAAAUAAAADw"));
#endif
    Start("dot.3ds --report r.html");
    EXPECT_TRUE(Has(ReadText("r.html"), "1 object, 1 vertex, 0 triangles, "));
}

TEST_F(ReportPageTest, ThePageTakesTheNameOfNoOtherFile)
{
    const struct {
        const char *arguments;
        int status;
    } rows[] = {{"two.3ds --report r.txt", 2},
                {"two.3ds -o two.html --report two.html", 2},
                {"two.3ds --summary r.html --report ./r.html", 2},
                {"two.3ds --report none/r.html", 1}};
    for (const auto &row : rows) {
        const Outcome run = Start(row.arguments);
        EXPECT_EQ(run.status, row.status) << row.arguments << '\n' << run.said;
        EXPECT_EQ(run.files, "") << row.arguments;
    }
    WriteFile("old.html", "old");
    EXPECT_EQ(Start("two.3ds --no-clobber --report old.html").status, 0);
    EXPECT_EQ(ReadFile("old.html"), "old");
}

#if defined(MC3DS_HAVE_PNG) && defined(MC3DS_HAVE_MCLMODEL) && !defined(_WIN32)
TEST_F(ReportPageTest, ABrowserShowsTheRowsAndThePictures)
{
    if (RunCommand("command -v chromium").status != 0)
        GTEST_SKIP() << "no chromium";
    Start("--recursive tree --output-dir out --report r.html -q");
    MustRun("timeout 120 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
            "--disable-background-networking --disable-component-update --disable-sync "
            "--user-data-dir=\"$PWD/profile\" --force-device-scale-factor=1 --window-size=1000,900 "
            "--screenshot=\"$PWD/shot.png\" \"file://$PWD/r.html\"");
    const std::vector<unsigned char> shot = ReadPicture("shot.png").rgb;
    size_t ground = 0; // background pixels of the two pictures, 240 x 180 each
    for (size_t i = 0; i < shot.size(); i += 3)
        ground += shot[i] == 160 && shot[i + 1] == 170 && shot[i + 2] == 182 ? 1 : 0;
    EXPECT_GT(ground, 43200u);
    EXPECT_LE(ground, 86400u);
}
#endif

#endif
