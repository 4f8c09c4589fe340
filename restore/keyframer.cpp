#include "keyframer.h"

#include <algorithm>
#include <unordered_map>

static bool IsDummy(std::string_view name)
{
    constexpr std::string_view dummy = "$$$dummy";
    return name.size() == dummy.size() &&
           std::equal(name.begin(), name.end(), dummy.begin(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

static void AddMeshes(Mc3dsPart *editor, Mc3dsKeyframer *keyframer)
{
    keyframer->meshes.reserve(keyframer->meshes.size() + editor->children.size());
    for (Mc3dsPart &object : editor->children) {
        Mc3dsPart *mesh = object.tag == Mc3dsTagObject ? Mc3dsFindPart(&object, Mc3dsTagMesh) : nullptr;
        if (mesh && !Mc3dsFindPart(&object, Mc3dsTagHidden))
            keyframer->meshes.push_back(
                {&object, mesh, std::string(Mc3dsTextOf(Mc3dsContent(object)).substr(0, Mc3dsNameMost))});
    }
}

static void ReadHeader(std::string_view content, Mc3dsNode *node)
{
    const std::string_view name = Mc3dsTextOf(content);
    const size_t at = name.size() + 1;
    node->hasHeader = content.size() >= at + 6;
    if (!node->hasHeader)
        return;
    node->name = name.substr(0, Mc3dsNameMost);
    node->parentField = Mc3dsNumberAt<uint16_t>(content, at + 4);
}

static void ReadPart(const Mc3dsPart &part, Mc3dsNode *node)
{
    const std::string_view content = Mc3dsContent(part);
    bool isGood = true;
    switch (part.tag) {
    case Mc3dsTagNodeId:
        if (content.size() >= 2)
            node->id = Mc3dsNumberAt<uint16_t>(content, 0);
        break;
    case Mc3dsTagPivot:
        isGood = content.size() >= 12;
        for (size_t i = 0; i < 3 && isGood; ++i) {
            node->pivot[i] = static_cast<double>(Mc3dsNumberAt<float>(content, 4 * i));
            isGood = std::isfinite(node->pivot[i]);
        }
        break;
    case Mc3dsTagPositions: isGood = Mc3dsReadTrack(content, 3, &node->positions); break;
    case Mc3dsTagRotations:
        if (node->isObject) // the same number is a camera's or a spotlight's own track elsewhere
            isGood = Mc3dsReadTrack(content, 4, &node->turns);
        break;
    case Mc3dsTagScales:
        if (node->isObject)
            isGood = Mc3dsReadTrack(content, 3, &node->scales);
        break;
    default: break;
    }
    node->isDamaged = node->isDamaged || !isGood;
}

static void AddNode(Mc3dsPart *part, uint32_t *number, Mc3dsKeyframer *keyframer)
{
    Mc3dsNode node;
    node.part = part;
    node.isObject = part->tag == Mc3dsTagObjectNode;
    const bool isAmbient = part->tag == Mc3dsTagAmbientNode;
    if (!isAmbient)
        node.number = (*number)++;
    if (const Mc3dsPart *header = Mc3dsFindPart(part, Mc3dsTagNodeHeader))
        ReadHeader(Mc3dsContent(*header), &node);
    node.isDamaged = !node.hasHeader;
    for (const Mc3dsPart &child : part->children)
        ReadPart(child, &node);
    keyframer->hasIds = keyframer->hasIds || node.id != UINT32_MAX;
    keyframer->hasAmbient = keyframer->hasAmbient || isAmbient;
    keyframer->nodes.push_back(std::move(node));
}

static void FindMeshes(Mc3dsKeyframer *keyframer)
{
    std::unordered_map<std::string_view, size_t> byName;
    for (size_t i = 0; i < keyframer->meshes.size(); ++i)
        byName.try_emplace(keyframer->meshes[i].name, i);
    size_t dummies = 0;
    for (size_t i = 0; i < keyframer->nodes.size(); ++i) {
        Mc3dsNode &node = keyframer->nodes[i];
        if (!node.isObject)
            continue;
        if (const auto found = byName.find(node.name); found != byName.end()) {
            node.mesh = found->second;
            keyframer->meshes[node.mesh].node = i;
            ++keyframer->meshes[node.mesh].nodeCount;
        } else if (IsDummy(node.name)) {
            node.dummy = dummies++;
        }
    }
}

static void FindParents(Mc3dsKeyframer *keyframer)
{
    std::unordered_map<uint32_t, size_t> byNumber;
    std::vector<Mc3dsNode> &nodes = keyframer->nodes;
    for (size_t i = 0; i < nodes.size(); ++i)
        if (const uint32_t number = keyframer->hasIds ? nodes[i].id : nodes[i].number; number != UINT32_MAX)
            byNumber.try_emplace(number, i);
    for (Mc3dsNode &node : nodes)
        if (const auto found = byNumber.find(node.parentField);
            node.parentField != Mc3dsNoParent && found != byNumber.end())
            node.parent = found->second;
}

// Puts each node after its parent. Nodes in a ring, and those below it, are lost.
static void SortNodes(Mc3dsKeyframer *keyframer)
{
    std::vector<Mc3dsNode> &nodes = keyframer->nodes;
    std::vector<size_t> &order = keyframer->parentsFirst;
    std::vector<size_t> firstChild(nodes.size(), Mc3dsNothing), nextSibling(nodes.size(), Mc3dsNothing);
    for (size_t i = nodes.size(); i-- > 0;)
        if (const size_t parent = nodes[i].parent; parent != Mc3dsNothing) {
            nextSibling[i] = firstChild[parent];
            firstChild[parent] = i;
        }
    for (size_t i = 0; i < nodes.size(); ++i) {
        nodes[i].isLost = nodes[i].parent != Mc3dsNothing;
        if (!nodes[i].isLost)
            order.push_back(i);
    }
    for (size_t done = 0; done < order.size(); ++done)
        for (size_t child = firstChild[order[done]]; child != Mc3dsNothing; child = nextSibling[child]) {
            nodes[child].isLost = false;
            order.push_back(child);
        }
}

Mc3dsKeyframer Mc3dsReadKeyframer(Mc3dsTree *tree)
{
    Mc3dsKeyframer keyframer;
    uint32_t number = 0;
    if (tree->root.tag == Mc3dsTagEditor)
        keyframer.editors.push_back(&tree->root);
    for (Mc3dsPart &section : tree->root.children) {
        if (section.tag == Mc3dsTagEditor)
            keyframer.editors.push_back(&section);
        if (section.tag != Mc3dsTagKeyframer)
            continue;
        keyframer.nodes.reserve(keyframer.nodes.size() + section.children.size());
        for (Mc3dsPart &child : section.children) {
            if (child.tag >= Mc3dsTagAmbientNode && child.tag <= Mc3dsTagSpotNode)
                AddNode(&child, &number, &keyframer);
            const std::string_view content = Mc3dsContent(child);
            const size_t at = content.size() > 2 ? 2 + Mc3dsTextOf(content.substr(2)).size() + 1 : 0;
            if (child.tag == Mc3dsTagFrames && at != 0 && content.size() >= at + 4)
                keyframer.frameCount = Mc3dsNumberAt<uint32_t>(content, at);
        }
    }
    for (Mc3dsPart *editor : keyframer.editors)
        AddMeshes(editor, &keyframer);
    FindMeshes(&keyframer);
    FindParents(&keyframer);
    SortNodes(&keyframer);
    return keyframer;
}

Mc3dsMatrix Mc3dsMeshMatrix(const Mc3dsPart &mesh)
{
    Mc3dsMatrix matrix;
    const Mc3dsPart *part = Mc3dsFindPart(&mesh, Mc3dsTagMatrix);
    if (part && Mc3dsContent(*part).size() >= 48)
        for (size_t i = 0; i < 12; ++i)
            matrix.rows[i / 3][i % 3] = static_cast<double>(Mc3dsNumberAt<float>(Mc3dsContent(*part), 4 * i));
    return matrix;
}

Mc3dsMatrix Mc3dsToNode(const Mc3dsNode &node, bool meshMirrors)
{
    Mc3dsMatrix matrix = Mc3dsTranslation({-node.pivot[0], -node.pivot[1], -node.pivot[2]});
    if (meshMirrors)
        matrix.rows[0][0] = -1;
    return matrix;
}

static Mc3dsMatrix OwnPlacement(const Mc3dsNode &node, double frame)
{
    Mc3dsMatrix own;
    if (!node.turns.keys.empty())
        own = Mc3dsTurnAt(node.turns, frame);
    if (!node.scales.keys.empty()) {
        const Mc3dsPoint scale = Mc3dsPointAt(node.scales, frame);
        for (size_t axis = 0; axis < 3; ++axis)
            for (double &number : own.rows[axis])
                number *= scale[axis];
    }
    if (!node.positions.keys.empty())
        own.rows[3] = Mc3dsPointAt(node.positions, frame);
    return own;
}

// Where a mesh without keys puts its children: its own placement stays the stored one.
static Mc3dsMatrix StoredPlacement(const Mc3dsKeyframer &keyframer, const Mc3dsNode &node)
{
    const Mc3dsMatrix stored = Mc3dsMeshMatrix(*keyframer.meshes[node.mesh].mesh);
    Mc3dsMatrix back;
    if (!Mc3dsInverse(Mc3dsToNode(node, Mc3dsDeterminant(stored) < 0), &back))
        return stored;
    return Mc3dsProduct(back, stored);
}

std::vector<Mc3dsMatrix> Mc3dsPlacementsAt(const Mc3dsKeyframer &keyframer, double frame)
{
    std::vector<Mc3dsMatrix> placements(keyframer.nodes.size());
    for (const size_t i : keyframer.parentsFirst) {
        const Mc3dsNode &node = keyframer.nodes[i];
        if (node.mesh != Mc3dsNothing && !Mc3dsHasTracks(node)) {
            placements[i] = StoredPlacement(keyframer, node);
            continue;
        }
        placements[i] = OwnPlacement(node, frame);
        if (node.parent != Mc3dsNothing)
            placements[i] = Mc3dsProduct(placements[i], placements[node.parent]);
    }
    return placements;
}
