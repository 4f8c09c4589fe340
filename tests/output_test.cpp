// Examples of the text outputs.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "harness.h"
#if defined(MC3DS_HAVE_MCLMODEL)
#include "mclmodel.h"
#endif

using namespace chunks;

struct OutputTest : SceneTest {};

static const std::vector<float> corners = {0, 0, 0, 1, 0, 0, 0, 1, 0};

static Bytes Object(const Bytes &name, const std::vector<float> &xyz, const Bytes &more = "")
{
    return NamedMesh(name, {Points(xyz), more});
}

static Bytes Placed(const Bytes &name, float x = 0, float y = 0, float z = 0)
{
    return Object(name, corners, MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 1, x, y, z}));
}

static std::string Written(const Bytes &scene, uint32_t flags = 0, float scale = 1)
{
    Mc3dsOptions options = DefaultOptions(flags);
    options.scale = scale;
    return Output(LoadBytes(scene), options);
}

// Every line that contains word, from that word on.
static std::string Lines(const std::string &text, const std::string &word)
{
    std::istringstream lines(text);
    std::string taken;
    for (std::string line; std::getline(lines, line);)
        if (const size_t at = line.find(word); at != std::string::npos)
            taken += line.substr(at) + '\n';
    return taken;
}

// The files that the last Output wrote.
static std::string FileNames()
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator("output"))
        names.push_back(entry.path().filename().string() + ' ');
    std::sort(names.begin(), names.end());
    return Join(names);
}

TEST_F(OutputTest, TextureCoordinatesAreShiftedTurnedOverAndFolded)
{
    const struct {
        std::vector<float> uv;
        const char *written; // u and v of every vertex
        int reports;
    } rows[] = {
        {{31, 1}, "0 0 ", 0},
        {{1.75f, 30.25f}, "0.75 0.75 ", 0},
        {{1, 31}, "0 0 ", 0},
        {{0.25f, 31.75f}, "1.25 1.25 ", 0},
        {{0, 32}, "1 1 ", 0},
        {{-0.25f, 32.25f}, "0.75 0.75 ", 0},
        {{-1, 33}, "1 1 ", 0},
        {{-2.5f, 34.5f}, "0.5 0.5 ", 0},
        {{0, 1e-9f}, "1 1 ", 0}, // 32 less this is below 32 in 64 bits alone
        {{-2147483648.0f, 0}, "0 0 ", 0},
        {{0, 0, 1, 1, 0.25f, 0.75f}, "1 1 2 0 1.25 0.25 ", 0},
        {{0, 0, 31, 0, 40, 0}, "1 0 32 0 9 0 ", 1},
        {{0, 0, 69, -40}, "1 0 6 8 ", 3},
        // The fold takes at most 1,024 steps and does the rest at once.
        {{0, 0, 32799, 0}, "1 0 32 0 ", 1024},
        {{0, 0, 33000, 0}, "1 0 9 0 ", 1025},
        {{0, 0, 32959, 0}, "1 0 32 0 ", 1025},
        {{0, 0, 1e30f, -1e30f}, "1 0 32 32 ", 2},
        {{0, 0, INFINITY, 0}, "1 0 0 0 ", 1},
        // Too large for a 32-bit number: the shift of 0 is used.
        {{-3e9f, 0}, "-3e+09 0 ", 0},
        {{-3e9f, 0, 1, 0}, "-3e+09 0 2 0 ", 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.written);
        const std::vector<float> xyz(row.uv.size() / 2 * 3);
        std::istringstream words(Written(Scene({Object("A", xyz, TexVerts(row.uv))})));
        std::ostringstream written;
        double u, v;
        for (std::string word; words >> word;)
            if (word == "UV" && words >> u >> v)
                written << u << ' ' << v << ' ';
        EXPECT_EQ(written.str(), row.written);
        const std::string report =
            "E2 Texture co-ordinate range larger than 32.0. Possible errors in output\n";
        std::string reports;
        for (int i = 0; i < row.reports; ++i)
            reports += report;
        EXPECT_EQ(TakeReportLines("E"), reports);
    }
}

