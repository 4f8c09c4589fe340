#include "output.h"

void Mc3dsEmitObjectDocument(const Mc3dsFile *file, Mc3dsWriter *writer, const char *path,
                             const Mc3dsObject *object, const Mc3dsTransform *axes, uint32_t index)
{
    const bool source = (writer->options->flags & MC3DS_SOURCE) != 0;
    if (!Mc3dsOpenText(writer, path))
        return;
    Mc3dsEmitBanner(file, writer);
    if (source)
        Mc3dsEmitSourceHead(writer);
    Mc3dsEmitComment(writer, object->safeName);
    Mc3dsEmitModelBegin(writer);
    ++writer->indent;
    Mc3dsEmitClumpHead(writer, Mc3dsObjectTag(index));
    Mc3dsEmitGeometry(file, writer, object, axes, 0);
    --writer->indent;
    Mc3dsEmitClumpEnd(writer);
    --writer->indent;
    Mc3dsEmitModelEnd(writer);
    if (source)
        Mc3dsEmitSourceTail(writer);
    Mc3dsCloseText(writer);
}
