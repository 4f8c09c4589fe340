// The .glb file of a model: bytes, positions of triangles, animation, and what the Khronos validator finds.
#if defined(MC3DS_PROGRAM) && defined(MC3DS_HAVE_MCLMODEL)

#include <cmath>
#include <cstring>
#include <map>
#include <numeric>
#include <regex>
#include <set>

#include <nlohmann/json.hpp>

#include "program.h"
#include "script.h"
#include "seeds.h"
#include "worked_scene.h"

using namespace chunks;
namespace fs = std::filesystem;
using Json = nlohmann::json;
struct GlbFile {
    Json json;
    std::string binary;
};

static GlbFile ReadGlb(const std::string &name)
{
    const std::string bytes = ReadFile(name);
    const size_t json = NumberAt(bytes, 12, 4);
    EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(16, 4), "glTFJSON");
    EXPECT_EQ(NumberAt(bytes, 8, 4), bytes.size());
    GlbFile file = {Json::parse(bytes.substr(20, json)), ""};
    if (20 + json < bytes.size()) {
        EXPECT_EQ(NumberAt(bytes, 20 + json, 4), bytes.size() - 28 - json);
        file.binary = bytes.substr(28 + json);
    }
    return file;
}

static std::vector<double> NumbersOf(const GlbFile &file, size_t index)
{
    const Json &accessor = file.json["accessors"][index],
               &view = file.json["bufferViews"][accessor["bufferView"].get<size_t>()];
    const std::map<std::string, size_t> parts = {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}};
    const size_t count = parts.at(accessor["type"]), type = accessor["componentType"];
    const size_t width = type == 5123 ? 2 : 4, stride = view.value("byteStride", count * width);
    std::vector<double> numbers;
    for (size_t i = 0; i < accessor["count"]; ++i)
        for (size_t part = 0; part < count; ++part) {
            const size_t at = view["byteOffset"].get<size_t>() + accessor.value("byteOffset", size_t{0}) +
                              i * stride + part * width;
            float single = 0;
            uint32_t whole = 0;
            std::memcpy(type == 5126 ? static_cast<void *>(&single) : &whole, file.binary.data() + at, width);
            numbers.push_back(type == 5126 ? static_cast<double>(single) : whole);
        }
    return numbers;
}

static Matrix LocalOf(const Json &node)
{
    if (node.contains("matrix"))
        return node["matrix"];
    if (!node.contains("rotation"))
        return identity;
    const std::array<double, 4> q = node["rotation"];
    const Point scale = node["scale"], shift = node["translation"];
    const auto [x, y, z, w] = q;
    const double rows[9] = {1 - 2 * (y * y + z * z), 2 * (x * y + w * z),     2 * (x * z - w * y),
                            2 * (x * y - w * z),     1 - 2 * (x * x + z * z), 2 * (y * z + w * x),
                            2 * (x * z + w * y),     2 * (y * z - w * x),     1 - 2 * (x * x + y * y)};
    Matrix m = identity;
    for (size_t i = 0; i < 9; ++i)
        m[i / 3 * 4 + i % 3] = rows[i] * scale[i / 3];
    for (size_t i = 0; i < 3; ++i)
        m[12 + i] = shift[i];
    return m;
}

// The world matrices of the nodes.
static std::vector<Matrix> WorldsOf(const Json &json)
{
    std::vector<Matrix> worlds(json["nodes"].size(), identity);
    const std::function<void(size_t, const Matrix &)> visit = [&](size_t index, const Matrix &above) {
        const Json &node = json["nodes"][index];
        worlds[index] = Times(LocalOf(node), above);
        for (const size_t child : node.value("children", std::vector<size_t>()))
            visit(child, worlds[index]);
    };
    for (const size_t root : json["scenes"][0].value("nodes", std::vector<size_t>()))
        visit(root, identity);
    return worlds;
}

// The primitives of all meshes.
static std::vector<Json> PrimitivesOf(const GlbFile &file)
{
    std::vector<Json> all;
    for (const Json &mesh : file.json["meshes"])
        all.insert(all.end(), mesh["primitives"].begin(), mesh["primitives"].end());
    return all;
}

