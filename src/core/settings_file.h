#pragma once
// The text of the settings file: one "name type value" line per setting, where type is
// "dword" (a signed 32-bit decimal, or 0x and up to 32 bits of hex) or "string" (the rest of
// the line after one space: UTF-8 with \\, \n and \r escaped). Blank lines and lines starting
// with '#' are kept as they are. Names are printable ASCII without spaces and are compared
// without regard to ASCII case, as registry value names are.
//
// A line that cannot be read (unknown type, malformed number, bad escape, invalid UTF-8, a
// control byte, a repeated name) marks the file damaged; the lines that can be read still
// count, so one bad line costs only its own setting.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvel {

struct SettingsLine {
  enum class Kind { Dword, String, Other, Bad };  // Other: blank line or comment
  Kind kind = Kind::Other;
  std::string name;  // Dword and String
  int32_t number = 0;
  std::u16string text;
  std::string raw;  // the line as read, without its line break
};

struct SettingsContent {
  std::vector<SettingsLine> lines;
  // Something in the file could not be read; it is kept aside before the file is rewritten.
  bool damaged = false;
};

bool isValidSettingName(std::string_view name);
std::optional<int32_t> parseDword(std::string_view text);

SettingsContent parseSettings(std::string_view bytes);
// Every line but the bad ones, each ended by '\n'.
std::string formatSettings(const SettingsContent& content);

SettingsLine makeDwordLine(std::string_view name, int32_t value);
// Text after a U+0000 is dropped, as a zero-terminated registry string would read back.
SettingsLine makeStringLine(std::string_view name, std::u16string_view text);

// The readable line of that name, or null.
const SettingsLine* findSetting(const SettingsContent& content, std::string_view name);
// Replaces the line of the same name in place, or appends the line.
void putSetting(SettingsContent& content, SettingsLine line);

}  // namespace orvel
