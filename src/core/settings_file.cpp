#include "core/settings_file.h"

#include <algorithm>

#include "core/utf.h"

namespace orvel {
namespace {

constexpr std::string_view kDword = "dword";
constexpr std::string_view kString = "string";

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isNamed(const SettingsLine& line) {
  return line.kind == SettingsLine::Kind::Dword || line.kind == SettingsLine::Kind::String;
}

bool sameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
}

std::optional<uint32_t> parseDigits(std::string_view digits, unsigned base) {
  if (digits.empty()) return std::nullopt;
  uint64_t value = 0;
  for (const char c : digits) {
    unsigned digit;
    if (c >= '0' && c <= '9') {
      digit = static_cast<unsigned>(c - '0');
    } else if (base == 16 && lowerAscii(c) >= 'a' && lowerAscii(c) <= 'f') {
      digit = static_cast<unsigned>(lowerAscii(c) - 'a' + 10);
    } else {
      return std::nullopt;
    }
    value = value * base + digit;
    if (value > 0xFFFFFFFFu) return std::nullopt;
  }
  return static_cast<uint32_t>(value);
}

std::optional<std::u16string> unescape(std::string_view value) {
  std::string bytes;
  bytes.reserve(value.size());
  for (size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '\\') {
      if (++i == value.size()) return std::nullopt;
      switch (value[i]) {
        case '\\': bytes.push_back('\\'); break;
        case 'n': bytes.push_back('\n'); break;
        case 'r': bytes.push_back('\r'); break;
        default: return std::nullopt;
      }
    } else if (c == '\0' || c == '\r') {
      return std::nullopt;  // never written raw: binary junk
    } else {
      bytes.push_back(c);
    }
  }
  return utf8ToUtf16(bytes);
}

std::string escape(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (const char c : bytes) {
    switch (c) {
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      default: out.push_back(c);
    }
  }
  return out;
}

SettingsLine parseLine(std::string_view raw) {
  SettingsLine line;
  line.raw = std::string(raw);
  const bool blank = std::ranges::all_of(raw, [](char c) { return c == ' ' || c == '\t'; });
  if (blank || raw.front() == '#') {
    // A carriage return left in a comment would lose one more of its kind at every rewrite
    // (the one before the line break is taken for another system's line end).
    const bool clean = std::ranges::find(raw, '\0') == raw.end() && std::ranges::find(raw, '\r') == raw.end() &&
                       isValidUtf8(raw);
    line.kind = clean ? SettingsLine::Kind::Other : SettingsLine::Kind::Bad;
    return line;
  }
  line.kind = SettingsLine::Kind::Bad;
  const size_t nameEnd = raw.find(' ');
  if (nameEnd == std::string_view::npos || !isValidSettingName(raw.substr(0, nameEnd))) return line;
  line.name = std::string(raw.substr(0, nameEnd));
  const std::string_view rest = raw.substr(nameEnd + 1);
  const size_t typeEnd = rest.find(' ');
  const std::string_view type = rest.substr(0, typeEnd);
  const std::string_view value = typeEnd == std::string_view::npos ? std::string_view{} : rest.substr(typeEnd + 1);
  if (type == kDword) {
    if (const auto number = parseDword(value)) {
      line.kind = SettingsLine::Kind::Dword;
      line.number = *number;
    }
  } else if (type == kString) {
    if (auto text = unescape(value)) {
      line.kind = SettingsLine::Kind::String;
      line.text = std::move(*text);
    }
  }
  return line;
}

}  // namespace

bool isValidSettingName(std::string_view name) {
  if (name.empty() || name.front() == '#') return false;
  return std::ranges::all_of(name, [](char c) { return c > ' ' && c <= '~'; });
}

std::optional<int32_t> parseDword(std::string_view text) {
  if (text.size() > 2 && text[0] == '0' && lowerAscii(text[1]) == 'x') {
    const auto bits = parseDigits(text.substr(2), 16);
    if (!bits) return std::nullopt;
    return static_cast<int32_t>(*bits);
  }
  const bool negative = !text.empty() && text.front() == '-';
  const auto magnitude = parseDigits(negative ? text.substr(1) : text, 10);
  if (!magnitude) return std::nullopt;
  if (negative) {
    if (*magnitude > 0x80000000u) return std::nullopt;
    return static_cast<int32_t>(-static_cast<int64_t>(*magnitude));
  }
  if (*magnitude > 0x7FFFFFFFu) return std::nullopt;
  return static_cast<int32_t>(*magnitude);
}

SettingsContent parseSettings(std::string_view bytes) {
  SettingsContent content;
  while (!bytes.empty()) {
    const size_t end = bytes.find('\n');
    std::string_view raw = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);  // edited on another system
    SettingsLine line = parseLine(raw);
    if (isNamed(line) && findSetting(content, line.name)) line.kind = SettingsLine::Kind::Bad;
    if (line.kind == SettingsLine::Kind::Bad) content.damaged = true;
    content.lines.push_back(std::move(line));
  }
  return content;
}

std::string formatSettings(const SettingsContent& content) {
  std::string out;
  for (const SettingsLine& line : content.lines) {
    if (line.kind == SettingsLine::Kind::Bad) continue;
    out += line.raw;
    out += '\n';
  }
  return out;
}

SettingsLine makeDwordLine(std::string_view name, int32_t value) {
  SettingsLine line;
  line.kind = SettingsLine::Kind::Dword;
  line.name = std::string(name);
  line.number = value;
  line.raw = line.name + " " + std::string(kDword) + " " + std::to_string(value);
  return line;
}

SettingsLine makeStringLine(std::string_view name, std::u16string_view text) {
  SettingsLine line;
  line.kind = SettingsLine::Kind::String;
  line.name = std::string(name);
  line.text = std::u16string(text.substr(0, text.find(u'\0')));
  line.raw = line.name + " " + std::string(kString) + " " + escape(utf16ToUtf8(line.text));
  return line;
}

const SettingsLine* findSetting(const SettingsContent& content, std::string_view name) {
  for (const SettingsLine& line : content.lines) {
    if (isNamed(line) && sameName(line.name, name)) return &line;
  }
  return nullptr;
}

void putSetting(SettingsContent& content, SettingsLine line) {
  for (SettingsLine& existing : content.lines) {
    if (isNamed(existing) && sameName(existing.name, line.name)) {
      existing = std::move(line);
      return;
    }
  }
  content.lines.push_back(std::move(line));
}

}  // namespace orvel
