#include "frames.h"

#include "output.h"

// Writes the line of one object. Without MC3DS_FLAT, inverse becomes that of its world transform.
static void WriteLine(const Mc3dsFile *file, Mc3dsWriter *writer, uint32_t index, uint32_t frame,
                      const Mc3dsTransform *axes, const Mc3dsTransform *axesInverse,
                      const Mc3dsTransform *parentInverse, Mc3dsTransform *inverse)
{
    const auto number = static_cast<int32_t>(index + 1); // not the tag, which is one more
    Mc3dsTransform world, local;
    Mc3dsTransformFrame(&file->objects[index].frames[frame], &world, writer, axes, axesInverse);
    if (writer->options->flags & MC3DS_FLAT) {
        Mc3dsWriteFrameTransform(writer, number, &world);
        return;
    }
    Mc3dsTransformMultiply(&world, parentInverse, &local);
    Mc3dsWriteFrameTransform(writer, number, &local);
    if (Mc3dsTransformInvert(&world, inverse) == 0.0)
        Mc3dsError(0, "Unable to invert matrix");
}

static void Mc3dsWriteObjectFrame(const Mc3dsFile *file, Mc3dsWriter *writer, uint32_t index, uint32_t frame,
                                  const Mc3dsTransform *axes, const Mc3dsTransform *axesInverse,
                                  const Mc3dsTransform *parentInverse)
{
    Mc3dsTransform inverse;
    WriteLine(file, writer, index, frame, axes, axesInverse, parentInverse, &inverse);
    if (writer->options->flags & MC3DS_FLAT)
        return;
    Mc3dsLevels levels = {};
    Mc3dsEnterLevel(file, writer, &levels, index, &inverse);
    while (Mc3dsLevel *level = Mc3dsInnermostLevel(&levels)) {
        uint32_t child;
        if (!Mc3dsTakeChild(file, writer, level, &child)) {
            Mc3dsLeaveLevel(&levels);
            continue;
        }
        // Children are written whether or not the .vue file named them.
        WriteLine(file, writer, child, frame, axes, axesInverse, &level->inverse, &inverse);
        Mc3dsEnterLevel(file, writer, &levels, child, &inverse);
    }
}

void Mc3dsWriteFrames(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                      const Mc3dsTransform *axesInverse)
{
    const bool flat = (writer->options->flags & MC3DS_FLAT) != 0;
    Mc3dsTransform identity;
    Mc3dsTransformIdentity(&identity);
    // The last entry of frames, number frameCount, is not written.
    for (uint32_t frame = 0; frame < file->frameCount; ++frame) {
        Mc3dsWriteFrameLine(writer, static_cast<int32_t>(frame));
        for (uint32_t i = 0; i < file->objectCount; ++i)
            if (file->objects[i].hasFrames != 0 && (flat || file->objects[i].parentNode == 0xFFFF))
                Mc3dsWriteObjectFrame(file, writer, i, frame, axes, axesInverse, &identity);
    }
}
