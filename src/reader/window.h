// The stretch of the file that is in memory, and the reads that find all of their bytes in it, as nearly
// every one does. What else may come stands in stream.cpp.
#ifndef MC3DS_READER_WINDOW_H
#define MC3DS_READER_WINDOW_H

#include <bit>
#include <cstring>

#include "../frame/frame.h"

struct Mc3dsWindow {
    const uint8_t *next;   // the next byte to be handed out
    const uint8_t *last;   // behind the last byte that can be
    uint64_t lastPosition; // the file position of last
    uint64_t start;        // the file position of the first of bytes
    uint64_t streamAt;     // where the stream itself stands: behind the last of bytes
    uint64_t end;          // where the file was found to end
    uint64_t budget; // bytes that the load may still hand out, those behind the end of the file included
    bool broken;     // the stream's error indicator: nothing can be read but what the window holds
    bool failed;     // the same as it shows to the readers: a byte was asked for and could not be had
    bool spent;      // the budget was exceeded
    uint8_t bytes[65536];
};

extern Mc3dsWindow mc3dsWindow;

inline uint64_t Mc3dsPosition(const Mc3dsFile *)
{
    return mc3dsWindow.lastPosition - static_cast<uint64_t>(mc3dsWindow.last - mc3dsWindow.next);
}

// Leaves nothing to be taken at a position. What was read before stays, for a seek that comes back to it.
inline void Mc3dsLookAway(uint64_t position)
{
    mc3dsWindow.next = mc3dsWindow.last = mc3dsWindow.bytes;
    mc3dsWindow.lastPosition = position;
}

inline void Mc3dsSeek(Mc3dsFile *, uint32_t position)
{
    Mc3dsWindow &window = mc3dsWindow;
    if (position < window.start || position > window.streamAt || window.failed) {
        Mc3dsLookAway(position);
        return;
    }
    window.next = window.bytes + (position - window.start);
    window.last = window.bytes + (window.streamAt - window.start);
    window.lastPosition = window.streamAt;
}

// The bytes that are wanted if they are all there, else null. Nothing is there once the stream has failed.
inline const uint8_t *Mc3dsTakeFromWindow(size_t count)
{
    Mc3dsWindow &window = mc3dsWindow;
    if (static_cast<size_t>(window.last - window.next) < count || window.budget < count)
        return nullptr;
    const uint8_t *bytes = window.next;
    window.next += count;
    window.budget -= count;
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

uint16_t Mc3dsReadU16Slowly(Mc3dsFile *file);
uint32_t Mc3dsReadU32Slowly(Mc3dsFile *file);
void Mc3dsReadU16sSlowly(Mc3dsFile *file, uint16_t *numbers, size_t count);
void Mc3dsReadFloatsSlowly(Mc3dsFile *file, float *numbers, size_t count);

inline uint16_t Mc3dsReadU16(Mc3dsFile *file)
{
    const uint8_t *bytes = Mc3dsTakeFromWindow(2);
    return bytes ? Mc3dsU16Of(bytes) : Mc3dsReadU16Slowly(file);
}

// 0 and "File Error" when the stream is in error.
inline uint32_t Mc3dsReadU32(Mc3dsFile *file)
{
    const uint8_t *bytes = Mc3dsTakeFromWindow(4);
    return bytes ? Mc3dsU32Of(bytes) : Mc3dsReadU32Slowly(file);
}

// The bytes of so many numbers, where the machine has them in the order of the file. False when they must be
// read slowly.
inline bool Mc3dsCopyFromWindow(void *numbers, size_t size)
{
    const uint8_t *bytes = std::endian::native == std::endian::little ? Mc3dsTakeFromWindow(size) : nullptr;
    if (bytes)
        std::memcpy(numbers, bytes, size);
    return bytes != nullptr;
}

// count numbers one after another, exactly as so many calls of Mc3dsReadU16 or Mc3dsReadFloat would give.
inline void Mc3dsReadU16s(Mc3dsFile *file, uint16_t *numbers, size_t count)
{
    if (!Mc3dsCopyFromWindow(numbers, count * 2))
        Mc3dsReadU16sSlowly(file, numbers, count);
}

inline void Mc3dsReadFloats(Mc3dsFile *file, float *numbers, size_t count)
{
    if (!Mc3dsCopyFromWindow(numbers, count * 4))
        Mc3dsReadFloatsSlowly(file, numbers, count);
}

// Mc3dsReadU32, taken as the bits of a float.
inline float Mc3dsReadFloat(Mc3dsFile *file)
{
    float number;
    Mc3dsReadFloats(file, &number, 1);
    return number;
}

#endif
