#include <mclib.h>
#include <vector>

#include "baseline.h"

struct Writer {
    const Mc3dsFile *scene;
    const Mc3dsOptions *options;
    FILE *out;
    bool source, blank;
    int indent;
    Mc3dsTransform axes, axesInverse;
    std::vector<std::vector<uint32_t>> children; // objects by the node number of their parent
};

static void StartLine(Writer *writer)
{
    writer->blank = false;
    for (int i = 0; i < writer->indent; ++i)
        std::fprintf(writer->out, "  ");
}

static void Separator(Writer *writer)
{
    if (!writer->blank)
        std::fprintf(writer->out, "\n");
    writer->blank = true;
}

#define LINE(writer, ...) (StartLine(writer), std::fprintf((writer)->out, __VA_ARGS__))

// One line in script or C source.
#define EITHER(writer, script, text, ...)                                                                    \
    LINE(writer, (writer)->source ? text : script __VA_OPT__(, ) __VA_ARGS__)

static void Placement(Writer *writer, const Mc3dsTransform &transform)
{
    const auto &m = transform.m;
    if (!writer->source) {
        LINE(writer, "Transform %f %f %f 0.0 %f %f %f 0.0 %f %f %f 0.0 %f %f %f 1.0\n", m[0][0], m[0][1],
             m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2], m[3][0], m[3][1], m[3][2]);
        return;
    }
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 3; ++c)
            LINE(writer, "McSetMatrixElement(tmpmat, %d, %d, CREAL(%f));\n", r, c, m[r][c]);
        LINE(writer, "McSetMatrixElement(tmpmat, %d, 3, CREAL(%s));\n", r, r < 3 ? "0.0f" : "1.0f");
    }
    LINE(writer, "McTransformCTM(tmpmat);\n");
}

static void ClumpHead(Writer *writer, uint32_t tag)
{
    Separator(writer);
    EITHER(writer, "ClumpBegin\n", "McClumpBegin();\n");
    ++writer->indent;
    EITHER(writer, "Hints NULL\n", "McSetHints(0L);\n");
    EITHER(writer, "Tag %u\n", "McSetTag(%u);\n", tag);
    Separator(writer);
}

static void ClumpEnd(Writer *writer)
{
    --writer->indent;
    EITHER(writer, "ClumpEnd\n", "McClumpEnd(&tmpclump);\n");
}

static double Reduce(const Mc3dsOptions *options, const float c[3])
{
    const double red = options->redWeight, green = options->greenWeight, blue = options->blueWeight;
    return static_cast<float>((c[0] * red + c[1] * green) + c[2] * blue);
}

static void Surface(Writer *writer, const Mc3dsMaterial &material)
{
    const float *c = material.diffuse;
    const double ambient = Reduce(writer->options, material.ambient);
    Separator(writer);
    EITHER(writer, "Surface %f %f %f\n", "McSetSurface(CREAL(%f), CREAL(%f), CREAL(%f));\n",
           ambient < 0.1f ? 0.1f : ambient, Reduce(writer->options, c),
           Reduce(writer->options, material.specular));
    EITHER(writer, "Color %f %f %f\n", "McSetSurfaceColor(CREAL(%f), CREAL(%f), CREAL(%f));\n", c[0], c[1],
           c[2]);
    EITHER(writer, "Opacity %f\n", "McSetSurfaceOpacity(CREAL(%f));\n",
           static_cast<float>(1.0 - static_cast<double>(material.transparency)));
    EITHER(writer, "GeometrySampling %s\n", "McSetSurfaceGeometrySampling(mc%s);\n",
           material.shading == 1 ? "WIREFRAME" : "SOLID");
    EITHER(writer, "LightSampling %s\n", "McSetSurfaceLightSampling(mc%s);\n",
           material.shading <= 2 ? "FACET" : "VERTEX");
    if (material.textureMap[0] != '\0') {
        EITHER(writer, "TextureModes Null\n", "McSetSurfaceTextureModes(0L);\n");
        EITHER(writer, "Texture %s\n", "McSetSurfaceTexture(\"%s\");\n", material.textureMap);
    } else {
        EITHER(writer, "Texture NULL\n", "McSetSurfaceTexture(NULL);\n");
    }
}

static void Triangle(Writer *writer, const Mc3dsFace &face)
{
    EITHER(writer, "Triangle %u %u %u\n", "McTriangle(%u, %u, %u);\n", face.a + 1, face.b + 1, face.c + 1);
}

