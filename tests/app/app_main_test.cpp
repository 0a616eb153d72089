// The whole start-up and shutdown in this process, ended by the exit command, with a
// receiver on a pseudo-terminal found by the reading thread meanwhile.
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include <QCoreApplication>

#include "app/app.h"
#include "common/test_data.h"
#include "core/utf.h"
#include "gps/pty_support.h"
#include "pages/commands.h"
#include "shell_fixture.h"
#include "track/waypoints.h"

namespace orvel::test {
namespace {

using AppMainTest = ShellTest;

TEST_F(AppMainTest, OpensTheCommandLineMapBeforeTheFirstCompositionAndEndsWithZero) {
  const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
  const std::filesystem::path capture = dataFile("gps/nmea/bu353s4.log");
  ASSERT_FALSE(map.empty() || capture.empty());
  PtyPair pty;
  ASSERT_TRUE(pty.ok());
  ReceiverThread receiver(pty.master(), readFile(capture), 150);
  const std::string dir = scratch.string();
  std::filesystem::create_directories(scratch / "runtime");
  ::chmod((scratch / "runtime").c_str(), 0700);
  ::setenv("ORVEL_CONFIG_FILE", (dir + "/GisOrvel.conf").c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", (dir + "/runtime").c_str(), 1);
  ::setenv("XDG_DATA_HOME", (dir + "/share").c_str(), 1);
  ::setenv("ORVEL_DATA_DIR", (dir + "/data").c_str(), 1);

  bool mapOpenAtFirstComposition = false;
  uint64_t compositions = 0;
  std::string found;
  const QStringList arguments{QString::fromStdString(map.string()), "--gps", QString::fromStdString(pty.slavePath())};
  const int status = appMain(arguments, [&](Session& running, MainWindow& shown) {
    mapOpenAtFirstComposition = running.map.currentMap() != nullptr;
    compositions = shown.pages().mapPage().compositionCount();
    // The window goes on handling what the reading thread posts until the receiver is in.
    waitUntil([&] {
      QCoreApplication::processEvents();
      found = utf16ToUtf8(running.gps.gpsSnapshot().statusText);
      return found.rfind("NMEA-0183 через COM", 0) == 0 && running.gps.currentFix().has(kFixPosition);
    }, 8000);
    shown.onCommand(kCmdExit);
  });
  for (const char* name : {"ORVEL_CONFIG_FILE", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "ORVEL_DATA_DIR"}) {
    ::unsetenv(name);
  }

  EXPECT_EQ(status, 0);
  EXPECT_TRUE(mapOpenAtFirstComposition);
  EXPECT_EQ(compositions, 1u);
  EXPECT_EQ(found.rfind("NMEA-0183 через COM", 0), 0u) << found;
  EXPECT_TRUE(std::filesystem::exists(scratch / "data" / "Tracks.bin"));
}

}  // namespace
}  // namespace orvel::test
