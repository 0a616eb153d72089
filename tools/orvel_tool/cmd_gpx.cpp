// orvel-tool gpx IN -o OUT.gpx
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <QByteArray>

#include "commands.h"
#include "core/atomic_file.h"
#include "gpx/gpx_writer.h"
#include "track/active_track.h"
#include "track/gpx_export.h"
#include "track/mps_reader.h"
#include "track/waypoint_file.h"

namespace orvel::tool {
namespace {

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

int failed(const char* in, const char* reason) {
  std::fprintf(stderr, "orvel-tool gpx: %s: %s\n", in, reason);
  return kExitFailed;
}

// The file's contents in GPX terms, told by their first bytes (a Tracks.bin by its size).
// False with the reason when the file is damaged or of no kind known here.
bool convert(const std::vector<uint8_t>& bytes, GpxData& out, size_t& skippedRecords, const char*& reason) {
  const auto startsWith = [&bytes](std::string_view magic) {
    return bytes.size() >= magic.size() && std::memcmp(bytes.data(), magic.data(), magic.size()) == 0;
  };
  if (startsWith(std::string_view("MsRcd\0", 6))) {
    const std::optional<MpsFile> file = readMpsFile(bytes);
    if (!file) {
      reason = "damaged MapSource file (a record runs past the end or disagrees with its count)";
      return false;
    }
    for (const MpsRecord& record : file->records) {
      if (record.type != 'D' && record.type != 'A' && record.type != 'T' && record.type != 'V') ++skippedRecords;
    }
    out = gpxFromMps(*file);
    return true;
  }
  if (startsWith("WO")) {
    std::vector<Waypoint> waypoints;
    if (!parseWaypointFile(bytes, waypoints)) {
      reason = "Waypoint data are damaged.";
      return false;
    }
    for (const Waypoint& w : waypoints) out.waypoints.push_back(gpxWaypointOf(w));
    return true;
  }
  if (bytes.size() == kTrackFileSize) {
    std::vector<TrackPoint> points;
    if (!readTrackRing(bytes, points)) {
      reason = "damaged Tracks.bin (its header names no slot of the ring)";
      return false;
    }
    out = gpxFromTrackRing(points);
    return true;
  }
  reason = "not a MapSource .mps file, a Tracks.bin or a Waypoints.bin";
  return false;
}

}  // namespace

int runGpx(std::span<const char* const> args) {
  const char* in = nullptr;
  const char* out = nullptr;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "-o") {
      if (i + 1 >= args.size()) return usageError("gpx", "-o needs a value");
      out = args[++i];
    } else if (arg.size() > 1 && arg[0] == '-') {
      return usageError("gpx", "unknown option '" + std::string(arg) + "' (try --help)");
    } else if (in) {
      return usageError("gpx", "too many arguments (try --help)");
    } else {
      in = args[i];
    }
  }
  if (!in) return usageError("gpx", "missing IN (try --help)");
  if (!out) return usageError("gpx", "missing -o OUT.gpx (try --help)");

  std::vector<uint8_t> bytes;
  if (!readAll(in, bytes)) return failed(in, std::strerror(errno));
  GpxData data;
  size_t skipped = 0;
  const char* reason = "";
  if (!convert(bytes, data, skipped, reason)) return failed(in, reason);
  if (skipped > 0) {
    std::fprintf(stderr, "orvel-tool gpx: %s: %zu records other than tracks left out\n", in, skipped);
  }
  const QByteArray document = gpxDocument(data);
  errno = 0;
  if (!writeFileAtomically(out, std::string_view(document.constData(), size_t(document.size())))) {
    std::fprintf(stderr, "orvel-tool gpx: cannot write %s: %s\n", out, std::strerror(errno));
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace orvel::tool
