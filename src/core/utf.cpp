#include "core/utf.h"

#include <cstdint>

namespace orvel {
namespace {

// Decodes one code point at bytes[pos], advancing pos; nullopt when the sequence is invalid.
std::optional<char32_t> decodeOne(std::string_view bytes, size_t& pos) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(bytes[i]); };
  const uint8_t lead = byte(pos);
  if (lead < 0x80) {
    ++pos;
    return lead;
  }
  size_t length;
  char32_t value;
  char32_t minimum;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, value = lead & 0x1F, minimum = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, value = lead & 0x0F, minimum = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, value = lead & 0x07, minimum = 0x10000;
  } else {
    return std::nullopt;  // a continuation byte or 0xF8..0xFF where a character must start
  }
  if (length > bytes.size() - pos) return std::nullopt;
  for (size_t i = 1; i < length; ++i) {
    const uint8_t next = byte(pos + i);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    value = (value << 6) | (next & 0x3F);
  }
  if (value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return std::nullopt;
  pos += length;
  return value;
}

}  // namespace

std::optional<std::u16string> utf8ToUtf16(std::string_view bytes) {
  std::u16string text;
  text.reserve(bytes.size());
  for (size_t pos = 0; pos < bytes.size();) {
    const auto code = decodeOne(bytes, pos);
    if (!code) return std::nullopt;
    if (*code < 0x10000) {
      text.push_back(static_cast<char16_t>(*code));
    } else {
      const char32_t offset = *code - 0x10000;
      text.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
    }
  }
  return text;
}

bool isValidUtf8(std::string_view bytes) {
  for (size_t pos = 0; pos < bytes.size();) {
    if (!decodeOne(bytes, pos)) return false;
  }
  return true;
}

std::string utf16ToUtf8(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t code = text[i];
    if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (code >= 0xD800 && code <= 0xDFFF) {
      code = 0xFFFD;
    }
    if (code < 0x80) {
      bytes.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
      bytes.push_back(static_cast<char>(0xC0 | (code >> 6)));
      bytes.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
      bytes.push_back(static_cast<char>(0xE0 | (code >> 12)));
      bytes.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
      bytes.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
      bytes.push_back(static_cast<char>(0xF0 | (code >> 18)));
      bytes.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
      bytes.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
      bytes.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
  }
  return bytes;
}

}  // namespace orvel