// The corners of all triangles, three each, in world space.
static std::vector<Point> CornersOf(const GlbFile &file)
{
    std::vector<Point> corners;
    const std::vector<Matrix> worlds = WorldsOf(file.json);
    for (size_t i = 0; i < worlds.size(); ++i) {
        if (!file.json["nodes"][i].contains("mesh"))
            continue;
        const Json &mesh = file.json["meshes"][file.json["nodes"][i]["mesh"].get<size_t>()];
        for (const Json &primitive : mesh["primitives"]) {
            if (primitive["mode"] != 4)
                continue;
            const std::vector<double> places = NumbersOf(file, primitive["attributes"]["POSITION"]);
            for (const double index : NumbersOf(file, primitive["indices"])) {
                const double *p = &places.at(static_cast<size_t>(index) * 3);
                corners.push_back(Place({p[0], p[1], p[2]}, worlds[i].data()));
            }
        }
    }
    return corners;
}

// The same triangles, in any order.
static void ExpectSameTriangles(std::vector<Point> ours, const std::vector<Point> &script, double tolerance)
{
    ASSERT_EQ(ours.size(), script.size());
    for (size_t wanted = 0; wanted < script.size(); wanted += 3) {
        size_t at = 0;
        while (at < ours.size() &&
               Distance({&ours[at], &ours[at] + 3}, {&script[wanted], &script[wanted] + 3}) > tolerance)
            at += 3;
        ASSERT_LT(at, ours.size()) << "triangle " << wanted / 3;
        ours.erase(ours.begin() + static_cast<ptrdiff_t>(at), ours.begin() + static_cast<ptrdiff_t>(at + 3));
    }
}

// One triangle, BOX, with a placement in each frame: its axes, then its position.
static void WriteMovingBox(const std::string &name, const std::vector<std::string> &frames)
{
    std::string vue;
    for (size_t i = 0; i < frames.size(); ++i)
        vue += "frame " + std::to_string(i) + " transform BOX " + frames[i] + '\n';
    WriteFile(name + ".vue", vue);
    WriteFile(name + ".3ds",
              Scene({Glass(), Triangle("BOX", 0)},
                    {Kfhdr(static_cast<uint32_t>(frames.size())), ObjectNode("BOX", noParent)}));
}

struct GlbTest : SceneTest {
    void SetUp() override
    {
        SceneTest::SetUp();
        WriteFile("worked.3ds", WorkedScene());
        fs::copy_file(SamplePath("orrery.3DS"), "orrery.3ds");
        fs::copy_file(SamplePath("orrery.vue"), "orrery.vue");
    }
};

static const char *const forms[] = {"",         "--flat",          "--merged",
                                    "--protos", "--flat --protos", "--animation --scale 0.25 --centre"};

TEST_F(GlbTest, ItsTrianglesAreWhereTheScriptPutsThem)
{
    for (const char *scene : {"worked.3ds", "orrery.3ds"})
        for (const char *form : forms) {
            SCOPED_TRACE(std::string(scene) + ' ' + form);
            const Outcome run = Start(std::string(scene) + " -o m.mcx --glb m.glb " + form);
            ASSERT_EQ(run.status, 0) << run.said;
            // A script rounds matrices to six decimals; vertices are up to 60 units from the middle.
            ExpectSameTriangles(CornersOf(ReadGlb("m.glb")), SolidCorners(ReadText("m.mcx")), 2e-4);
        }
}

// What a matrix can say stays out of the vertices.
TEST_F(GlbTest, NodesHaveTheirPlacements)
{
    Start("worked.3ds -o m.mcx --glb m.glb");
    size_t matrices = 0;
    const GlbFile file = ReadGlb("m.glb");
    for (const Json &node : file.json["nodes"])
        matrices += node.contains("matrix") ? 1 : 0;
    EXPECT_EQ(matrices, 4u);
    // What a matrix can't store is in the vertices: any two axes aslant, or any axis lost.
    const char *const bent[] = {"1 1 0 0 1 0 0 0 1", "1 0 0 0 1 1 0 0 1", "1 0 1 0 1 0 0 0 1",
                                "0 0 0 0 1 0 0 0 1", "1 0 0 0 0 0 0 0 1", "1 0 0 0 1 0 0 0 0"};
    for (const std::string rows : bent) {
        WriteMovingBox("bent", {rows + " 0 0 0"});
        Start("bent.3ds --animation -o m.mcx --glb m.glb");
        const GlbFile still = ReadGlb("m.glb");
        EXPECT_FALSE(still.json["nodes"][0].contains("matrix")) << rows;
        ExpectSameTriangles(CornersOf(still), SolidCorners(ReadText("m.mcx")), 1e-5);
    }
}

