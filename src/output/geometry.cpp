#include <cmath>

#include "output.h"

constexpr float largestTexture = 32.0f;

// The integer that, added to m, brings it into [0, 2).
static float Shift(double m)
{
    const bool fits = m > -2147483649.0 && m < 2147483648.0; // false for NaN too
    const double truncated = fits ? std::trunc(m) : 0.0;
    const auto shift = static_cast<float>(-truncated);
    return shift < 0.0f ? shift : static_cast<float>(static_cast<double>(shift) + 1.0);
}

static float Fold(double shifted)
{
    constexpr int mostSteps = 1024;
    auto t = static_cast<float>(shifted);
    for (int step = 0; t > largestTexture; ++step) {
        Mc3dsError(2, Mc3dsReportKind::TextureRange,
                   "Texture co-ordinate range larger than 32.0. Possible errors in output");
        if (step == mostSteps || t - largestTexture == t) {
            const float left = std::isfinite(t) ? std::fmod(t, largestTexture) : -1.0f;
            return left < 0.0f ? 0.0f : left == 0.0f ? largestTexture : left;
        }
        t -= largestTexture;
    }
    return t;
}

static void EmitVertices(Mc3dsWriter *writer, const Mc3dsObject *object, const Mc3dsTransform *transform)
{
    float uShift = 0.0f, vShift = 0.0f;
    if (object->hasTexture) {
        uShift = Shift(static_cast<double>(object->boundsMin[3]));
        vShift = Shift(32.0 - static_cast<double>(object->boundsMax[4]));
    }
    for (int32_t i = 0; i < object->vertexCount; ++i) {
        const Mc3dsVertex &vertex = object->vertices[i];
        const float in[3] = {vertex.x, vertex.y, vertex.z};
        float position[3];
        Mc3dsTransformPoint(in, transform, position);
        if (!object->hasTexture) {
            Mc3dsEmitVertex(writer, position);
            continue;
        }
        const float u = Fold(static_cast<double>(vertex.u) + static_cast<double>(uShift));
        // The file's v axis points the other way.
        const float v = Fold((32.0 - static_cast<double>(vertex.v)) + static_cast<double>(vShift));
        Mc3dsEmitVertexExt(writer, position, u, v);
    }
}

static void Mc3dsEmitTriangle(Mc3dsWriter *writer, const Mc3dsFace *face, int32_t vertexBase)
{
    const uint32_t first = static_cast<uint32_t>(vertexBase) + 1; // targets count vertices from 1
    Mc3dsEmitTriangleNumbers(writer, static_cast<int32_t>(face->a + first),
                             static_cast<int32_t>(face->b + first), static_cast<int32_t>(face->c + first));
}

static void EmitSoundTriangle(Mc3dsWriter *writer, const Mc3dsObject *object, const Mc3dsFace *face,
                              int32_t vertexBase)
{
    if (Mc3dsHasVertices(object, face))
        Mc3dsEmitTriangle(writer, face, vertexBase);
}

// Skips groups of unknown materials: EmitRemainingFaces writes their faces.
static void EmitGroups(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsObject *object,
                       int32_t vertexBase)
{
    for (uint32_t i = 0; i < object->groupCount; ++i) {
        const Mc3dsMaterialGroup &group = object->groups[i];
        if (group.material == 0)
            continue;
        Mc3dsEmitSurface(writer, &file->materials[group.material]);
        for (uint32_t j = 0; j < group.count; ++j)
            EmitSoundTriangle(writer, object, &object->faces[group.faces[j]], vertexBase);
    }
}

static void EmitRemainingFaces(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsObject *object,
                               int32_t vertexBase)
{
    bool surfaceDone = false;
    for (int32_t i = 0; i < object->faceCount; ++i) {
        if (object->faces[i].material != 0)
            continue;
        if (!surfaceDone) {
            Mc3dsMessage(2, "Using Default Material");
            Mc3dsEmitSurface(writer, &file->materials[0]);
            surfaceDone = true;
        }
        EmitSoundTriangle(writer, object, &object->faces[i], vertexBase);
    }
}

void Mc3dsEmitGeometry(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsObject *object,
                       const Mc3dsTransform *transform, int32_t vertexBase)
{
    EmitVertices(writer, object, transform);
    EmitGroups(file, writer, object, vertexBase);
    EmitRemainingFaces(file, writer, object, vertexBase);
}
