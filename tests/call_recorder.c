/*
 * Replaces the Meshcaster library and prints each call as a line in script syntax. With MC3DS_FUNCTION
 * defined the program runs that generated function; else MCL3DS20 builds a scene directly:
 *   call_recorder scene flags surfaceFlags hintFlags scale
 */
#include <mcl3ds20.h>
#include <mclib.h>
#include <stdio.h>
#include <stdlib.h>

struct McMatrix4d {
    int number; /* 1 for the matrix that a document creates */
};

struct McClump {
    int number; /* from 1, in the order in which the clumps ended */
};

static McMatrix4d matrix;
static McClump clumps[1000];
static int clumpCount;

/* clang-format off */
#define CALL(name, parameters, ...) void name parameters { printf(__VA_ARGS__); }

CALL(McModelBegin, (void), "ModelBegin\n")
CALL(McModelEnd, (void), "ModelEnd\n")
CALL(McClumpBegin, (void), "ClumpBegin\n")
CALL(McSetTag, (int tag), "Tag %d\n", tag)
CALL(McSetHints, (int hints), "Hints %d\n", hints)
CALL(McTransformBegin, (void), "TransformBegin\n")
CALL(McTransformCTM, (McMatrix4d *m), "TransformCTM %d\n", m->number)
CALL(McTransformEnd, (void), "TransformEnd\n")
CALL(McProtoBegin, (const char *name), "ProtoBegin %s\n", name)
CALL(McProtoEnd, (void), "ProtoEnd\n")
CALL(McProtoInstance, (const char *name), "ProtoInstance %s\n", name)
CALL(McVertex, (float x, float y, float z), "Vertex %.9g %.9g %.9g\n", x, y, z)
CALL(McVertexExt, (float x, float y, float z, McUV *uv, void *extension),
     "VertexExt %.9g %.9g %.9g UV %.9g %.9g%s\n", x, y, z, uv->u, uv->v, extension ? " extension" : "")
CALL(McTriangle, (int a, int b, int c), "Triangle %d %d %d\n", a, b, c)
CALL(McSetSurface, (float a, float d, float s), "Surface %.9g %.9g %.9g\n", a, d, s)
CALL(McSetSurfaceColor, (float r, float g, float b), "Color %.9g %.9g %.9g\n", r, g, b)
CALL(McSetSurfaceOpacity, (float opacity), "Opacity %.9g\n", opacity)
CALL(McSetSurfaceGeometrySampling, (int sampling), "GeometrySampling %d\n", sampling)
CALL(McSetSurfaceLightSampling, (int sampling), "LightSampling %d\n", sampling)
CALL(McSetSurfaceTextureModes, (int modes), "TextureModes %d\n", modes)
CALL(McSetSurfaceTextureExt, (const char *name, const char *mask), "TextureExt %s Mask %s\n", name, mask)
CALL(McSetSurfaceTexture, (const char *name), "Texture %s\n", name ? name : "NULL")
CALL(McSetMatrixElement, (McMatrix4d *m, int row, int column, float value),
     "MatrixElement %d %d %d %.9g\n", m->number, row, column, value)
CALL(McDestroyMatrix, (McMatrix4d *m), "DestroyMatrix %d\n", m->number)
/* clang-format on */

McMatrix4d *McCreateMatrix(void)
{
    printf("CreateMatrix\n");
    ++matrix.number;
    return &matrix;
}

void McClumpEnd(McClump **clump)
{
    printf("ClumpEnd\n");
    *clump = &clumps[clumpCount];
    (*clump)->number = ++clumpCount;
}

#if defined(MC3DS_FUNCTION)
McClump *MC3DS_FUNCTION(void);
#endif

int main(int count, char **arguments)
{
    McClump *clump = clumps;
    (void)count, (void)arguments;
#if defined(MC3DS_FUNCTION)
    clump = MC3DS_FUNCTION();
#else
    Mc3dsFile *scene = Mc3dsLoadFile(arguments[1]);
    Mc3dsOptions options = {0};
    options.flags = MC3DS_DIRECT | (uint32_t)atoi(arguments[2]);
    options.surfaceFlags = (uint32_t)atoi(arguments[3]);
    options.hintFlags = (uint32_t)atoi(arguments[4]);
    options.scale = (float)atof(arguments[5]);
    options.size = 100;
    options.redWeight = 0.299f;
    options.greenWeight = 0.587f;
    options.blueWeight = 0.114f;
    options.opacity = 0.3f;
    Mc3dsOutput(scene, &options, &clump);
    Mc3dsUnloadFile(scene);
#endif
    printf("result %d\n", clump ? clump->number : 0);
    return 0;
}
