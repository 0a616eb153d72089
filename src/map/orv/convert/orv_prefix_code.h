#pragma once
// Prefix codes for the writer: Huffman code lengths from symbol frequencies, limited in
// length, as canonical codes stored least significant bit first (the first bit of the code
// in bit 0), which is how the reader's lookup tables take them.
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include "map/orv/convert/orv_bit_writer.h"

namespace orvel {

// Longest code the writer makes. The format allows 255 bits, but every 8 bits beyond the
// first 8 cost the reader a child table and a lookup step.
inline constexpr unsigned kMaxWrittenCodeLength = 24;

struct OrvCode {
  uint16_t symbol = 0;
  uint8_t length = 0;  // bits; 0 for the only symbol of a table
  uint32_t bits = 0;   // first bit of the code in bit 0
};

using SymbolCounts = std::map<uint16_t, uint64_t>;

// One code per symbol counted (symbols counted 0 times get none), ordered by symbol.
// A single symbol gets the empty code; no symbols give no codes.
std::vector<OrvCode> buildPrefixCode(const SymbolCounts& counts, unsigned maxLength = kMaxWrittenCodeLength);

// Symbol -> code, for encoding.
class OrvCodeBook {
 public:
  OrvCodeBook() = default;
  explicit OrvCodeBook(const std::vector<OrvCode>& codes);
  // False when the symbol has no code.
  bool put(OrvBitWriter& out, uint16_t symbol) const;
  const std::vector<OrvCode>& codes() const { return codes_; }

 private:
  std::vector<OrvCode> codes_;
  std::unordered_map<uint16_t, OrvCode> bySymbol_;
};

// The code table as stored in the file: count, then symbol, length and code bytes per code.
void appendCodeTable(std::vector<uint8_t>& out, const std::vector<OrvCode>& codes);

}  // namespace orvel
