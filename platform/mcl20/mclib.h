/*
 * MCL20: the calls that build a model for the Meshcaster renderer.
 *
 * A model is built by the calls between McModelBegin and McModelEnd. The model, an open clump and an open
 * prototype are each a scope. A scope has its own placement (identity at its start), a stack of saved
 * placements, and vertices that are numbered from 1. Placements are 4x4 matrices for row vectors, p' = p * M,
 * with the position in row 3.
 *
 * Errors are counted, never returned; mclmodel.h has the count. A call is an error if a needed argument is
 * null, a value is out of the range given here, no model is open, an End has no Begin, or memory is lacking.
 * It then has no effect except as described at the call. Texts are copied: they need to live for the call
 * only. Build one model at a time and make one call at a time: nothing here takes a lock.
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

/* Texture co-ordinates of a vertex. Generated sources declare one even if nothing uses it. */
typedef struct MCL_MAYBE_UNUSED McUV {
    float u, v;
} McUV;

/* Converts a number to the float that the calls take. */
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
 * McModelBegin opens a model. It is an error while one is open, which stays open.
 * McModelEnd closes it. Clumps, prototypes and saved placements that are still open are an error and are
 * closed with it. If McClumpEnd gave none of the model's clumps to the caller, the model is freed here.
 * Otherwise it lives until it is freed through one of its clumps.
 */
MCL_API void McModelBegin(void);
MCL_API void McModelEnd(void);

/*
 * McClumpBegin opens a clump in the model or in the open clump, at the placement of that scope. It is an
 * error in a prototype. McClumpEnd closes the clump that was opened last and stores it in *clump. If no clump
 * is open, *clump is unchanged. A null clump, and saved placements left on the clump's stack, are an error,
 * but the clump is closed.
 */
MCL_API void McClumpBegin(void);
MCL_API void McClumpEnd(McClump **clump);

/* Set the tag (any number) or the hints (mcHS and mcEDITABLE bits) of the open clump. Both start at 0. */
MCL_API void McSetTag(int tag);
MCL_API void McSetHints(int hints);

/*
 * McTransformBegin saves the placement of the innermost open scope. McTransformCTM replaces it by a copy of
 * the matrix (it doesn't multiply). McTransformEnd restores the saved one. An End pairs only with a Begin of
 * the same scope.
 */
MCL_API void McTransformBegin(void);
MCL_API void McTransformCTM(McMatrix4d *matrix);
MCL_API void McTransformEnd(void);

/*
 * McProtoBegin opens a prototype: geometry that instances refer to by name. It is an error inside a clump or
 * another prototype. If a prototype of the model already has the name, that is an error too, but the new one
 * is opened and used for all instances of the name, earlier ones included.
 */
MCL_API void McProtoBegin(const char *name);
MCL_API void McProtoEnd(void);

/*
 * Adds an instance of a prototype to the open clump at its current placement. Adds no vertices. The
 * prototype may come later in the model.
 */
MCL_API void McProtoInstance(const char *name);

/*
 * Add a vertex, transformed by the current placement, to the open clump or prototype. A null uv is an error,
 * and the vertex is added without texture co-ordinates. extension isn't read: pass NULL.
 */
MCL_API void McVertex(float x, float y, float z);
MCL_API void McVertexExt(float x, float y, float z, McUV *uv, void *extension);

/*
 * Adds a triangle with the current surface to the open clump or prototype. a, b and c are vertex numbers,
 * from 1 to the number of vertices that the clump or prototype has so far.
 */
MCL_API void McTriangle(int a, int b, int c);

/*
 * Change the current surface. The model has one, which scopes don't affect. It starts with ambient 0, diffuse
 * 1, specular 0, white, opaque, mcSOLID, mcVERTEX, no texture modes and no texture. Numbers are usually from
 * 0 to 1; this isn't checked. Modes are mcLIT, mcFORESHORTEN and mcFILTER or'ed, or 0.
 */
MCL_API void McSetSurface(float ambient, float diffuse, float specular);
MCL_API void McSetSurfaceColor(float red, float green, float blue);
MCL_API void McSetSurfaceOpacity(float opacity);
MCL_API void McSetSurfaceGeometrySampling(int sampling);
MCL_API void McSetSurfaceLightSampling(int sampling);
MCL_API void McSetSurfaceTextureModes(int modes);

/* Set the texture, with a mask or without. McSetSurfaceTexture with a null name removes texture and mask. */
MCL_API void McSetSurfaceTextureExt(const char *name, const char *mask);
MCL_API void McSetSurfaceTexture(const char *name);

/*
 * McCreateMatrix creates a matrix, initially the identity. Null if out of memory. The caller owns it, no
 * model does, and passes it to McDestroyMatrix once.
 */
MCL_API McMatrix4d *McCreateMatrix(void);
MCL_API void McDestroyMatrix(McMatrix4d *matrix);

/* Sets one element; row and column are 0 to 3. */
MCL_API void McSetMatrixElement(McMatrix4d *matrix, int row, int column, float value);

#ifdef __cplusplus
}
#endif

#endif
