// Converts the meshes of a model to primitives, one for each surface.
#include <algorithm>

#include "gltf.h"

using Point = std::array<float, 3>;

// Returns the up direction for a null vector, as the format requires a length of 1.
static Point Normalised(const Vector &v)
{
    const double length = std::sqrt(Dot(v, v));
    if (!(length > 0.0))
        return {0.0f, 1.0f, 0.0f};
    const double factor = 1.0 / length;
    return {static_cast<float>(v[0] * factor), static_cast<float>(v[1] * factor),
            static_cast<float>(v[2] * factor)};
}

struct Shape {
    const McGeometryView &geometry;
    std::vector<Vector> places = {};     // rounded to floats, so that products of differences can't overflow
    std::vector<Vector> normals = {};    // of the vertices; empty before the first smooth surface
    std::vector<uint32_t> newIndex = {}; // by vertex: its index in the current primitive
    std::vector<uint32_t> usedBy = {};   // by vertex: the primitive that newIndex belongs to
    uint32_t primitive = 0;              // number of the current one, from 1
};

static const Vector &CornerOf(const Shape &shape, const McFace &face, int corner)
{
    return shape.places[static_cast<size_t>(face.vertices[corner] - 1)];
}

static bool IsFinite(const Shape &shape, const McFace &face)
{
    return IsFinite(CornerOf(shape, face, 0)) && IsFinite(CornerOf(shape, face, 1)) &&
           IsFinite(CornerOf(shape, face, 2));
}

static Point Rounded(const Vector &place)
{
    return {static_cast<float>(place[0]), static_cast<float>(place[1]), static_cast<float>(place[2])};
}

struct Primitive {
    bool hasNormals, hasUVs;
    size_t width; // floats per vertex
    std::vector<float> vertices;
    std::vector<uint32_t> indices;
    Point least, most;
};

static void AddVertex(Primitive *primitive, const Shape &shape, size_t vertex, const Point &normal)
{
    const size_t start = primitive->vertices.size();
    primitive->indices.push_back(static_cast<uint32_t>(start / primitive->width));
    primitive->vertices.resize(start + primitive->width);
    float *to = &primitive->vertices[start];
    for (size_t axis = 0; axis < 3; ++axis) {
        const auto part = static_cast<float>(shape.places[vertex][axis]);
        *to++ = part;
        primitive->least[axis] = std::min(primitive->least[axis], part);
        primitive->most[axis] = std::max(primitive->most[axis], part);
    }
    if (primitive->hasNormals)
        to = std::copy(normal.begin(), normal.end(), to);
    if (primitive->hasUVs) {
        const McUV uv = shape.geometry.hasUV[vertex] ? shape.geometry.uvs[vertex] : McUV{0.0f, 0.0f};
        *to++ = std::isfinite(uv.u) ? uv.u : 0.0f;
        *to++ = std::isfinite(uv.v) ? uv.v : 0.0f;
    }
}

// Adds the vertex once for each primitive; further faces reuse its index.
static void AddSharedVertex(Primitive *primitive, Shape *shape, size_t vertex)
{
    if (shape->usedBy[vertex] == shape->primitive) {
        primitive->indices.push_back(shape->newIndex[vertex]);
        return;
    }
    AddVertex(primitive, *shape, vertex,
              primitive->hasNormals ? Normalised(shape->normals[vertex]) : Point{});
    shape->usedBy[vertex] = shape->primitive;
    shape->newIndex[vertex] = primitive->indices.back();
}

