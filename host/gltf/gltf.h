// Writes a model as binary glTF 2.0. Only if the Meshcaster library has mclmodel.h.
#ifndef MC3DS_HOST_GLTF_H
#define MC3DS_HOST_GLTF_H

#include <cstdio>

#include "../base/json.h"
#include "../model/model.h"

// ---- document.cpp

// Writes the model for the form and size options in asked to file as binary glTF 2.0; working: a temporary
// file. Looks for pictures of textures beside the scene. Returns why it failed; empty on success. isEmpty
// gets true if the model has nothing to show, and then there is no file.
std::string WriteGlb(const Mc3dsFile *scene, const Mc3dsOptions &asked, const std::string &scenePath,
                     const std::filesystem::path &file, const std::filesystem::path &working,
                     Reporter *reporter, bool *isEmpty);

// ==== Only for the files of this folder

// Constants of the format.
constexpr int glbByte = 5121, glbShort = 5123, glbInt = 5125, glbFloat = 5126; // types of components
constexpr int glbVertices = 34962, glbIndices = 34963;                         // targets of buffer views
constexpr int glbLines = 1, glbTriangles = 4;

struct GlbMesh {
    std::string name;
    Json primitives = Json::array();
    Bounds bounds = NoBounds(); // of its vertices
};

// A clump or an instance.
struct GlbNode {
    Json json = {};          // without mesh and children
    int parent = -1;         // index; -1: none
    Matrix world = {};       // absolute, in the model
    Matrix used = {};        // absolute, from the glTF nodes down to this one
    Matrix residual = {};    // applied to its vertices; the part of world that glTF nodes can't express
    bool isResidual = false; // residual isn't the identity
    bool moves = false;      // its placement changes in the animation
    int prototype = -1;      // index of the prototype whose mesh it shares; -1: its mesh is its own
    size_t mesh = 0;         // index into Glb.meshes
};

struct Glb {
    FILE *binary;  // the data of all views
    uint64_t size; // bytes in binary, or requested, if that is more than the format can count
    int error;     // errno of the first write that failed; 0 if none did
    std::string scenePath;
    Reporter *reporter;
    std::vector<GlbNode> nodes;
    std::vector<GlbMesh> meshes;
    Json accessors = Json::array(), views = Json::array(), materials = Json::array();
    Json textures = Json::array(), images = Json::array(), animations = Json::array();
    std::map<std::string, int> materialIndices; // by the values of a surface
    std::map<std::string, int> textureIndices;  // by name; -1: no picture beside the scene
    std::map<std::string, int> pictureIndices;  // the same by the picture's file
    uint64_t lostFaces;                         // left out, as a corner isn't finite
    double worstError; // largest error of a position in the animation, in the model's units
};

// ---- document.cpp

// Adds bytes to the buffer. Returns the index of their view. stride: bytes per vertex, 0 for none; target: 0
// for none.
size_t AddGlbView(Glb *glb, const void *bytes, size_t size, size_t stride, int target);
// Returns the index of the new accessor.
size_t AddGlbAccessor(Glb *glb, size_t view, size_t offset, int componentType, size_t count,
                      const char *type);

// ---- mesh.cpp

// Adds geometry to mesh, with its vertices transformed by residual. surfaces: those of the model.
void AddGlbGeometry(Glb *glb, GlbMesh *mesh, const McGeometryView &geometry, const McSurface *surfaces,
                    const Matrix &residual);

// ---- surface.cpp

// Returns the index of the material.
int AddGlbSurface(Glb *glb, const McSurface &surface);
// Reports the textures that the file lacks.
void ReportMissingTextures(const Glb &glb, Reporter *reporter);

// ---- motion.cpp

// Finds the moving nodes, and sets each node's placement as far as glTF can express it.
void PlaceGlbNodes(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, Reporter *reporter);
// Samples the animation. Call it after AddGlbGeometry, as it uses the bounds of the meshes.
void AddGlbAnimation(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked, Reporter *reporter);

#endif
