// Reading of materials, of the keyframer section, and of texts longer than their fields.
#include <bit>
#include <cmath>

#include "harness.h"

using namespace chunks;

struct ItemTest : SceneTest {};

static Bytes Box(const Bytes &name)
{
    return NamedObject(name, {Mesh({Points({1, 2, 3})})});
}

TEST_F(ItemTest, AMaterialIsStoredWithFractionsThatAreProductsOf64Bits)
{
    const LoadedScene scene =
        LoadBytes(Scene({Material("OAK", {Finish(Colour24(1, 127, 255), Chunk(0x0010, {F32s({0, 0.5f, 1})}),
                                                 Colour24(255, 60, 0), 4, 5, 99),
                                          Map(0xA220, "R"), Map(0xA210, "HOLES.CEL"), Map(0xA200, "O")})}));
    ASSERT_EQ(scene->materialCount, 2);
    const Mc3dsMaterial &material = scene->materials[1];
    for (const int level : {1, 127, 255})
        EXPECT_EQ(material.ambient[level / 127],
                  static_cast<float>(level * static_cast<double>(0.003921569f)));
    EXPECT_EQ(material.diffuse[1], 0.5f);
    // For the byte 60, the product with the stored constant and the quotient by 255 differ in the last bit.
    EXPECT_EQ(std::bit_cast<uint32_t>(material.specular[1]), 0x3E70F0F2u);
    EXPECT_EQ(material.shininess, static_cast<float>(5 * static_cast<double>(0.01f)));
    EXPECT_NE(material.shininess, 0.05f);
    EXPECT_EQ(material.transparency, static_cast<float>(99 * static_cast<double>(0.01f)));
    EXPECT_EQ(material.shading, 5);
    EXPECT_STREQ(material.opacityMap, "HOLES.CEL");
}

struct MaterialRow {
    const char *what;
    Bytes chunks; // added to a complete material
    const char *reports;
};

TEST_F(ItemTest, AMaterialWithAFaultIsRefused)
{
    const Bytes over = Chunk(0x0010, {F32s({0, 0, 1.0000001f})}),
                under = Chunk(0x0010, {F32s({0, -1e-20f, 0})});
    const Bytes edge = Chunk(0x0010, {F32s({-0.0f, 1, 0})}), nan = Chunk(0x0010, {F32s({NAN, 0, 0})});
    const MaterialRow rows[] = {
        {"colours at their bounds", Chunk(0xA010, {edge}), "M1 Material <M>\n"},
        {"too bright", Chunk(0xA010, {over}), "E1 Invalid Material Ambient\n"},
        {"too dark", Chunk(0xA020, {under}), "E1 Invalid Material Diffuse\n"},
        {"no number", Chunk(0xA030, {nan}), "E1 Invalid Material Specular\n"},
        {"two faults", Chunk(0xA030, {over}) + Chunk(0xA020, {over}), "E1 Invalid Material Diffuse\n"},
        {"a later colour", Chunk(0xA020, {over}) + Chunk(0xA020, {edge}), "M1 Material <M>\n"},
        {"the second colour of a chunk", Chunk(0xA020, {midGrey, over}), "M1 Material <M>\n"},
        {"a colour of no kind", Chunk(0xA020, {Percent(1)}), "E0 Error parsing colour\nM1 Material <M>\n"},
        {"100 per cent", Chunk(0xA040, {Percent(100)}), "M1 Material <M>\n"},
        {"101 per cent", Chunk(0xA040, {Percent(101)}), "E1 Invalid Material Shininess\n"},
        {"half, as a float", Chunk(0xA050, {Chunk(0x0031, {F32(0.5f)})}), "M1 Material <M>\n"},
        {"50 per cent, as a float", Chunk(0xA050, {Chunk(0x0031, {F32(50)})}),
         "E1 Invalid Material Transparency\n"},
        {"a percentage of no kind", Chunk(0xA050, {midGrey}),
         "E2 Error parsing percentage\nM1 Material <M>\n"},
        {"shading 5", Chunk(0xA100, {U16(5)}), "E1 Invalid Material Shading\n"},
        {"shading 65535", Chunk(0xA100, {U16(0xFFFF)}), "E1 Invalid Material Shading\n"},
        {"an empty name", Chunk(0xA000, {Text("")}), "E1 Invalid Material Name\n"},
        {"a map without a percentage",
         Chunk(0xA200, {Chunk(0xA300, {Text("LOST")}), Chunk(0xA300, {Text("M.CEL")})}),
         "E2 Error parsing percentage\nM1 Material <M>\n"},
        {"maps twice",
         Map(0xA200, "A") + Map(0xA200, "B") + Map(0xA210, "A") + Map(0xA210, "B") + Map(0xA220, "A") +
             Map(0xA220, "B"),
         "E2 Texture Map already defined\nE2 Opacity Map already defined\nE2 Environment Map already "
         "defined\n"
         "M1 Material <M>\n"},
    };
    for (const MaterialRow &row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedScene scene = LoadBytes(Scene({Grey("M", {row.chunks})}));
        std::string reports;
        for (const Report &report : TakeReports())
            if (report.channel == 'E' || report.level == 1)
                reports += report.channel + std::to_string(report.level) + ' ' + report.text + '\n';
        EXPECT_EQ(reports, row.reports);
        EXPECT_EQ(scene->materialCount, reports.find("M1") != std::string::npos ? 2 : 1);
    }
}

