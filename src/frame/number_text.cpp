#include "number_text.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

// A number below 2^31 is written as an integer of millionths wherever its rounding is certain, at a fraction
// of the time that the exact algorithm of std::to_chars takes. The digits are the same, those of printf.

// The two digits of 0 to 99, one after another.
static constexpr struct DigitPairs {
    char text[200];
} digitPairs = [] {
    DigitPairs pairs = {};
    for (int i = 0; i < 100; ++i) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

static void PutPair(char *out, uint32_t value)
{
    std::memcpy(out, digitPairs.text + 2 * value, 2);
}

static int CountDigits(uint32_t value)
{
    if (value >= 10000)
        return 4 + CountDigits(value / 10000);
    return 1 + (value >= 10) + (value >= 100) + (value >= 1000);
}

static char *PutDigits(char *out, uint32_t value, int count)
{
    char *end = out + count;
    char *at = end;
    for (; value >= 100; value /= 100)
        PutPair(at -= 2, value % 100);
    if (value >= 10)
        PutPair(at - 2, value);
    else
        at[-1] = static_cast<char>('0' + value);
    return end;
}

// As PutDigits for a number below 10,000; writes four bytes whatever count is.
static char *PutUpToFourDigits(char *out, uint32_t value, int count)
{
    constexpr bool little = std::endian::native == std::endian::little;
    uint16_t high, low;
    std::memcpy(&high, digitPairs.text + 2 * (value / 100), 2);
    std::memcpy(&low, digitPairs.text + 2 * (value % 100), 2);
    uint32_t digits = little ? high | uint32_t{low} << 16 : low | uint32_t{high} << 16;
    const int leadingZeros = 8 * (4 - count);
    digits = little ? digits >> leadingZeros : digits << leadingZeros;
    std::memcpy(out, &digits, 4);
    return out + count;
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
    *millionths = static_cast<uint64_t>(rounded);
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
    const int digits = CountDigits(whole);
    const int padding = width - (digits + 7 + negative);
    // No branch depends on the digits of an ordinary number: one that is guessed wrong costs more than all
    // this. What is written too much is written over, or stands behind the end.
    std::memcpy(out, "  ", 2);
    out += padding > 0 ? padding : 0;
    *out = '-';
    out += negative;
    out = whole < 10000 ? PutUpToFourDigits(out, whole, digits) : PutDigits(out, whole, digits);
    const uint32_t low = fraction % 10000;
    *out = '.';
    PutPair(out + 1, fraction / 10000);
    PutPair(out + 3, low / 100);
    PutPair(out + 5, low % 100);
    return out + 7;
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
    out += value < 0;
    if (magnitude < 10000)
        return PutUpToFourDigits(out, magnitude, CountDigits(magnitude));
    return PutDigits(out, magnitude, CountDigits(magnitude));
}

char *Mc3dsPutHexadecimal(char *out, uint32_t value)
{
    return std::to_chars(out, out + Mc3dsIntegerTextMax, value, 16).ptr;
}
