#include "vertices.h"

constexpr size_t pointSize = 12, textureSize = 8, flagSize = 2, faceSize = 8;

// True if the array holds count entries of a size.
static bool Holds(const Mc3dsPart &array, size_t count, size_t size)
{
    const std::string_view content = Mc3dsContent(array);
    return content.size() >= 2 + count * size && Mc3dsNumberAt<uint16_t>(content, 0) == count;
}

bool Mc3dsReadShape(Mc3dsPart *mesh, Mc3dsShape *shape)
{
    for (Mc3dsPart &part : mesh->children) {
        Mc3dsPart **array = part.tag == Mc3dsTagPoints       ? &shape->points
                            : part.tag == Mc3dsTagFaces      ? &shape->faces
                            : part.tag == Mc3dsTagTexture    ? &shape->texture
                            : part.tag == Mc3dsTagPointFlags ? &shape->flags
                                                             : nullptr;
        if (array && *array)
            return false;
        if (array)
            *array = &part;
    }
    if (!shape->points || !shape->faces || shape->points->contentSize < 2 || shape->faces->contentSize < 2 ||
        mesh->damagedSize != 0 || shape->faces->damagedSize != 0)
        return false;
    shape->vertexCount = Mc3dsNumberAt<uint16_t>(Mc3dsContent(*shape->points), 0);
    shape->faceCount = Mc3dsNumberAt<uint16_t>(Mc3dsContent(*shape->faces), 0);
    if (!Holds(*shape->points, shape->vertexCount, pointSize) ||
        !Holds(*shape->faces, shape->faceCount, faceSize) ||
        (shape->texture && !Holds(*shape->texture, shape->vertexCount, textureSize)) ||
        (shape->flags && !Holds(*shape->flags, shape->vertexCount, flagSize)))
        return false;
    for (size_t face = 0; face < shape->faceCount; ++face)
        for (size_t corner = 0; corner < 3; ++corner)
            if (Mc3dsCorner(*shape, face, corner) >= shape->vertexCount)
                return false;
    return true;
}

std::vector<bool> Mc3dsUsedVertices(const Mc3dsShape &shape)
{
    std::vector<bool> isUsed(shape.vertexCount);
    for (size_t face = 0; face < shape.faceCount; ++face)
        for (size_t corner = 0; corner < 3; ++corner)
            isUsed[Mc3dsCorner(shape, face, corner)] = true;
    return isUsed;
}

static void Pick(Mc3dsTree *tree, Mc3dsPart *array, size_t size, const std::vector<uint16_t> &from)
{
    std::string bytes;
    bytes.reserve(2 + from.size() * size);
    Mc3dsAppendNumber(&bytes, static_cast<uint16_t>(from.size()));
    for (const uint16_t old : from)
        bytes.append(Mc3dsContent(*array).substr(2 + old * size, size));
    Mc3dsSetContent(tree, array, std::move(bytes));
}

void Mc3dsSetVertices(Mc3dsTree *tree, const Mc3dsShape &shape, const std::vector<uint16_t> &from,
                      const std::vector<uint16_t> &corners)
{
    Pick(tree, shape.points, pointSize, from);
    if (shape.texture)
        Pick(tree, shape.texture, textureSize, from);
    if (shape.flags)
        Pick(tree, shape.flags, flagSize, from);
    std::string faces(Mc3dsContent(*shape.faces));
    for (size_t i = 0; i < corners.size(); ++i) {
        const size_t at = 2 + faceSize * (i / 3) + 2 * (i % 3);
        faces[at] = static_cast<char>(corners[i] & 0xFF);
        faces[at + 1] = static_cast<char>(corners[i] >> 8);
    }
    Mc3dsSetContent(tree, shape.faces, std::move(faces));
}