static void Vertices(Writer *writer, const Mc3dsObject &object)
{
    const auto shift = [](double m) { // a whole number that moves the least co-ordinate into [0, 2)
        const double whole = -static_cast<double>(static_cast<int64_t>(m));
        return whole < 0.0 ? whole : whole + 1.0;
    };
    const double uShift = shift(object.boundsMin[3]), vShift = shift(32.0 - object.boundsMax[4]);
    for (int32_t i = 0; i < object.vertexCount; ++i) {
        const Mc3dsVertex &vertex = object.vertices[i];
        const float in[3] = {vertex.x, vertex.y, vertex.z};
        float p[3],
            uv[2] = {static_cast<float>(vertex.u + uShift), static_cast<float>((32.0 - vertex.v) + vShift)};
        Mc3dsTransformPoint(in, &writer->axes, p);
        for (float &number : uv)
            while (number > 32.0f)
                number -= 32.0f;
        if (writer->source) {
            LINE(writer, "tmpuv.u = CREAL(%f);\n", uv[0]);
            LINE(writer, "tmpuv.v = CREAL(%f);\n", uv[1]);
            LINE(writer, "McVertexExt(CREAL(%10.6f), CREAL(%10.6f), CREAL(%10.6f), &tmpuv, NULL);\n", p[0],
                 p[1], p[2]);
        } else {
            LINE(writer, "VertexExt %10.6f %10.6f %10.6f UV %f %f\n", p[0], p[1], p[2], uv[0], uv[1]);
        }
    }
}

static void Geometry(Writer *writer, const Mc3dsObject &object)
{
    const Mc3dsMaterial *materials = writer->scene->materials;
    Vertices(writer, object);
    for (uint32_t i = 0; i < object.groupCount; ++i) {
        const Mc3dsMaterialGroup &group = object.groups[i];
        Surface(writer, materials[group.material]);
        for (uint32_t j = 0; j < group.count; ++j)
            Triangle(writer, object.faces[group.faces[j]]);
    }
    bool surfaceDone = false;
    for (int32_t i = 0; i < object.faceCount; ++i) {
        if (object.faces[i].material != 0)
            continue;
        if (!surfaceDone)
            Surface(writer, materials[0]);
        surfaceDone = true;
        Triangle(writer, object.faces[i]);
    }
}

// local: the transform relative to the parent. inverse: of the object's world transform.
static void Place(const Writer *writer, const Mc3dsTransform *key, const Mc3dsTransform *parentInverse,
                  Mc3dsTransform *local, Mc3dsTransform *inverse)
{
    Mc3dsTransform centre, centred, turned, world;
    const float middle[3] = {};
    Mc3dsTransformTranslation(middle, &centre);
    Mc3dsTransformMultiply(key, &centre, &centred);
    Mc3dsTransformMultiply(&writer->axesInverse, &centred, &turned);
    Mc3dsTransformMultiply(&turned, &writer->axes, &world);
    Mc3dsTransformMultiply(&world, parentInverse, local);
    Mc3dsTransformInvert(&world, inverse);
}

static const std::vector<uint32_t> &Children(const Writer *writer, const Mc3dsObject &object)
{
    static const std::vector<uint32_t> none;
    const auto node = static_cast<size_t>(object.nodeId);
    return object.nodeId >= 0 && node < writer->children.size() ? writer->children[node] : none;
}

static void Object(Writer *writer, uint32_t index, const Mc3dsTransform *parentInverse)
{
    const Mc3dsObject &object = writer->scene->objects[index];
    const bool animated = (writer->options->flags & MC3DS_ANIMATION) && object.hasFrames;
    Mc3dsTransform local, inverse;
    Place(writer, animated ? &object.frames[0] : &object.meshMatrix, parentInverse, &local, &inverse);
    Separator(writer);
    EITHER(writer, "TransformBegin\n", "McTransformBegin();\n");
    ++writer->indent;
    Placement(writer, local);
    Separator(writer);
    EITHER(writer, "# %s\n", "// %s\n", object.safeName);
    ClumpHead(writer, index + 2);
    Geometry(writer, object);
    for (const uint32_t child : Children(writer, object))
        Object(writer, child, &inverse);
    ClumpEnd(writer);
    --writer->indent;
    EITHER(writer, "TransformEnd\n", "McTransformEnd();\n");
}

