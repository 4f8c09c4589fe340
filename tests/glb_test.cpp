// The .glb file of a model: bytes, positions of triangles, animation, and what the Khronos validator finds.
#if defined(MC3DS_PROGRAM) && defined(MC3DS_HAVE_MCLMODEL)

#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <numeric>
#include <regex>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "program.h"
#include "worked_scene.h"

using namespace chunks;
namespace fs = std::filesystem;
using Json = nlohmann::json;
using Vector = std::array<double, 3>;
using Matrix = std::array<double, 16>; // rows; p' = p * M
using Triangle3 = std::array<Vector, 3>;

static const Matrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

static Matrix Times(const Matrix &a, const Matrix &b)
{
    Matrix out = {};
    for (size_t i = 0; i < 16; ++i)
        for (size_t k = 0; k < 4; ++k)
            out[i] += a[i / 4 * 4 + k] * b[k * 4 + i % 4];
    return out;
}

static Vector Place(const Vector &p, const Matrix &m)
{
    Vector out;
    for (size_t i = 0; i < 3; ++i)
        out[i] = p[0] * m[i] + p[1] * m[4 + i] + p[2] * m[8 + i] + m[12 + i];
    return out;
}

struct GlbFile {
    Json json;
    std::string binary;
};

static uint32_t NumberAt(const std::string &bytes, size_t at)
{
    uint32_t number = 0;
    EXPECT_LE(at + 4, bytes.size());
    std::memcpy(&number, bytes.data() + at, 4);
    return number;
}

