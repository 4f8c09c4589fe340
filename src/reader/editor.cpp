#include <cstdlib>
#include <cstring>

#include "../frame/outcome.h"
#include "chunks.h"
#include "reader.h"

static void ReadAmbientLight(Mc3dsFile *file)
{
    Mc3dsReadColour(file, file->ambient);
    const double red = file->ambient[0], green = file->ambient[1], blue = file->ambient[2];
    Mc3dsMessage(2, "Global Ambient Level = %f", ((red + green) + blue) / 3.0);
}

static void AddSkipped(Mc3dsFile *file, Mc3dsSkippedKind kind, const char *name)
{
    void *grown = Mc3dsResize(file->skipped, uint64_t{file->skippedCount} + 1, sizeof(Mc3dsSkippedObject));
    if (!grown) {
        Mc3dsNoteLackOfMemory();
        return;
    }
    file->skipped = static_cast<Mc3dsSkippedObject *>(grown);
    Mc3dsSkippedObject &skipped = file->skipped[file->skippedCount++];
    std::strcpy(skipped.name, name);
    skipped.kind = kind;
}

// OBJ_HIDDEN follows the mesh that it hides, so the newest object is removed.
static void RemoveNewestObject(Mc3dsFile *file)
{
    Mc3dsObjectFree(&file->objects[--file->objectCount]);
    if (file->objectCount == 0) {
        std::free(file->objects);
        file->objects = nullptr;
    }
    Mc3dsMessage(1, "Hidden Object ... removing");
}

static void ReadNamedObject(Mc3dsFile *file, const Mc3dsChunk *chunk)
{
    char name[12];
    Mc3dsCopyText(name, sizeof name, Mc3dsReadString(file), "Object name");
    bool lastIsMesh = false; // whether the last mesh, light or camera is a mesh that is in the scene
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);) {
        switch (child.tag) {
        case N_TRI_OBJECT:
            Mc3dsMessage(2, "%s", "");
            Mc3dsMessage(1, "Object <%s>", name);
            lastIsMesh = Mc3dsReadMesh(file, &child, name);
            break;
        case N_DIRECT_LIGHT:
            AddSkipped(file, Mc3dsSkippedKind::Light, name);
            Mc3dsMessage(2, "\nLight <%s> ... skipping", name);
            lastIsMesh = false;
            break;
        case N_CAMERA:
            AddSkipped(file, Mc3dsSkippedKind::Camera, name);
            Mc3dsMessage(2, "\nCamera <%s> ... skipping", name);
            lastIsMesh = false;
            break;
        case OBJ_HIDDEN:
            if (lastIsMesh)
                AddSkipped(file, Mc3dsSkippedKind::HiddenMesh, name);
            if (lastIsMesh)
                RemoveNewestObject(file);
            lastIsMesh = false;
            break;
        default: Mc3dsIgnoreChunk(file, child.tag);
        }
    }
}

void Mc3dsReadEditorChunks(Mc3dsFile *file, const Mc3dsChunk *parent)
{
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, parent, &child);) {
        switch (child.tag) {
        case MASTER_SCALE:
            Mc3dsMessage(2, "Master Scale Factor = %.2f units/inch",
                         static_cast<double>(Mc3dsReadFloat(file)));
            break;
        case AMBIENT_LIGHT: ReadAmbientLight(file); break;
        case MESH_VERSION:
            if (Mc3dsReadU32(file) > 3)
                Mc3dsError(2, Mc3dsReportKind::NewerVersion,
                           "3D Studio Version Number greater than 3.0 may not be supported");
            break;
        case NAMED_OBJECT: ReadNamedObject(file, &child); break;
        case MAT_ENTRY: Mc3dsReadMaterial(file, &child); break;
        case BIT_MAP:
        case USE_BIT_MAP:
        case SOLID_BGND:
        case USE_SOLID_BGND:
        case V_GRADIENT:
        case USE_V_GRADIENT:
        case LO_SHADOW_BIAS:
        case HI_SHADOW_BIAS:
        case SHADOW_MAP_SIZE:
        case SHADOW_SAMPLES:
        case SHADOW_RANGE:
        case SHADOW_FILTER:
        case O_CONSTS:
        case FOG:
        case USE_FOG:
        case FOG_BGND:
        case DISTANCE_CUE:
        case USE_DISTANCE_CUE:
        case DCUE_BGND:
        case DEFAULT_VIEW: break;
        default: Mc3dsIgnoreChunk(file, child.tag);
        }
    }
}
