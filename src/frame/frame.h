// Scene records, reports to the host, and text formatting. All other folders depend on this one.
#ifndef MC3DS_FRAME_FRAME_H
#define MC3DS_FRAME_FRAME_H

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "../../include/mcl3ds20.h"
#include "../math/transform.h"
#include "report.h"

// A vertex of a mesh in file units; in object space once the mesh is complete.
struct Mc3dsVertex {
    float x, y, z;
    float u, v; // valid only if the object's hasTexture is 1
};

struct Mc3dsFace {
    uint32_t a, b, c; // from 0, 16 bits in the file; may be beyond vertexCount in a damaged file
    int32_t material; // index into materials; 0 unless a group of a known material has the face
};

// MSH_MAT_GROUP: the faces of one material.
struct Mc3dsMaterialGroup {
    int32_t material; // index into materials; 0 if the name is unknown
    uint32_t count;   // never 0
    uint32_t *faces;  // owned; indices into the object's faces, all below faceCount

    uint32_t lost; // for material 0: index into lostMaterials plus 1, or 0 if out of memory
};

struct Mc3dsPositionKey {
    uint32_t frame;
    float x, y, z;
};

struct Mc3dsRotationKey {
    uint32_t frame;
    float angle, x, y, z;
};

struct Mc3dsScaleKey {
    uint32_t frame;
    float x, y, z;
};

// A mesh (N_TRI_OBJECT) or a dummy of the keyframer. Arrays are valid only while their count isn't 0.
struct Mc3dsObject {
    char name[16];      // as in the file; compared by look-ups
    char safeName[16];  // with white space replaced by '_'; printed by outputs
    int32_t hasTexture; // 1 if TEX_VERTS has u and v for every vertex
    int32_t vertexCount;
    Mc3dsVertex *vertices;
    float boundsMin[5]; // x, y, z, u, v as in the file, not in object space; FLT_MAX while none was read
    float boundsMax[5]; // likewise; -FLT_MAX while none was read
    int32_t faceCount;
    Mc3dsFace *faces;
    uint32_t groupCount;
    Mc3dsMaterialGroup *groups;
    Mc3dsTransform meshMatrix; // MESH_MATRIX, multiplied by the keyframer's pivots
    char instanceName[16];
    int32_t nodeId;      // number of its keyframer node, counted over all kinds; -1 if no node names it
    uint16_t parentNode; // nodeId of the parent, compared as a signed number; 0xFFFF for a root
    float pivot[3];      // the last PIVOT
    float nodeBoundMin[3], nodeBoundMax[3];
    uint32_t positionKeyCount;
    Mc3dsPositionKey *positionKeys;
    uint32_t rotationKeyCount;
    Mc3dsRotationKey *rotationKeys;
    uint32_t scaleKeyCount;
    Mc3dsScaleKey *scaleKeys;
    Mc3dsTransform *frames; // frameCount + 1 entries from the .vue file, or null
    uint32_t hasFrames;     // 1 if a record of the .vue file names the object

    uint32_t nodeCount; // number of node headers that name the object
};

// A surface. Colours (red, green, blue), shininess and transparency are from 0 to 1.
struct Mc3dsMaterial {
    char name[20];
    float ambient[3], diffuse[3], specular[3];
    int32_t shading; // 1 Wireframe, 2 Flat, 3 Gouraud, 4 Phong, 5 Metal
    float shininess, transparency;
    char textureMap[16], opacityMap[16], reflectionMap[16]; // file names; empty: none
};

// A material that faces may name but the scene lacks.
struct Mc3dsLostMaterial {
    char name[20];
    const char *fault; // the report when it was discarded; null: not defined when faces named it
};

// A light, a camera or a hidden mesh of the file.
enum class Mc3dsSkippedKind : uint8_t { Light, Camera, HiddenMesh };
struct Mc3dsSkippedObject {
    char name[12];
    Mc3dsSkippedKind kind;
};

