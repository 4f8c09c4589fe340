// The stretch of the file that is in memory, and the reads that find all of their bytes in it, as nearly
// every one does. What else may come stands in stream.cpp.
#ifndef MC3DS_READER_WINDOW_H
#define MC3DS_READER_WINDOW_H

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

uint16_t Mc3dsReadU16Slowly(Mc3dsFile *file);
uint32_t Mc3dsReadU32Slowly(Mc3dsFile *file);

inline uint16_t Mc3dsReadU16(Mc3dsFile *file)
{
    const uint8_t *bytes = Mc3dsTakeFromWindow(2);
    return bytes ? static_cast<uint16_t>(bytes[0] | bytes[1] << 8) : Mc3dsReadU16Slowly(file);
}

// 0 and "File Error" when the stream is in error.
inline uint32_t Mc3dsReadU32(Mc3dsFile *file)
{
    const uint8_t *bytes = Mc3dsTakeFromWindow(4);
    if (!bytes)
        return Mc3dsReadU32Slowly(file);
    return static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
           static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24;
}

#endif
