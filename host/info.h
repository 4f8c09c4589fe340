// What a scene file holds, to look at: --info.
#ifndef MC3DS_HOST_INFO_H
#define MC3DS_HOST_INFO_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "frame/frame.h"

// What the library said while it loaded a scene about things that the scene records don't keep.
struct SceneNotes {
    std::vector<std::string> lights, cameras, hidden; // names, in the order of the file
    std::map<std::string, size_t> chunks;             // unknown tags in hexadecimal, and how often they came
    std::map<std::string, size_t> unsupported;        // other things without a place in a model, likewise
    std::map<std::string, size_t> reports;            // the texts of the error channel, likewise
    std::string newestObject;                         // of use to the collecting only
};

// From here to StopNotes all that the library says goes into notes too, besides where it went before. notes
// has to live that long, and nobody else may set a callback meanwhile.
void StartNotes(SceneNotes *notes);
void StopNotes();

// The scene for people, on stdout: with colours and box-drawing characters where stdout is a terminal that
// has them.
void PrintInfo(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes);
// The same for programs: one line of JSON in UTF-8 and ASCII, on stdout, also for a scene without objects.
// Null stands for a scene that could not be loaded: "loaded" is false then.
void PrintJson(const Mc3dsFile *scene, const std::string &scenePath, const SceneNotes &notes);

// ---- what both are made from

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

SceneSummary Summarise(const Mc3dsFile *scene, const std::string &scenePath);
bool IsDummy(const Mc3dsFile *scene, const Mc3dsObject *object);
const char *ShadingName(int32_t shading);

#endif
