#include "common/gpx_check.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
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
  std::tm t{};
  double s = 0;
  if (std::sscanf(date.c_str(), "%d/%d/%d", &t.tm_year, &t.tm_mon, &t.tm_mday) != 3) return std::nullopt;
  if (std::sscanf(time.c_str(), "%d:%d:%lf", &t.tm_hour, &t.tm_min, &s) != 3) return std::nullopt;
  t.tm_year -= 1900, t.tm_mon -= 1;
  return static_cast<double>(timegm(&t)) + s;
}

// What gpsbabel prints with `args`; empty when it fails (`error` then says how).
std::optional<std::string> gpsbabel(const std::string& args, std::string& error) {
  const ToolRun run = runProgram("gpsbabel", args);
  if (run.exitCode == 0) return run.out;
  error = "gpsbabel exit " + std::to_string(run.exitCode) + ": " + run.err;
  return std::nullopt;
}

}  // namespace

std::optional<BabelCounts> gpsbabelCounts(const std::filesystem::path& gpx, std::string& error) {
  const auto out = gpsbabel("-i gpx -f " + quoted(gpx) + " -o gpx,gpxver=1.1 -F -", error);
  if (!out) return std::nullopt;
  return BabelCounts{occurrences(*out, "<trk>"),  occurrences(*out, "<trkseg>"), occurrences(*out, "<trkpt "),
                     occurrences(*out, "<rte>"),  occurrences(*out, "<rtept "),  occurrences(*out, "<wpt ")};
}

std::optional<std::vector<BabelPoint>> gpsbabelPoints(const std::filesystem::path& gpx, char kind,
                                                      std::string& error) {
  const auto out = gpsbabel(std::string("-") + kind + " -i gpx -f " + quoted(gpx) + " -o unicsv,utc=0 -F -", error);
  if (!out) return std::nullopt;
  std::vector<BabelPoint> points;
  std::istringstream lines(*out);
  std::string line;
  if (!std::getline(lines, line)) return points;  // nothing of this kind
  const std::vector<std::string> header = csvFields(line);
  const auto column = [&header](const std::string& name) {
    return static_cast<size_t>(std::ranges::find(header, name) - header.begin());
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
