#include "number_text.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <type_traits>

// Numbers below 2^31 are printed as an integer count of millionths if their rounding is certain. This gives
// the same digits as printf in a fraction of the time that the exact std::to_chars takes.

// Table entry of a three-digit number in every form. Always copied as four bytes.
struct Thousand {
    char padded[4];     // with leading zeros
    char plain[3];      // without leading zeros
    uint8_t count;      // digits in plain
    char aligned[2][4]; // right-aligned in three places; with a minus sign in three, or four if needed
};

static constexpr struct Thousands {
    Thousand of[1000];
} thousands = [] {
    Thousands table = {};
    for (int value = 0; value < 1000; ++value) {
        Thousand &entry = table.of[value];
        const char digits[3] = {static_cast<char>('0' + value / 100),
                                static_cast<char>('0' + value / 10 % 10),
                                static_cast<char>('0' + value % 10)};
        entry.count = value < 10 ? 1 : value < 100 ? 2 : 3;
        const int blanks = 3 - entry.count;
        for (int i = 0; i < 3; ++i) {
            entry.padded[i] = digits[i];
            entry.plain[i] = i < entry.count ? digits[blanks + i] : ' ';
            entry.aligned[0][i] = i < blanks ? ' ' : digits[i];
        }
        const int shift = blanks == 0; // 1 if the sign needs a fourth place
        for (int i = 0; i < 3 + shift; ++i)
            entry.aligned[1][i] = i - shift >= blanks       ? digits[i - shift]
                                  : i - shift == blanks - 1 ? '-'
                                                            : ' ';
    }
    return table;
}();

static char *PutPadded(char *out, uint32_t value)
{
    std::memcpy(out, thousands.of[value].padded, 4);
    return out + 3;
}

static char *PutPlain(char *out, uint32_t value)
{
    std::memcpy(out, thousands.of[value].plain, 4); // with count, which is overwritten next
    return out + thousands.of[value].count;
}

static char *PutUnsigned(char *out, uint32_t value)
{
    if (value < 1000)
        return PutPlain(out, value);
    return PutPadded(PutUnsigned(out, value / 1000), value % 1000);
}

// Rounds a magnitude to millionths, halves to even as in printf. False if the number is too large or NaN, or
// if the rounding of the product may change the result.
template <class Number>
static bool ToMillionths(Number value, uint64_t *millionths)
{
    constexpr double limit = 2147483647.0;
    constexpr double integers = 4503599627370496.0; // 2^52: adding it rounds to an integer
    const double magnitude = std::fabs(static_cast<double>(value));
    if (!(magnitude < limit))
        return false;
    const double product = magnitude * 1e6;
    const double rounded = (product + integers) - integers;
    *millionths =
        static_cast<uint64_t>(static_cast<int64_t>(rounded)); // hardware converts to signed integers only
    // The product of a float, with its 24 bits, is exact, also at the halves: odd multiples of 1/128. Other
    // products are off by at most half a unit in the last place, which matters only near a half.
    if constexpr (std::is_same_v<Number, float>)
        return true;
    const double error = product * 0x1p-53;
    return std::fabs(product - rounded) + error < 0.5 ||
           static_cast<double>(static_cast<float>(magnitude)) == magnitude;
}

// As "%f", or as "%10.6f" with width 10. width is 0 or 10.
template <int width>
[[gnu::always_inline]] static inline char *PutMillionths(char *out, bool negative, uint64_t millionths)
{
    const auto whole = static_cast<uint32_t>(millionths / 1000000);
    const auto fraction = static_cast<uint32_t>(millionths - uint64_t{whole} * 1000000);
    // Avoids branches on the digits, because a misprediction costs more than all of this. Surplus bytes are
    // overwritten by the next write or lie past the returned end.
    if (width != 0 && whole < 1000) {
        std::memcpy(out, thousands.of[whole].aligned[negative], 4);
        out += 3 + (negative & (whole >= 100));
    } else {
        *out = '-';
        out = PutUnsigned(out + negative, whole);
    }
    *out = '.';
    return PutPadded(PutPadded(out + 1, fraction / 1000), fraction % 1000);
}

static char *PutAny(char *out, double value, int precision)
{
    if (std::isnan(value)) { // without its sign, which differs between machines
        std::memcpy(out, "nan", 3);
        return out + 3;
    }
    return std::to_chars(out, out + Mc3dsFixedTextMax, value, std::chars_format::fixed, precision).ptr;
}

template <class Number>
static char *PutFixed(char *out, Number value)
{
    uint64_t millionths;
    if (ToMillionths(value, &millionths))
        return PutMillionths<0>(out, std::signbit(value), millionths);
    return PutAny(out, static_cast<double>(value), 6);
}

char *Mc3dsPutFixed(char *out, float value)
{
    return PutFixed(out, value);
}

char *Mc3dsPutFixed(char *out, double value)
{
    return PutFixed(out, value);
}

char *Mc3dsPutFixed(char *out, double value, int precision)
{
    return precision == 6 ? PutFixed(out, value) : PutAny(out, value, precision);
}

template <class Number>
static char *PutFixedWide(char *out, Number value)
{
    constexpr int width = 10;
    uint64_t millionths;
    if (ToMillionths(value, &millionths))
        return PutMillionths<width>(out, std::signbit(value), millionths);
    char *end = PutAny(out, static_cast<double>(value), 6);
    const auto length = static_cast<int>(end - out);
    if (length >= width)
        return end;
    std::memmove(out + (width - length), out, static_cast<size_t>(length));
    std::memset(out, ' ', static_cast<size_t>(width - length));
    return out + width;
}

char *Mc3dsPutFixedWide(char *out, float value)
{
    return PutFixedWide(out, value);
}

char *Mc3dsPutFixedWide(char *out, double value)
{
    return PutFixedWide(out, value);
}

char *Mc3dsPutInteger(char *out, int32_t value)
{
    *out = '-';
    const uint32_t magnitude = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
    return PutUnsigned(out + (value < 0), magnitude);
}

char *Mc3dsPutHexadecimal(char *out, uint32_t value)
{
    return std::to_chars(out, out + Mc3dsIntegerTextMax, value, 16).ptr;
}
