#include "load_state.h"

#include <cerrno>

#if !defined(_WIN32)
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#if defined(_MSC_VER)
static int64_t TellStream(FILE *stream)
{
    return _ftelli64(stream);
}

bool Mc3dsSeekStream(FILE *stream, int64_t offset, int origin)
{
    return _fseeki64(stream, offset, origin) == 0; // unnoticed
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

int64_t Mc3dsStartStream(FILE *stream)
{
    std::setvbuf(stream, nullptr, _IONBF, 0);
    // Some systems open folders, where this seek may fail; the first read then reports an error.
    const int64_t size = Mc3dsSeekStream(stream, 0, SEEK_END) ? TellStream(stream) : 0;
    return Mc3dsSeekStream(stream, 0, SEEK_SET) ? size : -1;
}

void Mc3dsCloseStream(Mc3dsFile *file)
{
    std::fclose(file->stream);
    file->stream = nullptr;
}

#if defined(_WIN32)
FILE *Mc3dsOpenToRead(const char *path, const char *mode)
{
    return std::fopen(path, mode);
}
#else
FILE *Mc3dsOpenToRead(const char *path, const char *mode)
{
    const int number = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (number < 0)
        return nullptr;
    struct stat status;
    FILE *stream = nullptr;
    if (fstat(number, &status) != 0 || S_ISFIFO(status.st_mode))
        errno = ESPIPE;
    else if (fcntl(number, F_SETFL, 0) == 0)
        stream = fdopen(number, mode);
    if (!stream) {
        const int reason = errno;
        close(number);
        errno = reason;
    }
    return stream;
}
#endif

Mc3dsPiece Mc3dsReadPiece(Mc3dsFile *file, void *bytes, size_t wanted, uint64_t offset, bool goesOn)
{
    Mc3dsLoad *load = file->load;
    load->isElsewhere = load->isElsewhere || !goesOn;
    for (;; wanted /= 2) {
        errno = 0;
        const bool isThere =
            !load->isElsewhere || Mc3dsSeekStream(file->stream, static_cast<int64_t>(offset), SEEK_SET);
        const size_t length = isThere ? std::fread(bytes, 1, wanted, file->stream) : 0;
        load->isElsewhere = !isThere || std::ferror(file->stream);
        if (!load->isElsewhere)
            return {length, length < wanted, 0};
        const int reason = errno != 0 ? errno : EIO;
        std::clearerr(file->stream);
        if (length > 0)
            return {length, false, 0};
        if (!isThere || wanted == 1)
            return {0, false, reason};
    }
}
