#include "gps/fix_text.h"

#include <cstdarg>
#include <cstdio>

#include "gps/ole_date.h"

namespace orvel {
namespace {

void appendf(std::string& out, const char* format, ...) __attribute__((format(printf, 2, 3)));
void appendf(std::string& out, const char* format, ...) {
  char text[96];
  va_list args;
  va_start(args, format);
  const int n = std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  if (n > 0) out.append(text, static_cast<size_t>(n) < sizeof text ? static_cast<size_t>(n) : sizeof text - 1);
}

}  // namespace

std::string formatFixLine(const GpsFix& fix) {
  std::string line;
  if (fix.has(kFixTime)) {
    const std::string time = formatIso8601Utc(fix.time);
    appendf(line, "time=%s ", time.empty() ? "invalid" : time.c_str());
  }
  if (fix.has(kFixPosition)) {
    appendf(line, "lat=%.7f lon=%.7f ", static_cast<double>(fix.latitude), static_cast<double>(fix.longitude));
  }
  if (fix.has(kFixAltitude)) appendf(line, "alt=%.1f ", static_cast<double>(fix.altitude));
  if (fix.has(kFixSpeed)) appendf(line, "speed=%.2f ", static_cast<double>(fix.speed));
  if (fix.has(kFixCourse)) appendf(line, "course=%.2f ", static_cast<double>(fix.course));
  if (fix.has(kFixHdop)) appendf(line, "hdop=%.2f ", static_cast<double>(fix.hdop));
  if (fix.has(kFixVdop)) appendf(line, "vdop=%.2f ", static_cast<double>(fix.vdop));
  if (fix.has(kFixSatellitesUsed)) appendf(line, "sats=%u ", fix.satellitesUsed);
  if (fix.has(kFixType)) {
    const std::string name(fixTypeName(fix.fixType));
    appendf(line, name.find(' ') == std::string::npos ? "fix=%s " : "fix=\"%s\" ", name.c_str());
  }
  appendf(line, "flags=0x%04x", fix.flags);
  return line;
}

std::string formatSatellitesLine(std::span<const SatelliteInfo> satellites) {
  std::string line = "sats:";
  for (const SatelliteInfo& s : satellites) {
    if (s.prn == 0 && s.elevation == 0 && s.azimuth == 0 && s.snr == 0) continue;
    appendf(line, " %u/%u/%u/%u", s.prn, s.elevation, s.azimuth, s.snr);
  }
  return line;
}

}  // namespace orvel
