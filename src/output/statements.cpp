// Every statement as script text, C source text and library call. Trailing blanks are part of the formats.

#include "format.h"
#include "output.h"

// The library is in C, but not every mclib.h has its own extern "C".
extern "C" {
#include <mclib.h>
}

// For direct builds. The generated C source has variables of the same names.
static McMatrix4d *tmpmat;
static McUV tmpuv;

static bool IsDirect(const Mc3dsWriter *writer)
{
    return (writer->options->flags & MC3DS_DIRECT) != 0;
}

static bool IsSource(const Mc3dsWriter *writer)
{
    return (writer->options->flags & MC3DS_SOURCE) != 0;
}

static void Mc3dsEmitLineStart(Mc3dsWriter *writer)
{
    if (IsDirect(writer))
        return;
    writer->blankLineDone = 0;
    Mc3dsIndentText(writer);
}

template <Mc3dsFormat source, class... Arguments>
static void Source(Mc3dsWriter *writer, Arguments... arguments)
{
    Mc3dsEmitLineStart(writer);
    Mc3dsPrint<source>(writer, arguments...);
}

// One line of a statement that has the same lines and values in both text targets.
template <Mc3dsFormat script, Mc3dsFormat source, class... Arguments>
static void Line(Mc3dsWriter *writer, Arguments... arguments)
{
    Mc3dsEmitLineStart(writer);
    if (IsSource(writer))
        Mc3dsPrint<source>(writer, arguments...);
    else
        Mc3dsPrint<script>(writer, arguments...);
}

// A statement of one line. The result of a call is ignored: some Meshcaster libraries return a status.
template <Mc3dsFormat script, Mc3dsFormat source, class Call, class... Values>
static void Statement(Mc3dsWriter *writer, Call call, Values... values)
{
    if (IsDirect(writer))
        static_cast<void>(call(values...));
    else
        Line<script, source>(writer, values...);
}

struct BitNames {
    const char *script, *source;
    int value;
};

static const char *BitText(const Mc3dsWriter *writer, const BitNames &bits)
{
    return IsSource(writer) ? bits.source : bits.script;
}

void Mc3dsEmitSeparator(Mc3dsWriter *writer)
{
    if (IsDirect(writer) || writer->blankLineDone)
        return;
    Mc3dsPrint<"\n">(writer);
    writer->blankLineDone = 1;
}

void Mc3dsEmitComment(Mc3dsWriter *writer, const char *text)
{
    if (!IsDirect(writer))
        Line<"# %s\n", "// %s\n">(writer, text);
}

void Mc3dsEmitModelBegin(Mc3dsWriter *writer)
{
    Statement<"ModelBegin\n", "McModelBegin();\n">(writer, McModelBegin);
}

void Mc3dsEmitModelEnd(Mc3dsWriter *writer)
{
    Statement<"ModelEnd\n", "McModelEnd();\n">(writer, McModelEnd);
}

static void Mc3dsEmitClumpBegin(Mc3dsWriter *writer)
{
    Statement<"ClumpBegin\n", "McClumpBegin();\n">(writer, McClumpBegin);
}

void Mc3dsEmitClumpEnd(Mc3dsWriter *writer)
{
    Statement<"ClumpEnd\n", "McClumpEnd(&tmpclump);\n">(writer, [=] { return McClumpEnd(&writer->clump); });
    writer->clumpEnded = true;
}

static void Mc3dsEmitTag(Mc3dsWriter *writer, int32_t tag)
{
    Statement<"Tag %d\n", "McSetTag(%d);\n">(writer, McSetTag, tag);
}

static void Mc3dsEmitHints(Mc3dsWriter *writer)
{
    static const BitNames hints[] = {
        {"NULL", "0L", 0},
        {"HS", "mcHS", mcHS},
        {"EDITABLE", "mcEDITABLE", mcEDITABLE},
        {"HS EDITABLE", "mcHS|mcEDITABLE", mcHS | mcEDITABLE},
    };
    static_assert(MC3DS_HINT_HS == 1 && MC3DS_HINT_EDITABLE == 2, "the order of the rows");
    const BitNames &bits = hints[writer->options->hintFlags & (MC3DS_HINT_HS | MC3DS_HINT_EDITABLE)];
    Statement<"Hints %s\n", "McSetHints(%s);\n">(
        writer, [&](const char *) { return McSetHints(bits.value); }, BitText(writer, bits));
}

void Mc3dsEmitProtoBegin(Mc3dsWriter *writer, const char *name)
{
    Statement<"ProtoBegin %s\n", "McProtoBegin(\"%s\");\n">(writer, McProtoBegin, name);
}

