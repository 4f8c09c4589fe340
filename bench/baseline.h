// What the library is timed against: the same work done in the plain way, one stdio call for each number.
// Look-ups and growing arrays are as good here as anywhere, so that only the reading and writing differs.
#ifndef MC3DS_BENCH_BASELINE_H
#define MC3DS_BENCH_BASELINE_H

#include "frame/frame.h"

// A sound scene and the .vue file beside it, in the library's records; null when there is no such file. Only
// BaselineFree frees it. Reads into numbers as they lie in the file: for little-endian machines.
Mc3dsFile *BaselineLoad(const char *path);
void BaselineFree(Mc3dsFile *scene);

// The bytes that Mc3dsOutput writes with MC3DS_SOURCE, MC3DS_HEADER and MC3DS_ANIMATION, or as a script with
// no flags at all. Other flags are not known here, and scale and size are not written back.
void BaselineOutput(const Mc3dsFile *scene, const Mc3dsOptions *options);

#endif
