#include "output.h"

void Mc3dsEmitBanner(const Mc3dsFile *file, Mc3dsWriter *writer)
{
    if (writer->options->flags & MC3DS_DIRECT)
        return;
    Mc3dsEmitComment(writer, "");
    Mc3dsEmitComment(writer, "");
    Mc3dsEmitComment(writer, "Meshcaster(tm) Script File"); // in C source as well
    Mc3dsEmitBannerOrigin(writer, file->fileName);
    Mc3dsEmitComment(writer, "");
    Mc3dsEmitComment(writer, "");
}

static bool EmitHead(const Mc3dsFile *file, Mc3dsWriter *writer)
{
    Mc3dsEmitBanner(file, writer);
    if (writer->options->flags & MC3DS_DIRECT) {
        if (Mc3dsEmitMatrixCreation(writer))
            return true;
        Mc3dsError(1, Mc3dsReportKind::NoMatrix, "Unable to Create Matrix");
        return false;
    }
    if (writer->options->flags & MC3DS_SOURCE)
        Mc3dsEmitSourceHead(writer);
    return true;
}

static void EmitTail(Mc3dsWriter *writer)
{
    if (writer->options->flags & MC3DS_DIRECT)
        Mc3dsEmitMatrixDestruction(writer);
    else if (writer->options->flags & MC3DS_SOURCE)
        Mc3dsEmitSourceTail(writer);
}

static void EmitPrototypes(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes)
{
    for (uint32_t i = 0; i < file->objectCount; ++i) {
        const Mc3dsObject *object = &file->objects[i];
        Mc3dsEmitSeparator(writer);
        Mc3dsEmitProtoBegin(writer, object->safeName);
        ++writer->indent;
        Mc3dsEmitGeometry(file, writer, object, axes, 0);
        --writer->indent;
        Mc3dsEmitProtoEnd(writer);
    }
}

void Mc3dsEmitScene(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                    const Mc3dsTransform *axesInverse)
{
    const uint32_t flags = writer->options->flags;
    if (!EmitHead(file, writer))
        return;
    Mc3dsEmitModelBegin(writer);
    ++writer->indent;
    if (flags & MC3DS_PROTOS)
        EmitPrototypes(file, writer, axes);
    const bool enclosed = file->rootCount > 1 || (flags & (MC3DS_FLAT | MC3DS_MERGED)) != 0;
    if (enclosed)
        Mc3dsEmitClumpHead(writer, 1);

    Mc3dsTransform identity;
    Mc3dsTransformIdentity(&identity);
    int32_t vertexBase = 0;
    for (uint32_t i = 0; i < file->objectCount; ++i)
        if ((flags & MC3DS_FLAT) || file->objects[i].parentNode == 0xFFFF)
            vertexBase = Mc3dsEmitObject(file, writer, i, axes, axesInverse, &identity, vertexBase);

    if (enclosed) {
        --writer->indent;
        Mc3dsEmitClumpEnd(writer);
    }
    --writer->indent;
    Mc3dsEmitModelEnd(writer);
    EmitTail(writer);
}
