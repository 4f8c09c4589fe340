// The .vue file of a scene: which words count, and their meaning.

#include <cmath>
#include <sstream>

#include "harness.h"

using namespace chunks;

struct VueTest : SceneTest {
    LoadedScene Load(const std::string &vue)
    {
        return LoadBytes(Scene({NamedMesh("BOX", {}), NamedMesh("TWO W", {})},
                               {Kfhdr(3), ObjectNode("BOX", noParent, {Pivot(1, 0, 0)})}),
                         vue);
    }
};

static const std::string turned = " 0 1 0 -1 0 0 0 0 1 ";

// Positions in each frame: of the pivot of the first object, and of the origin of the second.
static std::string Places(const Mc3dsFile *scene)
{
    std::ostringstream text;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        text << (i == 0 ? "" : " / ") << scene->objects[i].hasFrames;
        for (uint32_t frame = 0; frame <= scene->frameCount; ++frame) {
            const auto &m = scene->objects[i].frames[frame].m;
            text << ' ' << m[3][0] << ',' << m[3][1] << ',' << m[3][2];
        }
    }
    return text.str();
}

TEST_F(VueTest, RecordsAreFoundAmongWhateverElseIsThere)
{
    const std::string still = "0 1,0,0 1,0,0 1,0,0 1,0,0", other = " / 0 0,0,0 0,0,0 0,0,0 0,0,0";
    const std::string moved = "1 1,0,0 5,1,0 1,0,0 1,0,0" + other;
    const struct {
        const char *what;
        std::string vue, places, errors;
    } rows[] = {
        {"nothing", "\n", still + other, ""},
        {"a record", "frame 1\ntransform \"BOX\"" + turned + "5 0 0\n", moved, ""},
        {"the frame after the last", "frame 3 transform BOX" + turned + "5 0 0",
         "1 1,0,0 1,0,0 1,0,0 5,1,0" + other, ""},
        {"keywords in capitals, no line ends", "FRAME 1 Transform BOX" + turned + "5 0 0", moved, ""},
        {"a word that is quoted in part", "frame \"1\" transform BOX" + turned + "5 0 0", still + other, ""},
        {"a quoted keyword, backslashes", "\"fra\\me\" 1 transform \"\\B\\O\\X\"" + turned + "5 0 0", moved,
         ""},
        {"comments and words",
         "# frame 2\nframe # frame 3\n1x\ntransform BOX" + turned + "x= 5 #\n0 # 0\n0 \n", moved, ""},
        {"a comment of 256 bytes", "frame # " + std::string(254, 'y') + "1 transform BOX" + turned + "5 0 0",
         moved, ""},
        {"lines dropped whole", "light frame 2\ncamera \"\n frame 1 transform BOX" + turned + "5 0 0\n",
         moved, ""},
        {"the later of two", "frame 1 transform BOX" + turned + "7 0 0 transform BOX" + turned + "5 0 0",
         moved, ""},
        {"a file cut in a record", "frame 1 transform BOX" + turned + "5 0 0 transform BOX" + turned + "7 0",
         moved, ""},
        {"no number of a frame",
         "frame 1 transform BOX" + turned + "5 0 0 frame x frame 2 transform BOX" + turned + "7 0 0", moved,
         ""},
        {"no name",
         "frame 1 transform BOX" + turned + "5 0 0 transform \"\" frame 2 transform BOX" + turned + "7 0 0",
         moved, ""},
        {"a name with a blank", "frame 0 transform \"TWO W\"" + turned + "5 6 7",
         still + " / 1 5,6,7 0,0,0 0,0,0 0,0,0", ""},
        {"such a name without quotes", "frame 0 transform TWO W" + turned + "5 6 7", still + other,
         "E2 unable to find object TWO\n"},
        {"a name of another case", "frame 1 transform box" + turned + "5 0 0", still + other,
         "E2 unable to find object box\n"},
        {"a name of 32 characters", "frame 1 transform \"" + std::string(32, 'N') + '"' + turned + "5 0 0",
         still + other, "E2 unable to find object " + std::string(31, 'N') + '\n'},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedScene scene = Load(row.vue);
        EXPECT_EQ(scene->hasAnimation, 1u);
        EXPECT_EQ(Places(scene.get()), row.places);
        EXPECT_EQ(TakeReportLines("E"), row.errors);
    }
}

