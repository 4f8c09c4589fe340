// A small rasteriser: triangles and lines with depth into a picture, four samples to a pixel.
#ifndef MC3DS_HOST_RASTER_H
#define MC3DS_HOST_RASTER_H

#include <cstddef>
#include <cstdint>
#include <vector>

// Samples lie row by row from the top left, two in a row and two in a column for each pixel.
struct Raster {
    int width, height;        // in samples
    std::vector<float> depth; // the nearest so far; greater is nearer
    std::vector<uint8_t> rgb; // three bytes for each sample
    uint64_t painted;         // how often a sample got a colour
};

// A corner on its way into the raster. x and y count samples, and may lie outside the raster; depth has to be
// linear over the raster, and above 0, which is the background; light is a factor of the colour.
struct RasterCorner {
    float x, y, depth, light;
};

struct RasterColour {
    float rgb[3];  // 0 to 1
    float opacity; // above 0; below 1 leaves the raster's depth as it is
};

// The raster of a picture of that many pixels, in the background's colour.
Raster MakeRaster(int width, int height, const uint8_t background[3]);

// Neither draws anything for corners that aren't finite.
void DrawTriangle(Raster *raster, const RasterCorner corners[3], const RasterColour &colour);
// A line one pixel wide, a little nearer than it says, so that it shows on the faces that it borders.
void DrawLine(Raster *raster, const RasterCorner &from, const RasterCorner &to, const RasterColour &colour);

// Brings the raster's pixels, three bytes each, into a picture whose rows are stride bytes long. One of more
// pixels than the raster has gets some of them several times.
void ReduceRaster(const Raster *raster, uint8_t *picture, int width, int height, size_t stride);

#endif
