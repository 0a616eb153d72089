#include "geo/coords.h"

#include <gtest/gtest.h>

#include <string>

namespace orvel {
namespace {

struct ParseCase {
  const char16_t* text;
  bool found;
  float value;
  size_t consumed;  // characters read
};

void checkParse(bool (*parse)(const char16_t*, const char16_t*, const char16_t**, float*),
                const ParseCase& c) {
  const std::u16string text = c.text;
  const char16_t* after = nullptr;
  float value = 1234.0f;
  SCOPED_TRACE(std::string(text.begin(), text.end()));  // a trace: non-ASCII cut to bytes
  ASSERT_EQ(parse(text.data(), text.data() + text.size(), &after, &value), c.found);
  if (!c.found) return;
  EXPECT_NEAR(value, c.value, 2e-6f * (1.0f + std::abs(c.value)));
  EXPECT_EQ(static_cast<size_t>(after - text.data()), c.consumed);
}

TEST(ParseDecimal, Cases) {
  const ParseCase cases[] = {
      {u".5", true, 0.5f, 2}, {u"-", false, 0, 0}, {u"", false, 0, 0}, {u"   ", false, 0, 0},
      {u"  42", true, 42.0f, 4},      // leading blanks skipped
      {u"\t42", false, 0, 0},         // ...but only blanks
      {u"+3", true, 3.0f, 2}, {u"-.25", true, -0.25f, 4},
      {u"5.", true, 5.0f, 1},         // stops after the last digit
      {u"1.2.3", true, 1.2f, 3},
      {u"12,5", true, 12.0f, 2},      // a comma is not a decimal point
      {u"007x", true, 7.0f, 3}, {u"- 5", false, 0, 0}, {u".", false, 0, 0}, {u"-0", true, 0.0f, 2},
      {u"1.05", true, 1.05f, 4},
  };
  for (const auto& c : cases) checkParse(parseDecimal, c);
}

TEST(ParseCoordinate, Cases) {
  const ParseCase cases[] = {
      {u"S33°52.5'", true, -33.875f, 9},
      {u"55 45", true, 55.0f, 2},  // minutes only after a degree sign
      {u"-0.5", true, -0.5f, 4}, {u"N 12.5", true, 12.5f, 6}, {u"W 37°37.038'", true, -37.6173f, 12},
      {u"E10*30", true, 10.5f, 6}, {u"N55°45'21\"", true, 55.755833f, 10}, {u" \t+7.25", true, 7.25f, 7},
      {u"33 ° 52.5 ' 30 \" rest", true, 33.8833333f, 16}, {u"33\r\n°52", true, 33.866667f, 7},
      {u"33°", true, 33.0f, 3},
      {u"33°52 30", true, 33.866667f, 5},  // seconds only after a minute sign
      {u"S-5", true, 5.0f, 3},             // the number's own sign is applied first
      {u"n12", false, 0, 0},               // lower-case letters are not hemispheres
      {u"", false, 0, 0}, {u"N", false, 0, 0}, {u"-", false, 0, 0}, {u"°5", false, 0, 0}, {u"12,5", true, 12.0f, 2},
  };
  for (const auto& c : cases) checkParse(parseCoordinate, c);
}

}  // namespace
}  // namespace orvel
