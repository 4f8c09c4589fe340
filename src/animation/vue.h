// The .vue file beside a scene. The key tracks of the 3D Studio file play no part.
#ifndef MC3DS_ANIMATION_VUE_H
#define MC3DS_ANIMATION_VUE_H

#include "../frame/frame.h"

// Fills frames and hasFrames of all objects. Returns 1 when the file was opened and its frames have memory,
// else 0.
uint32_t Mc3dsReadVue(Mc3dsFile *file);

// Multiplies the object's pivot into its transform of the frame.
void Mc3dsApplyFramePivot(Mc3dsObject *object, uint32_t frame);

#endif
