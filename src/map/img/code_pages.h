#pragma once
// Conversion of 8-bit and multi-byte label text to UTF-16, for the code pages that IMG maps
// name in their LBL header. Never fails: bytes it cannot convert become U+FFFD, and a code
// page it does not know is read as Latin-1 (byte value = code point).
#include <cstdint>
#include <span>

#include "map/format/map_file.h"

namespace orvel {

inline constexpr uint16_t kCodePageDefault = 0;  // the system's default, for us 1252
inline constexpr uint16_t kCodePageUtf8 = 65001;
inline constexpr char16_t kReplacementChar = u'\uFFFD';

// Converts `text` in `codePage` to UTF-16, writing at most out.size() characters (a pair of
// surrogates is written whole or not at all). No terminating zero. Returns the count.
int decodeCodePage(Bytes text, uint16_t codePage, std::span<char16_t> out);

// True for the single-byte code pages converted by tables of our own.
bool hasCodePageTable(uint16_t codePage);

}  // namespace orvel