void Mc3dsEmitProtoEnd(Mc3dsWriter *writer)
{
    Statement<"ProtoEnd\n", "McProtoEnd();\n">(writer, McProtoEnd);
}

void Mc3dsEmitProtoInstance(Mc3dsWriter *writer, const char *name)
{
    Statement<"ProtoInstance %s\n", "McProtoInstance(\"%s\");\n">(writer, McProtoInstance, name);
}

void Mc3dsEmitClumpHead(Mc3dsWriter *writer, int32_t tag)
{
    Mc3dsEmitSeparator(writer);
    Mc3dsEmitClumpBegin(writer);
    ++writer->indent;
    Mc3dsEmitHints(writer);
    Mc3dsEmitTag(writer, tag);
    Mc3dsEmitSeparator(writer);
}

void Mc3dsEmitTransformBegin(Mc3dsWriter *writer)
{
    Statement<"TransformBegin\n", "McTransformBegin();\n">(writer, McTransformBegin);
}

void Mc3dsEmitTransformEnd(Mc3dsWriter *writer)
{
    Statement<"TransformEnd\n", "McTransformEnd();\n">(writer, McTransformEnd);
}

// The library takes 4x4 matrices; the fourth column is (0, 0, 0, 1).
static void TransformDirect(const Mc3dsTransform *transform)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 3; ++c)
            static_cast<void>(McSetMatrixElement(tmpmat, r, c, static_cast<float>(transform->m[r][c])));
        static_cast<void>(McSetMatrixElement(tmpmat, r, 3, r < 3 ? 0.0f : 1.0f));
    }
    static_cast<void>(McTransformCTM(tmpmat));
}

static void TransformSource(Mc3dsWriter *writer, const Mc3dsTransform *transform)
{
    for (int32_t r = 0; r < 4; ++r) {
        for (int32_t c = 0; c < 3; ++c)
            Source<"McSetMatrixElement(tmpmat, %d, %d, CREAL(%f));\n">(writer, r, c, transform->m[r][c]);
        if (r < 3)
            Source<"McSetMatrixElement(tmpmat, %d, 3, CREAL(0.0f));\n">(writer, r);
        else
            Source<"McSetMatrixElement(tmpmat, 3, 3, CREAL(1.0f));\n">(writer);
    }
    Source<"McTransformCTM(tmpmat);\n">(writer);
}

static void TransformScript(Mc3dsWriter *writer, const Mc3dsTransform *transform)
{
    const auto &m = transform->m;
    Mc3dsEmitLineStart(writer);
    Mc3dsPrint<"Transform %f %f %f 0.0 ">(writer, m[0][0], m[0][1], m[0][2]);
    Mc3dsPrint<"%f %f %f 0.0 ">(writer, m[1][0], m[1][1], m[1][2]);
    Mc3dsPrint<"%f %f %f 0.0 ">(writer, m[2][0], m[2][1], m[2][2]);
    Mc3dsPrint<"%f %f %f 1.0\n">(writer, m[3][0], m[3][1], m[3][2]);
}

void Mc3dsEmitTransform(Mc3dsWriter *writer, const Mc3dsTransform *transform)
{
    if (IsDirect(writer))
        TransformDirect(transform);
    else if (IsSource(writer))
        TransformSource(writer, transform);
    else
        TransformScript(writer, transform);
}

bool Mc3dsEmitMatrixCreation(Mc3dsWriter *writer)
{
    if (IsDirect(writer)) {
        tmpmat = McCreateMatrix();
        return tmpmat != nullptr;
    }
    Source<"tmpmat = McCreateMatrix();\n">(writer);
    Source<"if (!tmpmat) return(NULL);\n">(writer);
    return true;
}

void Mc3dsEmitMatrixDestruction(Mc3dsWriter *writer)
{
    if (IsDirect(writer))
        static_cast<void>(McDestroyMatrix(tmpmat));
    else
        Source<"McDestroyMatrix(tmpmat);\n">(writer);
}

void Mc3dsEmitVertex(Mc3dsWriter *writer, const float p[3])
{
    Statement<"Vertex %10.6f %10.6f %10.6f\n", "McVertex(CREAL(%10.6f), CREAL(%10.6f), CREAL(%10.6f));\n">(
        writer, McVertex, p[0], p[1], p[2]);
}