static void Frame(Writer *writer, uint32_t index, uint32_t frame, const Mc3dsTransform *parentInverse)
{
    const Mc3dsObject &object = writer->scene->objects[index];
    Mc3dsTransform local, inverse;
    Place(writer, &object.frames[frame], parentInverse, &local, &inverse);
    const auto &m = local.m;
    std::fprintf(writer->out, "Transform %u %f %f %f %f %f %f %f %f %f %f %f %f\n", index + 1, m[0][0],
                 m[0][1], m[0][2], m[1][0], m[1][1], m[1][2], m[2][0], m[2][1], m[2][2], m[3][0], m[3][1],
                 m[3][2]);
    for (const uint32_t child : Children(writer, object))
        Frame(writer, child, frame, &inverse);
}

static void Document(Writer *writer)
{
    const Mc3dsFile *scene = writer->scene;
    const char *mark = writer->source ? "//" : "#";
    std::fprintf(writer->out,
                 "%s \n%s \n%s Meshcaster(tm) Script File\n"
                 "%s <%s> Created from 3D Studio File <%s> by 3ds2mcx V3.0\n%s \n%s \n",
                 mark, mark, mark, mark, writer->options->outputFile, scene->fileName, mark, mark);
    if (writer->source)
        std::fprintf(writer->out,
                     "\n#include <mclib.h>\n\nMcClump *McBuild%s(void)\n{\n  McClump *tmpclump;\n"
                     "  McMatrix4d *tmpmat;\n  McUV tmpuv;\n\n  tmpmat = McCreateMatrix();\n"
                     "  if (!tmpmat) return(NULL);\n\n",
                     writer->options->clumpName);
    writer->indent = writer->source;
    EITHER(writer, "ModelBegin\n", "McModelBegin();\n");
    ++writer->indent;
    if (scene->rootCount > 1)
        ClumpHead(writer, 1);
    Mc3dsTransform identity;
    Mc3dsTransformIdentity(&identity);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (scene->objects[i].parentNode == 0xFFFF)
            Object(writer, i, &identity);
    if (scene->rootCount > 1)
        ClumpEnd(writer);
    --writer->indent;
    EITHER(writer, "ModelEnd\n", "McModelEnd();\n");
    if (writer->source)
        std::fprintf(writer->out, "    McDestroyMatrix(tmpmat);\n  return(tmpclump);\n}\n");
}

static void Header(const Writer *writer)
{
    std::fprintf(writer->out,
                 "////\n// Meshcaster(tm) script header file\n"
                 "// <%s> Created from 3D Studio File <%s> by 3ds2mcx V3.0\n// \n"
                 "// Define ANSI function prototypes\nMcClump *McBuild%s(void);\n\n#define TAG_ROOT 1\n",
                 writer->options->outputFile, writer->scene->fileName, writer->options->clumpName);
    for (uint32_t i = 0; i < writer->scene->objectCount; ++i)
        std::fprintf(writer->out, "#define TAG_%s %u\n", writer->scene->objects[i].safeName, i + 2);
}

static void Frames(Writer *writer)
{
    const Mc3dsFile *scene = writer->scene;
    Mc3dsTransform identity;
    Mc3dsTransformIdentity(&identity);
    for (uint32_t frame = 0; frame < scene->frameCount; ++frame) {
        std::fprintf(writer->out, "Frame %u\n", frame);
        for (uint32_t i = 0; i < scene->objectCount; ++i)
            if (scene->objects[i].hasFrames && scene->objects[i].parentNode == 0xFFFF)
                Frame(writer, i, frame, &identity);
    }
}

void BaselineOutput(const Mc3dsFile *scene, const Mc3dsOptions *options)
{
    const double s = options->scale;
    Writer writer = {};
    writer.scene = scene;
    writer.options = options;
    writer.source = (options->flags & MC3DS_SOURCE) != 0;
    writer.axes = {{{s, 0.0, 0.0}, {0.0, 0.0, -s}, {0.0, s, 0.0}, {0.0, 0.0, 0.0}}};
    Mc3dsTransformInvert(&writer.axes, &writer.axesInverse);
    writer.children.resize(scene->nodeCounter);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (scene->objects[i].parentNode < writer.children.size())
            writer.children[scene->objects[i].parentNode].push_back(i);
    const auto write = [&writer](const char *path, auto document) {
        writer.out = std::fopen(path, "w");
        document(&writer);
        std::fclose(writer.out);
    };
    write(options->outputFile, Document);
    if (options->flags & MC3DS_HEADER)
        write(options->headerFile, Header);
    if ((options->flags & MC3DS_ANIMATION) && scene->hasAnimation)
        write(options->animationFile, Frames);
}
