// The library frame: scene records, reports, and numbers as text. All other folders stand on this one.
#ifndef MC3DS_FRAME_FRAME_H
#define MC3DS_FRAME_FRAME_H

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "../../include/mcl3ds20.h"
#include "../math/transform.h"

// One corner of a mesh. Object space once the mesh is complete; file units.
struct Mc3dsVertex {
    float x, y, z;
    float u, v; // meaningful only where the object has hasTexture
};

struct Mc3dsFace {
    uint32_t a, b, c; // 16-bit values of the file, from 0; may lie beyond vertexCount in a damaged file
    int32_t material; // index into materials; 0 until a group of a known material claims the face
};

// MSH_MAT_GROUP: the faces that wear one material.
struct Mc3dsMaterialGroup {
    int32_t material; // index into materials; 0 where the file's name is unknown
    uint32_t count;   // never 0
    uint32_t *faces;  // owned; indices into the object's faces, all below faceCount

    uint32_t lost; // for material 0: index into lostMaterials plus 1, or 0 when there was no memory for it
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

// A mesh (N_TRI_OBJECT) or a dummy of the keyframer. An array is valid only while its count isn't 0.
struct Mc3dsObject {
    char name[16];      // as the file spells it; what look-ups compare
    char safeName[16];  // with white space replaced by '_'; what outputs print
    int32_t hasTexture; // 1 when TEX_VERTS gave u and v for every vertex
    int32_t vertexCount;
    Mc3dsVertex *vertices;
    float
        boundsMin[5]; // x, y, z, u, v as the file has them, not in object space; FLT_MAX while none was seen
    float boundsMax[5]; // likewise, -FLT_MAX while none was seen
    int32_t faceCount;
    Mc3dsFace *faces;
    uint32_t groupCount;
    Mc3dsMaterialGroup *groups;
    Mc3dsTransform meshMatrix; // MESH_MATRIX, with the pivot folded in by the keyframer
    char instanceName[16];
    int32_t nodeId;      // position among the keyframer's nodes of every kind; -1 while no node named it
    uint16_t parentNode; // nodeId of the parent, compared as a signed number; 0xFFFF: a root
    float pivot[3];      // the last PIVOT
    float nodeBoundMin[3], nodeBoundMax[3];
    uint32_t positionKeyCount;
    Mc3dsPositionKey *positionKeys;
    uint32_t rotationKeyCount;
    Mc3dsRotationKey *rotationKeys;
    uint32_t scaleKeyCount;
    Mc3dsScaleKey *scaleKeys;
    Mc3dsTransform *frames; // frameCount + 1 entries from the .vue file, or null
    uint32_t hasFrames;     // 1 when a record of the .vue file named the object

    uint32_t nodeCount; // how many nodes named the object in their header
};

// A surface. Colours are red, green, blue from 0 to 1, as are shininess and transparency.
struct Mc3dsMaterial {
    char name[20];
    float ambient[3], diffuse[3], specular[3];
    int32_t shading; // 1 Wireframe, 2 Flat, 3 Gouraud, 4 Phong, 5 Metal
    float shininess, transparency;
    char textureMap[16], opacityMap[16], reflectionMap[16]; // file names; empty: none
};

// A material that faces name and can't get.
struct Mc3dsLostMaterial {
    char name[20];
    const char
        *fault; // the report with which it was left out; null: the file had none of that name until then
};

struct Mc3dsLoad;

// A whole scene. Owns all that its pointers reach.
struct Mc3dsFile {
    Mc3dsObject *objects; // moves whenever an object is added
    uint32_t objectCount;
    uint32_t dummyCount;
    uint32_t rootCount;
    FILE *stream; // the file being read; null once the load has ended
    uint32_t frameCount;
    char fileName[256];
    Mc3dsMaterial *materials; // entry 0 is the default material
    int32_t materialCount;
    uint32_t nodeCounter;
    float ambient[3];
    uint32_t hasAnimation;
    Mc3dsLoad *load;                  // owned; null once the load has ended
    Mc3dsLostMaterial *lostMaterials; // valid only while their count isn't 0
    uint32_t lostMaterialCount;
    uint64_t fileSize; // bytes of the scene's file when it was opened
    uint64_t rootSize; // length of its first chunk as the header has it; 0 if the file has no whole header
    int readError;     // errno of the first read of the scene's file that failed; 0 if none did
    int vueError; // the same for the .vue file, or why it can't be opened; 0 if it is missing or in order
};

// The largest finite float and its negative, the start values of all bounds.
constexpr float Mc3dsLargest = 3.4028235e38f;

// ---- report.cpp: the two channels to the host. The format takes %s, %d, %x, %f and a precision for %f.

#if defined(__GNUC__)
#define MC3DS_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define MC3DS_PRINTF(text, first)
#endif

MC3DS_PRINTF(2, 3) void Mc3dsError(int32_t level, const char *format, ...);
MC3DS_PRINTF(2, 3) void Mc3dsMessage(int32_t level, const char *format, ...);

// ---- text.cpp

// Lower-cases ASCII letters in place, up to the end or the first byte above 0x7F.
void Mc3dsLowerCase(char *text);

// White space of the file formats: 0x09 to 0x0D and 0x20, whatever the locale says.
inline bool Mc3dsIsSpace(int character)
{
    // One bit for each of them; whatever else there is, no byte at all included, lies above.
    return static_cast<unsigned>(character) <= 0x20 && (uint64_t{0x100003E00} >> character & 1) != 0;
}

// Prints into buffer as C's printf does in the "C" locale, cut to size. Returns the length of what stands
// there.
MC3DS_PRINTF(3, 4) size_t Mc3dsFormatText(char *buffer, size_t size, const char *format, ...);
MC3DS_PRINTF(3, 0) size_t Mc3dsFormatTextV(char *buffer, size_t size, const char *format, va_list arguments);

// ---- scene.cpp

// As realloc for count records of that size; also null where their size is more than a size_t holds.
inline void *Mc3dsResize(void *array, uint64_t count, size_t size)
{
    return count <= SIZE_MAX / size ? std::realloc(array, static_cast<size_t>(count) * size) : nullptr;
}

// Copies text into a field of size bytes, cut where it doesn't fit. A cut is reported as a warning in which
// what is the name of the field.
void Mc3dsCopyText(char *field, size_t size, const char *text, const char *what);

void Mc3dsObjectInit(Mc3dsObject *object, const char *name);
void Mc3dsObjectFree(Mc3dsObject *object);

#endif