// What the format has and the renderer hasn't.
enum class Mc3dsUnsupported : uint8_t {
    TransparencyFalloff,
    ReflectionBlur,
    TwoSided,
    Decal,
    BumpMap,
    AutomaticReflection,
    MorphSmoothing,
    MorphTrack,
    CameraNode,
    CameraTargetNode,
    LightNode,
    LightTargetNode,
    SpotlightNode,
};
constexpr size_t Mc3dsUnsupportedCount = 13;

constexpr uint32_t Mc3dsTagCount = 0x10000;

struct Mc3dsLoad;

// A whole scene. Owns everything that its pointers refer to.
struct Mc3dsFile {
    Mc3dsObject *objects; // may move when an object is added
    uint32_t objectCount;
    uint32_t dummyCount;
    uint32_t rootCount;
    FILE *stream; // the file being read; null after the load
    uint32_t frameCount;
    char fileName[256];
    Mc3dsMaterial *materials; // entry 0 is the default material
    int32_t materialCount;
    uint32_t nodeCounter;
    float ambient[3];
    uint32_t hasAnimation;
    Mc3dsLoad *load;                  // owned; null after the load
    Mc3dsLostMaterial *lostMaterials; // valid only while their count isn't 0
    uint32_t lostMaterialCount;
    uint64_t fileSize; // bytes in the scene's file when it was opened
    uint64_t rootSize; // length of its first chunk according to the header; 0 if the header is incomplete
    int readError;     // errno of the first failed read of the scene's file; 0 if none failed
    int vueError;      // the same for the .vue file, or errno of opening it; 0 if it is missing or valid

    // What the load skipped. If memory for these lists runs out they lack entries, and nothing is reported.
    Mc3dsSkippedObject *skipped; // owned; null if there are none; in the order of the file
    uint32_t skippedCount;
    uint32_t unsupported[Mc3dsUnsupportedCount]; // how many, by Mc3dsUnsupported
    uint32_t *unknownChunks; // owned; how many, by tag, Mc3dsTagCount entries; null if there are none
};

// The largest finite float. Bounds start with it and its negative.
constexpr float Mc3dsLargest = 3.4028235e38f;

// ---- report.cpp: the two channels to the host. Formats may use %s, %d, %x, %f and a precision for %f.

#if defined(__GNUC__)
#define MC3DS_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define MC3DS_PRINTF(text, first)
#endif

MC3DS_PRINTF(3, 4) void Mc3dsError(int32_t level, Mc3dsReportKind kind, const char *format, ...);
MC3DS_PRINTF(2, 3) void Mc3dsMessage(int32_t level, const char *format, ...);
// A message of another kind than Detail.
MC3DS_PRINTF(4, 5)
void Mc3dsMessageOf(Mc3dsReportKind kind, int32_t level, uint64_t amount, const char *format, ...);

// ---- text.cpp

// Lower-cases ASCII letters in place, up to the end or the first byte above 0x7F.
void Mc3dsLowerCase(char *text);

// White space of the file formats: 0x09 to 0x0D and 0x20, in every locale.
inline bool Mc3dsIsSpace(int character)
{
    // A mask with one bit for each. All other values, the -1 for no byte included, fail a test.
    return static_cast<unsigned>(character) <= 0x20 && (uint64_t{0x100003E00} >> character & 1) != 0;
}

// Like snprintf in the "C" locale for %s, %d, %x, %f and %.Nf, but returns the length of the text after it is
// cut to size.
MC3DS_PRINTF(3, 4) size_t Mc3dsFormatText(char *buffer, size_t size, const char *format, ...);
MC3DS_PRINTF(3, 0) size_t Mc3dsFormatTextV(char *buffer, size_t size, const char *format, va_list arguments);

// ---- scene.cpp

// realloc for count records of the given size. Also null if the product exceeds a size_t.
inline void *Mc3dsResize(void *array, uint64_t count, size_t size)
{
    return count <= SIZE_MAX / size ? std::realloc(array, static_cast<size_t>(count) * size) : nullptr;
}

// Copies text into a field of size bytes. If the text is cut, a warning names the field as what.
void Mc3dsCopyText(char *field, size_t size, const char *text, const char *what);

void Mc3dsObjectInit(Mc3dsObject *object, const char *name);
void Mc3dsObjectFree(Mc3dsObject *object);

#endif
