// Removes vertices that no face uses, where they set the bounds of the scene.
#include <algorithm>
#include <limits>

#include "parts.h"
#include "vertices.h"

struct StrayBounds {
    float least[3], most[3];
};

static float NumberOf(const Mc3dsShape &shape, size_t vertex, size_t axis)
{
    return Mc3dsNumberAt<float>(Mc3dsContent(*shape.points), 2 + 12 * vertex + 4 * axis);
}

static void Grow(const Mc3dsShape &shape, const std::vector<bool> &isUsed, StrayBounds *box)
{
    for (size_t vertex = 0; vertex < shape.vertexCount; ++vertex)
        for (size_t axis = 0; axis < 3 && isUsed[vertex]; ++axis) {
            const float number = NumberOf(shape, vertex, axis);
            box->least[axis] = std::min(box->least[axis], number);
            box->most[axis] = std::max(box->most[axis], number);
        }
}

// Also true for numbers that aren't finite.
static bool IsOutside(const Mc3dsShape &shape, size_t vertex, const StrayBounds &box)
{
    for (size_t axis = 0; axis < 3; ++axis) {
        const float number = NumberOf(shape, vertex, axis);
        if (!(number >= box.least[axis] && number <= box.most[axis]))
            return true;
    }
    return false;
}

static void RemoveStrays(Mc3dsRestoring *restoring, const Mc3dsMeshPart &mesh, const Mc3dsShape &shape,
                         const StrayBounds &box)
{
    const std::vector<bool> isUsed = Mc3dsUsedVertices(shape);
    std::vector<uint16_t> from, numbers(shape.vertexCount), corners;
    for (size_t vertex = 0; vertex < shape.vertexCount; ++vertex) {
        numbers[vertex] = static_cast<uint16_t>(from.size());
        if (isUsed[vertex] || !IsOutside(shape, vertex, box))
            from.push_back(static_cast<uint16_t>(vertex));
    }
    if (from.size() == shape.vertexCount)
        return;
    for (size_t face = 0; face < shape.faceCount; ++face)
        for (size_t corner = 0; corner < 3; ++corner)
            corners.push_back(numbers[Mc3dsCorner(shape, face, corner)]);
    Mc3dsSetVertices(&restoring->tree, shape, from, corners);
    Mc3dsRecord(restoring, Mc3dsRestoreKind::Strays, mesh.name, shape.vertexCount - from.size());
}

void Mc3dsRestoreStrays(Mc3dsRestoring *restoring)
{
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    constexpr float most = std::numeric_limits<float>::max();
    StrayBounds box = {{most, most, most}, {-most, -most, -most}};
    std::vector<const Mc3dsMeshPart *> suspects; // with vertices that no face uses
    for (const Mc3dsMeshPart &mesh : keyframer.meshes) {
        Mc3dsShape shape;
        if (!Mc3dsReadShape(mesh.mesh, &shape))
            continue;
        const std::vector<bool> isUsed = Mc3dsUsedVertices(shape);
        Grow(shape, isUsed, &box);
        if (std::find(isUsed.begin(), isUsed.end(), false) != isUsed.end())
            suspects.push_back(&mesh);
    }
    if (box.least[0] > box.most[0]) // no faces
        return;
    for (const Mc3dsMeshPart *mesh : suspects)
        if (Mc3dsShape shape; Mc3dsReadShape(mesh->mesh, &shape))
            RemoveStrays(restoring, *mesh, shape, box);
}
