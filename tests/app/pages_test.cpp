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

TEST_F(PagesTest, StartsOnTheMapPageWithoutAStoredPage) {
  startWindow();
  EXPECT_EQ(pages().currentPageIndex(), 0u);
  EXPECT_EQ(window->windowTitle(), kTitles[0]);
  EXPECT_EQ(pageSetting(), 0);
  EXPECT_TRUE(window->commandAction(kCmdZoomIn)->isEnabled());
  EXPECT_TRUE(window->commandAction(kCmdFirstPage)->isChecked());
}

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

TEST_F(PagesTest, ViewMenuListsTheThreePagesAfterASeparator) {
  startWindow();
  const QList<QAction*> items = window->viewMenu()->actions();
  ASSERT_EQ(items.size(), 6);
  EXPECT_EQ(items[0]->text(), QStringLiteral("Увеличить"));
  EXPECT_EQ(items[1]->text(), QStringLiteral("Уменьшить"));
  EXPECT_TRUE(items[2]->isSeparator());
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(items[3 + i]->text(), kTitles[i]);
    EXPECT_EQ(items[3 + i]->data().toInt(), kCmdFirstPage + i);
    EXPECT_TRUE(items[3 + i]->isCheckable());
  }
  for (QAction* item : items) EXPECT_NE(item->text(), QStringLiteral("Компас"));
}

struct ArrowCase {
  int startPage;
  Qt::Key key;
  uint32_t expected;
};

class ArrowKeysTest : public ShellTest, public ::testing::WithParamInterface<ArrowCase> {};

TEST_P(ArrowKeysTest, SwitchPagesWithWrapAround) {
  const ArrowCase c = GetParam();
  writeSettingInt("Page", c.startPage);
  startWindow();
  writeSettingInt("Page", 77);  // the switch must write it again
  QTest::keyClick(client(), c.key);
  EXPECT_EQ(pages().currentPageIndex(), c.expected);
  EXPECT_EQ(window->windowTitle(), kTitles[c.expected]);
  EXPECT_EQ(pageSetting(), int(c.expected));
  EXPECT_TRUE(window->commandAction(kCmdFirstPage + int(c.expected))->isChecked());
  EXPECT_EQ(window->commandAction(kCmdZoomIn)->isEnabled(), c.expected == 0);
  EXPECT_EQ(window->commandAction(kCmdZoomOut)->isEnabled(), c.expected == 0);
}

INSTANTIATE_TEST_SUITE_P(Keys, ArrowKeysTest,
                         ::testing::Values(ArrowCase{0, Qt::Key_Right, 1}, ArrowCase{1, Qt::Key_Right, 2},
                                           ArrowCase{2, Qt::Key_Right, 0}, ArrowCase{0, Qt::Key_Left, 2},
                                           ArrowCase{2, Qt::Key_Left, 1}, ArrowCase{1, Qt::Key_Left, 0}));

TEST_F(PagesTest, MenuEntrySelectsThePageAndStoresIt) {
  startWindow();
  window->commandAction(kCmdFirstPage + 2)->trigger();
  EXPECT_EQ(pages().currentPageIndex(), 2u);
  EXPECT_EQ(window->windowTitle(), kTitles[2]);
  EXPECT_EQ(pageSetting(), 2);
  EXPECT_FALSE(window->commandAction(kCmdZoomIn)->isEnabled());
}

TEST_F(PagesTest, ChoosingTheCurrentPageDoesNothing) {
  writeSettingInt("Page", 1);
  startWindow();
  writeSettingInt("Page", 77);
  window->onCommand(kCmdFirstPage + 1);
  EXPECT_EQ(pages().currentPageIndex(), 1u);
  EXPECT_EQ(pageSetting(), 77);  // not written again
}

TEST_F(PagesTest, PageIdsBeyondTheListAreIgnored) {
  startWindow();
  for (int id = kCmdFirstPage + 3; id <= kCmdLastPage; ++id) window->onCommand(id);
  EXPECT_EQ(pages().currentPageIndex(), 0u);
  EXPECT_EQ(pageSetting(), 0);
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
  if (map.empty()) GTEST_SKIP();
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
