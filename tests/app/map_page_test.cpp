// The map page driven as a user does: keys, stylus, pop-up menu, commands and GPS fixes.
#include <QTest>
#include <QTimer>

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

TEST_F(MapPageTest, UpAndDownKeysAndTheMenuStepThroughTheZoomTable) {
  startWindow();
  mapView().setZoomIndex(5);
  const uint64_t before = mapPage().compositionCount();
  QTest::keyClick(client(), Qt::Key_Up);
  EXPECT_EQ(mapView().zoomIndex(), 4u);
  EXPECT_EQ(scaleLabel(mapView()), tableLabel(4));
  QTest::keyClick(client(), Qt::Key_Down);
  window->commandAction(kCmdZoomOut)->trigger();
  EXPECT_EQ(mapView().zoomIndex(), 6u);
  EXPECT_EQ(scaleLabel(mapView()), tableLabel(6));
  EXPECT_EQ(mapPage().compositionCount(), before + 3);
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
