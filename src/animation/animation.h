// Animation: the .vue file in, the animation file out. The key tracks of the 3D Studio file play no part.
#ifndef MC3DS_ANIMATION_ANIMATION_H
#define MC3DS_ANIMATION_ANIMATION_H

#include "../frame/frame.h"

struct Mc3dsWriter;

// ---- vue.cpp

// Fills frames and hasFrames of all objects from the .vue file beside the scene. Returns 1 when the file was
// opened and its frames have memory, else 0.
uint32_t Mc3dsReadVue(Mc3dsFile *file);
bool Mc3dsReadVueToken(Mc3dsFile *file, char *buffer, size_t size);
bool Mc3dsReadVueNumber(Mc3dsFile *file, double *number);
void Mc3dsApplyFramePivot(Mc3dsObject *object, uint32_t frame);

// ---- vue_number.cpp: words as C's conversions take them, by their longest valid beginning. False if there
// is none, or it is no number.

bool Mc3dsParseInteger(const char *word, int32_t *value); // as "%d"; the nearest one where it doesn't fit
bool Mc3dsParseReal(const char *word, double *value);     // as "%lf"

// The number at the beginning of the text if it is written plainly, with what stands behind it; null
// otherwise. The text may end in anything that is no digit.
const char *Mc3dsParsePlainReal(const char *text, double *value);

// ---- frames.cpp

void Mc3dsWriteFrames(const Mc3dsFile *file, Mc3dsWriter *writer, const Mc3dsTransform *axes,
                      const Mc3dsTransform *axesInverse);

#endif
