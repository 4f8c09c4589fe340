#include "output.h"

// Lists the tags of the objects' clumps in the order of objects, not of the hierarchy.
void Mc3dsWriteHeader(const Mc3dsFile *file, Mc3dsWriter *writer)
{
    Mc3dsWriteHeaderTop(writer, file->fileName);
    for (uint32_t i = 0; i < file->objectCount; ++i)
        Mc3dsWriteHeaderTag(writer, file->objects[i].safeName, Mc3dsObjectTag(i));
}
