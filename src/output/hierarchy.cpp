#include <cstdlib>

#include "output.h"

// The node numbers that can have children: those that were given, as far as parentNode, compared as a signed
// number, reaches.
static uint32_t ParentNumbers(const Mc3dsFile *file)
{
    return file->nodeCounter < 0x8000 ? file->nodeCounter : 0x8000;
}

void Mc3dsOpenHierarchy(const Mc3dsFile *file, Mc3dsHierarchy *hierarchy)
{
    const uint32_t parentNumbers = ParentNumbers(file);
    hierarchy->firstChild =
        static_cast<uint32_t *>(Mc3dsResize(nullptr, parentNumbers + 1, sizeof(uint32_t)));
    hierarchy->nextSibling =
        static_cast<uint32_t *>(Mc3dsResize(nullptr, file->objectCount, sizeof(uint32_t)));
    if (!hierarchy->firstChild || !hierarchy->nextSibling) {
        Mc3dsCloseHierarchy(hierarchy);
        return;
    }
    for (uint32_t node = 0; node < parentNumbers; ++node)
        hierarchy->firstChild[node] = file->objectCount;
    for (uint32_t i = file->objectCount; i-- > 0;) {
        const uint16_t parent = file->objects[i].parentNode;
        if (parent >= parentNumbers)
            continue;
        hierarchy->nextSibling[i] = hierarchy->firstChild[parent];
        hierarchy->firstChild[parent] = i;
    }
}

void Mc3dsCloseHierarchy(Mc3dsHierarchy *hierarchy)
{
    std::free(hierarchy->firstChild);
    std::free(hierarchy->nextSibling);
    *hierarchy = {};
}

// The index of the first object from index from on that is a child of the node; objectCount if there is none.
static uint32_t ScanForChild(const Mc3dsFile *file, int32_t nodeId, uint32_t from)
{
    while (from < file->objectCount && file->objects[from].parentNode != nodeId)
        ++from;
    return from;
}

static uint32_t FirstChild(const Mc3dsFile *file, const Mc3dsHierarchy *hierarchy, int32_t nodeId)
{
    if (nodeId < 0 || static_cast<uint32_t>(nodeId) >= ParentNumbers(file))
        return file->objectCount;
    return hierarchy->firstChild ? hierarchy->firstChild[nodeId] : ScanForChild(file, nodeId, 0);
}

Mc3dsLevel *Mc3dsInnermostLevel(Mc3dsLevels *levels)
{
    if (levels->count != 0)
        return &levels->levels[levels->count - 1];
    std::free(levels->levels);
    *levels = {};
    return nullptr;
}

static bool GrowLevels(Mc3dsWriter *writer, Mc3dsLevels *levels)
{
    const size_t capacity = levels->capacity != 0 ? levels->capacity * 2 : 16;
    void *grown = Mc3dsResize(levels->levels, capacity, sizeof(Mc3dsLevel));
    if (!grown) {
        if (!writer->levelsFailed)
            Mc3dsError(0, "Out of memory for the levels of the hierarchy; what lies deeper is left out");
        writer->levelsFailed = true;
        return false;
    }
    levels->levels = static_cast<Mc3dsLevel *>(grown);
    levels->capacity = capacity;
    return true;
}

bool Mc3dsEnterLevel(const Mc3dsFile *file, Mc3dsWriter *writer, Mc3dsLevels *levels, uint32_t index,
                     const Mc3dsTransform *inverse)
{
    const uint32_t child = FirstChild(file, &writer->hierarchy, file->objects[index].nodeId);
    if (child == file->objectCount)
        return false;
    if (levels->count == levels->capacity && !GrowLevels(writer, levels))
        return false;
    levels->levels[levels->count++] = {index, child, *inverse};
    return true;
}

void Mc3dsLeaveLevel(Mc3dsLevels *levels)
{
    --levels->count;
}

bool Mc3dsTakeChild(const Mc3dsFile *file, const Mc3dsWriter *writer, Mc3dsLevel *level, uint32_t *child)
{
    *child = level->nextChild;
    if (*child == file->objectCount)
        return false;
    const uint32_t *siblings = writer->hierarchy.nextSibling;
    level->nextChild =
        siblings ? siblings[*child] : ScanForChild(file, file->objects[level->index].nodeId, *child + 1);
    return true;
}
