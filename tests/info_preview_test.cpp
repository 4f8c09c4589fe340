// The overview of a scene as text and as JSON, and its preview picture.
#if defined(MC3DS_PROGRAM)

#include <cmath>
#include <cstdlib>
#include <numeric>
#include <regex>

#include "command.h"
#include "harness.h"
#include "worked_scene.h"
#if defined(MC3DS_HAVE_PNG)
#include "picture.h"
#endif

using namespace chunks;

static const std::string program =
    MC3DS_EMULATOR " " + Quoted(std::filesystem::absolute(MC3DS_PROGRAM).string()) + " -q scene.3ds ";

struct InfoPreviewTest : SceneTest {};

static std::string Info(const std::string &options = "")
{
    EXPECT_EQ(std::system(ShellLine(program + "--info " + options + " >shown 2>reports").c_str()), 0);
    return ReadText("shown");
}

// Reduces the text to one value, from the innermost brackets outwards.
static bool IsJson(std::string text)
{
    text = std::regex_replace(text, std::regex(R"re("([^"\\\x01-\x1f]|\\["\\]|\\u[0-9a-f]{4})*")re"), "s");
    text = std::regex_replace(text, std::regex(R"(-?(0|[1-9]\d*)(\.\d+)?(e[+-]?\d+)?|true|false|null)"), "v");
    const std::regex nest(R"(\[([sv](,[sv])*)?\]|\{(s:[sv](,s:[sv])*)?\})");
    for (std::string before; before != text; text = std::regex_replace(before, nest, "v"))
        before = text;
    return text == "v\n";
}

TEST_F(InfoPreviewTest, TheOverviewTellsWhatIsThereAndWhatStaysBehind)
{
    WriteFile("scene.3ds", WorkedScene());
    WriteFile("mask.gif", "");
    WriteFile("BRICK.GIF", "");
    const std::string json = Info("--json"), text = Info();
    EXPECT_TRUE(IsJson(json)) << json;
    EXPECT_TRUE(MatchesGolden(json, "info.json"));
    EXPECT_TRUE(MatchesGolden(text, "info.txt"));
}

TEST_F(InfoPreviewTest, NamesAndNumbersOfADamagedFileDoNoHarm)
{
    const Bytes name = "\"\x1b[\xE4\\";
    WriteFile(
        "scene.3ds",
        Scene({NamedObject(name, {Mesh({Points({0, 0, 0})})}), NamedObject("LOST", {Mesh({})}),
               NamedObject("A\xC2\x9B\x7F\xC3\xA4", {Mesh({})})},
              {Kfhdr(1), ObjectNode(name, noParent, {Pivot(NAN, INFINITY, 1)}), ObjectNode("LOST", 9)}));
    const std::string json = Info("--json"), text = Info();
    EXPECT_TRUE(IsJson(json)) << json;
    EXPECT_TRUE(Has(json, R"("name":"\"\u001b[\u00e4\\")"));
    EXPECT_TRUE(Has(json, "\"A\\u009b\\u007f\xC3\xA4\""));
    EXPECT_TRUE(Has(json, "\"pivot\":[null,null,1]"));
    EXPECT_TRUE(Has(text, "  3 objects (0 dummies), 1 vertex, 0 faces\n"));
    EXPECT_TRUE(Has(text, "\n  1 frame, no animation\n"));
    EXPECT_TRUE(Has(text, "  \"\\x1b[\\xe4\\  1 vertex"));
    EXPECT_TRUE(Has(text, "  size 0 x 0 x 0, from 0 0 0 to 0 0 0 (z taken as up)\n"));
    EXPECT_TRUE(Says(text, "only --flat writes them\n  LOST"));
}

TEST_F(InfoPreviewTest, TheSizeIsThatOfTheVertices)
{
    WriteFile("scene.3ds", Scene({NamedObject("A", {Mesh({})})}));
    EXPECT_FALSE(Has(Info(), "size"));
    EXPECT_TRUE(Has(Info(), "\n  no frames, no animation\n"));
    EXPECT_TRUE(Has(Info("--json"), "\"bounds\":null"));
    WriteFile("scene.3ds", Scene({NamedObject("A", {Mesh({Points({1, 2, 3, 4, 6, 9})})})}));
    EXPECT_TRUE(Has(Info(), "  size 3 x 4 x 6, from 1 2 3 to 4 6 9 (z taken as up)\n"));
}

#if defined(MC3DS_HAVE_PNG) && defined(MC3DS_HAVE_MCLMODEL)
// A picture of a red cube.
static Picture Draw(uint32_t shading, uint32_t transparency, const std::string &options)
{
    const Bytes red = Colour24(255, 0, 0);
    const Bytes cube = Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1, 1, 1, 1}),
                             Faces({0, 1, 3, 0, 3, 2, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                    2, 3, 7, 2, 7, 6, 0, 2, 6, 0, 6, 4, 1, 3, 7, 1, 7, 5},
                                   {MaterialGroup("RED", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})})});
    WriteFile("scene.3ds", Scene({Material("RED", {Finish(red, red, red, shading, 0, transparency)}),
                                  NamedObject("CUBE", {cube})},
                                 {Kfhdr(3), ObjectNode("CUBE", noParent)}));
    MustRun(program + "-o out.mcx --preview out.png " + options);
    return ReadPicture("out.png");
}