static GlbFile ReadGlb(const std::string &name)
{
    const std::string bytes = ReadFile(name);
    const size_t json = NumberAt(bytes, 12);
    EXPECT_EQ(bytes.substr(0, 4) + bytes.substr(16, 4), "glTFJSON");
    EXPECT_EQ(NumberAt(bytes, 8), bytes.size());
    GlbFile file = {Json::parse(bytes.substr(20, json)), ""};
    if (20 + json < bytes.size()) {
        EXPECT_EQ(NumberAt(bytes, 20 + json), bytes.size() - 28 - json);
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
    const Vector scale = node["scale"], shift = node["translation"];
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

static std::vector<Triangle3> TrianglesOf(const GlbFile &file)
{
    std::vector<Triangle3> triangles;
    const std::vector<Matrix> worlds = WorldsOf(file.json);
    for (size_t i = 0; i < worlds.size(); ++i) {
        if (!file.json["nodes"][i].contains("mesh"))
            continue;
        for (const Json &primitive :
             file.json["meshes"][file.json["nodes"][i]["mesh"].get<size_t>()]["primitives"]) {
            const std::vector<double> places = NumbersOf(file, primitive["attributes"]["POSITION"]);
            const std::vector<double> indices = NumbersOf(file, primitive["indices"]);
            for (size_t at = 0; at + 2 < indices.size() && primitive["mode"] == 4; at += 3) {
                Triangle3 triangle;
                for (size_t corner = 0; corner < 3; ++corner) {
                    const auto from = static_cast<size_t>(indices[at + corner]) * 3;
                    triangle[corner] = Place({places[from], places[from + 1], places[from + 2]}, worlds[i]);
                }
                triangles.push_back(triangle);
            }
        }
    }
    return triangles;
}

// An open clump or prototype of a script. A Transform replaces the previous one of its scope.
struct Scope {
    std::string name;
    Matrix world;                   // of the scope itself
    std::vector<Matrix> placements; // saved in it; the last one counts
    std::vector<Vector> points;
    std::vector<Triangle3> triangles;
};

// The solid triangles of a script, in world space.
static std::vector<Triangle3> ScriptTriangles(const std::string &script)
{
    std::vector<Scope> scopes = {{"", identity, {identity}, {}, {}}};
    std::map<std::string, std::vector<Triangle3>> prototypes;
    std::vector<Triangle3> all;
    bool isSolid = true;
    std::istringstream lines(script);
    for (std::string line, word, value; std::getline(lines, line); word.clear()) {
        std::istringstream words(line);
        words >> word;
        Scope &scope = scopes.back();
        const Matrix world = Times(scope.placements.back(), scope.world);
        if (word == "TransformBegin") {
            scope.placements.push_back(Matrix(scope.placements.back()));
        } else if (word == "TransformEnd") {
            scope.placements.pop_back();
        } else if (word == "Transform") {
            for (double &number : scope.placements.back())
                words >> number;
        } else if (word == "ClumpBegin" || word == "ProtoBegin") {
            words >> value;
            scopes.push_back({value, word == "ClumpBegin" ? world : identity, {identity}, {}, {}});
        } else if (word == "ClumpEnd" || word == "ProtoEnd") {
            std::vector<Triangle3> &to = word == "ClumpEnd" ? all : prototypes[scope.name];
            to.insert(to.end(), scope.triangles.begin(), scope.triangles.end());
            scopes.pop_back();
        } else if (word == "ProtoInstance") {
            words >> value;
            for (const Triangle3 &t : prototypes[value])
                all.push_back({Place(t[0], world), Place(t[1], world), Place(t[2], world)});
        } else if (word == "Vertex" || word == "VertexExt") {
            Vector p;
            words >> p[0] >> p[1] >> p[2];
            scope.points.push_back(Place(p, world));
        } else if (word == "GeometrySampling") {
            words >> value;
            isSolid = value == "SOLID";
        } else if (word == "Triangle" && isSolid) {
            size_t a, b, c;
            words >> a >> b >> c;
            scope.triangles.push_back(
                {scope.points.at(a - 1), scope.points.at(b - 1), scope.points.at(c - 1)});
        }
    }
    return all;
}

static double Distance(const Triangle3 &a, const Triangle3 &b)
{
    double most = 0;
    for (size_t corner = 0; corner < 3; ++corner)
        for (size_t axis = 0; axis < 3; ++axis)
            most = std::max(most, std::abs(a[corner][axis] - b[corner][axis]));
    return most;
}

static void ExpectSameTriangles(std::vector<Triangle3> ours, const std::vector<Triangle3> &script,
                                double tolerance)
{
    ASSERT_EQ(ours.size(), script.size());
    size_t lost = 0;
    for (const Triangle3 &wanted : script) {
        const auto found = std::find_if(ours.begin(), ours.end(), [&](const Triangle3 &triangle) {
            return Distance(triangle, wanted) <= tolerance;
        });
        if (found == ours.end())
            ++lost;
        else
            ours.erase(found);
    }
    EXPECT_EQ(lost, 0u);
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
            ExpectSameTriangles(TrianglesOf(ReadGlb("m.glb")), ScriptTriangles(ReadText("m.mcx")), 2e-4);
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
    // What a matrix can't say is in the vertices: any two axes aslant, or any axis lost.
    const char *const bent[] = {"1 1 0 0 1 0 0 0 1", "1 0 0 0 1 1 0 0 1", "1 0 1 0 1 0 0 0 1",
                                "0 0 0 0 1 0 0 0 1", "1 0 0 0 0 0 0 0 1", "1 0 0 0 1 0 0 0 0"};
    WriteFile("bent.3ds", Scene({Glass(), Triangle("BOX", 0)}, {Kfhdr(1), ObjectNode("BOX", noParent)}));
    for (const char *rows : bent) {
        WriteFile("bent.vue", std::string("frame 0 transform BOX ") + rows + " 0 0 0");
        Start("bent.3ds --animation -o m.mcx --glb m.glb");
        const GlbFile still = ReadGlb("m.glb");
        EXPECT_FALSE(still.json["nodes"][0].contains("matrix")) << rows;
        ExpectSameTriangles(TrianglesOf(still), ScriptTriangles(ReadText("m.mcx")), 1e-5);
    }
}

TEST_F(GlbTest, WiresAreTheEdgesOfTheirFacesEachOnce)
{
    const Bytes grey = Colour24(90, 90, 90);
    Pieces pieces;
    for (const char *name : {"A", "B", "C", "D", "WIRE"})
        pieces.push_back(Material(name, {Finish(grey, grey, grey, *name == 'W' ? 0 : 1)}));
    for (const char *name : {"A", "B", "C", "D", "WIRE"})
        pieces.push_back(
            NamedObject(name, {Mesh({Points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 5, 5, 5}),
                                     Faces({0, 1, 2, 0, 2, 3}, {MaterialGroup(name, {0, 1})})})}));
    WriteFile("wires.3ds", Scene(pieces));
    Start("wires.3ds -o m.mcx --glb m.glb");
    const GlbFile file = ReadGlb("m.glb");
    std::multiset<std::pair<double, double>> edges;
    for (const Json &mesh : file.json["meshes"])
        for (const Json &primitive : mesh["primitives"]) {
            if (primitive["mode"] != 1)
                continue;
            const std::vector<double> ends = NumbersOf(file, primitive["indices"]);
            for (size_t at = 0; at < ends.size(); at += 2)
                edges.insert(std::minmax(ends[at], ends[at + 1]));
        }
    // The vertices are numbered in the order in which the sorted edges have them.
    EXPECT_EQ(edges, (std::multiset<std::pair<double, double>>{{0, 1}, {0, 2}, {0, 3}, {1, 2}, {2, 3}}));
}

