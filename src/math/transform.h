// Affine transforms for row vectors: p' = p x m. The product a x b applies a first.
#ifndef MC3DS_MATH_TRANSFORM_H
#define MC3DS_MATH_TRANSFORM_H

// 4x3 matrix in rows: x, y and z axes, then the position. The fourth column (0, 0, 0, 1) is not stored.
// MESH_MATRIX chunks and .vue records have their twelve numbers in this order.
struct Mc3dsTransform {
    double m[4][3];
};

// Outputs must not overlap inputs.

void Mc3dsTransformIdentity(Mc3dsTransform *m);

// position: a pivot, or the shift of an output.
void Mc3dsTransformTranslation(const float position[3], Mc3dsTransform *m);

// Computes in 64 bits and rounds each result to 32 bits once. Called for every vertex on load and on output.
inline void Mc3dsTransformPoint(const float in[3], const Mc3dsTransform *m, float out[3])
{
    const double x = in[0], y = in[1], z = in[2];
    for (int c = 0; c < 3; ++c)
        out[c] = static_cast<float>(((x * m->m[0][c] + y * m->m[1][c]) + z * m->m[2][c]) + m->m[3][c]);
}

void Mc3dsTransformMultiply(const Mc3dsTransform *a, const Mc3dsTransform *b, Mc3dsTransform *out);

// Returns the determinant of m's 3x3 part, or 0.0 if that is NaN. With 0.0 m has no inverse, and out holds
// the undivided adjugate and the position row computed from it.
double Mc3dsTransformInvert(const Mc3dsTransform *m, Mc3dsTransform *out);

#endif
