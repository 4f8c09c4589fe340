// Doubles vertices where faces without a common smoothing group meet, so that smooth shading stops there.
#include <numeric>

#include "parts.h"
#include "vertices.h"

// The smoothing groups of each face, a bit each; empty if the mesh says nothing of them.
static std::vector<uint32_t> GroupsOf(const Mc3dsShape &shape)
{
    std::vector<uint32_t> groups;
    const Mc3dsPart *part = Mc3dsFindPart(shape.faces, Mc3dsTagSmoothing);
    if (!part || Mc3dsContent(*part).size() < 4 * shape.faceCount)
        return groups;
    for (size_t face = 0; face < shape.faceCount; ++face)
        groups.push_back(Mc3dsNumberAt<uint32_t>(Mc3dsContent(*part), 4 * face));
    return groups;
}

// The corners of all faces by their vertices.
struct CornersOf {
    std::vector<uint32_t> start;   // of each vertex in corners, and the end
    std::vector<uint32_t> corners; // 3 times the face plus the corner
};

static CornersOf SortCorners(const Mc3dsShape &shape)
{
    CornersOf sorted = {std::vector<uint32_t>(shape.vertexCount + 1),
                        std::vector<uint32_t>(3 * shape.faceCount)};
    for (size_t i = 0; i < 3 * shape.faceCount; ++i)
        ++sorted.start[Mc3dsCorner(shape, i / 3, i % 3) + 1];
    std::partial_sum(sorted.start.begin(), sorted.start.end(), sorted.start.begin());
    std::vector<uint32_t> next = sorted.start;
    for (size_t i = 0; i < 3 * shape.faceCount; ++i)
        sorted.corners[next[Mc3dsCorner(shape, i / 3, i % 3)]++] = static_cast<uint32_t>(i);
    return sorted;
}

// Puts the groups at a vertex together that some face joins, and returns them; faces without a group are not
// here.
static std::vector<uint32_t> Join(const std::vector<uint32_t> &groups, const uint32_t *corners, size_t count)
{
    std::vector<uint32_t> joined;
    for (size_t i = 0; i < count; ++i) {
        uint32_t own = groups[corners[i] / 3];
        if (own == 0)
            continue;
        std::erase_if(joined, [&own](uint32_t other) {
            const bool meets = (own & other) != 0;
            own |= meets ? other : 0;
            return meets;
        });
        joined.push_back(own);
    }
    return joined;
}

// New vertices of a mesh: the old one of each, and the new ones of all corners.
struct Split {
    std::vector<size_t> from, corners;
};

// Splits one vertex: its first group keeps it, each other one gets a new vertex. corners: of faces at the
// vertex.
static void SplitVertex(const std::vector<uint32_t> &groups, const uint32_t *corners, size_t count,
                        size_t vertex, Split *split)
{
    const std::vector<uint32_t> joined = Join(groups, corners, count);
    std::vector<size_t> vertexOf(joined.size(), Mc3dsNothing);
    bool isTaken = false;
    const auto fresh = [split, &isTaken, vertex] {
        if (isTaken)
            split->from.push_back(vertex);
        const size_t number = isTaken ? split->from.size() - 1 : vertex;
        isTaken = true;
        return number;
    };
    for (size_t i = 0; i < count; ++i) {
        const uint32_t own = groups[corners[i] / 3];
        size_t group = 0;
        while (group < joined.size() && (joined[group] & own) == 0)
            ++group;
        size_t number = group < joined.size() ? vertexOf[group] : Mc3dsNothing;
        if (number == Mc3dsNothing)
            number = fresh();
        if (group < joined.size())
            vertexOf[group] = number;
        split->corners[corners[i]] = number;
    }
}

static void SplitVertices(Mc3dsRestoring *restoring, const Mc3dsMeshPart &mesh, const Mc3dsShape &shape)
{
    constexpr auto kind = Mc3dsRestoreKind::Edges;
    constexpr uint64_t bytesOfVertex = 12 + 8 + 2;
    const std::vector<uint32_t> groups = GroupsOf(shape);
    if (groups.empty())
        return;
    const CornersOf sorted = SortCorners(shape);
    Split split = {std::vector<size_t>(shape.vertexCount), std::vector<size_t>(3 * shape.faceCount)};
    std::iota(split.from.begin(), split.from.end(), size_t{0});
    for (size_t vertex = 0; vertex < shape.vertexCount; ++vertex)
        SplitVertex(groups, sorted.corners.data() + sorted.start[vertex],
                    sorted.start[vertex + 1] - sorted.start[vertex], vertex, &split);
    const uint64_t added = split.from.size() - shape.vertexCount;
    if (added == 0)
        return;
    if (split.from.size() > Mc3dsVerticesMost) {
        Mc3dsRecord(restoring, kind, mesh.name, 0, Mc3dsRestoreLimit::TooManyVertices);
        return;
    }
    if (!Mc3dsTakeRoom(restoring, kind, mesh.name, added * bytesOfVertex))
        return;
    Mc3dsSetVertices(&restoring->tree, shape, {split.from.begin(), split.from.end()},
                     {split.corners.begin(), split.corners.end()});
    Mc3dsRecord(restoring, kind, mesh.name, added);
}

void Mc3dsRestoreEdges(Mc3dsRestoring *restoring)
{
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    for (const Mc3dsMeshPart &mesh : keyframer.meshes)
        if (Mc3dsShape shape; Mc3dsReadShape(mesh.mesh, &shape))
            SplitVertices(restoring, mesh, shape);
}
