#include "text_stream.h"

// A NUL follows the last buffered byte, so that numbers are parsed without checks against the buffer's end.

void Mc3dsOpenTextStream(Mc3dsFile *file, uint64_t size)
{
    Mc3dsLoad *load = file->load;
    load->nextText = load->lastText = load->bytes;
    load->bytes[0] = '\0';
    load->textLeft = size;
    load->position = 0;
    load->isElsewhere = false;
}

bool Mc3dsRefillText(Mc3dsFile *file)
{
    Mc3dsLoad *load = file->load;
    size_t length = 0;
    if (file->vueError == 0) {
        // One extra byte is requested and discarded: a folder of size 0 then shows by a read error.
        constexpr size_t most = sizeof load->bytes - 1;
        const size_t wanted = load->textLeft < most ? static_cast<size_t>(load->textLeft) + 1 : most;
        const Mc3dsPiece piece = Mc3dsReadPiece(file, load->bytes, wanted, load->position, true);
        file->vueError = piece.error;
        length = piece.length < load->textLeft ? piece.length : static_cast<size_t>(load->textLeft);
        load->textLeft -= length;
        load->position += length;
        if (piece.error != 0)
            Mc3dsError(0, Mc3dsReportKind::FileError, "File Error");
    }
    load->bytes[length] = '\0';
    load->nextText = load->bytes;
    load->lastText = load->bytes + length;
    return length > 0;
}
