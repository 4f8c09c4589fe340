// Reading of the sections of a 3D Studio file, and the order of the reports.
#include <cmath>

#include "harness.h"

using namespace chunks;

struct ReaderTest : SceneTest {};

static const Bytes triangle = Points({0, 0, 0, 1, 0, 0, 0, 1, 0});

static Bytes Triangle(const Bytes &name)
{
    return NamedMesh(name, {triangle, Faces({0, 1, 2})});
}

static std::vector<float> Floats(const Mc3dsVertex &v)
{
    return {v.x, v.y, v.z};
}

struct FileRow {
    const char *what;
    Bytes bytes;
    int objects; // -1: no scene
    const char *errors;
};

TEST_F(ReaderTest, EveryFileEndsInASceneOrInNothing)
{
    const Bytes a = Triangle("A"), b = Triangle("B"), unknown = Chunk(0x1100);
    const FileRow rows[] = {
        {"no byte", "", -1, "E1 File is not a 3DS file\n"},
        {"text", "this is no scene", -1, "E1 File is not a 3DS file\n"},
        {"a magic number and nothing else", "MM", 0, "E1 *\n"},
        {"a version only", Chunk(0x4D4D, {Chunk(0x0002, {U32(3)})}), 0, ""},
        {"a bare editor section", Chunk(0x3D3D, {a, b}), 2, ""},
        {"two editor sections", Chunk(0x4D4D, {Chunk(0x3D3D, {a}), Chunk(0x3D3D, {b})}), 2, ""},
        {"an empty section at the end of the file", Scene({}), 0, ""},
        {"an empty section and another one", Chunk(0x4D4D, {Chunk(0x3D3D), Chunk(0x3D3D, {a})}), 1, ""},
        {"the keyframer ahead of the meshes",
         Chunk(0x4D4D, {Chunk(0xB000, {ObjectNode("A", noParent)}), Chunk(0x3D3D, {a})}), 1,
         "E2 Object A not found\n"},
        {"a child one byte longer than its parent", Scene({a, ChunkOfLength(0x4000, 9, {"B", U8(0)})}), 1,
         ""},
        {"a root without room for children", ChunkOfLength(0x4D4D, 6, {Chunk(0x3D3D, {a})}), 0, ""},
        {"a child of length 0", Scene({a, ChunkOfLength(0x1100, 0, {}), b}), 1, "E1 *\n"},
        {"a child of length 5", Scene({a, ChunkOfLength(0x1100, 5, {}), b}), 1, "E1 *\n"},
        {"a child of length 6", Scene({a, unknown, b}), 2, ""},
        {"a child that ends behind 4 GiB", Scene({a, ChunkOfLength(0x1100, 0xFFFFFFFF, {}), b}), 1, "E1 *\n"},
        {"a child that ends at 4 GiB",
         Scene({a, ChunkOfLength(0x1100, static_cast<uint32_t>(0xFFFFFFFF - 12 - a.size()), {}), b}), 1, ""},
        {"a child as long as can be", Scene({a, ChunkOfLength(0x1100, 0x7FFFFFFF, {}), b}), 1, ""},
        {"half a header", ChunkOfLength(0x4D4D, 96, {ChunkOfLength(0x3D3D, 90, {a, "123"})}), 1, "E1 *\n"},
        {"a face beyond the vertices", Scene({NamedMesh("A", {triangle, Faces({0, 1, 3})})}), 1, "E1 *\n"},
        {"a face and a group beyond the arrays",
         Scene({NamedMesh("A", {triangle, Faces({0, 1, 3}, {MaterialGroup("M", {7})})})}), 1, "E1 *\n"},
        {"damage that costs one section", Scene({a, ChunkOfLength(0x1100, 1, {})}, {ObjectNode("?", 0)}), 1,
         "E1 *\nE2 Object ? not found\n"},
    };
    for (const FileRow &row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedScene scene = LoadBytes(row.bytes);
        EXPECT_EQ(scene ? static_cast<int>(scene->objectCount) : -1, row.objects);
        EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), row.errors));
        if (scene) {
            EXPECT_EQ(scene->rootCount, scene->objectCount);
            EXPECT_EQ(scene->materialCount, 1);
            EXPECT_STREQ(scene->materials[0].name, "default");
            EXPECT_EQ(scene->stream, nullptr);
        }
    }
}

