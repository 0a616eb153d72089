#include "gps/gpsd_json.h"

#include <charconv>
#include <cmath>

namespace orvel {
namespace {

constexpr int kMaxDepth = 32;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

void skipBlanks(std::string_view text, size_t& i) {
  while (i < text.size() && isBlank(text[i])) ++i;
}

// Moves `i` past the string that starts at it (a '"'); false when it never ends.
bool skipString(std::string_view text, size_t& i) {
  for (++i; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      ++i;
      return true;
    }
  }
  return false;
}

// Moves `i` past the value that starts at it; false for a malformed or unfinished value.
bool skipValue(std::string_view text, size_t& i) {
  if (i >= text.size()) return false;
  const char c = text[i];
  if (c == '"') return skipString(text, i);
  if (c == '{' || c == '[') {
    int depth = 0;
    while (i < text.size()) {
      const char d = text[i];
      if (d == '"') {
        if (!skipString(text, i)) return false;
        continue;
      }
      if (d == '{' || d == '[') {
        if (++depth > kMaxDepth) return false;
      } else if (d == '}' || d == ']') {
        if (--depth == 0) {
          ++i;
          return true;
        }
      }
      ++i;
    }
    return false;
  }
  const size_t start = i;
  while (i < text.size() && text[i] != ',' && text[i] != '}' && text[i] != ']' && !isBlank(text[i])) ++i;
  return i > start;
}

}  // namespace

std::optional<std::string_view> jsonValue(std::string_view object, std::string_view key) {
  size_t i = 0;
  skipBlanks(object, i);
  if (i >= object.size() || object[i] != '{') return std::nullopt;
  ++i;
  skipBlanks(object, i);
  if (i < object.size() && object[i] == '}') return std::nullopt;
  // The whole object is walked: a value is only trusted in an object that is complete.
  std::optional<std::string_view> found;
  for (;;) {
    skipBlanks(object, i);
    if (i >= object.size() || object[i] != '"') return std::nullopt;
    const size_t nameStart = i + 1;
    if (!skipString(object, i)) return std::nullopt;
    const std::string_view name = object.substr(nameStart, i - 1 - nameStart);
    skipBlanks(object, i);
    if (i >= object.size() || object[i] != ':') return std::nullopt;
    ++i;
    skipBlanks(object, i);
    const size_t valueStart = i;
    if (!skipValue(object, i)) return std::nullopt;
    if (name == key && !found) found = object.substr(valueStart, i - valueStart);
    skipBlanks(object, i);
    if (i < object.size() && object[i] == '}') return found;
    if (i >= object.size() || object[i] != ',') return std::nullopt;
    ++i;
  }
}

std::optional<double> jsonNumber(std::string_view object, std::string_view key) {
  const auto raw = jsonValue(object, key);
  if (!raw || raw->empty()) return std::nullopt;
  double value = 0;
  const char* first = raw->data();
  const char* last = first + raw->size();
  const auto [end, ec] = std::from_chars(first, last, value);
  if (ec != std::errc() || end != last || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<std::string> jsonString(std::string_view object, std::string_view key) {
  const auto raw = jsonValue(object, key);
  if (!raw || raw->size() < 2 || raw->front() != '"') return std::nullopt;
  const std::string_view body = raw->substr(1, raw->size() - 2);
  std::string out;
  for (size_t i = 0; i < body.size(); ++i) {
    if (body[i] != '\\' || i + 1 >= body.size()) {
      out += body[i];
      continue;
    }
    const char e = body[++i];
    switch (e) {
      case 'n': out += '\n'; break;
      case 't': out += '\t'; break;
      case 'r': out += '\r'; break;
      case 'b': out += '\b'; break;
      case 'f': out += '\f'; break;
      case 'u': {
        unsigned code = 0;
        const std::string_view hex = body.substr(i + 1, 4);
        const auto [end, ec] = std::from_chars(hex.data(), hex.data() + hex.size(), code, 16);
        const bool ok = hex.size() == 4 && ec == std::errc() && end == hex.data() + 4;
        out += ok && code < 0x80 ? static_cast<char>(code) : '?';
        if (ok) i += 4;
        break;
      }
      default: out += e; break;
    }
  }
  return out;
}

std::optional<bool> jsonBool(std::string_view object, std::string_view key) {
  const auto raw = jsonValue(object, key);
  if (raw == "true") return true;
  if (raw == "false") return false;
  return std::nullopt;
}

std::vector<std::string_view> jsonObjects(std::string_view array) {
  std::vector<std::string_view> out;
  size_t i = 0;
  skipBlanks(array, i);
  if (i >= array.size() || array[i] != '[') return out;
  ++i;
  for (;;) {
    skipBlanks(array, i);
    if (i >= array.size() || array[i] == ']') return out;
    const size_t start = i;
    if (!skipValue(array, i)) return out;
    if (array[start] == '{') out.push_back(array.substr(start, i - start));
    skipBlanks(array, i);
    if (i >= array.size() || array[i] != ',') return out;
    ++i;
  }
}

}  // namespace orvel