TEST_F(ItemTest, AMissingFieldIsNamedInTheOrderOfTheRecord)
{
    const Pieces parts = {Chunk(0xA000, {Text("M")}),   Chunk(0xA010, {midGrey}),
                          Chunk(0xA020, {midGrey}),     Chunk(0xA030, {midGrey}),
                          Chunk(0xA040, {Percent(25)}), Chunk(0xA050, {Percent(0)}),
                          Chunk(0xA100, {U16(2)})};
    const char *names[] = {"Name", "Ambient", "Diffuse", "Specular", "Shininess", "Transparency", "Shading"};
    for (size_t first = 0; first < parts.size(); ++first)
        for (size_t second = first; second < parts.size(); ++second) {
            Pieces rest; // reversed: the order of the chunks must not matter
            for (size_t i = parts.size(); i-- > 0;)
                if (i != first && i != second)
                    rest.push_back(parts[i]);
            EXPECT_EQ(LoadBytes(Scene({Chunk(0xAFFF, rest)}))->materialCount, 1);
            EXPECT_EQ(TakeLoadReports(), "E1 Invalid Material " + std::string(names[first]) + "\n");
        }
}

TEST_F(ItemTest, UnusableSidesOfAMaterialAreTold)
{
    const std::string tail = " not currently supported by Meshcaster\n";
    const Bytes mapped = Chunk(0xA200, {Percent(1), Chunk(0xA351), Chunk(0xA300, {Text("A.CEL")})});
    LoadBytes(
        Scene({Material("", {Chunk(0xA052), Chunk(0xA053), Chunk(0xA081), Chunk(0xA082), Chunk(0xA083),
                             Map(0xA230, "BUMP"), Chunk(0xA240), Chunk(0xA250), Chunk(0xA310), Chunk(0xA320),
                             Chunk(0xA321), Chunk(0xA322), Chunk(0xA323), mapped, Chunk(0xA351)})}));
    EXPECT_EQ(TakeLoadReports(),
              "M2 MAT_XPFALL - Transparency falloff" + tail + "M2 MAT_REFBLUR - Reflection blurring" + tail +
                  "M2 MAT_TWO_SIDE - Two sided materials" + tail + "M2 MAT_DECAL - Material Decal" + tail +
                  "M2 MAT_BUMPMAP - Bump Maps" + tail + "M2 MAT_REFBLUR - Automatic Environment Maps" + tail +
                  "M2 Ignoring Chunk Tag <a321>\nM2 Ignoring Chunk Tag <a351>\n"
                  "E1 Invalid Material Name\n");
}

// Such a text ends after 129 bytes, and the fields after it begin there.
TEST_F(ItemTest, ATextWithoutAnEndIsReadToItsLimit)
{
    const std::string name(129, 'N');
    for (const size_t padding : {size_t{0}, size_t{65536 - 200}}) { // in the buffer, and across its end
        const Bytes node = Chunk(0xB002, {Chunk(0xB010, {name, U32(0), U16(7)})});
        const LoadedScene scene = LoadBytes(
            Scene({NamedObject(std::string(11, 'N'), {Mesh({})}), Chunk(0x1100, {Bytes(padding, 'x')})},
                  {Kfhdr(1), node}));
        ASSERT_EQ(scene->objectCount, 1u);
        EXPECT_EQ(scene->objects[0].parentNode, 7);
    }
}

// A map without children takes the chunks after it for its own, up to the end of the file here. What is there
// is read again in its turn.
TEST_F(ItemTest, ChunksThatWereReadAheadComeAgain)
{
    const Bytes material = Grey("M", {Chunk(0xA200), Chunk(0x1100, {Bytes(66000, 'x')})});
    const LoadedScene scene = LoadBytes(Scene({material, NamedObject("A", {Mesh({Points({1, 2, 3})})})}));
    ASSERT_EQ(scene->objectCount, 1u);
    EXPECT_EQ(scene->objects[0].vertexCount, 1);
    EXPECT_EQ(scene->materialCount, 2);
}

