// The records behind the opaque types, and what the files of the stand-in share.
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

// Every text that a model was told, once each, with the index of the last prototype of that name or -1.
// References into the table stay good while it grows.
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
    // Empty up to the first vertex with texture co-ordinates, from then on as long as points.
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
    size_t savedBase; // entries of McmModel::saved that belong to the scopes around
};

struct McmModel {
    McClump *firstClump;
    McClump *lastClump;
    McmArray<McClump *> clumps; // all of them, in the order in which they began
    McmArray<McmPrototype *> prototypes;
    McmArray<McmScope> scopes; // the open ones, the model first; empty when it has ended
    McmArray<McmPlacement> saved;
    bool clumpGiven; // the caller holds a clump, through which it can free the model
    McSurface surface;
    int surfaceIndex; // of the surface in force, -1 while no face has used it
    McmArray<McSurface> surfaces;
    McmSurfaceTable surfaceTable;
    McmNames names;
};

// ---- error.cpp

void McmError(const char *call, const char *text);

// ---- matrix.cpp

extern const McmPlacement McmIdentity;
void McmMultiply(const McmPlacement *a, const McmPlacement *b, McmPlacement *out);

// ---- scope.cpp

// The open model or its innermost scope. Without an open model null, and an error of the call is counted.
McmModel *McmCurrentModel(const char *call);
McmScope *McmCurrentScope(const char *call);
// The innermost scope if it is a clump; else null and an error.
McmScope *McmCurrentClump(const char *call);
void McmForgetOpenModel(const McmModel *model);

// ---- store.cpp

McmModel *McmNewModel();
void McmDeleteModel(McmModel *model);
void McmTrimMesh(McmMesh *mesh);
// The entry of a text; null when memory is lacking.
McmName *McmIntern(McmModel *model, const char *text);

// ---- surface.cpp

// The index of the surface in force, which becomes one of the model's surfaces; -1 when memory is lacking.
int McmUseSurface(McmModel *model);

#endif
