// Rules for every loaded scene and every output, checked by the tests and the fuzz targets.
#ifndef MC3DS_TESTS_CHECK_SCENE_H
#define MC3DS_TESTS_CHECK_SCENE_H

#include <string>

#include "frame/frame.h"

// The first rule that a loaded scene breaks, as text; empty for a valid scene and for null.
std::string CheckScene(const Mc3dsFile *file);

// One flag set for each way of writing a scene.
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

// Runs one output and discards it; only per-object files stay, in the current folder. Returns the fault found
// as text, else an empty text.
std::string CheckOutput(const Mc3dsFile *file, uint32_t flags);

#endif