TEST_F(ItemTest, AMapWithoutANameTakesTheLastOneRead)
{
    LoadBytes(Scene({Grey("A", {Map(0xA200, "LAST.CEL")})}));
    const LoadedScene scene = LoadBytes(Scene({Grey("B", {Chunk(0xA220, {Percent(50)})})}));
    EXPECT_STREQ(scene->materials[1].reflectionMap, "LAST.CEL");
}

// Each object as "name node/parent", roots without a parent. The number of nodes that name it follows unless
// it is 1, or 0 for an object without a node.
static std::string Nodes(const LoadedScene &scene)
{
    std::string text;
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        const Mc3dsObject &object = scene->objects[i];
        text += (i == 0 ? "" : ", ") + std::string(object.name) + " " + std::to_string(object.nodeId);
        if (object.parentNode != noParent)
            text += "/" + std::to_string(object.parentNode);
        if (object.nodeCount != (object.nodeId == -1 ? 0u : 1u))
            text += " of " + std::to_string(object.nodeCount) + " nodes";
    }
    return text;
}

struct NodeRow {
    const char *what;
    Pieces keyframer;
    const char *nodes;
    const char *errors;
};

TEST_F(ItemTest, NodesGiveTheHierarchy)
{
    const Bytes a = ObjectNode("A", noParent), camera = Chunk(0xB003), longPivot = Pivot(9, 9, 9);
    const NodeRow rows[] = {
        {"no nodes", {Kfhdr(0)}, "A -1, B -1, Long name 1 -1", ""},
        {"a camera counts", {a, camera, ObjectNode("B", 0)}, "A 0, B 2/0, Long name 1 -1", ""},
        {"all kinds of nodes count but the ambient one",
         {Chunk(0xB001), camera, Chunk(0xB004), Chunk(0xB005), Chunk(0xB006), Chunk(0xB007), a},
         "A 5, B -1, Long name 1 -1",
         ""},
        {"dummies",
         {ObjectNode("$$$DUMMY", noParent), ObjectNode("$$$dummy", 0), ObjectNode("$$$Dummy", 0x8000)},
         "A -1, B -1, Long name 1 -1, Dummy0 0, Dummy1 1/0, Dummy2 2/32768",
         ""},
        {"unknown objects count",
         {ObjectNode("a", noParent), ObjectNode("$$$DUMMY2", 0), a},
         "A 2, B -1, Long name 1 -1",
         "E2 Object a not found\nE2 Object $$$DUMMY2 not found\n"},
        {"the later of two nodes counts",
         {a, ObjectNode("B", 0), ObjectNode("A", 1)},
         "A 2/1 of 2 nodes, B 1/0, Long name 1 -1",
         ""},
        {"a name cut like the mesh's",
         {ObjectNode("Long name 12345", 7)},
         "A -1, B -1, Long name 1 0/7",
         "E2 *\n"},
        {"an unknown long name",
         {ObjectNode("Other name 12345", 7)},
         "A -1, B -1, Long name 1 -1",
         "E2 *\nE2 Object Other name 12345 not found\n"},
        {"a second header",
         {ObjectNode("A", noParent, {Chunk(0xB010, {Text("B"), U32(0), U16(0)})})},
         "A 0, B -1, Long name 1 -1",
         "E2 *\n"},
        {"a node without a header", {Chunk(0xB002, {longPivot}), a}, "A 1, B -1, Long name 1 -1", ""},
    };
    for (const NodeRow &row : rows) {
        SCOPED_TRACE(row.what);
        const LoadedScene scene = LoadBytes(Scene({Box("A"), Box("B"), Box("Long name 1")}, row.keyframer));
        EXPECT_EQ(Nodes(scene), row.nodes);
        EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), row.errors));
        EXPECT_EQ(scene->objects[0].vertices[0].x, 1.0f);
    }
}