TEST_F(OutputTest, ScaleAndSizeAreWrittenBack)
{
    const std::vector<float> box = {0, 0, 0, 10, 20, 50}, point = {3, 4, 5};
    const std::vector<float> wide = {3, 7, 1, 53, 17, 21}, deep = {3, 7, 1, 13, 57, 21};
    const struct {
        std::vector<float> xyz;
        uint32_t flags;
        float scale, size;
        const char *scaleAfter, *sizeAfter;
    } rows[] = {
        {box, MC3DS_FIT_SIZE, 7, 100, "2.000000", "100.000000"},
        {wide, MC3DS_FIT_SIZE, 7, 100, "2.000000", "100.000000"},
        {deep, MC3DS_FIT_SIZE, 7, 100, "2.000000", "100.000000"},
        {box, 0, 2, 7, "2.000000", "100.000000"},
        {box, MC3DS_CENTRE, 0.5f, 0, "0.500000", "25.000000"},
        {point, MC3DS_FIT_SIZE, 1, 9, "inf", "9.000000"},
        {{}, MC3DS_FIT_SIZE, 1, 9, "-0.000000", "9.000000"},
        {{}, 0, 2, 9, "2.000000", "-inf"},
    };
    for (const auto &row : rows) {
        const LoadedScene scene = LoadBytes(Scene({Object("A", row.xyz)}));
        Mc3dsOptions options = DefaultOptions(row.flags);
        options.scale = row.scale;
        options.size = row.size;
        TakeReports();
        Output(scene, options);
        EXPECT_EQ(TakeReports()[0].text, std::string("Scale ") + row.scaleAfter);
        EXPECT_EQ(std::to_string(options.scale), row.scaleAfter);
        EXPECT_EQ(std::to_string(options.size), row.sizeAfter);
    }
}

// The writer's blocks have 65,536 bytes.
TEST_F(OutputTest, TheLastByteIsWrittenWhenItAloneIsLeft)
{
    const auto text = [](size_t vertices, size_t digits) {
        std::vector<float> xyz(3 * vertices, 100.0f); // three digits fill a column
        for (float &number : xyz)
            for (; number < 99999.0f && digits > 0; --digits)
                number *= 10;
        return Written(Scene({Object("A", xyz)}));
    };
    const size_t least = text(1, 0).size(), each = text(2, 0).size() - least;
    const size_t vertices = (65537 - least) / each - 1;
    const std::string whole = text(vertices, 65537 - text(vertices, 0).size());
    ASSERT_EQ(whole.size(), 65537u);
    EXPECT_EQ(whole.back(), '\n');
}

TEST_F(OutputTest, PerObjectFilesKeepSixCharactersOfTheNameAtMost)
{
    const struct {
        const char *outputFile, *written;
    } rows[] = {
        {"scene1.mcx", "scene10.mcx scene11.mcx "},
        {"scene.mcx", "scene0.mcx scene1.mcx "},
        {"abcdefghij.c", "abcdef0.mcx abcdef1.mcx "},
        {"abcdefg.mcx", "abcdef0.mcx abcdef1.mcx "},
        {"abcd", "0.mcx 1.mcx "},
        {"abc", "abc0.mcx abc1.mcx "},
        {"", "0.mcx 1.mcx "},
        {nullptr, "0.mcx 1.mcx "},
    };
    const LoadedScene scene = LoadBytes(Scene({Placed("A"), Placed("B")}));
    for (const auto &row : rows) {
        Mc3dsOptions options = DefaultOptions(MC3DS_PER_OBJECT);
        options.outputFile = row.outputFile;
        Output(scene, options);
        EXPECT_EQ(FileNames(), row.written);
    }
}

// A triangle of a material with these maps.
static LoadedScene Mapped(const Bytes &maps)
{
    return LoadBytes(
        Scene({Grey("M", {maps}), Object("A", corners, Faces({0, 1, 2}, {MaterialGroup("M", {0})}))}));
}

