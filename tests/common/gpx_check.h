#pragma once
// What independent programs make of a GPX file: gpsbabel's reading (counts and points) and
// xmllint's validation against the published GPX 1.1 schema in the shared data. Both are
// Debian packages that scripts/setup installs; a missing one makes the checks fail.
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvel::test {

struct BabelCounts {
  size_t tracks = 0;
  size_t segments = 0;
  size_t trackPoints = 0;
  size_t routes = 0;
  size_t routePoints = 0;
  size_t waypoints = 0;
  friend bool operator==(const BabelCounts&, const BabelCounts&) = default;
};

struct BabelPoint {
  double latitude = 0.0;
  double longitude = 0.0;
  std::optional<double> time;  // seconds since 1970 UTC
};

// gpsbabel reads the file as GPX and writes it back as GPX 1.1; its elements are counted.
// Empty when gpsbabel fails (`error` then holds its exit code and messages).
std::optional<BabelCounts> gpsbabelCounts(const std::filesystem::path& gpx, std::string& error);

// The track points ('t'), route points ('r') or waypoints ('w') gpsbabel reads, in order,
// through its unicsv output (six decimals of a degree, times in UTC).
std::optional<std::vector<BabelPoint>> gpsbabelPoints(const std::filesystem::path& gpx, char kind,
                                                      std::string& error);

// True when xmllint finds the file valid against gpx/gpx-1.1.xsd; `output` holds what it said.
bool validGpx11(const std::filesystem::path& gpx, std::string& output);

}  // namespace orvel::test
