#pragma once
// Small IMG containers made byte by byte for edge cases the real maps do not have.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orvel::test {

using ByteVector = std::vector<uint8_t>;

inline void putU8(ByteVector& b, size_t at, uint8_t v) {
  if (b.size() < at + 1) b.resize(at + 1);
  b[at] = v;
}
inline void putLe(ByteVector& b, size_t at, uint64_t v, int width) {
  if (b.size() < at + static_cast<size_t>(width)) b.resize(at + static_cast<size_t>(width));
  for (int i = 0; i < width; ++i) b[at + static_cast<size_t>(i)] = static_cast<uint8_t>(v >> (8 * i));
}
inline void putText(ByteVector& b, size_t at, const std::string& s) {
  for (size_t i = 0; i < s.size(); ++i) putU8(b, at + i, static_cast<uint8_t>(s[i]));
}
inline void append(ByteVector& b, const ByteVector& more) { b.insert(b.end(), more.begin(), more.end()); }

// One subdivision record: 16 bytes, or 14 without the child index.
inline ByteVector subdivisionRecord(uint32_t rgnOffset, uint8_t flags, int32_t cx, int32_t cy, uint16_t halfWidth,
                                    uint16_t halfHeight, bool withChild) {
  ByteVector r;
  putLe(r, 0, rgnOffset, 3);
  putU8(r, 3, flags);
  putLe(r, 4, static_cast<uint32_t>(cx), 3);
  putLe(r, 7, static_cast<uint32_t>(cy), 3);
  putLe(r, 10, halfWidth, 2);
  putLe(r, 12, halfHeight, 2);
  if (withChild) putLe(r, 14, 0, 2);
  return r;
}

struct LevelSpec {
  uint8_t bits = 24;
  bool inherited = false;
  uint16_t count = 1;
};

enum BuiltSubfile : int { kBuiltTre = 0, kBuiltRgn = 1, kBuiltLbl = 2, kBuiltNone = -1 };

struct EntrySpec {
  std::string name = "00000001";
  std::string type;          // "TRE", "RGN", ...
  int subfile = kBuiltNone;  // which built subfile it points to, or kBuiltNone for `block`
  uint16_t block = 0;
  uint8_t flag = 1;
  uint8_t partHigh = 0;
};

struct ImgLayout {
  uint8_t e1 = 9;  // block size 512
  uint8_t e2 = 0;
  int32_t north = 1000, east = 2000, south = -1000, west = -2000;
  uint8_t treFlags = 0;
  std::vector<LevelSpec> levels{{24, false, 1}};
  // Subdivision section; by default one 14-byte record covering all RGN data, then 4 bytes.
  ByteVector subdivisions = [] {
    ByteVector s = subdivisionRecord(0, 0x80, 0, 0, 10, 10, false);
    s.resize(s.size() + 4);
    return s;
  }();
  ByteVector rgnData = ByteVector(8, 0);
  uint16_t lblHeaderLength = 0xAC;
  uint8_t labelShift = 1;
  uint8_t labelCoding = 9;
  uint16_t codePage = 1252;
  ByteVector labelData = ByteVector{0, 'A', 'B', 0};
  ByteVector poiProperties;
  std::vector<EntrySpec> entries;  // empty: one entry per built subfile, tile "00000001"
};

struct BuiltImg {
  ByteVector bytes;
  std::array<uint32_t, 3> offsets{};  // TRE, RGN, LBL
  std::array<uint32_t, 3> sizes{};
  uint32_t rgnDataOffset = 0;         // in the file
};

inline void padToBlock(ByteVector& b, size_t block) { b.resize((b.size() + block - 1) / block * block); }

