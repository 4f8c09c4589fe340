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

static void SplitVertices(Mc3dsRestoring *restoring, const Mc3dsMeshPart &mesh, const Mc3dsShape &shape)
{
    constexpr auto kind = Mc3dsRestoreKind::Edges;
    constexpr uint64_t bytesOfVertex = 12 + 8 + 2;
    const std::vector<uint32_t> groups = GroupsOf(shape);
    if (groups.empty())
        return;
    const CornersOf sorted = SortCorners(shape);
    std::vector<size_t> from(shape.vertexCount);
    std::iota(from.begin(), from.end(), size_t{0});
    std::vector<size_t> corners(3 * shape.faceCount);
    for (size_t vertex = 0; vertex < shape.vertexCount; ++vertex) {
        const uint32_t *first = sorted.corners.data() + sorted.start[vertex];
        const size_t count = sorted.start[vertex + 1] - sorted.start[vertex];
        const std::vector<uint32_t> joined = Join(groups, first, count);
        std::vector<size_t> vertexOf(joined.size(), Mc3dsNothing);
        bool isTaken = false;
        const auto fresh = [&from, &isTaken, vertex] {
            if (isTaken)
                from.push_back(vertex);
            const size_t number = isTaken ? from.size() - 1 : vertex;
            isTaken = true;
            return number;
        };
        for (size_t i = 0; i < count; ++i) {
            const uint32_t own = groups[first[i] / 3];
            size_t group = 0;
            while (group < joined.size() && (joined[group] & own) == 0)
                ++group;
            if (group == joined.size())
                corners[first[i]] = fresh();
            else
                corners[first[i]] = vertexOf[group] =
                    vertexOf[group] != Mc3dsNothing ? vertexOf[group] : fresh();
        }
    }
    const uint64_t added = from.size() - shape.vertexCount;
    if (added == 0)
        return;
    if (from.size() > Mc3dsVerticesMost) {
        Mc3dsRecord(restoring, kind, mesh.name, 0, Mc3dsRestoreLimit::TooManyVertices);
        return;
    }
    if (!Mc3dsTakeRoom(restoring, kind, mesh.name, added * bytesOfVertex))
        return;
    Mc3dsSetVertices(&restoring->tree, shape, {from.begin(), from.end()}, {corners.begin(), corners.end()});
    Mc3dsRecord(restoring, kind, mesh.name, added);
}

void Mc3dsRestoreEdges(Mc3dsRestoring *restoring)
{
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    for (const Mc3dsMeshPart &mesh : keyframer.meshes)
        if (Mc3dsShape shape; Mc3dsReadShape(mesh.mesh, &shape))
            SplitVertices(restoring, mesh, shape);
}
