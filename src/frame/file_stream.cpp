#include "load_state.h"

#if defined(_MSC_VER)
static int64_t TellStream(FILE *stream)
{
    return _ftelli64(stream);
}

bool Mc3dsSeekStream(FILE *stream, int64_t offset, int origin)
{
    return _fseeki64(stream, offset, origin) == 0;
}
#else
static int64_t TellStream(FILE *stream)
{
    return ftello(stream);
}

bool Mc3dsSeekStream(FILE *stream, int64_t offset, int origin)
{
    return fseeko(stream, static_cast<off_t>(offset), origin) == 0;
}
#endif

int64_t Mc3dsMeasureStream(FILE *stream)
{
    // Some systems open folders, where this seek may fail; the first read then reports an error.
    const int64_t size = Mc3dsSeekStream(stream, 0, SEEK_END) ? TellStream(stream) : 0;
    return Mc3dsSeekStream(stream, 0, SEEK_SET) ? size : -1;
}

void Mc3dsCloseStream(Mc3dsFile *file)
{
    std::fclose(file->stream);
    file->stream = nullptr;
}