TEST_F(GlbTest, WiresAreTheEdgesOfTheirFacesEachOnce)
{
    const Bytes grey = Colour24(90, 90, 90);
    Pieces pieces;
    for (const char *name : {"A", "B", "C", "D", "WIRE"})
        pieces.push_back(Material(name, {Finish(grey, grey, grey, *name == 'W' ? 0 : 1)}));
    for (const char *name : {"A", "B", "C", "D", "WIRE"})
        pieces.push_back(NamedMesh(name, {Points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 5, 5, 5}),
                                          Faces({0, 1, 2, 0, 2, 3}, {MaterialGroup(name, {0, 1})})}));
    WriteFile("wires.3ds", Scene(pieces));
    Start("wires.3ds -o m.mcx --glb m.glb");
    const GlbFile file = ReadGlb("m.glb");
    std::multiset<std::pair<double, double>> edges;
    for (const Json &primitive : PrimitivesOf(file)) {
        const std::vector<double> ends = NumbersOf(file, primitive["indices"]);
        for (size_t at = 0; at < ends.size() && primitive["mode"] == 1; at += 2)
            edges.insert(std::minmax(ends[at], ends[at + 1]));
    }
    // The vertices are numbered in the order in which the sorted edges have them.
    EXPECT_EQ(edges, (std::multiset<std::pair<double, double>>{{0, 1}, {0, 2}, {0, 3}, {1, 2}, {2, 3}}));
}

// Above half a million vertices and faces the model is built several times, a part of the objects at a time.
// Each object here has more vertices than 16 bits count.
TEST_F(GlbTest, ALargeModelHasEachTriangleOnce)
{
    std::vector<float> xyz(3 * 65535);
    std::iota(xyz.begin(), xyz.end(), 0.0f);
    std::vector<uint16_t> faces(3 * 65535);
    for (size_t i = 0; i < faces.size(); ++i)
        faces[i] = static_cast<uint16_t>(i % 65535);
    const Bytes large = Mesh({Points(xyz), Faces(faces)});
    Pieces objects;
    for (const char *name : {"A", "B", "C", "D", "E"})
        objects.push_back(NamedObject(name, {large}));
    WriteFile("large.3ds", Scene(objects));
    Start("large.3ds --glb m.glb");
    const GlbFile file = ReadGlb("m.glb");
    EXPECT_EQ(file.json["meshes"].size(), 5u);
    for (const Json &primitive : PrimitivesOf(file)) {
        const std::vector<double> indices = NumbersOf(file, primitive["indices"]);
        EXPECT_EQ(indices.size(), faces.size());
        EXPECT_EQ(indices.back(), faces.size() - 1);
    }
}

// The chunks of a PNG file and the segments of a JPEG file, with other contents.
static const Bytes pngFile = Bytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) + Bytes(17, 'h') +
                             Bytes("\0\0\0\5IDAT", 8) + Bytes(9, 'd') + Bytes("\0\0\0\0IENDcrc!", 12);
static const Bytes jpegFile =
    Bytes("\xff\xd8\xff\xe0\0\4jf\xff\xff\xc4\0\3t\xff\xc0\0\5siz\xff\xda\0\2", 25) + Bytes(9, 's') +
    "\xff\xd9";

TEST_F(GlbTest, SurfacesBecomeMaterialsAndPicturesBesideTheSceneAreInIt)
{
    const Bytes png = pngFile;
    WriteFile("brick.png", png);
    WriteFile("sky.JPEG", jpegFile);
    WriteFile("WOOD.jpg", "no picture");
    const Outcome run = Start("worked.3ds --glb m.glb -o m.mcx");
    EXPECT_TRUE(Has(run.said, "note: textures that the .glb names and doesn't hold: 2;"));
    const GlbFile file = ReadGlb("m.glb");
    EXPECT_TRUE(Has(file.binary, png));
    EXPECT_EQ(file.json["images"].size(), 2u);
    EXPECT_FALSE(Has(run.said, "note: faces"));
    size_t targets = 0;
    for (const Json &view : file.json["bufferViews"]) {
        EXPECT_EQ(view["byteOffset"].get<size_t>() % 4, 0u);
        targets += view.contains("target") ? 1 : 0;
    }
    EXPECT_EQ(targets, file.json["bufferViews"].size() - 2) << "all but the pictures";
    std::map<std::string, Json> byTexture;
    for (const Json &material : file.json["materials"])
        byTexture[material["extras"].value("texture", "") +
                  material["extras"]["lightSampling"].get<std::string>()] = material;
    for (const Json &mesh : file.json["meshes"])
        for (const Json &primitive : mesh["primitives"])
            EXPECT_EQ(primitive["attributes"].contains("TEXCOORD_0"), mesh["name"] == "BASE_PLATE") << mesh;
    const Json &glass = byTexture.at("BRICK.GIFVERTEX"), &green = byTexture.at("FACET");
    EXPECT_EQ(glass["alphaMode"], "BLEND");
    EXPECT_EQ(glass["extras"]["mask"], "MASK.GIF");
    EXPECT_EQ(glass["pbrMetallicRoughness"]["baseColorFactor"], Json({1.0, 1.0, 1.0, 0.5}));
    EXPECT_EQ(green["pbrMetallicRoughness"]["baseColorFactor"], Json({0.0, 1.0, 0.0, 1.0}));
    EXPECT_EQ(green["doubleSided"], true);
    const Json &sky = byTexture.at("SKY.CELVERTEX")["pbrMetallicRoughness"];
    EXPECT_NE(sky["baseColorTexture"]["index"], glass["pbrMetallicRoughness"]["baseColorTexture"]["index"]);
    EXPECT_EQ(
        file.json["images"][file.json["textures"][sky["baseColorTexture"]["index"].get<size_t>()]["source"]
                                .get<size_t>()]["mimeType"],
        "image/jpeg");
    const Json &grey = byTexture.at("VERTEX")["pbrMetallicRoughness"]["baseColorFactor"];
    EXPECT_NEAR(grey[0].get<double>(), 0.21404, 1e-4) << "0.5 on a screen";
}

