#include "tracks.h"

#include <algorithm>

#include "chunk_tree.h"

// Bits 0 and 1 of a track's flags: 2 repeats it, 3 also joins its end to its start smoothly.
constexpr uint16_t repeats = 2;
constexpr uint16_t loops = 3;
constexpr double pi = 3.14159265358979323846;

static Mc3dsQuaternion Times(const Mc3dsQuaternion &a, const Mc3dsQuaternion &b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}

// axis needs no length of 1; without any length there is no turn.
static Mc3dsQuaternion TurnBy(const Mc3dsPoint &axis, double angle)
{
    const double length = std::hypot(axis[0], axis[1], axis[2]);
    if (!(length > 1e-20))
        return {};
    const double factor = std::sin(-angle / 2) / length;
    return {std::cos(-angle / 2), axis[0] * factor, axis[1] * factor, axis[2] * factor};
}

// Turns from a to b the short way: the half angle times the axis.
static Mc3dsPoint LogarithmBetween(const Mc3dsQuaternion &a, const Mc3dsQuaternion &b)
{
    Mc3dsQuaternion between = Times({a.w, -a.x, -a.y, -a.z}, b);
    if (between.w < 0)
        between = {-between.w, -between.x, -between.y, -between.z};
    const double sine = std::hypot(between.x, between.y, between.z);
    const double factor = sine > 1e-12 ? std::atan2(sine, between.w) / sine : 1.0;
    return {between.x * factor, between.y * factor, between.z * factor};
}

static Mc3dsQuaternion Exponential(const Mc3dsPoint &v)
{
    const double angle = std::hypot(v[0], v[1], v[2]);
    const double factor = angle > 1e-12 ? std::sin(angle) / angle : 1.0;
    return {std::cos(angle), v[0] * factor, v[1] * factor, v[2] * factor};
}

static Mc3dsQuaternion Between(const Mc3dsQuaternion &a, const Mc3dsQuaternion &b, double share)
{
    Mc3dsPoint way = LogarithmBetween(a, b);
    for (double &number : way)
        number *= share;
    return Times(a, Exponential(way));
}

// How the differences to the neighbouring keys make the tangents of a key (Kochanek and Bartels), with the
// correction for keys at unequal distances.
struct Weights {
    double inBefore, inAfter, outBefore, outAfter;
};

static Weights WeightsOf(const Mc3dsKey &key, double before, double after)
{
    const double half = 0.5 * (before + after), even = std::abs(static_cast<double>(key.continuity));
    const auto corrected = [even, half](double distance) {
        const double share = half > 0 ? distance / half : 1.0;
        return share + even - even * share;
    };
    const double continuity = static_cast<double>(key.continuity), bias = static_cast<double>(key.bias);
    const double tension = 0.5 * (1 - static_cast<double>(key.tension)), less = 1 - continuity,
                 more = 1 + continuity, early = 1 + bias, late = 1 - bias;
    return {tension * less * early * corrected(before), tension * more * late * corrected(before),
            tension * more * early * corrected(after), tension * less * late * corrected(after)};
}

// At an open end the tangent is the way to the only neighbour.
static Mc3dsBend BendOf(const Mc3dsKey &key, const Mc3dsKey *before, const Mc3dsKey *after,
                        double framesBefore, double framesAfter)
{
    const Weights weights = before && after ? WeightsOf(key, framesBefore, framesAfter) : Weights{1, 1, 1, 1};
    Mc3dsBend bend;
    Mc3dsPoint turnIn = {}, turnOut = {};
    const Mc3dsPoint from = before ? LogarithmBetween(before->turned, key.turned) : Mc3dsPoint{};
    const Mc3dsPoint to = after ? LogarithmBetween(key.turned, after->turned) : Mc3dsPoint{};
    for (size_t i = 0; i < 3; ++i) {
        const double back = before ? key.value[i] - before->value[i] : 0.0;
        const double ahead = after ? after->value[i] - key.value[i] : 0.0;
        bend.in[i] = weights.inBefore * back + weights.inAfter * ahead;
        bend.out[i] = weights.outBefore * back + weights.outAfter * ahead;
        turnIn[i] = (from[i] - (weights.inBefore * from[i] + weights.inAfter * to[i])) / 2;
        turnOut[i] = (weights.outBefore * from[i] + weights.outAfter * to[i] - to[i]) / 2;
    }
    bend.turnIn = Times(key.turned, Exponential(turnIn));
    bend.turnOut = Times(key.turned, Exponential(turnOut));
    return bend;
}

