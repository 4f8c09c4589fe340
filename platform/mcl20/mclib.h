/*
 * MCL20: the calls that build a model for the Meshcaster renderer.
 *
 * A model is told from McModelBegin to McModelEnd. The model, an open clump and an open prototype are each a
 * scope with a placement of its own (identity at its start), a stack of saved placements, and vertices that
 * are numbered from 1. Placements are 4x4 matrices for row vectors, p' = p * M, with the position in row 3.
 *
 * No call fails loudly. A call that can't be carried out - null where an argument is needed, a value outside
 * the range given here, no model open, an End without its Begin, lack of memory - has no effect beyond what
 * is said at the call, and is counted as an error; mclmodel.h has the count. Texts are copied: they need to
 * live for the call only. One model at a time and one call at a time: nothing here takes a lock.
 */
#ifndef MCLIB_H
#define MCLIB_H

#include <stddef.h>

#if defined(_WIN32)
#if defined(mcl20_EXPORTS)
#define MCL_API __declspec(dllexport)
#else
#define MCL_API
#endif
#define MCL_MAYBE_UNUSED
#else
#define MCL_API __attribute__((visibility("default")))
#define MCL_MAYBE_UNUSED __attribute__((unused))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A clump of a model, opaque. Owned by its model; valid until that is freed. */
typedef struct McClump McClump;

/* A 4x4 matrix, opaque. Owned by whoever created it. */
typedef struct McMatrix4d McMatrix4d;

/* Texture co-ordinates of a vertex. Generated sources declare one even where nothing uses it. */
typedef struct MCL_MAYBE_UNUSED McUV {
    float u, v;
} McUV;

/* Makes a number the float that the calls take. */
#define CREAL(x) ((float)(x))

/* Bits of McSetHints. */
#define mcHS 2
#define mcEDITABLE 4

/* Bits of McSetSurfaceTextureModes. */
#define mcLIT 1
#define mcFORESHORTEN 2
#define mcFILTER 4

/* Values of McSetSurfaceGeometrySampling. */
#define mcWIREFRAME 2
#define mcSOLID 4

/* Values of McSetSurfaceLightSampling. */
#define mcFACET 1
#define mcVERTEX 2

/*
 * Opens a model; an error while one is open, which then goes on.
 * McModelEnd closes it. Clumps, prototypes and saved placements that are still open are an error and are
 * closed with it. A model of which McClumpEnd gave no clump to the caller is freed here; any other lives
 * until it is freed through one of its clumps.
 */
MCL_API void McModelBegin(void);
MCL_API void McModelEnd(void);

/*
 * Opens a clump in the model or in the open clump, at the placement of that scope; an error in a prototype.
 * McClumpEnd closes the clump that was opened last and stores it in *clump. When no clump is open *clump
 * stays as it is; a null clump, and saved placements left on the clump's stack, are an error, and the clump
 * is closed all the same.
 */
MCL_API void McClumpBegin(void);
MCL_API void McClumpEnd(McClump **clump);

/* Set the tag, any number, and the hints, mcHS and mcEDITABLE or'ed or 0, of the open clump. Both start at 0.
 */
MCL_API void McSetTag(int tag);
MCL_API void McSetHints(int hints);

/*
 * McTransformBegin saves the placement of the innermost open scope, McTransformCTM replaces it by a copy of
 * the matrix (it doesn't multiply), McTransformEnd brings the saved one back. An End pairs with a Begin of
 * the same scope only.
 */
MCL_API void McTransformBegin(void);
MCL_API void McTransformCTM(McMatrix4d *matrix);
MCL_API void McTransformEnd(void);

/*
 * Opens a prototype, geometry that instances name; an error inside a clump or another prototype. A name that
 * a prototype of the model has already is an error too, but the prototype is opened, and instances of the
 * name, earlier ones included, take it in place of the other.
 */
MCL_API void McProtoBegin(const char *name);
MCL_API void McProtoEnd(void);

/*
 * Puts an instance of a prototype into the open clump at its current placement. Adds no vertices. The
 * prototype may follow later in the model.
 */
MCL_API void McProtoInstance(const char *name);

/*
 * Add a vertex, transformed by the current placement, to the open clump or prototype. A null uv is an error,
 * and the vertex is added without texture co-ordinates. extension isn't read: pass NULL.
 */
MCL_API void McVertex(float x, float y, float z);
MCL_API void McVertexExt(float x, float y, float z, McUV *uv, void *extension);

/*
 * Adds a triangle with the surface in force to the open clump or prototype. a, b and c are numbers of
 * vertices, 1 to the number of those that the clump or prototype has by now.
 */
MCL_API void McTriangle(int a, int b, int c);

/*
 * The surface in force, one for the whole model whatever scopes open and close. It starts with ambient 0,
 * diffuse 1, specular 0, white, opaque, mcSOLID, mcVERTEX, no texture modes and no texture. Numbers usually
 * lie in 0 to 1; this isn't tested. Modes are mcLIT, mcFORESHORTEN and mcFILTER or'ed, or 0.
 */
MCL_API void McSetSurface(float ambient, float diffuse, float specular);
MCL_API void McSetSurfaceColor(float red, float green, float blue);
MCL_API void McSetSurfaceOpacity(float opacity);
MCL_API void McSetSurfaceGeometrySampling(int sampling);
MCL_API void McSetSurfaceLightSampling(int sampling);
MCL_API void McSetSurfaceTextureModes(int modes);

/* Set the texture, with a mask or with none. A null name of McSetSurfaceTexture takes texture and mask off.
 */
MCL_API void McSetSurfaceTextureExt(const char *name, const char *mask);
MCL_API void McSetSurfaceTexture(const char *name);

/*
 * Creates a matrix, identity at first; null when memory is lacking. It belongs to no model and to the caller,
 * who gives it to McDestroyMatrix once.
 */
MCL_API McMatrix4d *McCreateMatrix(void);
MCL_API void McDestroyMatrix(McMatrix4d *matrix);

/* Sets one element; row and column are 0 to 3. */
MCL_API void McSetMatrixElement(McMatrix4d *matrix, int row, int column, float value);

#ifdef __cplusplus
}
#endif

#endif
