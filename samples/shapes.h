// Matrices and meshes for the samples. As in 3D Studio z is up. Points are row vectors: p' = p x matrix.
#ifndef MC3DS_SAMPLES_SHAPES_H
#define MC3DS_SAMPLES_SHAPES_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 4>;

struct Shape {
    std::vector<Vector> points;
    std::vector<std::array<double, 2>> texture;
    std::vector<uint16_t> corners; // three per face, counter-clockwise seen from outside
};

constexpr double pi = 3.14159265358979323846;

// An own series, because the samples are compared byte for byte and C libraries differ in the last bit.
inline double Sine(double degrees)
{
    const double x = std::remainder(degrees, 360.0) * (pi / 180.0);
    double term = x, sum = x;
    for (int n = 2; n < 32; n += 2) {
        term *= -x * x / (n * (n + 1));
        sum += term;
    }
    return sum;
}

inline double Cosine(double degrees)
{
    return Sine(degrees + 90.0);
}

// Rounds to a grid of 1 / steps, far coarser than a double, so that rounding noise doesn't reach the files.
inline float Grid(double value, double steps)
{
    return static_cast<float>(std::floor(value * steps + 0.5) / steps);
}

// ---- matrices

inline Vector Apply(const Vector &p, const Matrix &m)
{
    Vector out = m[3];
    for (size_t c = 0; c < 3; ++c)
        out[c] += p[0] * m[0][c] + p[1] * m[1][c] + p[2] * m[2][c];
    return out;
}

inline Matrix operator*(const Matrix &a, const Matrix &b)
{
    Matrix linear = b;
    linear[3] = {};
    return {Apply(a[0], linear), Apply(a[1], linear), Apply(a[2], linear), Apply(a[3], b)};
}

inline Matrix Move(double x, double y, double z)
{
    return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {x, y, z}}};
}

inline Matrix Scale(double x, double y, double z)
{
    return {{{x, 0, 0}, {0, y, 0}, {0, 0, z}, {0, 0, 0}}};
}

// A right-handed rotation around an axis of length 1 through the origin.
inline Matrix Turn(const Vector &axis, double degrees)
{
    const double s = Sine(degrees), c = Cosine(degrees);
    const auto &[x, y, z] = axis;
    const double t = 1.0 - c;
    return {{{t * x * x + c, t * x * y + s * z, t * x * z - s * y},
             {t * x * y - s * z, t * y * y + c, t * y * z + s * x},
             {t * x * z + s * y, t * y * z - s * x, t * z * z + c},
             {0, 0, 0}}};
}

inline Matrix TurnX(double degrees)
{
    return Turn({1, 0, 0}, degrees);
}

inline Matrix TurnY(double degrees)
{
    return Turn({0, 1, 0}, degrees);
}

inline Matrix TurnZ(double degrees)
{
    return Turn({0, 0, 1}, degrees);
}

// ---- shapes

// Rotates a profile of (radius, height) pairs, bottom first, around the z axis. With teeth, every second pair
// of segments is set back by that fraction of the radius.
inline Shape Lathe(const std::vector<std::array<double, 2>> &profile, int segments, double repeat = 1,
                   double teeth = 0)
{
    Shape shape;
    const auto columns = static_cast<uint16_t>(segments + 1);
    for (size_t row = 0; row < profile.size(); ++row)
        for (int i = 0; i <= segments; ++i) {
            const double angle = 360.0 * i / segments;
            const double radius = profile[row][0] * (i / 2 % 2 == 1 ? 1 - teeth : 1);
            shape.points.push_back({radius * Cosine(angle), radius * Sine(angle), profile[row][1]});
            shape.texture.push_back({repeat * i / segments, double(row) / double(profile.size() - 1)});
        }
    for (size_t row = 0; row + 1 < profile.size(); ++row)
        for (int i = 0; i < segments; ++i) {
            const auto a = static_cast<uint16_t>(row * columns + static_cast<size_t>(i));
            const auto b = static_cast<uint16_t>(a + 1), c = static_cast<uint16_t>(b + columns);
            const auto d = static_cast<uint16_t>(a + columns);
            if (profile[row][0] > 0)
                shape.corners.insert(shape.corners.end(), {a, b, c});
            if (profile[row + 1][0] > 0)
                shape.corners.insert(shape.corners.end(), {a, c, d});
        }
    return shape;
}

inline Shape Sphere(int rows, int segments)
{
    std::vector<std::array<double, 2>> profile = {{0, -1}};
    for (int i = 1; i < rows; ++i)
        profile.push_back({Sine(180.0 * i / rows), -Cosine(180.0 * i / rows)});
    profile.push_back({0, 1});
    return Lathe(profile, segments);
}

// A ring of round wire that lies in the xy plane.
inline Shape Torus(double radius, double wire, int segments)
{
    std::vector<std::array<double, 2>> profile;
    for (int i = 0; i <= 6; ++i)
        profile.push_back({radius + wire * Sine(60.0 * i), -wire * Cosine(60.0 * i)});
    return Lathe(profile, segments, 8);
}

// Adds a box between two corners; each side has the whole texture.
inline Shape Box(const Vector &low, const Vector &high, Shape shape = {})
{
    for (size_t axis = 0; axis < 3; ++axis)
        for (int side = 0; side < 2; ++side) {
            const size_t across = (axis + (side == 1 ? 1 : 2)) % 3, up = (axis + (side == 1 ? 2 : 1)) % 3;
            const auto first = static_cast<uint16_t>(shape.points.size());
            for (const auto &[u, v] : {std::array{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                Vector p = side == 1 ? high : low;
                p[across] = u == 1 ? high[across] : low[across];
                p[up] = v == 1 ? high[up] : low[up];
                shape.points.push_back(p);
                shape.texture.push_back({double(u), double(v)});
            }
            for (const int corner : {0, 1, 2, 0, 2, 3})
                shape.corners.push_back(static_cast<uint16_t>(first + corner));
        }
    return shape;
}

#endif
