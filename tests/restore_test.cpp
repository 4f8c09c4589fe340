// Restoring: what old scenes mean, read back by the library.
#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "check_restored.h"
#include "frame/report.h"
#include "harness.h"
#include "seeds.h"

using namespace chunks;

struct RestoreTest : SceneTest {
    Mc3dsRestored restored;

    LoadedScene Restore(const Bytes &scene, uint32_t kinds = Mc3dsRestoreAll)
    {
        restored = Mc3dsRestore(scene, kinds);
        EXPECT_EQ(CheckRestored(scene, Mc3dsRestore(scene, Mc3dsRestoreAll)), "");
        return LoadBytes(SceneAfter(scene, restored), restored.vue);
    }

    // As in "pose BOX 1; edges BOX 4", with "!" after what stayed as it was.
    std::string Records() const
    {
        static const char *const names[] = {"materials", "pose", "placements", "motion", "edges", "strays"};
        std::string text;
        for (const Mc3dsRestoreRecord &record : restored.records)
            text += (text.empty() ? "" : "; ") + std::string(names[static_cast<int>(record.kind)]) + ' ' +
                    record.name + ' ' + std::to_string(record.count) +
                    (record.limit == Mc3dsRestoreLimit::None ? "" : "!");
        return text;
    }
};

static const Mc3dsObject *Find(const LoadedScene &scene, const std::string &name)
{
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (scene->objects[i].name == name)
            return &scene->objects[i];
    ADD_FAILURE() << "no object " << name;
    return scene->objects;
}

// The world position of a vertex, as stored or in a frame, to two digits.
static std::string Place(const LoadedScene &scene, const std::string &name, int32_t vertex,
                         int64_t frame = -1)
{
    const Mc3dsObject *object = Find(scene, name);
    const Mc3dsVertex &v = object->vertices[vertex];
    const float local[3] = {v.x, v.y, v.z};
    float world[3];
    Mc3dsTransformPoint(local, frame < 0 ? &object->meshMatrix : &object->frames[frame], world);
    std::string text;
    for (const float number : world)
        text += (text.empty() ? "" : " ") + std::to_string(std::lround(number * 100));
    return text;
}

static const Bytes corners = Points({0, 0, 0, 1, 0, 0, 0, 2, 0}), face = Faces({0, 1, 2});

static Bytes Box(const Bytes &name, const Pieces &more = {})
{
    return NamedMesh(name, {corners, face, Join(more)});
}

static Bytes At(float x, float y, float z)
{
    return Track(0xB020, {{0, {x, y, z}}});
}

static Bytes NodeId(uint16_t id)
{
    return Chunk(0xB030, {U16(id)});
}

TEST_F(RestoreTest, MissingAndInvalidFieldsOfMaterialsAreCompleted)
{
    const Bytes colour = Colour24(255, 51, 0), linear = Chunk(0x0012, {U8(9), U8(9), U8(9)});
    const Bytes bare = Material("BARE", {Chunk(0xA020, {colour})});
    const Bytes odd =
        Material("ODD", {Chunk(0xA010, {linear, colour}),
                         Chunk(0xA020, {Chunk(0x0010, {F32s({-1, 0.5f, 7})})}), Chunk(0xA030, {colour}),
                         Chunk(0xA040, {Chunk(0x0031, {F32(25)})}), Chunk(0xA050, {Percent(300)}),
                         Chunk(0xA100, {U16(9)}), Chunk(0xA200, {Chunk(0xA300, {Text("WOOD.TGA")})})});
    const LoadedScene scene = Restore(Scene({bare, odd, Grey("FINE"), Box("BOX")}));
    EXPECT_EQ(Records(), "materials BARE 5; materials ODD 6");
    ASSERT_EQ(scene->materialCount, 4);
    EXPECT_EQ(scene->materials[1].ambient[1], scene->materials[1].diffuse[1]);
    EXPECT_EQ(scene->materials[1].specular[0] + scene->materials[1].shininess +
                  scene->materials[1].transparency,
              0.0f);
    EXPECT_EQ(scene->materials[1].shading, 3);
    const Mc3dsMaterial &second = scene->materials[2];
    EXPECT_EQ(std::lround(second.ambient[1] * 255), 51);
    EXPECT_EQ(second.diffuse[0] + second.diffuse[1] + second.diffuse[2], 1.5f);
    EXPECT_EQ(second.shininess, 0.25f);
    EXPECT_EQ(second.transparency, 1.0f);
    EXPECT_STREQ(second.textureMap, "WOOD.TGA");
    EXPECT_TRUE(Has(restored.scene, Map(0xA200, "WOOD.TGA")));
}

