#include "map/orv/convert/orv_prefix_code.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <unordered_map>

#include "map/orv/convert/orv_writer.h"
#include "map/orv/orv_format.h"

namespace orvel {
namespace {

constexpr uint32_t kMaxFileSize = kOrvDataOffsetMask;  // object data offsets have 24 bits
constexpr size_t kMaxBlocksPerLevel = 0xFFFF;

void putU32(std::vector<uint8_t>& out, size_t at, uint32_t v) {
  for (int i = 0; i < 4; ++i) out[at + static_cast<size_t>(i)] = static_cast<uint8_t>(v >> (8 * i));
}
void appendU32(std::vector<uint8_t>& out, uint32_t v) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}
void appendU16(std::vector<uint8_t>& out, uint32_t v) {
  out.push_back(static_cast<uint8_t>(v));
  out.push_back(static_cast<uint8_t>(v >> 8));
}

bool isSetA(const std::u16string& text) {
  return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x80; });
}

// Calls f(object, section) for every object of the map in file order.
template <typename F>
void forEachObject(const OrvMapIn& map, F&& f) {
  for (const OrvLevelIn& level : map.levels) {
    for (const OrvBlockIn& block : level.blocks) {
      for (const OrvObjectIn& o : block.areas) f(o, 0);
      for (const OrvObjectIn& o : block.lines) f(o, 1);
      for (const OrvObjectIn& o : block.points) f(o, 2);
    }
  }
}

struct Box {
  int64_t west = INT64_MAX, south = INT64_MAX, east = INT64_MIN, north = INT64_MIN;
  void add(const MapPoint& p) {
    west = std::min<int64_t>(west, p.x);
    east = std::max<int64_t>(east, p.x);
    south = std::min<int64_t>(south, p.y);
    north = std::max<int64_t>(north, p.y);
  }
};

class Writer {
 public:
  Writer(const OrvMapIn& map, std::string& error) : map_(map), error_(error) {}

  bool write(std::vector<uint8_t>& out, const OrvProgress& progress);

 private:
  bool countSymbols();
  void countLabel(const std::u16string& text);
  bool encodeLabel(OrvBitWriter& out, const std::u16string& text, bool withSelector);
  bool encodeObject(OrvBitWriter& out, const OrvObjectIn& object, int section, const MapPoint& origin,
                    unsigned xBits, unsigned yBits);
  bool fail(std::string reason) {
    error_ = std::move(reason);
    return false;
  }

  const OrvMapIn& map_;
  std::string& error_;
  std::unordered_map<std::u16string, uint32_t> uses_;         // label text -> objects using it
  std::unordered_map<std::u16string, uint32_t> sharedIndex_;  // shared label -> byte index
  std::array<SymbolCounts, kOrvTableCount> counts_;
  std::array<OrvCodeBook, kOrvTableCount> books_;
  int32_t biasX_ = 0;
  int32_t biasY_ = 0;
  uint32_t sharedIndexBits_ = 0;
};

void Writer::countLabel(const std::u16string& text) {
  const bool a = isSetA(text);
  ++counts_[a ? kTableLengthsA : kTableLengthsB][static_cast<uint16_t>(text.size())];
  for (char16_t c : text) ++counts_[a ? kTableCharsA : kTableCharsB][c];
}

