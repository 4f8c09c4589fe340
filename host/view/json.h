// JSON text, one way for all that the program writes.
#ifndef MC3DS_HOST_JSON_H
#define MC3DS_HOST_JSON_H

#include <string>

#include <nlohmann/json.hpp>

using Json = nlohmann::ordered_json;

// On one line without blanks where indent is 0, else each item on a line of its own, indented by so many
// blanks for each level. A text that isn't UTF-8 becomes one character for each byte, U+0000 to U+00FF.
// Controls are spelt out, U+007F to U+009F among them. Numbers take the fewest digits that bring the same
// float or double back; null stands for those that aren't finite.
std::string JsonText(const Json &json, size_t indent);

#endif