// Above half a million vertices and faces the model is built several times, a part of the objects at a time.
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
    size_t corners = 0;
    for (const Json &mesh : file.json["meshes"])
        for (const Json &primitive : mesh["primitives"])
            corners += file.json["accessors"][primitive["indices"].get<size_t>()]["count"].get<size_t>();
    EXPECT_EQ(corners, 5u * 3 * 65535);
    EXPECT_EQ(file.json["meshes"].size(), 5u);
}

TEST_F(GlbTest, SurfacesBecomeMaterialsAndPicturesBesideTheSceneAreInIt)
{
    const Bytes png = Bytes("\x89PNG\r\n\x1a\n", 8) +
                      std::string("\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x8\2\0\0\0", 21) + std::string(30, 'x');
    WriteFile("brick.png", png);
    WriteFile("sky.JPEG", "\xff\xd8\xff" + std::string(40, 'j'));
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
    EXPECT_EQ(TrianglesOf(ReadGlb("m.glb")).size(), 1u);
    WriteFile(
        "far.3ds",
        Scene({NamedObject("HIGH", {Mesh({Points({0, 0, 99, 1, 0, 99, 0, 1, 99}), Faces({0, 1, 2})})}),
               NamedObject("RIGHT", {Mesh({Points({99, 0, 0, 98, 0, 0, 99, 1, 0}), Faces({0, 1, 2})})}),
               NamedObject("LEFT", {Mesh({Points({-99, 0, 0, -98, 0, 0, -99, 1, 0}), Faces({0, 1, 2})})})}));
    Start("far.3ds --glb m.glb -o m.mcx");
    EXPECT_EQ(TrianglesOf(ReadGlb("m.glb")).size(), 3u);
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
    std::map<int, size_t> nodeOf; // by the number in the file
    std::map<size_t, size_t> parents;
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodeOf[nodes[i]["extras"]["tag"].get<int>() - 1] = i;
        for (const size_t child : nodes[i].value("children", std::vector<size_t>()))
            parents[child] = i;
    }
    std::vector<std::vector<Matrix>> frames;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        int number = 0;
        words >> number;
        if (word == "Frame") {
            frames.emplace_back(nodes.size(), identity);
            continue;
        }
        Matrix m = identity;
        for (size_t i = 0; i < 12; ++i)
            words >> m[i / 3 * 4 + i % 3];
        const size_t node = nodeOf.at(number);
        const auto parent = parents.find(node);
        frames.back()[node] = parent == parents.end() ? m : Times(m, frames.back()[parent->second]);
    }
    return frames;
}

