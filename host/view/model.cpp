#include "model.h"

#include <algorithm>
#include <limits>

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

Vector Place(const McPoint &p, const double m[16])
{
    return {p.x * m[0] + p.y * m[4] + p.z * m[8] + m[12], p.x * m[1] + p.y * m[5] + p.z * m[9] + m[13],
            p.x * m[2] + p.y * m[6] + p.z * m[10] + m[14]};
}

void Multiply(const double a[16], const double b[16], double out[16])
{
    for (int row = 0; row < 16; row += 4)
        for (int column = 0; column < 4; ++column)
            out[row + column] = a[row] * b[column] + a[row + 1] * b[4 + column] + a[row + 2] * b[8 + column] +
                                a[row + 3] * b[12 + column];
}

void VisitClumps(const McModelView &model,
                 const std::function<void(const McClump *, const McClumpView &, int)> &visit)
{
    int depth = 0;
    for (const McClump *at = model.firstClump; at;) {
        McClumpView view = {};
        McGetClump(at, &view);
        visit(at, view, depth);
        depth += view.firstChild ? 1 : 0;
        at = view.firstChild ? view.firstChild : view.nextSibling;
        for (const McClump *up = view.parent; !at && up; up = view.parent) {
            McGetClump(up, &view);
            --depth;
            at = view.nextSibling;
        }
    }
}
