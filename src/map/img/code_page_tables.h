#pragma once
// Tables of the single-byte Windows code pages that maps use: the UTF-16 character of each
// byte 0x80-0xFF (bytes below 0x80 are ASCII in all of them). Positions a code page leaves
// undefined hold the C1 control of the same value (0x80-0x9F), as Windows converts them,
// or U+FFFD.
#include <array>
#include <cstdint>

namespace orvel {

using CodePageTable = std::array<char16_t, 128>;

// The table of a code page (0 = the default, 1252), or nullptr if there is none.
const CodePageTable* codePageTable(uint16_t codePage);

}  // namespace orvel
