// Writes the sample scenes to the given folder: a windmill at rest, and an orrery with its .vue animation.
#include <cstdio>
#include <string>

#include "../tests/chunks.h"
#include "shapes.h"

using namespace chunks;

constexpr int frameCount = 60;

// A mesh, or a dummy if the material is empty, and its rotation around the pivot's z axis.
struct Part {
    const char *name, *parent, *material;
    Shape shape;
    Matrix place;
    Vector pivot = {};
    int turns = 0; // in the whole animation
};

static std::vector<float> Floats(const Vector &v)
{
    return {Grid(v[0], 1024), Grid(v[1], 1024), Grid(v[2], 1024)};
}

static Bytes Paint(const char *name, const Bytes &colour, uint32_t shading, uint32_t transparency,
                   const Pieces &more)
{
    const Bytes white = Colour24(230, 230, 230);
    return Material(name,
                    {Finish(Colour24(40, 40, 48), colour, white, shading, 40, transparency), Join(more)});
}

// Faces from secondFrom on have the second material. marker follows the mesh within its object.
static Bytes MeshObject(const Part &part, const char *second = "", size_t secondFrom = SIZE_MAX,
                        const Bytes &marker = "")
{
    std::vector<float> matrix, points, texture;
    Matrix place = part.place;
    for (Vector &row : place)
        for (double &element : row) {
            matrix.push_back(Grid(element, 65536));
            element = matrix.back();
        }
    for (const Vector &point : part.shape.points)
        for (const float element : Floats(Apply(point, place)))
            points.push_back(element);
    for (const auto &[u, v] : part.shape.texture)
        texture.insert(texture.end(), {Grid(u, 1024), Grid(v, 1024)});
    std::vector<uint16_t> firstFaces, secondFaces;
    Bytes smoothing;
    for (size_t face = 0; face < part.shape.corners.size() / 3; ++face) {
        (face < secondFrom ? firstFaces : secondFaces).push_back(static_cast<uint16_t>(face));
        smoothing += U32(1);
    }
    const Pieces groups = {MaterialGroup(part.material, firstFaces),
                           secondFaces.empty() ? "" : MaterialGroup(second, secondFaces),
                           Chunk(0x4150, {smoothing})};
    const Bytes mesh =
        Mesh({Points(points), TexVerts(texture), MeshMatrix(matrix), Faces(part.shape.corners, groups)});
    return NamedObject(part.name, {mesh, marker});
}

static Bytes Camera(const Vector &from, const Vector &to)
{
    return NamedObject("CAMERA01", {Chunk(0x4700, {F32s(Floats(from)), F32s(Floats(to)), F32s({0, 35})})});
}

static Bytes Lamp(float x, float y, float z)
{
    return NamedObject("LIGHT01", {Chunk(0x4600, {F32s({x, y, z}), Colour24(255, 250, 235)})});
}

// ---- the windmill

static Bytes Windmill()
{
    const Matrix hub = TurnX(80) * Move(0, -3, 9.5); // its z axis points along the axle, a little upwards
    const Shape sail = Box({-0.75, 1, -0.0625}, {0.75, 5.5, 0}, Box({-0.125, 0, 0}, {0.125, 6, 0.125}));
    std::vector<Part> parts = {
        {"MEADOW", "", "GRASS", Lathe({{12, 0}, {7, 0.5}, {0, 0.75}}, 24, 6), Scale(1, 0.75, 1)},
        {"TOWER", "", "BRICK", Lathe({{3, 0}, {2.5, 4}, {2, 8}}, 8, 4), TurnZ(22.5) * Move(0, 0, 0.5)},
        {"CAP", "", "SHINGLE", Lathe({{2.25, 0}, {2, 1}, {1.25, 1.75}, {0, 2.25}}, 16, 4),
         Scale(1, 1.25, 1) * Move(0, 0, 8.5)},
        {"AXLE", "", "WOOD", Lathe({{0, -2}, {0.25, -2}, {0.25, 0.5}, {0, 0.5}}, 12), hub},
        {"DOOR", "", "WOOD", Box({-0.75, -0.125, 0}, {0.75, 0.125, 2}), TurnX(-6) * Move(0, -2.75, 0.625)},
        {"MILLSTONE", "", "STONE", Torus(0.75, 0.25, 16), TurnY(75) * TurnZ(-30) * Move(3.25, -1.75, 1.5)},
    };
    const char *names[] = {"SAIL 1", "SAIL 2", "SAIL 3", "SAIL 4"};
    for (int i = 0; i < 4; ++i)
        parts.push_back({names[i], "", "WOOD", sail, TurnY(12) * TurnZ(90 * i + 15) * hub});
    Pieces editor = {
        Chunk(0x3D3E, {U32(3)}),
        Paint("GRASS", Colour24(90, 140, 60), 2, 0, {Map(0xA200, "GRASS.TGA")}),
        Paint("BRICK", Colour24(170, 90, 70), 1, 0, {Map(0xA200, "BRICK.TGA")}),
        Paint("SHINGLE", Colour24(80, 70, 75), 2, 0, {Map(0xA200, "SHINGLE.TGA")}),
        Paint("WOOD", Colour24(130, 100, 60), 3, 0, {Map(0xA200, "WOOD.TGA")}),
        Paint("CANVAS", Colour24(240, 230, 210), 2, 10,
              {Map(0xA200, "CANVAS.TGA"), Map(0xA210, "LATTICE.TGA")}),
        Paint("STONE", Colour24(150, 150, 145), 3, 0, {Map(0xA200, "STONE.TGA")}),
        Chunk(0x0100, {F32(1)}),
        Chunk(0x2100, {Colour24(60, 60, 70)}),
    };
    for (const Part &part : parts)
        editor.push_back(MeshObject(part, "CANVAS", part.name[0] == 'S' ? 12 : SIZE_MAX));
    editor.push_back(Lamp(20, -25, 30));
    editor.push_back(Camera({10, -27, 7}, {0, 0, 7}));
    return Scene(editor);
}

