#include "output.h"

struct Tree {
    const Mc3dsFile *file;
    Mc3dsWriter *writer;
    const Mc3dsTransform *axes, *axesInverse;
    bool merged, flat, protos;
    int32_t vertexBase; // vertices written so far
};

static void EmitPlacement(const Tree *tree, const Mc3dsObject *object, const Mc3dsTransform *parentInverse,
                          Mc3dsTransform *world)
{
    const bool animated = (tree->writer->options->flags & MC3DS_ANIMATION) && object->hasFrames != 0;
    const Mc3dsTransform *source = animated ? &object->frames[0] : &object->meshMatrix;
    Mc3dsTransformFrame(source, world, tree->writer, tree->axes, tree->axesInverse);
    if (tree->flat || tree->merged) {
        Mc3dsEmitTransform(tree->writer, world);
        return;
    }
    Mc3dsTransform local;
    Mc3dsTransformMultiply(world, parentInverse, &local);
    Mc3dsEmitTransform(tree->writer, &local);
}

// Without MC3DS_FLAT, inverse receives the inverse of the object's world transform.
static void OpenObject(Tree *tree, uint32_t index, const Mc3dsTransform *parentInverse,
                       Mc3dsTransform *inverse)
{
    Mc3dsWriter *writer = tree->writer;
    const Mc3dsObject *object = &tree->file->objects[index];
    Mc3dsEmitSeparator(writer);
    Mc3dsEmitTransformBegin(writer);
    ++writer->indent;
    Mc3dsTransform world;
    EmitPlacement(tree, object, parentInverse, &world);
    Mc3dsEmitSeparator(writer);
    Mc3dsEmitComment(writer, object->safeName);
    if (!tree->merged)
        Mc3dsEmitClumpHead(writer, Mc3dsObjectTag(index));
    if (tree->protos) {
        Mc3dsEmitProtoInstance(writer, object->safeName);
    } else {
        Mc3dsEmitGeometry(tree->file, writer, object, tree->axes, tree->merged ? tree->vertexBase : 0);
        tree->vertexBase += object->vertexCount;
    }
    // Also for objects without children: hosts rely on the report.
    if (!tree->flat && Mc3dsTransformInvert(&world, inverse) == 0.0)
        Mc3dsError(0, Mc3dsReportKind::NoInverse, "Unable to invert matrix");
}

static void CloseObject(const Tree *tree)
{
    Mc3dsWriter *writer = tree->writer;
    if (!tree->merged) {
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
    Tree tree = {file,
                 writer,
                 axes,
                 axesInverse,
                 (flags & MC3DS_MERGED) != 0,
                 (flags & MC3DS_FLAT) != 0,
                 (flags & MC3DS_PROTOS) != 0,
                 vertexBase};
    Mc3dsTreeWalk walk;
    Mc3dsTreeWalkBegin(&walk, index, parentInverse);
    while (Mc3dsTreeWalkNext(&walk, file, writer))
        if (walk.leaving)
            CloseObject(&tree);
        else
            OpenObject(&tree, walk.index, walk.parentInverse, &walk.inverse);
    Mc3dsTreeWalkEnd(&walk);
    return tree.vertexBase;
}
