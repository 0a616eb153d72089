// orvel-tool waypoints FILE
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "core/utf.h"
#include "commands.h"
#include "gps/ole_date.h"
#include "track/waypoint_file.h"

namespace orvel::tool {
namespace {

constexpr double kDegreesPerSemicircle = 180.0 / 2147483648.0;

// One field of the tab-separated line: UTF-8, with tabs and line breaks as blanks.
std::string field(std::u16string_view text) {
  std::string bytes = utf16ToUtf8(text.substr(0, text.find(u'\0')));
  for (char& c : bytes) {
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  }
  return bytes;
}

bool readAll(const char* path, std::vector<uint8_t>& bytes) {
  std::FILE* file = std::fopen(path, "rb");
  if (!file) return false;
  uint8_t chunk[65536];
  size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.insert(bytes.end(), chunk, chunk + got);
  const bool ok = !std::ferror(file);
  std::fclose(file);
  return ok;
}

}  // namespace

int runWaypoints(std::span<const char* const> args) {
  if (args.empty()) return usageError("waypoints", "missing FILE (try --help)");
  if (args.size() > 1) return usageError("waypoints", "too many arguments (try --help)");

  std::vector<uint8_t> bytes;
  if (!readAll(args[0], bytes)) {
    std::fprintf(stderr, "orvel-tool waypoints: cannot read %s: %s\n", args[0], std::strerror(errno));
    return kExitFailed;
  }
  std::vector<Waypoint> records;
  const bool whole = parseWaypointFile(bytes, records);
  for (const Waypoint& w : records) {
    const std::string time = w.time != 0.0 ? formatIso8601Utc(w.time) : std::string();
    std::printf("%s\t%.6f\t%.6f\t%.1f\t%s\t%s\n", field(w.strings[kWaypointName]).c_str(),
                w.lat * kDegreesPerSemicircle, w.lon * kDegreesPerSemicircle, static_cast<double>(w.altitude),
                time.empty() ? "-" : time.c_str(), field(w.strings[kWaypointComment]).c_str());
  }
  if (!whole) {
    std::fprintf(stderr, "orvel-tool waypoints: %s: Waypoint data are damaged.\n", args[0]);
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace orvel::tool
