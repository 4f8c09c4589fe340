// printf formats, parsed at compile time. A line of output costs only its numbers and a few copies, and an
// argument of the wrong type doesn't compile.
#ifndef MC3DS_OUTPUT_FORMAT_H
#define MC3DS_OUTPUT_FORMAT_H

#include <cstring>
#include <type_traits>

#include "../frame/number_text.h"
#include "output.h"

template <size_t size>
struct Mc3dsFormat {
    char text[size] = {};
    consteval Mc3dsFormat(const char (&literal)[size])
    {
        for (size_t i = 0; i < size; ++i)
            text[i] = literal[i];
    }
};

// The length of the literal text from a position to the next conversion or the end.
constexpr size_t Mc3dsLiteralLength(const char *text, size_t from)
{
    size_t length = 0;
    while (text[from + length] != '\0' && text[from + length] != '%')
        ++length;
    return length;
}

constexpr bool Mc3dsHasConversion(const char *text, size_t from, const char *conversion)
{
    while (*conversion != '\0' && text[from] == *conversion) {
        ++from;
        ++conversion;
    }
    return *conversion == '\0';
}

template <Mc3dsFormat format, size_t from>
inline char *Mc3dsPutFormat(Mc3dsWriter *, char *out)
{
    constexpr size_t length = Mc3dsLiteralLength(format.text, from);
    static_assert(format.text[from + length] == '\0', "a conversion without an argument");
    std::memcpy(out, format.text + from, length);
    return out + length;
}

template <Mc3dsFormat format, size_t from, class First, class... Rest>
inline char *Mc3dsPutFormat(Mc3dsWriter *writer, char *out, First first, Rest... rest)
{
    constexpr size_t length = Mc3dsLiteralLength(format.text, from);
    constexpr size_t at = from + length;
    std::memcpy(out, format.text + from, length);
    out += length;
    if constexpr (Mc3dsHasConversion(format.text, at, "%d")) {
        static_assert(std::is_same_v<First, int32_t>);
        return Mc3dsPutFormat<format, at + 2>(writer, Mc3dsPutInteger(out, first), rest...);
    } else if constexpr (Mc3dsHasConversion(format.text, at, "%f")) {
        static_assert(std::is_floating_point_v<First>);
        return Mc3dsPutFormat<format, at + 2>(writer, Mc3dsPutFixed(out, first), rest...);
    } else if constexpr (Mc3dsHasConversion(format.text, at, "%10.6f")) {
        static_assert(std::is_floating_point_v<First>);
        return Mc3dsPutFormat<format, at + 6>(writer, Mc3dsPutFixedWide(out, first), rest...);
    } else {
        static_assert(Mc3dsHasConversion(format.text, at, "%s") && std::is_same_v<First, const char *>);
        // Texts of the host have no length limit, so they may need more than one block.
        writer->textLength = static_cast<size_t>(out - writer->text);
        Mc3dsWriteText(writer, first, std::strlen(first));
        return Mc3dsPutFormat<format, at + 2>(writer, Mc3dsReserveText(writer), rest...);
    }
}

// Prints into the writer's text, as fprintf does in the "C" locale.
template <Mc3dsFormat format, class... Arguments>
inline void Mc3dsPrint(Mc3dsWriter *writer, Arguments... arguments)
{
    static_assert(sizeof format.text + sizeof...(arguments) * Mc3dsFixedTextMax <= Mc3dsTextSlack);
    char *out = Mc3dsPutFormat<format, 0>(writer, Mc3dsReserveText(writer), arguments...);
    writer->textLength = static_cast<size_t>(out - writer->text);
}

#endif
