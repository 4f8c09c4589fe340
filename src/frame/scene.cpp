#include <cstdlib>
#include <cstring>

#include "frame.h"

void *Mc3dsResize(void *array, uint64_t count, size_t size)
{
    return count <= SIZE_MAX / size ? std::realloc(array, static_cast<size_t>(count) * size) : nullptr;
}

void Mc3dsObjectInit(Mc3dsObject *object, const char *name)
{
    *object = {};
    Mc3dsCopyText(object->name, sizeof object->name, name, "Object name");
    std::memcpy(object->safeName, object->name, sizeof object->safeName);
    for (size_t i = std::strlen(object->safeName); i-- > 0;)
        if (Mc3dsIsSpace(static_cast<unsigned char>(object->safeName[i])))
            object->safeName[i] = '_';
    for (int i = 0; i < 5; ++i) {
        object->boundsMin[i] = Mc3dsLargest;
        object->boundsMax[i] = -Mc3dsLargest;
    }
    Mc3dsTransformIdentity(&object->meshMatrix);
    object->nodeId = -1;
    object->parentNode = 0xFFFF;
}

void Mc3dsObjectFree(Mc3dsObject *object)
{
    if (object->vertexCount != 0)
        std::free(object->vertices);
    if (object->faceCount != 0)
        std::free(object->faces);
    if (object->groupCount != 0) {
        for (uint32_t i = 0; i < object->groupCount; ++i)
            if (object->groups[i].count != 0)
                std::free(object->groups[i].faces);
        std::free(object->groups);
    }
    if (object->rotationKeyCount != 0)
        std::free(object->rotationKeys);
    if (object->scaleKeyCount != 0)
        std::free(object->scaleKeys);
    if (object->positionKeyCount != 0)
        std::free(object->positionKeys);
    if (object->frames)
        std::free(object->frames);
    std::free(object->waitingPivots);
}

bool Mc3dsAddObject(Mc3dsFile *file, const Mc3dsObject *object)
{
    if (file->objectCount == 0)
        file->objectCapacity = 0; // the array is gone with the last of its objects
    if (file->objectCount == file->objectCapacity) {
        // Room ahead of need: pages that are not touched cost nothing, growing by one costs a system call.
        const uint64_t capacity = uint64_t{file->objectCapacity} + file->objectCapacity / 2 + 1;
        void *objects =
            Mc3dsResize(file->objectCount != 0 ? file->objects : nullptr, capacity, sizeof *object);
        if (!objects) {
            Mc3dsError(0, "malloc failed allocating global object");
            return false;
        }
        file->objects = static_cast<Mc3dsObject *>(objects);
        file->objectCapacity = static_cast<uint32_t>(capacity);
    }
    file->objects[file->objectCount++] = *object;
    return true;
}

Mc3dsObject *Mc3dsFindObject(Mc3dsFile *file, const char *name)
{
    const uint32_t index =
        Mc3dsFindName(&file->objectNames, file->objects, sizeof *file->objects, file->objectCount, name);
    return index < file->objectCount ? &file->objects[index] : nullptr;
}
