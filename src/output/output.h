// Writes a scene as statements for one of three targets: script, C source, or library calls.
#ifndef MC3DS_OUTPUT_OUTPUT_H
#define MC3DS_OUTPUT_OUTPUT_H

#include <cstring>

#include "../frame/frame.h"

struct McClump;

// An index of children, built when an output begins. Both arrays hold object indices, with objectCount at the
// end of a list. Null if out of memory.
struct Mc3dsHierarchy {
    uint32_t *firstChild;  // owned; indexed by node number
    uint32_t *nextSibling; // owned; indexed by object: the next one with the same parent
};

// An open level of a tree walk.
struct Mc3dsLevel {
    uint32_t index;         // the object of this level
    uint32_t nextChild;     // its next child to enter; objectCount: none is left
    Mc3dsTransform inverse; // of its world transform; children are placed relative to it
};

// A walk through an object and its descendants, children in the order of objects. It enters each object once,
// and leaves it once after its descendants. With MC3DS_FLAT objects have no descendants.
struct Mc3dsTreeWalk {
    uint32_t index;                      // the object being entered or left
    bool leaving;                        // the object is being left
    const Mc3dsTransform *parentInverse; // for the entered object; valid until the next step
    Mc3dsTransform inverse;              // filled by the caller for each entered object
    // On the heap: a hierarchy may be as deep as its number of objects.
    Mc3dsLevel *levels; // owned
    size_t levelCount, levelCapacity;
    bool begun;
};

// Text goes to the stream in blocks of this size. The slack after a block has room for one line, or one piece
// of a longer text.
constexpr size_t Mc3dsTextBlock = 65536;
constexpr size_t Mc3dsTextSlack = 4096;

// The state of one call of Mc3dsOutput.
struct Mc3dsWriter {
    FILE *stream;          // the text file being written; unused in a direct build
    int32_t indent;        // nesting level of the statements
    int32_t blankLineDone; // 1 if the last line written is the blank separator line
    float scale;           // file units to target units
    float centre[3];       // shift in file co-ordinates, unscaled
    Mc3dsOptions *options; // owned by the host
    McClump *clump;        // direct build: the clump that ended last
    bool clumpEnded;       // a ClumpEnd was written
    bool streamFailed;     // a write on stream has failed
    bool hierarchyFailed;  // lack of memory for a walk's levels was reported
    Mc3dsHierarchy hierarchy;
    size_t textLength; // bytes in text not yet written to stream
    char text[Mc3dsTextBlock + Mc3dsTextSlack];
};

// A text of the options; null counts as empty.
inline const char *Mc3dsOptionText(const char *text)
{
    return text ? text : "";
}

// The tag of an object's clump. Tag 1 is the clump around the scene.
inline int32_t Mc3dsObjectTag(uint32_t index)
{
    return static_cast<int32_t>(index + 2);
}

// ---- driver.cpp: Mc3dsOutput

// ---- placement.cpp: where things are in the target

// The bounds of all vertices as the file has them, before any placement. Without a vertex low is above high.
void Mc3dsFindBounds(const Mc3dsFile *file, float low[3], float high[3]);

// Fills scale and centre of the writer, and writes scale and size back to its options.
void Mc3dsComputeScale(const Mc3dsFile *file, Mc3dsWriter *writer);

// Maps the file's z axis to the target's y axis and its y axis to the negative z axis, and multiplies lengths
// by scale. For a scale of 0 the inverse is not divided by the determinant.
void Mc3dsMakeAxes(float scale, Mc3dsTransform *axes, Mc3dsTransform *axesInverse);

// The world transform of one object: out = pre x (key x centre) x post.
void Mc3dsTransformFrame(const Mc3dsTransform *key, Mc3dsTransform *out, const Mc3dsWriter *writer,
                         const Mc3dsTransform *post, const Mc3dsTransform *pre);

// ---- text_file.cpp: one text file of an output

