// What both forms of --info are made from.
#ifndef MC3DS_HOST_INFO_H
#define MC3DS_HOST_INFO_H

#include "view.h"

// One object in the order of the hierarchy: parents ahead of their children, as in an output.
struct TreeRow {
    uint32_t object; // index
    uint32_t depth;  // 0 at the top
    bool isLast;     // among the children of its parent
};

// A map that materials name, and what of that name lies beside the scene.
struct TextureFile {
    std::string name;
    std::string found; // empty: nothing; else the name, or one that differs from it by the case of letters
};

struct SceneSummary {
    std::vector<TreeRow> tree;
    std::vector<uint32_t> unreached;               // objects that hang from nothing in the tree
    std::vector<std::vector<int32_t>> materialsOf; // for each object: the materials on its faces, sorted
    std::vector<uint64_t> facesOf;                 // for each material: the faces that wear it
    std::vector<TextureFile> textures;             // each name once, sorted
    uint64_t vertexCount = 0, faceCount = 0;
    uint32_t movingCount = 0;          // objects that the animation names
    bool hasBounds = false;            // false: no vertex, or none with three numbers
    float least[3] = {}, most[3] = {}; // in the file's co-ordinates: z is up
};

// The hierarchy as outputs walk it, and the objects that hang from nothing in it.
std::vector<TreeRow> FindTree(const Mc3dsFile *scene, std::vector<uint32_t> *unreached);
// The bounds that the library takes: of what the file has, before anything is placed. False: no vertex has
// three numbers.
bool FindSceneBounds(const Mc3dsFile *scene, float least[3], float most[3]);
// The maps that materials name, each once, sorted.
std::vector<TextureFile> FindTextures(const Mc3dsFile *scene, const std::string &scenePath);
// Whatever a conversion would warn of, with any options.
std::vector<std::string> FindAllLosses(const Mc3dsFile *scene);
SceneSummary Summarise(const Mc3dsFile *scene, const std::string &scenePath);
bool IsDummy(const Mc3dsFile *scene, const Mc3dsObject *object);
const char *ShadingName(int32_t shading);

#endif