inline BuiltImg buildImg(const ImgLayout& layout) {
  constexpr size_t kBlock = 512;
  std::vector<EntrySpec> entries = layout.entries;
  if (entries.empty()) {
    const char* types[] = {"TRE", "RGN", "LBL"};
    for (int i = 0; i < 3; ++i) entries.push_back({"00000001", types[i], i});
  }
  BuiltImg out;
  ByteVector& b = out.bytes;
  b.assign(0x600 + entries.size() * 512, 0);
  putText(b, 0x10, "DSKIMG");
  putU8(b, 0x61, layout.e1);
  putU8(b, 0x62, layout.e2);
  putLe(b, 0x40C, b.size(), 4);
  padToBlock(b, kBlock);

  // TRE: header, levels, subdivisions.
  out.offsets[kBuiltTre] = static_cast<uint32_t>(b.size());
  {
    ByteVector t(0xBC, 0);
    putLe(t, 0, 0xBC, 2);
    putText(t, 2, "GARMIN TRE");
    putU8(t, 0x0D, layout.treFlags);
    const int32_t bounds[] = {layout.north, layout.east, layout.south, layout.west};
    for (size_t i = 0; i < 4; ++i) putLe(t, 0x15 + 3 * i, static_cast<uint32_t>(bounds[i]), 3);
    putLe(t, 0x21, 0xBC, 4);
    putLe(t, 0x25, layout.levels.size() * 4, 4);
    putLe(t, 0x29, 0xBC + layout.levels.size() * 4, 4);
    putLe(t, 0x2D, layout.subdivisions.size(), 4);
    for (const LevelSpec& level : layout.levels) {
      t.insert(t.end(), {static_cast<uint8_t>(level.inherited ? 0x80 : 0), level.bits,
                         static_cast<uint8_t>(level.count), static_cast<uint8_t>(level.count >> 8)});
    }
    append(t, layout.subdivisions);
    out.sizes[kBuiltTre] = static_cast<uint32_t>(t.size());
    append(b, t);
  }
  padToBlock(b, kBlock);

  out.offsets[kBuiltRgn] = static_cast<uint32_t>(b.size());
  {
    ByteVector r(0x1D, 0);
    putLe(r, 0, 0x1D, 2);
    putText(r, 2, "GARMIN RGN");
    putLe(r, 0x15, 0x1D, 4);
    putLe(r, 0x19, layout.rgnData.size(), 4);
    append(r, layout.rgnData);
    out.sizes[kBuiltRgn] = static_cast<uint32_t>(r.size());
    out.rgnDataOffset = out.offsets[kBuiltRgn] + 0x1D;
    append(b, r);
  }
  padToBlock(b, kBlock);

  out.offsets[kBuiltLbl] = static_cast<uint32_t>(b.size());
  {
    const size_t header = layout.lblHeaderLength < 0xAC ? 0xAC : layout.lblHeaderLength;
    ByteVector l(header, 0);
    putLe(l, 0, layout.lblHeaderLength, 2);
    putText(l, 2, "GARMIN LBL");
    putLe(l, 0x15, header, 4);
    putLe(l, 0x19, layout.labelData.size(), 4);
    putU8(l, 0x1D, layout.labelShift);
    putU8(l, 0x1E, layout.labelCoding);
    putLe(l, 0x57, header + layout.labelData.size(), 4);
    putLe(l, 0x5B, layout.poiProperties.size(), 4);
    putLe(l, 0xAA, layout.codePage, 2);
    append(l, layout.labelData);
    append(l, layout.poiProperties);
    out.sizes[kBuiltLbl] = static_cast<uint32_t>(l.size());
    append(b, l);
  }

  for (size_t i = 0; i < entries.size(); ++i) {
    const EntrySpec& e = entries[i];
    const size_t at = 0x600 + i * 512;
    putU8(b, at, e.flag);
    putText(b, at + 1, (e.name + "        ").substr(0, 8));
    putText(b, at + 9, e.type);
    uint16_t block = e.block;
    uint32_t size = 0;
    if (e.subfile != kBuiltNone) {
      block = static_cast<uint16_t>(out.offsets[static_cast<size_t>(e.subfile)] / kBlock);
      size = out.sizes[static_cast<size_t>(e.subfile)];
    }
    putLe(b, at + 0x0C, size, 4);
    putU8(b, at + 0x11, e.partHigh);
    putLe(b, at + 0x20, block, 2);
  }
  return out;
}

}  // namespace orvel::test
