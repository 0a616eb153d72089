// libFuzzer target: any bytes as the settings file. What is read must survive the round
// trip every write makes (format, then parse): nothing readable is lost or changed, the
// rewritten file is clean, and a value written by the program into it reads back as written.
#include <cstddef>
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "core/settings_file.h"
#include "core/utf.h"
#include "fuzz_check.h"

namespace {

using namespace orvel;

bool sameValue(const SettingsLine& a, const SettingsLine& b) {
  return a.kind == b.kind && a.name == b.name && a.number == b.number && a.text == b.text;
}

// The settings of `content` that can be read, in order.
std::vector<const SettingsLine*> readable(const SettingsContent& content) {
  std::vector<const SettingsLine*> out;
  for (const SettingsLine& line : content.lines) {
    if (line.kind != SettingsLine::Kind::Bad) out.push_back(&line);
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  SettingsContent content = parseSettings(bytes);
  const std::string written = formatSettings(content);
  const SettingsContent reread = parseSettings(written);
  FUZZ_CHECK(!reread.damaged);
  const auto before = readable(content), after = readable(reread);
  FUZZ_CHECK(before.size() == after.size());
  for (size_t i = 0; i < before.size(); ++i) FUZZ_CHECK(sameValue(*before[i], *after[i]));
  FUZZ_CHECK(formatSettings(reread) == written);

  // The program's own writes into the same file: a number and a text under the first name
  // read (or a new one), each read back from the rewritten bytes. The text is the input's
  // first bytes taken as UTF-16 units; unpaired surrogates are stored as U+FFFD.
  std::string name = "Path";
  int32_t number = 1;
  for (const SettingsLine* line : before) {
    if (line->name.empty()) continue;
    name = line->name;
    number = static_cast<int32_t>(static_cast<uint32_t>(line->number) * 7u + 1u);
    break;
  }
  putSetting(content, makeDwordLine(name, number));
  const SettingsContent withNumber = parseSettings(formatSettings(content));
  const SettingsLine* asNumber = findSetting(withNumber, name);
  FUZZ_CHECK(!withNumber.damaged);
  FUZZ_CHECK(asNumber && asNumber->kind == SettingsLine::Kind::Dword && asNumber->number == number);

  std::u16string text(u"\\\n\r ");
  for (size_t i = 0; i + 1 < std::min<size_t>(size, 128); i += 2) {
    text += static_cast<char16_t>(data[i] | data[i + 1] << 8);
  }
  putSetting(content, makeStringLine(name, text));
  const SettingsContent withText = parseSettings(formatSettings(content));
  const SettingsLine* asText = findSetting(withText, name);
  const std::u16string stored = text.substr(0, text.find(u'\0'));
  FUZZ_CHECK(asText && asText->kind == SettingsLine::Kind::String &&
             asText->text == utf8ToUtf16(utf16ToUtf8(stored)).value_or(u"?"));
  return 0;
}
