#include <cstdlib>
#include <cstring>

#include "chunks.h"
#include "reader.h"

static bool IsDummyName(const char name[12])
{
    char lower[12];
    std::memcpy(lower, name, sizeof lower);
    Mc3dsLowerCase(lower);
    return std::strcmp(lower, "$$$dummy") == 0;
}

static Mc3dsObject *AddDummy(Mc3dsFile *file)
{
    char name[16];
    Mc3dsFormatText(name, sizeof name, "Dummy%d", static_cast<int32_t>(file->dummyCount));
    Mc3dsObject dummy;
    Mc3dsObjectInit(&dummy, name);
    if (!Mc3dsAddObject(file, &dummy))
        return nullptr;
    ++file->dummyCount;
    return &file->objects[file->objectCount - 1];
}

// Finds or adds the node's object. Returns nobody, the record for nodes without an object, if there is none.
static Mc3dsObject *ReadNodeHeader(Mc3dsFile *file, Mc3dsObject *nobody)
{
    const char *text = Mc3dsReadString(file);
    char name[12]; // object names are cut to this length too, so a long one still matches
    Mc3dsCopyText(name, sizeof name, text, "Object name");
    Mc3dsObject *object = Mc3dsFindObject(file, name);
    if (!object && IsDummyName(name))
        object = AddDummy(file);
    else if (!object)
        Mc3dsError(2, Mc3dsReportKind::ObjectNotFound, "Object %s not found", text);
    if (!object)
        object = nobody;
    Mc3dsReadU32(file);
    object->parentNode = Mc3dsReadU16(file);
    object->nodeId = static_cast<int32_t>(file->nodeCounter);
    ++object->nodeCount;
    return object;
}

// Returns the number of keys, or 0 if they don't fit in the chunk.
static uint32_t ReadTrackHead(Mc3dsFile *file, const Mc3dsChunk *chunk, uint32_t smallestKey)
{
    Mc3dsReadU16(file);
    Mc3dsReadU32(file);
    Mc3dsReadU32(file);
    const uint64_t count = Mc3dsReadU32(file);
    const uint64_t position = Mc3dsPosition(file);
    const uint64_t left = position < chunk->end ? chunk->end - position : 0;
    if (count * smallestKey > left) {
        Mc3dsError(1, Mc3dsReportKind::TrackTooShort, "Track <%x> has no room for its %d keys and is dropped",
                   static_cast<unsigned>(chunk->tag), static_cast<int32_t>(count));
        return 0;
    }
    return Mc3dsMayRead(file, count * smallestKey) ? static_cast<uint32_t>(count) : 0;
}

// Each of the low five flags that is set adds four bytes of spline data, which are skipped.
static uint32_t ReadKeyFrame(Mc3dsFile *file)
{
    const uint32_t frame = Mc3dsReadU32(file);
    const uint16_t flags = Mc3dsReadU16(file);
    for (uint16_t flag = 0x01; flag <= 0x10; flag = static_cast<uint16_t>(flag << 1))
        if (flags & flag)
            Mc3dsReadU32(file);
    return frame;
}

// A second track of a kind replaces the first.
template <class Key, int valueCount>
static void ReadTrack(Mc3dsFile *file, const Mc3dsChunk *chunk, uint32_t *keyCount, Key **keys)
{
    static_assert(sizeof(Key) == 4 + valueCount * 4);
    if (*keyCount != 0)
        std::free(*keys);
    *keyCount = 0;
    const uint32_t count = ReadTrackHead(file, chunk, 6 + valueCount * 4);
    if (count == 0)
        return;
    *keys = static_cast<Key *>(Mc3dsResize(nullptr, count, sizeof(Key)));
    if (!*keys) {
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "Out of memory allocating keys");
        return;
    }
    *keyCount = count;
    for (uint32_t i = 0; i < count; ++i) {
        Key &key = (*keys)[i];
        key.frame = ReadKeyFrame(file);
        float values[valueCount];
        Mc3dsReadFloats(file, values, valueCount);
        std::memcpy(reinterpret_cast<unsigned char *>(&key) + 4, values, sizeof values);
    }
}

static void ReadNodeChild(Mc3dsFile *file, const Mc3dsChunk *child, Mc3dsObject *object)
{
    switch (child->tag) {
    case INSTANCE_NAME:
        Mc3dsCopyText(object->instanceName, sizeof object->instanceName, Mc3dsReadString(file),
                      "Instance name");
        break;
    case PIVOT: Mc3dsReadFloats(file, object->pivot, 3); break;
    case BOUNDBOX:
        Mc3dsReadFloats(file, object->nodeBoundMin, 3);
        Mc3dsReadFloats(file, object->nodeBoundMax, 3);
        break;
    case MORPH_SMOOTH:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::MorphSmoothing, 2, "\tMORPH_SMOOTH ... skipping");
        break;
    case POS_TRACK_TAG:
        ReadTrack<Mc3dsPositionKey, 3>(file, child, &object->positionKeyCount, &object->positionKeys);
        break;
    case ROT_TRACK_TAG:
        ReadTrack<Mc3dsRotationKey, 4>(file, child, &object->rotationKeyCount, &object->rotationKeys);
        break;
    case SCL_TRACK_TAG:
        ReadTrack<Mc3dsScaleKey, 3>(file, child, &object->scaleKeyCount, &object->scaleKeys);
        break;
    case MORPH_TRACK_TAG:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::MorphTrack, 2, "\tMORPH_TRACK_TAG ... skipping");
        break;
    default: Mc3dsIgnoreChunk(file, child->tag);
    }
}

void Mc3dsReadObjectNode(Mc3dsFile *file, const Mc3dsChunk *chunk)
{
    // The pointer stays valid: after the header no object is added.
    Mc3dsObject nobody;
    Mc3dsObjectInit(&nobody, "");
    Mc3dsObject *object = &nobody;
    bool hasHeader = false;
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);) {
        if (child.tag != NODE_HDR) {
            ReadNodeChild(file, &child, object);
            if (child.tag == PIVOT && object != &nobody)
                Mc3dsApplyPivot(file, object);
        } else if (!hasHeader) {
            object = ReadNodeHeader(file, &nobody);
            hasHeader = true;
        } else {
            Mc3dsError(2, Mc3dsReportKind::SecondNodeHeader, "Second header in the node of <%s>, skipped",
                       object->name);
        }
    }
    Mc3dsObjectFree(&nobody);
}
