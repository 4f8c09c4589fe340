// Meshes of a model as primitives: one for each surface.
#include <algorithm>
#include <cmath>

#include "glb.h"

static Vector Minus(const Vector &a, const Vector &b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

static double Dot(const Vector &a, const Vector &b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// Upwards for what has no direction: the format wants a length of 1 in any case.
static Vector Normalised(const Vector &v)
{
    const double length = std::sqrt(Dot(v, v));
    if (!(length > 0.0) || !std::isfinite(length))
        return {0.0, 1.0, 0.0};
    return {v[0] / length, v[1] / length, v[2] / length};
}

static Vector FaceNormal(const Vector corners[3])
{
    const Vector p = Minus(corners[1], corners[0]), q = Minus(corners[2], corners[0]);
    // Divided first: products of very small or large numbers leave the range.
    const double size = std::sqrt(std::max(Dot(p, p), Dot(q, q)));
    const double s = size > 0.0 ? 1.0 / size : 0.0;
    return {(p[1] * s) * (q[2] * s) - (p[2] * s) * (q[1] * s),
            (p[2] * s) * (q[0] * s) - (p[0] * s) * (q[2] * s),
            (p[0] * s) * (q[1] * s) - (p[1] * s) * (q[0] * s)};
}

struct Shape {
    const McGeometryView &geometry;
    std::vector<Vector> places;
    std::vector<Vector> normals;    // of the vertices, not yet of length 1; empty until they are asked for
    std::vector<uint32_t> newIndex; // of a vertex in the primitive that is made
    std::vector<size_t> usedBy;     // the primitive that newIndex is about
    size_t primitive;               // its number, from 1
};

static void CornersOf(const Shape &shape, const McFace &face, Vector corners[3])
{
    for (int at = 0; at < 3; ++at)
        corners[at] = shape.places[static_cast<size_t>(face.vertices[at] - 1)];
}

// The wider a face's angle at a vertex, the more it counts there, however the surface is cut into faces.
static void FindNormals(Shape *shape)
{
    if (!shape->normals.empty())
        return;
    shape->normals.resize(shape->places.size(), Vector{});
    for (size_t i = 0; i < shape->geometry.faceCount; ++i) {
        const McFace &face = shape->geometry.faces[i];
        Vector corners[3];
        CornersOf(*shape, face, corners);
        const Vector cross = FaceNormal(corners);
        if (!(Dot(cross, cross) > 0.0) || !std::isfinite(Dot(cross, cross)))
            continue;
        const Vector normal = Normalised(cross);
        for (int at = 0; at < 3; ++at) {
            const Vector to = Normalised(Minus(corners[(at + 1) % 3], corners[at]));
            const Vector from = Normalised(Minus(corners[(at + 2) % 3], corners[at]));
            const double angle = std::acos(std::clamp(Dot(to, from), -1.0, 1.0));
            Vector &sum = shape->normals[static_cast<size_t>(face.vertices[at] - 1)];
            for (size_t axis = 0; axis < 3; ++axis)
                sum[axis] += normal[axis] * angle;
        }
    }
}

// The vertices and indices of one primitive.
struct Primitive {
    bool hasNormals, hasUVs;
    std::vector<float> vertices;
    std::vector<uint32_t> indices;
    Bounds bounds;
};

static size_t FloatsOf(const Primitive &primitive)
{
    return 3u + (primitive.hasNormals ? 3u : 0u) + (primitive.hasUVs ? 2u : 0u);
}

static void AddVertex(Primitive *primitive, const Shape &shape, size_t vertex, const Vector &normal)
{
    const auto count = static_cast<uint32_t>(primitive->vertices.size() / FloatsOf(*primitive));
    Vector rounded;
    for (size_t axis = 0; axis < 3; ++axis) {
        primitive->vertices.push_back(static_cast<float>(shape.places[vertex][axis]));
        rounded[axis] = primitive->vertices.back();
    }
    Grow(&primitive->bounds, rounded);
    if (primitive->hasNormals)
        for (const double part : Normalised(normal))
            primitive->vertices.push_back(static_cast<float>(part));
    if (primitive->hasUVs) {
        const McUV uv = shape.geometry.hasUV[vertex] ? shape.geometry.uvs[vertex] : McUV{0.0f, 0.0f};
        primitive->vertices.push_back(std::isfinite(uv.u) ? uv.u : 0.0f);
        primitive->vertices.push_back(std::isfinite(uv.v) ? uv.v : 0.0f);
    }
    primitive->indices.push_back(count);
}

// A vertex that faces share.
static void AddSharedVertex(Primitive *primitive, Shape *shape, size_t vertex)
{
    if (shape->usedBy[vertex] == shape->primitive) {
        primitive->indices.push_back(shape->newIndex[vertex]);
        return;
    }
    AddVertex(primitive, *shape, vertex, primitive->hasNormals ? shape->normals[vertex] : Vector{});
    shape->usedBy[vertex] = shape->primitive;
    shape->newIndex[vertex] = primitive->indices.back();
}

static void AddEdges(Primitive *primitive, Shape *shape, const std::vector<size_t> &faces)
{
    std::vector<std::pair<int, int>> edges;
    for (const size_t index : faces) {
        const int *v = shape->geometry.faces[index].vertices;
        for (int at = 0; at < 3; ++at)
            edges.push_back(std::minmax({v[at], v[(at + 1) % 3]}));
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    for (const auto &[from, to] : edges) {
        AddSharedVertex(primitive, shape, static_cast<size_t>(from - 1));
        AddSharedVertex(primitive, shape, static_cast<size_t>(to - 1));
    }
}

static void AddFaces(Primitive *primitive, Shape *shape, const std::vector<size_t> &faces, bool isFlat)
{
    for (const size_t index : faces) {
        const McFace &face = shape->geometry.faces[index];
        Vector corners[3];
        CornersOf(*shape, face, corners);
        const Vector normal = isFlat ? FaceNormal(corners) : Vector{};
        for (const int vertex : face.vertices) {
            if (isFlat)
                AddVertex(primitive, *shape, static_cast<size_t>(vertex - 1), normal);
            else
                AddSharedVertex(primitive, shape, static_cast<size_t>(vertex - 1));
        }
    }
}

static size_t AddIndices(Glb *glb, const std::vector<uint32_t> &indices, size_t vertexCount)
{
    constexpr size_t shortMost = 65535; // the last number has a meaning of its own
    if (vertexCount > shortMost) {
        const size_t view = AddGlbView(glb, indices.data(), indices.size() * 4, 0, glbIndices);
        return AddGlbAccessor(glb, view, 0, glbInt, indices.size(), "SCALAR");
    }
    const std::vector<uint16_t> narrow(indices.begin(), indices.end());
    const size_t view = AddGlbView(glb, narrow.data(), narrow.size() * 2, 0, glbIndices);
    return AddGlbAccessor(glb, view, 0, glbShort, narrow.size(), "SCALAR");
}

static Json AddPrimitive(Glb *glb, const Primitive &primitive)
{
    const size_t stride = FloatsOf(primitive) * 4, count = primitive.vertices.size() * 4 / stride;
    const size_t view =
        AddGlbView(glb, primitive.vertices.data(), primitive.vertices.size() * 4, stride, glbVertices);
    Json attributes;
    const size_t position = AddGlbAccessor(glb, view, 0, glbFloat, count, "VEC3");
    glb->accessors[position]["min"] = primitive.bounds.least;
    glb->accessors[position]["max"] = primitive.bounds.most;
    attributes["POSITION"] = position;
    if (primitive.hasNormals)
        attributes["NORMAL"] = AddGlbAccessor(glb, view, 12, glbFloat, count, "VEC3");
    if (primitive.hasUVs)
        attributes["TEXCOORD_0"] = AddGlbAccessor(glb, view, stride - 8, glbFloat, count, "VEC2");
    return {{"attributes", attributes}, {"indices", AddIndices(glb, primitive.indices, count)}};
}

// The faces of each surface, without those that a reader of the format can't take.
static std::map<int, std::vector<size_t>> SortFaces(Glb *glb, const Shape &shape)
{
    std::map<int, std::vector<size_t>> sorted;
    for (size_t i = 0; i < shape.geometry.faceCount; ++i) {
        const McFace &face = shape.geometry.faces[i];
        bool finite = true;
        for (const int vertex : face.vertices)
            for (const double part : shape.places[static_cast<size_t>(vertex - 1)])
                finite = finite && std::isfinite(static_cast<float>(part));
        if (finite)
            sorted[face.surface].push_back(i);
        else
            ++glb->lostFaces;
    }
    return sorted;
}

void AddGlbGeometry(Glb *glb, GlbMesh *mesh, const McGeometryView &geometry, const McSurface *surfaces,
                    const Matrix &residual)
{
    const size_t vertices = geometry.vertexCount;
    Shape shape = {geometry, {}, {}, std::vector<uint32_t>(vertices), std::vector<size_t>(vertices), 0};
    shape.places.reserve(vertices);
    for (size_t i = 0; i < vertices; ++i)
        shape.places.push_back(Place(geometry.points[i], residual));
    for (const auto &[index, faces] : SortFaces(glb, shape)) {
        const McSurface &surface = surfaces[index];
        const bool isWire = surface.geometrySampling == mcWIREFRAME;
        Primitive primitive = {!isWire, geometry.uvs && !isWire, {}, {}, NoBounds()};
        ++shape.primitive;
        if (isWire) {
            AddEdges(&primitive, &shape, faces);
        } else {
            const bool isFlat = surface.lightSampling == mcFACET;
            if (!isFlat)
                FindNormals(&shape);
            AddFaces(&primitive, &shape, faces, isFlat);
        }
        Json json = AddPrimitive(glb, primitive);
        json["material"] = AddGlbSurface(glb, surface);
        json["mode"] = isWire ? glbLines : glbTriangles;
        mesh->primitives.push_back(json);
        Grow(&mesh->bounds, primitive.bounds.least);
        Grow(&mesh->bounds, primitive.bounds.most);
    }
}
