// Meshes stand as in frame 0 of the keyframer, and nodes hang on objects.
#include <algorithm>
#include <cmath>

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

// As the numbers are after they were stored.
static Mc3dsMatrix Rounded(Mc3dsMatrix m)
{
    for (Mc3dsPoint &row : m.rows)
        for (double &number : row)
            number = static_cast<double>(static_cast<float>(number));
    return m;
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

static std::string MovedPoints(std::string_view points, const Mc3dsMatrix &way)
{
    std::string moved(points.substr(0, 2));
    moved.reserve(points.size());
    for (size_t i = 0; i < Mc3dsNumberAt<uint16_t>(points, 0); ++i)
        for (const double number : Mc3dsMove(PointAt(points, i), way))
            Mc3dsAppendNumber(&moved, static_cast<float>(number));
    return moved.append(points.substr(moved.size()));
}

// Which vertices count for the pose of a mesh: those that faces use; empty if all count.
static std::vector<bool> VerticesOfFaces(Mc3dsPart *mesh)
{
    Mc3dsShape shape;
    if (!Mc3dsReadShape(mesh, &shape) || shape.faceCount == 0)
        return {};
    return Mc3dsUsedVertices(shape);
}

struct PoseBounds {
    Mc3dsPoint least = {INFINITY, INFINITY, INFINITY}, most = {-INFINITY, -INFINITY, -INFINITY};
};

static PoseBounds BoundsOf(const std::vector<bool> &counts, std::string_view points)
{
    float least[3] = {INFINITY, INFINITY, INFINITY}, most[3] = {-INFINITY, -INFINITY, -INFINITY};
    const size_t count = Mc3dsNumberAt<uint16_t>(points, 0);
    for (size_t i = 0; i < count; ++i) {
        if (!counts.empty() && !counts[i])
            continue;
        for (size_t c = 0; c < 3; ++c) {
            const float number = Mc3dsNumberAt<float>(points, 2 + 12 * i + 4 * c);
            least[c] = number < least[c] ? number : least[c];
            most[c] = number > most[c] ? number : most[c];
        }
    }
    PoseBounds bounds;
    for (size_t c = 0; c < 3; ++c) {
        bounds.least[c] = static_cast<double>(least[c]);
        bounds.most[c] = static_cast<double>(most[c]);
    }
    return bounds;
}

// Whether anything in a box moves by more than the rounding of stored numbers. Nothing moves further than the
// corners. least: the size of numbers that the way works with.
static bool Moves(const PoseBounds &box, const Mc3dsMatrix &way, double least)
{
    constexpr double rounding = 2e-5; // of keys and matrices, relative to the largest number
    double furthest = 0, largest = least;
    for (size_t corner = 0; corner < 8 && box.least[0] <= box.most[0]; ++corner) {
        Mc3dsPoint before;
        for (size_t c = 0; c < 3; ++c)
            before[c] = corner & (size_t{1} << c) ? box.most[c] : box.least[c];
        const Mc3dsPoint after = Mc3dsMove(before, way);
        for (size_t c = 0; c < 3; ++c)
            furthest = std::max(furthest, std::abs(after[c] - before[c]));
        largest = std::max({largest, Largest(before), Largest(after)});
    }
    return !(furthest <= rounding * largest);
}

static void SetMatrix(Mc3dsTree *tree, Mc3dsPart *mesh, const Mc3dsMatrix &matrix)
{
    if (Mc3dsPart *part = Mc3dsFindPart(mesh, Mc3dsTagMatrix))
        Mc3dsSetContent(tree, part, PackedMatrix(matrix));
    else
        mesh->children.push_back(Mc3dsMakePart(tree, Mc3dsTagMatrix, PackedMatrix(matrix)));
}

// Whether a mesh with these vertices and this matrix stands where its node puts it.
static bool Stands(const std::vector<bool> &counts, std::string_view points, const Mc3dsMatrix &matrix,
                   const Mc3dsNode &node, const Mc3dsMatrix &placement)
{
    Mc3dsMatrix back;
    const Mc3dsMatrix posed = Mc3dsProduct(Mc3dsToNode(node, Mc3dsDeterminant(matrix) < 0), placement);
    const double least = std::max(Largest(matrix.rows[3]), Largest(placement.rows[3]));
    return Mc3dsInverse(matrix, &back) && !Moves(BoundsOf(counts, points), Mc3dsProduct(back, posed), least);
}

// isTurnedOver: the node's placement was turned over, and the mesh's own space has to be as well.
static void PoseMesh(Mc3dsRestoring *restoring, const Mc3dsMeshPart &mesh, const Mc3dsNode &node,
                     const Mc3dsMatrix &placement, bool isTurnedOver)
{
    if (!Mc3dsCanMove(*mesh.mesh))
        return;
    const Mc3dsMatrix stored = Mc3dsMeshMatrix(*mesh.mesh);
    Mc3dsPart *points = Mc3dsFindPart(mesh.mesh, Mc3dsTagPoints);
    const std::vector<bool> counts = VerticesOfFaces(mesh.mesh);
    if (!isTurnedOver && Stands(counts, Mc3dsContent(*points), stored, node, placement))
        return;
    const bool mirrors = (Mc3dsDeterminant(stored) < 0) != isTurnedOver;
    const Mc3dsMatrix posed = Rounded(Mc3dsProduct(Mc3dsToNode(node, mirrors), placement));
    Mc3dsMatrix back;
    std::string moved;
    if (Mc3dsInverse(stored, &back))
        moved = MovedPoints(Mc3dsContent(*points), Mc3dsProduct(back, posed));
    if (moved.empty() || !Stands(counts, moved, posed, node, placement)) {
        Mc3dsRecord(restoring, kind, mesh.name, 0, Mc3dsRestoreLimit::NoInverse);
        return;
    }
    if (!Mc3dsTakeRoom(restoring, kind, mesh.name, 60))
        return;
    Mc3dsSetContent(&restoring->tree, points, std::move(moved));
    SetMatrix(&restoring->tree, mesh.mesh, posed);
    Mc3dsRecord(restoring, kind, mesh.name, 1);
}

// ---- Parents

static bool HasObject(const Mc3dsNode &node)
{
    return node.mesh != Mc3dsNothing || node.dummy != Mc3dsNothing;
}

// Adds a place to all positions of a node.
static void ShiftKeys(Mc3dsTree *tree, Mc3dsPart *node, const Mc3dsPoint &by)
{
    Mc3dsPart *track = Mc3dsFindPart(node, Mc3dsTagPositions);
    if (!track || Mc3dsNumberAt<uint32_t>(Mc3dsContent(*track), 10) == 0) {
        std::erase_if(node->children, [](const Mc3dsPart &part) { return part.tag == Mc3dsTagPositions; });
        node->children.push_back(Mc3dsMakePart(tree, Mc3dsTagPositions, Mc3dsOneKey({0, 0, 0})));
        track = &node->children.back();
    }
    std::string bytes(Mc3dsContent(*track));
    Mc3dsChangeKeys(&bytes, 3, [&by](float *place) {
        for (size_t c = 0; c < 3; ++c)
            place[c] = static_cast<float>(static_cast<double>(place[c]) + by[c]);
    });
    Mc3dsSetContent(tree, track, std::move(bytes));
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
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    bool isAny = false;
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
        const std::string &name = node.name;
        const std::string_view content = Mc3dsContent(*header);
        Mc3dsSetContent(&restoring->tree, header,
                        "$$$DUMMY" + std::string(content.substr(Mc3dsTextOf(content).size())));
        Mc3dsRecord(restoring, kind, name, 0);
        isAny = true;
    }
    if (isAny)
        restoring->keyframer.reset();
}

