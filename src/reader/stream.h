// Inline reads from the buffered part of the file. Refills, end of file and errors are in stream.cpp.
#ifndef MC3DS_READER_STREAM_H
#define MC3DS_READER_STREAM_H

#include <bit>
#include <cstring>

#include "../frame/load_state.h"

inline uint64_t Mc3dsPosition(const Mc3dsFile *file)
{
    return file->load->position;
}

// Costs nothing: the next read refills the buffer if the position is outside it.
inline void Mc3dsSeek(Mc3dsFile *file, uint32_t position)
{
    file->load->position = position;
}

// How many bytes are buffered from the position on.
inline size_t Mc3dsBuffered(const Mc3dsLoad *load)
{
    const uint64_t offset = load->position - load->start; // wraps to a large number before the buffer
    return offset <= load->length ? load->length - static_cast<size_t>(offset) : 0;
}

// The next byte, if one is buffered.
inline const uint8_t *Mc3dsNextByte(const Mc3dsLoad *load)
{
    return load->bytes + static_cast<size_t>(load->position - load->start);
}

// The next count bytes if the buffer has them all, else null.
inline const uint8_t *Mc3dsTakeBuffered(Mc3dsFile *file, size_t count)
{
    Mc3dsLoad *load = file->load;
    if (Mc3dsBuffered(load) < count || load->budget < count)
        return nullptr;
    const uint8_t *bytes = Mc3dsNextByte(load);
    load->position += count;
    load->budget -= count;
    return bytes;
}

inline uint16_t Mc3dsU16Of(const uint8_t *bytes)
{
    return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

inline uint32_t Mc3dsU32Of(const uint8_t *bytes)
{
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

// The reads below call these if the buffer doesn't have all bytes.
uint16_t Mc3dsRefillU16(Mc3dsFile *file);
uint32_t Mc3dsRefillU32(Mc3dsFile *file);
void Mc3dsRefillU16s(Mc3dsFile *file, uint16_t *numbers, size_t count);
void Mc3dsRefillFloats(Mc3dsFile *file, float *numbers, size_t count);

inline uint16_t Mc3dsReadU16(Mc3dsFile *file)
{
    const uint8_t *bytes = Mc3dsTakeBuffered(file, 2);
    return bytes ? Mc3dsU16Of(bytes) : Mc3dsRefillU16(file);
}

// 0, with the report "File Error", if the stream has failed.
inline uint32_t Mc3dsReadU32(Mc3dsFile *file)
{
    const uint8_t *bytes = Mc3dsTakeBuffered(file, 4);
    return bytes ? Mc3dsU32Of(bytes) : Mc3dsRefillU32(file);
}

// Copies size bytes of numbers. False if the buffer doesn't have them all or they need a byte swap.
inline bool Mc3dsCopyBuffered(Mc3dsFile *file, void *numbers, size_t size)
{
    const uint8_t *bytes =
        std::endian::native == std::endian::little ? Mc3dsTakeBuffered(file, size) : nullptr;
    if (bytes)
        std::memcpy(numbers, bytes, size);
    return bytes != nullptr;
}

// Reads count numbers, with the same result as count calls of Mc3dsReadU16 or Mc3dsReadFloat.
inline void Mc3dsReadU16s(Mc3dsFile *file, uint16_t *numbers, size_t count)
{
    if (!Mc3dsCopyBuffered(file, numbers, count * 2))
        Mc3dsRefillU16s(file, numbers, count);
}

inline void Mc3dsReadFloats(Mc3dsFile *file, float *numbers, size_t count)
{
    if (!Mc3dsCopyBuffered(file, numbers, count * 4))
        Mc3dsRefillFloats(file, numbers, count);
}

// Mc3dsReadU32, taken as the bits of a float.
inline float Mc3dsReadFloat(Mc3dsFile *file)
{
    float number;
    Mc3dsReadFloats(file, &number, 1);
    return number;
}

#endif