// Red minus blue of a pixel. x and y are fractions of the picture's width and height.
static int Redness(const Picture &picture, double x, double y)
{
    const auto column = static_cast<size_t>(x * static_cast<double>(picture.width - 1));
    const auto row = static_cast<size_t>(y * static_cast<double>(picture.height - 1));
    const unsigned char *pixel = &picture.rgb[(row * picture.width + column) * 3];
    return pixel[0] - pixel[2];
}

TEST_F(InfoPreviewTest, ThePictureShowsTheModelInTheMiddle)
{
    const Picture solid = Draw(1, 0, ""), clear = Draw(1, 60, ""), wire = Draw(0, 0, "");
    EXPECT_EQ(solid.width, 800u);
    EXPECT_EQ(solid.height, 600u);
    for (const Picture *picture : {&solid, &clear, &wire})
        for (const double corner : {0.0, 1.0})
            EXPECT_LT(std::max(Redness(*picture, corner, 0), Redness(*picture, corner, 1)), 0);
    const double x = 0.42, y = 0.65; // inside a face, away from its edges and its diagonal
    EXPECT_GT(Redness(solid, x, y), 100);
    EXPECT_GT(Redness(clear, x, y), 10);
    EXPECT_LT(Redness(clear, x, y), Redness(solid, x, y));
    EXPECT_LT(Redness(wire, x, y), 0);
    EXPECT_TRUE(solid.rgb == Draw(1, 0, "--protos --flat").rgb);
}

// Every second row, with a letter for the lightness of each pixel: a small one if it is more red than blue.
static std::string AsText(const Picture &picture)
{
    std::string text;
    for (size_t y = 0; y < picture.height; y += 2) {
        for (size_t x = 0; x < picture.width; ++x) {
            const unsigned char *pixel = &picture.rgb[(y * picture.width + x) * 3];
            const int level = (pixel[0] * 2 + pixel[1] * 5 + pixel[2]) / 8 / 16;
            text += static_cast<char>((pixel[0] > pixel[2] + 24 ? 'a' : 'A') + level);
        }
        text += '\n';
    }
    return text;
}

// A preview of scene.3ds as text. The options may set another size.
static std::string Preview(const std::string &options = "")
{
    MustRun(program + "--info --preview p.png --preview-size 64x48 " + options + " >shown");
    return AsText(ReadPicture("p.png"));
}

// At most that many pixels differ by more than a level.
static testing::AssertionResult Resembles(const std::string &text, const std::string &expected, size_t most)
{
    size_t others = text.size() == expected.size() ? 0 : text.size();
    for (size_t i = 0; i < text.size() && i < expected.size(); ++i)
        others += std::abs(text[i] - expected[i]) > 1 ? 1 : 0;
    return testing::AssertionResult(others <= most) << others << " pixels differ:\n" << text;
}

