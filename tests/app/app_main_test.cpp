// The whole start-up and shutdown in this process, ended by the exit command.
#include <sys/stat.h>

#include <cstdlib>

#include "app/app.h"
#include "common/test_data.h"
#include "pages/commands.h"
#include "shell_fixture.h"
#include "track/waypoints.h"

namespace orvel::test {
namespace {

using AppMainTest = ShellTest;

TEST_F(AppMainTest, OpensTheCommandLineMapBeforeTheFirstCompositionAndEndsWithZero) {
  const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
  const std::string dir = scratch.string();
  std::filesystem::create_directories(scratch / "runtime");
  ::chmod((scratch / "runtime").c_str(), 0700);
  ::setenv("ORVEL_CONFIG_FILE", (dir + "/GisOrvel.conf").c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", (dir + "/runtime").c_str(), 1);
  ::setenv("XDG_DATA_HOME", (dir + "/share").c_str(), 1);
  ::setenv("ORVEL_DATA_DIR", (dir + "/data").c_str(), 1);

  bool mapOpenAtFirstComposition = false;
  uint64_t compositions = 0;
  const int status = appMain({QString::fromStdString(map.string())}, [&](Session& running, MainWindow& shown) {
    mapOpenAtFirstComposition = running.map.currentMap() != nullptr;
    compositions = shown.pages().mapPage().compositionCount();
    shown.onCommand(kCmdExit);
  });
  for (const char* name : {"ORVEL_CONFIG_FILE", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "ORVEL_DATA_DIR"}) {
    ::unsetenv(name);
  }

  EXPECT_EQ(status, 0);
  EXPECT_TRUE(mapOpenAtFirstComposition);
  EXPECT_EQ(compositions, 1u);
  EXPECT_TRUE(std::filesystem::exists(scratch / "data" / "Tracks.bin"));
}

}  // namespace
}  // namespace orvel::test
