// Small hand-made files for what real conversions never produce: empty and long codes,
// control characters in labels, empty blocks, shared labels out of the file.
#include <gtest/gtest.h>

#include "map/orv/convert/orv_bit_writer.h"
#include "map/orv/orv_code_table.h"
#include "map/orv/orv_map_file.h"
#include "orv_test_util.h"

namespace orvel {
namespace {

using test::Collect;
using test::kEverywhere;
using test::RawBlock;
using test::RawFile;

std::vector<uint8_t> tableBytes(const std::vector<OrvCode>& codes) {
  std::vector<uint8_t> out;
  appendCodeTable(out, codes);
  return out;
}

TEST(OrvLookupTable, LoneCodeOfNoBitsYieldsItsSymbolWithoutConsuming) {
  const auto bytes = tableBytes({{0x41, 0, 0}});
  OrvLookupTable table;
  EXPECT_EQ(table.build(bytes, 0), bytes.size());
  const uint8_t input[] = {0xFF, 0x00};
  OrvBitReader reader(input, 0);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(table.decode(reader), 0x41);
  EXPECT_EQ(reader.pos(), 0u);
  EXPECT_EQ(reader.bit(), 0u);
  EXPECT_EQ(table.largestSymbol(), 0x41);
}

// 1 -> 'a' (1 bit), 01 -> 'b' (2 bits), 00 followed by seven bits -> 9-bit codes.
TEST(OrvLookupTable, NineBitCodeGoesThroughAChildOfItsFirstByte) {
  // Codes are written first bit in bit 0. 'c' = 0,0 then 1,0,0,0,0,0,0 -> bits 0b0000000100.
  const auto bytes = tableBytes({{'a', 1, 0b1}, {'b', 2, 0b10}, {'c', 9, 0b000000100}, {'d', 9, 0b100000100}});
  OrvLookupTable table;
  table.build(bytes, 0);
  EXPECT_EQ(table.childTables(), 1u);
  EXPECT_EQ(table.largestSymbol(), 'd');

  OrvBitWriter w;
  for (auto [bits, length] : {std::pair{0b1u, 1u}, {0b000000100u, 9u}, {0b10u, 2u}, {0b100000100u, 9u}, {0b1u, 1u}}) {
    w.put(bits, length);
  }
  const std::vector<uint8_t> input = w.bytes();
  OrvBitReader reader(input, 0);
  EXPECT_EQ(table.decode(reader), 'a');
  EXPECT_EQ(table.decode(reader), 'c');
  EXPECT_EQ(reader.pos() * 8 + reader.bit(), 10u);
  EXPECT_EQ(table.decode(reader), 'b');
  EXPECT_EQ(table.decode(reader), 'd');
  EXPECT_EQ(table.decode(reader), 'a');
  EXPECT_EQ(reader.pos() * 8 + reader.bit(), 22u);
}

TEST(OrvLookupTable, CodesRunningOutOfTheFileAreLeftOut) {
  auto bytes = tableBytes({{'a', 1, 0b1}, {'b', 16, 0x1234}});
  bytes.pop_back();
  OrvLookupTable table;
  EXPECT_EQ(table.build(bytes, 0), bytes.size());
  EXPECT_EQ(table.codeCount(), 1u);
  EXPECT_EQ(table.childTables(), 0u);
}

// A map of one level whose tables make labels of the characters 'A', 'B' and control
// character 7, points and lines of one type, and deltas of -1, 0 and +1.
class HandMade : public ::testing::Test {
 protected:
  HandMade() {
    file_.tables[kTableCharsA] = {{'A', 1, 0b0}, {'B', 2, 0b01}, {7, 2, 0b11}};
    file_.tables[kTableLengthsA] = {{1, 1, 0b0}, {3, 1, 0b1}};
    file_.tables[kTableCharsB] = {{u'Ж', 0, 0}};
    file_.tables[kTableLengthsB] = {{2, 0, 0}};
    file_.tables[kTablePointTypes] = {{0x2C05, 0, 0}};
    file_.tables[kTableLineTypes] = {{0x06, 0, 0}};
    file_.tables[kTableAreaTypes] = {{0x4B, 1, 0b0}, {0x4C, 1, 0b1}};
    file_.tables[kTableDeltaX] = {{0, 1, 0b0}, {2, 1, 0b1}};  // bias 1: -1 and +1
    file_.tables[kTableDeltaY] = {{1, 0, 0}};                 // always 0
    file_.tables[kTablePointCount] = {{1, 1, 0b0}, {2, 1, 0b1}};
    file_.biasX = 1;
    file_.biasY = 1;
  }

