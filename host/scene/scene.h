// The data for both forms of --info.
#ifndef MC3DS_HOST_INFO_H
#define MC3DS_HOST_INFO_H

#include "view.h"

// An object of the hierarchy; parents come before their children, as in an output.
struct TreeRow {
    uint32_t object; // index
    uint32_t depth;  // 0 at the top
    bool isLast;     // among the children of its parent
};

// A map named by materials, and its file beside the scene.
struct TextureFile {
    std::string name;
    std::string found; // the file's name, which may differ in case; empty: there is none
};

struct SceneSummary {
    std::vector<TreeRow> tree;
    std::vector<uint32_t> unreached;               // objects that aren't in the tree
    std::vector<std::vector<int32_t>> materialsOf; // for each object: the materials on its faces, sorted
    std::vector<uint64_t> facesOf;                 // for each material: the number of its faces
    std::vector<TextureFile> textures;             // each name once, sorted
    uint64_t vertexCount = 0, faceCount = 0;
    uint32_t movingCount = 0;          // objects that the animation names
    bool hasBounds = false;            // false: no vertex has three numbers
    float least[3] = {}, most[3] = {}; // in the file's co-ordinates: z is up
};

// The hierarchy in the order of outputs. unreached gets the objects that aren't in it.
std::vector<TreeRow> FindTree(const Mc3dsFile *scene, std::vector<uint32_t> *unreached);
// The bounds that the library uses: those of the file's co-ordinates, before any placement. False: no vertex
// has three numbers.
bool FindSceneBounds(const Mc3dsFile *scene, float least[3], float most[3]);
// The maps named by materials, each once, sorted.
std::vector<TextureFile> FindTextures(const Mc3dsFile *scene, const std::string &scenePath);
// All losses that a conversion could report, whatever its options.
std::vector<std::string> FindAllLosses(const Mc3dsFile *scene);
SceneSummary Summarise(const Mc3dsFile *scene, const std::string &scenePath);
bool IsDummy(const Mc3dsFile *scene, const Mc3dsObject *object);
const char *ShadingName(int32_t shading);

#endif