TEST_F(ReaderTest, CountsThatNoFileCanHoldEndTheLoadOnce)
{
    const Bytes huge = Chunk(0x4110, {U16(0xFFFF)});
    const LoadedScene scene =
        LoadBytes(Scene({Triangle("A"), NamedMesh("B", {huge, huge, huge}), Triangle("C")}));
    EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), "E0 *\n"));
    ASSERT_EQ(scene->objectCount, 2u);
    EXPECT_EQ(scene->objects[0].vertexCount, 3);
    EXPECT_EQ(scene->objects[1].vertexCount, 0);
}

TEST_F(ReaderTest, ALoadHandsOutSixteenTimesTheFileAndOneMebibyte)
{
    const auto scene = [](size_t count) {
        const Bytes first = Chunk(0x4110, {U16(0xFFFF)}),
                    second = Chunk(0x4110, {U16(static_cast<uint32_t>(count))});
        return Scene({NamedMesh("B", {first, second})});
    };
    const size_t size = scene(0).size(), first = 0xFFFF * 12; // the bytes of the file count once
    const size_t most = (16 * size + (1 << 20) - size - first) / 12;
    EXPECT_EQ(LoadBytes(scene(most))->objects[0].vertexCount, static_cast<int32_t>(most));
    EXPECT_EQ(TakeReportLines("E"), "");
    EXPECT_EQ(LoadBytes(scene(most + 1))->objects[0].vertexCount, 0);
    EXPECT_TRUE(LinesMatch(TakeReportLines("E"), "E0 *\n"));
}

TEST_F(ReaderTest, VerticesComeToObjectSpaceAndBoundsStayInTheWorld)
{
    // Scale 2, a quarter turn around z, off the origin. The matrix comes after the vertices that it affects.
    const LoadedScene scene = LoadBytes(Scene({NamedMesh(
        "A", {Points({10, 20, 31, 8, 24, 30}), MeshMatrix({0, 2, 0, -2, 0, 0, 0, 0, 2, 10, 20, 30})})}));
    const Mc3dsObject &object = scene->objects[0];
    EXPECT_EQ(Floats(object.vertices[0]), (std::vector<float>{0, 0, 0.5f}));
    EXPECT_EQ(Floats(object.vertices[1]), (std::vector<float>{2, 1, 0}));
    EXPECT_EQ(std::vector<float>(object.boundsMin, object.boundsMin + 3), (std::vector<float>{8, 20, 30}));
    EXPECT_EQ(std::vector<float>(object.boundsMax, object.boundsMax + 3), (std::vector<float>{10, 24, 31}));
    EXPECT_EQ(object.boundsMin[3], Mc3dsLargest);
    const LoadedScene mapped =
        LoadBytes(Scene({NamedMesh("A", {Points({1, 2, 3, 4, 5, 6}), TexVerts({-7, 0.25f, -8, 0.5f})}),
                         NamedMesh("B", {TexVerts({})})}));
    const float *least = mapped->objects[0].boundsMin, *most = mapped->objects[0].boundsMax;
    EXPECT_EQ(std::vector<float>(least, least + 5), (std::vector<float>{1, 2, 3, -8, 0.25f}));
    EXPECT_EQ(std::vector<float>(most, most + 5), (std::vector<float>{4, 5, 6, -7, 0.5f}));
    EXPECT_EQ(mapped->objects[1].hasTexture, 0);
}

TEST_F(ReaderTest, InvalidTextureCoordinatesBecomeZeroInPairs)
{
    const float limit = -8.507059e37f;
    const LoadedScene scene =
        LoadBytes(Scene({NamedMesh("A", {Points(std::vector<float>(15)),
                                         TexVerts({-1e38f, 0.5f, 0.5f, -INFINITY, 0.5f,
                                                   std::nextafter(limit, 0.0f), 1e38f, 0.25f, 2, limit})})}));
    const Mc3dsObject &object = scene->objects[0];
    std::vector<float> uv;
    for (int i = 0; i < 5; ++i)
        uv.insert(uv.end(), {object.vertices[i].u, object.vertices[i].v});
    EXPECT_EQ(uv, (std::vector<float>{0, 0, 0, 0, 0.5f, std::nextafter(limit, 0.0f), 1e38f, 0.25f, 0, 0}));
    EXPECT_EQ(object.boundsMin[3], 0.0f);
}

struct GroupRow {
    const char *what;
    Pieces groups;
    std::vector<int32_t> materials;                // of the three faces
    std::vector<std::vector<uint32_t>> groupsRead; // material, then the faces
    const char *errors;
};

