#include "map/img/utf8_decoder.h"

#include "map/img/code_pages.h"

namespace orvel {

namespace {

// How many continuation bytes a lead byte takes and the range allowed for the first of
// them (narrower than 0x80-0xBF where that rules out overlong forms, surrogates and values
// above U+10FFFF). Zero continuation bytes: not a lead byte.
struct LeadByte {
  int continuations = 0;
  uint32_t bits = 0;
  uint8_t firstLow = 0x80;
  uint8_t firstHigh = 0xBF;
};

LeadByte classify(uint8_t b) {
  if (b >= 0xC2 && b <= 0xDF) return {1, b & 0x1Fu};
  if (b == 0xE0) return {2, 0, 0xA0, 0xBF};
  if (b == 0xED) return {2, 0x0D, 0x80, 0x9F};
  if (b >= 0xE1 && b <= 0xEF) return {2, b & 0x0Fu};
  if (b == 0xF0) return {3, 0, 0x90, 0xBF};
  if (b >= 0xF1 && b <= 0xF3) return {3, b & 0x07u};
  if (b == 0xF4) return {3, 4, 0x80, 0x8F};
  return {};
}

}  // namespace

int decodeUtf8(Bytes text, std::span<char16_t> out) {
  size_t in = 0;
  size_t count = 0;
  while (in < text.size() && count < out.size()) {
    const uint8_t b = text[in++];
    if (b < 0x80) {
      out[count++] = b;
      continue;
    }
    const LeadByte lead = classify(b);
    uint32_t code = lead.bits;
    bool complete = lead.continuations > 0;
    uint8_t low = lead.firstLow;
    uint8_t high = lead.firstHigh;
    for (int i = 0; i < lead.continuations; ++i) {
      if (in >= text.size() || text[in] < low || text[in] > high) {
        complete = false;  // the offending byte starts the next character
        break;
      }
      code = (code << 6) | (text[in++] & 0x3Fu);
      low = 0x80;
      high = 0xBF;
    }
    if (!complete) {
      out[count++] = kReplacementChar;
    } else if (code < 0x10000) {
      out[count++] = static_cast<char16_t>(code);
    } else {
      if (count + 2 > out.size()) break;
      code -= 0x10000;
      out[count++] = static_cast<char16_t>(0xD800 + (code >> 10));
      out[count++] = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
    }
  }
  return static_cast<int>(count);
}

}  // namespace orvel
