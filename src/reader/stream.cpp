// The bytes of the file go through a window that lies over a stretch of it. Seeks within the window, which
// is to say nearly all, cost nothing; arrays are taken out of it in one piece.

#include <cstring>

#include "reader.h"

static struct {
    uint64_t start;    // file position of the window's first byte
    size_t length;     // bytes of the file in the window
    uint64_t next;     // file position of the next byte to be handed out; may lie anywhere
    uint64_t streamAt; // where the stream itself stands
    uint64_t end;      // where the file was found to end
    uint64_t budget;   // bytes that the load may still hand out, those behind the end of the file included
    bool broken;       // the stream's error indicator: nothing can be read but what the window holds
    bool failed;       // the same as it shows to the readers: a byte was asked for and could not be had
    bool spent;        // the budget was exceeded
    uint8_t bytes[65536];
} window;

static char nameBuffer[130]; // the shared name buffer: 129 bytes and a terminator

bool Mc3dsOpenStream(Mc3dsFile *file)
{
    if (fseeko(file->stream, 0, SEEK_END) != 0)
        return false;
    const off_t size = ftello(file->stream);
    if (size < 0 || fseeko(file->stream, 0, SEEK_SET) != 0)
        return false;
    // The window replaces the buffer of the stream.
    std::setvbuf(file->stream, nullptr, _IONBF, 0);
    // Some systems give a folder the size 2^63 - 1; sixteen times a file that positions of 32 bits reach is
    // more than enough for it.
    const uint64_t counted = size < 0xFFFFFFFF ? static_cast<uint64_t>(size) : 0xFFFFFFFF;
    window.start = window.next = window.streamAt = 0;
    window.length = 0;
    window.end = UINT64_MAX;
    window.broken = window.failed = window.spent = false;
    window.budget = counted * 16 + (uint64_t{1} << 20);
    return true;
}

void Mc3dsCloseStream(Mc3dsFile *file)
{
    std::fclose(file->stream);
    file->stream = nullptr;
}

void Mc3dsSeek(Mc3dsFile *, uint32_t position)
{
    window.next = position;
}

uint64_t Mc3dsPosition(const Mc3dsFile *)
{
    return window.next;
}

bool Mc3dsMayRead(Mc3dsFile *, uint64_t bytes)
{
    if (window.spent || bytes > window.budget) {
        if (!window.spent)
            Mc3dsError(0, "The counts of the file ask for more than it holds; giving up what doesn't fit");
        window.spent = true;
    }
    return !window.spent;
}

bool Mc3dsIsSpent(const Mc3dsFile *)
{
    return window.spent;
}

// Lays the window over the next position. False at the end of the file and in error.
static bool MoveWindow(Mc3dsFile *file)
{
    if (window.next >= window.end)
        return false;
    window.failed = window.broken;
    if (window.broken || (window.streamAt != window.next &&
                          fseeko(file->stream, static_cast<off_t>(window.next), SEEK_SET) != 0))
        return false;
    window.start = window.next;
    window.length = std::fread(window.bytes, 1, sizeof window.bytes, file->stream);
    window.streamAt = window.start + window.length;
    window.broken = std::ferror(file->stream) != 0;
    if (window.length < sizeof window.bytes && !window.broken)
        window.end = window.streamAt;
    window.failed = window.broken && window.length == 0;
    return window.length > 0;
}

// Takes count bytes out of the file; behind its end, bytes of all ones, and the position stays there. Returns
// how many were in the file.
static size_t Take(Mc3dsFile *file, void *out, size_t count)
{
    auto *to = static_cast<uint8_t *>(out);
    size_t taken = 0;
    if (Mc3dsMayRead(file, count)) {
        window.budget -= count;
        while (taken < count) {
            const uint64_t offset = window.next - window.start; // huge where next lies ahead of the window
            if (offset >= window.length) {
                if (!MoveWindow(file))
                    break;
                continue;
            }
            const size_t available = window.length - static_cast<size_t>(offset);
            const size_t piece = available < count - taken ? available : count - taken;
            std::memcpy(to + taken, window.bytes + offset, piece);
            window.next += piece;
            taken += piece;
        }
    }
    std::memset(to + taken, 0xFF, count - taken);
    return taken;
}

uint8_t Mc3dsReadByte(Mc3dsFile *file)
{
    uint8_t byte;
    Take(file, &byte, 1);
    return byte;
}

uint16_t Mc3dsReadU16(Mc3dsFile *file)
{
    uint16_t number;
    Mc3dsReadU16s(file, &number, 1);
    return number;
}

uint32_t Mc3dsReadU32(Mc3dsFile *file)
{
    uint32_t number;
    Mc3dsReadU32s(file, &number, 1);
    return number;
}

float Mc3dsReadFloat(Mc3dsFile *file)
{
    float number;
    Mc3dsReadFloats(file, &number, 1);
    return number;
}

void Mc3dsReadU16s(Mc3dsFile *file, uint16_t *numbers, size_t count)
{
    Take(file, numbers, count * 2);
    for (size_t i = 0; i < count; ++i) {
        uint8_t bytes[2];
        std::memcpy(bytes, &numbers[i], 2);
        numbers[i] = static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
    }
}

// As many 32-bit patterns, in the machine's byte order.
static void ReadPatterns(Mc3dsFile *file, void *numbers, size_t count)
{
    auto *bytes = static_cast<uint8_t *>(numbers);
    size_t read = 0;
    if (!window.failed) {
        // The number in which the stream fails is the last one that gets its bytes of all ones.
        const size_t taken = Take(file, numbers, count * 4);
        read = window.failed && taken < count * 4 ? taken / 4 + 1 : count;
    }
    for (size_t i = 0; i < read; ++i, bytes += 4) {
        const uint32_t number = static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
                                static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
        std::memcpy(bytes, &number, 4);
    }
    for (size_t i = read; i < count; ++i, bytes += 4) {
        Mc3dsError(0, "File Error");
        std::memset(bytes, 0, 4);
    }
}

void Mc3dsReadU32s(Mc3dsFile *file, uint32_t *numbers, size_t count)
{
    ReadPatterns(file, numbers, count);
}

void Mc3dsReadFloats(Mc3dsFile *file, float *numbers, size_t count)
{
    ReadPatterns(file, numbers, count);
}

const char *Mc3dsReadString(Mc3dsFile *file)
{
    size_t length = 0;
    do
        nameBuffer[length] = static_cast<char>(Mc3dsReadByte(file));
    while (nameBuffer[length] != '\0' && ++length < sizeof nameBuffer - 1);
    nameBuffer[length] = '\0';
    return nameBuffer;
}