void Mc3dsBendTrack(Mc3dsTrack *track)
{
    const std::vector<Mc3dsKey> &keys = track->keys;
    const size_t count = keys.size();
    if (count < 2 || !track->bends.empty())
        return;
    const bool isClosed = (track->flags & loops) == loops && count > 2;
    for (size_t i = 0; i < count; ++i) {
        const Mc3dsKey &key = keys[i];
        const Mc3dsKey *before = i > 0 ? &keys[i - 1] : isClosed ? &keys[count - 2] : nullptr;
        const Mc3dsKey *after = i + 1 < count ? &keys[i + 1] : isClosed ? &keys[1] : nullptr;
        const double framesBefore =
            i > 0 ? key.frame - keys[i - 1].frame : keys[count - 1].frame - (before ? before->frame : 0);
        const double framesAfter =
            i + 1 < count ? keys[i + 1].frame - key.frame : (after ? after->frame : 0) - keys[0].frame;
        track->bends.push_back(BendOf(key, before, after, framesBefore, framesAfter));
    }
}

// Reads one key. False if the content ends before it does.
static bool ReadKey(std::string_view content, size_t valueCount, size_t *at, Mc3dsKey *key)
{
    constexpr size_t headSize = 6;
    if (content.size() - *at < headSize)
        return false;
    key->frame = Mc3dsNumberAt<uint32_t>(content, *at);
    const uint16_t flags = Mc3dsNumberAt<uint16_t>(content, *at + 4);
    *at += headSize;
    double values[4] = {};
    float *const splines[] = {&key->tension, &key->continuity, &key->bias, &key->easeTo, &key->easeFrom};
    for (size_t i = 0; i < 5 + valueCount; ++i) {
        if (i < 5 && !(flags & (1u << i)))
            continue;
        if (content.size() - *at < 4)
            return false;
        const float number = Mc3dsNumberAt<float>(content, *at);
        *at += 4;
        if (!std::isfinite(number))
            return false;
        if (i < 5)
            *splines[i] = number;
        else
            values[i - 5] = static_cast<double>(number);
    }
    const size_t first = valueCount - 3;
    key->angle = first == 1 ? values[0] : 0.0;
    key->value = {values[first], values[first + 1], values[first + 2]};
    return true;
}

bool Mc3dsReadTrack(std::string_view content, size_t valueCount, Mc3dsTrack *track)
{
    constexpr size_t headSize = 14;
    if (content.size() < headSize)
        return false;
    track->flags = Mc3dsNumberAt<uint16_t>(content, 0);
    const uint32_t count = Mc3dsNumberAt<uint32_t>(content, 10);
    size_t at = headSize;
    if (count > (content.size() - headSize) / (6 + 4 * valueCount))
        return false;
    track->keys.clear();
    track->bends.clear();
    track->keys.reserve(count);
    track->turns = valueCount == 4;
    for (uint32_t i = 0; i < count; ++i) {
        Mc3dsKey key;
        if (!ReadKey(content, valueCount, &at, &key) || (i > 0 && key.frame <= track->keys.back().frame))
            return false;
        if (valueCount == 4) {
            const Mc3dsQuaternion turn = TurnBy(key.value, key.angle);
            key.turned = i > 0 ? Times(turn, track->keys.back().turned) : turn;
        }
        track->keys.push_back(key);
    }
    return true;
}

void Mc3dsChangeKeys(std::string *content, size_t valueCount, const std::function<void(float *)> &change)
{
    size_t at = 14;
    for (uint32_t left = Mc3dsNumberAt<uint32_t>(*content, 10); left > 0; --left) {
        const uint16_t flags = Mc3dsNumberAt<uint16_t>(*content, at + 4);
        at += 6;
        for (size_t bit = 0; bit < 5; ++bit)
            at += flags & (1u << bit) ? 4 : 0;
        float values[4] = {};
        for (size_t i = 0; i < valueCount; ++i)
            values[i] = Mc3dsNumberAt<float>(*content, at + 4 * i);
        change(values);
        std::string bytes;
        for (size_t i = 0; i < valueCount; ++i)
            Mc3dsAppendNumber(&bytes, values[i]);
        content->replace(at, bytes.size(), bytes);
        at += bytes.size();
    }
}