static void AddEdges(Primitive *primitive, Shape *shape, const std::vector<uint32_t> &faces)
{
    std::vector<std::pair<int, int>> edges;
    for (const uint32_t index : faces) {
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

static void AddFaces(Primitive *primitive, Shape *shape, const std::vector<uint32_t> &faces, bool isFlat)
{
    primitive->indices.reserve(faces.size() * 3);
    primitive->vertices.reserve(faces.size() * primitive->width * (isFlat ? 3 : 1));
    for (const uint32_t index : faces) {
        const McFace &face = shape->geometry.faces[index];
        const Point normal = isFlat
                                 ? Normalised(FaceNormal(CornerOf(*shape, face, 0), CornerOf(*shape, face, 1),
                                                         CornerOf(*shape, face, 2)))
                                 : Point{};
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
    constexpr size_t shortMost = 65535; // the format reserves index 65535
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
    const size_t stride = primitive.width * 4, count = primitive.vertices.size() / primitive.width;
    const size_t view =
        AddGlbView(glb, primitive.vertices.data(), primitive.vertices.size() * 4, stride, glbVertices);
    Json attributes;
    const size_t position = AddGlbAccessor(glb, view, 0, glbFloat, count, "VEC3");
    glb->accessors[position]["min"] = primitive.least;
    glb->accessors[position]["max"] = primitive.most;
    attributes["POSITION"] = position;
    if (primitive.hasNormals)
        attributes["NORMAL"] = AddGlbAccessor(glb, view, 12, glbFloat, count, "VEC3");
    if (primitive.hasUVs)
        attributes["TEXCOORD_0"] = AddGlbAccessor(glb, view, stride - 8, glbFloat, count, "VEC2");
    return {{"attributes", attributes}, {"indices", AddIndices(glb, primitive.indices, count)}};
}

// Groups the faces by surface, without those that the format doesn't allow.
static std::map<int, std::vector<uint32_t>> SortFaces(Glb *glb, const Shape &shape)
{
    std::map<int, std::vector<uint32_t>> sorted;
    std::vector<uint32_t> *faces = nullptr;
    for (size_t i = 0; i < shape.geometry.faceCount; ++i) {
        const McFace &face = shape.geometry.faces[i];
        if (!IsFinite(shape, face)) {
            ++glb->lostFaces;
            continue;
        }
        if (!faces || face.surface != shape.geometry.faces[i - 1].surface)
            faces = &sorted[face.surface];
        faces->push_back(static_cast<uint32_t>(i));
    }
    return sorted;
}

void AddGlbGeometry(Glb *glb, GlbMesh *mesh, const McGeometryView &geometry, const McSurface *surfaces,
                    const Matrix &residual)
{
    const size_t vertices = geometry.vertexCount;
    Shape shape = {.geometry = geometry,
                   .newIndex = std::vector<uint32_t>(vertices),
                   .usedBy = std::vector<uint32_t>(vertices)};
    shape.places.reserve(vertices);
    for (size_t i = 0; i < vertices; ++i) {
        const Point place = Rounded(Place(geometry.points[i], residual));
        shape.places.push_back({place[0], place[1], place[2]});
    }
    for (const auto &[index, faces] : SortFaces(glb, shape)) {
        const McSurface &surface = surfaces[index];
        const bool isWire = surface.geometrySampling == mcWIREFRAME, hasUVs = geometry.uvs && !isWire;
        const size_t width = 3u + (isWire ? 0u : 3u) + (hasUVs ? 2u : 0u);
        Primitive primitive = {!isWire, hasUVs, width, {}, {}, {}, {}};
        primitive.least = primitive.most = Rounded(CornerOf(shape, geometry.faces[faces.front()], 0));
        ++shape.primitive;
        if (isWire) {
            AddEdges(&primitive, &shape, faces);
        } else {
            const bool isFlat = surface.lightSampling == mcFACET;
            if (!isFlat && shape.normals.empty())
                shape.normals = SmoothNormals(geometry, shape.places);
            AddFaces(&primitive, &shape, faces, isFlat);
        }
        Json json = AddPrimitive(glb, primitive);
        json["material"] = AddGlbSurface(glb, surface);
        json["mode"] = isWire ? glbLines : glbTriangles;
        mesh->primitives.push_back(json);
        for (const Point &corner : {primitive.least, primitive.most})
            Grow(&mesh->bounds, {corner[0], corner[1], corner[2]});
    }
}
