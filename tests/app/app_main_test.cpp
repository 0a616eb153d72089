// The whole start-up and shutdown in this process, ended by the exit command.
#include <sys/stat.h>

#include <cstdlib>

#include <QImage>
#include <QPainter>

#include "app/app.h"
#include "geo/units.h"
#include "common/test_data.h"
#include "pages/commands.h"
#include "shell_fixture.h"
#include "track/waypoints.h"

namespace orvel::test {
namespace {

using AppMainTest = ShellTest;

TEST_F(AppMainTest, OpensTheCommandLineMapBeforeTheFirstCompositionAndEndsWithZero) {
  const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
  if (map.empty()) GTEST_SKIP();
  const std::string dir = scratch.string();
  std::filesystem::create_directories(scratch / "runtime");
  ::chmod((scratch / "runtime").c_str(), 0700);
  ::setenv("ORVEL_CONFIG_FILE", (dir + "/GisOrvel.conf").c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", (dir + "/runtime").c_str(), 1);
  ::setenv("XDG_DATA_HOME", (dir + "/share").c_str(), 1);
  ::setenv("ORVEL_DATA_DIR", (dir + "/data").c_str(), 1);

  bool mapOpenAtFirstComposition = false;
  uint64_t compositions = 0;
  bool markerWithoutValidPosition = false;
  const int status = appMain({QString::fromStdString(map.string())}, [&](Session& running, MainWindow& shown) {
    mapOpenAtFirstComposition = running.map.currentMap() != nullptr;
    compositions = shown.pages().mapPage().compositionCount();
    // A fix whose position is not valid still puts the marker where its fields point.
    auto paintWithFixAt = [&](float lon, float lat) {
      GpsFix fix;
      fix.longitude = lon;
      fix.latitude = lat;
      running.gps.exchangeFix(fix);
      QImage image(running.view.screenWidth(), running.view.screenHeight(), QImage::Format_RGB32);
      QPainter painter(&image);
      shown.pages().mapPage().composer().paintView(painter, running.view);
      return image;
    };
    const MapPoint centre = running.view.centre();
    markerWithoutValidPosition = paintWithFixAt(mapUnitsToDegrees(centre.x), mapUnitsToDegrees(centre.y)) !=
                                 paintWithFixAt(-170.0f, -80.0f);
    shown.onCommand(kCmdExit);
  });
  for (const char* name : {"ORVEL_CONFIG_FILE", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "ORVEL_DATA_DIR"}) {
    ::unsetenv(name);
  }

  EXPECT_EQ(status, 0);
  EXPECT_TRUE(mapOpenAtFirstComposition);
  EXPECT_EQ(compositions, 1u);
  EXPECT_TRUE(markerWithoutValidPosition);
  EXPECT_TRUE(std::filesystem::exists(scratch / "data" / "Tracks.bin"));
}

}  // namespace
}  // namespace orvel::test
