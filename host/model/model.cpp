#include "model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "frame/outcome.h"

Bounds NoBounds()
{
    constexpr double none = std::numeric_limits<double>::infinity();
    return {{none, none, none}, {-none, -none, -none}};
}

void Grow(Bounds *bounds, const Vector &place)
{
    for (size_t axis = 0; axis < 3; ++axis) {
        bounds->least[axis] = std::min(bounds->least[axis], place[axis]);
        bounds->most[axis] = std::max(bounds->most[axis], place[axis]);
    }
}

Vector Place(const Vector &p, const Matrix &m)
{
    return {p[0] * m[0] + p[1] * m[4] + p[2] * m[8] + m[12], p[0] * m[1] + p[1] * m[5] + p[2] * m[9] + m[13],
            p[0] * m[2] + p[1] * m[6] + p[2] * m[10] + m[14]};
}

Matrix Multiply(const Matrix &a, const Matrix &b)
{
    Matrix product;
    for (size_t row = 0; row < 16; row += 4)
        for (size_t column = 0; column < 4; ++column)
            product[row + column] = a[row] * b[column] + a[row + 1] * b[4 + column] +
                                    a[row + 2] * b[8 + column] + a[row + 3] * b[12 + column];
    return product;
}

bool Invert(const Matrix &m, Matrix *inverse)
{
    const auto minor = [&m](size_t a, size_t b, size_t c, size_t d) { return m[a] * m[d] - m[b] * m[c]; };
    const double x = minor(5, 6, 9, 10), y = minor(4, 6, 8, 10), z = minor(4, 5, 8, 9);
    const double determinant = m[0] * x - m[1] * y + m[2] * z;
    *inverse = identityMatrix;
    if (determinant == 0.0 || !std::isfinite(1.0 / determinant))
        return false;
    const double d = 1.0 / determinant;
    *inverse = {x * d,
                -minor(1, 2, 9, 10) * d,
                minor(1, 2, 5, 6) * d,
                0,
                -y * d,
                minor(0, 2, 8, 10) * d,
                -minor(0, 2, 4, 6) * d,
                0,
                z * d,
                -minor(0, 1, 8, 9) * d,
                minor(0, 1, 4, 5) * d,
                0,
                0,
                0,
                0,
                1};
    const Vector shift = Place(Vector{m[12], m[13], m[14]}, *inverse);
    for (size_t axis = 0; axis < 3; ++axis)
        (*inverse)[12 + axis] = -shift[axis];
    return true;
}

// A direct build uses frame 0 only, so other frames get a copy of the scene with shifted frame pointers.
Model BuildModel(const Mc3dsFile *scene, const Mc3dsOptions &asked, int64_t frame, Reporter *reporter,
                 uint32_t first, uint32_t end, float *scale)
{
    std::vector<Mc3dsObject> objects(scene->objects, scene->objects + scene->objectCount);
    Mc3dsFile copy = *scene;
    copy.objects = objects.data();
    Mc3dsOptions direct = asked;
    direct.flags |= MC3DS_DIRECT | (frame >= 0 ? MC3DS_ANIMATION : 0);
    for (uint32_t i = 0; i < scene->objectCount; ++i) {
        Mc3dsObject &object = objects[i];
        object.frames += object.frames && frame >= 0 ? frame : 0;
        if (i < first || i >= end) {
            object.vertexCount = object.faceCount = 0;
            object.groupCount = 0;
        }
    }
    const bool isHeard = !reporter->modelIsHeard && end > first;
    ListenToLibrary(isHeard ? reporter : nullptr);
    McClump *clump = nullptr;
    McClearErrors();
    Mc3dsOutput(&copy, &direct, &clump);
    ListenToLibrary(reporter);
    reporter->modelIsHeard = reporter->modelIsHeard || (isHeard && end >= scene->objectCount);
    reporter->memoryRanOut =
        reporter->memoryRanOut || Mc3dsGetOutcome()->outOfMemory || McMemoryRanOut() != 0;
    if (scale)
        *scale = direct.scale;
    return Model(clump, McFreeModel);
}

