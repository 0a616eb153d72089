#pragma once
// Conversions between the UTF-8 kept in files and the UTF-16 text the program works in.
#include <optional>
#include <string>
#include <string_view>

namespace orvel {

// Strict decoding: overlong forms, surrogate code points, values above U+10FFFF and
// truncated sequences make the whole text invalid (no result).
std::optional<std::u16string> utf8ToUtf16(std::string_view bytes);

bool isValidUtf8(std::string_view bytes);

// Unpaired surrogates cannot be written as UTF-8 and become U+FFFD.
std::string utf16ToUtf8(std::u16string_view text);

}  // namespace orvel
