#include "map/orv/orv_code_table.h"

#include <algorithm>

#include "map/format/byte_reader.h"

namespace orvel {

static_assert(OrvLookupTable::kMaxChildTables <= 0xFFFFu >> 4, "a child table's number fits above the bits");

namespace {

// The most child tables the `count` codes at `reader` can ask for: one per code byte after
// its first. Knowing it up front makes the tables in one allocation, where growing them one
// by one would copy them again and again (a damaged table asks for thousands).
size_t childTablesAskedFor(ByteReader reader, uint16_t count, size_t most) {
  size_t asked = 0;
  for (uint32_t k = 0; k < count && asked < most; ++k) {
    uint16_t symbol = 0;
    uint8_t length = 0;
    std::span<const uint8_t> code;
    if (!reader.u16le(symbol) || !reader.u8(length) || !reader.bytes((size_t{length} + 7) / 8, code)) break;
    if (code.size() > 1) asked += code.size() - 1;
  }
  return std::min(asked, most);
}

}  // namespace

size_t OrvLookupTable::build(std::span<const uint8_t> file, size_t pos, size_t& childBudget) {
  nodes_.assign(1, Node{});
  largest_ = 0;
  codes_ = 0;

  ByteReader reader(file, pos);
  uint16_t count = 0;
  if (!reader.u16le(count)) return file.size();
  nodes_.reserve(1 + childTablesAskedFor(reader, count, childBudget));
  for (uint32_t k = 0; k < count; ++k) {
    uint16_t symbol = 0;
    uint8_t length = 0;
    std::span<const uint8_t> code;
    if (!reader.u16le(symbol) || !reader.u8(length) || !reader.bytes((size_t{length} + 7) / 8, code)) {
      return file.size();
    }
    ++codes_;
    if (symbol > largest_) largest_ = symbol;

    if (length == 0) {
      // A lone code of no bits: every input yields it without consuming anything.
      for (Entry& entry : nodes_[0]) {
        entry.symbol = symbol;
        entry.setBits(0);
      }
      continue;
    }
    size_t node = 0;
    unsigned remaining = length;
    bool placed = true;
    for (size_t i = 0; i + 1 < code.size(); ++i) {
      Entry& entry = nodes_[node][code[i]];
      if (entry.child() == kNoChild) {
        if (childBudget == 0) {
          placed = false;
          break;
        }
        --childBudget;
        entry.setChild(nodes_.size());
        nodes_.emplace_back();  // `entry` may dangle from here on
      }
      node = nodes_[node][code[i]].child();
      remaining -= 8;
    }
    // The entries whose low `remaining` bits are the last code byte: every 2^remaining-th
    // from that byte on, and none when the byte has bits above the code's end.
    const uint32_t last = code.back();
    if (!placed || last >> remaining != 0) continue;
    for (uint32_t i = last; i < 256; i += 1u << remaining) {
      Entry& entry = nodes_[node][i];
      entry.symbol = symbol;
      entry.setBits(remaining);
    }
  }
  return reader.pos();
}

}  // namespace orvel