// ---- the orrery

static std::vector<Part> OrreryParts()
{
    const Shape ball = Sphere(10, 16);
    const Shape gear = Lathe({{0, 0}, {3, 0}, {3, 0.5}, {0, 0.5}}, 48, 12, 0.125);
    const Shape earthArm =
        Box({6.875, -0.125, 0}, {7.125, 0.125, 4.5}, Box({-7, -0.25, -0.25}, {7.25, 0.25, 0}));
    const Shape ringArm =
        Box({11.875, -0.125, 0}, {12.125, 0.125, 7}, Box({-12, -0.25, -0.25}, {12.25, 0.25, 0}));
    const Shape moonArm = Box({-1.5, -0.0625, -0.0625}, {1.5, 0.0625, 0.0625});
    const Shape foot =
        Lathe({{9, 0}, {9, 1}, {8, 1.5}, {2, 2.5}, {1, 4}, {0.5, 5}, {0.5, 18}, {0, 18}}, 24, 4);
    const Shape band = Lathe({{2, 0}, {1.25, 0}}, 32);
    const Matrix tilt = TurnX(23.5);
    const Matrix ringAxis = TurnY(27) * Move(24, 0, 20) * TurnZ(120);
    return {
        {"BASE", "", "WOOD", foot, Move(0, 0, 0)},
        {"GEAR", "BASE", "BRASS", gear, Move(2.5, 0, 8), {0, 0, 0}, -4},
        {"SUN", "BASE", "GOLD", ball, Scale(3, 3, 3) * Move(0, 0, 20), {}, 1},
        {"Dummy0", "BASE", "", {}, Move(0, 0, 0), {0, 0, 14}, 2},
        {"ARM1", "Dummy0", "BRASS", earthArm, Move(7, 0, 14), {-7, 0, 0}},
        {"EARTH", "Dummy0", "EARTH", ball, Scale(1.5, 1.5, 1.5) * tilt * Move(14, 0, 20), {}, 5},
        {"CLOUDS", "EARTH", "CLOUDS", ball, Scale(1.625, 1.625, 1.625) * tilt * Move(14, 0, 20), {}, -2},
        {"Dummy1", "Dummy0", "", {}, Move(0, 0, 0), {14, 0, 20}, 6},
        {"ARM3", "Dummy1", "BRASS", moonArm, Move(15.5, 0, 20), {-1.5, 0, 0}},
        {"MOON", "Dummy1", "ROCK", ball, Scale(0.5, 0.5, 0.5) * Move(17.25, 0, 20)},
        {"Dummy2", "BASE", "", {}, Move(0, 0, 0), {0, 0, 11}, 1},
        {"ARM2", "Dummy2", "BRASS", ringArm, Move(12, 0, 11) * TurnZ(120), {-12, 0, 0}},
        {"GIANT", "Dummy2", "BANDS", ball, Scale(2.5, 2.5, 2.25) * ringAxis, {}, 8},
        {"RING", "GIANT", "ICE RING", band, Scale(2.5, 2.5, 2.5) * ringAxis, {}, 1},
        {"CAGE", "", "WIRE", Torus(31, 0.25, 36), TurnX(15) * Move(0, 0, 20), {}, 1},
    };
}

