#include "number_text.h"

#include <charconv>
#include <cmath>
#include <cstring>

// A number below 2^31 is written as an integer of millionths wherever its rounding is certain, at a fraction
// of the time that the exact algorithm of std::to_chars takes. The digits are the same, those of printf.

// Digits come three at a time out of a table, each entry with the text of its number in both forms.
struct Thousand {
    char padded[4]; // three digits and a filler: four bytes are copied at once
    char plain[3];  // without leading zeros
    uint8_t count;  // how many of plain are digits
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
        for (int i = 0; i < 3; ++i) {
            entry.padded[i] = digits[i];
            entry.plain[i] = i < entry.count ? digits[3 - entry.count + i] : ' ';
        }
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
    std::memcpy(out, thousands.of[value].plain, 4); // and the count, which is written over
    return out + thousands.of[value].count;
}

static char *PutUnsigned(char *out, uint32_t value)
{
    if (value < 1000)
        return PutPlain(out, value);
    return PutPadded(PutUnsigned(out, value / 1000), value % 1000);
}

// The number of millionths nearest to a magnitude, halves to even as printf has it. False where the product's
// own rounding might have decided, or the number is too large, or none.
static bool ToMillionths(double magnitude, uint64_t *millionths)
{
    constexpr double limit = 2147483647.0;
    constexpr double integers = 4503599627370496.0; // 2^52: what is added to it is rounded to an integer
    if (!(magnitude < limit))
        return false;
    const double product = magnitude * 1e6;
    const double rounded = (product + integers) - integers;
    *millionths =
        static_cast<uint64_t>(static_cast<int64_t>(rounded)); // signed is the conversion machines have
    // The product is off by half a unit in its last place at most, which matters only near a half. With the
    // 24 bits of a float it is exact, and so are the floats' many halves, the odd multiples of 1/128.
    const double error = product * 0x1p-53;
    return std::fabs(product - rounded) + error < 0.5 ||
           static_cast<double>(static_cast<float>(magnitude)) == magnitude;
}

// Sign, digits, point and six digits more, right-aligned in width, which is 10 at most.
static char *PutMillionths(char *out, bool negative, uint64_t millionths, int width)
{
    const auto whole = static_cast<uint32_t>(millionths / 1000000);
    const auto fraction = static_cast<uint32_t>(millionths - uint64_t{whole} * 1000000);
    // Hardly a branch depends on the digits: one that is guessed wrong costs more than all this. What is
    // written too much is written over, or stands behind the end.
    std::memcpy(out, "  ", 2);
    const int padding = width - 7 - negative - (whole < 1000 ? thousands.of[whole].count : width);
    out += padding > 0 ? padding : 0;
    *out = '-';
    out = PutUnsigned(out + negative, whole);
    *out = '.';
    return PutPadded(PutPadded(out + 1, fraction / 1000), fraction % 1000);
}

// Any number at all.
static char *PutAny(char *out, double value, int precision)
{
    if (std::isnan(value)) { // without a sign: it differs from one machine to the next
        std::memcpy(out, "nan", 3);
        return out + 3;
    }
    return std::to_chars(out, out + Mc3dsFixedTextMax, value, std::chars_format::fixed, precision).ptr;
}

char *Mc3dsPutFixed(char *out, double value, int precision)
{
    uint64_t millionths;
    if (precision == 6 && ToMillionths(std::fabs(value), &millionths))
        return PutMillionths(out, std::signbit(value), millionths, 0);
    return PutAny(out, value, precision);
}

char *Mc3dsPutFixedWide(char *out, double value)
{
    constexpr int width = 10;
    uint64_t millionths;
    if (ToMillionths(std::fabs(value), &millionths))
        return PutMillionths(out, std::signbit(value), millionths, width);
    char *end = PutAny(out, value, 6);
    const auto length = static_cast<int>(end - out);
    if (length >= width)
        return end;
    std::memmove(out + (width - length), out, static_cast<size_t>(length));
    std::memset(out, ' ', static_cast<size_t>(width - length));
    return out + width;
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
