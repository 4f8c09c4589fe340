// The bytes of the file go through a window that lies over a stretch of it. Seeks within the window, which
// is to say nearly all, cost nothing; arrays are taken out of it in one piece.

#include "reader.h"

Mc3dsWindow mc3dsWindow;

static Mc3dsWindow &window = mc3dsWindow;

static char nameBuffer[130]; // the shared name buffer: 129 bytes and a terminator

bool Mc3dsOpenStream(Mc3dsFile *file)
{
    // The window replaces the buffer of the stream.
    std::setvbuf(file->stream, nullptr, _IONBF, 0);
    // A folder, which some systems open, may have no end to seek to; its first read tells what it is.
    const off_t size = fseeko(file->stream, 0, SEEK_END) == 0 ? ftello(file->stream) : 0;
    if (size < 0 || fseeko(file->stream, 0, SEEK_SET) != 0)
        return false;
    // Some systems give a folder the size 2^63 - 1; sixteen times a file that positions of 32 bits reach is
    // more than enough for it.
    const uint64_t counted = size < 0xFFFFFFFF ? static_cast<uint64_t>(size) : 0xFFFFFFFF;
    Mc3dsLookAway(0);
    window.start = window.streamAt = 0;
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

bool Mc3dsMayRead(Mc3dsFile *, uint64_t bytes)
{
    if (bytes > window.budget && !window.spent) {
        Mc3dsError(0, "The counts of the file ask for more than it holds; giving up what doesn't fit");
        window.spent = true;
        window.budget = 0;
    }
    return !window.spent;
}

// Fills the window from the position at which nothing is left. False at the end of the file and in error.
static bool MoveWindow(Mc3dsFile *file)
{
    const uint64_t position = window.lastPosition;
    if (position >= window.end)
        return false;
    window.failed = window.broken;
    const bool goesOn = position == window.streamAt;
    if (window.broken || (!goesOn && fseeko(file->stream, static_cast<off_t>(position), SEEK_SET) != 0))
        return false;
    // A jump to somewhere else may be for a few bytes only, and the next one come back.
    const size_t wanted = goesOn ? sizeof window.bytes : sizeof window.bytes / 16;
    const size_t length = std::fread(window.bytes, 1, wanted, file->stream);
    window.start = position;
    window.streamAt = position + length;
    window.broken = std::ferror(file->stream) != 0;
    if (length < wanted && !window.broken)
        window.end = window.streamAt;
    window.failed = window.broken && length == 0;
    Mc3dsLookAway(position);
    window.last += length;
    window.lastPosition += length;
    return length > 0;
}

// Takes count bytes out of the file; behind its end, bytes of all ones, and the position stays there. Returns
// how many were in the file.
static size_t Take(Mc3dsFile *file, void *out, size_t count)
{
    if (const uint8_t *bytes = Mc3dsTakeFromWindow(count)) {
        std::memcpy(out, bytes, count);
        return count;
    }
    auto *to = static_cast<uint8_t *>(out);
    size_t taken = 0;
    if (Mc3dsMayRead(file, count)) {
        window.budget -= count;
        while (taken < count && (window.next < window.last || MoveWindow(file))) {
            const auto available = static_cast<size_t>(window.last - window.next);
            const size_t piece = available < count - taken ? available : count - taken;
            std::memcpy(to + taken, window.next, piece);
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

void Mc3dsReadU16sSlowly(Mc3dsFile *file, uint16_t *numbers, size_t count)
{
    Take(file, numbers, count * 2);
    if constexpr (std::endian::native != std::endian::little)
        for (size_t i = 0; i < count; ++i)
            numbers[i] = static_cast<uint16_t>(numbers[i] << 8 | numbers[i] >> 8);
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
    if constexpr (std::endian::native != std::endian::little)
        for (uint8_t *number = bytes; number < bytes + read * 4; number += 4) {
            const uint8_t turned[4] = {number[3], number[2], number[1], number[0]};
            std::memcpy(number, turned, 4);
        }
    for (size_t i = read; i < count; ++i) {
        Mc3dsError(0, "File Error");
        std::memset(bytes + i * 4, 0, 4);
    }
}

void Mc3dsReadFloatsSlowly(Mc3dsFile *file, float *numbers, size_t count)
{
    ReadPatterns(file, numbers, count);
}

uint16_t Mc3dsReadU16Slowly(Mc3dsFile *file)
{
    uint16_t number;
    Mc3dsReadU16sSlowly(file, &number, 1);
    return number;
}

uint32_t Mc3dsReadU32Slowly(Mc3dsFile *file)
{
    uint32_t number;
    ReadPatterns(file, &number, 1);
    return number;
}

const char *Mc3dsReadString(Mc3dsFile *file)
{
    constexpr size_t longest = sizeof nameBuffer - 1;
    const auto available = static_cast<size_t>(window.last - window.next);
    const void *end = std::memchr(window.next, 0, available < longest ? available : longest);
    const auto whole = end ? static_cast<size_t>(static_cast<const uint8_t *>(end) - window.next) + 1 : 0;
    const uint8_t *bytes = end ? Mc3dsTakeFromWindow(whole) : nullptr;
    if (bytes) {
        std::memcpy(nameBuffer, bytes, whole);
        return nameBuffer;
    }
    size_t length = 0;
    do
        nameBuffer[length] = static_cast<char>(Mc3dsReadByte(file));
    while (nameBuffer[length] != '\0' && ++length < longest);
    nameBuffer[length] = '\0';
    return nameBuffer;
}