// Two triangles at right angles share the edge from vertex 0 to 2, where the second has the wider angles; the
// third is a line, which has no normal.
TEST_F(GlbTest, NormalsAreThoseOfTheFaceOrOfTheAnglesAround)
{
    const Bytes mesh = Mesh({Points({0, 0, 0, 1, 0.5f, 0, 0, 1, 0, 0, -1, 3}),
                             Faces({0, 1, 2, 0, 2, 3, 0, 0, 2}, {MaterialGroup("GLASS", {0, 1, 2})})});
    const auto normalsOf = [&mesh](uint32_t shading) {
        WriteFile("s.3ds", Scene({Glass(shading), NamedObject("A", {mesh})}));
        EXPECT_EQ(Start("s.3ds --glb m.glb -o m.mcx").status, 0);
        const GlbFile file = ReadGlb("m.glb");
        return NumbersOf(file, file.json["meshes"][0]["primitives"][0]["attributes"]["NORMAL"]);
    };
    const std::vector<double> flat = normalsOf(1), smooth = normalsOf(2);
    ASSERT_EQ(flat.size(), 27u);
    ASSERT_EQ(smooth.size(), 12u);
    // Of the first face upwards, of the second to the right; the file's z is y, its y is -z.
    const double first[3] = {0, 1, 0}, second[3] = {1, 0, 0};
    const double angles[3][2] = {{std::atan2(1, 0.5), std::atan2(3, -1)},
                                 {std::atan2(1, 0.5), std::atan2(3, 2)},
                                 {0, 3.14159265 - std::atan2(3, -1) - std::atan2(3, 2)}};
    for (size_t vertex = 0; vertex < 3; ++vertex)
        for (size_t axis = 0; axis < 3; ++axis) {
            const double *of = angles[vertex], length = std::hypot(of[0], of[1]);
            const size_t index = vertex == 0 ? 0 : vertex + 1; // 1 is in the first face alone
            EXPECT_NEAR(smooth[index * 3 + axis], (first[axis] * of[0] + second[axis] * of[1]) / length, 2e-4)
                << index << ' ' << axis;
            EXPECT_NEAR(flat[vertex * 3 + axis], first[axis], 1e-6);
            EXPECT_NEAR(flat[9 + vertex * 3 + axis], second[axis], 1e-6);
        }
    EXPECT_NEAR(smooth[3 * 1 + 1], 1, 1e-6);
    EXPECT_EQ(std::vector<double>(flat.begin() + 24, flat.end()), std::vector<double>({0, 1, 0}));
}

