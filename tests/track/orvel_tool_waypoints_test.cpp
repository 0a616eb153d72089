// orvel-tool waypoints, run as a program on files written here.
#include <gtest/gtest.h>

#include <fstream>

#include "common/test_data.h"
#include "common/tool_run.h"
#include "gps/ole_date.h"
#include "track/waypoint_file.h"

namespace orvel::test {
namespace {

ToolRun runTool(const std::string& args) { return runProgram(ORVEL_TOOL_PATH, args); }

std::string quoted(const char* command, const std::filesystem::path& file) {
  std::string args(command);
  args.append(" '").append(file.string()).append("'");
  return args;
}

TEST(OrvelToolWaypoints, ListsTheFileInItsOrder) {
  const auto dir = scratchDir("tool-waypoints");
  std::string bytes = waypointFileHeader();
  Waypoint a;
  a.lat = 665543338;
  a.lon = -443800000;
  a.altitude = 152.37f;
  a.time = 38173.5;
  a.strings = {u"Дом", u"вход со двора", u"", u""};
  Waypoint b;
  b.lat = -404470000;
  b.strings = {u"002", u"", u"", u""};
  appendWaypointRecord(bytes, a);
  appendWaypointRecord(bytes, b);
  std::ofstream(dir / "Waypoints.bin", std::ios::binary) << bytes;

  const ToolRun run = runTool(quoted("waypoints", dir / "Waypoints.bin"));
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out,
            "Дом\t55.785198\t-37.198886\t152.4\t2004-07-05T12:00:00Z\tвход со двора\n"
            "002\t-33.902284\t0.000000\t0.0\t-\t\n");
}

}  // namespace
}  // namespace orvel::test
