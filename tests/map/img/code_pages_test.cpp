#include "map/img/code_pages.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <string>
#include <vector>

#include "map/img/iconv_code_pages.h"

namespace orvel {
namespace {

// Input in a vector of exactly its size, so that a read past it is caught by the address
// sanitizer.
std::u16string convert(const std::vector<uint8_t>& text, uint16_t codePage,
                       size_t capacity = kLabelCapacity) {
  std::vector<char16_t> out(capacity);
  const int count = decodeCodePage(text, codePage, out);
  EXPECT_GE(count, 0);
  EXPECT_LE(static_cast<size_t>(count), capacity);
  return std::u16string(out.data(), static_cast<size_t>(count));
}

constexpr uint16_t kTableCodePages[] = {0, 1250, 1251, 1252, 1253, 1254, 1257};

// The C library's converters are an independent reading of the same code pages: every byte
// they convert must come out the same; a byte they reject must be a C1 control or U+FFFD.
// ASCII passes unchanged.
TEST(CodePageTables, AgreeWithTheCLibrary) {
  std::vector<uint8_t> ascii;
  std::u16string expected;
  for (int b = 1; b < 0x80; ++b) {
    ascii.push_back(static_cast<uint8_t>(b));
    expected += static_cast<char16_t>(b);
  }
  for (uint16_t codePage : kTableCodePages) {
    EXPECT_TRUE(hasCodePageTable(codePage));
    EXPECT_EQ(convert(ascii, codePage), expected) << codePage;
    const std::string name = "CP" + std::to_string(codePage == 0 ? 1252 : codePage);
    iconv_t converter = iconv_open("UTF-16LE", name.c_str());
    if (converter == reinterpret_cast<iconv_t>(-1)) {
      ADD_FAILURE() << "the C library has no converter for " << name;
      continue;
    }
    for (int b = 0x80; b <= 0xFF; ++b) {
      char in[1] = {static_cast<char>(b)};
      char utf16[4] = {};
      char* inPos = in;
      char* outPos = utf16;
      size_t inLeft = 1;
      size_t outLeft = sizeof utf16;
      iconv(converter, nullptr, nullptr, nullptr, nullptr);
      const bool converted = iconv(converter, &inPos, &inLeft, &outPos, &outLeft) != static_cast<size_t>(-1);
      const std::u16string ours = convert({static_cast<uint8_t>(b)}, codePage);
      ASSERT_EQ(ours.size(), 1u);
      if (converted && outPos - utf16 == 2) {
        const auto theirs =
            static_cast<char16_t>(static_cast<uint8_t>(utf16[0]) | static_cast<uint8_t>(utf16[1]) << 8);
        EXPECT_EQ(ours[0], theirs) << name << " byte 0x" << std::hex << b;
      } else {
        EXPECT_TRUE(ours[0] == u'\uFFFD' || (b < 0xA0 && ours[0] == b))
            << name << " byte 0x" << std::hex << b;
      }
    }
    iconv_close(converter);
  }
}

struct Utf8Case {
  const char* name;
  std::vector<uint8_t> bytes;
  std::u16string expected;
};

TEST(CodePages, Utf8) {
  const Utf8Case cases[] = {Utf8Case{"Ascii", {'M', 'a'}, u"Ma"},
                    Utf8Case{"TwoBytes", {0xC3, 0xA9, 0xD0, 0xAF}, u"éЯ"},
                    Utf8Case{"ThreeBytes", {0xE2, 0x82, 0xAC, 0xEF, 0xBF, 0xBD}, u"€\uFFFD"},
                    Utf8Case{"FourBytes", {0xF0, 0x9F, 0x98, 0x80, 'x'}, u"\U0001F600x"},
                    Utf8Case{"Largest", {0xF4, 0x8F, 0xBF, 0xBF}, u"\U0010FFFF"},
                    Utf8Case{"StrayContinuation", {0x80, 'a', 0xBF}, u"\uFFFDa\uFFFD"},
                    Utf8Case{"InvalidLeadBytes", {0xC0, 0xC1, 0xF5, 0xFF}, u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                    Utf8Case{"OverlongTwoBytes", {0xC0, 0xAF}, u"\uFFFD\uFFFD"},
                    Utf8Case{"OverlongThreeBytes", {0xE0, 0x80, 0xAF}, u"\uFFFD\uFFFD\uFFFD"},
                    Utf8Case{"OverlongFourBytes", {0xF0, 0x8F, 0xBF, 0xBF}, u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                    Utf8Case{"Surrogate", {0xED, 0xA0, 0x80, 'a'}, u"\uFFFD\uFFFD\uFFFDa"},
                    Utf8Case{"AboveLargest", {0xF4, 0x90, 0x80, 0x80}, u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                    Utf8Case{"CutByNextCharacter", {0xE2, 0x82, 'A', 0xC3, 'B'}, u"\uFFFDA\uFFFDB"},
                    Utf8Case{"TruncatedTwoOfThree", {'a', 0xE2, 0x82}, u"a\uFFFD"},
                    Utf8Case{"TruncatedThreeOfFour", {0xF0, 0x9F, 0x98}, u"\uFFFD"},
                    Utf8Case{"TruncatedLeadOnly", {0xC3}, u"\uFFFD"}, Utf8Case{"Empty", {}, u""}};
  for (const Utf8Case& c : cases) EXPECT_EQ(convert(c.bytes, kCodePageUtf8), c.expected) << c.name;
}

struct CjkCase {
  uint16_t codePage;
  std::vector<uint8_t> bytes;
  std::u16string expected;
};

// Double-byte code pages go to the C library's converters.
TEST(CodePages, DoubleByteCodePages) {
  const CjkCase cases[] = {
      {932, {0x93, 0x8C, 0x8B, 0x9E}, u"東京"},       // Shift JIS
      {932, {'A', 0xB1, 0x93, 0x8C}, u"Aｱ東"},        // a single-byte katakana
      {932, {'A', 0x93}, u"A\uFFFD"},                 // cut after a lead byte
      {936, {0xD6, 0xD0, 0xCE, 0xC4}, u"中文"},       // GBK
      {949, {0xC7, 0xD1, 0xB1, 0xB9}, u"한국"},       // Unified Hangul
      {950, {0xA4, 0xA4, 0xA4, 0xE5, '1'}, u"中文1"},  // Big5
  };
  for (const CjkCase& c : cases) EXPECT_EQ(convert(c.bytes, c.codePage), c.expected) << c.codePage;
  EXPECT_EQ(convert({0xD6, 0xD0, 0xCE, 0xC4, 'x'}, 936, 1), u"中");
}

}  // namespace
}  // namespace orvel