// Faces that a reader of the format can't take are left out, and counted.
TEST_F(GlbTest, NumbersThatAreNoneStayOutOfTheFile)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Bytes hole = Mesh({Points({0, 0, 0, nan, 0, 0, 0, nan, 0, 0, 0, nan, 0, 1, 0, 0, 0, 1}),
                             Faces({0, 4, 5, 1, 4, 5, 4, 2, 5, 5, 4, 3})});
    WriteFile("hole.3ds", Scene({NamedObject("HOLE", {hole})}));
    const Outcome run = Start("hole.3ds --glb m.glb -o m.mcx --texture-lit --texture-foreshorten");
    EXPECT_TRUE(
        Has(run.said, "note: faces that the .glb lacks, as their corners are no finite numbers: 3\n"));
    EXPECT_FALSE(Has(run.said, "textures"));
    EXPECT_EQ(CornersOf(ReadGlb("m.glb")).size(), 3u);
    Pieces far;
    for (const std::vector<float> &p : {std::vector<float>{0, 0, 99}, {99, 0, 0}, {-99, 0, 0}})
        far.push_back(
            NamedMesh("FAR", {Points({p[0], 0, p[2], p[0] + 1, 0, p[2], p[0], 1, p[2]}), Faces({0, 1, 2})}));
    WriteFile("far.3ds", Scene(far));
    Start("far.3ds --glb m.glb -o m.mcx");
    EXPECT_EQ(CornersOf(ReadGlb("m.glb")).size(), 9u);
    EXPECT_TRUE(Has(Start("far.3ds --glb m.glb -o m.mcx --scale 3e37").said, "no finite numbers: 3\n"));
    Start("worked.3ds --glb m.glb -o m.mcx --texture-lit --texture-foreshorten");
    size_t modes = 0;
    const GlbFile lit = ReadGlb("m.glb");
    for (const Json &material : lit.json["materials"])
        modes += material["extras"]["textureModes"] == Json::array({"Lit", "Foreshorten"}) ? 1 : 0;
    EXPECT_GE(modes, 3u);
}

// The world matrices of the nodes in each frame of an animation file.
static std::vector<std::vector<Matrix>> FramesOf(const std::string &text, const Json &nodes)
{
    std::map<size_t, size_t> nodeOf, parents; // by the number in the file, by the node
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodeOf[nodes[i]["extras"]["tag"].get<size_t>() - 1] = i;
        for (const size_t child : nodes[i].value("children", std::vector<size_t>()))
            parents[child] = i;
    }
    std::vector<std::vector<Matrix>> frames;
    for (const FrameLines &lines : ReadFrames(text)) {
        std::vector<Matrix> &worlds = frames.emplace_back(nodes.size(), identity);
        for (const auto &[number, matrix] : lines) {
            const size_t node = nodeOf.at(number);
            worlds[node] = parents.contains(node) ? Times(matrix, worlds[parents[node]]) : matrix;
        }
    }
    return frames;
}

static std::vector<double> SamplesOf(const GlbFile &file, const Json &channel, const char *side)
{
    const Json &samplers = file.json["animations"][0]["samplers"];
    return NumbersOf(file, samplers[channel["sampler"].get<size_t>()][side]);
}

// Gives the nodes the placements of a frame.
static void GoToFrame(GlbFile *file, size_t frame)
{
    for (const Json &channel : file->json["animations"][0]["channels"]) {
        const std::string path = channel["target"]["path"];
        const auto parts = static_cast<ptrdiff_t>(path == "rotation" ? 4 : 3),
                   at = static_cast<ptrdiff_t>(frame) * parts;
        const std::vector<double> values = SamplesOf(*file, channel, "output");
        file->json["nodes"][channel["target"]["node"].get<size_t>()][path] =
            std::vector<double>(values.begin() + at, values.begin() + at + parts);
    }
}

// Converts a scene with its animation, and compares the placements of those frames with the animation file.
static void ExpectFrames(const std::string &scene, const std::vector<size_t> &wanted)
{
    ASSERT_EQ(Start(scene + ".3ds --animation --glb m.glb -o m.mcx").status, 0);
    GlbFile file = ReadGlb("m.glb");
    const std::vector<std::vector<Matrix>> frames = FramesOf(ReadText("m.mca"), file.json["nodes"]);
    const Json animation = file.json["animations"][0];
    for (const Json &channel : animation["channels"]) {
        const std::vector<double> turns = SamplesOf(file, channel, "output"),
                                  times = SamplesOf(file, channel, "input");
        for (size_t at = 4; at < turns.size() && channel["target"]["path"] == "rotation";
             at += 4) // the short way round
            EXPECT_GE(std::inner_product(&turns[at], &turns[at] + 4, &turns[at - 4], 0.0), 0.0);
        ASSERT_EQ(times.size(), frames.size());
        for (size_t frame = 0; frame < frames.size(); ++frame)
            EXPECT_NEAR(times[frame], static_cast<double>(frame) / 30, 1e-6);
    }
    const Json &times = file.json["accessors"][animation["samplers"][0]["input"].get<size_t>()];
    EXPECT_EQ(times["min"], Json({0.0}));
    EXPECT_NEAR(times["max"][0].get<double>(), static_cast<double>(frames.size() - 1) / 30, 1e-6);
    for (const size_t frame : wanted) {
        GoToFrame(&file, frame);
        const std::vector<Matrix> worlds = WorldsOf(file.json);
        for (size_t node = 0; node < worlds.size(); ++node)
            for (size_t i = 0; i < 16; ++i)
                EXPECT_NEAR(worlds[node][i], frames.at(frame)[node][i], 3e-4)
                    << file.json["nodes"][node]["name"] << ' ' << frame << ' ' << i;
    }
}

