// The main window: menu bar, command dispatch, back buffer, GPS messages, dialogs.
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

#include "common/test_data.h"
#include "pages/commands.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

using MainWindowTest = ShellTest;

TEST_F(MainWindowTest, ABurstOfFixesCostsOneHandling) {
  startWindow();
  mapView().setCentre(0, 0);
  gps.postGpsMessage(kMsgFixChanged);
  gps.postGpsMessage(kMsgFixChanged);
  gps.postGpsMessage(kMsgFixChanged);
  EXPECT_TRUE(gps.isLatchSet(kMsgFixChanged));
  GpsFix fix;
  fix.flags = kFixPosition;
  fix.longitude = 1.0f;
  fix.latitude = 2.0f;
  gps.exchangeFix(fix);
  const uint64_t before = mapPage().compositionCount();
  processEvents();
  EXPECT_EQ(mapPage().compositionCount(), before + 1);
  EXPECT_FALSE(gps.isLatchSet(kMsgFixChanged));
}

TEST_F(MainWindowTest, SavePointUsesTheScreenCentreNotTheGpsPosition) {
  startWindow();
  GpsFix fix;
  fix.flags = kFixPosition | kFixTime;
  fix.longitude = 30.0f;
  fix.latitude = 60.0f;
  fix.time = 46000.25;
  gps.exchangeFix(fix);
  mapView().setCentre(degreesToMapUnits(7.4f), degreesToMapUnits(43.7f));
  window->commandAction(kCmdSavePoint)->trigger();
  ASSERT_EQ(waypointRequests.size(), 1u);
  EXPECT_FLOAT_EQ(waypointRequests[0].lon, mapUnitsToDegrees(degreesToMapUnits(7.4f)));
  EXPECT_FLOAT_EQ(waypointRequests[0].lat, mapUnitsToDegrees(degreesToMapUnits(43.7f)));
  EXPECT_EQ(waypointRequests[0].time, 46000.25);
  EXPECT_EQ(waypointRequests[0].altitude, 0.0f);
}

}  // namespace
}  // namespace orvel::test
