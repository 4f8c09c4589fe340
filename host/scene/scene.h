// Facts about a loaded scene, for conversions and for --info.
#ifndef MC3DS_HOST_SCENE_H
#define MC3DS_HOST_SCENE_H

#include "../base/base.h"
#include "finding.h"
#include "restore.h"

// ---- facts.cpp

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

struct GeometryCounts {
    uint64_t objects = 0, vertices = 0, triangles = 0;
};

struct SceneFacts {
    std::vector<TreeRow> tree;
    std::vector<uint32_t> unreached;               // objects that aren't in the tree
    std::vector<std::vector<int32_t>> materialsOf; // for each object: the materials on its faces, sorted
    std::vector<uint64_t> facesOf;                 // for each material: the number of its faces
    std::vector<TextureFile> textures;             // each name once, sorted
    GeometryCounts counts;
    uint32_t movingCount = 0;          // objects that the animation names
    bool hasBounds = false;            // false: no vertex has three numbers
    float least[3] = {}, most[3] = {}; // in the file's co-ordinates: z is up
};

SceneFacts FindFacts(const Mc3dsFile *scene, const std::string &scenePath);
// The hierarchy in the order of outputs. unreached gets the objects that aren't in it.
std::vector<TreeRow> FindTree(const Mc3dsFile *scene, std::vector<uint32_t> *unreached);
// The maps named by materials, each once, sorted.
std::vector<TextureFile> FindTextures(const Mc3dsFile *scene, const std::string &scenePath);
bool IsDummy(const Mc3dsFile *scene, const Mc3dsObject *object);
const char *ShadingName(int32_t shading);
// The counts of an output with these Mc3dsOptions.flags, and of the scene.
GeometryCounts CountModel(const Mc3dsFile *scene, uint32_t flags);
GeometryCounts CountScene(const Mc3dsFile *scene);

// ---- losses.cpp: what outputs can't contain. Each function appends to findings.

// What an output with these Mc3dsOptions.flags lacks, the most important first.
void FindLosses(const Mc3dsFile *scene, uint32_t flags, std::vector<Finding> *findings);
// The end of the file is missing.
void FindCutEnd(const Mc3dsFile *scene, std::vector<Finding> *findings);
// Objects have the same name, which --protos can't tell apart.
void FindSharedNames(const Mc3dsFile *scene, std::vector<Finding> *findings);
// Keys move objects, but the scene has no .vue file.
void FindUnplayedKeys(const Mc3dsFile *scene, std::vector<Finding> *findings);

// ---- restored.cpp: what --restore did, and could do

// A finding for each kind of what was done in restored; what had to stay as it was is appended to left.
void FindRestored(const std::vector<Mc3dsRestoreRecord> &records, std::vector<Finding> *restored,
                  std::vector<Finding> *left);
// Objects that --restore would move. bytes: of the scene's file.
void FindElsewhere(const std::string &bytes, std::vector<Finding> *findings);
// Whether the keyframer places objects, so that FindElsewhere can find any.
bool HasKeys(const Mc3dsFile *scene);
// Marks the findings that --restore would take away.
void OfferRestoring(std::vector<Finding> *findings);

// ---- faults.cpp, name_faults.cpp: faults that the library doesn't report. Each appends to findings.

// An animation was requested, but the scene has none.
void FindAnimationFault(const Mc3dsFile *scene, const std::string &scenePath, std::vector<Finding> *findings);
// Numbers that aren't finite, and a size or scale without use.
void FindNumberFaults(const Mc3dsOptions &options, const Mc3dsFile *scene, std::vector<Finding> *findings);
// refused gets the names that would break out of the output's text, as in map "A"; empty with forceNames.
void FindNameFaults(const Mc3dsOptions &options, const Mc3dsFile *scene, bool forceNames,
                    std::vector<Finding> *findings, std::vector<std::string> *refused);

#endif
