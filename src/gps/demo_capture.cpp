#include "gps/demo_capture.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace orvel {
namespace {

constexpr double kPi = 3.14159265358979323846;

// Where a sentence keeps its latitude field (the longitude follows two fields later), or 0.
size_t latitudeField(std::string_view line) {
  if (line.size() < 7 || line[0] != '$' || line[6] != ',') return 0;
  const std::string_view type = line.substr(3, 3);
  if (type == "RMC") return 3;
  if (type == "GGA") return 2;
  if (type == "GLL") return 1;
  return 0;
}

std::vector<std::string> splitFields(std::string_view body) {
  std::vector<std::string> fields;
  size_t start = 0;
  for (;;) {
    const size_t comma = body.find(',', start);
    fields.emplace_back(body.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start));
    if (comma == std::string_view::npos) return fields;
    start = comma + 1;
  }
}

// "ddmm.mmmm" (latitude, 2 degree digits) or "dddmm.mmmm" (longitude, 3) with its hemisphere.
bool readAngle(const std::string& value, const std::string& hemisphere, size_t degreeDigits, double& out) {
  if (value.size() <= degreeDigits || hemisphere.empty()) return false;
  char* end = nullptr;
  const double degrees = std::strtod(value.substr(0, degreeDigits).c_str(), &end);
  const double minutes = std::strtod(value.c_str() + degreeDigits, &end);
  if (*end != '\0') return false;
  out = degrees + minutes / 60.0;
  if (hemisphere[0] == 'S' || hemisphere[0] == 'W') out = -out;
  return true;
}

void writeAngle(double angle, size_t degreeDigits, size_t decimals, std::string& value, std::string& hemisphere,
                bool latitude) {
  hemisphere = angle < 0 ? (latitude ? "S" : "W") : (latitude ? "N" : "E");
  angle = std::fabs(angle);
  int degrees = static_cast<int>(angle);
  double minutes = (angle - degrees) * 60.0;
  const double unit = std::pow(10.0, -static_cast<double>(decimals));
  if (minutes + unit / 2 >= 60.0) {
    ++degrees;
    minutes = 0;
  }
  char text[40];
  std::snprintf(text, sizeof text, "%0*d%0*.*f", static_cast<int>(degreeDigits), degrees,
                static_cast<int>(decimals + (decimals ? 3 : 2)), static_cast<int>(decimals), minutes);
  value = text;
}

size_t decimalsOf(const std::string& value) {
  const size_t dot = value.find('.');
  return dot == std::string::npos ? 0 : value.size() - dot - 1;
}

// The sentence's body ("$" to before "*" or the line end) and its tail ("*hh" and line end).
void splitLine(std::string_view line, std::string_view& body, std::string_view& tail, bool& checked) {
  const size_t star = line.find('*');
  size_t end = star;
  if (end == std::string_view::npos) {
    end = line.size();
    while (end > 0 && (line[end - 1] == '\r' || line[end - 1] == '\n')) --end;
  }
  body = line.substr(0, end);
  tail = line.substr(end);
  checked = star != std::string_view::npos;
}

}  // namespace

std::optional<GeoPoint> firstCapturePosition(std::span<const uint8_t> capture) {
  const std::string_view text(reinterpret_cast<const char*>(capture.data()), capture.size());
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find('\n', start);
    const std::string_view line = text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
    start = end == std::string_view::npos ? text.size() : end + 1;
    const size_t field = latitudeField(line);
    if (field == 0) continue;
    std::string_view body, tail;
    bool checked = false;
    splitLine(line, body, tail, checked);
    const std::vector<std::string> f = splitFields(body);
    GeoPoint p;
    if (f.size() > field + 3 && readAngle(f[field], f[field + 1], 2, p.latitude) &&
        readAngle(f[field + 2], f[field + 3], 3, p.longitude)) {
      return p;
    }
  }
  return std::nullopt;
}

std::string shiftSentence(std::string_view line, GeoPoint from, GeoPoint to) {
  const size_t field = latitudeField(line);
  if (field == 0) return std::string(line);
  std::string_view body, tail;
  bool checked = false;
  splitLine(line, body, tail, checked);
  std::vector<std::string> f = splitFields(body);
  GeoPoint p;
  if (f.size() <= field + 3 || !readAngle(f[field], f[field + 1], 2, p.latitude) ||
      !readAngle(f[field + 2], f[field + 3], 3, p.longitude)) {
    return std::string(line);
  }
  const double scale = std::cos(from.latitude * kPi / 180) / std::cos(to.latitude * kPi / 180);
  const double latitude = to.latitude + (p.latitude - from.latitude);
  const double longitude = to.longitude + (p.longitude - from.longitude) * scale;
  writeAngle(latitude, 2, decimalsOf(f[field]), f[field], f[field + 1], true);
  writeAngle(longitude, 3, decimalsOf(f[field + 2]), f[field + 2], f[field + 3], false);

  std::string out = f[0];
  for (size_t i = 1; i < f.size(); ++i) out += "," + f[i];
  if (!checked) return out + std::string(tail);
  uint8_t sum = 0;
  for (size_t i = 1; i < out.size(); ++i) sum ^= static_cast<uint8_t>(out[i]);
  char hex[4];
  std::snprintf(hex, sizeof hex, "*%02X", sum);
  // The tail was "*hh" and the line end; the old digits give way to the new ones.
  std::string_view rest = tail.substr(1);
  while (!rest.empty() && rest.front() != '\r' && rest.front() != '\n') rest.remove_prefix(1);
  return out + hex + std::string(rest);
}

std::vector<uint8_t> shiftCapturePositions(std::span<const uint8_t> capture, GeoPoint from, GeoPoint to) {
  const std::string_view text(reinterpret_cast<const char*>(capture.data()), capture.size());
  std::vector<uint8_t> out;
  out.reserve(capture.size());
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find('\n', start);
    const size_t next = end == std::string_view::npos ? text.size() : end + 1;
    const std::string shifted = shiftSentence(text.substr(start, next - start), from, to);
    out.insert(out.end(), shifted.begin(), shifted.end());
    start = next;
  }
  return out;
}

}  // namespace orvel
