// Reads the text file in file->stream once, from start to end.
#ifndef MC3DS_ANIMATION_TEXT_STREAM_H
#define MC3DS_ANIMATION_TEXT_STREAM_H

#include "../frame/load_state.h"

constexpr int Mc3dsEndOfText = -1;

// Reads at most size bytes, even if the file grows.
void Mc3dsOpenTextStream(Mc3dsFile *file, uint64_t size);
bool Mc3dsRefillText(Mc3dsFile *file); // false at the end, and on a read error, which is reported

// The next byte, which is not consumed, or Mc3dsEndOfText.
inline int Mc3dsPeekCharacter(Mc3dsFile *file)
{
    const Mc3dsLoad *load = file->load;
    return load->nextText < load->lastText || Mc3dsRefillText(file) ? *load->nextText : Mc3dsEndOfText;
}

inline int Mc3dsTakeCharacter(Mc3dsFile *file)
{
    const int character = Mc3dsPeekCharacter(file);
    if (character != Mc3dsEndOfText)
        ++file->load->nextText;
    return character;
}

#endif