TEST_F(RestoreTest, AMaterialMovesAheadOfTheMeshThatNamesIt)
{
    const Bytes mesh = NamedMesh("BOX", {corners, Faces({0, 1, 2}, {MaterialGroup("LATE", {0})})});
    const LoadedScene scene = Restore(Scene({Grey("OTHER"), mesh, Grey("UNUSED"), Grey("LATE")}));
    EXPECT_EQ(Records(), "materials LATE 0");
    Restore(Scene({mesh, Material("LATE", {})}));
    EXPECT_EQ(Records(), "materials LATE 6");
    EXPECT_STREQ(scene->materials[scene->objects[0].faces[0].material].name, "LATE");
    EXPECT_STREQ(scene->materials[3].name, "UNUSED");
}

TEST_F(RestoreTest, ObjectsStandAsInFrameZero)
{
    const float quarter = std::acos(0.0f);
    const Bytes matrix = MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 1, 5, 0, 0});
    const Bytes mirror = MeshMatrix({-1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    const Bytes turn = Track(0xB021, {{0, {quarter, 0, 0, 1}}});
    const Bytes scene = Scene({Box("SHIFTED", {matrix}), Box("CHILD"), Box("TURNED"), Box("MIRROR", {mirror}),
                               Box("STILL"), Box("FREE")},
                              {Kfhdr(2), ObjectNode("SHIFTED", noParent, {Pivot(1, 0, 0), At(0, 0, 3)}),
                               ObjectNode("CHILD", 0, {At(0, 1, 0), Track(0xB022, {{0, {2, 1, 1}}})}),
                               ObjectNode("TURNED", noParent, {turn, At(0, 0, 0)}),
                               ObjectNode("MIRROR", noParent, {At(0, 0, 1)}),
                               ObjectNode("STILL", noParent, {At(0, 0, 0)}), ObjectNode("FREE", noParent)});
    const LoadedScene read = Restore(scene);
    EXPECT_EQ(Records(), "pose SHIFTED 1; pose CHILD 1; pose TURNED 1; pose MIRROR 1");
    EXPECT_EQ(Place(read, "SHIFTED", 1), "-500 0 300"); // 1 - 5, less the pivot
    EXPECT_EQ(Place(read, "CHILD", 1), "200 100 300");
    EXPECT_EQ(Place(read, "TURNED", 1), "0 -100 0"); // clockwise, as seen from the tip of z
    EXPECT_EQ(Place(read, "MIRROR", 1), "100 0 100");
    EXPECT_EQ(Place(read, "FREE", 2), "0 200 0");
    const Mc3dsTransform &m = Find(read, "MIRROR")->meshMatrix;
    EXPECT_LT(m.m[0][0] * m.m[1][1] * m.m[2][2], 0.0);
    EXPECT_TRUE(restored.vue.empty());
}

TEST_F(RestoreTest, AMoveAlongOneAxisIsAMove)
{
    for (size_t axis = 0; axis < 3; ++axis) {
        std::vector<float> place(3);
        place[axis] = 0.01f;
        const Bytes scene = Scene({Box("A")}, {ObjectNode("A", noParent, {Track(0xB020, {{0, place}})})});
        EXPECT_EQ(Mc3dsFindElsewhere(scene), std::vector<std::string>{"A"});
        EXPECT_EQ(Place(Restore(scene), "A", 0), axis == 0 ? "1 0 0" : axis == 1 ? "0 1 0" : "0 0 1");
        place[axis] = 0.00002f; // rounding, for vertices of up to 2
        EXPECT_EQ(
            Mc3dsFindElsewhere(Scene({Box("A")}, {ObjectNode("A", noParent, {Track(0xB020, {{0, place}})})})),
            std::vector<std::string>());
    }
}

// Nothing moves when mirroring nodes are turned over, and neither does what hangs on them.
TEST_F(RestoreTest, NodesThatMirrorAreTurnedOver)
{
    const Bytes mirrored = Track(0xB022, {{0, {-1, 1, 1}}, {4, {-2, 1, 1}}}),
                turn = Track(0xB021, {{0, {1, 1, 2, 3}}});
    const Bytes scene =
        Scene({Box("A"), Box("B"), Box("C"), Box("D")},
              {Kfhdr(4), ObjectNode("A", noParent, {Pivot(1, 2, 3), At(1, 0, 0), mirrored, turn}),
               ObjectNode("B", 0, {At(1, 2, 3), turn, Pivot(4, 0, 0)}),
               ObjectNode("C", 1, {At(3, 2, 1), mirrored}), ObjectNode("D", 0)});
    const LoadedScene moving =
        LoadBytes(scene, Mc3dsRestore(scene, Mc3dsRestoreBit(Mc3dsRestoreKind::Motion)).vue);
    const LoadedScene posed = Restore(scene);
    for (const char *name : {"A", "B", "C"})
        for (const int64_t frame : {0, 3}) {
            EXPECT_EQ(Place(posed, name, 1, frame), Place(moving, name, 1, frame)) << name;
            EXPECT_EQ(Place(posed, name, 2, frame), Place(moving, name, 2, frame)) << name;
        }
    for (const char *name : {"A", "B", "C"})
        EXPECT_EQ(Place(posed, name, 2), Place(posed, name, 2, 0)) << name;
    EXPECT_EQ(Place(posed, "D", 2), "0 200 0"); // without keys it stays
}

TEST_F(RestoreTest, NodesHangOnTheNearestObject)
{
    const Bytes light = Chunk(0xB005, {Chunk(0xB010, {Text("LAMP"), U32(0), U16(0)}), At(2, 3, 10)});
    const Bytes ambient =
        Chunk(0xB001, {Chunk(0xB010, {Text("$AMBIENT$"), U32(0), U16(noParent)}), NodeId(0)});
    const LoadedScene lit = Restore(
        Scene({Box("A"), Box("B"), Box("LOST"), Box("D")},
              {ObjectNode("A", noParent, {At(1, 0, 0)}), light, ObjectNode("B", 1, {At(0, 2, 0)}),
               ObjectNode("LOST", 9, {At(0, 0, 4)}), ObjectNode("D", 1, {Track(0xB022, {{0, {1, 3, 1}}})})}));
    EXPECT_EQ(Place(lit, "D", 2), "300 900 1000");
    EXPECT_EQ(Find(lit, "B")->parentNode, Find(lit, "A")->nodeId);
    EXPECT_EQ(Place(lit, "B", 0), "300 500 1000");
    EXPECT_EQ(Find(lit, "LOST")->parentNode, noParent);
    // NODE_ID counts, and not the order.
    const LoadedScene named =
        Restore(Scene({Box("A"), Box("B"), Box("C")}, {ambient, ObjectNode("C", 1, {NodeId(3), At(0, 0, 1)}),
                                                       ObjectNode("A", noParent, {NodeId(1), At(5, 0, 0)}),
                                                       ObjectNode("B", 3, {NodeId(2), At(0, 3, 0)})}));
    EXPECT_EQ(Place(named, "B", 0), "500 300 100");
    EXPECT_EQ(Find(named, "B")->parentNode, Find(named, "C")->nodeId);
    EXPECT_EQ(Find(named, "C")->parentNode, Find(named, "A")->nodeId);
    // A hidden mesh still holds others in place.
    const LoadedScene hidden =
        Restore(Scene({NamedObject("H", {Mesh({corners, face}), Chunk(0x4010)}), Box("B")},
                      {ObjectNode("H", noParent, {At(0, 0, 7)}), ObjectNode("B", 0, {At(1, 0, 0)})}));
    EXPECT_EQ(Place(hidden, "B", 0), "100 0 700");
    EXPECT_EQ(Find(hidden, "Dummy0")->nodeId, Find(hidden, "B")->parentNode);
}

TEST_F(RestoreTest, AMeshOfSeveralNodesBecomesAsManyMeshes)
{
    const Bytes named = Chunk(0xB011, {Text("LEFT")}), taken = Chunk(0xB011, {Text("TOP")});
    const Bytes scene =
        Scene({Box("A LONG NAM"), Box("TOP")}, {ObjectNode("A LONG NAM", noParent, {At(0, 0, 1)}),
                                                ObjectNode("A LONG NAM", noParent, {named, At(0, 0, 2)}),
                                                ObjectNode("A LONG NAM", noParent, {taken, At(0, 0, 3)}),
                                                ObjectNode("TOP", 1, {At(1, 0, 0)})});
    const LoadedScene read = Restore(scene, Mc3dsRestoreBit(Mc3dsRestoreKind::Placements));
    EXPECT_EQ(Records(), "placements A LONG NAM 2; pose A LONG NAM 1; pose LEFT 1; pose A LONG N_1 1");
    EXPECT_EQ(Place(read, "A LONG NAM", 0) + ", " + Place(read, "LEFT", 0) + ", " +
                  Place(read, "A LONG N_1", 0),
              "0 0 100, 0 0 200, 0 0 300");
    EXPECT_EQ(Find(read, "TOP")->parentNode, Find(read, "LEFT")->nodeId);
    EXPECT_EQ(Place(read, "TOP", 0), "0 0 0"); // only the copies are posed
}

TEST_F(RestoreTest, KeysBecomeFrames)
{
    const float half = 2 * std::acos(0.0f);
    const Bytes repeats = Chunk(0xB020, {U16(2), U32(0), U32(0), U32(2), U32(0), U16(0), F32s({0, 0, 0}),
                                         U32(4), U16(0), F32s({4, 0, 0})});
    const Bytes smooth = Track(0xB020, {{2, {0, 0, 0}}, {4, {4, 0, 0}}, {8, {0, 8, 0}}});
    const Bytes turns = Track(0xB021, {{0, {0, 0, 0, 1}}, {4, {half, 0, 0, 1}}, {8, {3 * half, 0, 0, 1}}});
    const Bytes eased = Track(0xB020, {{0, {0, 0, 0}, 0x10, {1}}, {4, {8, 0, 0}}});
    const Bytes tense = Track(0xB020, {{0, {0, 0, 0}}, {4, {4, 0, 0}, 0x01, {1}}, {8, {4, 8, 0}}});
    const LoadedScene scene =
        Restore(Scene({Box("R"), Box("S"), Box("T"), Box("E"), Box("K"), Box("CHILD"), Box("OFF")},
                      {Kfhdr(10), ObjectNode("R", noParent, {repeats}), ObjectNode("S", noParent, {smooth}),
                       ObjectNode("T", noParent, {turns}), ObjectNode("E", noParent, {eased}),
                       ObjectNode("K", noParent, {tense}), ObjectNode("CHILD", 0, {At(0, 1, 0)}),
                       ObjectNode("OFF", noParent, {At(0, 0, 0)})}));
    ASSERT_TRUE(scene->hasAnimation);
    EXPECT_EQ(Find(scene, "OFF")->hasFrames, 0u);
    const auto path = [&](const char *name, const std::vector<int64_t> &frames) {
        std::string text;
        for (const int64_t frame : frames)
            text += (text.empty() ? "" : ", ") + Place(scene, name, name == std::string("T") ? 1 : 0, frame);
        return text;
    };
    EXPECT_EQ(path("R", {0, 2, 4, 6, 10}), "0 0 0, 200 0 0, 400 0 0, 200 0 0, 200 0 0");
    EXPECT_EQ(path("CHILD", {0, 6}), "0 100 0, 200 100 0");
    // Before the first key and after the last, its value; between them a curve through all.
    EXPECT_EQ(path("S", {0, 2, 3, 4, 6, 8, 10}),
              "0 0 0, 0 0 0, 250 -33 0, 400 0 0, 250 367 0, 0 800 0, 0 800 0");
    // Half a circle in four frames, then one and a half in the next four: not the short way.
    EXPECT_EQ(path("T", {0, 2, 4, 5, 6, 8}), "100 0 0, 0 -100 0, -100 0 0, 71 71 0, 0 -100 0, 100 0 0");
    EXPECT_EQ(path("E", {0, 1, 2, 4}), "0 0 0, 50 0 0, 200 0 0, 800 0 0");
    EXPECT_EQ(path("K", {4, 5}), "400 0 0, 400 88 0");
}

// The sample's keys and its .vue file say the same, with turns around tilted axes below turning parents.
TEST_F(RestoreTest, TheKeysOfTheSampleGiveItsAnimation)
{
    const Bytes bytes = ReadFile(SamplePath("orrery.3DS"));
    const LoadedScene told = LoadBytes(bytes, ReadFile(SamplePath("orrery.vue")));
    std::filesystem::remove("scene.vue");
    const LoadedScene made = Restore(bytes);
    EXPECT_TRUE(restored.scene.empty());
    double furthest = 0;
    for (uint32_t i = 0; i < told->objectCount; ++i)
        for (uint32_t frame = 0; frame <= told->frameCount && told->objects[i].vertexCount > 0; ++frame)
            for (int at = 0; at < 12; ++at)
                furthest = std::max(furthest, std::abs(told->objects[i].frames[frame].m[at / 3][at % 3] -
                                                       made->objects[i].frames[frame].m[at / 3][at % 3]));
    EXPECT_LT(furthest, 0.001); // the .vue file has four decimals
}

TEST_F(RestoreTest, CurvesFollowTheSplinesOfTheirKeys)
{
    const auto closed = [](uint16_t tag, size_t count, const Bytes &keys) {
        return Chunk(tag, {U16(3), U32(0), U32(0), U32(static_cast<uint32_t>(count)), keys});
    };
    const Bytes loop = closed(0xB020, 4,
                              U32(0) + U16(0) + F32s({0, 0, 0}) + U32(4) + U16(0) + F32s({8, 0, 0}) + U32(8) +
                                  U16(0) + F32s({0, 8, 0}) + U32(12) + U16(0) + F32s({0, 0, 0}));
    const Bytes bent = Track(0xB020, {{0, {0, 0, 0}}, {4, {8, 0, 0}, 0x06, {0.5f, 0.25f}}, {6, {0, 8, 0}}});
    const Bytes eased = Track(0xB020, {{0, {0, 0, 0}, 0x10, {1}}, {4, {8, 0, 0}, 0x08, {1}}});
    const Bytes turns =
        Track(0xB021, {{0, {0, 0, 0, 1}}, {4, {1, 0, 0, 1}}, {8, {2, 0, 0, 1}}, {10, {0.5f, 1, 0, 0}}});
    const LoadedScene scene =
        Restore(Scene({Box("LOOP"), Box("BENT"), Box("EASED"), Box("TURNS")},
                      {Kfhdr(16), ObjectNode("LOOP", noParent, {loop}), ObjectNode("BENT", noParent, {bent}),
                       ObjectNode("EASED", noParent, {eased}), ObjectNode("TURNS", noParent, {turns})}));
    EXPECT_EQ(Records(), "motion LOOP 16; motion BENT 16; motion EASED 16; motion TURNS 16");
    // The end of a loop goes on as its start does: at frame 0 towards (4, -4, 0).
    EXPECT_EQ(Place(scene, "LOOP", 0, 2) + ", " + Place(scene, "LOOP", 0, 10) + ", " +
                  Place(scene, "LOOP", 0, 14),
              "450 -100 0, -100 450 0, 450 -100 0");
    EXPECT_EQ(Place(scene, "BENT", 0, 2) + ", " + Place(scene, "BENT", 0, 5), "529 -66 0, 563 316 0");
    EXPECT_EQ(Place(scene, "EASED", 0, 1) + ", " + Place(scene, "EASED", 0, 3), "100 0 0, 700 0 0");
    EXPECT_EQ(Place(scene, "TURNS", 1, 2) + ", " + Place(scene, "TURNS", 1, 6) + ", " +
                  Place(scene, "TURNS", 1, 10),
              "91 -42 0, -43 -90 -3, -99 -12 7");
}

TEST_F(RestoreTest, EdgesBetweenSmoothingGroupsAreDoubled)
{
    const auto smoothing = [](const std::vector<uint32_t> &groups) {
        Bytes data;
        for (const uint32_t group : groups)
            data += U32(group);
        return Chunk(0x4150, {data});
    };
    const Bytes square = Points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}),
                uv = TexVerts({0, 0, 1, 0, 1, 1, 0, 1});
    const struct {
        std::vector<uint32_t> groups;
        int32_t vertices;
    } rows[] = {{{1, 2}, 6}, {{3, 2}, 4}, {{0, 0}, 6}, {{0, 1}, 6}, {{}, 4}};
    for (const auto &row : rows) {
        const Pieces more = row.groups.empty() ? Pieces() : Pieces{smoothing(row.groups)};
        const LoadedScene scene =
            Restore(Scene({NamedMesh("A", {square, uv, Faces({0, 1, 2, 0, 2, 3}, more)})}));
        const Mc3dsObject &object = scene->objects[0];
        EXPECT_EQ(object.vertexCount, row.vertices);
        const Mc3dsFace &second = object.faces[1];
        EXPECT_EQ(object.vertices[second.b].u + object.vertices[second.b].y, 2.0f);
        EXPECT_EQ(second.a == object.faces[0].a, row.vertices == 4);
    }
    // Groups that a third face joins are one.
    const LoadedScene fan = Restore(
        Scene({NamedMesh("A", {square, Faces({0, 1, 2, 0, 2, 3, 0, 3, 1}, {smoothing({1, 2, 3})})})}));
    EXPECT_EQ(fan->objects[0].faces[0].a, fan->objects[0].faces[1].a);
}

