// The map page driven as a user does: keys, stylus, pop-up menu, commands and GPS fixes.
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <cstdlib>
#include <vector>

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

// The wheel and two fingers step through the zoom table, one composition per step.
TEST_F(MapPageTest, WheelAndPinchStepThroughTheSameZoomTable) {
  startWindow();
  QPointingDevice* touchScreen = QTest::createTouchDevice();
  const struct {
    const char* what;
    std::vector<int> wheel;  // angle deltas, one event each
    double pinch;            // final distance over the starting one; 0 for none
    int steps;               // zoom steps in (negative: out)
  } cases[] = {
      {"one notch away", {120}, 0.0, 1},
      {"three notches towards the user at once", {-360}, 0.0, -3},
      {"two half notches", {60, 60}, 0.0, 1},
      {"a half notch alone", {60}, 0.0, 0},  // it stays pending: no step yet
      {"fingers spread to 1.6 times", {}, 1.6, 1},
      {"fingers spread to 2.3 times", {}, 2.3, 2},
      {"fingers closed to 0.6 times", {}, 0.6, -1},
      {"fingers spread to 1.4 times", {}, 1.4, 0},
  };
  const QPoint centre(120, 130);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    mapView().setZoomIndex(12);
    const uint64_t before = mapPage().compositionCount();
    for (const int delta : c.wheel) {
      QWheelEvent turn(QPointF(centre), QPointF(client()->mapToGlobal(centre)), QPoint(), QPoint(0, delta),
                       Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
      QCoreApplication::sendEvent(client(), &turn);
    }
    if (c.pinch > 0.0) {
      const int spread = static_cast<int>(40 * c.pinch);
      const QPoint half((40 + spread) / 2, 0), far(spread, 0);
      QTest::touchEvent(client(), touchScreen).press(0, centre - QPoint(40, 0)).press(1, centre + QPoint(40, 0));
      // On the way there every step is taken once.
      QTest::touchEvent(client(), touchScreen).move(0, centre - half).move(1, centre + half);
      QTest::touchEvent(client(), touchScreen).move(0, centre - far).move(1, centre + far);
      QTest::touchEvent(client(), touchScreen).release(0, centre - far).release(1, centre + far);
    }
    EXPECT_EQ(static_cast<int>(mapView().zoomIndex()), 12 - c.steps);
    EXPECT_EQ(mapPage().compositionCount(), before + static_cast<uint64_t>(std::abs(c.steps)));
  }
  // One finger is still the pen: it drags the map.
  const MapPoint centreBefore = mapView().centre();
  QTest::touchEvent(client(), touchScreen).press(0, centre);
  QTest::touchEvent(client(), touchScreen).move(0, centre + QPoint(30, 0));
  QTest::touchEvent(client(), touchScreen).release(0, centre + QPoint(30, 0));
  EXPECT_NE(mapView().centre().x, centreBefore.x);
}

}  // namespace
}  // namespace orvel::test