// Reports "Writing File <%s>" and opens the writer's stream. False, with a report, if that fails.
bool Mc3dsOpenText(Mc3dsWriter *writer, const char *path);
void Mc3dsFlushText(Mc3dsWriter *writer);
void Mc3dsCloseText(Mc3dsWriter *writer);
void Mc3dsWriteText(Mc3dsWriter *writer, const char *text, size_t length);
void Mc3dsWriteBlanks(Mc3dsWriter *writer, size_t count);

// Makes room for Mc3dsTextSlack bytes at the end of the writer's text.
inline char *Mc3dsReserveText(Mc3dsWriter *writer)
{
    if (writer->textLength >= Mc3dsTextBlock)
        Mc3dsFlushText(writer);
    return writer->text + writer->textLength;
}

// Two blanks per level.
inline void Mc3dsIndentText(Mc3dsWriter *writer)
{
    const size_t length = writer->indent > 0 ? 2 * static_cast<size_t>(writer->indent) : 0;
    constexpr size_t usual = 32; // a memset of constant length costs next to nothing
    if (length > usual) {
        Mc3dsWriteBlanks(writer, length);
        return;
    }
    std::memset(Mc3dsReserveText(writer), ' ', usual);
    writer->textLength += length;
}

// ---- hierarchy.cpp

// Only node numbers below this can have children: parentNode is compared as a signed number.
uint32_t Mc3dsParentNumbers(const Mc3dsFile *file);

// Allocates both arrays, or neither if out of memory. Freed by Mc3dsFreeHierarchy.
void Mc3dsBuildHierarchy(const Mc3dsFile *file, Mc3dsHierarchy *hierarchy);
void Mc3dsFreeHierarchy(Mc3dsHierarchy *hierarchy);

// Begins a walk at the object. End it with Mc3dsTreeWalkEnd; parentInverse must live until then.
void Mc3dsTreeWalkBegin(Mc3dsTreeWalk *walk, uint32_t index, const Mc3dsTransform *parentInverse);

// Goes to the next object to enter or leave; false once the first object is left. If memory for a level is
// lacking, the object's descendants are skipped, with one report per output.
bool Mc3dsTreeWalkNext(Mc3dsTreeWalk *walk, const Mc3dsFile *file, Mc3dsWriter *writer);
void Mc3dsTreeWalkEnd(Mc3dsTreeWalk *walk);

// ---- header_file.cpp

void Mc3dsWriteHeader(const Mc3dsFile *file, Mc3dsWriter *writer);

// ---- statements.cpp: every statement for the three targets

void Mc3dsEmitSeparator(Mc3dsWriter *writer);
void Mc3dsEmitComment(Mc3dsWriter *writer, const char *text);

void Mc3dsEmitModelBegin(Mc3dsWriter *writer);
void Mc3dsEmitModelEnd(Mc3dsWriter *writer);
void Mc3dsEmitClumpEnd(Mc3dsWriter *writer);
void Mc3dsEmitTransformBegin(Mc3dsWriter *writer);
void Mc3dsEmitTransform(Mc3dsWriter *writer, const Mc3dsTransform *transform);
void Mc3dsEmitTransformEnd(Mc3dsWriter *writer);
void Mc3dsEmitProtoBegin(Mc3dsWriter *writer, const char *name);
void Mc3dsEmitProtoEnd(Mc3dsWriter *writer);
void Mc3dsEmitProtoInstance(Mc3dsWriter *writer, const char *name);
void Mc3dsEmitVertex(Mc3dsWriter *writer, const float position[3]);
void Mc3dsEmitVertexExt(Mc3dsWriter *writer, const float position[3], float u, float v);
void Mc3dsEmitTriangleNumbers(Mc3dsWriter *writer, int32_t a, int32_t b, int32_t c);
void Mc3dsEmitSurfaceCoefficients(Mc3dsWriter *writer, float ambient, float diffuse, float specular);
void Mc3dsEmitColor(Mc3dsWriter *writer, const float colour[3]);
void Mc3dsEmitOpacity(Mc3dsWriter *writer, float opacity);
void Mc3dsEmitGeometrySampling(Mc3dsWriter *writer, bool wireframe);
void Mc3dsEmitLightSampling(Mc3dsWriter *writer, bool facet);
void Mc3dsEmitTextureModes(Mc3dsWriter *writer);
void Mc3dsEmitTextureExt(Mc3dsWriter *writer, const char *name, const char *mask);
void Mc3dsEmitTexture(Mc3dsWriter *writer, const char *name);
void Mc3dsEmitTextureNull(Mc3dsWriter *writer);
void Mc3dsEmitTextureNullNamed(Mc3dsWriter *writer, const char *name);
void Mc3dsEmitTextureNullMasked(Mc3dsWriter *writer, const char *name, const char *mask);

