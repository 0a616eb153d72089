#pragma once
// Decoding of IMG labels from the label data of the LBL subfile into UTF-16 text.
#include <cstdint>

#include "map/format/map_file.h"

namespace orvel {

// How the label data are written, from the LBL header's coding byte: coding 6 (six-bit
// packed characters), coding 9 (8-bit text in the header's code page) and coding 10
// (decoded like coding 9; the code page, usually 65001, makes it multi-byte text).
enum class LabelSchema : uint8_t { SixBit = 0, Byte = 1, Coding10 = 2 };

// At most this many characters come out of one six-bit label, and at most this many bytes
// of one byte-string label are converted.
inline constexpr int kSixBitLabelMax = 128;
inline constexpr int kByteLabelMax = 250;

// Decodes the label starting at `byteOffset` in `labelData` into out[kLabelCapacity + 1],
// zero-terminated; returns the number of characters. Reads nothing outside `labelData`: an
// offset at or past its end gives an empty label, and a label running into its end stops
// there.
int decodeLabel(Bytes labelData, uint32_t byteOffset, LabelSchema schema, uint16_t codePage, char16_t* out);

// The byte offset of label reference `reference` in the label data: reference << shift,
// where shift is the LBL header's offset multiplier. Saturates at 0xFFFFFFFF (past the end
// of any label data) instead of wrapping.
uint32_t labelByteOffset(uint32_t reference, uint8_t shift);

}  // namespace orvel