TEST_F(RestoreTest, StraysThatSetTheBoundsGo)
{
    for (size_t axis = 0; axis < 3; ++axis)
        for (const float far : {9e9f, -9e9f, std::numeric_limits<float>::quiet_NaN()}) {
            std::vector<float> places = {0, 0, 0, 0.5f, 0.5f, 0, 1, 0, 0, 0.5f, 0, 0, 0, 2, 0};
            places[3 + axis] = far;
            const LoadedScene scene = Restore(Scene(
                {NamedMesh("A", {Points(places), TexVerts({0, 0, 1, 1, 2, 2, 3, 3, 4, 4}), Faces({0, 2, 4})}),
                 Box("B")}));
            EXPECT_EQ(Records(), "strays A 1");
            ASSERT_EQ(scene->objects[0].vertexCount, 4);
            EXPECT_EQ(scene->objects[0].vertices[scene->objects[0].faces[0].c].u, 4.0f);
            EXPECT_EQ(scene->objects[0].boundsMax[0], 1.0f);
        }
    Restore(Scene({NamedMesh("A", {Points({9, 9, 9, 0, 0, 0}), Faces({1, 1, 1})})}));
    EXPECT_EQ(Records(), "strays A 1");
    Restore(Scene({NamedMesh("A", {Points({9, 9, 9, 0, 0, 0}), Faces({})})}));
    EXPECT_EQ(Records(), "");
}

