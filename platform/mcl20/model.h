// The records of the opaque types, and the declarations that the files of the stand-in share.
#ifndef MCL_MODEL_H
#define MCL_MODEL_H

#include "array.h"
#include "mclmodel.h"

#include <string>
#include <string_view>
#include <unordered_map>

struct McmPlacement {
    double m[16];
};

struct McMatrix4d {
    McmPlacement placement;
};

// Every text that a model was given, once each, with the index of the last prototype of that name or -1.
// References into the table stay valid while it grows.
using McmNames = std::unordered_map<std::string, int>;
using McmName = McmNames::value_type;

struct McmSurfaceHash {
    size_t operator()(const McSurface &surface) const;
};
struct McmSurfaceEqual {
    bool operator()(const McSurface &a, const McSurface &b) const;
};
using McmSurfaceTable = std::unordered_map<McSurface, int, McmSurfaceHash, McmSurfaceEqual>;

struct McmMesh {
    McmArray<McPoint> points;
    // Empty before the first vertex with texture co-ordinates, then as long as points.
    McmArray<McUV> uvs;
    McmArray<unsigned char> hasUV;
    McmArray<McFace> faces;
};

struct McmInstance {
    const McmName *name;
    McmPlacement placement;
};

struct McmPrototype {
    const McmName *name;
    McmMesh mesh;
};

struct McmModel;

struct McClump {
    McmModel *model;
    McClump *parent;
    McClump *firstChild;
    McClump *lastChild;
    McClump *nextSibling;
    int tag;
    int hints;
    McmPlacement placement;
    McmPlacement world;
    McmMesh mesh;
    McmArray<McmInstance> instances;
};

// The model itself has neither clump nor prototype.
struct McmScope {
    McClump *clump;
    McmPrototype *prototype;
    McmPlacement placement;
    size_t savedBase; // entries of McmModel::saved that belong to outer scopes
};

struct McmModel {
    McClump *firstClump;
    McClump *lastClump;
    McmArray<McClump *> clumps; // all of them, in the order of their Begin
    McmArray<McmPrototype *> prototypes;
    McmArray<McmScope> scopes; // the open ones, the model first; empty when it has ended
    McmArray<McmPlacement> saved;
    bool clumpGiven; // the caller holds a clump, through which it can free the model
    McSurface surface;
    int surfaceIndex; // of the current surface; -1 while no face has used it
    McmArray<McSurface> surfaces;
    McmSurfaceTable surfaceTable;
    McmNames names;
};

// ---- error.cpp

void McmError(const char *call, const char *text);
void McmNoMemory(const char *call);

// ---- matrix.cpp

extern const McmPlacement McmIdentity;
void McmMultiply(const McmPlacement *a, const McmPlacement *b, McmPlacement *out);

// ---- scope.cpp

// The open model or its innermost scope. Null if no model is open, which is counted as an error of the call.
McmModel *McmCurrentModel(const char *call);
McmScope *McmCurrentScope(const char *call);
// The innermost scope if it is a clump; otherwise null, and an error is counted.
McmScope *McmCurrentClump(const char *call);
void McmForgetOpenModel(const McmModel *model);

// ---- store.cpp

McmModel *McmNewModel();
void McmDeleteModel(McmModel *model);
void McmTrimMesh(McmMesh *mesh);
// The entry of a text; null if out of memory.
McmName *McmIntern(McmModel *model, const char *text);

// ---- surface.cpp

// Adds the current surface to the model's surfaces if needed. Returns its index; -1 if out of memory.
int McmUseSurface(McmModel *model);

#endif
