#include "number_text.h"

#include <charconv>
#include <cmath>
#include <cstring>

char *Mc3dsPutFixed(char *out, double value, int precision)
{
    if (std::isnan(value)) { // without a sign: it differs from one machine to the next
        std::memcpy(out, "nan", 3);
        return out + 3;
    }
    return std::to_chars(out, out + Mc3dsFixedTextMax, value, std::chars_format::fixed, precision).ptr;
}

char *Mc3dsPutFixedWide(char *out, double value)
{
    constexpr int width = 10;
    char *end = Mc3dsPutFixed(out, value, 6);
    const auto length = static_cast<int>(end - out);
    if (length >= width)
        return end;
    std::memmove(out + (width - length), out, static_cast<size_t>(length));
    std::memset(out, ' ', static_cast<size_t>(width - length));
    return out + width;
}

char *Mc3dsPutInteger(char *out, int32_t value)
{
    return std::to_chars(out, out + Mc3dsIntegerTextMax, value).ptr;
}

char *Mc3dsPutHexadecimal(char *out, uint32_t value)
{
    return std::to_chars(out, out + Mc3dsIntegerTextMax, value, 16).ptr;
}
