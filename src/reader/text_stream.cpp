// A text file has no positions worth speaking of (line ends may be translated), so it has no window to seek
// in.

#include "reader.h"

Mc3dsTextWindow mc3dsTextWindow;

void Mc3dsOpenTextStream(Mc3dsFile *)
{
    mc3dsTextWindow.next = mc3dsTextWindow.last = mc3dsTextWindow.bytes;
}

bool Mc3dsFillTextWindow(Mc3dsFile *file)
{
    Mc3dsTextWindow &window = mc3dsTextWindow;
    window.next = window.bytes;
    window.last = window.bytes + std::fread(window.bytes, 1, sizeof window.bytes, file->stream);
    return window.next < window.last;
}
