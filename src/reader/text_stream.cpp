// A text file has no positions worth speaking of (line ends may be translated), so it has no window to seek
// in.

#include "reader.h"

Mc3dsTextWindow mc3dsTextWindow;

void Mc3dsOpenTextStream(Mc3dsFile *)
{
    mc3dsTextWindow.next = mc3dsTextWindow.last = mc3dsTextWindow.bytes;
    mc3dsTextWindow.bytes[0] = '\0';
}

bool Mc3dsFillTextWindow(Mc3dsFile *file)
{
    Mc3dsTextWindow &window = mc3dsTextWindow;
    window.next = window.bytes;
    const size_t length = std::fread(window.bytes, 1, sizeof window.bytes - 1, file->stream);
    window.bytes[length] = '\0';
    window.last = window.bytes + length;
    return window.next < window.last;
}
