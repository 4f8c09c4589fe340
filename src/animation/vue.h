// The .vue file beside a scene. It alone defines the animation; key tracks of the .3DS file are not used.
#ifndef MC3DS_ANIMATION_VUE_H
#define MC3DS_ANIMATION_VUE_H

#include "../frame/frame.h"

// Fills frames and hasFrames of all objects. Returns 1 if the file was opened and frames allocated, else 0.
uint32_t Mc3dsReadVue(Mc3dsFile *file);

// Multiplies the object's pivot into its transform for the frame.
void Mc3dsApplyFramePivot(Mc3dsObject *object, uint32_t frame);

#endif