bool Writer::countSymbols() {
  // Labels: which are shared, and the symbols of each label as often as it is written.
  forEachObject(map_, [&](const OrvObjectIn& o, int) {
    const std::u16string text = orvLabelText(o.label);
    if (!text.empty()) ++uses_[text];
  });
  std::vector<const std::u16string*> shared;
  forEachObject(map_, [&](const OrvObjectIn& o, int) {
    const std::u16string text = orvLabelText(o.label);
    if (text.empty()) return;
    const uint32_t uses = uses_[text];
    if (uses == 1) {
      countLabel(text);
    } else if (uses > 1) {
      countLabel(text);
      uses_[text] = 0;  // counted once; 0 marks it as shared and counted
    }
  });

  int64_t minX = 0, maxX = 0, minY = 0, maxY = 0;
  bool anyDelta = false;
  bool ok = true;
  forEachObject(map_, [&](const OrvObjectIn& o, int section) {
    if (!ok) return;
    if (o.points.empty()) {
      ok = fail("an object without points");
      return;
    }
    ++counts_[section == 0 ? kTableAreaTypes : section == 1 ? kTableLineTypes : kTablePointTypes][o.type];
    if (section == 2) return;
    if (o.points.size() > 65536) {
      ok = fail("an object with more than 65536 points");
      return;
    }
    ++counts_[kTablePointCount][static_cast<uint16_t>(o.points.size() - 1)];
    for (size_t i = 1; i < o.points.size(); ++i) {
      const int64_t dx = int64_t{o.points[i].x} - o.points[i - 1].x;
      const int64_t dy = int64_t{o.points[i].y} - o.points[i - 1].y;
      if (!anyDelta) {
        minX = maxX = dx;
        minY = maxY = dy;
        anyDelta = true;
      }
      minX = std::min(minX, dx);
      maxX = std::max(maxX, dx);
      minY = std::min(minY, dy);
      maxY = std::max(maxY, dy);
    }
  });
  if (!ok) return false;
  if (maxX - minX > 0xFFFF || maxY - minY > 0xFFFF) {
    return fail("the steps between points span more than 16 bits at some level");
  }
  // A delta is stored as delta + bias, so the smallest one becomes symbol 0.
  biasX_ = static_cast<int32_t>(-minX);
  biasY_ = static_cast<int32_t>(-minY);
  forEachObject(map_, [&](const OrvObjectIn& o, int section) {
    if (section == 2) return;
    for (size_t i = 1; i < o.points.size(); ++i) {
      ++counts_[kTableDeltaX][static_cast<uint16_t>(int64_t{o.points[i].x} - o.points[i - 1].x + biasX_)];
      ++counts_[kTableDeltaY][static_cast<uint16_t>(int64_t{o.points[i].y} - o.points[i - 1].y + biasY_)];
    }
  });
  return true;
}

bool Writer::encodeLabel(OrvBitWriter& out, const std::u16string& text, bool withSelector) {
  const bool a = isSetA(text);
  if (withSelector) out.put(a ? kLabelInlineA : kLabelInlineB, 2);
  bool ok = books_[a ? kTableLengthsA : kTableLengthsB].put(out, static_cast<uint16_t>(text.size()));
  for (char16_t c : text) ok = books_[a ? kTableCharsA : kTableCharsB].put(out, c) && ok;
  return ok;
}

bool Writer::encodeObject(OrvBitWriter& out, const OrvObjectIn& object, int section, const MapPoint& origin,
                          unsigned xBits, unsigned yBits) {
  const std::u16string text = orvLabelText(object.label);
  bool ok = true;
  if (text.empty()) {
    out.put(kLabelNone, 2);
  } else if (const auto shared = sharedIndex_.find(text); shared != sharedIndex_.end()) {
    out.put(kLabelShared, 2);
    out.put(shared->second, sharedIndexBits_);
  } else {
    ok = encodeLabel(out, text, true);
  }
  const OrvTable types = section == 0 ? kTableAreaTypes : section == 1 ? kTableLineTypes : kTablePointTypes;
  ok = books_[types].put(out, object.type) && ok;
  out.put(static_cast<uint32_t>(object.points[0].x - origin.x), xBits);
  out.put(static_cast<uint32_t>(object.points[0].y - origin.y), yBits);
  if (section != 2) {
    ok = books_[kTablePointCount].put(out, static_cast<uint16_t>(object.points.size() - 1)) && ok;
    for (size_t i = 1; i < object.points.size(); ++i) {
      const int64_t dx = int64_t{object.points[i].x} - object.points[i - 1].x + biasX_;
      const int64_t dy = int64_t{object.points[i].y} - object.points[i - 1].y + biasY_;
      ok = books_[kTableDeltaX].put(out, static_cast<uint16_t>(dx)) && ok;
      ok = books_[kTableDeltaY].put(out, static_cast<uint16_t>(dy)) && ok;
    }
    if (section == 1) out.putBit(0);
  }
  out.align();
  return ok;
}

