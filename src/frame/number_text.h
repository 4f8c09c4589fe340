// Numbers as text: the one place where they are printed, for outputs and reports alike.
#ifndef MC3DS_FRAME_NUMBER_TEXT_H
#define MC3DS_FRAME_NUMBER_TEXT_H

#include <cstdint>

// The room that each writer needs. No terminator is written, but what lies behind the text, within that room,
// may be overwritten.
constexpr int Mc3dsFixedTextMax = 328; // -DBL_MAX with six decimals is 317
constexpr int Mc3dsIntegerTextMax = 19;

// Each writes at out and returns the end of what it wrote.

// As "%f".
char *Mc3dsPutFixed(char *out, float value);
char *Mc3dsPutFixed(char *out, double value);

// As "%.2f" with precision 2 and so on, 6 at most.
char *Mc3dsPutFixed(char *out, double value, int precision);

// As "%10.6f".
char *Mc3dsPutFixedWide(char *out, float value);
char *Mc3dsPutFixedWide(char *out, double value);

// As "%d".
char *Mc3dsPutInteger(char *out, int32_t value);

// As "%x".
char *Mc3dsPutHexadecimal(char *out, uint32_t value);

#endif
