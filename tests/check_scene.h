// What holds for every scene and every output, whatever file it came from. For tests and fuzz targets alike.
#ifndef MC3DS_TESTS_CHECK_SCENE_H
#define MC3DS_TESTS_CHECK_SCENE_H

#include <string>

#include "frame/frame.h"

// The first thing about a loaded scene that must not be, as text; empty for a scene in order and for null.
std::string CheckScene(const Mc3dsFile *file);

// One set of flags for each way through the outputs.
constexpr uint32_t allOutputs[] = {
    MC3DS_ANIMATION | MC3DS_HEADER | MC3DS_OPACITY,
    MC3DS_SOURCE | MC3DS_PROTOS,
    MC3DS_ANIMATION | MC3DS_FLAT | MC3DS_FIT_SIZE | MC3DS_CENTRE,
    MC3DS_SOURCE | MC3DS_MERGED,
    MC3DS_PER_OBJECT,
    MC3DS_DIRECT,
    MC3DS_DIRECT | MC3DS_FLAT | MC3DS_PROTOS | MC3DS_ANIMATION,
    MC3DS_DIRECT | MC3DS_MERGED | MC3DS_FIT_SIZE,
};

// Runs one output into nowhere, but for per-object files, which go into the current folder, and direct
// builds, which are freed again. The fault that was found, as text; else empty.
std::string CheckOutput(const Mc3dsFile *file, uint32_t flags);

#endif