void ReportModelErrors(Reporter *reporter)
{
    if (const size_t errors = McErrorCount(); errors != 0)
        ReportFinding(reporter,
                      {.kind = FindingKind::RendererSaid, .count = errors, .detail = McFirstError()});
}

static Matrix MatrixOf(const double *numbers)
{
    Matrix matrix;
    std::copy_n(numbers, 16, matrix.begin());
    return matrix;
}

static void VisitClump(const McClump *clump, const McClumpView &view, int depth,
                       const std::function<void(const PlacedMesh &)> &visit)
{
    const Matrix world = MatrixOf(view.world);
    visit({&view, depth, nullptr, view.geometry, world});
    for (size_t i = 0; i < view.instanceCount; ++i) {
        McInstanceView instance = {};
        McPrototypeView prototype = {};
        McGetInstance(clump, i, &instance);
        if (instance.prototype >= 0)
            McGetPrototype(clump, static_cast<size_t>(instance.prototype), &prototype);
        visit({&view, depth, &instance, prototype.geometry, Multiply(MatrixOf(instance.placement), world)});
    }
}

void VisitMeshes(const McClump *clump, const std::function<void(const PlacedMesh &)> &visit)
{
    McModelView model = {};
    McGetModel(clump, &model);
    int depth = 0;
    for (const McClump *at = model.firstClump; at;) {
        McClumpView view = {};
        McGetClump(at, &view);
        VisitClump(at, view, depth, visit);
        depth += view.firstChild ? 1 : 0;
        at = view.firstChild ? view.firstChild : view.nextSibling;
        for (const McClump *up = view.parent; !at && up; up = view.parent) {
            McGetClump(up, &view);
            --depth;
            at = view.nextSibling;
        }
    }
}

constexpr double pi = 3.14159265358979;

// The angle between two vectors; lengths: the product of their lengths. The error of 0.0001 doesn't matter
// for a weight, and std::acos would take a tenth of the whole time.
static double Angle(const Vector &a, const Vector &b, double lengths)
{
    const double cosine = std::clamp(Dot(a, b) / lengths, -1.0, 1.0), x = std::abs(cosine);
    const double angle =
        std::sqrt(1.0 - x) * (1.5707288 + x * (-0.2121144 + x * (0.0742610 + x * -0.0187293)));
    return cosine < 0.0 ? pi - angle : angle;
}

std::vector<Vector> SmoothNormals(const McGeometryView &geometry, const std::vector<Vector> &places)
{
    std::vector<Vector> normals(places.size(), Vector{});
    for (size_t i = 0; i < geometry.faceCount; ++i) {
        const int *v = geometry.faces[i].vertices;
        const Vector &a = places[static_cast<size_t>(v[0] - 1)], &b = places[static_cast<size_t>(v[1] - 1)],
                     &c = places[static_cast<size_t>(v[2] - 1)];
        const Vector ab = Minus(b, a), ac = Minus(c, a), bc = Minus(c, b);
        const Vector cross = Cross(ab, ac);
        const double area = std::sqrt(Dot(cross, cross));
        if (!(area > 0.0) || !std::isfinite(area))
            continue;
        const double abLength = std::sqrt(Dot(ab, ab));
        const double atA = Angle(ab, ac, abLength * std::sqrt(Dot(ac, ac)));
        const double atB = pi - Angle(ab, bc, abLength * std::sqrt(Dot(bc, bc)));
        const double angles[3] = {atA / area, atB / area, (pi - atA - atB) / area};
        for (int at = 0; at < 3; ++at)
            for (size_t axis = 0; axis < 3; ++axis)
                normals[static_cast<size_t>(v[at] - 1)][axis] += cross[axis] * angles[at];
    }
    return normals;
}
