// The model of a direct build, as pictures and files are made of it.
#ifndef MC3DS_HOST_MODEL_H
#define MC3DS_HOST_MODEL_H

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "frame/frame.h"
#include "mclmodel.h"

using Vector = std::array<double, 3>;
// A placement: rows of 4, the shift in the last; p' = p * M.
using Matrix = std::array<double, 16>;

constexpr Matrix identityMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct Bounds {
    Vector least, most;
};

Bounds NoBounds();
// Takes in a place; co-ordinates that are no numbers change nothing.
void Grow(Bounds *bounds, const Vector &place);
Vector Place(const Vector &point, const Matrix &placement);
inline Vector Place(const McPoint &point, const Matrix &placement)
{
    return Place(Vector{point.x, point.y, point.z}, placement);
}
Matrix Multiply(const Matrix &a, const Matrix &b);
// Of a placement, whose last column is 0 0 0 1. False, with inverse the identity, where there is none.
bool Invert(const Matrix &placement, Matrix *inverse);

using Model = std::unique_ptr<McClump, void (*)(McClump *)>;

// The model that asked leads to, as it stands in a frame, or as asked says for frame -1. Objects outside
// first to end have no geometry in it. scale gets the factor from the file's units. McClearErrors comes
// first.
Model BuildModel(const Mc3dsFile *scene, const Mc3dsOptions &asked, int64_t frame, uint32_t first = 0,
                 uint32_t end = UINT32_MAX, float *scale = nullptr);
// Warns of the errors that the Meshcaster library has counted, and has it count anew.
void ReportModelErrors();

// A mesh at its place: that of a clump, or that of a prototype where an instance in the clump puts it.
struct PlacedMesh {
    const McClumpView *clump;
    int depth;                      // of the clump; 0 at the top
    const McInstanceView *instance; // null: the clump's own mesh
    McGeometryView geometry;        // empty where the instance names no prototype
    Matrix world;
};

// Every clump's mesh, an empty one too, followed by those of its instances, and each clump ahead of those in
// it. What the meshes point to holds during the visit.
void VisitMeshes(const McClump *clump, const std::function<void(const PlacedMesh &)> &visit);

#endif
