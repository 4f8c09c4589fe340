#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "../animation/vue.h"
#include "../frame/outcome.h"
#include "chunks.h"
#include "reader.h"

static const Mc3dsMaterial defaultMaterial = {
    "default", {0.0f, 1.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, 2, 0.0f, 0.0f, "", "", ""};

static Mc3dsFile *DropScene(Mc3dsFile *file)
{
    Mc3dsEndLoad(file);
    Mc3dsUnloadFile(file);
    return nullptr;
}

// A scene with only the default material and an open stream. Null if opening fails or out of memory.
static Mc3dsFile *OpenScene(const char *path)
{
    auto *file = static_cast<Mc3dsFile *>(std::calloc(1, sizeof(Mc3dsFile)));
    if (!file || !Mc3dsBeginLoad(file)) {
        Mc3dsNoteLackOfMemory();
        std::free(file);
        return nullptr;
    }
    errno = 0;
    file->stream = Mc3dsOpenToRead(path, "rb");
    // A pipe can be opened, but walking chunks needs seeks.
    if (!file->stream || !Mc3dsOpenStream(file)) {
        Mc3dsNoteOpenError(errno);
        Mc3dsError(1, Mc3dsReportKind::CantOpen, "Unable to open file <%s>", path);
        return DropScene(file);
    }
    file->load->fileNameIsCut = std::strlen(path) >= sizeof file->fileName;
    Mc3dsCopyText(file->fileName, sizeof file->fileName, path, "Path");
    Mc3dsMessage(0, "\nReading File <%s>", path);
    file->materials = static_cast<Mc3dsMaterial *>(std::malloc(sizeof(Mc3dsMaterial)));
    if (!file->materials) {
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "malloc failed allocating global material");
        return DropScene(file);
    }
    file->materials[0] = defaultMaterial;
    file->materialCount = 1;
    return file;
}

static bool ReadRoot(Mc3dsFile *file)
{
    Mc3dsChunk root;
    Mc3dsReadChunkHeader(file, &root);
    if (file->fileSize >= Mc3dsChunkHeaderSize)
        file->rootSize = root.size;
    switch (root.tag) {
    case M3DMAGIC:
        for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, &root, &child);) {
            if (child.tag == MDATA)
                Mc3dsReadEditorChunks(file, &child);
            else if (child.tag == KFDATA)
                Mc3dsReadKeyframer(file, &child);
        }
        return true;
    case MDATA: Mc3dsReadEditorChunks(file, &root); return true;
    default:
        Mc3dsNoteNoScene();
        Mc3dsError(1, Mc3dsReportKind::NotAScene, "File is not a 3DS file");
        return false;
    }
}

Mc3dsFile *Mc3dsLoadFile(const char *path)
{
    Mc3dsResetOutcome();
    if (!path)
        Mc3dsNoteOpenError(EINVAL);
    Mc3dsFile *file = path ? OpenScene(path) : nullptr;
    if (!file)
        return nullptr;
    const bool is3ds = ReadRoot(file);
    Mc3dsCloseStream(file);
    if (!is3ds)
        return DropScene(file);
    for (uint32_t i = 0; i < file->objectCount; ++i)
        if (file->objects[i].parentNode == 0xFFFF)
            ++file->rootCount;
    if (file->frameCount != 0 && Mc3dsReadVue(file) != 0) {
        file->hasAnimation = 1;
        for (uint32_t i = 0; i < file->objectCount; ++i)
            for (uint64_t frame = 0; frame <= file->frameCount; ++frame)
                Mc3dsApplyFramePivot(&file->objects[i], static_cast<uint32_t>(frame));
    }
    Mc3dsEndLoad(file);
    return file;
}
