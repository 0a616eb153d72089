#pragma once
// UTF-8 to UTF-16 for labels of maps whose code page is 65001.
#include <span>

#include "map/format/map_file.h"

namespace orvel {

// Decodes `text`, writing at most out.size() characters; a character outside the basic plane
// needs two and is left out (and decoding ends) when only one is left. Each maximal
// ill-formed part (a stray continuation byte, an overlong form, a surrogate, a value above
// U+10FFFF, a sequence cut short by the end of `text`) becomes one U+FFFD. Returns the count.
int decodeUtf8(Bytes text, std::span<char16_t> out);

}  // namespace orvel
