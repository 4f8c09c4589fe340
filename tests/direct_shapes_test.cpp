// Where the objects of a direct build stand, whatever shape the tree has.
#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>

#include "harness.h"
#include "mclmodel.h"

using namespace chunks;

struct DirectShapes : SceneTest {};

using Point = std::array<double, 3>;

// An object as the file has it, and where the scene hangs it.
struct Piece {
    const char *name;
    std::vector<float> matrix; // as MESH_MATRIX
    uint16_t parent;           // index into the pieces, which is the node's number too
    std::vector<float> pivot;
};

// Parents of every kind; the fourth piece stands below three others, and the order of the walk through the
// tree is not that of the pieces.
static const std::vector<Piece> pieces = {
    {"TURNED", {0.8f, 0.6f, 0, -0.6f, 0.8f, 0, 0, 0, 1, 3, -2, 5}, noParent, {0, 0, 0}},
    {"SHEARED", {1, 0.5f, 0, 0, 1, 0.25f, 0.5f, 0, 1, -4, 1, 2}, 2, {0.5f, -1, 2}},
    {"SCALED", {2, 0, 0, 0, 3, 0, 0, 0, 0.5f, 7, 8, -9}, 0, {1, 2, 3}},
    {"MIRROR", {-1, 0, 0, 0, 0.6f, 0.8f, 0, -0.8f, 0.6f, 1, 10, 4}, 1, {-3, 0, 1}},
    {"SECOND", {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, noParent, {0, 4, 0}},
};
static const std::vector<size_t> treeOrder = {0, 2, 1, 3, 4};

// Two triangles near the position of the piece, in the world of the file.
static std::vector<float> Corners(const Piece &piece)
{
    std::vector<float> xyz;
    for (const float offset : {0.f, 0.f, 0.f, 2.f, 1.f, 0.f, 0.f, 3.f, -1.f, 1.5f, 2.5f, 0.5f})
        xyz.push_back(offset + piece.matrix[9 + xyz.size() % 3]);
    return xyz;
}

static Bytes SceneOf(const std::vector<Piece> &all)
{
    Bytes meshes, nodes = Kfhdr(2);
    for (const Piece &piece : all) {
        meshes += NamedObject(piece.name, {Mesh({Points(Corners(piece)), Faces({0, 1, 2, 3, 2, 1}),
                                                 MeshMatrix(piece.matrix)})});
        nodes +=
            ObjectNode(piece.name, piece.parent, {Pivot(piece.pivot[0], piece.pivot[1], piece.pivot[2])});
    }
    return Scene({meshes}, {nodes});
}

static Point Apply(const Point &p, const double m[16])
{
    Point out;
    for (size_t c = 0; c < 3; ++c)
        out[c] = p[0] * m[c] + p[1] * m[4 + c] + p[2] * m[8 + c] + m[12 + c];
    return out;
}

static void AppendFaces(const McGeometryView &geometry, const double *inner, const double *outer,
                        std::vector<Point> &world)
{
    for (size_t face = 0; face < geometry.faceCount; ++face)
        for (const int number : geometry.faces[face].vertices) {
            const McPoint &p = geometry.points[number - 1];
            const Point placed = inner ? Apply({p.x, p.y, p.z}, inner) : Point{p.x, p.y, p.z};
            world.push_back(Apply(placed, outer));
        }
}

// The corners of all faces of a clump and of the clumps below and behind it, in the order of the walk.
static void AppendClumps(McClump *clump, std::vector<Point> &world)
{
    McClumpView view;
    for (; clump != nullptr && McGetClump(clump, &view); clump = view.nextSibling) {
        AppendFaces(view.geometry, nullptr, view.world, world);
        McInstanceView instance;
        McPrototypeView prototype;
        for (size_t i = 0; McGetInstance(clump, i, &instance); ++i)
            if (McGetPrototype(clump, static_cast<size_t>(instance.prototype), &prototype))
                AppendFaces(prototype.geometry, instance.placement, view.world, world);
        AppendClumps(view.firstChild, world);
    }
}

// Builds the scene and tells where the corners of its faces are; the scale that was used stands in options.
static std::vector<Point> Build(const LoadedScene &scene, Mc3dsOptions &options)
{
    std::vector<Point> world;
    McClump *clump = nullptr;
    McClearErrors();
    Mc3dsOutput(scene.get(), &options, &clump);
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
    McModelView model = {};
    EXPECT_EQ(McGetModel(clump, &model), 1);
    EXPECT_EQ(model.firstClump, clump);
    EXPECT_EQ(model.clumpCount == 1, (options.flags & MC3DS_MERGED) != 0);
    AppendClumps(model.firstClump, world);
    McFreeModel(clump);
    return world;
}

// Where the corners of a piece's faces belong, moved by so much in the file's co-ordinates.
static void AppendExpected(const Piece &piece, const Point &moved, double scale, std::vector<Point> &world)
{
    const std::vector<float> xyz = Corners(piece);
    for (const size_t corner : {0, 1, 2, 3, 2, 1}) {
        Point p;
        for (size_t axis = 0; axis < 3; ++axis)
            p[axis] = (static_cast<double>(xyz[corner * 3 + axis]) + moved[axis]) * scale;
        world.push_back({p[0], p[2], -p[1]});
    }
}

static double Distance(const std::vector<Point> &a, const std::vector<Point> &b)
{
    double most = a.size() == b.size() ? 0 : INFINITY;
    for (size_t i = 0; i < a.size() && most < INFINITY; ++i)
        for (size_t axis = 0; axis < 3; ++axis)
            most = std::fmax(most, std::fabs(a[i][axis] - b[i][axis]));
    return most;
}

// The file's own matrices as frame 0, with their positions moved; SECOND has no frames.
static std::string Vue(const std::vector<Point> &moves)
{
    std::ostringstream vue;
    for (int frame = 0; frame < 2; ++frame) {
        vue << "frame " << frame << '\n';
        for (size_t i = 0; i < 4; ++i) {
            vue << "transform " << pieces[i].name;
            for (size_t n = 0; n < 12; ++n)
                vue << ' '
                    << (n < 9 ? pieces[i].matrix[n]
                              : pieces[i].matrix[n] + static_cast<float>(moves[i][n - 9] * (frame + 1)));
            vue << '\n';
        }
    }
    return vue.str();
}

static const std::vector<Point> moves = {{1, 2, 3}, {-4, 0, 2}, {0.5, 0.25, -7}, {2, 2, 2}, {0, 0, 0}};

TEST_F(DirectShapes, EveryShapeOfTheTreePutsEveryFaceWhereTheFileHasIt)
{
    const LoadedScene scene = LoadBytes(SceneOf(pieces), Vue(moves));
    Point low = {INFINITY, INFINITY, INFINITY}, high = {-INFINITY, -INFINITY, -INFINITY};
    for (const Piece &piece : pieces)
        for (size_t i = 0; const float value : Corners(piece)) {
            low[i % 3] = std::fmin(low[i % 3], value);
            high[i % 3] = std::fmax(high[i % 3], value);
            ++i;
        }
    for (uint32_t tree = 0; tree < 8; ++tree)
        for (uint32_t more = 0; more < 8; ++more) {
            const uint32_t shape =
                (tree & 1 ? MC3DS_PROTOS : 0) | (tree & 2 ? MC3DS_FLAT : 0) | (tree & 4 ? MC3DS_MERGED : 0);
            const uint32_t place = (more & 1 ? MC3DS_CENTRE : 0) | (more & 2 ? MC3DS_FIT_SIZE : 0) |
                                   (more & 4 ? MC3DS_ANIMATION : 0);
            SCOPED_TRACE(testing::Message() << std::hex << (shape | place));
            // The other forms that are asked for too give way to the direct build.
            Mc3dsOptions options =
                DefaultOptions(shape | place | MC3DS_DIRECT | MC3DS_SOURCE | MC3DS_PER_OBJECT | MC3DS_HEADER);
            options.scale = 3;
            options.size = 1000;
            const std::vector<Point> world = Build(scene, options);
            std::vector<Point> expected;
            for (size_t i = 0; i < pieces.size(); ++i) {
                const size_t index = shape & MC3DS_FLAT ? i : treeOrder[i];
                Point moved = place & MC3DS_ANIMATION ? moves[index] : Point{0, 0, 0};
                for (size_t axis = 0; axis < 3 && (place & MC3DS_CENTRE); ++axis)
                    moved[axis] -= (low[axis] + high[axis]) / 2;
                AppendExpected(pieces[index], moved, static_cast<double>(options.scale), expected);
            }
            EXPECT_LT(Distance(world, expected), 1e-5 * 20 * static_cast<double>(options.scale));
        }
    EXPECT_FALSE(std::filesystem::exists("out.c") || std::filesystem::exists("out.h"));
}

TEST_F(DirectShapes, BelowASingularObjectANestedTreeFallsOntoItsPosition)
{
    std::vector<Piece> singular = pieces;
    singular[0].matrix = {1, 2, 0, 2, 4, 0, 0, 0, 1, 3, -2, 5};
    const LoadedScene scene = LoadBytes(SceneOf(singular));
    for (const uint32_t shape : {0u, MC3DS_FLAT, MC3DS_MERGED}) {
        Mc3dsOptions options = DefaultOptions(shape | MC3DS_DIRECT);
        options.scale = 2;
        TakeReports();
        const std::vector<Point> world = Build(scene, options);
        EXPECT_EQ(TakeReportLines("E"), shape == MC3DS_FLAT ? "" : "E0 Unable to invert matrix\n");
        for (size_t i = 1; i < 4; ++i) {
            const size_t index = shape == MC3DS_FLAT ? i : treeOrder[i];
            std::vector<Point> expected,
                got(world.begin() + static_cast<long>(6 * i), world.begin() + static_cast<long>(6 * i + 6));
            AppendExpected(singular[index], {0, 0, 0}, 2, expected);
            if (shape == 0)
                expected.assign(6, {6, 10, 4});
            EXPECT_LT(Distance(got, expected), 1e-3) << singular[index].name << " in " << shape;
        }
    }
}

// The lines of an animation file, by frame and object.
static std::vector<std::array<double, 16>> FrameLines(const LoadedScene &scene, uint32_t flags)
{
    Mc3dsOptions options = DefaultOptions(flags | MC3DS_ANIMATION | MC3DS_CENTRE);
    options.scale = 0.5f;
    Output(scene, options);
    std::vector<std::array<double, 16>> all(2 * pieces.size());
    std::istringstream words(ReadFile("output/out.anm"));
    size_t frame = 0, number;
    for (std::string word; words >> word;)
        if (word == "Frame") {
            words >> frame;
        } else {
            words >> number;
            for (size_t i = 0; i < 12; ++i)
                words >> all.at(frame * pieces.size() + number - 1)[i / 3 * 4 + i % 3];
        }
    return all;
}

TEST_F(DirectShapes, ALineOfTheAnimationTimesTheParentsWorldIsTheObjectsWorld)
{
    const LoadedScene scene = LoadBytes(SceneOf(pieces), Vue(moves));
    const auto relative = FrameLines(scene, 0), world = FrameLines(scene, MC3DS_FLAT);
    for (size_t line = 0; line < world.size(); ++line) {
        const size_t index = line % pieces.size();
        if (index == 4) // has no frames
            continue;
        const uint16_t parent = pieces[index].parent;
        for (const Point &p : {Point{0, 0, 0}, Point{1, 0, 0}, Point{0, 1, 0}, Point{0, 0, 1}}) {
            Point placed = Apply(p, relative[line].data());
            if (parent != noParent)
                placed = Apply(placed, world[line - index + parent].data());
            EXPECT_LT(Distance({placed}, {Apply(p, world[line].data())}), 5e-5) << line;
        }
    }
    EXPECT_NE(world[0], world[pieces.size()]);
}
