// How each stored line reads, and what survives a round trip.

#include "settings_fixture.h"

namespace orvel::test {
namespace {

struct IntCase {
  const char* file;
  const char* name;
  int32_t fallback;
  int32_t expected;
};

TEST_F(SettingsStore, IntegersReadTheStoredValueOrTheDefault) {
  for (const IntCase& c : {
    IntCase{"", "Page", 0, 0},
    IntCase{"Page dword 2\n", "Page", 0, 2},
    IntCase{"Page dword 2", "Page", 0, 2},                     // no final line break
    IntCase{"Page dword 2\r\n", "Page", 0, 2},                 // edited on another system
    IntCase{"page dword 2\n", "Page", 0, 2},                   // names ignore ASCII case
    IntCase{"Page string 2\n", "Page", 7, 7},                  // a string is not a number
    IntCase{"Page qword 2\n", "Page", 7, 7},
    IntCase{"Page dword 2147483647\n", "Page", 0, INT32_MAX},
    IntCase{"Page dword -2147483648\n", "Page", 0, INT32_MIN},
    IntCase{"Page dword 2147483648\n", "Page", 7, 7},
    IntCase{"Page dword -2147483649\n", "Page", 7, 7},
    IntCase{"Page dword 4294967296\n", "Page", 7, 7},
    IntCase{"Page dword 0x7aF\n", "Page", 0, 0x7af},            // hex digits at both ends, either case
    IntCase{"Page dword 0XFFFFFFFF\n", "Page", 0, -1},
    IntCase{"Page dword 0x100000000\n", "Page", 7, 7},         // an 8-byte value
    IntCase{"Page dword 0x\n", "Page", 7, 7},
    IntCase{"Page dword 12abc\n", "Page", 7, 7},
    IntCase{"Page dword 1 \n", "Page", 7, 7},
    IntCase{"Page dword  1\n", "Page", 7, 7},
    IntCase{"Page dword +1\n", "Page", 7, 7},
    IntCase{"Page dword -\n", "Page", 7, 7},
    IntCase{"Page dword\n", "Page", 7, 7},
    IntCase{"Page dword \n", "Page", 7, 7},
    IntCase{"Page dword 1\nPage dword 2\n", "Page", 7, 1},     // a repeated name does not win
    IntCase{"# Page dword 2\n\nShowTrack dword 0\n", "Page", 7, 7},
    IntCase{"Pages dword 2\n", "Page", 7, 7}}) {
    store(c.file);
    EXPECT_EQ(readSettingInt(c.name, c.fallback), c.expected) << c.file;
  }
}


struct StringCase {
  const char* file;
  std::u16string_view expected;
};

TEST_F(SettingsStore, StringsReadTheStoredTextOrTheDefault) {
  for (const StringCase& c : {
    StringCase{"", u"speed"},
    StringCase{"Gauge_0 string elev\n", u"elev"},
    StringCase{"Gauge_0 string \n", u""},
    StringCase{"Gauge_0 string\n", u""},
    StringCase{"Gauge_0 string  two  spaces \n", u" two  spaces "},
    StringCase{"Gauge_0 string Высота\n", u"Высота"},
    StringCase{"Gauge_0 string a\\\\b\\nc\\rd\n", u"a\\b\nc\rd"},
    StringCase{"Gauge_0 dword 5\n", u"speed"},                 // a number is not a string
    StringCase{"Gauge_0 string a\\tb\n", u"speed"},            // unknown escape
    StringCase{"Gauge_0 string ab\\\n", u"speed"},             // escape cut off
    StringCase{"Gauge_0 string \xD0\n", u"speed"},             // UTF-8 cut off
    StringCase{"Gauge_0 string \xC0\xAF\n", u"speed"},         // overlong form
    StringCase{"Gauge_0 string a\rb\n", u"speed"}}) {
    store(c.file);
    EXPECT_EQ(readSettingString("Gauge_0", u"speed"), c.expected) << c.file;
  }
}

TEST_F(SettingsStore, WritesReplaceOneLineAndKeepTheRest) {
  store("# kept comment\nShowTrack dword 0\n\nGauge_3 string elev\n");
  writeSettingBool("ShowTrack", true);
  writeSettingString("Gauge_9", u"");
  EXPECT_EQ(stored(), "# kept comment\nShowTrack dword 1\n\nGauge_3 string elev\nGauge_9 string \n");
  EXPECT_FALSE(std::filesystem::exists(badCopy()));
}

struct CapacityCase {
  std::u16string_view stored;
  size_t capacity;
  std::u16string_view expected;
};

TEST_F(SettingsStore, TextsAreCutToTheCapacityInUtf16Units) {
  for (const CapacityCase& c : {
    CapacityCase{u"satellites", 32, u"satellites"},
    CapacityCase{u"satellites", 10, u"satellites"},
    CapacityCase{u"satellites", 3, u"sat"},
    CapacityCase{u"satellites", 0, u""},
    CapacityCase{u"Скорость", 4, u"Скор"},
    CapacityCase{u"a\U0001F5FAb", 2, u"a"},    // half a surrogate pair is dropped
    CapacityCase{u"a\U0001F5FAb", 3, u"a\U0001F5FA"}}) {
    writeSettingString("Gauge_1", c.stored);
    EXPECT_EQ(readSettingString("Gauge_1", u"x", c.capacity), c.expected);
  }
}

}  // namespace
TEST_F(SettingsStore, NamesThatCannotBeStoredAreIgnored) {
  for (const char* name : {"", "Two words", "Tab\tName", "#Comment", "Имя"}) {
    writeSettingInt(name, 5);
    EXPECT_EQ(readSettingInt(name, 7), 7) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(file_));
}

}  // namespace orvel::test
