// Parses words of a .vue file like C's scanf: the longest valid prefix counts. False if there is none.
#ifndef MC3DS_ANIMATION_VUE_NUMBER_H
#define MC3DS_ANIMATION_VUE_NUMBER_H

#include <cstdint>

bool Mc3dsParseInteger(const char *word, int32_t *value); // as "%d"; clamped to the range of int32_t
bool Mc3dsParseReal(const char *word, double *value);     // as "%lf"

// Parses a number in plain decimal notation, of at most 15 digits, at the start of the text. Returns its end,
// or null for any other notation. The text needs no NUL: any byte that is not a digit ends it.
const char *Mc3dsParsePlainReal(const char *text, double *value);

#endif
