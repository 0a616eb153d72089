#include "map/img/label_decoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>


namespace orvel {
namespace {

constexpr char16_t kUnwritten = u'\u2603';

// Decodes into a buffer with a guard area behind the kLabelCapacity + 1 characters and
// checks that the count, the terminator and the guard agree.
std::u16string decode(const std::vector<uint8_t>& data, uint32_t offset, LabelSchema schema,
                      uint16_t codePage = 1252) {
  std::array<char16_t, kLabelCapacity + 1 + 16> out;
  out.fill(kUnwritten);
  const int count = decodeLabel(data, offset, schema, codePage, out.data());
  EXPECT_GE(count, 0);
  EXPECT_LE(count, static_cast<int>(kLabelCapacity));
  if (count < 0 || count > static_cast<int>(kLabelCapacity)) return {};
  EXPECT_EQ(out[count], 0);
  EXPECT_TRUE(
      std::all_of(out.begin() + kLabelCapacity + 1, out.end(), [](char16_t c) { return c == kUnwritten; }));
  return std::u16string(out.data(), static_cast<size_t>(count));
}

// Packs six-bit codes four to three bytes, first code in the top bits, and ends the label
// with code 63 (further codes, if a group still has room, are 63 as well).
std::vector<uint8_t> packSixBit(const std::vector<uint8_t>& codes) {
  std::vector<uint8_t> all = codes;
  do all.push_back(63);
  while (all.size() % 4 != 0);
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i < all.size(); i += 4) {
    const uint32_t group = all[i] << 18 | all[i + 1] << 12 | all[i + 2] << 6 | all[i + 3];
    bytes.push_back(static_cast<uint8_t>(group >> 16));
    bytes.push_back(static_cast<uint8_t>(group >> 8));
    bytes.push_back(static_cast<uint8_t>(group));
  }
  return bytes;
}

std::u16string sixBit(const std::vector<uint8_t>& codes) {
  return decode(packSixBit(codes), 0, LabelSchema::SixBit);
}

TEST(SixBitLabel, ThreeBytesHoldFourCodes) {
  EXPECT_EQ(decode({0x04, 0x20, 0xC0}, 0, LabelSchema::SixBit), u"ABC ");
  // A following group that begins with a code above 47 ends the label.
  EXPECT_EQ(decode({0x04, 0x20, 0xC0, 0xFC, 0x10, 0x41}, 0, LabelSchema::SixBit), u"ABC ");
}

struct SixBitCase {
  std::vector<uint8_t> codes;
  std::u16string expected;
};

TEST(SixBitLabel, CodesInEachState) {
  const SixBitCase cases[] = {
        // Normal state.
        SixBitCase{{0, 1, 26}, u" AZ"}, SixBitCase{{32, 41}, u"09"},
        SixBitCase{{29, 30, 31}, u"~[0x1d]~[0x1e]~[0x1f]"}, SixBitCase{{42, 47}, u"~[0x2a]~[0x2f]"},
        SixBitCase{{1, 48, 2}, u"A"},  // the end code stops decoding at once
        // Symbol state.
        SixBitCase{{28, 2}, u"'"}, SixBitCase{{28, 0}, u"@"}, SixBitCase{{28, 1}, u"!"},
        SixBitCase{{28, 7}, u"'"}, SixBitCase{{28, 15}, u"/"}, SixBitCase{{28, 16}, u"?"},
        SixBitCase{{28, 25}, u"?"}, SixBitCase{{28, 26}, u":"}, SixBitCase{{28, 30}, u">"},
        SixBitCase{{28, 32}, u"?"}, SixBitCase{{28, 42}, u"?"}, SixBitCase{{28, 43}, u"["},
        SixBitCase{{28, 44}, u"\\"}, SixBitCase{{28, 47}, u"_"},
        // Lower-case state.
        SixBitCase{{27, 1}, u"a"}, SixBitCase{{27, 0}, u"`"}, SixBitCase{{27, 26}, u"z"},
        SixBitCase{{27, 33}, u"~[0x1b]1"}, SixBitCase{{27, 41}, u"~[0x1b]9"},
        SixBitCase{{27, 32}, u"~[0x1b]0"}, SixBitCase{{27, 43}, u"~[0x1b2b]"}, SixBitCase{{27, 44}, u"~[0x1b2c]"}, SixBitCase{{27, 27}, u"?"},
        SixBitCase{{27, 42}, u"?"}, SixBitCase{{27, 45}, u"?"},
        // A shift lasts for one character; a shift code alone writes nothing.
        SixBitCase{{27, 13, 1, 28, 13, 13}, u"mA-M"}, SixBitCase{{28, 27}, u";"}, SixBitCase{{27}, u""},
        SixBitCase{{28, 27, 1}, u";A"}};
  for (const SixBitCase& c : cases) EXPECT_EQ(sixBit(c.codes), c.expected) << ::testing::PrintToString(c.codes);
}

TEST(SixBitLabel, CutAt128Characters) {
  const std::u16string cut = sixBit(std::vector<uint8_t>(200, 1));
  EXPECT_EQ(cut, std::u16string(128, u'A'));
  // A marker text is cut character by character.
  std::vector<uint8_t> codes(127, 2);
  codes.push_back(29);
  EXPECT_EQ(sixBit(codes), std::u16string(127, u'B') + u"~");
}

TEST(ByteLabel, First250KeptBytesConverted) {
  std::vector<uint8_t> data;
  std::u16string expected;
  for (int i = 0; i < 300; ++i) {
    data.push_back(static_cast<uint8_t>(33 + i % 90));
    if (i < 250) expected += static_cast<char16_t>(33 + i % 90);
  }
  EXPECT_EQ(decode(data, 0, LabelSchema::Byte), expected);
  data.push_back(0);
  EXPECT_EQ(decode(data, 0, LabelSchema::Byte), expected);

  // Dropped control bytes do not count towards the 250.
  std::vector<uint8_t> mixed;
  for (int i = 0; i < 300; ++i) {
    mixed.push_back(0x1D);
    mixed.push_back(static_cast<uint8_t>(33 + i % 90));
  }
  EXPECT_EQ(decode(mixed, 0, LabelSchema::Byte), expected);
}

TEST(ByteLabel, ConvertedInTheCodePage) {
  EXPECT_EQ(decode({0xC0, 0xFF, 0xA8, 0}, 0, LabelSchema::Byte, 1251), u"АяЁ");
  EXPECT_EQ(decode({0x80, 0x9A, 0}, 0, LabelSchema::Byte, 0), u"€š");
  EXPECT_EQ(decode({0xD0, 0x90, 0xE2, 0x82, 0xAC, 0}, 0, LabelSchema::Coding10, 65001), u"А€");
  // The same bytes as coding 9 with a UTF-8 code page decode the same way.
  EXPECT_EQ(decode({0xD0, 0x90, 0}, 0, LabelSchema::Byte, 65001), u"А");
  // A UTF-8 sequence cut by the 250-byte limit ends in a replacement character.
  std::vector<uint8_t> data(252, 'x');
  data[249] = 0xD0;
  data[250] = 0x90;
  data[251] = 0;
  EXPECT_EQ(decode(data, 0, LabelSchema::Coding10, 65001), std::u16string(249, u'x') + u"\uFFFD");
}

TEST(Label, ReferenceToByteOffset) {
  const struct {
    uint32_t reference;
    uint8_t shift;
    uint32_t expected;
  } cases[] = {
      {0, 0, 0}, {5, 0, 5}, {5, 1, 10}, {0x3FFFFF, 2, 0xFFFFFC}, {0x7FFFFFFF, 1, 0xFFFFFFFE},
      {0x80000000, 1, 0xFFFFFFFF}, {0xFFFFFFFF, 0, 0xFFFFFFFF}, {1, 31, 0x80000000}, {2, 31, 0xFFFFFFFF},
      {3, 30, 0xC0000000}, {1, 32, 0xFFFFFFFF}, {1, 255, 0xFFFFFFFF}, {0, 255, 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(labelByteOffset(c.reference, c.shift), c.expected) << c.reference << " << " << int{c.shift};
}

}  // namespace
}  // namespace orvel
