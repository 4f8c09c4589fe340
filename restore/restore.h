// Completes old 3D Studio scenes: says in full what a .3DS file means and what many readers don't work out.
// Depends on the standard library alone.
#ifndef MC3DS_RESTORE_RESTORE_H
#define MC3DS_RESTORE_RESTORE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class Mc3dsRestoreKind : uint8_t {
    Materials, // missing and invalid fields of materials; materials that come after the meshes that name them
    Pose,      // objects stand as in frame 0 of the keyframer, below parents that are objects
    Placements, // a mesh that several nodes place becomes as many meshes
    Motion,     // keys become transforms of a .vue file, one for each object and frame
    Edges,      // vertices are doubled where faces without a common smoothing group meet
    Strays,     // vertices that no face uses are removed where they set the bounds of the scene
};
constexpr uint32_t Mc3dsRestoreKindCount = 6;
constexpr uint32_t Mc3dsRestoreAll = (1u << Mc3dsRestoreKindCount) - 1;

constexpr uint32_t Mc3dsRestoreBit(Mc3dsRestoreKind kind)
{
    return 1u << static_cast<uint32_t>(kind);
}

// Why something stayed as it was.
enum class Mc3dsRestoreLimit : uint8_t {
    None,            // it was restored
    NoInverse,       // its matrix, or that of frame 0, has no inverse or isn't finite
    DamagedKeys,     // its keys can't be read, or their frames don't ascend
    TooManyVertices, // it would have more than 65,535 vertices
    Damaged,         // chunks of the file are too short for what they hold; nothing of the scene is restored
    TooLarge,        // scene and .vue text would be larger than 256 times the file plus 1 MiB
};

// What was done with one material or object, or why it wasn't.
struct Mc3dsRestoreRecord {
    Mc3dsRestoreKind kind;
    Mc3dsRestoreLimit limit;
    // Materials: fields that were completed; 0 if it only moved ahead. Pose: 1 if the object moved, 0 if only
    // its parent changed. Placements: added meshes. Motion: frames. Edges: added vertices. Strays: removed
    // vertices.
    uint32_t count;
    std::string name; // of the material or object, in the bytes of the file
};

struct Mc3dsRestored {
    std::string scene; // a .3DS file; empty if nothing of the original changes
    std::string vue;   // text of a .vue file; empty if nothing moves
    std::vector<Mc3dsRestoreRecord> records;
};

// scene: the bytes of a .3DS file; they are only read during the call. kinds: of Mc3dsRestoreBit. Damaged
// parts stay as they are. Throws std::bad_alloc.
Mc3dsRestored Mc3dsRestore(std::string_view scene, uint32_t kinds);

// The names of the objects that Pose would move, at a fraction of the cost.
std::vector<std::string> Mc3dsFindElsewhere(std::string_view scene);

#endif
