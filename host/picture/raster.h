// A small rasteriser for triangles and lines, with a depth buffer and four samples per pixel.
#ifndef MC3DS_HOST_RASTER_H
#define MC3DS_HOST_RASTER_H

#include <cstddef>
#include <cstdint>
#include <vector>

// Samples are stored row by row from the top left. A pixel has two samples in each direction.
struct Raster {
    int width, height;        // in samples
    std::vector<float> depth; // the nearest so far; greater is nearer
    std::vector<uint8_t> rgb; // three bytes for each sample
    uint64_t painted;         // how often a sample got a colour
};

// x and y are in samples and may be outside the raster. depth must be linear over the raster and above 0, the
// background's depth. light is a factor of the colour.
struct RasterCorner {
    float x, y, depth, light;
};

struct RasterColour {
    float rgb[3];  // 0 to 1
    float opacity; // above 0; below 1: the raster's depth doesn't change
};

// A raster for a picture of that many pixels, filled with background.
Raster MakeRaster(int width, int height, const uint8_t background[3]);

// Both draw nothing if a corner isn't finite.
void DrawTriangle(Raster *raster, const RasterCorner corners[3], const RasterColour &colour);
// Draws a line one pixel wide, slightly nearer than its depth, so that it is visible on adjacent faces.
void DrawLine(Raster *raster, const RasterCorner &from, const RasterCorner &to, const RasterColour &colour);

// Averages the samples of each pixel into a picture of 3 bytes per pixel and stride bytes per row. A picture
// larger than the raster repeats pixels.
void ReduceRaster(const Raster *raster, uint8_t *picture, int width, int height, size_t stride);

#endif
