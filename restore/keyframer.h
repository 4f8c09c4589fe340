// The meshes and nodes of a scene, and where the keyframer puts them.
#ifndef MC3DS_RESTORE_KEYFRAMER_H
#define MC3DS_RESTORE_KEYFRAMER_H

#include "chunk_tree.h"
#include "tracks.h"

constexpr size_t Mc3dsNothing = SIZE_MAX;
constexpr uint16_t Mc3dsNoParent = 0xFFFF;
constexpr size_t Mc3dsNameMost = 11; // names are compared up to this length

struct Mc3dsMeshPart {
    Mc3dsPart *object, *mesh; // NAMED_OBJECT and its mesh, which isn't hidden
    std::string name;
    size_t node = Mc3dsNothing; // the last node that names it, as that one counts for most readers
    size_t nodeCount = 0;
};

struct Mc3dsNode {
    Mc3dsPart *part = nullptr;
    std::string name;
    uint16_t parentField = Mc3dsNoParent;
    uint32_t id = UINT32_MAX;     // NODE_ID; UINT32_MAX if it has none
    uint32_t number = UINT32_MAX; // in the order of nodes, where the ambient light doesn't count
    size_t parent = Mc3dsNothing; // by NODE_ID where the file has any, else by number
    size_t mesh = Mc3dsNothing;
    size_t dummy = Mc3dsNothing; // number of the dummy, from 0
    bool isObject = false;       // and no light, camera or target
    bool hasHeader = false;      // the node has a whole header
    bool isDamaged = false;      // its header or its keys can't be used
    bool isLost = false;         // it is its own ancestor
    Mc3dsPoint pivot = {};
    Mc3dsTrack positions, turns, scales;
};

// Refers to the tree, and is valid until parts are added or removed.
struct Mc3dsKeyframer {
    std::vector<Mc3dsPart *> editors;
    std::vector<Mc3dsMeshPart> meshes;
    std::vector<Mc3dsNode> nodes;
    std::vector<size_t> parentsFirst; // all nodes but lost ones, each after its parent
    uint32_t frameCount = 0;
    bool hasIds = false, hasAmbient = false;
};

Mc3dsKeyframer Mc3dsReadKeyframer(Mc3dsTree *tree);

inline bool Mc3dsHasTracks(const Mc3dsNode &node)
{
    return !node.positions.keys.empty() || !node.turns.keys.empty() || !node.scales.keys.empty();
}

// The mesh matrix; the identity if the mesh has none.
Mc3dsMatrix Mc3dsMeshMatrix(const Mc3dsPart &mesh);
// From a mesh's own space to the space before its node: turns x round if the mesh matrix mirrors, then takes
// the node's pivot to the origin.
Mc3dsMatrix Mc3dsToNode(const Mc3dsNode &node, bool meshMirrors);
// The placements of all nodes at a frame in the world. A mesh without keys stays where it is stored.
std::vector<Mc3dsMatrix> Mc3dsPlacementsAt(const Mc3dsKeyframer &keyframer, double frame);

#endif
