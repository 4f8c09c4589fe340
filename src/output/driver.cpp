#include <cstdlib>
#include <cstring>

#include "../frame/outcome.h"
#include "frames.h"
#include "output.h"

static void WriteObjectFiles(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes)
{
    for (uint32_t i = 0; i < file->objectCount; ++i) {
        char path[256];
        Mc3dsMakeObjectPath(path, Mc3dsOptionText(writer->options->outputFile), i);
        Mc3dsEmitObjectDocument(file, writer, path, &file->objects[i], axes, i);
    }
}

// The three files are independent: if one can't be opened, the others are written all the same.
static void WriteSceneFiles(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                            const Mc3dsTransform *axesInverse)
{
    const Mc3dsOptions *options = writer->options;
    if (Mc3dsOpenText(writer, Mc3dsOptionText(options->outputFile))) {
        Mc3dsEmitScene(file, writer, axes, axesInverse);
        Mc3dsCloseText(writer);
    }
    if ((options->flags & MC3DS_HEADER) && Mc3dsOpenText(writer, Mc3dsOptionText(options->headerFile))) {
        Mc3dsWriteHeader(file, writer);
        Mc3dsCloseText(writer);
    }
    if ((options->flags & MC3DS_ANIMATION) && file->hasAnimation != 0 &&
        Mc3dsOpenText(writer, Mc3dsOptionText(options->animationFile))) {
        Mc3dsWriteFrames(file, writer, axes, axesInverse);
        Mc3dsCloseText(writer);
    }
}

// Null, with a report, if out of memory. Freed by free.
static Mc3dsWriter *MakeWriter(Mc3dsOptions *options)
{
    auto *writer = static_cast<Mc3dsWriter *>(std::malloc(sizeof(Mc3dsWriter)));
    if (!writer) {
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "Out of memory for the output; nothing is written");
        return nullptr;
    }
    std::memset(static_cast<void *>(writer), 0, offsetof(Mc3dsWriter, text));
    writer->options = options;
    return writer;
}

void Mc3dsOutput(const Mc3dsFile *file, Mc3dsOptions *options, McClump **clumpOut)
{
    Mc3dsResetOutcome();
    if (!file || !options)
        return;
    Mc3dsWriter *writer = MakeWriter(options);
    if (!writer)
        return;
    if (file->objectCount != 0) {
        Mc3dsTransform axes, axesInverse;
        Mc3dsComputeScale(file, writer);
        Mc3dsMakeAxes(writer->scale, &axes, &axesInverse);
        Mc3dsBuildHierarchy(file, &writer->hierarchy);
        if (options->flags & MC3DS_DIRECT) {
            Mc3dsEmitScene(file, writer, &axes, &axesInverse);
            if (clumpOut)
                *clumpOut = writer->clump;
        } else if (options->flags & MC3DS_PER_OBJECT) {
            WriteObjectFiles(file, writer, &axes);
        } else {
            WriteSceneFiles(file, writer, &axes, &axesInverse);
        }
        Mc3dsFreeHierarchy(&writer->hierarchy);
    }
    std::free(writer);
}