static const Part &FindPart(const std::vector<Part> &parts, const std::string &name)
{
    size_t i = 0;
    while (parts[i].name != name)
        ++i;
    return parts[i];
}

static Vector PivotInWorld(const Part &part)
{
    return Apply(part.pivot, part.place);
}

// The placement of a part in a frame: its own rotation around the pivot, then those of its parents.
static Matrix PlaceInFrame(const std::vector<Part> &parts, const Part &part, int frame)
{
    Matrix place = part.place;
    for (const Part *p = &part;; p = &FindPart(parts, p->parent)) {
        const Vector centre = PivotInWorld(*p);
        Vector axis = p->place[2];
        const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
        for (double &element : axis)
            element /= length;
        place = place * Move(-centre[0], -centre[1], -centre[2]) *
                Turn(axis, 360.0 * p->turns * frame / frameCount) * Move(centre[0], centre[1], centre[2]);
        if (*p->parent == 0)
            return place;
    }
}

// Of a matrix whose rows are at right angles.
static Matrix Inverse(const Matrix &m)
{
    Matrix inverse = Move(0, 0, 0);
    for (size_t r = 0; r < 3; ++r) {
        const double square = m[r][0] * m[r][0] + m[r][1] * m[r][1] + m[r][2] * m[r][2];
        for (size_t c = 0; c < 3; ++c)
            inverse[c][r] = m[r][c] / square;
    }
    return Move(-m[3][0], -m[3][1], -m[3][2]) * inverse;
}

// Where the part's node stands in the first frame.
static Matrix NodePlace(const Part &part)
{
    return Move(part.pivot[0], part.pivot[1], part.pivot[2]) * part.place;
}

// The axis and the angle of a turn, clockwise as seen from the tip of the axis, which is how keys turn.
static std::vector<float> TurnKey(const Matrix &turn)
{
    const double cosine = (turn[0][0] + turn[1][1] + turn[2][2] - 1) / 2;
    const double angle = std::acos(std::min(std::max(cosine, -1.0), 1.0));
    Vector axis = {turn[2][1] - turn[1][2], turn[0][2] - turn[2][0], turn[1][0] - turn[0][1]};
    const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
    if (length < 1e-9)
        return {0, 0, 0, 1};
    return {Grid(angle, 65536), Grid(axis[0] / length, 65536), Grid(axis[1] / length, 65536),
            Grid(axis[2] / length, 65536)};
}

static Bytes PartNode(const std::vector<Part> &parts, const Part &part, uint16_t parent)
{
    Matrix local = NodePlace(part);
    if (*part.parent != 0)
        local = local * Inverse(NodePlace(FindPart(parts, part.parent)));
    std::vector<float> scale;
    for (size_t r = 0; r < 3; ++r) {
        const double length =
            std::sqrt(local[r][0] * local[r][0] + local[r][1] * local[r][1] + local[r][2] * local[r][2]);
        scale.push_back(Grid(length, 65536));
        for (double &element : local[r])
            element /= length;
    }
    // The angle of a rotation key is relative to the key before it.
    const float quarter = Grid(-part.turns * pi / 2, 65536);
    std::vector<Key> turning = {{0, TurnKey(local)}};
    for (uint32_t i = 1; i <= 4 && part.turns != 0; ++i)
        turning.push_back(
            {frameCount / 4 * i,
             {quarter, Grid(local[2][0], 65536), Grid(local[2][1], 65536), Grid(local[2][2], 65536)},
             0x03,
             {0, 0}});
    const bool dummy = *part.material == 0;
    return ObjectNode(dummy ? "$$$DUMMY" : part.name, parent,
                      {dummy ? Chunk(0xB011, {Text("ORBIT")}) : "", Chunk(0xB013, {F32s(Floats(part.pivot))}),
                       Track(0xB020, {{0, Floats(local[3])}}), Track(0xB021, turning),
                       Track(0xB022, {{0, scale}})});
}

static Bytes OrreryKeyframer(const std::vector<Part> &parts)
{
    Pieces pieces = {Kfhdr(frameCount), Chunk(0xB008, {U32(0), U32(frameCount)}), Chunk(0xB009, {U32(0)})};
    std::vector<std::string> nodes;
    for (const Part &part : parts) {
        uint16_t parent = noParent;
        for (size_t i = 0; i < nodes.size(); ++i)
            if (nodes[i] == part.parent)
                parent = static_cast<uint16_t>(i);
        pieces.push_back(PartNode(parts, part, parent));
        nodes.push_back(part.name);
        if (nodes.size() > 1)
            continue;
        // A light, a camera and its target count as nodes too and shift the numbers of all nodes after them.
        for (const int tag : {0xB005, 0xB003, 0xB004}) {
            pieces.push_back(Chunk(static_cast<uint16_t>(tag),
                                   {Chunk(0xB010, {Text("CAMERA01"), U32(0), U16(noParent)})}));
            nodes.push_back("no parent");
        }
    }
    return Join(pieces);
}

