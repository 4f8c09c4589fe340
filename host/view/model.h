// The model of a direct build, as pictures and lists take it in.
#ifndef MC3DS_HOST_MODEL_H
#define MC3DS_HOST_MODEL_H

#include <array>
#include <functional>

#include "mclmodel.h"

using Vector = std::array<double, 3>;

struct Bounds {
    Vector least, most;
};

Bounds NoBounds();
// Takes in a place; co-ordinates that are no numbers change nothing.
void Grow(Bounds *bounds, const Vector &place);
// A point under a placement: rows of 4, the shift in the last.
Vector Place(const McPoint &point, const double placement[16]);
// out may be neither of the two.
void Multiply(const double a[16], const double b[16], double out[16]);
// All clumps, each ahead of those in it. The depth of the first is 0.
void VisitClumps(const McModelView &model,
                 const std::function<void(const McClump *, const McClumpView &, int depth)> &visit);

#endif
