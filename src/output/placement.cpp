#include "output.h"

void Mc3dsFindBounds(const Mc3dsFile *file, float low[3], float high[3])
{
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
}

void Mc3dsComputeScale(const Mc3dsFile *file, Mc3dsWriter *writer)
{
    Mc3dsOptions *options = writer->options;
    float low[3], high[3];
    Mc3dsFindBounds(file, low, high);
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

void Mc3dsMakeAxes(float scale, Mc3dsTransform *axes, Mc3dsTransform *axesInverse)
{
    const double s = scale;
    *axes = {{{s, 0.0, 0.0}, {0.0, 0.0, -s}, {0.0, s, 0.0}, {0.0, 0.0, 0.0}}};
    Mc3dsTransformInvert(axes, axesInverse);
}
