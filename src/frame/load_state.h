// The state of a running load, in file->load.
#ifndef MC3DS_FRAME_LOAD_STATE_H
#define MC3DS_FRAME_LOAD_STATE_H

#include "frame.h"

// Look-up of names in an array of records that begin with their name. New records are indexed at the next
// look-up. Indexed records may move but must not be removed or renamed.
struct Mc3dsNameNode {
    uint32_t hash;
    uint32_t first; // the first record of that name
    uint32_t children[2];
};

struct Mc3dsNames {
    Mc3dsNameNode *nodes; // owned; one for each record
    uint32_t root;
    uint32_t indexed, capacity;
    uint32_t found; // the record found last
};

struct Mc3dsLoad {
    uint64_t position;       // file offset of the next byte to read
    uint64_t start;          // file offset of bytes[0]
    size_t length;           // number of buffered bytes; 0 once the stream has failed
    uint64_t end;            // file offset at which reading met the end; UINT64_MAX until then
    uint64_t budget;         // bytes that may still be read, those past the end of the file included
    bool failed;             // a requested byte could not be read
    bool isElsewhere;        // after an error the stream isn't where the last read ended
    bool spent;              // the budget was exceeded
    bool fileNameIsCut;      // the path has more than 255 characters, so fileName names another file
    uint32_t objectCapacity; // capacity of file->objects in records
    Mc3dsNames objectNames, materialNames, lostNames;
    const uint8_t *nextText, *lastText; // text stream: next byte and end, both in bytes
    uint64_t textLeft;                  // text stream: unread bytes of the size at opening
    uint8_t bytes[65536 + 1];           // one more for the NUL after a text
};

// ---- load_state.cpp

// Allocates file->load. False if out of memory.
bool Mc3dsBeginLoad(Mc3dsFile *file);

// Closes file->stream if it is open, and frees file->load.
void Mc3dsEndLoad(Mc3dsFile *file);

// Appends a copy of the record, which then owns the arrays. False, with a report, if out of memory.
bool Mc3dsAddObject(Mc3dsFile *file, const Mc3dsObject *object);

// The first object of that name, case-sensitive; null if there is none.
Mc3dsObject *Mc3dsFindObject(Mc3dsFile *file, const char *name);

// Finds or adds the name in file->lostMaterials. Returns its index, or lostMaterialCount if out of memory.
uint32_t Mc3dsLoseMaterial(Mc3dsFile *file, const char name[20], const char *fault);

// ---- file_stream.cpp: the stream, with 64-bit positions on every system

bool Mc3dsSeekStream(FILE *stream, int64_t offset, int origin); // as fseek; true on success

// fopen for reading. Null with errno. A pipe is refused, without waiting for its writer.
FILE *Mc3dsOpenToRead(const char *path, const char *mode);

struct Mc3dsPiece {
    size_t length; // bytes read
    bool isEnd;    // the file ends after them
    int error;     // errno, if not even the first byte can be read
};

// Reads up to wanted bytes of file->stream at offset; goesOn: the last read ended there. Bytes are read
// ahead, so after an error fewer are read: only the first byte's error counts.
Mc3dsPiece Mc3dsReadPiece(Mc3dsFile *file, void *bytes, size_t wanted, uint64_t offset, bool goesOn);

// Turns off the stream's buffer, as the load has its own, and rewinds. Returns the file size in bytes;
// negative if the stream can't seek.
int64_t Mc3dsStartStream(FILE *stream);

void Mc3dsCloseStream(Mc3dsFile *file);

// ---- names.cpp

// The index of the first of count records, of size bytes each, with that name; count if there is none.
uint32_t Mc3dsFindName(Mc3dsNames *names, const void *records, size_t size, uint32_t count, const char *name);
void Mc3dsFreeNames(Mc3dsNames *names);

#endif