TEST_F(OutputTest, HintsAndTextureModesAreSpelledOut)
{
    constexpr uint32_t hs = MC3DS_HINT_HS, editable = MC3DS_HINT_EDITABLE, lit = MC3DS_TEXTURE_LIT,
                       filter = MC3DS_TEXTURE_FILTER, foreshorten = MC3DS_TEXTURE_FORESHORTEN;
    const struct {
        uint32_t hintFlags, surfaceFlags;
        std::string hints, modes, sourceHints, sourceModes;
    } rows[] = {
        {0, 0, "NULL", "Null", "0L", "0L"},
        {hs, lit, "HS", "Lit", "mcHS", "mcLIT"},
        {editable, foreshorten, "EDITABLE", "Foreshorten", "mcEDITABLE", "mcFORESHORTEN"},
        {hs | editable, lit | foreshorten, "HS EDITABLE", "Lit Foreshorten", "mcHS|mcEDITABLE",
         "mcLIT|mcFORESHORTEN"},
        {~3u, filter, "NULL", "Filter", "0L", "mcFILTER"},
        {~2u, lit | filter, "HS", "Lit Filter", "mcHS", "mcLIT|mcFILTER"},
        {~1u, filter | foreshorten, "EDITABLE", "Filter Foreshorten", "mcEDITABLE", "mcFILTER|mcFORESHORTEN"},
        {~0u, ~0u, "HS EDITABLE", "Lit Filter Foreshorten", "mcHS|mcEDITABLE",
         "mcLIT|mcFILTER|mcFORESHORTEN"},
    };
    const LoadedScene scene = Mapped(Map(0xA200, "BRICK"));
    for (const auto &row : rows) {
        Mc3dsOptions options = DefaultOptions();
        options.hintFlags = row.hintFlags;
        options.surfaceFlags = row.surfaceFlags;
        const std::string script = Output(scene, options);
        EXPECT_EQ(Lines(script, "Hints") + Lines(script, "TextureModes"),
                  "Hints " + row.hints + "\nTextureModes " + row.modes + "\n");
        options.flags = MC3DS_SOURCE;
        const std::string source = Output(scene, options);
        EXPECT_EQ(Lines(source, "Hints(") + Lines(source, "TextureModes("),
                  "Hints(" + row.sourceHints + ");\nTextureModes(" + row.sourceModes + ");\n");
    }
}

TEST_F(OutputTest, TexturesFollowTheMapsOfTheMaterial)
{
    constexpr uint32_t keep = MC3DS_TEXTURES, replace = MC3DS_TEXTURES | MC3DS_TEXTURE_EXTENSION;
    const Bytes texture = Map(0xA200, "Brick.GIF"), mask = Map(0xA210, "MASK"), sky = Map(0xA220, "SKY.CEL");
    const struct {
        Bytes maps;
        uint32_t surfaceFlags;
        const char *extension;
        std::string written; // after "Texture"
    } rows[] = {
        {"", keep, "bmp", " NULL"},
        {mask, keep, "", " NULL"},
        {texture, keep, "bmp", " Brick.GIF"},
        {texture, 0, "", " NULL # Brick.GIF"},
        {texture + mask, keep, "", "Ext Brick.GIF Mask MASK"},
        {texture + mask, MC3DS_TEXTURE_EXTENSION, "bmp", " NULL # Brick.bmp Mask MASK.bmp "},
        {texture + sky, keep, "", " Brick.GIF"},
        {sky + mask, keep, "", " SKY.CEL"},
        {Map(0xA220, "S"), keep, "", " S"},
        {Map(0xA200, "B") + Map(0xA210, "M"), keep, "", "Ext B Mask M"},
        {sky + mask, 0, "", " NULL # SKY.CEL"},
        {sky, replace, "", " SKY"},
        {sky, replace, nullptr, " SKY"},
        {Map(0xA200, "A.B\\C"), replace, "bmp", " A.B\\C.bmp"},
        {Map(0xA200, "A.B/C"), replace, "bmp", " A.bmp"},
        {Map(0xA200, "A.B.C"), replace, "bmp", " A.B.bmp"},
        {texture, replace, "a.long.extension", " Brick.a.long.extension"},
    };
    for (const auto &row : rows) {
        Mc3dsOptions options = DefaultOptions();
        options.surfaceFlags = row.surfaceFlags;
        options.textureExtension = row.extension;
        EXPECT_EQ(Lines(Output(Mapped(row.maps), options), "Texture"),
                  (row.written == " NULL" ? "Texture" : "TextureModes Null\nTexture") + row.written + "\n");
    }
}