// Begins a clump, up to its contents, and indents one level more.
void Mc3dsEmitClumpHead(Mc3dsWriter *writer, int32_t tag);

// The one matrix that all Transform statements use. False if the library can't create it.
bool Mc3dsEmitMatrixCreation(Mc3dsWriter *writer);
void Mc3dsEmitMatrixDestruction(Mc3dsWriter *writer);

// The texts around the statements: the fourth banner line, the head and tail of the C function, the lines of
// the header file and of the animation file.
void Mc3dsEmitBannerOrigin(Mc3dsWriter *writer, const char *fileName);
void Mc3dsEmitSourceHead(Mc3dsWriter *writer);
void Mc3dsEmitSourceTail(Mc3dsWriter *writer);
void Mc3dsWriteHeaderTop(Mc3dsWriter *writer, const char *fileName);
void Mc3dsWriteHeaderTag(Mc3dsWriter *writer, const char *name, int32_t tag);
void Mc3dsWriteFrameLine(Mc3dsWriter *writer, int32_t frame);
void Mc3dsWriteFrameTransform(Mc3dsWriter *writer, int32_t number, const Mc3dsTransform *transform);

// ---- surface.cpp

// A map's name for the output; the caller frees it. Null, with a report, if out of memory.
char *Mc3dsMakeMapName(const Mc3dsOptions *options, const char field[16]);
void Mc3dsEmitSurface(Mc3dsWriter *writer, const Mc3dsMaterial *material);

// Whether the object has all vertices of the face. A face of a damaged file that lacks one is not written.
inline bool Mc3dsHasVertices(const Mc3dsObject *object, const Mc3dsFace *face)
{
    const auto limit = static_cast<uint32_t>(object->vertexCount);
    return face->a < limit && face->b < limit && face->c < limit;
}

// ---- geometry.cpp. vertexBase: number of vertices already in the clump.

void Mc3dsEmitGeometry(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsObject *object,
                       const Mc3dsTransform *transform, int32_t vertexBase);

// ---- tree.cpp. Returns vertexBase after the object and its descendants.

int32_t Mc3dsEmitObject(const Mc3dsFile *file, Mc3dsWriter *writer, uint32_t index,
                        const Mc3dsTransform *axes, const Mc3dsTransform *axesInverse,
                        const Mc3dsTransform *parentInverse, int32_t vertexBase);

// ---- scene_document.cpp

void Mc3dsEmitScene(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                    const Mc3dsTransform *axesInverse);
void Mc3dsEmitBanner(const Mc3dsFile *file, Mc3dsWriter *writer);

// ---- object_document.cpp: MC3DS_PER_OBJECT

void Mc3dsEmitObjectDocument(const Mc3dsFile *file, Mc3dsWriter *writer, const char *path,
                             const Mc3dsObject *object, const Mc3dsTransform *axes, uint32_t index);

// ---- object_path.cpp

// The path of an object's file: outputFile without its last four characters, but at most six, then the
// object's index and ".mcx". An outputFile of fewer than four characters has no extension and is used whole.
void Mc3dsMakeObjectPath(char path[256], const char *outputFile, uint32_t index);

#endif
