// Affine transforms. Points are row vectors multiplied from the left: p' = p x m, and a x b means a first.
#ifndef MC3DS_MATH_TRANSFORM_H
#define MC3DS_MATH_TRANSFORM_H

// 4x3 matrix, row by row: the images of the x, y and z axes, then the position. The fourth column
// (0, 0, 0, 1) is not stored. The twelve numbers of a MESH_MATRIX chunk and of a .vue record come in
// this order.
struct Mc3dsTransform {
    double m[4][3];
};

// In all of these the output is storage of its own, distinct from every input.

void Mc3dsTransformIdentity(Mc3dsTransform *m);

// The translation by three 32-bit floats: a pivot, or the shift of an output.
void Mc3dsTransformTranslation(const float position[3], Mc3dsTransform *m);

// Sums and products are in 64 bits; each result is rounded to 32 bits once. Every vertex comes here, on its
// way in and on its way out.
inline void Mc3dsTransformPoint(const float in[3], const Mc3dsTransform *m, float out[3])
{
    const double x = in[0], y = in[1], z = in[2];
    for (int c = 0; c < 3; ++c)
        out[c] = static_cast<float>(((x * m->m[0][c] + y * m->m[1][c]) + z * m->m[2][c]) + m->m[3][c]);
}

void Mc3dsTransformMultiply(const Mc3dsTransform *a, const Mc3dsTransform *b, Mc3dsTransform *out);

// Returns the determinant of m's 3x3 part. 0.0 (which also stands for one that is not a number) means that m
// has no inverse; out then holds the undivided adjugate and the position row made from it.
double Mc3dsTransformInvert(const Mc3dsTransform *m, Mc3dsTransform *out);

#endif
