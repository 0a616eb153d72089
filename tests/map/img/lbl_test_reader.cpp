#include "lbl_test_reader.h"

#include <cstring>

namespace orvel::test {

namespace {

constexpr size_t kDirectoryStart = 0x600;
constexpr size_t kEntrySize = 512;

bool fits(Bytes bytes, size_t offset, size_t width) {
  return offset <= bytes.size() && width <= bytes.size() - offset;
}
uint16_t u16(Bytes b, size_t at) { return static_cast<uint16_t>(b[at] | b[at + 1] << 8); }
uint32_t u32(Bytes b, size_t at) { return u16(b, at) | static_cast<uint32_t>(u16(b, at + 2)) << 16; }

uint32_t alignUp(uint64_t offset, uint8_t shift) {
  const uint64_t step = uint64_t{1} << shift;
  const uint64_t aligned = (offset + step - 1) / step * step;
  return aligned > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(aligned);
}

}  // namespace

std::optional<LblLabels> readLblLabels(Bytes img) {
  if (!fits(img, 0x61, 2) || img[0x61] + img[0x62] >= 32) return std::nullopt;
  const uint64_t blockSize = uint64_t{1} << (img[0x61] + img[0x62]);
  for (size_t entry = kDirectoryStart; fits(img, entry, kEntrySize); entry += kEntrySize) {
    const bool firstPartInUse = img[entry] == 1 && img[entry + 0x11] == 0;
    if (!firstPartInUse || std::memcmp(&img[entry + 0x09], "LBL", 3) != 0) continue;
    const uint64_t lbl = u16(img, entry + 0x20) * blockSize;
    if (!fits(img, lbl, 0x1F)) return std::nullopt;
    const uint16_t headerLength = u16(img, lbl);
    const uint64_t dataStart = lbl + u32(img, lbl + 0x15);
    const uint32_t dataLength = u32(img, lbl + 0x19);
    if (!fits(img, dataStart, dataLength)) return std::nullopt;

    LblLabels result;
    result.labelData = img.subspan(dataStart, dataLength);
    result.shift = img[lbl + 0x1D];
    result.coding = img[lbl + 0x1E];
    if (headerLength >= 172 && fits(img, lbl + 0xAA, 2)) result.codePage = u16(img, lbl + 0xAA);
    result.schema = result.coding == 6   ? LabelSchema::SixBit
                    : result.coding == 9 ? LabelSchema::Byte
                                         : LabelSchema::Coding10;
    return result;
  }
  return std::nullopt;
}

// Codes are packed from the first byte on; the label ends with a code above 47 (all ones
// when written, but only its two top bits need to lie in the label: they already make it
// at least 48). The end code with index k starts at bit 6k, so the label takes bytes up to
// and including byte 6k / 8.
size_t sixBitLabelSize(Bytes label) {
  const size_t codes = label.size() * 8 / 6;
  for (size_t k = 0; k < codes; ++k) {
    const size_t bit = 6 * k;
    const unsigned window =
        (static_cast<unsigned>(label[bit / 8]) << 8) | (bit / 8 + 1 < label.size() ? label[bit / 8 + 1] : 0u);
    const unsigned code = (window >> (10 - bit % 8)) & 63;
    if (code > 47) return bit / 8 + 1;
  }
  return label.size();
}

std::vector<uint32_t> labelOffsets(const LblLabels& lbl) {
  std::vector<uint32_t> offsets;
  if (lbl.shift >= 32) return offsets;
  const Bytes data = lbl.labelData;
  for (uint32_t offset = alignUp(1, lbl.shift); offset < data.size();) {
    offsets.push_back(offset);
    const Bytes label = data.subspan(offset);
    size_t size = 0;
    if (lbl.schema == LabelSchema::SixBit) {
      size = sixBitLabelSize(label);
    } else {
      while (size < label.size() && label[size] != 0) ++size;
      ++size;  // the terminating zero
    }
    offset = alignUp(uint64_t{offset} + size, lbl.shift);
  }
  return offsets;
}

std::vector<std::u16string> decodeAllLabels(const LblLabels& lbl) {
  std::vector<std::u16string> labels;
  char16_t text[kLabelCapacity + 1];
  for (const uint32_t offset : labelOffsets(lbl)) {
    const int length = decodeLabel(lbl.labelData, offset, lbl.schema, lbl.codePage, text);
    labels.emplace_back(text, static_cast<size_t>(length));
  }
  return labels;
}

}  // namespace orvel::test
