#include "seeds.h"

#include <algorithm>
#include <limits>

#include "chunks.h"
#include "reader/chunks.h"

using namespace chunks;

static Bytes Triangle(const Bytes &name, const Bytes &more = "")
{
    return NamedMesh(name, {Points({0, 0, 0, 2, 0, 0, 0, 3, 1}), Faces({0, 1, 2}), more});
}

static Bytes Red(const Bytes &name, const Bytes &maps = "")
{
    const Bytes white = Chunk(COLOR_F, {F32s({1, 1, 1})});
    return Material(name, {Finish(Colour24(20, 0, 0), Colour24(255, 0, 0), white, 3), maps});
}

// Chunks that the reader skips, with a report at most.
static Bytes Skipped(const std::vector<uint16_t> &tags)
{
    Bytes bytes;
    for (const uint16_t tag : tags)
        bytes += Chunk(tag, {U32(1)});
    return bytes;
}

// Deeper than one growth step of the memory of a tree walk.
static Bytes Deep()
{
    Pieces nodes = {Kfhdr(1)};
    for (uint16_t i = 0; i < 20; ++i)
        nodes.push_back(ObjectNode("$$$DUMMY", i == 0 ? noParent : static_cast<uint16_t>(i - 1)));
    return Scene({}, nodes);
}

static const float infinity = std::numeric_limits<float>::infinity();
static const float nan = std::numeric_limits<float>::quiet_NaN();