// Converts scene.3ds with its animation, and compares the placements of those frames with the animation file.
static void ExpectFrames(const std::string &scene, const std::vector<size_t> &wanted)
{
    ASSERT_EQ(Start(scene + ".3ds --animation --glb m.glb -o m.mcx").status, 0);
    GlbFile file = ReadGlb("m.glb");
    const Json nodes = file.json["nodes"], animation = file.json["animations"][0];
    const std::vector<std::vector<Matrix>> frames = FramesOf(ReadText("m.mca"), nodes);
    for (const Json &channel : animation["channels"]) {
        if (channel["target"]["path"] != "rotation")
            continue;
        const Json &sampler = animation["samplers"][channel["sampler"].get<size_t>()];
        const std::vector<double> turns = NumbersOf(file, sampler["output"]);
        for (size_t at = 4; at < turns.size(); at += 4) // the short way round
            EXPECT_GE(std::inner_product(&turns[at], &turns[at] + 4, &turns[at - 4], 0.0), 0.0);
    }
    const Json &times = file.json["accessors"][animation["samplers"][0]["input"].get<size_t>()];
    EXPECT_EQ(times["min"], Json({0.0}));
    EXPECT_NEAR(times["max"][0].get<double>(), static_cast<double>(frames.size() - 1) / 30, 1e-6);
    for (const size_t frame : wanted) {
        ASSERT_LT(frame, frames.size());
        for (const Json &channel : animation["channels"]) {
            const Json &sampler = animation["samplers"][channel["sampler"].get<size_t>()];
            EXPECT_NEAR(NumbersOf(file, sampler["input"])[frame], static_cast<double>(frame) / 30, 1e-6);
            const std::vector<double> values = NumbersOf(file, sampler["output"]);
            const std::string path = channel["target"]["path"];
            const size_t parts = path == "rotation" ? 4 : 3;
            file.json["nodes"][channel["target"]["node"].get<size_t>()][path] =
                std::vector<double>(values.begin() + static_cast<ptrdiff_t>(frame * parts),
                                    values.begin() + static_cast<ptrdiff_t>((frame + 1) * parts));
        }
        const std::vector<Matrix> worlds = WorldsOf(file.json);
        for (size_t node = 0; node < worlds.size(); ++node)
            for (size_t i = 0; i < 16; ++i)
                EXPECT_NEAR(worlds[node][i], frames[frame][node][i], 3e-4)
                    << nodes[node]["name"] << ' ' << frame << ' ' << i;
    }
}

