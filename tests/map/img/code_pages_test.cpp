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

// UTF-8 is decoded here, with a replacement character for each byte of a bad sequence;
// double-byte code pages go to the C library's converters.
TEST(CodePages, Utf8AndDoubleByteCodePages) {
  const struct {
    uint16_t codePage;
    std::vector<uint8_t> bytes;
    std::u16string expected;
  } cases[] = {
      {kCodePageUtf8, {'M', 'a'}, u"Ma"},
      {kCodePageUtf8, {0xC3, 0xA9, 0xD0, 0xAF}, u"éЯ"},
      {kCodePageUtf8, {0xE2, 0x82, 0xAC, 0xEF, 0xBF, 0xBD}, u"€\uFFFD"},
      {kCodePageUtf8, {0xF0, 0x9F, 0x98, 0x80, 'x'}, u"\U0001F600x"},
      {kCodePageUtf8, {0xF4, 0x8F, 0xBF, 0xBF}, u"\U0010FFFF"},                   // the largest
      {kCodePageUtf8, {0x80, 'a', 0xBF}, u"\uFFFDa\uFFFD"},                      // stray continuations
      {kCodePageUtf8, {0xC0, 0xC1, 0xF5, 0xFF}, u"\uFFFD\uFFFD\uFFFD\uFFFD"},     // invalid lead bytes
      {kCodePageUtf8, {0xC0, 0xAF}, u"\uFFFD\uFFFD"},                            // overlong
      {kCodePageUtf8, {0xE0, 0x80, 0xAF}, u"\uFFFD\uFFFD\uFFFD"},
      {kCodePageUtf8, {0xF0, 0x8F, 0xBF, 0xBF}, u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {kCodePageUtf8, {0xED, 0xA0, 0x80, 'a'}, u"\uFFFD\uFFFD\uFFFDa"},          // a surrogate
      {kCodePageUtf8, {0xF4, 0x90, 0x80, 0x80}, u"\uFFFD\uFFFD\uFFFD\uFFFD"},     // above the largest
      {kCodePageUtf8, {0xE2, 0x82, 'A', 0xC3, 'B'}, u"\uFFFDA\uFFFDB"},           // cut by the next character
      {kCodePageUtf8, {'a', 0xE2, 0x82}, u"a\uFFFD"},                             // truncated
      {kCodePageUtf8, {0xF0, 0x9F, 0x98}, u"\uFFFD"},
      {kCodePageUtf8, {0xC3}, u"\uFFFD"},
      {kCodePageUtf8, {}, u""},
      {932, {0x93, 0x8C, 0x8B, 0x9E}, u"東京"},       // Shift JIS
      {932, {'A', 0xB1, 0x93, 0x8C}, u"Aｱ東"},        // a single-byte katakana
      {932, {'A', 0x93}, u"A\uFFFD"},                 // cut after a lead byte
      {936, {0xD6, 0xD0, 0xCE, 0xC4}, u"中文"},       // GBK
      {949, {0xC7, 0xD1, 0xB1, 0xB9}, u"한국"},       // Unified Hangul
      {950, {0xA4, 0xA4, 0xA4, 0xE5, '1'}, u"中文1"},  // Big5
  };
  for (const auto& c : cases) EXPECT_EQ(convert(c.bytes, c.codePage), c.expected) << c.codePage << " " << ::testing::PrintToString(c.bytes);
  EXPECT_EQ(convert({0xD6, 0xD0, 0xCE, 0xC4, 'x'}, 936, 1), u"中");
}

}  // namespace
}  // namespace orvel
