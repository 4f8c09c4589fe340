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
    const uint32_t nodeNumbers = ParentNumbers(file);
    hierarchy->parents = static_cast<uint16_t *>(Mc3dsResize(nullptr, file->objectCount, sizeof(uint16_t)));
    hierarchy->ranges =
        static_cast<Mc3dsChildRange *>(Mc3dsResize(nullptr, nodeNumbers + 1, sizeof(Mc3dsChildRange)));
    if (!hierarchy->parents || !hierarchy->ranges) {
        Mc3dsCloseHierarchy(hierarchy);
        return;
    }
    for (uint32_t node = 0; node < nodeNumbers; ++node)
        hierarchy->ranges[node] = {UINT32_MAX, 0};
    for (uint32_t i = 0; i < file->objectCount; ++i) {
        const uint16_t parent = file->objects[i].parentNode;
        hierarchy->parents[i] = parent;
        if (parent >= nodeNumbers)
            continue;
        Mc3dsChildRange &range = hierarchy->ranges[parent];
        if (range.first > i)
            range.first = i;
        range.last = i;
    }
}

void Mc3dsCloseHierarchy(Mc3dsHierarchy *hierarchy)
{
    std::free(hierarchy->parents);
    std::free(hierarchy->ranges);
    *hierarchy = {};
}

// The index of the first child of a node at or behind index from; objectCount if there is none.
static uint32_t FindChild(const Mc3dsFile *file, const Mc3dsHierarchy *hierarchy, int32_t nodeId,
                          uint32_t from)
{
    if (nodeId < 0 || static_cast<uint32_t>(nodeId) >= ParentNumbers(file))
        return file->objectCount;
    if (!hierarchy->ranges) {
        while (from < file->objectCount && file->objects[from].parentNode != nodeId)
            ++from;
        return from;
    }
    const Mc3dsChildRange range = hierarchy->ranges[nodeId];
    if (from < range.first)
        from = range.first;
    while (from <= range.last && hierarchy->parents[from] != nodeId)
        ++from;
    return from <= range.last ? from : file->objectCount;
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
    const uint32_t child = FindChild(file, &writer->hierarchy, file->objects[index].nodeId, 0);
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
    *child = FindChild(file, &writer->hierarchy, file->objects[level->index].nodeId, level->nextChild);
    level->nextChild = *child + 1;
    return *child < file->objectCount;
}
