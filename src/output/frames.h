// The lines of the animation file.
#ifndef MC3DS_OUTPUT_FRAMES_H
#define MC3DS_OUTPUT_FRAMES_H

#include "../frame/frame.h"

struct Mc3dsWriter;

// Writes all frames of the objects that the .vue file names and of their descendants.
void Mc3dsWriteFrames(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                      const Mc3dsTransform *axesInverse);

#endif
