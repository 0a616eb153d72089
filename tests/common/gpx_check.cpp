#include "common/gpx_check.h"

#include <cstdio>
#include <sstream>

#include "common/test_data.h"
#include "common/tool_run.h"

namespace orvel::test {
namespace {

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

size_t occurrences(const std::string& text, const std::string& what) {
  size_t count = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
  return count;
}

// One CSV line into its fields; double quotes enclose fields that hold commas.
std::vector<std::string> csvFields(const std::string& line) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (char c : line) {
    if (c == '\r') continue;  // gpsbabel ends its lines with CR LF
    if (c == '"') {
      quoted = !quoted;
    } else if (c == ',' && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

// "YYYY/MM/DD" and "hh:mm:ss[.fff]" in UTC.
std::optional<double> unixTime(const std::string& date, const std::string& time) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0;
  double s = 0;
  if (std::sscanf(date.c_str(), "%d/%d/%d", &y, &mo, &d) != 3) return std::nullopt;
  if (std::sscanf(time.c_str(), "%d:%d:%lf", &h, &mi, &s) != 3) return std::nullopt;
  // Days from civil (proleptic Gregorian).
  y -= mo <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const long yoe = y - era * 400;
  const long doy = (153 * (mo + (mo > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const long days = era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy - 719468;
  return days * 86400.0 + h * 3600.0 + mi * 60.0 + s;
}

}  // namespace

std::optional<BabelCounts> gpsbabelCounts(const std::filesystem::path& gpx, std::string& error) {
  const ToolRun run = runProgram("gpsbabel", "-i gpx -f " + quoted(gpx) + " -o gpx,gpxver=1.1 -F -");
  if (run.exitCode != 0) {
    error = "gpsbabel exit " + std::to_string(run.exitCode) + ": " + run.err;
    return std::nullopt;
  }
  BabelCounts counts;
  counts.tracks = occurrences(run.out, "<trk>");
  counts.segments = occurrences(run.out, "<trkseg>");
  counts.trackPoints = occurrences(run.out, "<trkpt ");
  counts.routes = occurrences(run.out, "<rte>");
  counts.routePoints = occurrences(run.out, "<rtept ");
  counts.waypoints = occurrences(run.out, "<wpt ");
  return counts;
}

std::optional<std::vector<BabelPoint>> gpsbabelPoints(const std::filesystem::path& gpx, char kind,
                                                      std::string& error) {
  const ToolRun run = runProgram("gpsbabel", std::string("-") + kind + " -i gpx -f " + quoted(gpx) +
                                                 " -o unicsv,utc=0 -F -");
  if (run.exitCode != 0) {
    error = "gpsbabel exit " + std::to_string(run.exitCode) + ": " + run.err;
    return std::nullopt;
  }
  std::vector<BabelPoint> points;
  std::istringstream lines(run.out);
  std::string line;
  if (!std::getline(lines, line)) return points;  // nothing of this kind
  const std::vector<std::string> header = csvFields(line);
  const auto column = [&header](const std::string& name) {
    for (size_t i = 0; i < header.size(); ++i) {
      if (header[i] == name) return i;
    }
    return header.size();
  };
  const size_t lat = column("Latitude"), lon = column("Longitude"), date = column("Date"), time = column("Time");
  while (std::getline(lines, line)) {
    if (line.empty() || line == "\r") continue;
    const std::vector<std::string> fields = csvFields(line);
    if (lat >= fields.size() || lon >= fields.size()) {
      error = "gpsbabel line without a position: " + line;
      return std::nullopt;
    }
    BabelPoint point{std::stod(fields[lat]), std::stod(fields[lon]), std::nullopt};
    if (date < fields.size() && time < fields.size()) point.time = unixTime(fields[date], fields[time]);
    points.push_back(point);
  }
  return points;
}

bool validGpx11(const std::filesystem::path& gpx, std::string& output) {
  const std::filesystem::path schema = dataFile("gpx/gpx-1.1.xsd");
  if (schema.empty()) {
    output = "no gpx/gpx-1.1.xsd in the test data";
    return false;
  }
  const ToolRun run = runProgram("xmllint", "--noout --schema " + quoted(schema) + " " + quoted(gpx));
  output = run.err + run.out;
  return run.exitCode == 0;
}

}  // namespace orvel::test
