// Positions of objects in direct builds, for every shape of the tree.
#include <sstream>

#include "harness.h"
#include "mclmodel.h"
#include "script.h"

using namespace chunks;

struct DirectShapes : SceneTest {};

// An object of the file and its place in the tree.
struct Piece {
    const char *name;
    std::vector<float> matrix; // as MESH_MATRIX
    uint16_t parent;           // index of another piece, equal to its node number
    std::vector<float> pivot;
    Point move; // added to its position with every frame
};

// Tree order is TURNED, SCALED, SHEARED, MIRROR, SECOND.
static const std::vector<Piece> pieces = {
    {"TURNED", {0.8f, 0.6f, 0, -0.6f, 0.8f, 0, 0, 0, 1, 3, -2, 5}, noParent, {0, 0, 0}, {1, 2, 3}},
    {"SHEARED", {1, 0.5f, 0, 0, 1, 0.25f, 0.5f, 0, 1, -4, 1, 2}, 2, {0.5f, -1, 2}, {-4, 0, 2}},
    {"SCALED", {2, 0, 0, 0, 3, 0, 0, 0, 0.5f, 7, 8, -9}, 0, {1, 2, 3}, {0.5, 0.25, -7}},
    {"MIRROR", {-1, 0, 0, 0, 0.6f, 0.8f, 0, -0.8f, 0.6f, 1, 10, 4}, 1, {-3, 0, 1}, {2, 2, 2}},
    {"SECOND", {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, noParent, {0, 4, 0}, {0, 0, 0}},
};
static const size_t treeOrder[] = {0, 2, 1, 3, 4};
static const Point middle = {2.5, 5.5, -2.5}; // of the bounds of all corners

// The triangle of a piece, in the file's world space.
static std::vector<float> Corners(const Piece &piece)
{
    std::vector<float> xyz = {0, 0, 0, 2, 1, 0, 0, 3, -1};
    for (size_t i = 0; i < 9; ++i)
        xyz[i] += piece.matrix[9 + i % 3];
    return xyz;
}

static Bytes SceneOf(const std::vector<Piece> &all)
{
    Bytes meshes, nodes = Kfhdr(2);
    for (const Piece &piece : all) {
        meshes += NamedMesh(piece.name, {Points(Corners(piece)), Faces({0, 1, 2}), MeshMatrix(piece.matrix)});
        nodes +=
            ObjectNode(piece.name, piece.parent, {Pivot(piece.pivot[0], piece.pivot[1], piece.pivot[2])});
    }
    return Scene({meshes}, {nodes});
}

// The matrices of the file, with positions moved once in frame 0 and twice in frame 1. SECOND has none.
static std::string Vue()
{
    std::ostringstream vue;
    for (int frame = 0; frame < 2; ++frame) {
        vue << "\nframe " << frame;
        for (size_t i = 0; i < 4; ++i) {
            vue << "\ntransform " << pieces[i].name;
            for (size_t n = 0; n < 12; ++n)
                vue << ' '
                    << static_cast<double>(pieces[i].matrix[n]) +
                           (n < 9 ? 0 : pieces[i].move[n - 9] * (frame + 1));
        }
    }
    return vue.str();
}

static void AppendFaces(const McGeometryView &geometry, const double *inner, const double *outer,
                        std::vector<Point> &world)
{
    for (size_t face = 0; face < geometry.faceCount; ++face)
        for (const int number : geometry.faces[face].vertices) {
            const McPoint &p = geometry.points[number - 1];
            world.push_back(Place(Place({p.x, p.y, p.z}, inner), outer));
        }
}

// Appends the corners of all faces of a clump, its descendants and its next siblings, in tree order.
static void AppendClumps(McClump *clump, std::vector<Point> &world)
{
    McClumpView view;
    McInstanceView instance;
    McPrototypeView prototype;
    for (; McGetClump(clump, &view); clump = view.nextSibling) {
        AppendFaces(view.geometry, identity.data(), view.world, world);
        for (size_t i = 0; McGetInstance(clump, i, &instance); ++i)
            if (McGetPrototype(clump, static_cast<size_t>(instance.prototype), &prototype))
                AppendFaces(prototype.geometry, instance.placement, view.world, world);
        AppendClumps(view.firstChild, world);
    }
}

// World positions of the corners of all faces in a direct build.
static std::vector<Point> Build(const LoadedScene &scene, Mc3dsOptions &options)
{
    std::vector<Point> world;
    McClump *clump = nullptr;
    McModelView model = {};
    McClearErrors();
    Mc3dsOutput(scene.get(), &options, &clump);
    EXPECT_EQ(McErrorCount(), 0u) << McFirstError();
    EXPECT_EQ(McGetModel(clump, &model), 1);
    EXPECT_EQ(model.firstClump, clump);
    EXPECT_EQ(model.clumpCount == 1, (options.flags & MC3DS_MERGED) != 0);
    AppendClumps(model.firstClump, world);
    McFreeModel(clump);
    return world;
}

static void AppendExpected(const Piece &piece, const Point &moved, double scale, std::vector<Point> &world)
{
    const std::vector<float> xyz = Corners(piece);
    Point p;
    for (size_t i = 0; i < 9; ++i) {
        p[i % 3] = (static_cast<double>(xyz[i]) + moved[i % 3]) * scale;
        if (i % 3 == 2)
            world.push_back({p[0], p[2], -p[1]});
    }
}

TEST_F(DirectShapes, EveryShapeOfTheTreePutsEveryFaceWhereTheFileHasIt)
{
    const LoadedScene scene = LoadBytes(SceneOf(pieces), Vue());
    const uint32_t bits[] = {MC3DS_PROTOS, MC3DS_FLAT,     MC3DS_MERGED,
                             MC3DS_CENTRE, MC3DS_FIT_SIZE, MC3DS_ANIMATION};
    for (uint32_t pattern = 0; pattern < 64; ++pattern) {
        // MC3DS_DIRECT overrides the other output forms.
        uint32_t flags = MC3DS_DIRECT | MC3DS_SOURCE | MC3DS_PER_OBJECT | MC3DS_HEADER;
        for (size_t i = 0; i < 6; ++i)
            flags |= pattern >> i & 1 ? bits[i] : 0;
        SCOPED_TRACE(testing::Message() << std::hex << flags);
        Mc3dsOptions options = DefaultOptions(flags);
        options.scale = 3;
        options.size = 1000;
        const std::vector<Point> world = Build(scene, options);
        std::vector<Point> expected;
        for (size_t i = 0; i < pieces.size(); ++i) {
            const Piece &piece = pieces[flags & MC3DS_FLAT ? i : treeOrder[i]];
            Point moved = {};
            for (size_t axis = 0; axis < 3; ++axis)
                moved[axis] = (flags & MC3DS_ANIMATION ? piece.move[axis] : 0) -
                              (flags & MC3DS_CENTRE ? middle[axis] : 0);
            AppendExpected(piece, moved, static_cast<double>(options.scale), expected);
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
        std::vector<Point> world = Build(scene, options), expected;
        EXPECT_EQ(TakeReportLines("E"), shape == MC3DS_FLAT ? "" : "E0 Unable to invert matrix\n");
        world.erase(world.begin(), world.begin() + 3); // of the singular object itself
        for (size_t i = 1; i < pieces.size(); ++i) {
            const size_t index = shape == MC3DS_FLAT ? i : treeOrder[i];
            if (shape == 0 && index != 4)
                expected.insert(expected.end(), 3, {6, 10, 4});
            else
                AppendExpected(singular[index], {}, 2, expected);
        }
        EXPECT_LT(Distance(world, expected), 1e-3) << shape;
    }
}

// Both frames of an animation file, with the objects in the order of the pieces.
static std::vector<std::array<Matrix, 5>> Frames(const LoadedScene &scene, uint32_t flags)
{
    Mc3dsOptions options = DefaultOptions(flags | MC3DS_ANIMATION | MC3DS_CENTRE);
    Output(scene, options);
    std::vector<std::array<Matrix, 5>> frames;
    for (const FrameLines &lines : ReadFrames(ReadFile("output/out.anm"))) {
        frames.emplace_back();
        for (const auto &[number, matrix] : lines)
            frames.back().at(number - 1) = matrix;
    }
    return frames;
}

TEST_F(DirectShapes, ALineOfTheAnimationTimesTheParentsWorldIsTheObjectsWorld)
{
    const LoadedScene scene = LoadBytes(SceneOf(pieces), Vue());
    const auto relative = Frames(scene, 0), world = Frames(scene, MC3DS_FLAT);
    ASSERT_EQ(relative.size(), 2u);
    for (size_t frame = 0; frame < 2; ++frame)
        for (size_t i = 0; i < pieces.size(); ++i) {
            const Matrix &mine = relative[frame][i], &wanted = world.at(frame)[i];
            const uint16_t parent = pieces[i].parent;
            const Matrix placed = parent == noParent ? mine : Times(mine, world[frame][parent]);
            for (size_t n = 0; n < 16; ++n)
                EXPECT_NEAR(placed[n], wanted[n], 5e-5) << frame << ' ' << i << ' ' << n;
        }
    EXPECT_NE(world[0], world[1]);
}