unsigned lengthBytes(size_t length) { return length == 0 ? 0 : length < 0x100 ? 1 : length < 0x10000 ? 2 : 3; }

bool Writer::write(std::vector<uint8_t>& out, const OrvProgress& progress) {
  for (const OrvLevelIn& level : map_.levels) {
    if (level.blocks.size() > kMaxBlocksPerLevel) return fail("a level with more than 65535 blocks");
    if (level.bits < 1 || level.bits > 24) return fail("a level resolution outside 1 to 24 bits");
  }
  if (!countSymbols()) return false;
  for (int t = 0; t < kOrvTableCount; ++t) {
    if (counts_[static_cast<size_t>(t)].size() > 0xFFFF) return fail("more than 65535 symbols in one code table");
    books_[static_cast<size_t>(t)] = OrvCodeBook(buildPrefixCode(counts_[static_cast<size_t>(t)]));
  }
  if (progress) progress("code tables built");

  // Shared labels, in the order of their first use.
  OrvBitWriter sharedArea;
  bool ok = true;
  forEachObject(map_, [&](const OrvObjectIn& o, int) {
    const std::u16string text = orvLabelText(o.label);
    if (text.empty() || uses_[text] != 0 || sharedIndex_.count(text)) return;
    sharedIndex_[text] = static_cast<uint32_t>(sharedArea.size());
    ok = encodeLabel(sharedArea, text, true) && ok;
    sharedArea.align();
  });
  uint32_t largestIndex = 0;
  for (const auto& entry : sharedIndex_) largestIndex = std::max(largestIndex, entry.second);
  sharedIndexBits_ = bitWidth(largestIndex);

  // Object data and block headers.
  struct BlockOut {
    uint32_t x, y, w, h;
    std::array<size_t, 3> lengths;
    size_t dataStart;  // within objectData
  };
  std::vector<std::vector<BlockOut>> blocks(map_.levels.size());
  std::vector<uint8_t> objectData;
  for (size_t l = 0; l < map_.levels.size(); ++l) {
    for (const OrvBlockIn& block : map_.levels[l].blocks) {
      Box box;
      for (const auto* section : {&block.areas, &block.lines, &block.points}) {
        for (const OrvObjectIn& o : *section) {
          for (const MapPoint& p : o.points) box.add(p);
        }
      }
      BlockOut b{};
      if (box.west <= box.east) {
        b.x = static_cast<uint32_t>(box.west);
        b.y = static_cast<uint32_t>(box.south);
        b.w = static_cast<uint32_t>(std::min<int64_t>(box.east - box.west, 0xFFFF));
        b.h = static_cast<uint32_t>(std::min<int64_t>(box.north - box.south, 0xFFFF));
      }
      const MapPoint origin{static_cast<int32_t>(b.x), static_cast<int32_t>(b.y)};
      const unsigned xBits = bitWidth(b.w), yBits = bitWidth(b.h);
      b.dataStart = objectData.size();
      int section = 0;
      for (const auto* objects : {&block.areas, &block.lines, &block.points}) {
        OrvBitWriter data;
        for (const OrvObjectIn& o : *objects) {
          if (int64_t{o.points[0].x} - origin.x > 0xFFFF || int64_t{o.points[0].y} - origin.y > 0xFFFF) {
            return fail("an object too large for one block");
          }
          ok = encodeObject(data, o, section, origin, xBits, yBits) && ok;
        }
        b.lengths[static_cast<size_t>(section)] = data.size();
        if (data.size() > kOrvDataOffsetMask) return fail("a block section of 16 MiB or more");
        objectData.insert(objectData.end(), data.bytes().begin(), data.bytes().end());
        ++section;
      }
      blocks[l].push_back(b);
    }
    if (progress) progress("level " + std::to_string(l) + ": " + std::to_string(blocks[l].size()) + " blocks");
  }
  if (!ok) return fail("a symbol without a code");

  // Layout.
  out.assign(kOrvHeaderSize, 0);
  const size_t codeTables = out.size();
  for (const OrvCodeBook& book : books_) appendCodeTable(out, book.codes());
  const size_t sharedStart = out.size();
  out.insert(out.end(), sharedArea.bytes().begin(), sharedArea.bytes().end());
  const size_t levelTable = out.size();
  size_t headerBytes = 0;
  for (const auto& level : blocks) {
    for (const BlockOut& b : level) {
      headerBytes += kOrvBlockHeaderSize + lengthBytes(b.lengths[0]) + lengthBytes(b.lengths[1]) +
                     lengthBytes(b.lengths[2]);
    }
  }
  const size_t blockHeaders = levelTable + kOrvLevelEntrySize * blocks.size();
  const size_t dataStart = blockHeaders + headerBytes;
  const size_t total = dataStart + objectData.size();
  if (total > kMaxFileSize) return fail("the map would take 16 MiB or more");

  size_t blockAt = blockHeaders;
  for (size_t l = 0; l < blocks.size(); ++l) {
    appendU32(out, static_cast<uint32_t>(blockAt));
    appendU16(out, static_cast<uint32_t>(blocks[l].size()));
    appendU16(out, map_.levels[l].bits);
    for (const BlockOut& b : blocks[l]) {
      blockAt += kOrvBlockHeaderSize + lengthBytes(b.lengths[0]) + lengthBytes(b.lengths[1]) +
                 lengthBytes(b.lengths[2]);
    }
  }
  for (const auto& level : blocks) {
    for (const BlockOut& b : level) {
      appendU32(out, b.x);
      appendU32(out, b.y);
      appendU16(out, b.w);
      appendU16(out, b.h);
      uint32_t word = static_cast<uint32_t>(dataStart + b.dataStart);
      for (size_t i = 0; i < 3; ++i) word |= lengthBytes(b.lengths[i]) << (24 + 2 * i);
      appendU32(out, word);
      for (size_t i = 0; i < 3; ++i) {
        for (unsigned k = 0; k < lengthBytes(b.lengths[i]); ++k) out.push_back(static_cast<uint8_t>(b.lengths[i] >> (8 * k)));
      }
    }
  }
  out.insert(out.end(), objectData.begin(), objectData.end());

  std::memcpy(out.data(), "GORV", 4);
  putU32(out, kOrvVersionAt, kOrvVersion);
  putU32(out, kOrvFileSizeAt, static_cast<uint32_t>(out.size()));
  const MapRect& b = map_.bounds;
  putU32(out, kOrvBoundsAt, static_cast<uint32_t>(b.west) << 8);
  putU32(out, kOrvBoundsAt + 4, static_cast<uint32_t>(b.south) << 8);
  putU32(out, kOrvBoundsAt + 8, static_cast<uint32_t>(b.east) << 8);
  putU32(out, kOrvBoundsAt + 12, static_cast<uint32_t>(b.north) << 8);
  putU32(out, kOrvCodeTablesAt, static_cast<uint32_t>(codeTables));
  putU32(out, kOrvSharedLabelsAt, static_cast<uint32_t>(sharedStart));
  putU32(out, kOrvSharedIndexBitsAt, sharedIndexBits_);
  putU32(out, kOrvLevelTableAt, static_cast<uint32_t>(levelTable));
  putU32(out, kOrvLevelCountAt, static_cast<uint32_t>(blocks.size()));
  putU32(out, kOrvBiasXAt, static_cast<uint32_t>(biasX_));
  putU32(out, kOrvBiasYAt, static_cast<uint32_t>(biasY_));
  if (progress) progress(std::to_string(out.size()) + " bytes");
  return true;
}

}  // namespace

std::u16string orvLabelText(std::u16string_view text) {
  std::u16string kept;
  for (char16_t c : text) {
    if (c >= 32 && kept.size() < static_cast<size_t>(kOrvLabelMax)) kept.push_back(c);
  }
  return kept;
}

bool writeOrv(const OrvMapIn& map, std::vector<uint8_t>& out, std::string& error, const OrvProgress& progress) {
  out.clear();
  Writer writer(map, error);
  if (writer.write(out, progress)) return true;
  out.clear();
  return false;
}

}  // namespace orvel
