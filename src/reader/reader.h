// The 3D Studio file reader: primitives, the walk of chunks, and one reader for each section.
#ifndef MC3DS_READER_READER_H
#define MC3DS_READER_READER_H

#include "stream.h"

// A chunk being walked. Positions are bytes from the start of the file.
struct Mc3dsChunk {
    uint32_t start; // first byte of the header
    uint32_t end;   // start + size, first byte behind the chunk; never wraps, 2^32 - 1 at most
    uint32_t size;  // the length of the header, the 6 bytes of the header included
    uint16_t tag;
};

// ---- stream.cpp: the primitives; seeks and the reads of numbers are in stream.h. They read from
// file->stream. At the end of the file every byte reads as 0xFF.

// Starts reading at the first byte of file->stream. False when the stream can't be seeked.
bool Mc3dsOpenStream(Mc3dsFile *file);

uint8_t Mc3dsReadByte(Mc3dsFile *file);

// Up to 129 bytes or a NUL. The text stands in the shared name buffer until the next call.
const char *Mc3dsReadString(Mc3dsFile *file);

// False, with a report, when the load may not hand out that many bytes any more: the file's counts ask for
// more than the file could hold many times over. From then on every walk ends.
bool Mc3dsMayRead(Mc3dsFile *file, uint64_t bytes);

// The same, and takes the bytes from the budget.
bool Mc3dsSpend(Mc3dsFile *file, uint64_t bytes);

// ---- walk.cpp

void Mc3dsReadChunkHeader(Mc3dsFile *file, Mc3dsChunk *chunk);

// Seeks behind child and reads the header of the next one; child starts zeroed. True: child lies within
// parent and the stream stands at its data. False: the walk is over.
bool Mc3dsNextChunk(Mc3dsFile *file, const Mc3dsChunk *parent, Mc3dsChunk *child);

// What a reader says of a child that it doesn't know.
void Mc3dsIgnoreChunk(uint16_t tag);

// ---- load.cpp holds Mc3dsLoadFile; editor.cpp: MDATA and NAMED_OBJECT

void Mc3dsReadEditorChunks(Mc3dsFile *file, const Mc3dsChunk *parent);

// ---- mesh.cpp: N_TRI_OBJECT

// True when the object was added.
bool Mc3dsReadMesh(Mc3dsFile *file, const Mc3dsChunk *chunk, const char *name);

// ---- material.cpp: MAT_ENTRY

void Mc3dsReadMaterial(Mc3dsFile *file, const Mc3dsChunk *chunk);
void Mc3dsReadColour(Mc3dsFile *file, float colour[3]); // the first sub-chunk; untouched if it is no colour

// ---- keyframer.cpp: KFDATA; node.cpp: OBJECT_NODE_TAG

void Mc3dsReadKeyframer(Mc3dsFile *file, const Mc3dsChunk *chunk);
void Mc3dsReadObjectNode(Mc3dsFile *file, const Mc3dsChunk *chunk);

// ---- pivot.cpp

// Multiplies object->pivot into meshMatrix and subtracts it from the vertices, so that nothing moves in the
// scene. Costs one byte of the budget for every eight vertices; where it doesn't allow them, nothing changes.
void Mc3dsApplyPivot(Mc3dsFile *file, Mc3dsObject *object);

#endif
