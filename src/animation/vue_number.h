// Words of a .vue file as numbers, as C's conversions take them: by their longest valid beginning. False if
// there is none, or it is no number.
#ifndef MC3DS_ANIMATION_VUE_NUMBER_H
#define MC3DS_ANIMATION_VUE_NUMBER_H

#include <cstdint>

bool Mc3dsParseInteger(const char *word, int32_t *value); // as "%d"; the nearest one where it doesn't fit
bool Mc3dsParseReal(const char *word, double *value);     // as "%lf"

// The number at the beginning of the text if it is written plainly, with what stands behind it; null
// otherwise. The text may end in anything that is no digit.
const char *Mc3dsParsePlainReal(const char *text, double *value);

#endif
