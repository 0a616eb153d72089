// What the viewer makes of its command line.
#include <gtest/gtest.h>

#include <QDir>

#include "app/app.h"
#include "common/tool_run.h"

namespace orvel::test {
namespace {

struct CommandLineCase {
  QStringList arguments;
  QString mapName;  // file name of the map taken, empty for none
  bool demo;
  QStringList gps;
  bool error;
};

TEST(CommandLine, ReadsMapDemoAndGpsSourcesAndRefusesWhatItCannotUse) {
  const CommandLineCase cases[] = {
      {{}, {}, false, {}, false}, {{"map.img"}, "map.img", false, {}, false}, {{"--demo"}, {}, true, {}, false},
      {{"--gps", "/dev/ttyUSB0", "map.orv"}, "map.orv", false, {"/dev/ttyUSB0"}, false},
      {{"--gps", "gpsd://localhost", "--gps", "/dev/pts/3"}, {}, false, {"gpsd://localhost", "/dev/pts/3"}, false},
      {{"a.img", "b.img"}, "a.img", false, {}, false},  // the first map wins
      {{"--gps"}, {}, false, {}, true}, {{"--zoom", "3"}, "3", false, {}, true},
  };
  for (const CommandLineCase& c : cases) {
    const CommandLine line = parseCommandLine(c.arguments);
    SCOPED_TRACE(c.arguments.join(' ').toStdString());
    EXPECT_EQ(line.mapPath.isEmpty() ? QString() : QFileInfo(line.mapPath).fileName(), c.mapName);
    if (!line.mapPath.isEmpty()) {
      EXPECT_TRUE(QDir::isAbsolutePath(line.mapPath));
    }
    EXPECT_EQ(line.demo, c.demo);
    EXPECT_EQ(line.gpsSources, c.gps);
    EXPECT_EQ(!line.error.isEmpty(), c.error);
  }
}

// Asked for help, the viewer answers on standard output and ends before opening a window.
TEST(CommandLine, HelpIsAnsweredWithoutAWindow) {
  for (const char* option : {"--help", "-h"}) {
    const ToolRun run = runProgram("timeout", std::string("20 '") + ORVEL_VIEWER_PATH + "' " + option);
    EXPECT_EQ(run.exitCode, 0) << option;
    EXPECT_TRUE(run.out.starts_with("usage: orvel ")) << option << ": " << run.out;
  }
}

}  // namespace
}  // namespace orvel::test
