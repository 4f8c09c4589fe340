#include "reader.h"

void Mc3dsApplyPivot(Mc3dsFile *file, Mc3dsObject *object)
{
    // Every few bytes of a damaged file can move a large mesh, so moves count as bytes read.
    if (!Mc3dsSpend(file, static_cast<uint64_t>(object->vertexCount) / 8))
        return;
    Mc3dsTransform shift, moved;
    Mc3dsTransformTranslation(object->pivot, &shift);
    Mc3dsTransformMultiply(&shift, &object->meshMatrix, &moved);
    object->meshMatrix = moved;
    for (int32_t i = 0; i < object->vertexCount; ++i) {
        object->vertices[i].x -= object->pivot[0];
        object->vertices[i].y -= object->pivot[1];
        object->vertices[i].z -= object->pivot[2];
    }
}
