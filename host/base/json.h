// JSON text in the form of all JSON output of the program.
#ifndef MC3DS_HOST_JSON_H
#define MC3DS_HOST_JSON_H

#include <string>

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

// indent 0: one line without blanks; else a line for each item, indented by that many blanks per level. In
// text that isn't UTF-8 each byte becomes a character, U+0000 to U+00FF. Control characters are escaped,
// including U+007F to U+009F. Numbers have the fewest digits that give the same float or double; those that
// aren't finite become null.
std::string JsonText(const Json &json, size_t indent);

#endif