// Gives the nodes the placements of the last frame.
static void GoToLastFrame(GlbFile *file)
{
    const Json animation = file->json["animations"][0];
    for (const Json &channel : animation["channels"]) {
        const std::vector<double> values =
            NumbersOf(*file, animation["samplers"][channel["sampler"].get<size_t>()]["output"]);
        const std::string path = channel["target"]["path"];
        file->json["nodes"][channel["target"]["node"].get<size_t>()][path] =
            std::vector<double>(values.end() - (path == "rotation" ? 4 : 3), values.end());
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
    std::string vue;
    std::vector<size_t> all;
    for (size_t i = 0; i < std::size(turns); ++i) {
        vue +=
            "frame " + std::to_string(i) + " transform BOX " + turns[i] + " 1 2 " + std::to_string(i) + '\n';
        all.push_back(i);
    }
    WriteFile("turns.vue", vue);
    WriteFile("turns.3ds", Scene({Glass(), Triangle("BOX", 0)},
                                 {Kfhdr(static_cast<uint32_t>(all.size())), ObjectNode("BOX", noParent)}));
    ExpectFrames("turns", all);
    // An animation in glTF can't express shear: the nearest placement is written, with a note.
    WriteFile("bent.3ds", Scene({Glass(), Triangle("BOX", 0)}, {Kfhdr(2), ObjectNode("BOX", noParent)}));
    WriteFile("bent.vue",
              "frame 0 transform BOX 1 0 0 0 1 0 0 0 1 0 0 0 frame 1 transform BOX 1 1 0 0 1 0 0 0 1 5 0 0");
    for (const char *size : {"60", "1e-6"}) {
        const Outcome run = Start(std::string("bent.3ds --glb b.glb -o b.mcx --size ") + size);
        EXPECT_EQ(ReadGlb("b.glb").json["animations"][0]["channels"].size(), 3u);
        EXPECT_TRUE(Says(run.said, "note: a .glb can't store shear; the nearest placements of the "
                                   "animation are used, up to [0-9.]+ units of the file away\n"));
    }
    // The distance is that of the bounds' worst corner; of two axes at 45 degrees each is turned by 22.5.
    for (const char *rows : {"1 1 0 0 1 0 0 0 1", "1 0 0 0 1 1 0 0 1", "1 0 1 0 1 0 0 0 1"}) {
        SCOPED_TRACE(rows);
        const std::string start = " transform BOX ";
        WriteFile("bent.vue",
                  "frame 0" + start + "1 0 0 0 1 0 0 0 1 0 0 0 frame 1" + start + rows + " 5 0 0");
        const Outcome again = Start("bent.3ds --animation --glb b.glb -o b.mcx");
        GlbFile bent = ReadGlb("b.glb");
        const Matrix wanted = FramesOf(ReadText("b.mca"), bent.json["nodes"])[1][0];
        GoToLastFrame(&bent);
        EXPECT_NEAR(std::abs(bent.json["nodes"][0]["rotation"][3].get<double>()), 0.9807853, 1e-5);
        double worst = 0;
        for (const Vector &corner : {Vector{4, 0, 0}, Vector{4, 0, -2}, Vector{0, 0, -2}}) {
            const Vector a = Place(corner, wanted), b = Place(corner, WorldsOf(bent.json)[0]);
            worst = std::max(worst, std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]));
        }
        std::smatch units;
        ASSERT_TRUE(std::regex_search(again.said, units, std::regex("up to ([0-9.]+) units"))) << again.said;
        EXPECT_NEAR(std::stod(units[1]), worst, 1e-3);
    }
}

// The shear is in the vertices, and what remains is a motion that the format can say.
TEST_F(GlbTest, ASlantedObjectKeepsItsShapeWhenItMoves)
{
    WriteFile("bent.3ds", Scene({Glass(), Triangle("BOX", 0)}, {Kfhdr(2), ObjectNode("BOX", noParent)}));
    WriteFile("bent.vue",
              "frame 0 transform BOX 1 1 0 0 1 0 0 0 1 0 0 0 frame 1 transform BOX 1 1 0 0 1 0 0 0 1 5 0 0");
    const Outcome run = Start("bent.3ds --animation --glb b.glb -o b.mcx");
    EXPECT_FALSE(Has(run.said, "nearest"));
    GlbFile file = ReadGlb("b.glb");
    const std::vector<Triangle3> first = TrianglesOf(file);
    GoToLastFrame(&file);
    ASSERT_EQ(first.size(), 1u);
    for (size_t corner = 0; corner < 3; ++corner)
        for (size_t axis = 0; axis < 3; ++axis)
            EXPECT_NEAR(TrianglesOf(file)[0][corner][axis], first[0][corner][axis] + (axis == 0 ? 5 : 0),
                        1e-5);
}

