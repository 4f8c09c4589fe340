#include "transform.h"

#include <cmath>

// Products with 0 and 1 must not be skipped: they decide the signs of zeros in the output.

void Mc3dsTransformIdentity(Mc3dsTransform *m)
{
    *m = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 0.0, 0.0}}};
}

void Mc3dsTransformTranslation(const float position[3], Mc3dsTransform *m)
{
    Mc3dsTransformIdentity(m);
    for (int c = 0; c < 3; ++c)
        m->m[3][c] = position[c];
}

void Mc3dsTransformMultiply(const Mc3dsTransform *a, const Mc3dsTransform *b, Mc3dsTransform *out)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 3; ++c)
            out->m[r][c] = (a->m[r][0] * b->m[0][c] + a->m[r][1] * b->m[1][c]) + a->m[r][2] * b->m[2][c];
    for (int c = 0; c < 3; ++c)
        out->m[3][c] += b->m[3][c];
}

double Mc3dsTransformInvert(const Mc3dsTransform *m, Mc3dsTransform *out)
{
    const auto &a = m->m;
    auto &o = out->m;
    o[0][0] = a[1][1] * a[2][2] - a[1][2] * a[2][1];
    o[0][1] = a[0][2] * a[2][1] - a[0][1] * a[2][2];
    o[0][2] = a[0][1] * a[1][2] - a[0][2] * a[1][1];
    o[1][0] = a[1][2] * a[2][0] - a[1][0] * a[2][2];
    o[1][1] = a[0][0] * a[2][2] - a[0][2] * a[2][0];
    o[1][2] = a[0][2] * a[1][0] - a[0][0] * a[1][2];
    o[2][0] = a[1][0] * a[2][1] - a[1][1] * a[2][0];
    o[2][1] = a[0][1] * a[2][0] - a[0][0] * a[2][1];
    o[2][2] = a[0][0] * a[1][1] - a[0][1] * a[1][0];

    double determinant = (a[0][0] * o[0][0] + a[0][1] * o[1][0]) + a[0][2] * o[2][0];
    if (std::isnan(determinant))
        determinant = 0.0;
    if (determinant != 0.0)
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c)
                o[r][c] /= determinant;
    for (int c = 0; c < 3; ++c)
        o[3][c] = -((a[3][0] * o[0][c] + a[3][1] * o[1][c]) + a[3][2] * o[2][c]);
    return determinant;
}
