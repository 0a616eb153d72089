#include "core/utf.h"

#include <gtest/gtest.h>

namespace orvel {
namespace {

TEST(Utf, InvalidUtf8IsRejected) {
  const char* invalid[] = {
      "\x80",              // continuation without a start
      "\xC0\xAF",          // overlong '/'
      "\xE0\x80\xAF",      // overlong, three bytes
      "\xED\xA0\x80",      // a surrogate
      "\xF4\x90\x80\x80",  // above U+10FFFF
      "\xE2\x82",          // cut off
      "\xF8\x88\x80\x80\x80",
      "ok\xFF"};
  for (const char* bytes : invalid) {
    EXPECT_FALSE(isValidUtf8(bytes)) << bytes;
    EXPECT_FALSE(utf8ToUtf16(bytes).has_value()) << bytes;
  }
}

TEST(Utf, UnpairedSurrogatesBecomeReplacementCharacters) {
  const char16_t high[] = {u'a', 0xD83D, u'b', 0};
  const char16_t low[] = {0xDDFA, 0};
  EXPECT_EQ(utf16ToUtf8(high), "a\xEF\xBF\xBD" "b");
  EXPECT_EQ(utf16ToUtf8(low), "\xEF\xBF\xBD");
}

}  // namespace
TEST(Utf, ValidTextConvertsBothWaysUpToTheLastCodePoint) {
  for (const std::u16string_view text : {u"", u"Орвел", u"\U0001F5FA", u"\uFFFD\U0010FFFF"}) {
    EXPECT_TRUE(isValidUtf8(utf16ToUtf8(text)));
    EXPECT_EQ(utf8ToUtf16(utf16ToUtf8(text)), std::u16string(text));
  }
  EXPECT_EQ(utf16ToUtf8(u"\U0001F5FA"), "\xF0\x9F\x97\xBA");
}

}  // namespace orvel
