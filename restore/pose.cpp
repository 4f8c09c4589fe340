// Meshes stand as in frame 0 of the keyframer, and nodes hang on objects.
#include <algorithm>

#include "parts.h"
#include "vertices.h"

constexpr auto kind = Mc3dsRestoreKind::Pose;

static std::string PackedMatrix(const Mc3dsMatrix &m)
{
    std::string bytes;
    for (const Mc3dsPoint &row : m.rows)
        for (const double number : row)
            Mc3dsAppendNumber(&bytes, static_cast<float>(number));
    return bytes;
}

static Mc3dsPoint PointAt(std::string_view points, size_t index)
{
    Mc3dsPoint point;
    for (size_t i = 0; i < 3; ++i)
        point[i] = static_cast<double>(Mc3dsNumberAt<float>(points, 2 + 12 * index + 4 * i));
    return point;
}

static double Largest(const Mc3dsPoint &point)
{
    return std::max({std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
}

// The vertices after a way, in the form of the file. Empty if those that faces use move by no more than the
// rounding of the stored numbers. least: the size of numbers that the way works with.
static std::string MovedPoints(Mc3dsPart *mesh, std::string_view points, const Mc3dsMatrix &way, double least)
{
    constexpr double rounding = 2e-5; // of keys and matrices, relative to the largest number
    Mc3dsShape shape;
    const std::vector<bool> isUsed =
        Mc3dsReadShape(mesh, &shape) ? Mc3dsUsedVertices(shape) : std::vector<bool>();
    const bool hasFaces = std::find(isUsed.begin(), isUsed.end(), true) != isUsed.end();
    std::string moved(points.substr(0, 2));
    double furthest = 0, largest = least;
    for (size_t i = 0; i < (points.size() - 2) / 12; ++i) {
        const Mc3dsPoint before = PointAt(points, i), after = Mc3dsMove(before, way);
        for (const double number : after)
            Mc3dsAppendNumber(&moved, static_cast<float>(number));
        if (hasFaces && !isUsed[i])
            continue;
        for (size_t c = 0; c < 3; ++c)
            furthest = std::max(furthest, std::abs(after[c] - before[c]));
        largest = std::max({largest, Largest(before), Largest(after)});
    }
    return furthest > rounding * largest ? moved : "";
}

// True if the mesh has one array of vertices and one matrix at most, which is what can be moved.
static bool IsPlain(const Mc3dsPart &mesh)
{
    const Mc3dsPart *points = Mc3dsFindPart(&mesh, Mc3dsTagPoints);
    if (!points || Mc3dsCountParts(mesh, Mc3dsTagPoints) != 1 || Mc3dsCountParts(mesh, Mc3dsTagMatrix) > 1 ||
        !mesh.damaged.empty())
        return false;
    const std::string_view content = Mc3dsContent(*points);
    return content.size() >= 2 && content.size() == 2 + size_t{12} * Mc3dsNumberAt<uint16_t>(content, 0);
}

static void SetMatrix(Mc3dsPart *mesh, const Mc3dsMatrix &matrix)
{
    if (Mc3dsPart *part = Mc3dsFindPart(mesh, Mc3dsTagMatrix))
        Mc3dsSetContent(part, PackedMatrix(matrix));
    else
        mesh->children.push_back(Mc3dsMakePart(Mc3dsTagMatrix, PackedMatrix(matrix)));
}

static void PoseMesh(Mc3dsRestoring *restoring, const Mc3dsMeshPart &mesh, const Mc3dsNode &node,
                     const Mc3dsMatrix &placement)
{
    if (!IsPlain(*mesh.mesh))
        return;
    const Mc3dsMatrix stored = Mc3dsMeshMatrix(*mesh.mesh);
    const Mc3dsMatrix posed = Mc3dsProduct(Mc3dsToNode(node, stored), placement);
    Mc3dsMatrix back, unused;
    if (!Mc3dsInverse(stored, &back) || !Mc3dsInverse(posed, &unused)) {
        Mc3dsRecord(restoring, kind, mesh.name, 0, Mc3dsRestoreLimit::NoInverse);
        return;
    }
    Mc3dsPart *points = Mc3dsFindPart(mesh.mesh, Mc3dsTagPoints);
    const double least = std::max(Largest(stored.rows[3]), Largest(placement.rows[3]));
    std::string moved = MovedPoints(mesh.mesh, Mc3dsContent(*points), Mc3dsProduct(back, posed), least);
    if (moved.empty() || !Mc3dsTakeRoom(restoring, kind, mesh.name, 60))
        return;
    Mc3dsSetContent(points, std::move(moved));
    SetMatrix(mesh.mesh, posed);
    Mc3dsRecord(restoring, kind, mesh.name, 1);
}

// ---- Parents

static bool HasObject(const Mc3dsNode &node)
{
    return node.mesh != Mc3dsNothing || node.dummy != Mc3dsNothing;
}

// Adds a place to all positions of a node.
static void ShiftKeys(Mc3dsPart *node, const Mc3dsPoint &by)
{
    Mc3dsPart *track = Mc3dsFindPart(node, Mc3dsTagPositions);
    std::string bytes(track ? Mc3dsContent(*track) : std::string_view());
    if (!track) {
        bytes.assign(10, '\0');
        Mc3dsAppendNumber(&bytes, uint32_t{1});
        bytes.append(6 + 12, '\0');
        node->children.push_back(Mc3dsMakePart(Mc3dsTagPositions, bytes));
        track = &node->children.back();
    }
    const uint32_t count = Mc3dsNumberAt<uint32_t>(bytes, 10);
    size_t at = 14;
    for (uint32_t i = 0; i < count; ++i) {
        const uint16_t flags = Mc3dsNumberAt<uint16_t>(bytes, at + 4);
        at += 6;
        for (size_t bit = 0; bit < 5; ++bit)
            at += flags & (1u << bit) ? 4 : 0;
        std::string sum;
        for (size_t c = 0; c < 3; ++c)
            Mc3dsAppendNumber(
                &sum,
                static_cast<float>(static_cast<double>(Mc3dsNumberAt<float>(bytes, at + 4 * c)) + by[c]));
        bytes.replace(at, 12, sum);
        at += 12;
    }
    Mc3dsSetContent(track, std::move(bytes));
}

// The nearest object above a node. Lights and cameras between give it their place, as they only have one.
static size_t ObjectAbove(const Mc3dsKeyframer &keyframer, const Mc3dsNode &node, Mc3dsPoint *shift)
{
    size_t above = node.parent;
    while (above != Mc3dsNothing && !HasObject(keyframer.nodes[above])) {
        const Mc3dsNode &parent = keyframer.nodes[above];
        if (!parent.positions.keys.empty()) {
            const Mc3dsPoint place = Mc3dsPointAt(parent.positions, 0);
            for (size_t c = 0; c < 3; ++c)
                (*shift)[c] += place[c];
        }
        above = parent.parent;
    }
    return above;
}

// A node without an object, such as that of a hidden mesh, holds others in place: readers know it as a dummy.
static void MakeDummies(Mc3dsRestoring *restoring)
{
    Mc3dsKeyframer keyframer = Mc3dsReadKeyframer(&restoring->tree);
    std::vector<bool> holds(keyframer.nodes.size());
    for (auto i = keyframer.parentsFirst.rbegin(); i != keyframer.parentsFirst.rend(); ++i) {
        const Mc3dsNode &node = keyframer.nodes[*i];
        holds[*i] = holds[*i] || HasObject(node);
        if (holds[*i] && node.parent != Mc3dsNothing)
            holds[node.parent] = true;
        if (!holds[*i] || !node.isObject || HasObject(node) || node.isDamaged)
            continue;
        Mc3dsPart *header = Mc3dsFindPart(node.part, Mc3dsTagNodeHeader);
        if (!header)
            continue;
        const std::string name(node.name);
        const std::string_view content = Mc3dsContent(*header);
        Mc3dsSetContent(header, "$$$DUMMY" + std::string(content.substr(Mc3dsTextOf(content).size())));
        Mc3dsRecord(restoring, kind, name, 0);
    }
}

// Readers that number nodes by their order see the wanted parent.
static bool IsRight(const Mc3dsKeyframer &keyframer, const Mc3dsNode &node, size_t wanted)
{
    const uint32_t number = wanted == Mc3dsNothing ? Mc3dsNoParent : keyframer.nodes[wanted].number;
    return node.parentField == number;
}

static void SetNumbers(const Mc3dsKeyframer &keyframer, const std::vector<size_t> &parents)
{
    for (size_t i = 0; i < keyframer.nodes.size(); ++i) {
        const Mc3dsNode &node = keyframer.nodes[i];
        Mc3dsPart *header = Mc3dsFindPart(node.part, Mc3dsTagNodeHeader);
        if (!header || node.isDamaged || node.isLost)
            continue;
        std::string bytes(Mc3dsContent(*header)), parent, id;
        Mc3dsAppendNumber(&parent, static_cast<uint16_t>(parents[i] == Mc3dsNothing
                                                             ? Mc3dsNoParent
                                                             : keyframer.nodes[parents[i]].number));
        bytes.replace(Mc3dsTextOf(bytes).size() + 5, 2, parent);
        Mc3dsSetContent(header, std::move(bytes));
        if (!keyframer.hasIds && !keyframer.hasAmbient)
            continue;
        Mc3dsAppendNumber(
            &id, static_cast<uint16_t>(node.number == UINT32_MAX ? keyframer.nodes.size() : node.number));
        if (Mc3dsPart *own = Mc3dsFindPart(node.part, Mc3dsTagNodeId))
            Mc3dsSetContent(own, id);
        else
            node.part->children.insert(node.part->children.begin(), Mc3dsMakePart(Mc3dsTagNodeId, id));
    }
}

// Every object hangs on an object or on the scene, and its number and its NODE_ID agree.
static void RestoreParents(Mc3dsRestoring *restoring)
{
    constexpr uint64_t roomForNode = 64;
    MakeDummies(restoring);
    const Mc3dsKeyframer keyframer = Mc3dsReadKeyframer(&restoring->tree);
    std::vector<size_t> parents(keyframer.nodes.size(), Mc3dsNothing);
    std::vector<size_t> wrong;
    std::vector<Mc3dsPoint> shifts(keyframer.nodes.size());
    for (size_t i = 0; i < keyframer.nodes.size(); ++i) {
        const Mc3dsNode &node = keyframer.nodes[i];
        parents[i] = node.parent;
        if (!node.isObject || node.isDamaged || node.isLost)
            continue;
        parents[i] = ObjectAbove(keyframer, node, &shifts[i]);
        if (HasObject(node) && !IsRight(keyframer, node, parents[i]))
            wrong.push_back(i);
    }
    if (wrong.empty() || keyframer.nodes.size() >= 0x8000 ||
        !Mc3dsTakeRoom(restoring, kind, keyframer.nodes[wrong.front()].name,
                       roomForNode * keyframer.nodes.size()))
        return;
    for (size_t i = 0; i < keyframer.nodes.size(); ++i)
        if (shifts[i] != Mc3dsPoint{} && Mc3dsHasTracks(keyframer.nodes[i])) // without keys a mesh stays
            ShiftKeys(keyframer.nodes[i].part, shifts[i]);
    SetNumbers(keyframer, parents);
    for (const size_t i : wrong)
        Mc3dsRecord(restoring, kind, keyframer.nodes[i].name, 0);
}

void Mc3dsRestorePose(Mc3dsRestoring *restoring, bool onlyCopies)
{
    if (!onlyCopies)
        RestoreParents(restoring);
    const Mc3dsKeyframer keyframer = Mc3dsReadKeyframer(&restoring->tree);
    const std::vector<Mc3dsMatrix> placements = Mc3dsPlacementsAt(keyframer, 0);
    for (const Mc3dsMeshPart &mesh : keyframer.meshes) {
        if (mesh.node == Mc3dsNothing || (onlyCopies && !restoring->copies.contains(std::string(mesh.name))))
            continue;
        const Mc3dsNode &node = keyframer.nodes[mesh.node];
        if (node.isDamaged)
            Mc3dsRecord(restoring, kind, mesh.name, 0, Mc3dsRestoreLimit::DamagedKeys);
        else if (!node.isLost && Mc3dsHasTracks(node))
            PoseMesh(restoring, mesh, node, placements[mesh.node]);
    }
}
