// The plain code that the library is timed against: the same work with one stdio call per number. Look-ups
// and array growth are as efficient as elsewhere, so that only reading and writing differ.
#ifndef MC3DS_BENCH_BASELINE_H
#define MC3DS_BENCH_BASELINE_H

#include "frame/frame.h"

// Loads a valid scene and its .vue file into the library's records; null when the file can't be opened. Free
// it with BaselineFree only. Reads numbers without byte swapping: for little-endian machines.
Mc3dsFile *BaselineLoad(const char *path);
void BaselineFree(Mc3dsFile *scene);

// Writes the same bytes as Mc3dsOutput with MC3DS_SOURCE, MC3DS_HEADER and MC3DS_ANIMATION, or as a script
// with no flags. Other flags aren't supported; scale and size aren't written back.
void BaselineOutput(const Mc3dsFile *scene, const Mc3dsOptions *options);

#endif
