#include "geo/coords.h"

#include <cstdio>

#include "geo/units.h"

namespace orvel {
namespace {

// The formats below are UTF-8; their only non-ASCII character is the degree sign.
std::u16string fromUtf8(const char* text) {
  std::u16string out;
  for (const auto* p = reinterpret_cast<const unsigned char*>(text); *p != 0;) {
    if (*p < 0x80) {
      out += static_cast<char16_t>(*p++);
    } else if ((*p & 0xE0) == 0xC0 && (p[1] & 0xC0) == 0x80) {
      out += static_cast<char16_t>(((p[0] & 0x1F) << 6) | (p[1] & 0x3F));
      p += 2;
    } else {
      ++p;  // not produced by our formats
    }
  }
  return out;
}

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

const char16_t* skipWhite(const char16_t* p, const char16_t* end) {
  while (p != end && (*p == u' ' || *p == u'\t' || *p == u'\n' || *p == u'\r')) ++p;
  return p;
}

}  // namespace

std::u16string formatLatitude(float degrees, uint32_t notation) {
  return formatCoordinate(degrees, u'N', u'S', notation);
}

std::u16string formatLongitude(float degrees, uint32_t notation) {
  return formatCoordinate(degrees, u'E', u'W', notation);
}

// Minutes and seconds are left to printf's rounding and never carried: 59.9999 minutes prints
// as 60.000.
std::u16string formatCoordinate(float v, char16_t positive, char16_t negative, uint32_t notation) {
  char text[64];
  if (notation == static_cast<uint32_t>(CoordNotation::Decimal)) {
    std::snprintf(text, sizeof text, "%.5f", static_cast<double>(v));
    return fromUtf8(text);
  }
  int letter = static_cast<char>(positive);
  if (v < 0) {
    letter = static_cast<char>(negative);
    v = -v;
  }
  switch (static_cast<CoordNotation>(notation)) {
    case CoordNotation::LetterDecimal:
      std::snprintf(text, sizeof text, " %c%.5f°", letter, static_cast<double>(v));
      return fromUtf8(text);
    case CoordNotation::DegreesMinutes: {
      const int32_t d = floorToInt(v);
      const float m = (v - static_cast<float>(d)) * 60.0f;
      std::snprintf(text, sizeof text, "%c%d°%06.3f'", letter, static_cast<int>(d),
                    static_cast<double>(m));
      return fromUtf8(text);
    }
    case CoordNotation::DegreesMinutesSeconds: {
      const int32_t d = floorToInt(v);
      const float m = (v - static_cast<float>(d)) * 60.0f;
      const int32_t mi = floorToInt(m);
      const float s = (m - static_cast<float>(mi)) * 60.0f;
      std::snprintf(text, sizeof text, "%c%d°%02d'%04.1f\"", letter, static_cast<int>(d),
                    static_cast<int>(mi), static_cast<double>(s));
      return fromUtf8(text);
    }
    default:
      return {};
  }
}

bool parseDecimal(const char16_t* begin, const char16_t* end, const char16_t** after, float* value) {
  const char16_t* p = begin;
  while (p != end && *p == u' ') ++p;
  if (p == end) return false;
  bool negative = false;
  if (*p == u'-' || *p == u'+') negative = *p++ == u'-';

  bool found = false;
  float v = 0.0f;
  for (; p != end && isDigit(*p); ++p) {
    v = v * 10.0f + static_cast<float>(*p - u'0');
    found = true;
  }
  const char16_t* last = p;
  if (p != end && *p == u'.') {
    ++p;
    float weight = 0.1f;
    for (; p != end && isDigit(*p); ++p) {
      v = v + static_cast<float>(*p - u'0') * weight;
      weight = weight * 0.1f;
      found = true;
      last = p + 1;
    }
  }
  if (!found) return false;
  *after = last;
  *value = negative ? -v : v;
  return true;
}

// The position handed back is behind the last part consumed: a number, or the degree, minute
// or seconds sign that follows one.
bool parseCoordinate(const char16_t* begin, const char16_t* end, const char16_t** after,
                     float* degrees) {
  const char16_t* p = begin;
  while (p != end && (*p == u' ' || *p == u'\t')) ++p;
  bool negative = false;
  if (p != end) {
    switch (*p) {
      case u'N': case u'E': case u'+': ++p; break;
      case u'S': case u'W': case u'-': negative = true; ++p; break;
      default: break;
    }
  }

  float deg = 0.0f;
  const char16_t* stop = nullptr;
  if (!parseDecimal(p, end, &stop, &deg)) return false;

  float minutes = 0.0f;
  float seconds = 0.0f;
  p = skipWhite(stop, end);
  if (p != end && (*p == u'°' || *p == u'*')) {
    stop = p + 1;
    if (parseDecimal(stop, end, &stop, &minutes)) {
      p = skipWhite(stop, end);
      if (p != end && *p == u'\'') {
        stop = p + 1;
        if (parseDecimal(stop, end, &stop, &seconds)) {
          p = skipWhite(stop, end);
          if (p != end && *p == u'"') stop = p + 1;
        }
      }
    }
  }

  float result = seconds * 0.00027777778f + minutes * 0.016666668f + deg;
  if (negative) result = -result;
  *after = stop;
  *degrees = result;
  return true;
}

}  // namespace orvel
