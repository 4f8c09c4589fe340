// State shared by the parts that write a binary glTF file.
#ifndef MC3DS_HOST_GLB_H
#define MC3DS_HOST_GLB_H

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "json.h"
#include "model.h"
#include "view.h"

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
    Json json;       // without mesh and children
    int parent;      // index; -1: none
    Matrix world;    // absolute, in the model
    Matrix used;     // absolute, from the glTF nodes down to this one
    Matrix residual; // applied to its vertices; the part of world that glTF nodes can't express
    bool isResidual; // residual isn't the identity
    bool moves;      // its placement changes in the animation
    int prototype;   // index of the prototype whose mesh it shares; -1: its mesh is its own
    size_t mesh;     // index into Glb.meshes
};

struct Glb {
    FILE *binary;  // the data of all views
    uint64_t size; // bytes in binary
    bool failed;   // a write failed
    std::string scenePath;
    std::vector<GlbNode> nodes;
    std::vector<GlbMesh> meshes;
    Json accessors = Json::array(), views = Json::array(), materials = Json::array();
    Json textures = Json::array(), images = Json::array(), animations = Json::array();
    std::map<std::string, int> materialIndices; // by the values of a surface
    std::map<std::string, int> textureIndices;  // by name; -1: no picture beside the scene
    uint64_t lostFaces;                         // left out, as a corner isn't finite
    double worstError; // largest error of a position in the animation, in the model's units
};

// ---- glb.cpp

// Adds bytes to the buffer. Returns the index of their view. stride: bytes per vertex, 0 for none; target: 0
// for none.
size_t AddGlbView(Glb *glb, const void *bytes, size_t size, size_t stride, int target);
// Returns the index of the new accessor.
size_t AddGlbAccessor(Glb *glb, size_t view, size_t offset, int componentType, size_t count,
                      const char *type);

// ---- glb_mesh.cpp

// Adds geometry to mesh, with its vertices transformed by residual. surfaces: those of the model.
void AddGlbGeometry(Glb *glb, GlbMesh *mesh, const McGeometryView &geometry, const McSurface *surfaces,
                    const Matrix &residual);

// ---- glb_surface.cpp

// Returns the index of the material.
int AddGlbSurface(Glb *glb, const McSurface &surface);
// The report on textures that the file lacks; empty if it has all.
std::string MissingGlbTextures(const Glb &glb);

// ---- glb_motion.cpp

// Finds the moving nodes, and sets each node's placement as far as glTF can express it.
void PlaceGlbNodes(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked);
// Samples the animation. Call it after AddGlbGeometry, as it uses the bounds of the meshes.
void AddGlbAnimation(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked);

#endif
