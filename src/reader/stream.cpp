#include "reader.h"

static char nameBuffer[130]; // 129 bytes and a NUL

bool Mc3dsOpenStream(Mc3dsFile *file)
{
    const int64_t size = Mc3dsStartStream(file->stream);
    if (size < 0)
        return false;
    // Limited to what 32-bit positions reach: some systems give a folder the size 2^63 - 1.
    const uint64_t counted = size < 0xFFFFFFFF ? static_cast<uint64_t>(size) : 0xFFFFFFFF;
    file->fileSize = static_cast<uint64_t>(size);
    Mc3dsLoad *load = file->load;
    load->position = load->start = load->length = 0;
    load->end = UINT64_MAX;
    load->failed = load->spent = false;
    load->budget = counted * 16 + (uint64_t{1} << 20);
    return true;
}

bool Mc3dsMayRead(Mc3dsFile *file, uint64_t bytes)
{
    Mc3dsLoad *load = file->load;
    if (bytes > load->budget && !load->spent) {
        Mc3dsError(0, Mc3dsReportKind::CountsTooLarge,
                   "The counts of the file ask for more than it holds; giving up what doesn't fit");
        load->spent = true;
        load->budget = 0;
    }
    return bytes <= load->budget;
}

bool Mc3dsSpend(Mc3dsFile *file, uint64_t bytes)
{
    if (!Mc3dsMayRead(file, bytes))
        return false;
    file->load->budget -= bytes;
    return true;
}

// False at the end of the file, and if the byte at the position can't be read. Such an error is permanent.
static bool Refill(Mc3dsFile *file)
{
    Mc3dsLoad *load = file->load;
    if (load->failed || load->position >= load->end)
        return false;
    const bool goesOn = load->position == load->start + load->length;
    // After a seek to somewhere else, read only 4 KiB: the next seek often returns.
    constexpr size_t whole = sizeof load->bytes - 1;
    const Mc3dsPiece piece =
        Mc3dsReadPiece(file, load->bytes, goesOn ? whole : whole / 16, load->position, goesOn);
    load->start = load->position;
    load->length = piece.length;
    if (piece.isEnd)
        load->end = load->start + load->length;
    load->failed = piece.error != 0;
    file->readError = piece.error;
    return load->length > 0;
}

// Returns how many bytes were in the file. The rest are 0xFF, and the position stays at the end.
static size_t Take(Mc3dsFile *file, void *out, size_t count)
{
    if (const uint8_t *bytes = Mc3dsTakeBuffered(file, count)) {
        std::memcpy(out, bytes, count);
        return count;
    }
    Mc3dsLoad *load = file->load;
    auto *to = static_cast<uint8_t *>(out);
    size_t taken = 0;
    const bool allowed = Mc3dsSpend(file, count);
    while (allowed && taken < count && (Mc3dsBuffered(load) != 0 || Refill(file))) {
        const size_t available = Mc3dsBuffered(load);
        const size_t piece = available < count - taken ? available : count - taken;
        std::memcpy(to + taken, Mc3dsNextByte(load), piece);
        load->position += piece;
        taken += piece;
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

void Mc3dsRefillU16s(Mc3dsFile *file, uint16_t *numbers, size_t count)
{
    Take(file, numbers, count * 2);
    if constexpr (std::endian::native != std::endian::little)
        for (size_t i = 0; i < count; ++i)
            numbers[i] = static_cast<uint16_t>(numbers[i] << 8 | numbers[i] >> 8); // unnoticed
}

static void ReadPatterns(Mc3dsFile *file, void *numbers, size_t count)
{
    auto *bytes = static_cast<uint8_t *>(numbers);
    size_t read = 0;
    if (!file->load->failed) {
        // The number interrupted by a read error is padded with 0xFF; those after it are 0 and reported.
        const size_t taken = Take(file, numbers, count * 4);
        read = file->load->failed && taken < count * 4 ? taken / 4 + 1 : count;
    }
    if constexpr (std::endian::native != std::endian::little)
        for (uint8_t *number = bytes; number < bytes + read * 4; number += 4) {
            const uint8_t turned[4] = {number[3], number[2], number[1], number[0]};
            std::memcpy(number, turned, 4);
        }
    for (size_t i = read; i < count; ++i) {
        Mc3dsError(0, Mc3dsReportKind::FileError, "File Error");
        std::memset(bytes + i * 4, 0, 4);
    }
}

void Mc3dsRefillFloats(Mc3dsFile *file, float *numbers, size_t count)
{
    ReadPatterns(file, numbers, count);
}

uint16_t Mc3dsRefillU16(Mc3dsFile *file)
{
    uint16_t number;
    Mc3dsRefillU16s(file, &number, 1);
    return number;
}

uint32_t Mc3dsRefillU32(Mc3dsFile *file)
{
    uint32_t number;
    ReadPatterns(file, &number, 1);
    return number;
}

const char *Mc3dsReadString(Mc3dsFile *file)
{
    constexpr size_t longest = sizeof nameBuffer - 1;
    const size_t available = Mc3dsBuffered(file->load);
    if (available != 0) {
        const uint8_t *text = Mc3dsNextByte(file->load);
        const void *end = std::memchr(text, 0, available < longest ? available : longest);
        const auto whole = end ? static_cast<size_t>(static_cast<const uint8_t *>(end) - text) + 1 : 0;
        const uint8_t *bytes = end ? Mc3dsTakeBuffered(file, whole) : nullptr;
        if (bytes) {
            std::memcpy(nameBuffer, bytes, whole);
            return nameBuffer;
        }
    }
    size_t length = 0;
    do
        nameBuffer[length] = static_cast<char>(Mc3dsReadByte(file));
    while (nameBuffer[length] != '\0' && ++length < longest);
    nameBuffer[length] = '\0';
    return nameBuffer;
}
