// The map page driven as a user does: keys, stylus, pop-up menu, commands and GPS fixes.
#include <QTest>
#include <QTimer>

#include "gps/fix_processing.h"
#include "pages/commands.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

using MapPageTest = ShellTest;

TEST_F(MapPageTest, HoldingTheActionKeyForTheTimerSavesTheCentreOfThePress) {
  startWindow();
  mapView().setCentre(466034, 2027247);
  const MapPoint centreAtPress = mapView().centre();
  QTest::keyPress(client(), Qt::Key_Return);
  QTimer* timer = window->pageTimer(kActionTimerId);
  ASSERT_NE(timer, nullptr);
  EXPECT_TRUE(timer->isActive());
  EXPECT_EQ(timer->interval(), 1000);
  window->onCommand(kCmdPanRight);  // the view moves while the key is held
  window->deliverTimer(kActionTimerId);
  ASSERT_EQ(waypointRequests.size(), 1u);
  EXPECT_FLOAT_EQ(waypointRequests[0].lon, mapUnitsToDegrees(centreAtPress.x));
  EXPECT_FLOAT_EQ(waypointRequests[0].lat, mapUnitsToDegrees(centreAtPress.y));
  EXPECT_FALSE(timer->isActive());
  window->deliverTimer(kActionTimerId);  // once only
  QTest::keyRelease(client(), Qt::Key_Return);
  EXPECT_EQ(waypointRequests.size(), 1u);
  // Leaving the map page while the key is held cancels the waypoint.
  QTest::keyPress(client(), Qt::Key_Return);
  ASSERT_TRUE(mapPage().actionPending());
  QTest::keyClick(client(), Qt::Key_Right);
  EXPECT_FALSE(mapPage().actionPending());
  EXPECT_FALSE(timer->isActive());
  window->deliverTimer(kActionTimerId);
  EXPECT_EQ(waypointRequests.size(), 1u);
}

}  // namespace
}  // namespace orvel::test