void Mc3dsEmitVertexExt(Mc3dsWriter *writer, const float p[3], float u, float v)
{
    if (IsDirect(writer)) {
        tmpuv.u = u;
        tmpuv.v = v;
        static_cast<void>(McVertexExt(p[0], p[1], p[2], &tmpuv, nullptr));
    } else if (IsSource(writer)) {
        Source<"tmpuv.u = CREAL(%f);\n">(writer, u);
        Source<"tmpuv.v = CREAL(%f);\n">(writer, v);
        Source<"McVertexExt(CREAL(%10.6f), CREAL(%10.6f), CREAL(%10.6f), &tmpuv, NULL);\n">(writer, p[0],
                                                                                            p[1], p[2]);
    } else {
        Mc3dsEmitLineStart(writer);
        Mc3dsPrint<"VertexExt %10.6f %10.6f %10.6f UV %f %f\n">(writer, p[0], p[1], p[2], u, v);
    }
}

void Mc3dsEmitTriangleNumbers(Mc3dsWriter *writer, int32_t a, int32_t b, int32_t c)
{
    Statement<"Triangle %d %d %d\n", "McTriangle(%d, %d, %d);\n">(writer, McTriangle, a, b, c);
}

void Mc3dsEmitSurfaceCoefficients(Mc3dsWriter *writer, float ambient, float diffuse, float specular)
{
    Statement<"Surface %f %f %f\n", "McSetSurface(CREAL(%f), CREAL(%f), CREAL(%f));\n">(
        writer, McSetSurface, ambient, diffuse, specular);
}

void Mc3dsEmitColor(Mc3dsWriter *writer, const float c[3])
{
    Statement<"Color %f %f %f\n", "McSetSurfaceColor(CREAL(%f), CREAL(%f), CREAL(%f));\n">(
        writer, McSetSurfaceColor, c[0], c[1], c[2]);
}

void Mc3dsEmitOpacity(Mc3dsWriter *writer, float opacity)
{
    Statement<"Opacity %f\n", "McSetSurfaceOpacity(CREAL(%f));\n">(writer, McSetSurfaceOpacity, opacity);
}

void Mc3dsEmitGeometrySampling(Mc3dsWriter *writer, bool wireframe)
{
    Statement<"GeometrySampling %s\n", "McSetSurfaceGeometrySampling(mc%s);\n">(
        writer, [=](const char *) { return McSetSurfaceGeometrySampling(wireframe ? mcWIREFRAME : mcSOLID); },
        wireframe ? "WIREFRAME" : "SOLID");
}

void Mc3dsEmitLightSampling(Mc3dsWriter *writer, bool facet)
{
    Statement<"LightSampling %s\n", "McSetSurfaceLightSampling(mc%s);\n">(
        writer, [=](const char *) { return McSetSurfaceLightSampling(facet ? mcFACET : mcVERTEX); },
        facet ? "FACET" : "VERTEX");
}

void Mc3dsEmitTextureModes(Mc3dsWriter *writer)
{
    // Names are written in the order Lit, Filter, Foreshorten, which differs from the library's values.
    static const BitNames modes[] = {
        {"Null", "0L", 0},
        {"Lit", "mcLIT", mcLIT},
        {"Filter", "mcFILTER", mcFILTER},
        {"Lit Filter", "mcLIT|mcFILTER", mcLIT | mcFILTER},
        {"Foreshorten", "mcFORESHORTEN", mcFORESHORTEN},
        {"Lit Foreshorten", "mcLIT|mcFORESHORTEN", mcLIT | mcFORESHORTEN},
        {"Filter Foreshorten", "mcFILTER|mcFORESHORTEN", mcFILTER | mcFORESHORTEN},
        {"Lit Filter Foreshorten", "mcLIT|mcFILTER|mcFORESHORTEN", mcLIT | mcFILTER | mcFORESHORTEN},
    };
    static_assert(MC3DS_TEXTURE_LIT == 4 && MC3DS_TEXTURE_FILTER == 8 && MC3DS_TEXTURE_FORESHORTEN == 16,
                  "the order of the rows");
    const BitNames &bits = modes[writer->options->surfaceFlags / MC3DS_TEXTURE_LIT % 8];
    Statement<"TextureModes %s\n", "McSetSurfaceTextureModes(%s);\n">(
        writer, [&](const char *) { return McSetSurfaceTextureModes(bits.value); }, BitText(writer, bits));
}

void Mc3dsEmitTextureExt(Mc3dsWriter *writer, const char *name, const char *mask)
{
    Statement<"TextureExt %s Mask %s\n", "McSetSurfaceTextureExt(\"%s\", \"%s\");\n">(
        writer, McSetSurfaceTextureExt, name, mask);
}

