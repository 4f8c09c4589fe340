/*
 * Another Meshcaster header, for compile tests only: every call but McCreateMatrix returns a status,
 * constants are enumerators, and there is no extern "C".
 */
#ifndef STRICT_MCLIB_H
#define STRICT_MCLIB_H

#include <stddef.h>

#define CREAL(x) ((float)(x))

typedef struct McClump McClump;
typedef struct McMatrix4d McMatrix4d;
typedef struct McUV {
    float u, v;
} McUV;

enum { mcHS = 2, mcEDITABLE = 4 };
enum { mcLIT = 1, mcFORESHORTEN = 2, mcFILTER = 4 };
enum { mcWIREFRAME = 2, mcSOLID = 4 };
enum { mcFACET = 1, mcVERTEX = 2 };

int McModelBegin(void);
int McModelEnd(void);
int McClumpBegin(void);
int McClumpEnd(McClump **clump);
int McSetTag(int tag);
int McSetHints(int hints);
int McTransformBegin(void);
int McTransformCTM(McMatrix4d *matrix);
int McTransformEnd(void);
int McProtoBegin(const char *name);
int McProtoEnd(void);
int McProtoInstance(const char *name);
int McVertex(float x, float y, float z);
int McVertexExt(float x, float y, float z, McUV *uv, void *extension);
int McTriangle(int a, int b, int c);
int McSetSurface(float ambient, float diffuse, float specular);
int McSetSurfaceColor(float red, float green, float blue);
int McSetSurfaceOpacity(float opacity);
int McSetSurfaceGeometrySampling(int sampling);
int McSetSurfaceLightSampling(int sampling);
int McSetSurfaceTextureModes(int modes);
int McSetSurfaceTextureExt(const char *name, const char *mask);
int McSetSurfaceTexture(const char *name);
McMatrix4d *McCreateMatrix(void);
int McDestroyMatrix(McMatrix4d *matrix);
int McSetMatrixElement(McMatrix4d *matrix, int row, int column, float value);

#endif
