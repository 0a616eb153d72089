#pragma once
// Test-only access to the label data of an IMG map's LBL subfile, read straight from the
// container directory, and a walk over every label stored there.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "map/img/label_decoder.h"

namespace orvel::test {

struct LblLabels {
  Bytes labelData;  // a view into the file bytes
  uint8_t shift = 0;
  uint8_t coding = 0;
  uint16_t codePage = 0;
  LabelSchema schema = LabelSchema::SixBit;
};

// The label data and settings of the first LBL subfile of an unscrambled IMG container, or
// nothing when the file holds none or its header does not lie inside the file.
std::optional<LblLabels> readLblLabels(Bytes img);

// The number of bytes of the six-bit label at the start of `label`, its end code included.
size_t sixBitLabelSize(Bytes label);

// Byte offsets of all labels in the label data, in order. Offset 0 (reference 0, "no
// label") is left out; every label starts at a multiple of 1 << shift.
std::vector<uint32_t> labelOffsets(const LblLabels& lbl);

// Every label decoded, in order.
std::vector<std::u16string> decodeAllLabels(const LblLabels& lbl);

}  // namespace orvel::test