TEST_F(GlbTest, TheAnimationIsThatOfTheAnimationFile)
{
    ExpectFrames("orrery", {0, 17, 59});
    // Half and quarter turns, a mirror, lost axes.
    const char *const turns[] = {
        "1 0 0 0 1 0 0 0 1",          "1 0 0 0 -1 0 0 0 -1", "-1 0 0 0 1 0 0 0 -1",
        "-1 0 0 0 -1 0 0 0 1",        "0 1 0 0 0 1 1 0 0",   "0 0 1 1 0 0 0 1 0",
        "0 -3 0 2 0 0 0 0 1",         "1 0 0 0 1 0 0 0 -2",  "0 1 0 1 0 0 0 0 1",
        "0 0 1 0 1 0 1 0 0",          "1 0 0 0 0 1 0 1 0",   "0 0 0 0 0.6 0.8 0 -0.8 0.6",
        "0.6 0 0.8 0 0 0 -2.4 0 1.8", "-3 4 0 4 3 0 0 0 0"};
    std::vector<std::string> frames;
    std::vector<size_t> all;
    for (const char *turn : turns) {
        all.push_back(frames.size());
        frames.push_back(turn + (" 1 2 " + std::to_string(frames.size())));
    }
    WriteMovingBox("turns", frames);
    ExpectFrames("turns", all);
}

// Two axes at 45 degrees are each turned by 22.5; the distance told is that of the bounds' worst corner.
TEST_F(GlbTest, ShearInAnAnimationBecomesTheNearestPlacement)
{
    const std::string straight = "1 0 0 0 1 0 0 0 1 0 0 0";
    const std::string note =
        "note: a .glb can't store shear; the nearest placements of the animation are used, "
        "up to ([0-9.]+) units of the file away\n";
    for (const std::string slant : {"1 1 0 0 1 0 0 0 1", "1 0 0 0 1 1 0 0 1", "1 0 1 0 1 0 0 0 1"}) {
        SCOPED_TRACE(slant);
        WriteMovingBox("bent", {straight, slant + " 5 0 0"});
        for (const char *size : {"--size 60", "--size 1e-6"})
            EXPECT_TRUE(Says(Start(std::string("bent.3ds --glb b.glb -o b.mcx ") + size).said, note));
        const std::string said = Start("bent.3ds --animation --glb b.glb -o b.mcx").said;
        GlbFile bent = ReadGlb("b.glb");
        EXPECT_EQ(bent.json["animations"][0]["channels"].size(), 3u);
        const Matrix wanted = FramesOf(ReadText("b.mca"), bent.json["nodes"])[1][0];
        GoToFrame(&bent, 1);
        EXPECT_NEAR(std::abs(bent.json["nodes"][0]["rotation"][3].get<double>()), 0.9807853, 1e-5);
        double worst = 0;
        for (const Point &corner : {Point{4, 0, 0}, Point{4, 0, -2}, Point{0, 0, -2}}) {
            const Point a = Place(corner, wanted.data()), b = Place(corner, WorldsOf(bent.json)[0].data());
            worst = std::max(worst, std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]));
        }
        std::smatch units;
        ASSERT_TRUE(std::regex_search(said, units, std::regex(note))) << said;
        EXPECT_NEAR(std::stod(units[1]), worst, 1e-3);
    }
}

// The shear is in the vertices, and what remains is a motion that the format can say.
TEST_F(GlbTest, ASlantedObjectKeepsItsShapeWhenItMoves)
{
    WriteMovingBox("bent", {"1 1 0 0 1 0 0 0 1 0 0 0", "1 1 0 0 1 0 0 0 1 5 0 0"});
    EXPECT_FALSE(Has(Start("bent.3ds --animation --glb b.glb -o b.mcx").said, "nearest"));
    GlbFile file = ReadGlb("b.glb");
    std::vector<Point> moved = CornersOf(file);
    for (Point &corner : moved)
        corner[0] += 5;
    GoToFrame(&file, 1);
    ASSERT_EQ(moved.size(), 3u);
    EXPECT_LT(Distance(CornersOf(file), moved), 1e-5);
}

