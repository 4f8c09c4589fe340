/*
 * MCL20: walking and freeing a model that was built through mclib.h.
 *
 * A walk starts from any clump that McClumpEnd returned. The functions fill the caller's record with values
 * and with pointers into the model. The pointers and their arrays are read-only and valid until the next
 * building call on the same model or until it is freed, whichever comes first. Placements are 16 numbers, a
 * 4x4 matrix row by row, for row vectors: p' = p * M, with the position in numbers 12 to 14. Nothing here
 * recurses, and the time of a call doesn't depend on the clump's position in the tree.
 */
#ifndef MCLMODEL_H
#define MCLMODEL_H

#include "mclib.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The position of a vertex, in the co-ordinates of its clump or prototype. */
typedef struct McPoint {
    double x, y, z;
} McPoint;

typedef struct McFace {
    int vertices[3]; /* numbers from 1: points[vertices[0] - 1] is the first corner */
    int surface;     /* index into McModelView.surfaces, from 0 */
} McFace;

/* The mesh of a clump or a prototype. An array without entries may be null. */
typedef struct McGeometryView {
    size_t vertexCount;
    const McPoint *points;      /* vertexCount entries */
    const McUV *uvs;            /* null if no vertex has texture co-ordinates, else vertexCount entries */
    const unsigned char *hasUV; /* parallel to uvs: 1 for a vertex with texture co-ordinates, else 0 */
    size_t faceCount;
    const McFace *faces; /* faceCount entries, in the order of their calls */
} McGeometryView;

/* The surface that was current when a face was added. Equal surfaces of a model are one entry. */
typedef struct McSurface {
    float ambient, diffuse, specular; /* coefficients */
    float color[3];                   /* red, green, blue */
    float opacity;
    int geometrySampling; /* mcWIREFRAME or mcSOLID */
    int lightSampling;    /* mcFACET or mcVERTEX */
    int textureModes;     /* mcLIT, mcFORESHORTEN, mcFILTER or'ed */
    const char *texture;  /* null for none */
    const char *mask;     /* null for none */
} McSurface;

typedef struct McClumpView {
    int tag;
    int hints;               /* mcHS, mcEDITABLE or'ed */
    const double *placement; /* relative to its parent, or to the model for a clump at the top */
    const double *world;     /* relative to the model: placement times the parent's world */
    McClump *parent;         /* null at the top */
    McClump *firstChild;     /* children and siblings are in the order of their Begin; null at the end */
    McClump *nextSibling;    /* also links the clumps at the top */
    McGeometryView geometry;
    size_t instanceCount; /* for McGetInstance */
} McClumpView;

typedef struct McInstanceView {
    const char *name;        /* of the prototype */
    const double *placement; /* relative to its clump; times the clump's world: relative to the model */
    int prototype;           /* index for McGetPrototype; -1 if no prototype of the model has the name */
} McInstanceView;

typedef struct McPrototypeView {
    const char *name;
    McGeometryView geometry;
} McPrototypeView;

typedef struct McModelView {
    McClump *firstClump;       /* the first clump at the top; the others follow as its siblings */
    size_t clumpCount;         /* all clumps, at any depth */
    size_t prototypeCount;     /* for McGetPrototype; in the order of their Begin */
    size_t surfaceCount;       /* the surfaces that faces use */
    const McSurface *surfaces; /* surfaceCount entries; null if there are none */
} McModelView;

/*
 * Fill *view from a clump, from the clump's model, from an instance of the clump, or from a prototype of the
 * clump's model. Indices count from 0. Return 1, or 0 with *view unchanged if an argument is null or index is
 * not below the count. Returning 0 isn't counted as an error.
 */
MCL_API int McGetClump(const McClump *clump, McClumpView *view);
MCL_API int McGetModel(const McClump *clump, McModelView *view);
MCL_API int McGetInstance(const McClump *clump, size_t index, McInstanceView *view);
MCL_API int McGetPrototype(const McClump *clump, size_t index, McPrototypeView *view);

/*
 * Frees the whole model that the clump belongs to, with its prototypes: all clumps and pointers of that model
 * are invalid afterwards. A model that is still open is closed without an error. Null is ignored.
 */
MCL_API void McFreeModel(McClump *clump);

/*
 * The errors of all building calls, for any model, since the start of the process or the last McClearErrors:
 * how many, and the text of the first, such as "McClumpEnd: no clump is open". The text is empty if there is
 * none, at most 159 bytes long, without a line end, owned by the library, and valid until the next
 * McClearErrors or the first error after one.
 */
MCL_API size_t McErrorCount(void);
MCL_API const char *McFirstError(void);
MCL_API void McClearErrors(void);

/* 1 if one of these errors was a lack of memory, else 0. */
MCL_API int McMemoryRanOut(void);

#ifdef __cplusplus
}
#endif

#endif
