#include <cstring>

#include "frame.h"
#include "number_text.h"

void Mc3dsLowerCase(char *text)
{
    for (; *text != '\0' && (static_cast<unsigned char>(*text) & 0x80) == 0; ++text)
        if (*text >= 'A' && *text <= 'Z')
            *text = static_cast<char>(*text + 0x20);
}

// Converts one argument. Returns out with its text, or for %s the argument itself.
static const char *Convert(char conversion, int precision, va_list *arguments, char *out, size_t *length)
{
    char *end = out;
    switch (conversion) {
    case 's': {
        const char *text = va_arg(*arguments, const char *);
        *length = std::strlen(text);
        return text;
    }
    case 'd': end = Mc3dsPutInteger(out, va_arg(*arguments, int)); break;
    case 'x': end = Mc3dsPutHexadecimal(out, va_arg(*arguments, unsigned)); break;
    case 'f': end = Mc3dsPutFixed(out, va_arg(*arguments, double), precision < 0 ? 6 : precision); break;
    default: break;
    }
    *length = static_cast<size_t>(end - out);
    return out;
}

size_t Mc3dsFormatTextV(char *buffer, size_t size, const char *format, va_list arguments)
{
    va_list rest; // a va_list parameter may decay to a pointer, whose address is no va_list *
    va_copy(rest, arguments);
    size_t used = 0;
    while (*format != '\0') {
        char number[Mc3dsFixedTextMax];
        const char *piece = format;
        size_t length = 0;
        while (format[length] != '\0' && format[length] != '%')
            ++length;
        format += length;
        if (length == 0) {
            int precision = -1;
            if (*++format == '.') {
                precision = format[1] - '0';
                format += 2;
            }
            piece = Convert(*format++, precision, &rest, number, &length);
        }
        const size_t room = size - 1 - used;
        const size_t kept = length < room ? length : room;
        std::memcpy(buffer + used, piece, kept);
        used += kept;
    }
    buffer[used] = '\0';
    va_end(rest);
    return used;
}

size_t Mc3dsFormatText(char *buffer, size_t size, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const size_t length = Mc3dsFormatTextV(buffer, size, format, arguments);
    va_end(arguments);
    return length;
}
