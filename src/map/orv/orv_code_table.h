#pragma once
// The fast form of one prefix-code table of an .orv map: 256 entries indexed by the next 8
// input bits (least significant bit first), each giving the bits to consume and the symbol,
// or a child table of the same form for codes longer than 8 bits.
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "map/orv/orv_bit_reader.h"

namespace orvel {

class OrvLookupTable {
 public:
  // Child tables one map may make, all its tables together: 4 MiB of them. A small country
  // converted from IMG needs about a hundred; a damaged table can ask for one per byte.
  static constexpr size_t kMaxChildTables = 4095;

  // Builds the table from the code table at `pos` of `file` and returns the position just
  // after it. Codes that run past the end of the file are left out, and the position
  // returned is then the file's size. `childBudget` is what the map's tables may still
  // make; it is reduced by what this one makes, and codes that would need more are left out.
  size_t build(std::span<const uint8_t> file, size_t pos, size_t& childBudget);

  // Decodes one symbol; 0 without consuming anything when the table is absent.
  uint16_t decode(OrvBitReader& reader) const {
    if (nodes_.empty()) return 0;
    size_t p = reader.pos();
    const Entry* entry = &nodes_[0][reader.peek8(p)];
    while (entry->child() != kNoChild) {
      ++p;
      entry = &nodes_[entry->child()][reader.peek8(p)];
    }
    unsigned bit = reader.bit() + entry->bits();
    if (bit >= 8) {
      ++p;
      bit -= 8;
    }
    reader.setPosition(p, bit);
    return entry->symbol;
  }

  bool present() const { return !nodes_.empty(); }
  uint16_t largestSymbol() const { return largest_; }
  size_t codeCount() const { return codes_; }

 private:
  // The root is never a child, so 0 marks an entry without one, and a new table is all
  // zeros: made by clearing memory, not entry by entry.
  static constexpr unsigned kNoChild = 0;
  // Four bytes, so that a table is 1 KiB: the symbol, and the bits to consume (0 to 8) in the
  // low 4 bits of `link` with the child table above them.
  struct Entry {
    uint16_t symbol;
    uint16_t link;
    unsigned bits() const { return link & 15u; }
    unsigned child() const { return link >> 4; }
    void setBits(unsigned bits) { link = static_cast<uint16_t>((link & ~15u) | bits); }
    void setChild(size_t child) { link = static_cast<uint16_t>(child << 4 | bits()); }
  };
  using Node = std::array<Entry, 256>;

  std::vector<Node> nodes_;  // [0] is the root
  uint16_t largest_ = 0;
  size_t codes_ = 0;
};

}  // namespace orvel