// What stands still between a root and a part that moves keeps its place.
TEST_F(GlbTest, ObjectsAtRestCarryThoseThatMove)
{
    WriteFile("still.3ds",
              Scene({Glass(), Triangle("A", 0), Triangle("B", 0), Triangle("C", 0)},
                    {Kfhdr(2), ObjectNode("A", noParent), ObjectNode("B", 0), ObjectNode("C", 1)}));
    const std::string place = " 1 0 0 0 1 0 0 0 1 ", still = " transform A" + place + "10 0 0 transform B" +
                                                             place + "20 0 0 transform C" + place;
    WriteFile("still.vue", "frame 0" + still + "30 0 0 frame 1" + still + "37 0 0");
    ExpectFrames("still", {0, 1});
    EXPECT_EQ(ReadGlb("m.glb").json["animations"][0]["channels"].size(), 3u);
}

TEST_F(GlbTest, ItGoesTheWayOfAllOutputs)
{
    MakeInputs();
    WriteFile("bare.3ds", Scene({}, {Kfhdr(1), ObjectNode("$$$DUMMY", noParent)}));
    std::string outputs = "--glb bare.glb -o bare.mcx";
#if defined(MC3DS_HAVE_PNG)
    outputs += " --preview bare.png";
#endif
    const Outcome bare = Start("bare.3ds " + outputs);
    EXPECT_TRUE(Says(bare.said, "no triangles; \"bare.glb\" is not written\n.*: wrote bare.mcx"));
    EXPECT_EQ(bare.files, "bare.mcx");
    fs::remove("bare.mcx");
    EXPECT_EQ(Start("two.3ds --info --glb m.glb").files, "m.glb");
    EXPECT_EQ(Start("two.3ds lost.3ds --glb dir/m.glb -q").files,
              "dir/lost.m.glb dir/two.m.glb lost.mcx two.mcx");
    for (const char *file : {"dir/lost.m.glb", "dir/two.m.glb", "lost.mcx", "two.mcx"})
        fs::remove(file);
    EXPECT_EQ(Start("two.3ds lost.3ds --glb .glb -q").files, "lost.glb lost.mcx two.glb two.mcx");
    fs::remove("two.glb");
    EXPECT_EQ(Start("two.3ds --info --glb dir/.GLB").files, "dir/two.GLB");
    EXPECT_EQ(Start("two.3ds --glb m.txt").status, 2);
    EXPECT_EQ(Start("two.3ds --glb none/m.glb").status, 1);
    WriteFile("m.glb", "old");
    EXPECT_EQ(Start("two.3ds --glb m.glb --no-clobber -q").status, 0);
    EXPECT_EQ(ReadFile("m.glb"), "old");
    Start("two.3ds --glb m.glb --summary sum.json --report r.html -q");
    EXPECT_TRUE(Has(ReadFile("sum.json"), "\"m.glb\""));
    EXPECT_TRUE(Has(ReadFile("r.html"), "./m.glb\""));
}

// Each damage of a picture, which a viewer would show as a white model.
TEST_F(GlbTest, ADamagedPictureIsNamedAndNotEmbedded)
{
    const auto without = [](Bytes bytes, const char *part) {
        return bytes.replace(bytes.find(part), 4, "none");
    };
    const std::pair<Bytes, const char *> rows[] = {
        {pngFile, ""},
        {pngFile.substr(0, pngFile.size() - 1), "damaged or cut"},
        {without(pngFile, "IHDR"), "damaged or cut"},
        {without(pngFile, "IDAT"), "damaged or cut"},
        {jpegFile, ""},
        {jpegFile.substr(0, jpegFile.size() - 1), "damaged or cut"},
        {without(jpegFile, "\xff\xc0"), "damaged or cut"},
        {Bytes("\xff\xd8\xff\xda\0\2\xff\xd9", 8), "damaged or cut"},
        {"", "neither a PNG nor a JPEG file"},
    };
    for (const auto &[picture, why] : rows) {
        SCOPED_TRACE(picture);
        WriteFile("brick.png", picture);
        const Outcome run = Start("worked.3ds --glb m.glb -o m.mcx");
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(Has(run.said, "note: picture \"brick.png\" isn't embedded: "), *why != '\0') << run.said;
        EXPECT_TRUE(Has(run.said, why));
        EXPECT_EQ(ReadGlb("m.glb").json.contains("images"), *why == '\0');
    }
    fs::remove("brick.png");
    fs::create_directory("brick.png");
    EXPECT_TRUE(Has(Start("worked.3ds --glb m.glb -o m.mcx").said, "isn't embedded: it is no regular file"));
}

