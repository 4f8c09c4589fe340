// A text file has no positions worth speaking of (line ends may be translated), so it has no window to seek
// in.

#include "reader.h"

static struct {
    size_t next, length;
    uint8_t bytes[16384];
} text;

void Mc3dsOpenTextStream(Mc3dsFile *)
{
    text.next = text.length = 0;
}

int Mc3dsPeekCharacter(Mc3dsFile *file)
{
    if (text.next == text.length) {
        text.next = 0;
        text.length = std::fread(text.bytes, 1, sizeof text.bytes, file->stream);
        if (text.length == 0)
            return Mc3dsEndOfText;
    }
    return text.bytes[text.next];
}

int Mc3dsTakeCharacter(Mc3dsFile *file)
{
    const int character = Mc3dsPeekCharacter(file);
    if (character != Mc3dsEndOfText)
        ++text.next;
    return character;
}
