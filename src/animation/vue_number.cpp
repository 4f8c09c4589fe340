#include "vue_number.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

static bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

static bool IsHexDigit(char character)
{
    const char lower = static_cast<char>(character | 0x20);
    return IsDigit(character) || (lower >= 'a' && lower <= 'f');
}

static bool TakeSign(const char **word)
{
    const bool negative = **word == '-';
    if (negative || **word == '+')
        ++*word;
    return negative;
}

bool Mc3dsParseInteger(const char *word, int32_t *value)
{
    const bool negative = TakeSign(&word);
    if (!IsDigit(*word))
        return false;
    const int64_t limit = int64_t{INT32_MAX} + (negative ? 1 : 0);
    int64_t magnitude = 0;
    for (; IsDigit(*word); ++word)
        if (magnitude <= limit)
            magnitude = magnitude * 10 + (*word - '0');
    if (magnitude > limit)
        magnitude = limit;
    *value = static_cast<int32_t>(negative ? -magnitude : magnitude);
    return true;
}

// Tells overflow (true) from underflow: adds the place value of the first nonzero digit to the exponent.
static bool IsHuge(const char *text, const char *end, bool hexadecimal)
{
    int64_t weight = 0;
    bool significant = false, behindPoint = false;
    for (; text < end; ++text) {
        const char lower = static_cast<char>(*text | 0x20);
        if (*text == '.') {
            behindPoint = true;
            continue;
        }
        if (lower == (hexadecimal ? 'p' : 'e'))
            break;
        significant = significant || *text != '0';
        if (significant && !behindPoint)
            ++weight;
        else if (!significant && behindPoint)
            --weight;
    }
    int32_t exponent = 0;
    if (text < end)
        Mc3dsParseInteger(text + 1, &exponent);
    return (hexadecimal ? weight * 4 : weight) + exponent > 0;
}

// Excludes an exponent without digits: from_chars would accept a second sign in it.
static size_t HexLength(const char *text)
{
    const size_t mantissa = std::strspn(text, "0123456789abcdefABCDEF.");
    const char *exponent = text + mantissa;
    if (*exponent == 'p' || *exponent == 'P') {
        ++exponent;
        TakeSign(&exponent);
        if (!IsDigit(*exponent))
            return mantissa;
    }
    return std::strlen(text);
}

// Sets infinity or 0 where the number doesn't fit: from_chars leaves the value unchanged then.
static const char *ParseUnsigned(const char *text, bool hexadecimal, double *value)
{
    const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    const size_t length = hexadecimal ? HexLength(text) : std::strlen(text);
    const auto result = std::from_chars(text, text + length, *value, format);
    if (result.ec == std::errc::invalid_argument)
        return nullptr;
    if (result.ec == std::errc::result_out_of_range)
        *value = IsHuge(text, result.ptr, hexadecimal) ? std::numeric_limits<double>::infinity() : 0.0;
    return result.ptr;
}

static const char *TakeDigits(const char *text, uint64_t *digits)
{
    for (unsigned digit; (digit = static_cast<unsigned>(*text - '0')) < 10; ++text)
        *digits = *digits * 10 + digit;
    return text;
}

// Up to 15 digits the integer and the power of ten are exact, so their quotient is rounded only once.
const char *Mc3dsParsePlainReal(const char *text, double *value)
{
    static constexpr double powers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    constexpr ptrdiff_t mostDigits = 15;
    const bool negative = TakeSign(&text);
    uint64_t digits = 0; // wraps if there are too many, which is checked below
    const char *end = TakeDigits(text, &digits);
    ptrdiff_t count = end - text, decimals = 0;
    if (*end == '.') {
        const char *const point = end;
        end = TakeDigits(point + 1, &digits);
        decimals = end - point - 1;
        count += decimals;
    }
    const char next = static_cast<char>(*end | 0x20);
    if (count == 0 || count > mostDigits || next == 'e' || next == 'x')
        return nullptr;
    const double magnitude = static_cast<double>(static_cast<int64_t>(digits)) / powers[decimals];
    *value = negative ? -magnitude : magnitude;
    return end;
}

bool Mc3dsParseReal(const char *word, double *value)
{
    if (Mc3dsParsePlainReal(word, value))
        return true;
    const bool negative = TakeSign(&word);
    if (*word == '-' || *word == '+')
        return false; // from_chars would accept a second minus
    double magnitude = 0.0;
    const bool prefixed = word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
    // "0x" without a digit after it is the number 0.
    const bool hexDigits = prefixed && (IsHexDigit(word[2]) || (word[2] == '.' && IsHexDigit(word[3])));
    if (!(hexDigits && ParseUnsigned(word + 2, true, &magnitude)) && !ParseUnsigned(word, false, &magnitude))
        return false;
    *value = negative ? -magnitude : magnitude;
    return true;
}