static testing::AssertionResult ResemblesGolden(const std::string &text, const std::string &name, size_t most)
{
    const std::string path = std::string(MC3DS_GOLDEN_DIR "/") + name;
    if (std::getenv("MC3DS_UPDATE_GOLDEN"))
        WriteFile(path, text);
    return Resembles(text, ReadText(path), most);
}

// Four squares, one behind the other as they are seen: a solid one, then blue glass, red glass, and a small
// solid one in front. The file has them in another order.
TEST_F(InfoPreviewTest, WhatIsInFrontCoversWhatIsBehind)
{
    const auto square = [](const char *name, const char *material, float at, float size) {
        return NamedObject(
            name,
            {Mesh({Points({at, -at, at, at + size, -at, at, at + size, -at, at + size, at, -at, at + size}),
                   Faces({0, 1, 2, 0, 2, 3}, {MaterialGroup(material, {0, 1})})})});
    };
    // A tent through the solid one in front, whose ridge is round.
    const Bytes tent = NamedObject(
        "TENT", {Mesh({Points({-4, -6, 0, 0, -6, 3, 4, -6, 0, -4, -1, 0, 0, -1, 3, 4, -1, 0}),
                       Faces({0, 1, 4, 0, 4, 3, 1, 2, 5, 1, 5, 4}, {MaterialGroup("CLAY", {0, 1, 2, 3})})})});
    const Bytes red = Colour24(255, 40, 0), blue = Colour24(0, 40, 255), white = Colour24(255, 255, 255);
    const Bytes materials = Join({Material("RED", {Finish(red, red, red, 1, 0, 50)}),
                                  Material("BLUE", {Finish(blue, blue, blue, 2, 0, 50)}),
                                  Material("CLAY", {Finish(white, white, white, 2)}),
                                  Material("WHITE", {Finish(white, white, white, 1)})});
    WriteFile("scene.3ds", Scene({materials, tent, square("FRONT", "WHITE", 3, 1), square("R", "RED", 2, 4),
                                  square("BACK", "WHITE", 0, 6), square("B", "BLUE", 1, 5)}));
    for (const char *form : {"", "--protos", "--merged"})
        EXPECT_TRUE(ResemblesGolden(Preview(form), "picture_squares.txt", 12)) << form;
}

// Two squares that cross, a round tent beside them, and wires through the squares.
TEST_F(InfoPreviewTest, FacesShowTheirNearerPartsAndTheLightAcrossThem)
{
    const auto square = [](const char *material, float y) {
        return NamedObject(material, {Mesh({Points({-4, -y, 0, 4, y, 2, 4, y, 8, -4, -y, 6}),
                                            Faces({0, 1, 2, 0, 2, 3}, {MaterialGroup(material, {0, 1})})})});
    };
    const Bytes tent =
        NamedObject("TENT", {Mesh({Points({2, -9, 0, 6, -9, 3, 11, -7, 0, 6, -2, 0}),
                                   Faces({0, 1, 3, 1, 2, 3, 0, 2, 1}, {MaterialGroup("CLAY", {0, 1, 2})})})});
    const Bytes wires = NamedObject("WIRES", {Mesh({Points({0, -6, 1, 0, 8, 1, 1, 6, 9}),
                                                    Faces({0, 1, 2}, {MaterialGroup("WIRE", {0})})})});
    const Bytes red = Colour24(255, 40, 0), blue = Colour24(0, 40, 255), white = Colour24(255, 255, 255);
    WriteFile("scene.3ds", Scene({Material("RED", {Finish(red, red, red, 1)}),
                                  Material("BLUE", {Finish(blue, blue, blue, 1)}),
                                  Material("CLAY", {Finish(white, white, white, 2)}),
                                  Material("WIRE", {Finish(white, white, white, 0)}), square("RED", 2),
                                  square("BLUE", -2), tent, wires}));
    EXPECT_TRUE(ResemblesGolden(Preview(), "picture_cross.txt", 8));
    EXPECT_TRUE(ResemblesGolden(Preview("--scale 1e-7"), "picture_cross.txt", 8));
}

