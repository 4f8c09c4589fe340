#include <cstdlib>

#include "../frame/outcome.h"
#include "output.h"

uint32_t Mc3dsParentNumbers(const Mc3dsFile *file)
{
    return file->nodeCounter < 0x8000 ? file->nodeCounter : 0x8000;
}

void Mc3dsBuildHierarchy(const Mc3dsFile *file, Mc3dsHierarchy *hierarchy)
{
    const uint32_t parentNumbers = Mc3dsParentNumbers(file);
    hierarchy->firstChild =
        static_cast<uint32_t *>(Mc3dsResize(nullptr, parentNumbers + 1, sizeof(uint32_t)));
    hierarchy->nextSibling =
        static_cast<uint32_t *>(Mc3dsResize(nullptr, file->objectCount, sizeof(uint32_t)));
    if (!hierarchy->firstChild || !hierarchy->nextSibling) {
        Mc3dsFreeHierarchy(hierarchy);
        Mc3dsNoteLackOfMemory();
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

void Mc3dsFreeHierarchy(Mc3dsHierarchy *hierarchy)
{
    std::free(hierarchy->firstChild);
    std::free(hierarchy->nextSibling);
    *hierarchy = {};
}

static bool ReportLackOfMemory(Mc3dsWriter *writer)
{
    if (!writer->hierarchyFailed)
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory,
                   "Out of memory for the levels of the hierarchy; what lies deeper is left out");
    writer->hierarchyFailed = true;
    return false;
}

static bool GrowLevels(Mc3dsTreeWalk *walk)
{
    const size_t capacity = walk->levelCapacity != 0 ? walk->levelCapacity * 2 : 16;
    void *grown = Mc3dsResize(walk->levels, capacity, sizeof(Mc3dsLevel));
    if (!grown)
        return false;
    walk->levels = static_cast<Mc3dsLevel *>(grown);
    walk->levelCapacity = capacity;
    return true;
}

// Pushes a level for the entered object. False if it has no children or out of memory.
static bool GoDown(Mc3dsTreeWalk *walk, const Mc3dsFile *file, Mc3dsWriter *writer)
{
    const int32_t nodeId = file->objects[walk->index].nodeId;
    if ((writer->options->flags & MC3DS_FLAT) || nodeId < 0 ||
        static_cast<uint32_t>(nodeId) >= Mc3dsParentNumbers(file))
        return false;
    if (!writer->hierarchy.firstChild)
        return ReportLackOfMemory(writer);
    const uint32_t child = writer->hierarchy.firstChild[nodeId];
    if (child == file->objectCount)
        return false;
    if (walk->levelCount == walk->levelCapacity && !GrowLevels(walk))
        return ReportLackOfMemory(writer);
    walk->levels[walk->levelCount++] = {walk->index, child, walk->inverse};
    return true;
}

void Mc3dsTreeWalkBegin(Mc3dsTreeWalk *walk, uint32_t index, const Mc3dsTransform *parentInverse)
{
    *walk = {};
    walk->index = index;
    walk->parentInverse = parentInverse;
}

bool Mc3dsTreeWalkNext(Mc3dsTreeWalk *walk, const Mc3dsFile *file, Mc3dsWriter *writer)
{
    if (!walk->begun) {
        walk->begun = true;
        return true;
    }
    if (!walk->leaving && !GoDown(walk, file, writer)) {
        walk->leaving = true;
        return true;
    }
    if (walk->levelCount == 0)
        return false;
    Mc3dsLevel *level = &walk->levels[walk->levelCount - 1];
    walk->leaving = level->nextChild == file->objectCount;
    if (walk->leaving) {
        walk->index = level->index;
        --walk->levelCount;
        return true;
    }
    walk->index = level->nextChild;
    walk->parentInverse = &level->inverse;
    level->nextChild = writer->hierarchy.nextSibling[walk->index];
    return true;
}

void Mc3dsTreeWalkEnd(Mc3dsTreeWalk *walk)
{
    std::free(walk->levels);
    *walk = {};
}
