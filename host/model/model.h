// The built model, for pictures and .glb files.
#ifndef MC3DS_HOST_MODEL_H
#define MC3DS_HOST_MODEL_H

#include <array>
#include <cmath>
#include <memory>

#include "../words/words.h"
#include "mclmodel.h"

using Vector = std::array<double, 3>;
// A placement, row by row, with the translation in the last row; p' = p * M.
using Matrix = std::array<double, 16>;

constexpr Matrix identityMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

inline double Dot(const Vector &a, const Vector &b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector Cross(const Vector &a, const Vector &b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline Vector Minus(const Vector &a, const Vector &b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline bool IsFinite(const Vector &place)
{
    return std::isfinite(place[0]) && std::isfinite(place[1]) && std::isfinite(place[2]);
}

// Perpendicular to the face, with twice its area as length.
inline Vector FaceNormal(const Vector &a, const Vector &b, const Vector &c)
{
    return Cross(Minus(b, a), Minus(c, a));
}

struct Bounds {
    Vector least, most;
};

Bounds NoBounds();
// Extends the bounds to include place. Co-ordinates that are NaN are ignored.
void Grow(Bounds *bounds, const Vector &place);
Vector Place(const Vector &point, const Matrix &placement);
inline Vector Place(const McPoint &point, const Matrix &placement)
{
    return Place(Vector{point.x, point.y, point.z}, placement);
}
Matrix Multiply(const Matrix &a, const Matrix &b);
// The last column of placement must be 0 0 0 1. Without an inverse returns false and sets it to the identity.
bool Invert(const Matrix &placement, Matrix *inverse);

using Model = std::unique_ptr<McClump, void (*)(McClump *)>;

// Builds the model that asked describes, in a frame, or as asked places it for frame -1. Only the objects
// from first to end - 1 have geometry. scale gets the factor from the file's units. Builds are mute, but the
// library's reports on the model are heard once for each scene: in the first builds that together have all
// geometry. Sets reporter->memoryRanOut if memory runs out; the model lacks something then.
Model BuildModel(const Mc3dsFile *scene, const Mc3dsOptions &asked, int64_t frame, Reporter *reporter,
                 uint32_t first = 0, uint32_t end = UINT32_MAX, float *scale = nullptr);
// Reports the errors that the Meshcaster library counted in the newest build as a warning.
void ReportModelErrors(Reporter *reporter);

// A placed mesh: a clump's own, or that of a prototype, placed by an instance in the clump.
struct PlacedMesh {
    const McClumpView *clump;
    int depth;                      // of the clump; 0 at the top
    const McInstanceView *instance; // null: the clump's own mesh
    McGeometryView geometry;        // empty if the instance has no prototype
    Matrix world;
};

// Visits the mesh of each clump, even an empty one, then those of its instances, then the clumps in it. clump
// and instance in a mesh are only valid during its visit.
void VisitMeshes(const McClump *clump, const std::function<void(const PlacedMesh &)> &visit);

// The normals of all vertices, not normalised. Each face counts by its angle at the vertex, so that the
// division of a surface into faces doesn't matter. places: those of the vertices, which the geometry's are
// replaced by.
std::vector<Vector> SmoothNormals(const McGeometryView &geometry, const std::vector<Vector> &places);

#endif
