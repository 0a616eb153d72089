#include "map/img/rgn_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "map/img/rgn_test_util.h"

namespace orvel {
namespace {

using test::BitWriter;

struct Field {
  uint32_t value;
  int width;
};

struct StreamCase {
  std::string name;
  uint8_t bitSizes;
  bool extraBit;
  int shift;
  MapPoint first;
  std::vector<Field> fields;  // sign set-up, then per point: [extra], dx..., dy...
  std::vector<MapPoint> expected;
};

std::vector<uint8_t> packFields(const std::vector<Field>& fields) {
  BitWriter w;
  for (const Field& f : fields) w.put(f.value, f.width);
  return w.bytes();
}

std::vector<MapPoint> decodeAll(const std::vector<uint8_t>& stream, MapPoint first, int shift,
                                uint8_t bitSizes, bool extraBit) {
  std::vector<MapPoint> out(kMaxObjectPoints);
  const int n = decodePolyStream(Bytes(stream.data(), stream.size()), first, shift, bitSizes, extraBit, out.data());
  out.resize(static_cast<size_t>(n));
  return out;
}

// Sign set-up bits: shared sign (1) with its sign bit, or own sign (0).
constexpr Field kSharedPlus[] = {{1, 1}, {0, 1}};
constexpr Field kSharedMinus[] = {{1, 1}, {1, 1}};
constexpr Field kOwn = {0, 1};

const std::vector<StreamCase>& streamCases() {
  static const std::vector<StreamCase> cases = {
      {"SharedSignsPositiveXNegativeY", 0x21, false, 0, {100, 200},
       {kSharedPlus[0], kSharedPlus[1], kSharedMinus[0], kSharedMinus[1],
        {5, 3}, {3, 4}, {1, 3}, {7, 4}},
       {{100, 200}, {105, 197}, {106, 190}}},
      {"OwnSigns", 0x00, false, 0, {10, 10},
       {kOwn, kOwn, {3, 3}, {7, 3}, {5, 3}, {2, 3}},
       {{10, 10}, {13, 9}, {10, 11}}},
      // Width 3: 4 is the escape, adding 3 each time; 6 >= 4 gives 6 - 8 - 3.
      {"OwnSignEscapesAccumulate", 0x00, false, 0, {0, 0},
       {kOwn, kOwn, {4, 3}, {4, 3}, {1, 3}, {4, 3}, {6, 3}, {2, 3}, {0, 3}},
       {{0, 0}, {7, -5}, {9, -5}}},
      {"ExtraBitSkipped", 0x00, true, 0, {0, 0},
       {kSharedPlus[0], kSharedPlus[1], kSharedPlus[0], kSharedPlus[1],
        {1, 1}, {1, 2}, {2, 2}, {0, 1}, {3, 2}, {3, 2}},
       {{0, 0}, {1, 2}, {4, 5}}},
      // Nibble 10 gives 2*10-9 = 11 bits + 2, nibble 15 gives 21 + 2.
      {"WidthsFromHighNibbles", 0xFA, false, 0, {0, 0},
       {kSharedPlus[0], kSharedPlus[1], kSharedPlus[0], kSharedPlus[1], {4000, 13}, {3000000, 23}},
       {{0, 0}, {4000, 3000000}}},
      {"NibbleNineAndTen", 0x9A, false, 0, {0, 0},
       {kSharedPlus[0], kSharedPlus[1], kSharedPlus[0], kSharedPlus[1], {8191, 13}, {2047, 11}},
       {{0, 0}, {8191, 2047}}},
      {"ShiftScalesDeltas", 0x00, false, 4, {1000, 1000},
       {kSharedPlus[0], kSharedPlus[1], kSharedMinus[0], kSharedMinus[1], {3, 2}, {1, 2}},
       {{1000, 1000}, {1048, 984}}},
      // 0x9000 << 8 = 0x900000 lies above 0x7FFFFF and wraps to -0x700000.
      {"ShiftedDeltaWrapsIn24Bits", 0x0C, false, 8, {0x100000, 0},
       {kSharedPlus[0], kSharedPlus[1], kSharedPlus[0], kSharedPlus[1], {0x9000, 17}, {0, 2}},
       {{0x100000, 0}, {0x100000 - 0x700000, 0}}},
      {"EmptyStreamIsFirstPointOnly", 0x00, false, 0, {5, 6}, {}, {{5, 6}}},
      // Four set-up bits leave four zero bits of padding: exactly one more (zero) point.
      {"PaddingOfAPointsWidthIsAPoint", 0x00, false, 0, {5, 5},
       {kSharedPlus[0], kSharedPlus[1], kSharedPlus[0], kSharedPlus[1]},
       {{5, 5}, {5, 5}}},
  };
  return cases;
}

TEST(RgnStream, DecodesTheDeltasOfEachCoding) {
  for (const StreamCase& c : streamCases()) {
    EXPECT_EQ(decodeAll(packFields(c.fields), c.first, c.shift, c.bitSizes, c.extraBit), c.expected) << c.name;
  }
}

TEST(RgnStream, TruncatedStreamKeepsThePointsThatFit) {
  auto bytes = packFields(streamCases()[0].fields);  // 18 bits in 3 bytes
  bytes.resize(2);                                   // 16 bits: set-up and one 7-bit point
  EXPECT_EQ(decodeAll(bytes, {100, 200}, 0, 0x21, false), (std::vector<MapPoint>{{100, 200}, {105, 197}}));
}

TEST(RgnStream, KeepsAtMost256PointsButDecodesTheRest) {
  BitWriter w;
  for (const Field& f : kSharedPlus) w.put(f.value, f.width);
  for (const Field& f : kSharedPlus) w.put(f.value, f.width);
  for (int i = 0; i < 300; ++i) {
    w.put(1, 2);
    w.put(0, 2);
  }
  const auto& bytes = w.bytes();
  // Exactly 256 slots, then a guard that must stay untouched.
  std::vector<MapPoint> out(kMaxObjectPoints + 1, MapPoint{-7, -7});
  const int n = decodePolyStream(Bytes(bytes.data(), bytes.size()), {0, 0}, 0, 0x00, false, out.data());
  EXPECT_EQ(n, kMaxObjectPoints);
  EXPECT_EQ(out[255], (MapPoint{255, 0}));
  EXPECT_EQ(out[256], (MapPoint{-7, -7}));
}

TEST(RgnStream, EscapesRunningPastTheEndStopThere) {
  // Every value of the stream is the escape: the chain runs off the end, where zero bits
  // end it. 2 + 2666 * 3 = 8000 bits.
  BitWriter w;
  w.put(0, 1);
  w.put(0, 1);
  for (int i = 0; i < 2666; ++i) w.put(4, 3);
  const std::vector<uint8_t> heap(w.bytes());  // exactly sized, so a stray read is caught
  EXPECT_EQ(decodeAll(heap, {0, 0}, 0, 0x00, false), (std::vector<MapPoint>{{0, 0}, {2666 * 3, 0}}));
}

}  // namespace
}  // namespace orvel
