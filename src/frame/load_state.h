// What a load keeps while it runs, reached through file->load.
#ifndef MC3DS_FRAME_LOAD_STATE_H
#define MC3DS_FRAME_LOAD_STATE_H

#include "frame.h"

// Look-up of names among the records of an array, each of which begins with its name. New records are indexed
// at the next look-up. Indexed records may move but must not be removed or renamed.
struct Mc3dsNameNode {
    uint32_t hash;
    uint32_t first; // the first record of that name
    uint32_t children[2];
};

struct Mc3dsNames {
    Mc3dsNameNode *nodes; // owned; one for each record
    uint32_t root;
    uint32_t indexed, capacity;
    uint32_t found; // the record that was found last
};

struct Mc3dsLoad {
    uint64_t position;  // in the file, of the next byte to be read
    uint64_t start;     // in the file, of the first of bytes
    size_t length;      // of bytes that are buffered; 0 once the stream has failed
    uint64_t end;       // where the file was found to end; UINT64_MAX until then
    uint64_t budget;    // bytes that the load may still hand out, those past the end of the file included
    bool failed;        // a byte was needed that the stream could not give
    bool spent;         // the budget was exceeded
    bool fileNameIsCut; // the path had more than 255 characters: what fileName holds names another file
    uint32_t objectCapacity; // records that file->objects has room for
    Mc3dsNames objectNames, materialNames, lostNames;
    const uint8_t *nextText, *lastText; // of a text stream, in bytes: the next one, and the end
    uint64_t textLeft;        // bytes of the text file, of its size when it was opened, still to be read
    uint8_t bytes[65536 + 1]; // one more for the NUL at the end of a text
};

// ---- load_state.cpp

// Makes file->load. False when there is no memory.
bool Mc3dsBeginLoad(Mc3dsFile *file);

// Closes file->stream if it is open, and frees file->load.
void Mc3dsEndLoad(Mc3dsFile *file);

// Appends a copy of the record, which hands over its arrays. False, with its report, when there is no memory.
bool Mc3dsAddObject(Mc3dsFile *file, const Mc3dsObject *object);

// The first object of that name, case counting; null if there is none.
Mc3dsObject *Mc3dsFindObject(Mc3dsFile *file, const char *name);

// The index of that name among file->lostMaterials, to which it is added if need be; lostMaterialCount when
// there is no memory for it.
uint32_t Mc3dsLoseMaterial(Mc3dsFile *file, const char name[20], const char *fault);

// ---- file_stream.cpp: the stream itself, with positions of 64 bits on every system

bool Mc3dsSeekStream(FILE *stream, int64_t offset, int origin); // as fseek; true when it worked

// The size of the file in bytes; the stream stands at its start then. Negative when it can't be seeked.
int64_t Mc3dsMeasureStream(FILE *stream);

void Mc3dsCloseStream(Mc3dsFile *file);

// ---- names.cpp

// The index of the first of count records of that size whose name it is; count if there is none.
uint32_t Mc3dsFindName(Mc3dsNames *names, const void *records, size_t size, uint32_t count, const char *name);
void Mc3dsFreeNames(Mc3dsNames *names);

#endif