TEST_F(ItemTest, APivotRecentresWithoutMovingTheObject)
{
    // The matrix is a quarter turn around z at (10, 0, 0): world point (10, 5, 0) is (5, 0, 0) in the object.
    const Bytes mesh = Mesh({Points({10, 5, 0}), MeshMatrix({0, 1, 0, -1, 0, 0, 0, 0, 1, 10, 0, 0})});
    const LoadedScene scene = LoadBytes(Scene(
        {NamedObject("A", {mesh})},
        {ObjectNode("A", noParent, {Pivot(2, 0, 0)}), ObjectNode("B", noParent, {Pivot(50, 0, 0)}),
         ObjectNode("A", noParent, {Pivot(1, 0, 0)}), ObjectNode("$$$DUMMY", noParent, {Pivot(7, 8, 9)})}));
    const Mc3dsObject &mine = scene->objects[0], &dummy = scene->objects[1];
    EXPECT_EQ(mine.vertices[0].x, 2.0f);
    EXPECT_EQ(mine.meshMatrix.m[3][0], 10.0);
    EXPECT_EQ(mine.meshMatrix.m[3][1], 3.0);
    EXPECT_EQ(mine.pivot[0], 1.0f);
    EXPECT_EQ(mine.boundsMax[1], 5.0f);
    EXPECT_EQ(dummy.meshMatrix.m[3][2], 9.0);
}

// All 48 names have the 32-bit FNV-1a hash 336daa36: more names than it has bits.
TEST_F(ItemTest, NamesWithOneHashAreDifferentNames)
{
    std::vector<Bytes> names;
    for (const char *first : {"TOiGm", "h8wNm", "mUROM"})
        for (const char *second : {"KYfoB", "xZ9gO", "14Q2W", "ksf85"})
            for (const char *third : {"aik8I", "TlizK", "3X2nW", "fYq4X"})
                names.push_back(Bytes(first) + second + third);
    Pieces pieces, groups;
    for (const Bytes &name : names) {
        pieces.push_back(Grey(name));
        groups.insert(groups.begin(), MaterialGroup(name, {static_cast<uint16_t>(groups.size())}));
    }
    const Bytes faces = Faces(std::vector<uint16_t>(3 * names.size()), groups);
    pieces.push_back(NamedObject("A", {Mesh({Points({0, 0, 0}), faces})}));
    const LoadedScene scene = LoadBytes(Scene(pieces));
    ASSERT_EQ(scene->objects[0].groupCount, names.size());
    for (size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(scene->materials[scene->objects[0].groups[i].material].name, names[names.size() - 1 - i]);
    EXPECT_EQ(scene->lostMaterialCount, 0u);
}

TEST_F(ItemTest, PivotsMoveVerticesUpToTheLimitOfTheLoad)
{
    constexpr size_t count = 4000;
    Pieces pivots;
    for (size_t i = 0; i < count; ++i)
        pivots.push_back(Pivot(0.1f, static_cast<float>(i), 0));
    const Bytes after = ObjectNode("B", noParent);
    const auto scene = [&](size_t eighths, size_t padding) { // every byte is read once
        const std::vector<float> points(3 * (8 * eighths + 7));
        return Scene({NamedObject("A", {Mesh({Points(points)})}), Box("B")},
                     {Chunk(0xB00A, {U16(5), Text(Bytes(padding, 'x')), U32(0)}),
                      ObjectNode("A", noParent, pivots), after});
    };
    const size_t smallest = scene(0, 0).size();
    for (const size_t missing : {0u, 1u}) { // bytes that the limit lacks for pivot number last
        size_t eighths = 1000, padding = 0, last = 0;
        for (bool found = false; !found;) {
            if (++padding > 100) {
                padding = 0;
                ++eighths;
            }
            const size_t size = smallest + 96 * eighths + padding, limit = 16 * size + (1 << 20);
            const size_t readBefore = size - after.size() - 18 * count;
            last = (limit + missing - readBefore) / (18 + eighths) - 1;
            found = readBefore + (18 + eighths) * (last + 1) == limit + missing;
        }
        ASSERT_LT(last + 1, count);
        const LoadedScene loaded = LoadBytes(scene(eighths, padding));
        const Mc3dsObject &object = loaded->objects[0];
        double position = 0;
        float x = 0; // the last bits depend on the order of the sums
        for (size_t move = 0; move < last + 1 - missing; ++move) {
            position += static_cast<double>(0.1f);
            x -= 0.1f;
        }
        EXPECT_EQ(object.meshMatrix.m[3][0], position);
        EXPECT_EQ(object.vertices[8 * eighths + 6].x, x);
        EXPECT_EQ(object.pivot[1], static_cast<float>(last));
        EXPECT_EQ(loaded->objects[1].nodeId, -1) << "the walk goes on";
        EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), "E0 *\n"));
    }
}