const std::vector<Seed> &Seeds()
{
    static const Bytes grey = Colour24(90, 90, 90), longName(140, 'x'),
                       tooLong = "A MATERIAL OF TOO LONG A NAME";
    static const std::vector<Seed> seeds = {
        {"Settings",
         Scene({Chunk(MESH_VERSION, {U32(3)}), Chunk(MESH_VERSION, {U32(4)}),
                Chunk(MESH_VERSION, {U32(0xFFFFFFFF)}), Chunk(MASTER_SCALE, {F32(2.5f)}),
                Chunk(AMBIENT_LIGHT, {Chunk(COLOR_F, {F32s({1, 0.5f, 0})}), grey}),
                Chunk(AMBIENT_LIGHT, {Colour24(255, 255, 0)}), Chunk(AMBIENT_LIGHT, {Percent(3)}),
                Skipped({BIT_MAP,         USE_BIT_MAP,
                         SOLID_BGND,      USE_SOLID_BGND,
                         V_GRADIENT,      USE_V_GRADIENT,
                         LO_SHADOW_BIAS,  HI_SHADOW_BIAS,
                         SHADOW_MAP_SIZE, SHADOW_SAMPLES,
                         SHADOW_RANGE,    SHADOW_FILTER,
                         O_CONSTS,        FOG,
                         USE_FOG,         FOG_BGND,
                         DISTANCE_CUE,    USE_DISTANCE_CUE,
                         DCUE_BGND,       DEFAULT_VIEW,
                         0x7777})}),
         ""},
        {"BareEditor", Chunk(MDATA, {Triangle("BOX"), Red("RED"), Triangle("CONE")}), ""},
        {"Materials",
         Scene({Red("RED", Map(MAT_TEXMAP, "A.TGA") + Map(MAT_TEXMAP, "B.TGA") +
                               Map(MAT_OPACMAP, "D.X\\MASK") + Map(MAT_REFLMAP, "SKY.GIF")),
                Material("ALL",
                         {Finish(grey, Chunk(COLOR_F, {F32s({0, 0.5f, 1})}), grey, 0, 100, 50),
                          Chunk(MAT_SHININESS, {Chunk(FLOAT_PERCENTAGE, {F32(0.5f)})}),
                          Chunk(MAT_TEXMAP, {Chunk(FLOAT_PERCENTAGE, {F32(1)})}), Chunk(MAT_REFLMAP, {grey}),
                          Skipped({MAT_XPFALL, MAT_REFBLUR, MAT_TWO_SIDE, MAT_DECAL, MAT_ADDITIVE,
                                   MAT_BUMPMAP, MAT_ACUBIC, MAT_SXP_TEXT_DATA, 0xA041})}),
                Material("", {Finish(grey, grey, grey, 4)}),
                Material("BAD", {Chunk(MAT_DIFFUSE, {Percent(1)})}),
                Triangle("ROOF",
                         Faces({0, 1, 2, 2, 1, 0}, {MaterialGroup("RED", {1}), MaterialGroup("NO", {0})})),
                Triangle("WALL", Faces({0, 1, 2, 2, 1, 0, 1, 2, 0},
                                       {Chunk(0x4150, {U32(1)}), MaterialGroup("ALL", {0, 2}),
                                        MaterialGroup("RED", {0}), MaterialGroup("ALL", {})}))}),
         ""},
        {"Textures",
         Scene({Red("RED", Map(MAT_TEXMAP, "WOOD.TGA")),
                NamedMesh("NEAR", {Points({1, 2, 3, 4, 5, 6, 7, 8, 10}), TexVerts({-3, 0, 1, 0.5f, 40, 2}),
                                   Chunk(POINT_FLAG_ARRAY), Chunk(MSH_MAT_GROUP),
                                   MeshMatrix({0, 1, 0, -1, 0, 0, 0, 0, 2, 5, 6, 7}),
                                   Faces({0, 1, 2}, {MaterialGroup("RED", {0})})}),
                NamedMesh("FAR", {Points({infinity, nan, 0, 1e38f, -1e38f, 0, 0, 0, 0}),
                                  TexVerts({3e9f, 700, infinity, 7, -1e38f, 33}), Faces({0, 1, 2, 0, 1, 9}),
                                  MeshMatrix({1, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0})})}),
         ""},
        {"Hidden",
         Scene({NamedObject("A", {Chunk(OBJ_HIDDEN), Mesh({Points({0, 0, 0})})}),
                NamedObject("B", {Mesh({Points({1, 2, 3}), Faces({0, 0, 0})}), Chunk(OBJ_HIDDEN),
                                  Chunk(OBJ_HIDDEN), Chunk(0x4012)}),
                NamedMesh("NONE", {}), NamedObject("SUN", {Chunk(N_DIRECT_LIGHT, {F32s({1, 2, 3})})}),
                NamedObject("EYE", {Chunk(N_CAMERA, {F32s({1, 2, 3})}), Chunk(OBJ_HIDDEN)})}),
         ""},
        {"Replacements",
         Scene({NamedMesh("BOX",
                          {Points({0, 0, 0, 1, 0, 0}), TexVerts({0, 0, 1, 1}),
                           Faces({0, 1, 0}, {MaterialGroup("RED", {0})}), Points({5, 5, 5, 6, 5, 5, 5, 6, 5}),
                           TexVerts({0, 0}), Faces({0, 1, 2}, {MaterialGroup("RED", {0, 7})})}),
                Triangle("LID")},
               {ObjectNode("BOX", noParent, {Chunk(NODE_HDR, {Text("LID"), U32(0), U16(0)})}),
                ObjectNode("BOX", 0,
                           {Join(Pieces(12, Pivot(1, 1, 1))), Track(POS_TRACK_TAG, {{0, {1, 2, 3}}}),
                            Track(POS_TRACK_TAG, {{0, {1, 2, 3}}, {9, {1, 2, 3}}})}),
                Chunk(OBJECT_NODE_TAG, {Pivot(1, 2, 3), Track(SCL_TRACK_TAG, {{0, {1, 1, 1}}})}),
                ObjectNode("NOBODY", 1, {Track(ROT_TRACK_TAG, {{0, {1, 0, 0, 1}}})})}),
         ""},
        // The last node is its own parent; no root reaches it.
        {"Animated",
         Scene(
             {Triangle("BODY"), Triangle("LEFT ARM"), Triangle("LOST")},
             {Kfhdr(3), Chunk(KFSEG, {U32(0xFFFFFFFF), U32(3)}), Chunk(KFCURTIME, {U32(1)}),
              Skipped({0xB001, CAMERA_NODE_TAG, TARGET_NODE_TAG, LIGHT_NODE_TAG, L_TARGET_NODE_TAG,
                       SPOTLIGHT_NODE_TAG}),
              ObjectNode("BODY", noParent,
                         {Pivot(1, 0, 0), Chunk(INSTANCE_NAME, {Text("Trunk")}),
                          Chunk(BOUNDBOX, {F32s({0, 0, 0, 2, 3, 1})}),
                          Skipped({MORPH_SMOOTH, MORPH_TRACK_TAG, 0xB030}),
                          Track(POS_TRACK_TAG, {{0, {1, 2, 3}}, {3, {4, 5, 6}, 0x01, {1}}}),
                          Track(ROT_TRACK_TAG, {{0, {0, 0, 0, 1}}, {3, {0, 0, 0, 1}, 0x1F, {1, 2, 3, 4, 5}}}),
                          Track(SCL_TRACK_TAG, {{0, {1, 1, 1}}})}),
              ObjectNode("LEFT ARM", 5, {Pivot(0, 2, 0)}), ObjectNode("$$$DUMMY", 6),
              ObjectNode("$$$Dummy", noParent), ObjectNode("LOST", 9)}),
         "# made by hand\nframe 0\ntransform \"BODY\" 1 0 0 0 1 0 0 0 1 5 0 0\n"
         "transform \"LEFT ARM\" 1 0 0 # comment\n0 1 x= 0 0 0 1e0 5 -.5 0x1p3abc\nlight \"SUN\" 1 2 3\n"
         "FRAME 2 Transform Dummy0 0 1 0\n-1 0 0 0 0 1 inf nan 0\n"
         "transform \"LE\\\"FT\" 1 0 0 0 1 0 0 0 1 0 0 0\nframe 4 transform BODY 1 0 0 0 1 0 0 0 1 0 0 0\n"
         "frame 3 transform LOST 1 0 0 0 1 0 0 0 1 2 2 2\n"},
        {"Deep", Deep(), "frame 0 transform Dummy0 1 0 0 0 1 0 0 0 1 0 0 1 transform Dummy9 1 0 0"},
        {"LongNames",
         Scene({Red(tooLong, Map(MAT_TEXMAP, "TEXTURES\\A\\LONG.NAME.TGA")),
                Triangle("TWELVE+TAILS", Faces({0, 1, 2}, {MaterialGroup(tooLong, {0})})), Triangle(longName),
                Red(longName, Map(MAT_OPACMAP, longName))},
               {Kfhdr(2), ObjectNode("TWELVE+TAILS", noParent, {Chunk(INSTANCE_NAME, {Text(longName)})}),
                ObjectNode(longName, 0)}),
         "frame 1\ntransform TWELVE+TAIL 1 0 0 0 1 0 0 0 1 0 0 0\nframe -\n"},
        {"KeyframerFirst",
         Chunk(M3DMAGIC, {Chunk(0x0002, {U32(3)}), Chunk(KFDATA, {Kfhdr(1), ObjectNode("BOX", noParent)}),
                          Chunk(MDATA, {Triangle("BOX")})}),
         "frame 0 transform BOX 1 0 0 0 1 0 0 0 1 0 0"},
        {"NoObjects", Scene({}, {Kfhdr(5)}), "frame 5 transform BOX 1 0 0 0 1 0 0 0 1 0 0 0"},
    };
    return seeds;
}