// Readers that number nodes by their order see the wanted parent.
static bool IsRight(const Mc3dsKeyframer &keyframer, const Mc3dsNode &node, size_t wanted)
{
    const uint32_t number = wanted == Mc3dsNothing ? Mc3dsNoParent : keyframer.nodes[wanted].number;
    return node.parentField == number;
}

static uint16_t NumberOf(const Mc3dsKeyframer &keyframer, size_t node)
{
    const uint32_t number =
        keyframer.nodes[node].number; // the ambient light has none, and nothing hangs on it
    return static_cast<uint16_t>(number == UINT32_MAX ? keyframer.nodes.size() : number);
}

static void SetNumbers(Mc3dsTree *tree, const Mc3dsKeyframer &keyframer, const std::vector<size_t> &parents)
{
    for (size_t i = 0; i < keyframer.nodes.size(); ++i) {
        const Mc3dsNode &node = keyframer.nodes[i];
        std::string parent, id;
        if (node.hasHeader) {
            Mc3dsPart *header = Mc3dsFindPart(node.part, Mc3dsTagNodeHeader);
            std::string bytes(Mc3dsContent(*header));
            Mc3dsAppendNumber(&parent,
                              parents[i] == Mc3dsNothing ? Mc3dsNoParent : NumberOf(keyframer, parents[i]));
            bytes.replace(Mc3dsTextOf(bytes).size() + 5, 2, parent);
            Mc3dsSetContent(tree, header, std::move(bytes));
        }
        if (!keyframer.hasIds && !keyframer.hasAmbient)
            continue;
        Mc3dsAppendNumber(&id, NumberOf(keyframer, i));
        std::erase_if(node.part->children, [](const Mc3dsPart &part) { return part.tag == Mc3dsTagNodeId; });
        node.part->children.insert(node.part->children.begin(), Mc3dsMakePart(tree, Mc3dsTagNodeId, id));
    }
}

