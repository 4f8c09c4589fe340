#include "raster.h"

#include <algorithm>
#include <cmath>

Raster MakeRaster(int width, int height, const uint8_t background[3])
{
    Raster raster = {width * 2, height * 2, {}, {}, 0};
    const auto samples = static_cast<size_t>(raster.width) * static_cast<size_t>(raster.height);
    raster.depth.resize(samples, 0.0f);
    raster.rgb.resize(samples * 3);
    for (size_t i = 0; i < samples * 3; ++i)
        raster.rgb[i] = background[i % 3];
    return raster;
}

static void Paint(Raster *raster, size_t sample, double depth, double light, const RasterColour &colour)
{
    if (!(depth > static_cast<double>(raster->depth[sample])))
        return;
    ++raster->painted;
    const auto opacity = static_cast<double>(colour.opacity);
    if (opacity >= 1.0)
        raster->depth[sample] = static_cast<float>(depth);
    for (size_t i = 0; i < 3; ++i) {
        uint8_t *level = &raster->rgb[sample * 3 + i];
        const double own = std::min(static_cast<double>(colour.rgb[i]) * light, 1.0) * 255.0;
        *level = static_cast<uint8_t>(own * opacity + *level * (1.0 - opacity) + 0.5);
    }
}

static bool IsFinite(const RasterCorner &corner)
{
    return std::isfinite(corner.x) && std::isfinite(corner.y) && std::isfinite(corner.depth) &&
           std::isfinite(corner.light);
}

// The first of size samples whose centre is at or after place.
static int FirstSample(double place, int size)
{
    return static_cast<int>(std::ceil(std::clamp(place, 0.0, static_cast<double>(size)) - 0.5));
}

// The x where the edge from a down to b crosses y. Two triangles with a common edge compute the same x, so
// they share no sample and leave no gap.
static double Cross(const RasterCorner &a, const RasterCorner &b, double y)
{
    const double ax = a.x, ay = a.y;
    return ax + (b.x - ax) * ((y - ay) / (b.y - ay));
}

// A value that is linear over the triangle: at its first corner, and its changes along x and y.
struct Slope {
    double start, alongX, alongY, least, most;
};

static Slope MakeSlope(const RasterCorner *const c[3], double area, float RasterCorner::*field)
{
    const double a = c[0]->*field, b = c[1]->*field, d = c[2]->*field;
    const double bx = c[1]->x - c[0]->x, by = c[1]->y - c[0]->y;
    const double dx = c[2]->x - c[0]->x, dy = c[2]->y - c[0]->y;
    return {a, ((b - a) * dy - (d - a) * by) / area, ((d - a) * bx - (b - a) * dx) / area,
            std::min({a, b, d}), std::max({a, b, d})};
}

// Clamped, as rounding errors are large on the steep slopes of narrow triangles.
static double At(const Slope &slope, double x, double y)
{
    return std::clamp(slope.start + x * slope.alongX + y * slope.alongY, slope.least, slope.most);
}

void DrawTriangle(Raster *raster, const RasterCorner corners[3], const RasterColour &colour)
{
    if (!IsFinite(corners[0]) || !IsFinite(corners[1]) || !IsFinite(corners[2]))
        return;
    const RasterCorner *c[3] = {&corners[0], &corners[1], &corners[2]};
    std::sort(c, c + 3, [](const RasterCorner *a, const RasterCorner *b) {
        return a->y < b->y || (a->y == b->y && a->x < b->x); // unnoticed
    });
    const double x0 = c[0]->x, y0 = c[0]->y;
    const double area = (c[1]->x - x0) * (c[2]->y - y0) - (c[2]->x - x0) * (c[1]->y - y0);
    const int firstRow = FirstSample(y0, raster->height), endRow = FirstSample(c[2]->y, raster->height);
    if (area == 0.0 || firstRow >= endRow)
        return;
    const Slope depth = MakeSlope(c, area, &RasterCorner::depth);
    const Slope light = MakeSlope(c, area, &RasterCorner::light);
    for (int row = firstRow; row < endRow; ++row) {
        const double y = row + 0.5;
        const double longEdge = Cross(*c[0], *c[2], y);
        const double shortEdge = y < c[1]->y ? Cross(*c[0], *c[1], y) : Cross(*c[1], *c[2], y); // unnoticed
        const int first = FirstSample(std::min(longEdge, shortEdge), raster->width);
        const int end = FirstSample(std::max(longEdge, shortEdge), raster->width);
        const size_t base = static_cast<size_t>(row) * static_cast<size_t>(raster->width);
        for (int column = first; column < end; ++column) {
            const double x = column + 0.5 - x0;
            Paint(raster, base + static_cast<size_t>(column), At(depth, x, y - y0), At(light, x, y - y0),
                  colour);
        }
    }
}

void DrawLine(Raster *raster, const RasterCorner &from, const RasterCorner &to, const RasterColour &colour)
{
    constexpr double nearer = 0.003;
    if (!IsFinite(from) || !IsFinite(to))
        return;
    const bool flat = std::abs(to.x - from.x) >= std::abs(to.y - from.y);
    float RasterCorner::*const along = flat ? &RasterCorner::x : &RasterCorner::y;
    float RasterCorner::*const across = flat ? &RasterCorner::y : &RasterCorner::x;
    const RasterCorner &a = from.*along < to.*along ? from : to, &b = &a == &from ? to : from;
    const int length = flat ? raster->width : raster->height, breadth = flat ? raster->height : raster->width;
    for (int i = FirstSample(a.*along, length); i < FirstSample(b.*along, length); ++i) {
        const double part = (i + 0.5 - a.*along) / (static_cast<double>(b.*along) - a.*along);
        const double depth = a.depth + (b.depth - a.depth) * part + nearer;
        const double middle = a.*across * (1.0 - part) + b.*across * part;
        const int end = FirstSample(middle + 1.0, breadth);
        for (int j = FirstSample(middle - 1.0, breadth); j < end; ++j) {
            const int sample = flat ? j * raster->width + i : i * raster->width + j;
            Paint(raster, static_cast<size_t>(sample), depth, a.light, colour);
        }
    }
}

void ReduceRaster(const Raster *raster, uint8_t *picture, int width, int height, size_t stride)
{
    const size_t rowSize = static_cast<size_t>(raster->width) * 3;
    for (int y = 0; y < height; ++y) {
        const auto row = static_cast<size_t>(int64_t{raster->height} / 2 * y / height);
        const uint8_t *upper = &raster->rgb[2 * row * rowSize], *lower = upper + rowSize;
        for (int x = 0; x < width; ++x) {
            const auto column = static_cast<size_t>(int64_t{raster->width} / 2 * x / width);
            for (size_t i = 0; i < 3; ++i) {
                const size_t at = column * 6 + i;
                const int sum = upper[at] + upper[at + 3] + lower[at] + lower[at + 3];
                picture[static_cast<size_t>(y) * stride + static_cast<size_t>(x) * 3 + i] =
                    static_cast<uint8_t>((sum + 2) / 4);
            }
        }
    }
}