static Bytes Orrery(const std::vector<Part> &parts)
{
    const Bytes glint = Map(0xA220, "ROOM.TGA");
    Pieces editor = {
        Chunk(0x3D3E, {U32(3)}),
        Paint("WIRE", Colour24(200, 200, 120), 0, 0, {}),
        Paint("WOOD", Colour24(110, 70, 40), 1, 0, {Map(0xA200, "WALNUT.TGA")}),
        Paint("BRASS", Colour24(200, 160, 70), 4, 0, {glint}),
        Paint("GOLD", Colour24(255, 205, 60), 4, 0, {Map(0xA200, "SUN.TGA"), glint}),
        Paint("EARTH", Colour24(50, 90, 180), 3, 0, {Map(0xA200, "EARTH.TGA")}),
        Paint("SNOW", Colour24(250, 250, 255), 3, 0, {Map(0xA200, "SNOW.TGA")}),
        Paint("CLOUDS", Colour24(255, 255, 255), 2, 60, {Map(0xA210, "CLOUDS.TGA")}),
        Paint("ROCK", Colour24(140, 140, 140), 2, 0, {Map(0xA200, "MOON.TGA"), Chunk(0xA230)}),
        Paint("BANDS", Colour24(220, 190, 140), 3, 0, {Map(0xA200, "BANDS.TGA")}),
        Paint("ICE RING", Colour24(210, 200, 180), 1, 35,
              {Map(0xA200, "RING.TGA"), Map(0xA210, "GAPS.TGA"), Chunk(0xA081)}),
        Chunk(0x0100, {F32(1)}),
        Chunk(0x2100, {Colour24(30, 30, 40)}),
    };
    for (const Part &part : parts)
        if (*part.material != 0)
            editor.push_back(MeshObject(part, "SNOW", part.name == Bytes("EARTH") ? 240 : SIZE_MAX));
    const Part guide = {"GUIDE", "", "WIRE", Box({-31, -31, 0}, {31, 31, 40}), Move(0, 0, 0)};
    editor.push_back(MeshObject(guide, "", SIZE_MAX, Chunk(0x4010)));
    editor.push_back(Lamp(-40, -60, 80));
    editor.push_back(Camera({35, -70, 50}, {0, 0, 16}));
    return Scene(editor, {OrreryKeyframer(parts)});
}

// Appends a blank and the number with at most four decimals, in any locale.
static void AppendDecimal(std::string &text, double value)
{
    const auto steps = static_cast<int64_t>(std::floor(value * 10000 + 0.5));
    const int64_t size = steps < 0 ? -steps : steps;
    text += steps < 0 ? " -" : " ";
    text += std::to_string(size / 10000);
    if (size % 10000 != 0)
        text += '.';
    for (int64_t rest = size % 10000; rest != 0; rest = rest * 10 % 10000)
        text += static_cast<char>('0' + rest / 1000);
}

static std::string OrreryVue(const std::vector<Part> &parts)
{
    std::string text = "VERSION 201\n";
    for (int frame = 0; frame <= frameCount; ++frame) {
        text += "frame " + std::to_string(frame) + "\n";
        for (const Part &part : parts) {
            text += "transform \"" + std::string(part.name) + "\"";
            for (const Vector &row : PlaceInFrame(parts, part, frame))
                for (const double element : row)
                    AppendDecimal(text, element);
            text += "\n";
        }
        text += "camera 35 -70 50 0 0 16 0 35\n";
    }
    return text;
}

static bool Write(const std::string &path, const Bytes &bytes)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return false;
    const bool whole = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && whole;
}

int main(int count, char **arguments)
{
    const std::string folder = count > 1 ? arguments[1] : ".";
    const std::vector<Part> parts = OrreryParts();
    if (Write(folder + "/windmill.3DS", Windmill()) && Write(folder + "/orrery.3DS", Orrery(parts)) &&
        Write(folder + "/orrery.vue", OrreryVue(parts)))
        return 0;
    std::fprintf(stderr, "can't write the samples to %s\n", folder.c_str());
    return 1;
}
