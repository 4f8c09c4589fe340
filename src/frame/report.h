// Reports as data, for programs that link the objects of the library. Hosts of the shared library get level
// and text from their callbacks.
#ifndef MC3DS_FRAME_REPORT_H
#define MC3DS_FRAME_REPORT_H

#include <cstdint>

enum class Mc3dsChannel : uint8_t { Error, Message };

enum class Mc3dsReportKind : uint8_t {
    // Error channel.
    OutOfMemory,
    TooManyFrames,  // more transforms than the limit; the text is that of a lack of memory
    CountsTooLarge, // the limit of a load is exceeded
    FileError,      // a requested byte can't be read
    CantOpen,
    NotAScene,
    BadChunkHeader,
    TextCut,
    NewerVersion,
    TextureCountDiffers,
    FaceOutside, // a face or a face number is outside of the mesh's arrays
    NoInverse,
    BadColour,
    BadPercentage,
    MapTwice,
    InvalidMaterial,
    ObjectNotFound,
    TrackTooShort,
    SecondNodeHeader,
    VueObjectNotFound,
    VueFrameOutside,
    TextureRange,
    NoMatrix,
    // Message channel.
    WritingFile,
    ReadingArray,
    Detail, // all other messages
};

struct Mc3dsReport {
    Mc3dsChannel channel;
    Mc3dsReportKind kind;
    int32_t level;
    uint64_t amount;  // ReadingArray: bytes of the array in the file; else 0
    const char *text; // as the callback gets it
};

// The report that a callback is receiving. Call it in a callback only.
const Mc3dsReport *Mc3dsNewestReport();

#endif