// Faces with NaN and infinite corners, and those whose smooth normals cancel out.
TEST_F(InfoPreviewTest, FacesWithoutAPlaceAreNotDrawnAndThoseWithoutANormalAre)
{
    const Bytes clay = Colour24(255, 255, 255);
    WriteFile(
        "scene.3ds",
        Scene({Material("CLAY", {Finish(clay, clay, clay, 2)}),
               NamedObject("A", {Mesh({Points({0, 0, 0, 9, 0, 0, 0, 0, 9}),
                                       Faces({0, 1, 2, 0, 2, 1}, {MaterialGroup("CLAY", {0, 1})})})})}));
    EXPECT_TRUE(Has(Preview(), "PPPPPPPP"));
    const auto draw = [&clay](const std::vector<uint16_t> &corners, uint32_t shading) {
        const float nan = std::numeric_limits<float>::quiet_NaN(),
                    infinite = std::numeric_limits<float>::infinity();
        std::vector<uint16_t> all(corners.size() / 3);
        std::iota(all.begin(), all.end(), uint16_t{0});
        WriteFile(
            "scene.3ds",
            Scene({Material("CLAY", {Finish(clay, clay, clay, shading)}),
                   NamedObject("A", {Mesh({Points({0, 0, 0, 9, 0, 0, 0, 0, 9, nan, 0, 0, 0, 0, infinite}),
                                           Faces(corners, {MaterialGroup("CLAY", all)})})})}));
        return Preview();
    };
    for (const uint32_t shading : {0u, 1u}) {
        const std::string alone = draw({0, 1, 2}, shading);
        for (const uint16_t bad : {uint16_t{3}, uint16_t{4}})
            EXPECT_EQ(draw({0, 1, 2, bad, 1, 2, 0, bad, 2, 0, 1, bad}, shading), alone) << bad << shading;
    }
}

// So many faces over each other that the picture is drawn with fewer samples.
TEST_F(InfoPreviewTest, ACoarsePictureShowsTheSame)
{
    const auto draw = [](size_t faces) {
        std::vector<uint16_t> corners;
        for (size_t face = 0; face < faces; ++face)
            corners.insert(corners.end(), {0, 1, 2});
        WriteFile("scene.3ds",
                  Scene({NamedObject("A", {Mesh({Points({0, 0, 0, 9, 0, 0, 0, 0, 9}), Faces(corners)})})}));
        return Preview("--summary sum.json");
    };
    const std::string sharp = draw(1), coarse = draw(60000);
    EXPECT_TRUE(Has(ReadText("sum.json"), "the picture is coarse: "));
    EXPECT_TRUE(Resembles(coarse, sharp, 80));
}

TEST_F(InfoPreviewTest, WiresAreDrawnFromCornerToCorner)
{
    Draw(0, 0, "--preview-size 64x48");
    EXPECT_TRUE(ResemblesGolden(AsText(ReadPicture("out.png")), "picture_wires.txt", 12));
}

// Nine frames, of which the strip has 0, 2, 4, 6 and 8.
TEST_F(InfoPreviewTest, AStripOfNineFramesTakesEverySecond)
{
    std::string vue;
    for (int frame = 0; frame < 9; ++frame)
        vue += "frame " + std::to_string(frame) + " transform A 1 0 0 0 1 0 0 0 1 " +
               std::to_string(frame * frame) + " 0 0\n";
    WriteFile("scene.vue", vue);
    WriteFile("scene.3ds",
              Scene({NamedObject("A", {Mesh({Points({0, 0, 0, 9, 0, 0, 0, 0, 9}), Faces({0, 1, 2})})})},
                    {Kfhdr(9), ObjectNode("A", noParent)}));
    EXPECT_TRUE(
        ResemblesGolden(Preview("--preview-frame strip --preview-size 48x24"), "picture_strip.txt", 12));
}