TEST_F(ReaderTest, MaterialGroupsClaimFaces)
{
    const GroupRow rows[] = {
        {"faces of two materials, one with the name of the built-in",
         {MaterialGroup("ONE", {0, 2}), MaterialGroup("default", {1})},
         {1, 2, 1},
         {{1, 0, 2}, {2, 1}},
         ""},
        {"a face claimed twice",
         {MaterialGroup("default", {0, 1}), MaterialGroup("ONE", {1})},
         {2, 1, 0},
         {{2, 0, 1}, {1, 1}},
         ""},
        {"materials that are unknown or come too late",
         {MaterialGroup("one", {0}), MaterialGroup("LATE", {1})},
         {0, 0, 0},
         {{0, 0}, {0, 1}},
         ""},
        {"a group without faces", {MaterialGroup("ONE", {})}, {0, 0, 0}, {}, ""},
        {"faces that aren't there",
         {MaterialGroup("ONE", {3, 1, 0xFFFF}), MaterialGroup("default", {9})},
         {0, 1, 0},
         {{1, 1}},
         "E1 *\n"},
        {"a second face array", {MaterialGroup("ONE", {0}), Bytes()}, {1, 0, 0}, {{1, 0}}, ""},
    };
    for (const GroupRow &row : rows) {
        SCOPED_TRACE(row.what);
        const Bytes replaced = Faces({0, 1, 2}, {MaterialGroup("default", {0})});
        const Bytes faces = Faces({0, 1, 2, 0, 1, 2, 2, 1, 0}, row.groups);
        const LoadedScene scene = LoadBytes(
            Scene({Grey("ONE"), Grey("default"), NamedMesh("A", {triangle, replaced, faces}), Grey("LATE")}));
        const Mc3dsObject &object = scene->objects[0];
        std::vector<int32_t> materials;
        for (int32_t i = 0; i < object.faceCount; ++i)
            materials.push_back(object.faces[i].material);
        std::vector<std::vector<uint32_t>> groups;
        for (uint32_t i = 0; i < object.groupCount; ++i) {
            const Mc3dsMaterialGroup &group = object.groups[i];
            groups.push_back({static_cast<uint32_t>(group.material)});
            groups.back().insert(groups.back().end(), group.faces, group.faces + group.count);
        }
        EXPECT_EQ(materials, row.materials);
        EXPECT_EQ(groups, row.groupsRead);
        EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), row.errors));
    }
}

TEST_F(ReaderTest, ASecondArrayReplacesTheFirst)
{
    const LoadedScene scene =
        LoadBytes(Scene({NamedMesh("A", {Points({-9, 0, 0}), TexVerts({1, 1}), Points({1, 2, 3, 4, 5, 6}),
                                         TexVerts({7, 7}), Faces({0, 0, 1}), Faces({})})}));
    const Mc3dsObject &object = scene->objects[0];
    EXPECT_EQ(object.vertexCount, 2);
    EXPECT_EQ(Floats(object.vertices[1]), (std::vector<float>{4, 5, 6}));
    EXPECT_EQ(object.hasTexture, 0);
    EXPECT_EQ(object.faceCount, 0);
    EXPECT_EQ(object.boundsMin[0], -9.0f);
    EXPECT_EQ(TakeLoadReports("E"), "E1 No of Texture Vertices does not match actual vertices\n");
}

TEST_F(ReaderTest, AHiddenMarkerTakesTheMeshAheadOfIt)
{
    const Bytes mesh = Mesh({triangle}), hidden = Chunk(0x4010), light = Chunk(0x4600), other = Chunk(0x4F00);
    const struct {
        Pieces children;
        uint32_t objects; // that stay
        bool reported;
    } rows[] = {
        {{mesh, hidden}, 0, true},         {{mesh, other, hidden}, 0, true},
        {{mesh, hidden, hidden}, 0, true}, {{mesh, hidden, mesh}, 1, true},
        {{hidden, mesh}, 1, false},        {{light, hidden}, 0, false},
        {{mesh, light, hidden}, 1, false}, {{mesh, Chunk(0x4700), hidden}, 1, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        for (const uint32_t before : {0u, 2u}) {
            Pieces editor(before, Triangle("Kept"));
            editor.push_back(NamedObject("A", row.children));
            const LoadedScene scene = LoadBytes(Scene(editor));
            EXPECT_EQ(scene->objectCount, before + row.objects);
            EXPECT_EQ(scene->objects == nullptr, scene->objectCount == 0);
            const std::string reports = TakeLoadReports("EM", 1);
            EXPECT_EQ(CountOf(reports, "M1 Hidden Object ... removing\n") != 0, row.reported);
            EXPECT_FALSE(Has(reports, "E"));
        }
    }
}