TEST_F(RestoreTest, WhatCannotBeRestoredStaysAndIsTold)
{
    const Bytes flat = MeshMatrix({1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    const Bytes shuffled = Track(0xB020, {{3, {0, 0, 1}}, {1, {0, 0, 2}}});
    Restore(
        Scene({Box("FLAT", {flat}), Box("SHUFFLED")}, {Kfhdr(2), ObjectNode("FLAT", noParent, {At(0, 0, 1)}),
                                                       ObjectNode("SHUFFLED", noParent, {shuffled})}));
    EXPECT_EQ(Records(), "pose FLAT 0!; pose SHUFFLED 0!");
    const Bytes moving = Track(0xB020, {{0, {0, 0, 1}}, {1, {0, 0, 2}}});
    Restore(Scene({Box("A")}, {Kfhdr(2000000000), ObjectNode("A", noParent, {moving})}),
            Mc3dsRestoreBit(Mc3dsRestoreKind::Motion));
    EXPECT_EQ(Records(), "motion A 0!");
    Pieces nodes(3000, ObjectNode("BIG", noParent, {At(0, 0, 1)}));
    Restore(Scene({NamedMesh("BIG", {Points(std::vector<float>(60000)), face})}, nodes));
    EXPECT_EQ(Records(), "placements BIG 0!; pose BIG 1");
    const Bytes cut =
        Scene({Grey("M"), NamedObject("A", {Mesh({ChunkOfLength(0x4110, 10, {U16(9), U16(0)})})})});
    EXPECT_EQ((Restore(cut), restored.scene), "");
    EXPECT_EQ(Records(), "materials  0!");
}

TEST_F(RestoreTest, WhatHasLimitsReachesThem)
{
    // 22,000 faces without a group at three vertices would need 66,000.
    std::vector<uint16_t> many;
    Bytes groups;
    for (int i = 0; i < 22000; ++i) {
        many.insert(many.end(), {0, 1, 2});
        groups += U32(0);
    }
    Restore(Scene({NamedMesh("A", {corners, Faces(many, {Chunk(0x4150, {groups})})})}));
    EXPECT_EQ(Records(), "edges A 0!");
    const Bytes late = Chunk(0xB020, {U16(2), U32(0), U32(0), U32(2), U32(2), U16(0), F32s({0, 0, 0}), U32(6),
                                      U16(0), F32s({4, 0, 0})});
    const Bytes eased = Track(0xB020, {{0, {0, 0, 0}, 0x10, {0.25f}}, {8, {9, 0, 0}, 0x08, {0.5f}}});
    const Bytes loop = Chunk(0xB020, {U16(3), U32(0), U32(0), U32(3), U32(0), U16(0), F32s({0, 0, 0}), U32(2),
                                      U16(0), F32s({4, 0, 0}), U32(8), U16(0), F32s({0, 0, 0})});
    const LoadedScene scene = Restore(
        Scene({Box("L"), Box("E"), Box("C"), Box("B"), NamedMesh("P", {corners}), Box("RING1"), Box("RING2")},
              {Kfhdr(12), ObjectNode("L", noParent, {late}), ObjectNode("E", noParent, {eased}),
               ObjectNode("C", noParent, {loop}), ObjectNode("$$$DUMMY", noParent, {late}),
               ObjectNode("B", 3, {At(0, 1, 0)}), ObjectNode("P", noParent, {At(0, 0, 1)}),
               ObjectNode("RING1", 7, {At(0, 0, 1)}), ObjectNode("RING2", 6, {At(0, 0, 1)})}));
    EXPECT_EQ(Records(), "pose B 1; pose P 1; motion L 12; motion E 12; motion C 12; motion B 12");
    EXPECT_EQ(Place(scene, "L", 0, 1) + ", " + Place(scene, "L", 0, 7) + ", " + Place(scene, "L", 0, 9),
              "0 0 0, 100 0 0, 300 0 0");
    EXPECT_EQ(Place(scene, "E", 0, 1) + ", " + Place(scene, "E", 0, 4) + ", " + Place(scene, "E", 0, 6),
              "45 0 0, 540 0 0, 810 0 0");
    EXPECT_EQ(Place(scene, "C", 0, 1) + ", " + Place(scene, "C", 0, 5) + ", " + Place(scene, "C", 0, 11),
              "200 0 0, 200 0 0, 370 0 0");
    EXPECT_EQ(Place(scene, "P", 1), "100 0 100");
    EXPECT_EQ(Place(scene, "B", 0, 7), "100 100 0");
    EXPECT_TRUE(Has(restored.vue, "transform \"Dummy0\" 1 0 0 0 1 0 0 0 1 1 0 0\n"));
}

// Damaged seeds: whatever is restored, the library reads it without a report that it didn't bring before.
TEST_F(RestoreTest, DamagedScenesStayReadable)
{
    static std::set<Mc3dsReportKind> kinds;
    const auto load = [](const Bytes &scene, const std::string &vue) {
        kinds.clear();
        WriteFile("r.3ds", scene);
        std::filesystem::remove("r.vue");
        if (!vue.empty())
            WriteFile("r.vue", vue);
        Mc3dsSetErrorCallback([](int32_t, const char *) { kinds.insert(Mc3dsNewestReport()->kind); });
        Load("r.3ds");
        return kinds;
    };
    uint32_t random = 1;
    for (const Seed &seed : Seeds())
        for (int round = 0; round < 100 && seed.scene.size() < 20000; ++round) {
            Bytes scene = seed.scene;
            for (int i = 0; i < round % 4; ++i) {
                random = random * 1664525 + 1013904223;
                scene[random / 256 % scene.size()] = static_cast<char>(random);
            }
            const Mc3dsRestored made = Mc3dsRestore(scene, Mc3dsRestoreAll);
            ASSERT_EQ(CheckRestored(scene, made), "") << seed.name << ' ' << round;
            load(scene, ""); // a map without a name takes the last one that was read
            const std::set<Mc3dsReportKind> before = load(scene, ""),
                                            after = load(SceneAfter(scene, made), made.vue);
            EXPECT_TRUE(std::includes(before.begin(), before.end(), after.begin(), after.end()))
                << seed.name << ' ' << round;
        }
}
