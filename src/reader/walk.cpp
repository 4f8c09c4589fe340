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

// A header that a walk can't go on from. One at or behind the parent's end belongs to whatever follows the
// parent, which had no children, or to nothing at the end of the file: no word about that.
static bool IsDamaged(Mc3dsFile *file, const Mc3dsChunk *parent, const Mc3dsChunk *child)
{
    const bool whole = Mc3dsPosition(file) == uint64_t{child->start} + Mc3dsChunkHeaderSize;
    const bool tooShort = child->size < Mc3dsChunkHeaderSize;
    if (whole && !tooShort && child->size <= UINT32_MAX - child->start)
        return false;
    if (child->start < parent->end)
        Mc3dsError(1, "Chunk header %s; the rest of chunk <%x> is skipped",
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
    // A chunk that overruns its parent is passed over, and the walk is over as well.
    Mc3dsSeek(file, child->end);
    return false;
}

void Mc3dsIgnoreChunk(uint16_t tag)
{
    Mc3dsMessage(2, "Ignoring Chunk Tag <%x>", static_cast<unsigned>(tag));
}
