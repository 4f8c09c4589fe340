#include <cstdlib>

#include "../frame/outcome.h"
#include "chunks.h"
#include "reader.h"

void Mc3dsReadChunkHeader(Mc3dsFile *file, Mc3dsChunk *chunk)
{
    const uint64_t start = Mc3dsPosition(file);
    chunk->start = start < UINT32_MAX ? static_cast<uint32_t>(start) : UINT32_MAX;
    if (const uint8_t *bytes = Mc3dsTakeBuffered(file, Mc3dsChunkHeaderSize)) {
        chunk->tag = Mc3dsU16Of(bytes);
        chunk->size = Mc3dsU32Of(bytes + 2);
    } else {
        chunk->tag = Mc3dsReadU16(file);
        chunk->size = Mc3dsReadU32(file);
    }
    chunk->end = chunk->size < UINT32_MAX - chunk->start ? chunk->start + chunk->size : UINT32_MAX;
}

// True if the walk can't continue. A header at or after the parent's end is no child and is not reported.
static bool IsDamaged(Mc3dsFile *file, const Mc3dsChunk *parent, const Mc3dsChunk *child)
{
    const bool whole = Mc3dsPosition(file) == uint64_t{child->start} + Mc3dsChunkHeaderSize;
    const bool tooShort = child->size < Mc3dsChunkHeaderSize;
    if (whole && !tooShort && child->size <= UINT32_MAX - child->start)
        return false;
    if (child->start < parent->end)
        Mc3dsError(1, Mc3dsReportKind::BadChunkHeader, "Chunk header %s; the rest of chunk <%x> is skipped",
                   !whole     ? "can't be read whole"
                   : tooShort ? "gives a length below 6"
                              : "gives a length past 4 GiB",
                   static_cast<unsigned>(parent->tag));
    return true;
}

bool Mc3dsNextChunk(Mc3dsFile *file, const Mc3dsChunk *parent, Mc3dsChunk *child)
{
    if (child->size != 0) {
        Mc3dsSeek(file, child->end);
        if (child->end >= parent->end || file->load->spent)
            return false;
    }
    Mc3dsReadChunkHeader(file, child);
    if (file->load->spent || IsDamaged(file, parent, child))
        return false;
    if (child->end <= parent->end)
        return true;
    // A chunk that ends after its parent is skipped, and the walk ends.
    Mc3dsSeek(file, child->end);
    return false;
}

void Mc3dsIgnoreChunk(Mc3dsFile *file, uint16_t tag)
{
    if (!file->unknownChunks)
        file->unknownChunks = static_cast<uint32_t *>(std::calloc(Mc3dsTagCount, sizeof(uint32_t)));
    if (file->unknownChunks)
        ++file->unknownChunks[tag];
    else
        Mc3dsNoteLackOfMemory();
    Mc3dsMessage(2, "Ignoring Chunk Tag <%x>", static_cast<unsigned>(tag));
}

void Mc3dsSkipUnsupported(Mc3dsFile *file, Mc3dsUnsupported what, int32_t level, const char *text)
{
    ++file->unsupported[static_cast<size_t>(what)];
    Mc3dsMessage(level, "%s", text);
}
