#include <cstdlib>
#include <cstring>

#include "frames.h"
#include "output.h"

void Mc3dsComputeScale(const Mc3dsFile *file, Mc3dsWriter *writer)
{
    Mc3dsOptions *options = writer->options;
    float low[3], high[3];
    for (int axis = 0; axis < 3; ++axis) {
        low[axis] = Mc3dsLargest;
        high[axis] = -Mc3dsLargest;
        for (uint32_t i = 0; i < file->objectCount; ++i) {
            const Mc3dsObject &object = file->objects[i];
            if (object.boundsMax[axis] > high[axis])
                high[axis] = object.boundsMax[axis];
            if (object.boundsMin[axis] < low[axis])
                low[axis] = object.boundsMin[axis];
        }
    }
    float extent = high[0] - low[0];
    for (int axis = 1; axis < 3; ++axis)
        if (high[axis] - low[axis] > extent)
            extent = high[axis] - low[axis];

    if (options->flags & MC3DS_FIT_SIZE) {
        writer->scale = options->size / extent;
        options->scale = writer->scale;
    } else {
        writer->scale = options->scale;
        options->size = writer->scale * extent;
    }
    for (int axis = 0; axis < 3; ++axis) {
        const double middle = (static_cast<double>(low[axis]) + static_cast<double>(high[axis])) * -0.5;
        writer->centre[axis] = options->flags & MC3DS_CENTRE ? static_cast<float>(middle) : 0.0f;
    }
    Mc3dsMessage(2, "Scale %f", static_cast<double>(writer->scale));
}

void Mc3dsTransformFrame(const Mc3dsTransform *key, Mc3dsTransform *out, const Mc3dsWriter *writer,
                         const Mc3dsTransform *post, const Mc3dsTransform *pre)
{
    Mc3dsTransform centre, centred, turned;
    Mc3dsTransformTranslation(writer->centre, &centre);
    Mc3dsTransformMultiply(key, &centre, &centred);
    Mc3dsTransformMultiply(pre, &centred, &turned);
    Mc3dsTransformMultiply(&turned, post, out);
}

// The file's z axis becomes the target's y axis, its y axis the negative z axis.
static void MakeAxes(float scale, Mc3dsTransform *axes, Mc3dsTransform *axesInverse)
{
    const double s = scale;
    *axes = {{{s, 0.0, 0.0}, {0.0, 0.0, -s}, {0.0, s, 0.0}, {0.0, 0.0, 0.0}}};
    Mc3dsTransformInvert(axes, axesInverse);
}

// At most six characters of outputFile, or all but its last four where these are fewer, then the index. A
// name of fewer than four characters has no extension to lose.
static void MakeObjectPath(char path[256], const char *outputFile, uint32_t index)
{
    const size_t length = std::strlen(outputFile);
    size_t kept = length < 4 ? length : length - 4;
    if (kept > 6)
        kept = 6;
    std::memcpy(path, outputFile, kept);
    Mc3dsFormatText(path + kept, 256 - kept, "%d.mcx", static_cast<int32_t>(index));
}

static void WriteObjectFiles(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes)
{
    for (uint32_t i = 0; i < file->objectCount; ++i) {
        char path[256];
        MakeObjectPath(path, Mc3dsOptionText(writer->options->outputFile), i);
        Mc3dsEmitObjectDocument(file, writer, path, &file->objects[i], axes, i);
    }
}

// Each of the three files stands by itself: one that can't be opened costs only that file.
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

// Null when there is no memory. Freed by free.
static Mc3dsWriter *MakeWriter(Mc3dsOptions *options)
{
    const size_t nameSize =
        sizeof Mc3dsMaterial::textureMap + 1 + std::strlen(Mc3dsOptionText(options->textureExtension));
    auto *memory = static_cast<char *>(std::malloc(sizeof(Mc3dsWriter) + 2 * nameSize));
    if (!memory)
        return nullptr;
    auto *writer = reinterpret_cast<Mc3dsWriter *>(memory);
    std::memset(memory, 0, offsetof(Mc3dsWriter, text)); // the text needs no clearing
    writer->options = options;
    writer->textureName = memory + sizeof(Mc3dsWriter);
    writer->maskName = writer->textureName + nameSize;
    return writer;
}

void Mc3dsOutput(const Mc3dsFile *file, Mc3dsOptions *options, McClump **clumpOut)
{
    if (!file || !options)
        return;
    Mc3dsWriter *writer = MakeWriter(options);
    if (!writer)
        return;
    if (file->objectCount != 0) {
        Mc3dsTransform axes, axesInverse;
        Mc3dsComputeScale(file, writer);
        MakeAxes(writer->scale, &axes, &axesInverse);
        Mc3dsOpenHierarchy(file, &writer->hierarchy);
        if (options->flags & MC3DS_DIRECT) {
            Mc3dsEmitScene(file, writer, &axes, &axesInverse);
            if (clumpOut)
                *clumpOut = writer->clump;
        } else if (options->flags & MC3DS_PER_OBJECT) {
            WriteObjectFiles(file, writer, &axes);
        } else {
            WriteSceneFiles(file, writer, &axes, &axesInverse);
        }
        Mc3dsCloseHierarchy(&writer->hierarchy);
    }
    std::free(writer);
}
