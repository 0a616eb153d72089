#pragma once
// Reading MapSource (.mps) files: the records in order and the tracks with their points.
// Strict, as a file to convert must be whole: a length that runs past the end, a point count
// that disagrees with its record's length, or bytes after the end record make the file
// unreadable. Records of other kinds (waypoints, routes, map sets) are listed and skipped.
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "track/mps_format.h"

namespace orvel {

struct MpsRecord {
  char type = 0;
  uint32_t length = 0;  // of the data after the type byte
  size_t offset = 0;    // of the length field
};

struct MpsTrack {
  std::string name;
  uint8_t display = 0;
  uint32_t colour = 0;
  std::vector<MpsPoint> points;
  std::span<const uint8_t> pointBytes;  // the points as stored, inside the bytes read
};

struct MpsFile {
  char version = 0;  // the "D" record's letter
  std::vector<MpsRecord> records;
  std::vector<MpsTrack> tracks;
  bool ended = false;  // the last record is the end record "V"
};

// With `cutShort`, also a run the writer never ended (killed): an empty file; or the last
// track record still holding a placeholder (length, count or both) and running to the end of
// the file, read up to its last whole point; no end record.
std::optional<MpsFile> readMpsFile(std::span<const uint8_t> bytes, bool cutShort = false);

}  // namespace orvel
