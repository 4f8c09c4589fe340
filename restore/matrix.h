// Affine matrices for row vectors, p' = p x m, in 64 bits. The product a x b applies a first.
#ifndef MC3DS_RESTORE_MATRIX_H
#define MC3DS_RESTORE_MATRIX_H

#include <array>
#include <cmath>

using Mc3dsPoint = std::array<double, 3>;

// Rows: x, y and z axes, then the position, as in a mesh matrix chunk and in a .vue record.
struct Mc3dsMatrix {
    std::array<Mc3dsPoint, 4> rows = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}};
};

inline Mc3dsPoint Mc3dsMove(const Mc3dsPoint &p, const Mc3dsMatrix &m)
{
    Mc3dsPoint moved;
    for (size_t c = 0; c < 3; ++c)
        moved[c] = p[0] * m.rows[0][c] + p[1] * m.rows[1][c] + p[2] * m.rows[2][c] + m.rows[3][c];
    return moved;
}

inline Mc3dsMatrix Mc3dsProduct(const Mc3dsMatrix &a, const Mc3dsMatrix &b)
{
    Mc3dsMatrix product;
    for (size_t r = 0; r < 4; ++r)
        for (size_t c = 0; c < 3; ++c)
            product.rows[r][c] = a.rows[r][0] * b.rows[0][c] + a.rows[r][1] * b.rows[1][c] +
                                 a.rows[r][2] * b.rows[2][c] + (r == 3 ? b.rows[3][c] : 0.0);
    return product;
}

inline double Mc3dsDeterminant(const Mc3dsMatrix &m)
{
    const Mc3dsPoint &x = m.rows[0], &y = m.rows[1], &z = m.rows[2];
    return x[0] * (y[1] * z[2] - y[2] * z[1]) - x[1] * (y[0] * z[2] - y[2] * z[0]) +
           x[2] * (y[0] * z[1] - y[1] * z[0]);
}

inline bool Mc3dsIsFinite(const Mc3dsMatrix &m)
{
    bool isFinite = true;
    for (const Mc3dsPoint &row : m.rows)
        for (const double number : row)
            isFinite = isFinite && std::isfinite(number);
    return isFinite;
}

// False if the matrix has no inverse that is finite.
inline bool Mc3dsInverse(const Mc3dsMatrix &m, Mc3dsMatrix *inverse)
{
    const double determinant = Mc3dsDeterminant(m);
    for (size_t r = 0; r < 3; ++r)
        for (size_t c = 0; c < 3; ++c) {
            const size_t i = (c + 1) % 3, j = (c + 2) % 3, k = (r + 1) % 3, l = (r + 2) % 3;
            inverse->rows[r][c] = (m.rows[i][k] * m.rows[j][l] - m.rows[i][l] * m.rows[j][k]) / determinant;
        }
    for (size_t c = 0; c < 3; ++c)
        inverse->rows[3][c] = -(m.rows[3][0] * inverse->rows[0][c] + m.rows[3][1] * inverse->rows[1][c] +
                                m.rows[3][2] * inverse->rows[2][c]);
    return Mc3dsIsFinite(*inverse);
}

inline Mc3dsMatrix Mc3dsTranslation(const Mc3dsPoint &by)
{
    Mc3dsMatrix m;
    m.rows[3] = by;
    return m;
}

#endif
