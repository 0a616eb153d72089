// Hand-made containers for the rules the real maps do not exercise.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "core/message.h"
#include "img_builder.h"
#include "map/img/img_index.h"
#include "map/img/img_map_file.h"

namespace orvel {
namespace {

using test::buildImg;
using test::ByteVector;
using test::EntrySpec;
using test::ImgLayout;

const std::string kUnsupported = "Не поддерживаемый формат файла либо файл поврежден.";

// What loading tells the user: nothing when it succeeds, its one reason when it fails.
std::string load(ImgMapFile& map, const ByteVector& bytes) { return map.load(bytes) ? "" : "refused: " + map.loadError(); }

TEST(ImgContainer, BoundsAreSignExtended) {
  ImgLayout layout;
  layout.north = -5;
  layout.south = -0x7FFFFF;
  layout.west = -0x800000;
  layout.east = 0x7FFFFF;
  ImgMapFile map;
  ASSERT_EQ(load(map, buildImg(layout).bytes), "");
  EXPECT_EQ(map.bounds(), (MapRect{-0x800000, -0x7FFFFF, 0x7FFFFF, -5}));
}

// Exponents 9 and 7 give 65536, kept as 0: every subfile is looked for at offset 0, where
// this file overlays the TRE, RGN and LBL headers on its container header.
TEST(ImgContainer, BlockSizeZeroPutsEverySubfileAtOffsetZero) {
  ByteVector b(0x1100, 0);
  test::putText(b, 0x10, "DSKIMG");        // also TRE north byte 0 / RGN data offset byte 0 ('G' = 0x47)
  test::putU8(b, 0x16, 0x10);              // RGN and LBL data at 0x1047; TRE north = 0x1047
  test::putLe(b, 0x19, 16, 4);             // RGN and LBL data length 16; TRE east = 0x1000, south = 0
  test::putU8(b, 0x1E, 6);                 // label coding 6; TRE west = 6
  test::putLe(b, 0x21, 0xD00, 4);          // levels
  test::putLe(b, 0x25, 4, 4);
  test::putLe(b, 0x29, 0xE00, 4);          // subdivisions
  test::putLe(b, 0x2D, 18, 4);
  test::putU8(b, 0x61, 9);
  test::putU8(b, 0x62, 7);
  test::putLe(b, 0x40C, 0x600 + 3 * 512, 4);
  const char* types[] = {"TRE", "RGN", "LBL"};
  for (int i = 0; i < 3; ++i) {
    const size_t at = 0x600 + static_cast<size_t>(i) * 512;
    test::putU8(b, at, 1);
    test::putText(b, at + 1, "00000001");
    test::putText(b, at + 9, types[i]);
    test::putLe(b, at + 0x20, 7, 2);
  }
  test::putU8(b, 0xD01, 24);
  test::putU8(b, 0xD02, 1);
  const ByteVector record = test::subdivisionRecord(0, 0x80, 100, 200, 1, 2, false);
  std::copy(record.begin(), record.end(), b.begin() + 0xE00);
  b.resize(0x1047 + 16);

  ImgMapFile map;
  ASSERT_EQ(load(map, b), "");
  EXPECT_EQ(map.blockSize(), 0);
  EXPECT_EQ(map.bounds(), (MapRect{6, 0, 0x1000, 0x1047}));
  EXPECT_EQ(map.rgnData().data(), b.data() + 0x1047);
  EXPECT_EQ(map.rgnData().size(), 16u);
  EXPECT_EQ(map.codePage(), 0);  // the LBL header length (bytes 0-1) is 0
  ASSERT_EQ(map.subdivisions().size(), 1u);
  EXPECT_EQ(map.subdivisions()[0].sectionStart[kSectionPolygons], 0u);
  EXPECT_EQ(map.subdivisions()[0].sectionLength[kSectionPolygons], 16u);
}

TEST(ImgContainer, OnlyTheFirstInUseTileCounts) {
  ImgLayout layout;
  // A second tile's entries, interleaved, pointing at blocks that hold no subfile headers.
  layout.entries = {
      {"ZZZZZZZZ", "TRE", test::kBuiltNone, 1, 0},  // not in use: does not fix the tile name
      {"00000001", "TRE", test::kBuiltTre},
      {"00000002", "RGN", test::kBuiltNone, 1},
      {"00000001", "RGN", test::kBuiltRgn},
      {"00000002", "LBL", test::kBuiltNone, 1},
      {"00000001", "LBL", test::kBuiltLbl},
      {"00000002", "TRE", test::kBuiltNone, 1},
  };
  const test::BuiltImg built = buildImg(layout);
  ImgMapFile map;
  ASSERT_EQ(load(map, built.bytes), "");
  EXPECT_EQ(map.tileName(), "00000001");
  EXPECT_EQ(map.subfileOffset(kSubfileTre), built.offsets[test::kBuiltTre]);
  EXPECT_EQ(map.subfileOffset(kSubfileRgn), built.offsets[test::kBuiltRgn]);
  EXPECT_EQ(map.subfileOffset(kSubfileLbl), built.offsets[test::kBuiltLbl]);
  EXPECT_EQ(map.rgnData().data(), built.bytes.data() + built.rgnDataOffset);
}

TEST(ImgContainer, LaterPartsAreSkippedButLaterFirstPartsReplace) {
  ImgLayout layout;
  layout.entries = {
      {"00000001", "TRE", test::kBuiltTre},
      {"00000001", "RGN", test::kBuiltRgn},
      {"00000001", "RGN", test::kBuiltNone, 1, 1, 1},  // part 1: skipped
      {"00000001", "LBL", test::kBuiltLbl},
  };
  test::BuiltImg built = buildImg(layout);
  ImgMapFile kept;
  ASSERT_EQ(load(kept, built.bytes), "");
  EXPECT_EQ(kept.subfileOffset(kSubfileRgn), built.offsets[test::kBuiltRgn]);

  // The same entry with its part number's high byte clear replaces the RGN offset (block 1
  // holds the directory, not an RGN header).
  built.bytes[0x600 + 2 * 512 + 0x11] = 0;
  ImgMapFile replaced;
  load(replaced, built.bytes);
  EXPECT_EQ(replaced.subfileOffset(kSubfileRgn), 512u);
}

// The label coding (6, 9, 10 and nothing else) and the code page, which a header too short
// to hold it leaves at 0.
TEST(ImgContainer, LabelSettings) {
  const struct {
    uint8_t coding;
    uint16_t headerLength;
    int schema;  // -1: refused
    uint16_t codePage;
  } cases[] = {{6, 0xAC, 0, 1252}, {9, 0xAC, 1, 1252}, {10, 0x19A, 2, 1252}, {9, 0xAB, 1, 0}, {9, 0x60, 1, 0},
               {7, 0xAC, -1, 0}, {0, 0xAC, -1, 0}};
  for (const auto& c : cases) {
    ImgLayout layout;
    layout.labelCoding = c.coding;
    layout.lblHeaderLength = c.headerLength;
    layout.labelShift = 3;
    layout.poiProperties = {1, 2, 3};
    ImgMapFile map;
    const std::string refusal = load(map, buildImg(layout).bytes);
    if (c.schema < 0) {
      EXPECT_EQ(refusal, "refused: Unsupported label code schema: " + std::to_string(c.coding));
      continue;
    }
    ASSERT_EQ(refusal, "") << +c.coding;
    EXPECT_EQ(static_cast<int>(map.labelSchema()), c.schema);
    EXPECT_EQ(map.codePage(), c.codePage) << c.headerLength;
    EXPECT_EQ(map.labelShift(), 3);
    EXPECT_EQ(map.labelData().size(), 4u);
    EXPECT_EQ(map.poiProperties().size(), 3u);
  }
}

// Three levels: 16-byte records for the first two, 14-byte records for the last.
ImgLayout threeLevels(ByteVector rgnData) {
  ImgLayout layout;
  layout.levels = {{18, true, 1}, {20, false, 1}, {24, false, 2}};
  ByteVector s;
  test::append(s, test::subdivisionRecord(0, 0x00, 100, 200, 0x8003, 4, true));  // flags 0; last-marker bit set
  test::append(s, test::subdivisionRecord(0, 0xF0, -100, -200, 1, 0x8000, true));
  test::append(s, test::subdivisionRecord(20, 0x80, 0x7FFFFF, 0x800001, 2, 3, false));
  test::append(s, test::subdivisionRecord(28, 0x50, 0, 0, 0, 0, false));
  s.resize(s.size() + 4);
  layout.subdivisions = s;
  layout.rgnData = std::move(rgnData);
  return layout;
}

// A section holding more last-level records than the levels count: only the counted are read.
TEST(ImgIndex, LastLevelRecordsStopAtTheCount) {
  const ImgLevel levels[] = {{20, false, 1, 1}, {24, false, 0, 1}};
  const ByteVector section(kImgSubdivisionRecord + 3 * kImgLastLevelRecord + 4, 0x11);
  std::vector<ImgSubdivision> out(3);  // the third lies past the two counted
  ASSERT_TRUE(readImgSubdivisions(section, levels, std::span(out).first(2)));
  EXPECT_EQ(out[1].centreX, 0x111111u);
  EXPECT_EQ(out[2].centreX, 0u);
}

TEST(ImgIndex, SectionRanges) {
  // Subdivision 1 (all four sections) at 0: a table of offsets 10, 14, 16 at 0-5, then
  // points 6-10, indexed points 10-14, polylines 14-16, polygons 16-20 (where the next starts).
  ByteVector rgn(40, 0);
  test::putLe(rgn, 0, 10, 2);
  test::putLe(rgn, 2, 14, 2);
  test::putLe(rgn, 4, 16, 2);
  // Subdivision 3 (points and polylines) at 28: one offset, 8 -> points 30-36, polylines 36-40.
  test::putLe(rgn, 28, 8, 2);
  ImgMapFile map;
  ASSERT_EQ(load(map, buildImg(threeLevels(rgn)).bytes), "");
  const auto s = map.subdivisions();
  using Sections = std::array<uint32_t, 4>;
  EXPECT_EQ(s[0].sectionStart, (Sections{kNoSection, kNoSection, kNoSection, kNoSection}));
  EXPECT_EQ(s[0].sectionLength, (Sections{kNoSection, kNoSection, kNoSection, kNoSection}));
  EXPECT_EQ(s[1].sectionStart, (Sections{6, 10, 14, 16}));
  EXPECT_EQ(s[1].sectionLength, (Sections{4, 4, 2, 4}));
  // Polygons alone start at the subdivision's offset and end at the next one's.
  EXPECT_EQ(s[2].sectionStart, (Sections{kNoSection, kNoSection, kNoSection, 20}));
  EXPECT_EQ(s[2].sectionLength, (Sections{kNoSection, kNoSection, kNoSection, 8}));
  // The last subdivision ends at the end of the RGN data.
  EXPECT_EQ(s[3].sectionStart, (Sections{30, kNoSection, 36, kNoSection}));
  EXPECT_EQ(s[3].sectionLength, (Sections{6, kNoSection, 4, kNoSection}));
}

TEST(ImgContainer, WhatIsRefusedWithWhichMessage) {
  const std::string encrypted = "Карта зашифрована.\n (ПРИМЕЧАНИЕ: Зашифрованные карты не поддерживаются.)";
  const auto entries = [](std::vector<EntrySpec> list) { return [list](ImgLayout& l) { l.entries = list; }; };
  const auto levelBits = [](uint8_t bits) { return [bits](ImgLayout& l) { l.levels = {{bits, false, 1}}; }; };
  struct Case {
    const char* name;
    std::function<void(ImgLayout&)> change;
    std::string message;  // empty: it loads
  };
  const Case cases[] = {
      {"encrypted", [](ImgLayout& l) { l.treFlags = 0x80; }, encrypted},
      {"other TRE flags", [](ImgLayout& l) { l.treFlags = 0x7F; }, ""},
      {"no TRE", entries({{"00000001", "RGN", test::kBuiltRgn}, {"00000001", "LBL", test::kBuiltLbl}}), kUnsupported},
      {"no RGN", entries({{"00000001", "TRE", test::kBuiltTre}, {"00000001", "LBL", test::kBuiltLbl}}), kUnsupported},
      {"no LBL", entries({{"00000001", "TRE", test::kBuiltTre}, {"00000001", "RGN", test::kBuiltRgn}}), kUnsupported},
      {"TRE outside",
       entries({{"00000001", "TRE", test::kBuiltNone, 60000}, {"00000001", "RGN", test::kBuiltRgn},
                {"00000001", "LBL", test::kBuiltLbl}}),
       kUnsupported},
      {"NET outside",
       entries({{"00000001", "TRE", test::kBuiltTre}, {"00000001", "RGN", test::kBuiltRgn},
                {"00000001", "LBL", test::kBuiltLbl}, {"00000001", "NET", test::kBuiltNone, 60000}}),
       kUnsupported},
      {"0 bits", levelBits(0), kUnsupported},
      {"25 bits", levelBits(25), kUnsupported},
      {"255 bits", levelBits(255), kUnsupported},
      {"upper level records past the section", [](ImgLayout& l) { l = threeLevels(ByteVector(40, 0)); l.subdivisions.resize(31); },
       kUnsupported},
  };
  for (const Case& c : cases) {
    ImgLayout layout;
    c.change(layout);
    ImgMapFile map;
    EXPECT_EQ(load(map, buildImg(layout).bytes), c.message.empty() ? "" : "refused: " + c.message) << c.name;
  }
  // A header area end below the directory start gives a huge unsigned entry count; the scan
  // still ends with the file.
  ByteVector bytes = buildImg({}).bytes;
  test::putLe(bytes, 0x40C, 0x100, 4);
  ImgMapFile map;
  EXPECT_EQ(load(map, bytes), "");
}

}  // namespace
}  // namespace orvel