std::string Mc3dsOneKey(const std::vector<float> &values)
{
    std::string bytes(10, '\0');
    Mc3dsAppendNumber(&bytes, uint32_t{1});
    bytes.append(6, '\0');
    for (const float value : values)
        Mc3dsAppendNumber(&bytes, value);
    return bytes;
}

// A share of the way from 0 to 1, which starts and stops slowly.
static double Eased(double share, double from, double to)
{
    const double sum = from + to;
    if (!(sum > 0))
        return share;
    if (sum > 1) {
        from /= sum;
        to /= sum;
    }
    const double speed = 1 / (2 - from - to);
    if (share < from)
        return speed / from * share * share;
    if (share <= 1 - to)
        return speed * (2 * share - from);
    return 1 - speed / to * (1 - share) * (1 - share);
}

// The key at or before a frame, and the share of the way to the next one: 0 at the ends.
static size_t FindKey(const Mc3dsTrack &track, double frame, double *share)
{
    const std::vector<Mc3dsKey> &keys = track.keys;
    const double first = keys.front().frame, last = keys.back().frame;
    if ((track.flags & repeats) && frame > last && last > first)
        frame = first + std::fmod(frame - first, last - first);
    const auto next = std::upper_bound(keys.begin(), keys.end(), frame,
                                       [](double at, const Mc3dsKey &key) { return at < key.frame; });
    *share = 0;
    if (next == keys.begin())
        return 0;
    const auto index = static_cast<size_t>(next - keys.begin()) - 1;
    if (next != keys.end())
        *share = Eased((frame - keys[index].frame) / (next->frame - keys[index].frame),
                       static_cast<double>(keys[index].easeFrom), static_cast<double>(next->easeTo));
    return index;
}

Mc3dsPoint Mc3dsPointAt(const Mc3dsTrack &track, double frame)
{
    double t;
    const size_t index = FindKey(track, frame, &t);
    const Mc3dsKey &a = track.keys[index];
    if (t == 0)
        return a.value;
    const Mc3dsKey &b = track.keys[index + 1];
    Mc3dsPoint point;
    for (size_t i = 0; i < 3; ++i)
        point[i] = (2 * t * t * t - 3 * t * t + 1) * a.value[i] + (3 * t * t - 2 * t * t * t) * b.value[i] +
                   (t * t * t - 2 * t * t + t) * track.bends[index].out[i] +
                   (t * t * t - t * t) * track.bends[index + 1].in[i];
    return point;
}

Mc3dsMatrix Mc3dsTurnAt(const Mc3dsTrack &track, double frame)
{
    double t;
    const size_t index = FindKey(track, frame, &t);
    Mc3dsQuaternion q = track.keys[index].turned;
    if (t != 0) {
        const Mc3dsKey &a = track.keys[index], &b = track.keys[index + 1];
        // A turn of more than half a circle goes its own way; shorter ones follow a curve through all keys.
        if (std::abs(b.angle) > pi)
            q = Times(TurnBy(b.value, b.angle * t), a.turned);
        else
            q = Between(Between(a.turned, b.turned, t),
                        Between(track.bends[index].turnOut, track.bends[index + 1].turnIn, t),
                        2 * t * (1 - t));
    }
    Mc3dsMatrix m;
    m.rows[0] = {1 - 2 * (q.y * q.y + q.z * q.z), 2 * (q.x * q.y + q.w * q.z), 2 * (q.x * q.z - q.w * q.y)};
    m.rows[1] = {2 * (q.x * q.y - q.w * q.z), 1 - 2 * (q.x * q.x + q.z * q.z), 2 * (q.y * q.z + q.w * q.x)};
    m.rows[2] = {2 * (q.x * q.z + q.w * q.y), 2 * (q.y * q.z - q.w * q.x), 1 - 2 * (q.x * q.x + q.y * q.y)};
    return m;
}

bool Mc3dsTrackMoves(const Mc3dsTrack &track)
{
    constexpr double rounding = 1e-6;
    for (size_t i = 1; i < track.keys.size(); ++i) {
        const Mc3dsKey &before = track.keys[i - 1], &key = track.keys[i];
        if (track.turns && std::abs(key.angle) > rounding)
            return true;
        for (size_t c = 0; c < 3 && !track.turns; ++c)
            if (std::abs(key.value[c] - before.value[c]) > rounding * std::max(1.0, std::abs(key.value[c])))
                return true;
    }
    return false;
}
