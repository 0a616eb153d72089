#pragma once
// The multi-byte East Asian code pages (932, 936, 949, 950), converted by the C library's
// iconv.
#include <cstdint>
#include <span>

#include "map/format/map_file.h"

namespace orvel {

// True if the code page is one of those handled here (whether or not the C library can
// convert it on this system).
bool isIconvCodePage(uint16_t codePage);

// Converts `text`, writing at most out.size() characters; bytes the converter rejects, and
// a character cut short by the end of `text`, become U+FFFD. Returns the count, or -1 when
// the C library has no converter for the code page.
int decodeWithIconv(Bytes text, uint16_t codePage, std::span<char16_t> out);

}  // namespace orvel
