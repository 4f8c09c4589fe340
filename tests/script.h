// Reads the scripts and animation files that outputs write, and moves points by their matrices.
#ifndef MC3DS_TESTS_SCRIPT_H
#define MC3DS_TESTS_SCRIPT_H

#include <array>
#include <string>
#include <utility>
#include <vector>

using Point = std::array<double, 3>;
using Matrix = std::array<double, 16>; // rows; p' = p * M

constexpr Matrix identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Matrix Times(const Matrix &a, const Matrix &b);
Point Place(const Point &p, const double *matrix);

// The largest difference of two co-ordinates; infinite where a number is none or the counts differ.
double Distance(const std::vector<Point> &a, const std::vector<Point> &b);

// The words of each line that has any, without comments.
std::vector<std::vector<std::string>> Statements(const std::string &text);

// The corners of the solid triangles of a script, three each, in world space.
std::vector<Point> SolidCorners(const std::string &script);

// The lines of an animation file, frame by frame: the number of an object, and its matrix.
using FrameLines = std::vector<std::pair<size_t, Matrix>>;
std::vector<FrameLines> ReadFrames(const std::string &text);

#endif