const Seed &FindSeed(const std::string &name)
{
    return *std::find_if(Seeds().begin(), Seeds().end(), [&](const Seed &seed) { return seed.name == name; });
}

uint32_t NumberAt(const std::string &bytes, size_t at, int width)
{
    uint32_t number = 0;
    for (int i = width; i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[at + static_cast<size_t>(i)]);
    return number;
}

void PutNumberAt(std::string &bytes, size_t at, int width, uint32_t number)
{
    bytes.replace(at, static_cast<size_t>(width), Number(number, width));
}

// Tags whose children begin right after the header.
static constexpr uint16_t parents[] = {M3DMAGIC,     MDATA,         KFDATA,           AMBIENT_LIGHT,
                                       N_TRI_OBJECT, MAT_ENTRY,     MAT_AMBIENT,      MAT_DIFFUSE,
                                       MAT_SPECULAR, MAT_SHININESS, MAT_TRANSPARENCY, MAT_TEXMAP,
                                       MAT_OPACMAP,  MAT_REFLMAP,   OBJECT_NODE_TAG};

// Sets the count of a chunk. Returns where its children begin, or its end if it has none.
static size_t FindChildren(const std::string &scene, ChunkPlace *place)
{
    const size_t data = place->start + 6, end = place->start + place->size;
    const auto tag = static_cast<uint16_t>(NumberAt(scene, place->start, 2));
    const auto behindText = [&](size_t at) { return std::min(scene.find('\0', at), end) + 1; };
    size_t at = data;
    if (std::find(std::begin(parents), std::end(parents), tag) != std::end(parents))
        return data;
    if (tag == NAMED_OBJECT)
        return behindText(data);
    if (tag == MSH_MAT_GROUP)
        at = behindText(data);
    else if (tag == KFHDR)
        at = behindText(data + 2);
    else if (tag == POS_TRACK_TAG || tag == ROT_TRACK_TAG || tag == SCL_TRACK_TAG)
        at = data + 10;
    else if (tag != POINT_ARRAY && tag != TEX_VERTS && tag != FACE_ARRAY)
        return end;
    const int width = tag >= KFDATA ? 4 : 2;
    if (at + static_cast<size_t>(width) > end)
        return end;
    place->countAt = at;
    place->countWidth = width;
    return tag == FACE_ARRAY ? at + 2 + 8 * NumberAt(scene, at, 2) : end;
}

std::vector<ChunkPlace> FindChunks(const std::string &scene)
{
    std::vector<ChunkPlace> places;
    const auto add = [&](size_t start, size_t end, size_t parent) {
        const size_t size = start + 6 <= end ? NumberAt(scene, start + 2, 4) : 0;
        if (size >= 6)
            places.push_back({start, std::min(size, end - start), parent, 0, 0});
        return size >= 6;
    };
    add(0, scene.size(), 0);
    for (size_t i = 0; i < places.size(); ++i) {
        const size_t end = places[i].start + places[i].size;
        for (size_t at = FindChildren(scene, &places[i]); at < end && add(at, end, i);)
            at += places.back().size;
    }
    return places;
}