TEST_F(OutputTest, TextsThatAreNotAskedForAreNotTouched)
{
    const LoadedScene scene = Mapped(Map(0xA200, "Brick.GIF"));
    const auto wild = reinterpret_cast<const char *>(uintptr_t{1});
    Mc3dsOptions options = DefaultOptions();
    const std::string script = Output(scene, options);
    options.clumpName = options.headerFile = options.animationFile = options.textureExtension = wild;
    EXPECT_EQ(Output(scene, options), script);
#if defined(MC3DS_HAVE_MCLMODEL)
    options.flags = MC3DS_DIRECT | MC3DS_SOURCE | MC3DS_PER_OBJECT | MC3DS_HEADER | MC3DS_ANIMATION;
    options.outputFile = wild;
    McClump *clump = nullptr;
    Mc3dsOutput(scene.get(), &options, &clump);
    EXPECT_NE(clump, nullptr);
    McFreeModel(clump);
#endif
}

static Mc3dsOptions changing;
static const std::string longExtension(5000, 'x');

// The host changes its options while an output reads them.
TEST_F(OutputTest, ACallbackMayChangeTheOptions)
{
    const LoadedScene scene = Mapped(Map(0xA200, "Brick.GIF") + Map(0xA210, "MASK"));
    for (const uint32_t flags : {0u, MC3DS_SOURCE}) {
        changing = DefaultOptions(flags);
        changing.surfaceFlags |= MC3DS_TEXTURE_EXTENSION;
        changing.textureExtension = "b";
        Mc3dsSetMessageCallback([](int32_t, const char *text) {
            changing.flags ^= std::string(text) == "Using Default Material" ? MC3DS_SOURCE : 0;
            if (std::string(text).starts_with("Scale"))
                changing.textureExtension = longExtension.c_str();
        });
        EXPECT_TRUE(Has(Output(scene, changing), longExtension));
    }
    Mc3dsSetMessageCallback(nullptr);
}

TEST_F(OutputTest, AmbientCoefficientsHaveAFloorAndCentresTwiceTheRange)
{
    for (const auto &[level, written] : {std::pair<uint8_t, const char *>{0, "0.100000"},
                                         {25, "0.100000"},
                                         {26, "0.101961"},
                                         {38, "0.149020"}}) {
        const Bytes dark = Colour24(level, level, level),
                    material = Material("M", {Finish(dark, midGrey, midGrey, 1)});
        const Bytes faces = Faces({0, 1, 2}, {MaterialGroup("M", {0})});
        EXPECT_TRUE(Has(Written(Scene({material, Object("A", corners, faces)})),
                        std::string("Surface ") + written + ' '));
    }
    const std::string far =
        Written(Scene({Object("A", {3e38f, 0, 0, 3.2e38f, 0, 0, 3e38f, 1, 0})}), MC3DS_CENTRE);
    EXPECT_FALSE(Has(far, "inf")) << "the sum of two bounds is taken in 64 bits";
    EXPECT_FALSE(Has(far, "nan"));
}

TEST_F(OutputTest, FacesThatCannotBeDrawnAreLeftOutAndNothingElse)
{
    const Bytes faces =
        Faces({0, 1, 3, 0, 1, 2, 2, 1, 0, 2, 0, 1}, {MaterialGroup("M", {0}), MaterialGroup("?", {1, 1}),
                                                     MaterialGroup("M", {2, 9}), MaterialGroup("M", {2})});
    const std::string script = Written(Scene({Grey("M"), Object("A", corners, faces)}));
    // The face with a missing vertex still gets its surface; the surface of the unknown material comes once.
    const std::string surface = "Surface 0.501961 0.501961 0.501961\n";
    EXPECT_EQ(Lines(script, "Surface"), surface + surface + surface + "Surface 0.587000 0.587000 0.587000\n");
    EXPECT_EQ(Lines(script, "Triangle"), "Triangle 3 2 1\nTriangle 3 2 1\nTriangle 1 2 3\nTriangle 3 1 2\n");
}

// The parent node of both objects doesn't exist, so the output reaches no clump.
static const Bytes rootless =
    Scene({Placed("A"), Placed("B")}, {Kfhdr(1), ObjectNode("A", 5), ObjectNode("B", 5)});

