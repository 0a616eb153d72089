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

QString scaleLabel(const MapView& view) {
  const std::u16string_view label = view.zoomLabel();
  return QString::fromUtf16(label.data(), qsizetype(label.size()));
}

QString tableLabel(uint32_t index) {
  const std::u16string_view label = zoomTable()[index].label;
  return QString::fromUtf16(label.data(), qsizetype(label.size()));
}

TEST_F(MapPageTest, UpAndDownKeysStepThroughTheZoomTable) {
  startWindow();
  mapView().setZoomIndex(5);
  const uint64_t before = mapPage().compositionCount();
  QTest::keyClick(client(), Qt::Key_Up);
  EXPECT_EQ(mapView().zoomIndex(), 4u);
  EXPECT_EQ(scaleLabel(mapView()), tableLabel(4));
  QTest::keyClick(client(), Qt::Key_Down);
  QTest::keyClick(client(), Qt::Key_Down);
  EXPECT_EQ(mapView().zoomIndex(), 6u);
  EXPECT_EQ(scaleLabel(mapView()), tableLabel(6));
  EXPECT_EQ(mapPage().compositionCount(), before + 3);
}

TEST_F(MapPageTest, WheelAndPinchStepThroughTheSameZoomTable) {
  startWindow();
  QPointingDevice* touchScreen = QTest::createTouchDevice();
  struct Case {
    const char* what;
    std::vector<int> wheel;    // angle deltas, one event each
    double pinch;              // final distance over the starting one; 0 for none
    int steps;                 // zoom steps in (negative: out), each one composition
  };
  const Case cases[] = {
      {"one notch away", {120}, 0.0, 1},
      {"three notches towards the user at once", {-360}, 0.0, -3},
      {"two half notches", {60, 60}, 0.0, 1},
      {"a half notch alone", {60}, 0.0, 0},  // the last to turn the wheel: it leaves half a notch
      {"fingers spread to 1.6 times", {}, 1.6, 1},
      {"fingers spread to 2.3 times", {}, 2.3, 2},
      {"fingers closed to 0.6 times", {}, 0.6, -1},
      {"fingers spread to 1.4 times", {}, 1.4, 0},
  };
  const QPoint centre(120, 130);
  for (const Case& c : cases) {
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
      QTest::touchEvent(client(), touchScreen).press(0, centre - QPoint(40, 0)).press(1, centre + QPoint(40, 0));
      // On the way there every step is taken once.
      QTest::touchEvent(client(), touchScreen).move(0, centre - QPoint((40 + spread) / 2, 0)).move(1, centre + QPoint((40 + spread) / 2, 0));
      QTest::touchEvent(client(), touchScreen).move(0, centre - QPoint(spread, 0)).move(1, centre + QPoint(spread, 0));
      QTest::touchEvent(client(), touchScreen).release(0, centre - QPoint(spread, 0)).release(1, centre + QPoint(spread, 0));
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

TEST_F(MapPageTest, ZoomStopsAtBothEndsWithoutRedrawing) {
  startWindow();
  mapView().setZoomIndex(0);
  uint64_t before = mapPage().compositionCount();
  QTest::keyClick(client(), Qt::Key_Up);
  window->commandAction(kCmdZoomIn)->trigger();
  EXPECT_EQ(mapView().zoomIndex(), 0u);
  EXPECT_EQ(mapPage().compositionCount(), before);

  mapView().setZoomIndex(kZoomSteps - 1);
  before = mapPage().compositionCount();
  QTest::keyClick(client(), Qt::Key_Down);
  window->commandAction(kCmdZoomOut)->trigger();
  EXPECT_EQ(mapView().zoomIndex(), uint32_t(kZoomSteps - 1));
  EXPECT_EQ(mapPage().compositionCount(), before);
}

TEST_F(MapPageTest, ZoomMenuItemsShareTheZoomStep) {
  startWindow();
  mapView().setZoomIndex(12);
  window->commandAction(kCmdZoomIn)->trigger();
  EXPECT_EQ(mapView().zoomIndex(), 11u);
  window->commandAction(kCmdZoomOut)->trigger();
  window->commandAction(kCmdZoomOut)->trigger();
  EXPECT_EQ(mapView().zoomIndex(), 13u);
  EXPECT_EQ(scaleLabel(mapView()), tableLabel(13));
}

TEST_F(MapPageTest, DragPansByTheStylusMovementAndComposesOnce) {
  startWindow();
  mapView().setCentre(100000, 200000);
  MapView expected = mapView();
  expected.pan(30, -12);
  const uint64_t before = mapPage().compositionCount();

  QTest::mousePress(client(), Qt::LeftButton, {}, QPoint(100, 100));
  QTest::mouseMove(client(), QPoint(115, 95));
  QTest::mouseMove(client(), QPoint(130, 88));
  EXPECT_TRUE(mapPage().panning());
  EXPECT_EQ(mapPage().compositionCount(), before);  // the preview only shifts the picture
  EXPECT_EQ(mapView().centre().x, 100000);
  QTest::mouseRelease(client(), Qt::LeftButton, {}, QPoint(130, 88));

  EXPECT_FALSE(mapPage().panning());
  EXPECT_EQ(mapView().centre().x, expected.centre().x);
  EXPECT_EQ(mapView().centre().y, expected.centre().y);
  EXPECT_EQ(mapPage().compositionCount(), before + 1);
}

TEST_F(MapPageTest, ATapChangesNothing) {
  startWindow();
  mapView().setCentre(5000, 7000);
  const uint64_t before = mapPage().compositionCount();
  QTest::mouseClick(client(), Qt::LeftButton, {}, QPoint(60, 80));
  EXPECT_EQ(mapPage().compositionCount(), before);
  EXPECT_EQ(mapView().centre().x, 5000);
  EXPECT_EQ(mapView().centre().y, 7000);
  EXPECT_TRUE(popups.empty());
}

TEST_F(MapPageTest, TapAndHoldShowsThePopupMenu) {
  startWindow();
  QTest::mousePress(client(), Qt::LeftButton, {}, QPoint(50, 70));
  ASSERT_TRUE(window->holdPending());
  window->completeHold();  // as the hold timer does after its time
  QTest::mouseRelease(client(), Qt::LeftButton, {}, QPoint(50, 70));
  ASSERT_EQ(popups.size(), 1u);
  const auto& items = popups[0].items;
  ASSERT_EQ(items.size(), 4u);
  EXPECT_EQ(items[0], std::make_pair(QStringLiteral("Сохранить точку..."), true));
  EXPECT_EQ(items[1], std::make_pair(QStringLiteral("Go to..."), false));
  EXPECT_EQ(items[2].first, QString());
  EXPECT_EQ(items[3], std::make_pair(QStringLiteral("Отменить"), true));
  EXPECT_EQ(popups[0].globalPos, client()->mapToGlobal(QPoint(50, 70)));
  EXPECT_FALSE(mapPage().panning());  // the release belonged to the gesture
}

TEST_F(MapPageTest, PopupSavePointOpensTheWaypointDialogAtTheTappedPoint) {
  startWindow();
  mapView().setCentre(300000, 400000);
  popupChoice = QStringLiteral("Сохранить точку...");
  QTest::mouseClick(client(), Qt::RightButton, {}, QPoint(40, 90));
  processEvents();  // the chosen item arrives as a command
  ASSERT_EQ(waypointRequests.size(), 1u);
  const MapPoint at = mapView().screenToMap(40, 90);
  EXPECT_FLOAT_EQ(waypointRequests[0].lon, mapUnitsToDegrees(at.x));
  EXPECT_FLOAT_EQ(waypointRequests[0].lat, mapUnitsToDegrees(at.y));
  EXPECT_EQ(waypointRequests[0].time, 0.0);
  EXPECT_EQ(waypointRequests[0].altitude, 0.0f);
}

TEST_F(MapPageTest, PopupCancelDoesNothing) {
  startWindow();
  popupChoice = QStringLiteral("Отменить");
  const uint64_t before = mapPage().compositionCount();
  QTest::mouseClick(client(), Qt::RightButton, {}, QPoint(40, 90));
  processEvents();
  EXPECT_EQ(popups.size(), 1u);
  EXPECT_TRUE(waypointRequests.empty());
  EXPECT_EQ(mapPage().compositionCount(), before);
}

struct CommandCase {
  int id;
  int returns;
};

class MapCommandTest : public ShellTest, public ::testing::WithParamInterface<CommandCase> {};

TEST_P(MapCommandTest, ReturnsItsValue) {
  startWindow();
  mapView().setZoomIndex(10);
  EXPECT_EQ(mapPage().onCommand(GetParam().id), GetParam().returns);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, MapCommandTest,
    ::testing::Values(CommandCase{40001, 1}, CommandCase{40002, 1}, CommandCase{40004, 1},
                      CommandCase{40005, 0}, CommandCase{40006, 0}, CommandCase{40007, 0},
                      CommandCase{40008, 0}, CommandCase{40014, 1}, CommandCase{40015, 1},
                      CommandCase{40019, 1}, CommandCase{40003, 0}, CommandCase{40018, 0},
                      CommandCase{40000, 0}, CommandCase{40020, 0}));

TEST_F(MapPageTest, PanCommandsMoveTheViewByTwentyPixels) {
  startWindow();
  const struct { int id; int dx; int dy; } cases[] = {
      {40005, 20, 0}, {40006, -20, 0}, {40007, 0, 20}, {40008, 0, -20}};
  for (const auto& c : cases) {
    mapView().setCentre(1000000, 2000000);
    MapView expected = mapView();
    expected.pan(c.dx, c.dy);
    window->onCommand(c.id);
    EXPECT_EQ(mapView().centre().x, expected.centre().x) << c.id;
    EXPECT_EQ(mapView().centre().y, expected.centre().y) << c.id;
  }
}

TEST_F(MapPageTest, GoToSaysItIsNotImplemented) {
  startWindow();
  window->onCommand(kCmdGoTo);
  EXPECT_EQ(messages->last(), "Sorry, the feature is not implemented.");
}

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
}

TEST_F(MapPageTest, ReleasingTheActionKeyBeforeTheTimerSavesNothing) {
  startWindow();
  QTest::keyPress(client(), Qt::Key_Enter);
  QTest::keyRelease(client(), Qt::Key_Enter);
  EXPECT_FALSE(window->pageTimer(kActionTimerId)->isActive());
  window->deliverTimer(kActionTimerId);
  EXPECT_TRUE(waypointRequests.empty());
}

TEST_F(MapPageTest, ActionKeyTakesTimeAndAltitudeOnlyWhenValid) {
  startWindow();
  GpsFix fix;
  fix.flags = kFixTime | kFixAltitude;
  fix.time = 45000.5;
  fix.altitude = 123.0f;
  gps.exchangeFix(fix);
  QTest::keyPress(client(), Qt::Key_Return);
  window->deliverTimer(kActionTimerId);
  fix.flags = kFixTime;  // altitude no longer valid
  gps.exchangeFix(fix);
  QTest::keyRelease(client(), Qt::Key_Return);
  QTest::keyPress(client(), Qt::Key_Return);
  window->deliverTimer(kActionTimerId);
  ASSERT_EQ(waypointRequests.size(), 2u);
  EXPECT_EQ(waypointRequests[0].time, 45000.5);
  EXPECT_EQ(waypointRequests[0].altitude, 123.0f);
  EXPECT_EQ(waypointRequests[1].time, 45000.5);
  EXPECT_EQ(waypointRequests[1].altitude, 0.0f);
}

GpsFix movingFix(float lon, float lat, float speed, float course) {
  GpsFix fix;
  fix.flags = kFixPosition | kFixSpeed | kFixCourse;
  fix.longitude = lon;
  fix.latitude = lat;
  fix.speed = speed;
  fix.course = course;
  return fix;
}

TEST_F(MapPageTest, KeepVisibleCentresEveryNewPosition) {
  startWindow();
  fixes.updateFix(movingFix(7.42f, 43.73f, 0.0f, 0.0f));
  EXPECT_TRUE(gps.isLatchSet(kMsgFixChanged));
  processEvents();
  EXPECT_FALSE(gps.isLatchSet(kMsgFixChanged));
  EXPECT_EQ(mapView().centre().x, degreesToMapUnits(7.42f));
  EXPECT_EQ(mapView().centre().y, degreesToMapUnits(43.73f));

  // The same position again draws nothing.
  const uint64_t before = mapPage().compositionCount();
  fixes.updateFix(movingFix(7.42f, 43.73f, 0.0f, 0.0f));
  processEvents();
  EXPECT_EQ(mapPage().compositionCount(), before);
}

TEST_F(MapPageTest, KeepVisibleOffLeavesTheView) {
  writeSettingBool("KeepVisible", false);
  startWindow();
  mapView().setCentre(10, 20);
  fixes.updateFix(movingFix(7.42f, 43.73f, 0.0f, 0.0f));
  processEvents();
  EXPECT_EQ(mapView().centre().x, 10);
  EXPECT_EQ(mapView().centre().y, 20);
}

TEST_F(MapPageTest, RotateMapTurnsFromTwoKilometresAnHour) {
  writeSettingBool("RotateMap", true);
  startWindow();
  fixes.updateFix(movingFix(7.42f, 43.73f, 1.9f, 90.4f));
  processEvents();
  EXPECT_EQ(mapView().rotation(), 0);
  fixes.updateFix(movingFix(7.43f, 43.73f, 2.0f, 90.6f));
  processEvents();
  EXPECT_EQ(mapView().rotation(), 91);
  fixes.updateFix(movingFix(7.44f, 43.73f, 1.0f, 200.0f));
  processEvents();
  EXPECT_EQ(mapView().rotation(), 91);
}

TEST_F(MapPageTest, FixesReachOnlyTheCurrentPage) {
  startWindow();
  window->onCommand(kCmdFirstPage + 1);
  mapView().setCentre(10, 20);
  fixes.updateFix(movingFix(7.42f, 43.73f, 0.0f, 0.0f));
  processEvents();
  EXPECT_EQ(mapView().centre().x, 10);
  EXPECT_FALSE(gps.isLatchSet(kMsgFixChanged));
}

}  // namespace
}  // namespace orvel::test
