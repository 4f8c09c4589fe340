// The 3D Studio file reader: primitives, the walk of chunks, and one reader for each section.
#ifndef MC3DS_READER_READER_H
#define MC3DS_READER_READER_H

#include "stream.h"

// A chunk header. Positions are byte offsets in the file.
struct Mc3dsChunk {
    uint32_t start; // first byte of the header
    uint32_t end;   // start + size, the first byte after the chunk; limited to 2^32 - 1, never wraps
    uint32_t size;  // the length in the header, which includes the header's 6 bytes
    uint16_t tag;
};

// ---- stream.cpp: reads from file->stream; seeks and number reads are in stream.h. Past the end of the file
// every byte reads as 0xFF.

// Starts reading at the first byte of file->stream. False if the stream can't seek.
bool Mc3dsOpenStream(Mc3dsFile *file);

uint8_t Mc3dsReadByte(Mc3dsFile *file);

// Reads up to a NUL, at most 129 bytes. The text is in a shared buffer and valid until the next call.
const char *Mc3dsReadString(Mc3dsFile *file);

// False, with a report, if the bytes exceed the budget of the load: counts in the file request many times
// more than it can hold. From then on every walk ends.
bool Mc3dsMayRead(Mc3dsFile *file, uint64_t bytes);

// The same, and subtracts the bytes from the budget.
bool Mc3dsSpend(Mc3dsFile *file, uint64_t bytes);

// ---- walk.cpp

void Mc3dsReadChunkHeader(Mc3dsFile *file, Mc3dsChunk *chunk);

// Seeks past child and reads the next header into it; child starts zeroed. True: child is within parent and
// the stream is at its data. False: the walk is over.
bool Mc3dsNextChunk(Mc3dsFile *file, const Mc3dsChunk *parent, Mc3dsChunk *child);

// Reports an unknown child.
// Counts something that the renderer lacks, and reports it with a text without conversions.
void Mc3dsSkipUnsupported(Mc3dsFile *file, Mc3dsUnsupported what, int32_t level, const char *text);
void Mc3dsIgnoreChunk(Mc3dsFile *file, uint16_t tag);

// ---- load.cpp: Mc3dsLoadFile; editor.cpp: MDATA and NAMED_OBJECT

void Mc3dsReadEditorChunks(Mc3dsFile *file, const Mc3dsChunk *parent);

// ---- mesh.cpp: N_TRI_OBJECT

// True if the object was added.
bool Mc3dsReadMesh(Mc3dsFile *file, const Mc3dsChunk *chunk, const char *name);

// ---- material.cpp: MAT_ENTRY

void Mc3dsReadMaterial(Mc3dsFile *file, const Mc3dsChunk *chunk);
void Mc3dsReadColour(Mc3dsFile *file, float colour[3]); // the first sub-chunk; unchanged if that is no colour

// ---- keyframer.cpp: KFDATA; node.cpp: OBJECT_NODE_TAG

void Mc3dsReadKeyframer(Mc3dsFile *file, const Mc3dsChunk *chunk);
void Mc3dsReadObjectNode(Mc3dsFile *file, const Mc3dsChunk *chunk);

// ---- pivot.cpp

// Multiplies object->pivot into meshMatrix and subtracts it from the vertices; in the scene nothing moves.
// Takes one byte of the budget for every eight vertices; if that exceeds the budget, nothing changes.
void Mc3dsApplyPivot(Mc3dsFile *file, Mc3dsObject *object);

#endif
