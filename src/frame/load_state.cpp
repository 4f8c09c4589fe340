#include "load_state.h"

#include <cstdlib>
#include <cstring>

#include "outcome.h"

bool Mc3dsBeginLoad(Mc3dsFile *file)
{
    file->load = static_cast<Mc3dsLoad *>(std::malloc(sizeof(Mc3dsLoad)));
    if (!file->load)
        return false;
    std::memset(static_cast<void *>(file->load), 0, offsetof(Mc3dsLoad, bytes));
    return true;
}

void Mc3dsEndLoad(Mc3dsFile *file)
{
    if (file->stream)
        Mc3dsCloseStream(file);
    Mc3dsFreeNames(&file->load->objectNames);
    Mc3dsFreeNames(&file->load->materialNames);
    Mc3dsFreeNames(&file->load->lostNames);
    std::free(file->load);
    file->load = nullptr;
}

bool Mc3dsAddObject(Mc3dsFile *file, const Mc3dsObject *object)
{
    uint32_t &room = file->load->objectCapacity;
    if (file->objectCount == 0)
        room = 0; // the array was freed with its last object
    if (file->objectCount == room) {
        // Reserves more than needed: untouched pages cost nothing, every growth costs a system call.
        const uint64_t capacity = uint64_t{room} + room / 2 + 1; // unnoticed
        void *objects =
            Mc3dsResize(file->objectCount != 0 ? file->objects : nullptr, capacity, sizeof *object);
        if (!objects) {
            Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "malloc failed allocating global object");
            return false;
        }
        file->objects = static_cast<Mc3dsObject *>(objects);
        room = static_cast<uint32_t>(capacity);
    }
    file->objects[file->objectCount++] = *object;
    return true;
}

Mc3dsObject *Mc3dsFindObject(Mc3dsFile *file, const char *name)
{
    const uint32_t index = Mc3dsFindName(&file->load->objectNames, file->objects, sizeof *file->objects,
                                         file->objectCount, name);
    return index < file->objectCount ? &file->objects[index] : nullptr;
}

uint32_t Mc3dsLoseMaterial(Mc3dsFile *file, const char name[20], const char *fault)
{
    const uint32_t count = file->lostMaterialCount;
    const uint32_t known =
        Mc3dsFindName(&file->load->lostNames, file->lostMaterials, sizeof *file->lostMaterials, count, name);
    if (known < count)
        return known;
    void *grown = Mc3dsResize(count != 0 ? file->lostMaterials : nullptr, uint64_t{count} + 1,
                              sizeof(Mc3dsLostMaterial));
    if (!grown) {
        Mc3dsNoteLackOfMemory();
        return count;
    }
    file->lostMaterials = static_cast<Mc3dsLostMaterial *>(grown);
    Mc3dsLostMaterial &lost = file->lostMaterials[file->lostMaterialCount++];
    std::strcpy(lost.name, name);
    lost.fault = fault;
    return count;
}