// What stands still between a root and a part that moves keeps its place.
TEST_F(GlbTest, ObjectsAtRestCarryThoseThatMove)
{
    WriteFile("still.3ds",
              Scene({Glass(), Triangle("A", 0), Triangle("B", 0), Triangle("C", 0)},
                    {Kfhdr(2), ObjectNode("A", noParent), ObjectNode("B", 0), ObjectNode("C", 1)}));
    const std::string place = " 1 0 0 0 1 0 0 0 1 ";
    WriteFile("still.vue", "frame 0 transform A" + place + "10 0 0 transform B" + place +
                               "20 0 0 transform C" + place + "30 0 0 frame 1 transform A" + place +
                               "10 0 0 transform B" + place + "20 0 0 transform C" + place + "37 0 0");
    ASSERT_EQ(Start("still.3ds --animation --glb m.glb -o m.mcx").status, 0);
    GlbFile file = ReadGlb("m.glb");
    ASSERT_EQ(file.json["animations"][0]["channels"].size(), 3u);
    GoToLastFrame(&file);
    EXPECT_NEAR(WorldsOf(file.json).back()[12], 37, 1e-5);
}

TEST_F(GlbTest, MoreVerticesThan16BitsCountHaveWiderIndices)
{
    WriteFile("many.3ds", Scene({NamedObject("A", {Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces([] {
                                                             std::vector<uint16_t> corners;
                                                             for (int face = 0; face < 22000; ++face)
                                                                 corners.insert(corners.end(), {0, 1, 2});
                                                             return corners;
                                                         }())})})}));
    ASSERT_EQ(Start("many.3ds --glb m.glb -o m.mcx").status, 0);
    const GlbFile file = ReadGlb("m.glb");
    const std::vector<double> indices = NumbersOf(file, file.json["meshes"][0]["primitives"][0]["indices"]);
    ASSERT_EQ(indices.size(), 66000u);
    EXPECT_EQ(indices.back(), 65999);
}

TEST_F(GlbTest, ItGoesTheWayOfAllOutputs)
{
    MakeInputs();
    WriteFile("bare.3ds", Scene({}, {Kfhdr(1), ObjectNode("$$$DUMMY", noParent)}));
    EXPECT_TRUE(Says(Start("bare.3ds --glb bare.glb -o bare.mcx").said, "^(.*: wrote .*\n){2}$"));
    EXPECT_FALSE(ReadGlb("bare.glb").json.contains("buffers"));
    fs::remove("bare.glb"), fs::remove("bare.mcx");
    EXPECT_EQ(Start("two.3ds --info --glb m.glb").files, "m.glb");
    EXPECT_EQ(Start("two.3ds lost.3ds --glb dir/m.glb -q").files,
              "dir/lost.m.glb dir/two.m.glb lost.mcx two.mcx");
    EXPECT_EQ(Start("two.3ds --glb m.txt").status, 2);
    EXPECT_EQ(Start("two.3ds --glb none/m.glb").status, 1);
    WriteFile("m.glb", "old");
    EXPECT_EQ(Start("two.3ds --glb m.glb --no-clobber -q").status, 0);
    EXPECT_EQ(ReadFile("m.glb"), "old");
    Start("two.3ds --glb m.glb --summary sum.json --report r.html -q");
    EXPECT_TRUE(Has(ReadFile("sum.json"), "\"m.glb\""));
    EXPECT_TRUE(Has(ReadFile("r.html"), "./m.glb\""));
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
        GTEST_SKIP() << "no gltf-validator: tools/setup-validator.sh installs it";
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Bytes flat = Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2, 0, 0, 0}),
                             MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0})});
    const Bytes bent = Mesh({Points({0, 0, 0, 1, 0, 0, 0, 1, 0}), Faces({0, 1, 2}),
                             MeshMatrix({1, 1, 0, 0, 1, 0, 0, 0, 1, 3, 4, 5})});
    const Bytes hole = Mesh({Points({0, 0, 0, nan, 0, 0, 0, 1, 0, 1e30f, 0, 1}), Faces({0, 1, 2, 0, 2, 3})});
    WriteFile("odd.3ds", Scene({NamedObject("FLAT", {flat}), NamedObject("B\xE4NT", {bent}),
                                NamedObject("HOLE", {hole})}));
    WriteFile("lost.3ds", Scene({Glass(), Triangle("BOX", 0)}, {Kfhdr(2), ObjectNode("BOX", 7)}));
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