void Mc3dsEmitTexture(Mc3dsWriter *writer, const char *name)
{
    Statement<"Texture %s\n", "McSetSurfaceTexture(\"%s\");\n">(writer, McSetSurfaceTexture, name);
}

// For the statements that name a texture in a comment only.
constexpr auto takeTextureOff = [](auto...) { return McSetSurfaceTexture(nullptr); };

void Mc3dsEmitTextureNull(Mc3dsWriter *writer)
{
    Statement<"Texture NULL\n", "McSetSurfaceTexture(NULL);\n">(writer, takeTextureOff);
}

void Mc3dsEmitTextureNullNamed(Mc3dsWriter *writer, const char *name)
{
    Statement<"Texture NULL # %s\n", "McSetSurfaceTexture(NULL);  // %s \n">(writer, takeTextureOff, name);
}

void Mc3dsEmitTextureNullMasked(Mc3dsWriter *writer, const char *name, const char *mask)
{
    Statement<"Texture NULL # %s Mask %s \n", "McSetSurfaceTexture(NULL);  // %s Mask %s\n">(
        writer, takeTextureOff, name, mask);
}

// In the texts around the statements, lines without indentation don't change blankLineDone.

void Mc3dsEmitBannerOrigin(Mc3dsWriter *writer, const char *fileName)
{
    const char *outputFile = Mc3dsOptionText(writer->options->outputFile);
    Line<"# <%s> Created from 3D Studio File <%s> by 3ds2mcx V%s\n",
         "// <%s> Created from 3D Studio File <%s> by 3ds2mcx V%s\n">(writer, outputFile, fileName,
                                                                      Mc3dsGetVersion());
}

void Mc3dsEmitSourceHead(Mc3dsWriter *writer)
{
    Source<"\n">(writer);
    Mc3dsPrint<"#include <mclib.h>\n\nMcClump *McBuild%s(void)\n{\n">(
        writer, Mc3dsOptionText(writer->options->clumpName));
    ++writer->indent;
    Source<"McClump *tmpclump;\n">(writer);
    Source<"McMatrix4d *tmpmat;\n">(writer);
    Source<"McUV tmpuv;\n">(writer);
    Mc3dsPrint<"\n">(writer);
    Mc3dsEmitMatrixCreation(writer);
    Mc3dsPrint<"\n">(writer);
}

void Mc3dsEmitSourceTail(Mc3dsWriter *writer)
{
    Mc3dsEmitLineStart(writer); // this line is indented twice
    Mc3dsEmitMatrixDestruction(writer);
    if (writer->clumpEnded)
        Source<"return(tmpclump);\n">(writer);
    else
        Source<"return(NULL);\n">(writer);
    --writer->indent;
    Mc3dsPrint<"}\n">(writer);
}

void Mc3dsWriteHeaderTop(Mc3dsWriter *writer, const char *fileName)
{
    const Mc3dsOptions *options = writer->options;
    Mc3dsPrint<"////\n// Meshcaster(tm) script header file\n">(writer);
    Mc3dsPrint<"// <%s> Created from 3D Studio File <%s> by 3ds2mcx V%s\n// \n">(
        writer, Mc3dsOptionText(options->outputFile), fileName, Mc3dsGetVersion());
    if (IsSource(writer))
        Mc3dsPrint<"// Define ANSI function prototypes\nMcClump *McBuild%s(void);\n\n">(
            writer, Mc3dsOptionText(options->clumpName));
    Mc3dsPrint<"#define TAG_ROOT 1\n">(writer);
}

void Mc3dsWriteHeaderTag(Mc3dsWriter *writer, const char *name, int32_t tag)
{
    Mc3dsPrint<"#define TAG_%s %d\n">(writer, name, tag);
}

void Mc3dsWriteFrameLine(Mc3dsWriter *writer, int32_t frame)
{
    Mc3dsPrint<"Frame %d\n">(writer, frame);
}

void Mc3dsWriteFrameTransform(Mc3dsWriter *writer, int32_t number, const Mc3dsTransform *transform)
{
    const auto &m = transform->m;
    Mc3dsPrint<"Transform %d %f %f %f">(writer, number, m[0][0], m[0][1], m[0][2]);
    Mc3dsPrint<" %f %f %f">(writer, m[1][0], m[1][1], m[1][2]);
    Mc3dsPrint<" %f %f %f">(writer, m[2][0], m[2][1], m[2][2]);
    Mc3dsPrint<" %f %f %f\n">(writer, m[3][0], m[3][1], m[3][2]);
}
