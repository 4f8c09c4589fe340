// Prints all numbers of outputs and reports.
#ifndef MC3DS_FRAME_NUMBER_TEXT_H
#define MC3DS_FRAME_NUMBER_TEXT_H

#include <cstdint>

// Bytes that each function may overwrite, some of them after the end of its text. No NUL is written.
constexpr int Mc3dsFixedTextMax = 328; // -DBL_MAX with six decimals has 317
constexpr int Mc3dsIntegerTextMax = 19;

// Each writes at out and returns the end of its text.

// As "%f".
char *Mc3dsPutFixed(char *out, float value);
char *Mc3dsPutFixed(char *out, double value);

// As "%.*f", with a precision of at most 6.
char *Mc3dsPutFixed(char *out, double value, int precision);

// As "%10.6f".
char *Mc3dsPutFixedWide(char *out, float value);
char *Mc3dsPutFixedWide(char *out, double value);

// As "%d".
char *Mc3dsPutInteger(char *out, int32_t value);

// As "%x".
char *Mc3dsPutHexadecimal(char *out, uint32_t value);

#endif
