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
    for (size_t length = 1; !text.empty(); text.remove_prefix(length)) {
        constexpr char digits[] = "0123456789abcdef";
        if (isUtf8)
            StartsWithUtf8(text, &length);
        const auto last = static_cast<unsigned char>(text[length - 1]); // for a control, also its code
        if (IsControl(text.substr(0, length)) || (!isUtf8 && last > 0x7F))
            *json += {'\\', 'u', '0', '0', digits[last >> 4], digits[last & 15]};
        else if (last == '"' || last == '\\')
            *json += {'\\', text[0]};
        else
            *json += text.substr(0, length);
    }
    *json += '"';
}

static void AddNumber(double number, std::string *json)
{
    char digits[40], *end = digits;
    if (!std::isfinite(number)) { // JSON has neither NaN nor infinity
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