TEST_F(OutputTest, AFileThatCannotBeOpenedCostsOnlyThatFile)
{
    constexpr uint32_t all = MC3DS_HEADER | MC3DS_ANIMATION;
    const std::string lost = "E1 Unable to open file <";
    const struct {
        uint32_t flags;
        const char *outputFile, *headerFile, *animationFile;
        std::string written, errors;
    } rows[] = {
        {all, "x", "y", "z", "x y z ", ""},
        {all, "no/x", "y", "z", "y z ", lost + "no/x>\n"},
        {all, "x", "no/y", "z", "x z ", lost + "no/y>\n"},
        {all | MC3DS_SOURCE, "x", "y", "", "x y ", lost + ">\n"},
        {all, nullptr, nullptr, nullptr, "", lost + ">\n" + lost + ">\n" + lost + ">\n"},
        {all | MC3DS_PER_OBJECT, "no/abcd", "y", "z", "", lost + "no/0.mcx>\n" + lost + "no/1.mcx>\n"},
        {all | MC3DS_DIRECT | MC3DS_SOURCE | MC3DS_PER_OBJECT, "x", "y", "z", "", ""},
    };
    for (const auto &row : rows) {
        const LoadedScene scene = LoadBytes(rootless, "frame 0\n");
        Mc3dsOptions options = DefaultOptions(row.flags);
        options.outputFile = row.outputFile;
        options.headerFile = row.headerFile;
        options.animationFile = row.animationFile;
        Output(scene, options);
        EXPECT_EQ(FileNames(), row.written);
        EXPECT_EQ(TakeReportLines("E"), row.errors);
    }
    Written(rootless, MC3DS_ANIMATION); // without a .vue file
    EXPECT_EQ(FileNames(), "out.mcx ");
}

TEST_F(OutputTest, WithoutAClumpTheFunctionReturnsNull)
{
    EXPECT_EQ(Lines(Written(rootless, MC3DS_SOURCE), "return"), "return(NULL);\nreturn(NULL);\n");
    EXPECT_EQ(Lines(Written(rootless, MC3DS_SOURCE | MC3DS_MERGED), "return"),
              "return(NULL);\nreturn(tmpclump);\n");
}

TEST_F(OutputTest, OnlyADirectBuildOfSomethingTouchesTheClump)
{
    int mark = 0;
    McClump *const untouched = reinterpret_cast<McClump *>(&mark), *clump = untouched;
    const LoadedScene scene = LoadBytes(rootless), empty = LoadBytes(Scene({}));
    Mc3dsOptions direct = DefaultOptions(MC3DS_DIRECT), text = DefaultOptions(MC3DS_SOURCE);
    text.clumpName = nullptr;
    direct.size = -1;
    TakeReports();
    Mc3dsOutput(empty.get(), &direct, &clump);
    Mc3dsOutput(nullptr, &direct, &clump);
    Mc3dsOutput(scene.get(), nullptr, &clump);
    EXPECT_EQ(direct.size, -1); // a scene without objects changes nothing
    EXPECT_EQ(TakeReportLines(), "");
    Mc3dsOutput(scene.get(), &text, &clump);
    EXPECT_EQ(Lines(ReadText("out.c"), "McBuild"), "McBuild(void)\n");
    EXPECT_EQ(clump, untouched);
    Mc3dsOutput(scene.get(), &direct, nullptr);
    Mc3dsOutput(scene.get(), &direct, &clump);
    EXPECT_EQ(clump, nullptr);
}