// Several names of one picture.
TEST_F(GlbTest, APictureIsEmbeddedOnce)
{
    const Bytes grey = Colour24(51, 51, 51);
    WriteFile("A.png", pngFile);
    WriteFile("many.3ds",
              Scene({Material("ONE", {Finish(grey, grey, grey, 2), Map(0xA200, "A.GIF")}),
                     Material("TWO", {Finish(grey, grey, grey, 2), Map(0xA200, "A.TGA")}),
                     NamedObject("M", {Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}),
                                             Faces({0, 1, 2, 2, 1, 0}, {MaterialGroup("ONE", {0}),
                                                                        MaterialGroup("TWO", {1})})})})}));
    Start("many.3ds --glb m.glb -o m.mcx");
    const GlbFile file = ReadGlb("m.glb");
    EXPECT_EQ(file.json["images"].size(), 1u);
    for (const Json &material : file.json["materials"])
        EXPECT_EQ(material["pbrMetallicRoughness"]["baseColorTexture"]["index"], 0);
}

// What is no number, or none that fits a float, is left out or kept from the frame before.
TEST_F(GlbTest, PlacementsWithoutNumbersHaveNoPlaceInIt)
{
    const Bytes mesh = Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2})});
    for (const char *bad : {"nan", "1e39", "inf", "1e300"}) {
        SCOPED_TRACE(bad);
        WriteFile("bad.3ds", Scene({NamedObject("A", {mesh}), NamedObject("B", {mesh})},
                                   {Kfhdr(3), ObjectNode("A", noParent), ObjectNode("B", noParent)}));
        const std::string place = " 1 0 0 0 1 0 0 0 1 ", wrong = place + bad + " 0 0 ";
        WriteFile("bad.vue", "frame 0 transform A" + place + "0 0 0 transform B" + wrong +
                                 "frame 1 transform A" + wrong + "transform B" + wrong +
                                 "frame 2 transform A" + place + "5 0 0 transform B" + wrong);
        const Outcome run = Start("bad.3ds --animation --glb m.glb -o m.mcx");
        EXPECT_EQ(run.status, 0) << run.said;
        EXPECT_TRUE(
            Has(run.said, "note: faces that the .glb lacks, as their corners are no finite numbers: 1"));
        GlbFile file = ReadGlb("m.glb");
        EXPECT_EQ(file.json["meshes"].size(), 1u);
        EXPECT_EQ(file.json.dump().find("null"), std::string::npos);
        GoToFrame(&file, 1);
        EXPECT_EQ(file.json["nodes"][1]["translation"][0], 0.0);
        GoToFrame(&file, 2);
        EXPECT_EQ(file.json["nodes"][1]["translation"][0], 5.0);
    }
}

#if !defined(_WIN32)
TEST_F(GlbTest, WhyItCannotBeWrittenIsSaid)
{
    const Outcome run = Start("worked.3ds --info --glb m.glb", "ulimit -f 1; ");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Has(run.said, "cannot write \"m.glb\": File too large"));
}

TEST_F(GlbTest, TheValidatorFindsNothing)
{
    const std::string node = "NODE_PATH=\"$NODE_PATH:" MC3DS_NODE_MODULES "\" node ";
    if (RunCommand(node + "-e \"require('gltf-validator')\"").status != 0)
        GTEST_SKIP() << "no gltf-validator: \"tools/setup.sh validator\" installs it";
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Bytes flat = Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2, 0, 0, 0}),
                             MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0})});
    const Bytes bent = Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2}),
                             MeshMatrix({1, 1, 0, 0, 1, 0, 0, 0, 1, 3, 4, 5})});
    const Bytes hole = Mesh({Points({0, 0, 0, nan, 0, 0, 0, 1, 0, 1e30f, 0, 1}), Faces({0, 1, 2, 0, 2, 3})});
    WriteFile("odd.3ds", Scene({NamedObject("FLAT", {flat}), NamedObject("B\xE4NT", {bent}),
                                NamedObject("HOLE", {hole})}));
    WriteFile("lost.3ds", Scene({Glass(), Triangle("BOX", 0), Triangle("LID", 6)},
                                {Kfhdr(2), ObjectNode("BOX", noParent), ObjectNode("LID", 7)}));
    std::string files;
    for (const char *scene : {"worked.3ds", "orrery.3ds", "odd.3ds", "lost.3ds"})
        for (size_t form = 0; form < std::size(forms); ++form) {
            const std::string name = scene + std::to_string(form) + ".glb";
            Start(std::string(scene) + " -q -o m.mcx --glb " + name + ' ' + forms[form]);
            ASSERT_TRUE(fs::exists(name)) << name;
            files += ' ' + name;
        }
    MustRun(node + Quoted(MC3DS_VALIDATE_SCRIPT) + files);
}
#endif

#endif
