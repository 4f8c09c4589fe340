#include "output.h"

// What the walk of one tree hands to every object of it.
struct TreeWalk {
    const Mc3dsFile *file;
    Mc3dsWriter *writer;
    const Mc3dsTransform *axes, *axesInverse;
    bool merged, flat, protos;
    int32_t vertexBase; // vertices written by the walk so far
};

static void EmitPlacement(const TreeWalk *walk, const Mc3dsObject *object,
                          const Mc3dsTransform *parentInverse, Mc3dsTransform *world)
{
    const bool animated = (walk->writer->options->flags & MC3DS_ANIMATION) && object->hasFrames != 0;
    const Mc3dsTransform *source = animated ? &object->frames[0] : &object->meshMatrix;
    Mc3dsTransformFrame(source, world, walk->writer, walk->axes, walk->axesInverse);
    if (walk->flat || walk->merged) {
        Mc3dsEmitTransform(walk->writer, world);
        return;
    }
    Mc3dsTransform local;
    Mc3dsTransformMultiply(world, parentInverse, &local);
    Mc3dsEmitTransform(walk->writer, &local);
}

// The object without its children and its end. Without MC3DS_FLAT, inverse becomes that of its world
// transform.
static void OpenObject(TreeWalk *walk, uint32_t index, const Mc3dsTransform *parentInverse,
                       Mc3dsTransform *inverse)
{
    Mc3dsWriter *writer = walk->writer;
    const Mc3dsObject *object = &walk->file->objects[index];
    Mc3dsEmitSeparator(writer);
    Mc3dsEmitTransformBegin(writer);
    ++writer->indent;
    Mc3dsTransform world;
    EmitPlacement(walk, object, parentInverse, &world);
    Mc3dsEmitSeparator(writer);
    Mc3dsEmitComment(writer, object->safeName);
    if (!walk->merged)
        Mc3dsEmitClumpHead(writer, Mc3dsObjectTag(index));
    if (walk->protos) {
        Mc3dsEmitProtoInstance(writer, object->safeName);
    } else {
        Mc3dsEmitGeometry(walk->file, writer, object, walk->axes, walk->merged ? walk->vertexBase : 0);
        walk->vertexBase += object->vertexCount;
    }
    // Also for an object without children: a host counts on the report.
    if (!walk->flat && Mc3dsTransformInvert(&world, inverse) == 0.0)
        Mc3dsError(0, "Unable to invert matrix");
}

static void CloseObject(const TreeWalk *walk)
{
    Mc3dsWriter *writer = walk->writer;
    if (!walk->merged) {
        --writer->indent;
        Mc3dsEmitClumpEnd(writer);
    }
    --writer->indent;
    Mc3dsEmitTransformEnd(writer);
}

int32_t Mc3dsEmitObject(const Mc3dsFile *file, Mc3dsWriter *writer, uint32_t index,
                        const Mc3dsTransform *axes, const Mc3dsTransform *axesInverse,
                        const Mc3dsTransform *parentInverse, int32_t vertexBase)
{
    const uint32_t flags = writer->options->flags;
    TreeWalk walk = {file,
                     writer,
                     axes,
                     axesInverse,
                     (flags & MC3DS_MERGED) != 0,
                     (flags & MC3DS_FLAT) != 0,
                     (flags & MC3DS_PROTOS) != 0,
                     vertexBase};
    Mc3dsLevels levels = {};
    Mc3dsTransform inverse;
    OpenObject(&walk, index, parentInverse, &inverse);
    if (walk.flat || !Mc3dsEnterLevel(file, writer, &levels, index, &inverse))
        CloseObject(&walk);
    while (Mc3dsLevel *level = Mc3dsInnermostLevel(&levels)) {
        uint32_t child;
        if (!Mc3dsTakeChild(file, writer, level, &child)) {
            CloseObject(&walk);
            Mc3dsLeaveLevel(&levels);
            continue;
        }
        OpenObject(&walk, child, &level->inverse, &inverse);
        if (!Mc3dsEnterLevel(file, writer, &levels, child, &inverse))
            CloseObject(&walk);
    }
    return walk.vertexBase;
}
