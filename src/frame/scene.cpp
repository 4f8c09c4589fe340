#include <cstdlib>
#include <cstring>

#include "frame.h"

void Mc3dsCopyText(char *field, size_t size, const char *text, const char *what)
{
    const size_t length = std::strlen(text);
    const size_t kept = length < size ? length : size - 1;
    std::memcpy(field, text, kept);
    field[kept] = '\0';
    if (kept < length)
        Mc3dsError(2, Mc3dsReportKind::TextCut, "%s <%s> is longer than %d characters and was cut", what,
                   text, static_cast<int>(size - 1));
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
}
