#include <algorithm>
#include <charconv>

#include "base.h"

bool StartsWithUtf8(std::string_view text, size_t *length)
{
    static const uint32_t least[] = {0, 0x80, 0x800, 0x10000}; // by the number of bytes after the first
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    uint32_t code = more == 0 ? first : first & (0x3Fu >> more);
    if ((first & 0xC0) == 0x80 || first > 0xF4 || more >= text.size())
        return false;
    for (size_t i = 1; i <= more; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80)
            return false;
        code = code << 6 | (next & 0x3F);
    }
    *length = more + 1;
    return code >= least[more] && code <= 0x10FFFF && code >> 11 != 0x1B; // 0x1B: a UTF-16 surrogate
}

bool IsControl(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character[0]);
    return first < 0x20 || first == 0x7F ||
           (first == 0xC2 && character.size() > 1 && static_cast<unsigned char>(character[1]) < 0xA0);
}

std::string Visible(std::string_view text, bool keepTabs)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string shown;
    for (size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        const bool isUtf8 = StartsWithUtf8(text, &length);
        if (!isUtf8)
            length = 1;
        const bool isKept = isUtf8 && (!IsControl(text.substr(0, length)) || (keepTabs && text[0] == '\t'));
        for (const char c : text.substr(0, length)) {
            const auto byte = static_cast<unsigned char>(c);
            if (isKept)
                shown += c;
            else
                shown += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return shown;
}

std::string Tail(const std::string &text, size_t most)
{
    if (text.size() <= most)
        return text;
    size_t cut = text.size() - (most < 3 ? 0 : most - 3); // unnoticed
    while (cut < text.size() && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        ++cut;
    return "..." + text.substr(cut);
}

bool IsIdentifierByte(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool IsIdentifierPart(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), IsIdentifierByte);
}

std::string InQuotes(const std::string &text)
{
    return '"' + text + '"';
}

std::string InLowerCase(std::string text)
{
    for (char &c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return text;
}

std::string Counted(uint64_t count, const char *what, const char *plural)
{
    const std::string many = plural ? plural : std::string(what) + 's';
    return std::to_string(count) + ' ' + (count == 1 ? what : many);
}

std::string NumberText(double value)
{
    char digits[40];
    // Adding 0.0 turns -0 into 0.
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value + 0.0, std::chars_format::general, 6).ptr;
    return std::string(digits, end);
}
