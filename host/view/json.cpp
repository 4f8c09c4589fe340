#include "json.h"

#include <charconv>
#include <cmath>

#include "../base/base.h"

static bool IsUtf8(std::string_view text)
{
    for (size_t length = 0; !text.empty(); text.remove_prefix(length))
        if (!StartsWithUtf8(text, &length))
            return false;
    return true;
}

static void AddText(std::string_view text, std::string *json)
{
    const bool isUtf8 = IsUtf8(text);
    *json += '"';
    for (const char c : text) {
        constexpr char digits[] = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F || (byte > 0x7F && !isUtf8))
            *json += {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]};
        else if (c == '"' || c == '\\')
            *json += {'\\', c};
        else
            *json += c;
    }
    *json += '"';
}

static void AddNumber(double number, std::string *json)
{
    char digits[40], *end = digits;
    if (!std::isfinite(number)) { // JSON has no word for it
        *json += "null";
        return;
    }
    if (const auto single = static_cast<float>(number); static_cast<double>(single) == number)
        end = std::to_chars(digits, digits + sizeof digits, single).ptr;
    else
        end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    json->append(digits, end);
}

static void Add(const Json &value, size_t indent, size_t depth, std::string *json)
{
    if (value.is_string())
        return AddText(value.get_ref<const std::string &>(), json);
    if (value.is_number_float())
        return AddNumber(value, json);
    if (!value.is_structured()) {
        *json += value.dump();
        return;
    }
    const auto newLine = [&](size_t level) {
        *json += indent ? '\n' + std::string(level * indent, ' ') : "";
    };
    const bool isObject = value.is_object();
    *json += isObject ? '{' : '[';
    bool isFirst = true;
    for (const auto &[key, item] : value.items()) {
        *json += isFirst ? "" : ",";
        isFirst = false;
        newLine(depth + 1);
        if (isObject) {
            AddText(key, json);
            *json += indent ? ": " : ":";
        }
        Add(item, indent, depth + 1, json);
    }
    if (!isFirst)
        newLine(depth);
    *json += isObject ? '}' : ']';
}

std::string JsonText(const Json &json, size_t indent)
{
    std::string text;
    Add(json, indent, 0, &text);
    return text + '\n';
}
