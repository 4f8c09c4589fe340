#include "frames.h"

#include "output.h"

struct Frame {
    const Mc3dsFile *file;
    Mc3dsWriter *writer;
    uint32_t number;
    const Mc3dsTransform *axes, *axesInverse;
};

// Without MC3DS_FLAT, inverse receives the inverse of the object's world transform.
static void WriteLine(const Frame *frame, uint32_t index, const Mc3dsTransform *parentInverse,
                      Mc3dsTransform *inverse)
{
    const auto number = static_cast<int32_t>(index + 1); // one less than the object's tag
    Mc3dsTransform world, local;
    const Mc3dsTransform *key = &frame->file->objects[index].frames[frame->number];
    Mc3dsTransformFrame(key, &world, frame->writer, frame->axes, frame->axesInverse);
    if (frame->writer->options->flags & MC3DS_FLAT) {
        Mc3dsWriteFrameTransform(frame->writer, number, &world);
        return;
    }
    Mc3dsTransformMultiply(&world, parentInverse, &local);
    Mc3dsWriteFrameTransform(frame->writer, number, &local);
    if (Mc3dsTransformInvert(&world, inverse) == 0.0)
        Mc3dsError(0, Mc3dsReportKind::NoInverse, "Unable to invert matrix");
}

static void Mc3dsWriteObjectFrame(const Frame *frame, uint32_t index, const Mc3dsTransform *parentInverse)
{
    Mc3dsTreeWalk walk;
    Mc3dsTreeWalkBegin(&walk, index, parentInverse);
    while (Mc3dsTreeWalkNext(&walk, frame->file, frame->writer))
        if (!walk.leaving) // children are written whether or not the .vue file names them
            WriteLine(frame, walk.index, walk.parentInverse, &walk.inverse);
    Mc3dsTreeWalkEnd(&walk);
}

void Mc3dsWriteFrames(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                      const Mc3dsTransform *axesInverse)
{
    const bool flat = (writer->options->flags & MC3DS_FLAT) != 0;
    Mc3dsTransform identity;
    Mc3dsTransformIdentity(&identity);
    // The last entry of frames, number frameCount, is not written.
    for (uint32_t number = 0; number < file->frameCount; ++number) {
        const Frame frame = {file, writer, number, axes, axesInverse};
        Mc3dsWriteFrameLine(writer, static_cast<int32_t>(number));
        for (uint32_t i = 0; i < file->objectCount; ++i)
            if (file->objects[i].hasFrames != 0 && (flat || file->objects[i].parentNode == 0xFFFF))
                Mc3dsWriteObjectFrame(&frame, i, &identity);
    }
}
