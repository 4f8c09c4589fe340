// Nodes whose scale is negative mirror what hangs on them.
#include "parts.h"

bool Mc3dsCanMove(const Mc3dsPart &mesh)
{
    const Mc3dsPart *points = Mc3dsFindPart(&mesh, Mc3dsTagPoints);
    if (!points || Mc3dsCountParts(mesh, Mc3dsTagPoints) != 1 || Mc3dsCountParts(mesh, Mc3dsTagMatrix) > 1 ||
        mesh.damagedSize != 0)
        return false;
    const std::string_view content = Mc3dsContent(*points);
    return content.size() >= 2 && content.size() >= 2 + size_t{12} * Mc3dsNumberAt<uint16_t>(content, 0);
}

// first, count: the values of each key that change their sign.
static void Negate(Mc3dsTree *tree, Mc3dsPart *node, uint16_t tag, size_t first, size_t count)
{
    for (Mc3dsPart &part : node->children)
        if (part.tag == tag) {
            std::string bytes(Mc3dsContent(part));
            Mc3dsChangeKeys(&bytes, tag == Mc3dsTagRotations ? 4 : 3, [first, count](float *values) {
                for (size_t i = first; i < first + count; ++i)
                    values[i] = -values[i];
            });
            Mc3dsSetContent(tree, &part, std::move(bytes));
        }
}

static void NegatePivot(Mc3dsTree *tree, Mc3dsPart *node)
{
    for (Mc3dsPart &part : node->children)
        if (part.tag == Mc3dsTagPivot) {
            std::string bytes;
            Mc3dsAppendNumber(&bytes, -Mc3dsNumberAt<float>(Mc3dsContent(part), 0));
            Mc3dsSetContent(tree, &part, bytes + std::string(Mc3dsContent(part).substr(4)));
        }
}

// Whether the keys of a node and the vertices of its mesh can be turned over.
static bool CanTurn(const Mc3dsKeyframer &keyframer, const Mc3dsNode &node)
{
    for (const uint16_t tag : {Mc3dsTagPositions, Mc3dsTagRotations, Mc3dsTagScales})
        if (Mc3dsCountParts(*node.part, tag) > 1)
            return false;
    Mc3dsMatrix unused;
    return !node.isDamaged &&
           (node.mesh == Mc3dsNothing ||
            (keyframer.meshes[node.mesh].nodeCount == 1 && Mc3dsCanMove(*keyframer.meshes[node.mesh].mesh) &&
             Mc3dsInverse(Mc3dsMeshMatrix(*keyframer.meshes[node.mesh].mesh), &unused)));
}

std::vector<bool> Mc3dsTurnMirroredNodes(Mc3dsRestoring *restoring)
{
    const Mc3dsKeyframer &keyframer = Mc3dsCurrentKeyframer(restoring);
    const std::vector<Mc3dsMatrix> placements = Mc3dsPlacementsAt(keyframer, 0);
    std::vector<bool> turns(keyframer.nodes.size()), none(keyframer.nodes.size());
    const auto inherits = [&](const Mc3dsNode &node) {
        return node.parent != Mc3dsNothing && turns[node.parent];
    };
    const auto stays = [](const Mc3dsNode &node) {
        return node.mesh != Mc3dsNothing && !Mc3dsHasTracks(node);
    };
    bool isAny = false;
    for (const size_t i : keyframer.parentsFirst) {
        const Mc3dsNode &node = keyframer.nodes[i];
        if (stays(node))
            continue;
        turns[i] = node.isObject ? Mc3dsDeterminant(placements[i]) < 0 : inherits(node);
        isAny = isAny || turns[i];
        if ((turns[i] || inherits(node)) && !CanTurn(keyframer, node))
            return none;
    }
    if (!isAny)
        return none;
    for (const size_t i : keyframer.parentsFirst) {
        const Mc3dsNode &node = keyframer.nodes[i];
        if (stays(node))
            continue;
        if (inherits(node)) { // the same turn, seen in the mirror
            Negate(&restoring->tree, node.part, Mc3dsTagPositions, 0, 1);
            Negate(&restoring->tree, node.part, Mc3dsTagRotations, 2, 2);
        }
        if (turns[i] != inherits(node))
            Negate(&restoring->tree, node.part, Mc3dsTagScales, 0, 1);
        if (turns[i])
            NegatePivot(&restoring->tree, node.part);
    }
    restoring->keyframer.reset();
    restoring->isChanged = true;
    return turns;
}
