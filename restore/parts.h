// The kinds of restoring. Each changes the tree and adds a record for each material or object.
#ifndef MC3DS_RESTORE_PARTS_H
#define MC3DS_RESTORE_PARTS_H

#include <optional>
#include <unordered_set>

#include "keyframer.h"
#include "restore.h"

struct Mc3dsRestoring {
    Mc3dsTree tree;
    std::optional<Mc3dsKeyframer> keyframer; // of the tree; reset when parts move or keys change
    bool isChanged = false;                  // anything of the scene itself
    uint64_t room = 0;                       // bytes that may still be added
    std::vector<Mc3dsRestoreRecord> records;
    // Objects of a mesh that several nodes placed: they take the poses of their nodes, whatever kinds are
    // asked for.
    std::unordered_set<std::string> copies;
};

// Whether no chunk is too short for what it holds.
bool Mc3dsIsSound(const Mc3dsTree &tree);

void Mc3dsRestoreMaterials(Mc3dsRestoring *restoring);
void Mc3dsRestorePlacements(Mc3dsRestoring *restoring);
// Turns the own spaces of nodes over that mirror in frame 0, so that none does: readers can't tell the
// mirroring of a node from that of a mesh. Nothing moves, once the meshes of those nodes are turned over too.
// Returns which they are.
std::vector<bool> Mc3dsTurnMirroredNodes(Mc3dsRestoring *restoring);
// True if the mesh has one array of vertices and one matrix at most, which is what can be moved.
bool Mc3dsCanMove(const Mc3dsPart &mesh);
// onlyCopies: leaves all objects but the copies, and parents that are right.
void Mc3dsRestorePose(Mc3dsRestoring *restoring, bool onlyCopies);
void Mc3dsRestoreStrays(Mc3dsRestoring *restoring);
void Mc3dsRestoreEdges(Mc3dsRestoring *restoring);
std::string Mc3dsRestoreMotion(Mc3dsRestoring *restoring);

inline Mc3dsKeyframer &Mc3dsCurrentKeyframer(Mc3dsRestoring *restoring)
{
    if (!restoring->keyframer)
        restoring->keyframer = Mc3dsReadKeyframer(&restoring->tree);
    return *restoring->keyframer;
}

inline void Mc3dsRecord(Mc3dsRestoring *restoring, Mc3dsRestoreKind kind, std::string_view name,
                        uint64_t count, Mc3dsRestoreLimit limit = Mc3dsRestoreLimit::None)
{
    restoring->isChanged =
        restoring->isChanged || (limit == Mc3dsRestoreLimit::None && kind != Mc3dsRestoreKind::Motion);
    restoring->records.push_back(
        {kind, limit, static_cast<uint32_t>(count < UINT32_MAX ? count : UINT32_MAX), std::string(name)});
}

// False, with a record, if so many bytes are too many.
inline bool Mc3dsTakeRoom(Mc3dsRestoring *restoring, Mc3dsRestoreKind kind, std::string_view name,
                          uint64_t bytes)
{
    if (bytes > restoring->room) {
        Mc3dsRecord(restoring, kind, name, 0, Mc3dsRestoreLimit::TooLarge);
        return false;
    }
    restoring->room -= bytes;
    return true;
}

#endif
