#include "text_stream.h"

// The NUL behind the last byte lets a number be read up to the end of the buffer without a test of its
// length.

void Mc3dsOpenTextStream(Mc3dsFile *file)
{
    Mc3dsLoad *load = file->load;
    load->nextText = load->lastText = load->bytes;
    load->bytes[0] = '\0';
}

bool Mc3dsRefillText(Mc3dsFile *file)
{
    Mc3dsLoad *load = file->load;
    const size_t length = std::fread(load->bytes, 1, sizeof load->bytes - 1, file->stream);
    load->bytes[length] = '\0';
    load->nextText = load->bytes;
    load->lastText = load->bytes + length;
    return length > 0;
}
