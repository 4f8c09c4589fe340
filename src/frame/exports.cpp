// Mc3dsLoadFile is in reader/load.cpp, Mc3dsOutput in output/driver.cpp.

#include <cstdlib>

#include "frame.h"

const char *Mc3dsGetVersion(void)
{
    return "3.0";
}

void Mc3dsUnloadFile(Mc3dsFile *file)
{
    if (!file)
        return;
    if (file->objectCount != 0) {
        do
            Mc3dsObjectFree(&file->objects[--file->objectCount]);
        while (file->objectCount != 0);
        std::free(file->objects);
    }
    if (file->materialCount != 0)
        std::free(file->materials);
    if (file->lostMaterialCount != 0) // unnoticed
        std::free(file->lostMaterials);
    std::free(file->skipped);
    std::free(file->unknownChunks);
    std::free(file);
}