TEST_F(InfoPreviewTest, WhyAPictureIsEmptyIsSaid)
{
    const auto corner = [](const char *name, float x) {
        return NamedObject(name, {Mesh({Points({x, 0, 0, x + 0.5f, 0, 0, x, 0.5f, 0}), Faces({0, 1, 2})})});
    };
    const Bytes line = NamedObject("L", {Mesh({Points({0, 0, 0, 1, 0, 0, 5, 0, 0}), Faces({0, 1, 2})})});
    const std::pair<Bytes, const char *> rows[] = {
        {Scene({corner("A", 0)}, {Kfhdr(1), ObjectNode("A", 9)}), "the scene has 1; .*--flat draws them"},
        {Scene({corner("A", 0), corner("B", 1e7f)}), "too small or thin for the size of the whole"},
        {Scene({line}), "points or lines"},
        {Scene({corner("A", 0)}), "\"warnings\": \\[\\]"},
    };
    WriteFile("scene.3ds", rows[3].first);
    MustRun(program + "--info --preview p.png --preview-frame strip --summary sum.json >shown");
    EXPECT_TRUE(Has(ReadText("sum.json"), "the scene has no animation: the strip is one picture"));
    for (const auto &[scene, says] : rows) {
        WriteFile("scene.3ds", scene);
        MustRun(program + "--info --preview p.png --summary sum.json >shown");
        const std::string said = ReadText("sum.json");
        EXPECT_TRUE(Says(said, says));
    }
}

TEST_F(InfoPreviewTest, EachOfManyScenesGetsAPictureOfItsOwn)
{
    Draw(1, 0, "");
    std::filesystem::copy_file("scene.3ds", "other.3ds");
    MustRun(program + "other.3ds --output-dir out --preview p.png");
    MustRun(program + "other.3ds --info --preview out/q.png");
    EXPECT_TRUE(Has(RunCommand(program + "out/../scene.3ds --info --preview x.png").output, "both write"));
    for (const char *name : {"out/scene.p.png", "out/other.p.png", "out/scene.q.png", "out/other.q.png"})
        EXPECT_TRUE(ReadFile(name) == ReadFile("out.png")) << name;
}

TEST_F(InfoPreviewTest, AStripShowsTheFramesOfTheAnimationSideBySide)
{
    const std::string place = " transform CUBE 1 0 0 0 1 0 0 0 1 ";
    WriteFile("scene.vue", "frame 0" + place + "0 0 0 frame 1" + place + "4 0 0 frame 2" + place + "8 0 0");
    const Picture strip = Draw(1, 0, "--preview-frame strip --preview-size 100x50");
    EXPECT_EQ(strip.width, 308u);
    for (const size_t column : {99u, 100u, 103u, 104u, 204u, 208u})
        EXPECT_EQ(strip.rgb[column * 3] == 255, column % 104 >= 100) << column;
    EXPECT_EQ(strip.height, 50u);
    for (const int frame : {0, 1, 2}) // in the slanted view the cube moves right and down
        for (const int part : {0, 1, 2}) {
            const double x = (frame * 104 + 12 + part * 38) / 307.0;
            EXPECT_EQ(Redness(strip, x, 0.31 + part * 0.19) > 0, frame == part) << frame << part;
        }
    EXPECT_TRUE(Draw(1, 0, "--preview-frame 2").rgb == Draw(1, 0, "").rgb); // each is framed separately
    WriteFile("scene.vue", "frame 0 transform CUBE 3 0 0 0 1 0 0 0 1 0 0 0");
    EXPECT_FALSE(Draw(1, 0, "--preview-frame 0").rgb == Draw(1, 0, "").rgb); // stretched
    EXPECT_TRUE(Has(RunCommand(program + "-o out.mcx --preview x.png --preview-frame 3").output,
                    "error: the scene has no frame 3: the last one is 2\n"));
}
#endif

#endif
