// Tags of the 3D Studio format, grouped by parent, with the chunk's contents after its header. Numbers are
// little-endian; text is NUL-terminated; "children" are chunks.
#ifndef MC3DS_READER_CHUNKS_H
#define MC3DS_READER_CHUNKS_H

#include <cstdint>

constexpr uint32_t Mc3dsChunkHeaderSize = 6; // u16 tag, u32 length including these 6 bytes

enum Mc3dsTag : uint16_t {
    // The root
    M3DMAGIC = 0x4D4D, // children

    // Children of M3DMAGIC
    MDATA = 0x3D3D,  // children; also the root of a bare editor section
    KFDATA = 0xB000, // children

    // Colours and percentages: always the first child of their parent
    COLOR_F = 0x0010,          // f32 red, green, blue
    COLOR_24 = 0x0011,         // u8 red, green, blue
    INT_PERCENTAGE = 0x0030,   // u16; 100 is 100 %
    FLOAT_PERCENTAGE = 0x0031, // f32; 1.0 is 100 %

    // Children of MDATA
    MASTER_SCALE = 0x0100, // f32
    BIT_MAP = 0x1100,      // skipped, like all up to DEFAULT_VIEW except AMBIENT_LIGHT
    USE_BIT_MAP = 0x1101,
    SOLID_BGND = 0x1200,
    USE_SOLID_BGND = 0x1201,
    V_GRADIENT = 0x1300,
    USE_V_GRADIENT = 0x1301,
    LO_SHADOW_BIAS = 0x1400,
    HI_SHADOW_BIAS = 0x1410,
    SHADOW_MAP_SIZE = 0x1420,
    SHADOW_SAMPLES = 0x1430,
    SHADOW_RANGE = 0x1440,
    SHADOW_FILTER = 0x1450,
    O_CONSTS = 0x1500,
    AMBIENT_LIGHT = 0x2100, // children: a colour
    FOG = 0x2200,
    USE_FOG = 0x2201,
    FOG_BGND = 0x2210,
    DISTANCE_CUE = 0x2300,
    USE_DISTANCE_CUE = 0x2301,
    DCUE_BGND = 0x2310,
    DEFAULT_VIEW = 0x3000,
    MESH_VERSION = 0x3D3E, // u32
    NAMED_OBJECT = 0x4000, // name, then children
    MAT_ENTRY = 0xAFFF,    // children

    // Children of NAMED_OBJECT
    OBJ_HIDDEN = 0x4010,     // empty
    N_TRI_OBJECT = 0x4100,   // children
    N_DIRECT_LIGHT = 0x4600, // skipped
    N_CAMERA = 0x4700,       // skipped

    // Children of N_TRI_OBJECT
    POINT_ARRAY = 0x4110,      // u16 count, then f32 x, y, z each
    POINT_FLAG_ARRAY = 0x4111, // skipped
    FACE_ARRAY = 0x4120,       // u16 count, then u16 a, b, c, flags each, then children
    TEX_VERTS = 0x4140,        // u16 count, then f32 u, v each
    MESH_MATRIX = 0x4160,      // twelve f32: x axis, y axis, z axis, position

    // Children of FACE_ARRAY
    MSH_MAT_GROUP = 0x4130, // material name, u16 count, then a u16 face number each

    // Children of MAT_ENTRY
    MAT_NAME = 0xA000,         // name
    MAT_AMBIENT = 0xA010,      // children: a colour
    MAT_DIFFUSE = 0xA020,      // children: a colour
    MAT_SPECULAR = 0xA030,     // children: a colour
    MAT_SHININESS = 0xA040,    // children: a percentage
    MAT_TRANSPARENCY = 0xA050, // children: a percentage
    MAT_XPFALL = 0xA052, // reported, like MAT_REFBLUR, MAT_TWO_SIDE, MAT_DECAL, MAT_BUMPMAP and MAT_ACUBIC
    MAT_REFBLUR = 0xA053,
    MAT_TWO_SIDE = 0xA081,
    MAT_DECAL = 0xA082,
    MAT_ADDITIVE = 0xA083, // skipped, like all tags below without a comment
    MAT_SHADING = 0xA100,  // u16: 0 Wireframe, 1 Flat, 2 Gouraud, 3 Phong, 4 Metal
    MAT_TEXMAP = 0xA200,   // children: a percentage, then MAT_MAPNAME among others
    MAT_OPACMAP = 0xA210,  // as MAT_TEXMAP
    MAT_REFLMAP = 0xA220,  // as MAT_TEXMAP
    MAT_BUMPMAP = 0xA230,
    MAT_USE_XPFALL = 0xA240,
    MAT_USE_REFBLUR = 0xA250,
    MAT_ACUBIC = 0xA310,
    MAT_SXP_TEXT_DATA = 0xA320,
    MAT_SXP_OPAC_DATA = 0xA322,
    MAT_SXP_UNNAMED_DATA = 0xA323,

    // Children of the map chunks
    MAT_MAPNAME = 0xA300, // file name

    // Children of KFDATA. Each chunk from 0xB002 to 0xB007 takes a node number.
    OBJECT_NODE_TAG = 0xB002, // children
    CAMERA_NODE_TAG = 0xB003, // skipped, like the next four
    TARGET_NODE_TAG = 0xB004,
    LIGHT_NODE_TAG = 0xB005,
    L_TARGET_NODE_TAG = 0xB006,
    SPOTLIGHT_NODE_TAG = 0xB007,
    KFSEG = 0xB008,     // i32 first, i32 last
    KFCURTIME = 0xB009, // i32 frame
    KFHDR = 0xB00A,     // u16 version, text, u32 frame count

    // Children of OBJECT_NODE_TAG
    NODE_HDR = 0xB010,        // object name, u16 flags twice, u16 node number of the parent
    INSTANCE_NAME = 0xB011,   // name
    PIVOT = 0xB013,           // f32 x, y, z
    BOUNDBOX = 0xB014,        // f32 minimum x, y, z, maximum x, y, z
    MORPH_SMOOTH = 0xB015,    // skipped
    POS_TRACK_TAG = 0xB020,   // u16 flags, u32 twice, u32 count, then keys: u32 frame, u16 flags, a u32 for
                              // each of the low five flags that is set, then f32 x, y, z
    ROT_TRACK_TAG = 0xB021,   // likewise with f32 angle, x, y, z
    SCL_TRACK_TAG = 0xB022,   // likewise with f32 x, y, z
    MORPH_TRACK_TAG = 0xB026, // skipped
};

#endif