  // An object: label selector (and what follows it), then the rest of the fields.
  static std::vector<uint8_t> point(uint32_t selector, uint32_t xOffset, uint32_t yOffset, unsigned bits,
                                    std::initializer_list<std::pair<uint32_t, unsigned>> label = {}) {
    OrvBitWriter w;
    w.put(selector, 2);
    for (auto [value, length] : label) w.put(value, length);
    w.put(xOffset, bits);
    w.put(yOffset, bits);
    w.align();
    return w.bytes();
  }

  bool open() {
    bytes_ = file_.build();
    return orv_.probe(bytes_) && orv_.load(bytes_);
  }

  std::vector<test::Decoded> decodeAll(int level = 0) {
    Collect objects(orv_);
    orv_.decodeLevel(level, kEverywhere, objects);
    return objects.objects;
  }

  RawFile file_;
  std::vector<uint8_t> bytes_;
  OrvMapFile orv_;
};

TEST_F(HandMade, InlineLabelsOfBothSetsAndControlCharactersDropped) {
  RawBlock block{100, 200, 7, 7, {}};
  // Set A, length 3 (code 1): 'A' (0), char 7 (11), 'B' (bits 1 then 0).
  const auto a = point(kLabelInlineA, 5, 6, 3, {{0b1, 1}, {0b0, 1}, {0b11, 2}, {0b01, 2}});
  const auto b = point(kLabelInlineB, 1, 2, 3);  // length 2 and 'Ж' twice, all of no bits
  block.sections[2] = a;
  block.sections[2].insert(block.sections[2].end(), b.begin(), b.end());
  file_.levels = {{24, {block}}};
  ASSERT_TRUE(open());
  const auto objects = decodeAll();
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_EQ(objects[0].label, u"AB");
  EXPECT_EQ(objects[0].type, 0x2C05u);
  EXPECT_EQ(objects[0].points, (std::vector<MapPoint>{{105, 206}}));
  EXPECT_EQ(objects[1].label, u"ЖЖ");
  EXPECT_EQ(objects[1].points, (std::vector<MapPoint>{{101, 202}}));
  char16_t text[kLabelCapacity + 1];
  EXPECT_EQ(orv_.getLabel(objects[0].labelRef, text), 2);
  EXPECT_EQ(std::u16string(text), u"AB");
}

TEST_F(HandMade, LinesUseDeltasBiasesAndTheLevelShift) {
  RawBlock block{10, 20, 3, 3, {}};
  OrvBitWriter w;
  w.put(kLabelNone, 2);
  w.put(1, 2);  // x offset
  w.put(2, 2);  // y offset
  w.put(0b1, 1);                    // three points
  w.put(0b1, 1);                    // dx +1 (dy of no bits: 0)
  w.put(0b0, 1);                    // dx -1
  w.putBit(1);                      // the line's unused bit
  w.align();
  block.sections[1] = w.bytes();
  file_.levels = {{20, {block}}};
  ASSERT_TRUE(open());
  const auto objects = decodeAll();
  ASSERT_EQ(objects.size(), 1u);
  EXPECT_EQ(objects[0].kind, ObjectKind::Line);
  EXPECT_EQ(objects[0].type, 0x06u);
  const int s = 4;
  EXPECT_EQ(objects[0].points, (std::vector<MapPoint>{{11 << s, 22 << s}, {12 << s, 22 << s}, {11 << s, 22 << s}}));
}

TEST_F(HandMade, SharedLabelPastTheEndAbandonsOnlyTheRestOfItsSection) {
  // The shared area holds one label: selector 1 (set A), length 1, 'B'.
  OrvBitWriter shared;
  shared.put(kLabelInlineA, 2);
  shared.put(0b0, 1);
  shared.put(0b01, 2);
  shared.align();
  file_.sharedArea = shared.bytes();
  file_.sharedIndexBits = 16;
  RawBlock block{0, 0, 1, 1, {}};
  for (const auto& object : {point(kLabelShared, 0, 0, 1, {{0, 16}}), point(kLabelShared, 1, 1, 1, {{0xFFFF, 16}}),
                             point(kLabelNone, 1, 0, 1)}) {
    block.sections[2].insert(block.sections[2].end(), object.begin(), object.end());
  }
  OrvBitWriter line;
  line.put(kLabelShared, 2);
  line.put(0, 16);
  line.put(0, 1);
  line.put(0, 1);
  line.put(0, 1);  // two points
  line.put(1, 1);  // dx +1
  line.putBit(0);
  line.align();
  block.sections[1] = line.bytes();
  file_.levels = {{24, {block}}};
  ASSERT_TRUE(open());
  ASSERT_LT(file_.sharedStart + 0xFFFFu, 0xFFFFu + bytes_.size());
  ASSERT_GE(file_.sharedStart + 0xFFFFu, bytes_.size());
  const auto objects = decodeAll();
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_EQ(objects[0].kind, ObjectKind::Line);
  EXPECT_EQ(objects[0].label, u"B");
  EXPECT_EQ(objects[1].kind, ObjectKind::Point);
  EXPECT_EQ(objects[1].label, u"B");
  EXPECT_EQ(objects[0].labelRef, file_.sharedStart);
}

TEST_F(HandMade, LevelChoiceTakesTheLastLevelNotFinerThanTheZoom) {
  file_.levels = {{18, {}}, {20, {}}, {24, {}}};
  ASSERT_TRUE(open());
  EXPECT_EQ(orv_.chooseLevel(30), 2);  // finer than every level: the finest
  EXPECT_EQ(orv_.chooseLevel(24), 2);
  EXPECT_EQ(orv_.chooseLevel(23), 1);
  EXPECT_EQ(orv_.chooseLevel(20), 1);
  EXPECT_EQ(orv_.chooseLevel(19), 0);
  EXPECT_EQ(orv_.chooseLevel(10), 0);  // coarser than every level: entry 0
}

TEST_F(HandMade, AreaOfType0x4BIsDecodedButNotDrawn) {
  RawBlock block{0, 0, 1000, 1000, {}};
  for (uint32_t typeBit : {0u, 1u}) {  // 0x4B, then 0x4C
    OrvBitWriter w;
    w.put(kLabelNone, 2);
    w.put(typeBit, 1);
    w.put(0, 10);
    w.put(0, 10);
    w.put(0b1, 1);  // three points
    w.put(0b1, 1);  // dx +1
    w.put(0b1, 1);  // dx +1
    w.align();
    block.sections[0].insert(block.sections[0].end(), w.bytes().begin(), w.bytes().end());
  }
  file_.levels = {{16, {block}}};  // 256 map units per level unit
  ASSERT_TRUE(open());
  const auto objects = decodeAll();
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_EQ(objects[0].type, 0x4Bu);
  EXPECT_EQ(objects[1].type, 0x4Cu);
  // Both come out of decode; only the 0x4C one is drawn.
  for (const auto& o : objects) {
    EXPECT_EQ(orv_.isDrawn(MapObject{o.kind, o.type, o.points, 0}), o.type == 0x4Cu) << o.type;
  }
}

TEST(OrvProbe, RejectsVersionOneAndAWrongStoredSize) {
  RawFile file;
  auto bytes = file.build();
  OrvMapFile orv;
  EXPECT_TRUE(orv.probe(bytes));
  test::putU32(bytes, kOrvVersionAt, 1);
  EXPECT_FALSE(orv.probe(bytes));
  test::putU32(bytes, kOrvVersionAt, 2);
  test::putU32(bytes, kOrvFileSizeAt, static_cast<uint32_t>(bytes.size() - 1));
  EXPECT_FALSE(orv.probe(bytes));
}

}  // namespace
}  // namespace orvel
