// Keys of the keyframer and the values between them.
#ifndef MC3DS_RESTORE_TRACKS_H
#define MC3DS_RESTORE_TRACKS_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "matrix.h"

// Hamilton's order: a x b turns by b first. Turns columns, so rows of matrices are turned by the transpose.
struct Mc3dsQuaternion {
    double w = 1, x = 0, y = 0, z = 0;
};

struct Mc3dsKey {
    uint32_t frame = 0;
    float tension = 0, continuity = 0, bias = 0, easeTo = 0, easeFrom = 0; // -1 to 1; eases 0 to 1
    Mc3dsPoint value = {};  // position, scale, or axis of the turn since the key before
    double angle = 0;       // of the turn in radians, clockwise as seen from the tip of the axis
    Mc3dsQuaternion turned; // all turns up to here
};

// How the curve goes through a key.
struct Mc3dsBend {
    Mc3dsPoint in = {}, out = {};    // tangents of positions and scales
    Mc3dsQuaternion turnIn, turnOut; // the same of turns, as inner points of a spherical curve
};

struct Mc3dsTrack {
    uint16_t flags = 0;
    bool turns = false;           // keys are turns
    std::vector<Mc3dsKey> keys;   // their frames ascend
    std::vector<Mc3dsBend> bends; // of the keys, once they are needed
};

// content: of a track chunk; valueCount: 3, or 4 for turns. False if the keys don't fit, aren't finite, or
// their frames don't ascend. A track without keys is valid.
bool Mc3dsReadTrack(std::string_view content, size_t valueCount, Mc3dsTrack *track);
// Makes the bends, which values between two keys take. No value in frame 0 is between two keys.
void Mc3dsBendTrack(Mc3dsTrack *track);
// The value at a frame. The track must have keys.
Mc3dsPoint Mc3dsPointAt(const Mc3dsTrack &track, double frame);
Mc3dsMatrix Mc3dsTurnAt(const Mc3dsTrack &track, double frame);
// Changes the values of all keys of a track chunk. change gets the values of a key in the order of the file.
void Mc3dsChangeKeys(std::string *content, size_t valueCount, const std::function<void(float *)> &change);
// A track chunk with one key in frame 0.
std::string Mc3dsOneKey(const std::vector<float> &values);
// Whether the value ever changes.
bool Mc3dsTrackMoves(const Mc3dsTrack &track);

#endif