TEST_F(OutputTest, TheAnimationFileFollowsTheTreeOrListsWhatHasFrames)
{
    // B is A's child; C's parent node has no object.
    const Bytes bytes = Scene({Placed("A"), Placed("B"), Placed("C")},
                              {Kfhdr(1), ObjectNode("B", 1), ObjectNode("A", noParent), ObjectNode("C", 9)});
    const char *const five = " 1 0 0 0 1 0 0 0 1 5 0 0\n", *const singular = " 1 0 0 0 1 0 1 1 0 5 0 0\n";
    const char *const noInverse = "E0 Unable to invert matrix\n";
    const struct {
        std::string named; // objects that the .vue file names
        const char *matrix;
        uint32_t flags;
        const char *written; // number and x of every line
        const char *errors;
    } rows[] = {
        {"ABC", five, 0, "1:5 2:0 ", ""},
        {"ABC", five, MC3DS_MERGED, "1:5 2:0 ", ""},
        {"ABC", five, MC3DS_FLAT, "1:5 2:5 3:5 ", ""},
        {"A", five, 0, "1:5 2:-5 ", ""},
        {"A", five, MC3DS_FLAT, "1:5 ", ""},
        {"B", five, 0, "", ""},
        {"BC", five, MC3DS_FLAT, "2:5 3:5 ", ""},
        {"A", singular, 0, "1:5 2:0 ", noInverse},
        {"A", singular, MC3DS_FLAT, "1:5 ", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.named + row.matrix);
        std::string vue = "frame 0\n", word;
        for (const char name : row.named)
            vue += "transform " + std::string(1, name) + row.matrix;
        const LoadedScene scene = LoadBytes(bytes, vue);
        Mc3dsOptions options = DefaultOptions(row.flags | MC3DS_ANIMATION);
        options.outputFile = "no/script"; // its tree would add reports
        Output(scene, options);
        std::istringstream words(ReadFile("output/out.anm"));
        std::ostringstream written;
        for (double number = 0, value = 0; words >> word >> number;) {
            for (int i = 0; word == "Transform" && i < 12 && words >> value; ++i)
                if (i == 9)
                    written << number << ':' << value + 0.0 << ' ';
        }
        EXPECT_EQ(written.str(), row.written);
        EXPECT_EQ(TakeReportLines("E", 0), row.errors);
    }
}

TEST_F(OutputTest, ADocumentOfManyBlocksHasEveryLineInItsPlace)
{
    std::vector<float> xyz;
    std::string expected;
    for (int i = 1; i < 9000; ++i) {
        const float x = static_cast<float>(i), y = x / 8, z = x * x / 4096;
        xyz.insert(xyz.end(), {x, y, z});
        char line[128]; // the file's z axis becomes y, its y axis -z
        std::snprintf(line, sizeof line, "Vertex %10.6f %10.6f %10.6f\n", static_cast<double>(x),
                      static_cast<double>(z), static_cast<double>(-y));
        expected += line;
    }
    // A per-object file has no placement, so no sum changes the numbers.
    EXPECT_EQ(Lines(Written(Scene({Object("A", xyz)}), MC3DS_PER_OBJECT), "Vertex "), expected);
    // NaN has no sign in a text.
    EXPECT_EQ(Lines(Written(Scene({Object("A", {NAN, -NAN, 5})}), MC3DS_PER_OBJECT), "Vertex "),
              "Vertex        nan        nan        nan\n");
}

TEST_F(OutputTest, ChildrenComeInTheirParentOneAfterTheOther)
{
    Bytes objects;
    for (const char *name : {"R", "A", "B", "A1", "B1", "B2", "C"})
        objects += Object(name, corners);
    const Bytes tree =
        Scene({objects}, {Kfhdr(1), ObjectNode("R", noParent), ObjectNode("A", 0), ObjectNode("B", 0),
                          ObjectNode("A1", 1), ObjectNode("B1", 2), ObjectNode("B2", 2), ObjectNode("C", 0)});
    std::istringstream script(Written(tree));
    std::string order;
    for (std::string line, word, name; std::getline(script, line);) {
        std::istringstream words(line);
        words >> word >> name;
        if (word == "#" && !name.empty() && name.size() <= 2 && !order.ends_with(name + ' '))
            order += name + ' ';
    }
    EXPECT_EQ(order, "R A A1 B B1 B2 C ");
}

TEST_F(OutputTest, EachLevelIsIndentedByTwoBlanks)
{
    Pieces nodes = {Kfhdr(1)};
    for (int i = 0; i < 2100; ++i)
        nodes.push_back(ObjectNode("$$$DUMMY", static_cast<uint16_t>(i - 1)));
    std::istringstream script(Written(Scene({}, {Join(nodes)})));
    size_t level = 0, deepest = 0, wrong = 0;
    for (std::string line; std::getline(script, line);) {
        const size_t blanks = std::min(line.find_first_not_of(' '), line.size());
        const std::string word = line.substr(blanks, line.find(' ', blanks) - blanks);
        level -= word.ends_with("End") ? 1 : 0;
        wrong += line.empty() || blanks == 2 * level ? 0 : 1;
        level += word.ends_with("Begin") ? 1 : 0;
        deepest = std::max(deepest, blanks);
    }
    EXPECT_EQ(level, 0u);
    EXPECT_EQ(wrong, 0u);
    EXPECT_GT(deepest, 4200u);
}
