// The page framework seen through the window: titles, the "Вид" menu, arrow keys, the
// stored "Page" setting.
#include <QActionGroup>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include "common/test_data.h"
#include "pages/commands.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

using PagesTest = ShellTest;

const QString kTitles[] = {QStringLiteral("Карта"), QStringLiteral("Приборы"),
                           QStringLiteral("Спутники")};

TEST_F(PagesTest, StartsOnTheStoredPage) {
  writeSettingInt("Page", 1);
  startWindow();
  EXPECT_EQ(pages().currentPageIndex(), 1u);
  EXPECT_EQ(window->windowTitle(), kTitles[1]);
  EXPECT_FALSE(window->commandAction(kCmdZoomOut)->isEnabled());
}

TEST_F(PagesTest, AStoredValueNamingNoPageStartsOnTheMap) {
  writeSettingInt("Page", 9);
  startWindow();
  EXPECT_EQ(pages().currentPageIndex(), 0u);
  EXPECT_EQ(pageSetting(), 0);
}

TEST_F(PagesTest, ArrowKeysSwitchPagesWithWrapAround) {
  startWindow();
  const struct { Qt::Key key; uint32_t expected; } steps[] = {
      {Qt::Key_Right, 1}, {Qt::Key_Right, 2}, {Qt::Key_Right, 0}, {Qt::Key_Left, 2}, {Qt::Key_Left, 1}, {Qt::Key_Left, 0}};
  for (const auto& step : steps) {
    writeSettingInt("Page", 77);  // the switch must write it again
    QTest::keyClick(client(), step.key);
    EXPECT_EQ(pages().currentPageIndex(), step.expected);
    EXPECT_EQ(window->windowTitle(), kTitles[step.expected]);
    EXPECT_EQ(pageSetting(), int(step.expected));
    EXPECT_TRUE(window->commandAction(kCmdFirstPage + int(step.expected))->isChecked());
    EXPECT_EQ(window->commandAction(kCmdZoomIn)->isEnabled(), step.expected == 0);
  }
}

TEST_F(PagesTest, ChoosingTheCurrentPageDoesNothing) {
  writeSettingInt("Page", 1);
  startWindow();
  writeSettingInt("Page", 77);
  window->onCommand(kCmdFirstPage + 1);
  EXPECT_EQ(pages().currentPageIndex(), 1u);
  EXPECT_EQ(pageSetting(), 77);  // not written again
}

TEST_F(PagesTest, LeavingTheMapPageWhileTheActionKeyIsHeldCancelsTheWaypoint) {
  startWindow();
  QTest::keyPress(client(), Qt::Key_Return);
  ASSERT_TRUE(mapPage().actionPending());
  QTest::keyClick(client(), Qt::Key_Right);
  EXPECT_FALSE(mapPage().actionPending());
  EXPECT_FALSE(window->pageTimer(kActionTimerId)->isActive());
  window->deliverTimer(kActionTimerId);
  EXPECT_TRUE(waypointRequests.empty());
}

TEST_F(PagesTest, EveryPagePaintsItsPicture) {
  const std::filesystem::path map = dataFile("maps/monaco_default_6bit.img");
  startWindow();
  window->openMap(QString::fromStdString(map.string()));
  for (uint32_t i = 0; i < kPageCount; ++i) {
    window->onCommand(kCmdFirstPage + int(i));
    const QImage shot = window->clientArea()->grab().toImage();
    ASSERT_FALSE(shot.isNull());
    EXPECT_EQ(shot.size(), QSize(window->clientWidth(), window->clientHeight()));
    bool inked = false;
    for (int y = 0; y < shot.height() && !inked; ++y) {
      for (int x = 0; x < shot.width() && !inked; ++x) inked = shot.pixel(x, y) != qRgb(255, 255, 255);
    }
    EXPECT_TRUE(inked) << "page " << i << " is blank";
    if (const QByteArray dir = qgetenv("ORVEL_SCREENSHOT_DIR"); !dir.isEmpty()) {
      window->grab().save(QString::fromLocal8Bit(dir) + QStringLiteral("/page%1.png").arg(i));
    }
  }
}

}  // namespace
}  // namespace orvel::test