TEST_F(ItemTest, TracksAreReadWithTheirSplinesPassedOver)
{
    const Bytes replaced = Track(0xB021, {{1, {9, 9, 9, 9}}});
    const Bytes turning = Track(0xB021, {{3, {0.5f, 0, 0, 1}, 0x11, {7, 7}},
                                         {8, {0.25f, 0, 1, 0}, 0xFFE0},
                                         {9, {1, 1, 0, 0}, 0x1F, {7, 7, 7, 7, 7}}});
    const Bytes tooMany = Chunk(0xB022, {U16(0), U32(0), U32(0), U32(2), U32(0), U16(0), F32s({1, 2, 3})});
    const Bytes wraps = Chunk(0xB020, {U16(0), U32(0), U32(0), U32(0x80000001), F32s(std::vector<float>(9))});
    const Pieces children = {replaced, turning, wraps, tooMany, Chunk(0xB014, {F32s({-1, -2, -3, 1, 2, 3})})};
    const LoadedScene scene = LoadBytes(
        Scene({Box("A")}, {ObjectNode("A", noParent, children), ObjectNode("?", noParent, children)}));
    const Mc3dsObject &object = scene->objects[0];
    ASSERT_EQ(object.rotationKeyCount, 3u);
    EXPECT_EQ(object.rotationKeys[0].frame, 3u);
    EXPECT_EQ(object.rotationKeys[0].angle, 0.5f);
    EXPECT_EQ(object.rotationKeys[1].y, 1.0f);
    EXPECT_EQ(object.rotationKeys[2].frame, 9u);
    EXPECT_EQ(object.rotationKeys[2].x, 1.0f);
    EXPECT_EQ(object.positionKeyCount, 0u);
    EXPECT_EQ(object.scaleKeyCount, 0u);
    EXPECT_EQ(object.nodeBoundMax[2], 3.0f);
    EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), "E1 *\nE1 *\nE2 Object ? not found\nE1 *\nE1 *\n"));
}

// Half a million keys fit into the length that the chunks claim, and not into what the file may ask for.
TEST_F(ItemTest, KeysCountAgainstTheLimitOfTheLoad)
{
    const Bytes track = ChunkOfLength(0xB020, 0x7FFFFD00, {U16(0), U32(0), U32(0), U32(500000)});
    const Bytes node =
        ChunkOfLength(0xB002, 0x7FFFFE00, {Chunk(0xB010, {Text("A"), U32(0), U16(noParent)}), track});
    const LoadedScene scene = LoadBytes(ChunkOfLength(0x4D4D, 0x7FFFFFF0,
                                                      {Chunk(0x3D3D, {NamedObject("A", {Mesh({})})}),
                                                       ChunkOfLength(0xB000, 0x7FFFFF00, {Kfhdr(1), node})}));
    ASSERT_EQ(scene->objectCount, 1u);
    EXPECT_EQ(scene->objects[0].positionKeyCount, 0u);
    EXPECT_EQ(TakeReportLines("E", 0).substr(0, 3), "E0 ");
}

TEST_F(ItemTest, TextLongerThanItsFieldIsCutWithAReport)
{
    const Bytes endless(200, 'x'); // the reader ends a text after 129 bytes
    const LoadedScene scene =
        LoadBytes(Scene({Grey("Eleven and 8 more 20"),
                         Grey("N", {Map(0xA200, "fifteen.letters"), Map(0xA210, "sixteen.letters!")}),
                         Grey("O", {Map(0xA200, endless)}), Box("Eleven char"), Box("Twelve chars"),
                         NamedObject(endless, {Mesh({})})},
                        {ObjectNode("Eleven char", noParent, {Chunk(0xB011, {Text("sixteen letters!")})})}));
    EXPECT_STREQ(scene->materials[1].name, "Eleven and 8 more 2");
    EXPECT_STREQ(scene->materials[2].textureMap, "fifteen.letters");
    EXPECT_STREQ(scene->materials[2].opacityMap, "sixteen.letters");
    EXPECT_STREQ(scene->materials[3].textureMap, std::string(15, 'x').c_str());
    EXPECT_STREQ(scene->objects[0].name, "Eleven char");
    EXPECT_STREQ(scene->objects[0].safeName, "Eleven_char");
    EXPECT_STREQ(scene->objects[0].instanceName, "sixteen letters");
    EXPECT_STREQ(scene->objects[1].name, "Twelve char");
    // Material, opacity map, texture map twice (buffer of map names and field), two objects, instance name.
    EXPECT_TRUE(LinesMatch(TakeLoadReports("E"), "E2 *\nE2 *\nE2 *\nE2 *\nE2 *\nE2 *\nE2 *\n"));
}