// Every object hangs on an object or on the scene, and its number and its NODE_ID agree.
static void RestoreParents(Mc3dsRestoring *restoring)
{
    constexpr uint64_t roomForNode = 64;
    MakeDummies(restoring);
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
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
            ShiftKeys(&restoring->tree, keyframer.nodes[i].part, shifts[i]);
    SetNumbers(&restoring->tree, keyframer, parents);
    for (const size_t i : wrong)
        Mc3dsRecord(restoring, kind, keyframer.nodes[i].name, 0);
    restoring->keyframer.reset();
}

void Mc3dsRestorePose(Mc3dsRestoring *restoring, bool onlyCopies)
{
    if (!onlyCopies)
        RestoreParents(restoring);
    const std::vector<bool> isTurnedOver = Mc3dsTurnMirroredNodes(restoring);
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    const std::vector<Mc3dsMatrix> placements = Mc3dsPlacementsAt(keyframer, 0);
    for (const Mc3dsMeshPart &mesh : keyframer.meshes) {
        if (mesh.node == Mc3dsNothing ||
            (onlyCopies && !isTurnedOver[mesh.node] && !restoring->copies.contains(mesh.name)))
            continue;
        const Mc3dsNode &node = keyframer.nodes[mesh.node];
        if (node.isDamaged)
            Mc3dsRecord(restoring, kind, mesh.name, 0, Mc3dsRestoreLimit::DamagedKeys);
        else if (!node.isLost && Mc3dsHasTracks(node))
            PoseMesh(restoring, mesh, node, placements[mesh.node], isTurnedOver[mesh.node]);
    }
}

std::vector<std::string> Mc3dsFindElsewhere(std::string_view scene)
{
    std::vector<std::string> names;
    Mc3dsTree tree;
    if (!Mc3dsReadTree(scene, &tree) || !Mc3dsIsSound(tree))
        return names;
    const Mc3dsKeyframer keyframer = Mc3dsReadKeyframer(&tree);
    const std::vector<Mc3dsMatrix> placements = Mc3dsPlacementsAt(keyframer, 0);
    for (const Mc3dsMeshPart &mesh : keyframer.meshes) {
        Mc3dsMatrix unused;
        if (mesh.node == Mc3dsNothing || !Mc3dsCanMove(*mesh.mesh))
            continue;
        const Mc3dsNode &node = keyframer.nodes[mesh.node];
        const Mc3dsMatrix stored = Mc3dsMeshMatrix(*mesh.mesh);
        const std::string_view points = Mc3dsContent(*Mc3dsFindPart(mesh.mesh, Mc3dsTagPoints));
        if (!node.isDamaged && !node.isLost && Mc3dsHasTracks(node) && Mc3dsInverse(stored, &unused) &&
            !Stands({}, points, stored, node, placements[mesh.node]))
            names.push_back(mesh.name);
    }
    return names;
}
