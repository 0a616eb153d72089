#pragma once
// Just enough JSON for gpsd's reports: the members of one object, found by name at the
// object's top level, and the objects of an array. Tolerant of anything it does not need
// (unknown members, nested values, blanks); a malformed text yields nothing rather than a
// guess. Works in place on the text.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvel {

// The text of member `key`'s value in `object` (a string keeps its quotes), if present.
std::optional<std::string_view> jsonValue(std::string_view object, std::string_view key);
std::optional<double> jsonNumber(std::string_view object, std::string_view key);
// A string member with the common escapes resolved (\uXXXX only below 0x80, else "?").
std::optional<std::string> jsonString(std::string_view object, std::string_view key);
std::optional<bool> jsonBool(std::string_view object, std::string_view key);
// The elements of `array` (the text of a JSON array) that are objects.
std::vector<std::string_view> jsonObjects(std::string_view array);

}  // namespace orvel