TEST_F(VueTest, FramesThatTheSceneHasNotAreDroppedWithAWarning)
{
    const std::pair<const char *, const char *> rows[] = {{"", " -1,"},
                                                          {"frame -1", " -1,"},
                                                          {"frame 4", " 4,"},
                                                          {"frame 99999999999", " 2147483647,"},
                                                          {"frame 2147483650", " 2147483647,"},
                                                          {"frame -99999999999", " -2147483648,"},
                                                          {"frame -2147483647", " -2147483647,"}};
    for (const auto &[frame, told] : rows) {
        SCOPED_TRACE(frame);
        const LoadedScene scene = Load(std::string(frame) + " transform BOX" + turned + "5 0 0");
        EXPECT_EQ(scene->objects[0].hasFrames, 0u);
        const std::string reports = TakeReportLines("E");
        EXPECT_EQ(reports.substr(0, 3), "E2 ");
        EXPECT_TRUE(Has(reports, told));
    }
}

// The record of the scene keeps 255 characters of its path. A longer one would lead to another .vue file.
TEST_F(VueTest, APathOf255CharactersStillLeadsToTheFile)
{
    const std::string folder(120, 'd');
    std::filesystem::create_directory(folder);
    for (const size_t length : {size_t{254}, size_t{255}, size_t{256}}) {
        const std::string stem = folder + '/' + std::string(length - folder.size() - 5, 'n') + '.';
        WriteFile(stem + "3ds", Scene({NamedMesh("BOX", {})}, {Kfhdr(3)}));
        WriteFile(stem + "vue", "frame 0 transform BOX" + turned + "5 0 0");
        // Where the path would lead if it were cut.
        WriteFile((stem + "3ds").substr(0, 252) + "vue", "frame 0 transform BOX" + turned + "5 0 0");
        const LoadedScene scene = ::Load(stem + "3ds");
        EXPECT_EQ(scene->hasAnimation, length < 256 ? 1u : 0u);
        EXPECT_EQ(TakeReportLines("E").empty(), length < 256);
    }
}

// 4,194,304 and the bytes of the .vue file; takes 200 MB.
TEST_F(VueTest, AsManyFramesAsTheLimitAreLoaded)
{
    const Bytes vue = "frame 0";
    const uint32_t most = 4194304 + 7;
    for (const uint32_t frames : {most - 1, most}) {
        const LoadedScene scene =
            LoadBytes(Scene({NamedMesh("BOX", {Points({0, 0, 0})})}, {Kfhdr(frames)}), vue);
        EXPECT_EQ(scene->hasAnimation, frames < most ? 1u : 0u);
        EXPECT_EQ(TakeReportLines("E"), frames < most ? "" : "E0 Out of memory allocating frames\n");
    }
}

TEST_F(VueTest, NumbersCountByTheirLongestBeginning)
{
    const double infinite = HUGE_VAL;
    const struct {
        std::string word;
        double value;
    } rows[] = {
        {"1.5abc", 1.5},
        {"-.5", -0.5},
        {"+5.", 5},
        {"1e2e3", 100},
        {"1e", 1},
        {"1e+", 1},
        {"0x10", 16},
        {"-0X.8p1", -1},
        {"0x", 0},
        {"0x.p1", 0},
        {"0x2p+-1", 2}, // an exponent has at most one sign and needs a digit
        {"0x2p-+1", 2},
        {"0x2p", 2},
        {"1e+-5", 1},
        {"0x1p2000", infinite},
        {"0x0.0001p-1100", 0},
        {"1e400", infinite},
        {"-1e999999999999", -infinite},
        {"1e-400", 0},
        {"0.00000001e-320", 0},
        {std::string(240, '9') + "e200", infinite},
        {"0." + std::string(240, '0') + "1e-200", 0},
        {"inf", infinite},
        {"-INFINITYx", -infinite},
        {"9007199254740993", 9007199254740992.0},
        {"6617737266.2379442", 6617737266.2379442}, // 17 digits: their quotient is rounded twice
        {"0xFEDCBA98", 4275878552.0},
        {"0x.0G", 0},
        {"0xa", 10},
        {"0xF", 15},
        {"0.1000000000000000055511151231257827", 0.1},
        {"- + +-1 --1 .e1 e1 1", 1},      // only the last word is a number
        {std::string(250, 'x') + "7", 7}, // after 250 characters a new word begins
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.word);
        const LoadedScene scene = Load("frame 0 transform \"TWO W\"" + turned + row.word + " 0 0");
        ASSERT_EQ(scene->objects[1].hasFrames, 1u);
        EXPECT_EQ(scene->objects[1].frames[0].m[3][0], row.value);
    }
    // Such a word around each place where a block of the file may end.
    const std::string head = "frame 0 transform \"TWO W\"" + turned;
    for (const size_t block : {4095u, 4096u, 65535u, 65536u}) {
        const LoadedScene scene =
            Load(head + std::string(block - head.size() - 100, ' ') + std::string(250, 'x') + "7 0 0");
        EXPECT_EQ(scene->objects[1].frames[0].m[3][0], 7) << block;
    }
    EXPECT_TRUE(
        std::isnan(Load("frame 0 transform \"TWO W\"" + turned + "nanny 0 0")->objects[1].frames[0].m[3][0]));
}
