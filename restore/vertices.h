// The vertices and faces of a mesh as they are in the file.
#ifndef MC3DS_RESTORE_VERTICES_H
#define MC3DS_RESTORE_VERTICES_H

#include "chunk_tree.h"

constexpr size_t Mc3dsVerticesMost = 65535;

struct Mc3dsShape {
    Mc3dsPart *points = nullptr, *faces = nullptr;
    Mc3dsPart *texture = nullptr, *flags = nullptr; // one entry for each vertex; null if there are none
    size_t vertexCount = 0, faceCount = 0;
};

// False if the mesh has no or several arrays of a kind, or they don't fit each other; it is left alone then.
bool Mc3dsReadShape(Mc3dsPart *mesh, Mc3dsShape *shape);
// The vertex of a corner of a face.
inline size_t Mc3dsCorner(const Mc3dsShape &shape, size_t face, size_t corner)
{
    return Mc3dsNumberAt<uint16_t>(Mc3dsContent(*shape.faces), 2 + 8 * face + 2 * corner);
}
// Which vertices faces use.
std::vector<bool> Mc3dsUsedVertices(const Mc3dsShape &shape);
// Makes new vertices of old ones. from: the old vertex of each new one. corners: the new vertices of the
// faces, three each.
void Mc3dsSetVertices(Mc3dsTree *tree, const Mc3dsShape &shape, const std::vector<uint16_t> &from,
                      const std::vector<uint16_t> &corners);

#endif
