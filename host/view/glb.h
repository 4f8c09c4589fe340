// What the parts of a binary glTF file share while it's made.
#ifndef MC3DS_HOST_GLB_H
#define MC3DS_HOST_GLB_H

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "json.h"
#include "model.h"
#include "view.h"

// Numbers of the format.
constexpr int glbByte = 5121, glbShort = 5123, glbInt = 5125, glbFloat = 5126; // types of a component
constexpr int glbVertices = 34962, glbIndices = 34963; // what a view of the buffer is for
constexpr int glbLines = 1, glbTriangles = 4;

struct GlbMesh {
    std::string name;
    Json primitives = Json::array();
    Bounds bounds = NoBounds(); // of its vertices
};

// A clump, or an instance in one.
struct GlbNode {
    Json json;       // all but mesh and children
    int parent;      // -1: none
    Matrix world;    // where the model has it
    Matrix used;     // where its mesh is put by the nodes down to it
    Matrix residual; // from the model's mesh to that of the node; what nodes can't say is in it
    bool isResidual; // residual isn't the identity
    bool moves;      // in the animation
    int prototype;   // that it shares the mesh of, by order of its first instance; -1: its mesh is its own
    size_t mesh;     // index into Glb.meshes
};

struct Glb {
    FILE *binary;  // grows as views are added
    uint64_t size; // of what is in it; bytes
    bool failed;   // a write
    std::string scenePath;
    std::vector<GlbNode> nodes;
    std::vector<GlbMesh> meshes;
    Json accessors = Json::array(), views = Json::array(), materials = Json::array();
    Json textures = Json::array(), images = Json::array(), animations = Json::array();
    std::map<std::string, int> materialIndices; // by what is in a surface
    std::map<std::string, int> textureIndices;  // by name; -1: not beside the scene
    uint64_t lostFaces;                         // with corners that are no finite numbers
    double worstError;                          // of a place in the animation, in the model's units
};

// ---- glb.cpp

// Adds bytes to the buffer. Returns the index of the view of them. stride: bytes from one vertex to the next,
// 0 for none; target: 0 for none.
size_t AddGlbView(Glb *glb, const void *bytes, size_t size, size_t stride, int target);
// Returns the index of the new accessor.
size_t AddGlbAccessor(Glb *glb, size_t view, size_t offset, int componentType, size_t count,
                      const char *type);

// ---- glb_mesh.cpp

// Adds a mesh of the model, with its vertices moved by residual. surfaces are those of the model.
void AddGlbGeometry(Glb *glb, GlbMesh *mesh, const McGeometryView &geometry, const McSurface *surfaces,
                    const Matrix &residual);

// ---- glb_surface.cpp

// Returns the index of the material.
int AddGlbSurface(Glb *glb, const McSurface &surface);
// What is said of textures that the file doesn't hold; empty when it holds all.
std::string MissingGlbTextures(const Glb &glb);

// ---- glb_motion.cpp

// Finds the nodes that move, and what each node can say of its placement.
void PlaceGlbNodes(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked);
// Samples the animation. The meshes are there by then.
void AddGlbAnimation(Glb *glb, const Mc3dsFile *scene, const Mc3dsOptions &asked);

#endif
