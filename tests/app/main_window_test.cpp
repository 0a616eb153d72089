// The main window: menu bar, command dispatch, back buffer, GPS messages, dialogs.
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

#include "app/dialog_fit.h"
#include "common/test_data.h"
#include "pages/commands.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

using MainWindowTest = ShellTest;

TEST_F(MainWindowTest, MenuBarCarriesItsTextsAndIds) {
  startWindow();
  const struct { int id; const char* text; } items[] = {
      {40009, "Выход"},       {40003, "О программе"},         {40011, "Сохранить точку..."},
      {57601, "&Открыть...\tCtrl+O"}, {40020, "Открыть трек..."}, {40021, "Закрыть трек"},
      {40001, "Увеличить"},  {40002, "Уменьшить"}, {40010, "Настройки"},
  };
  for (const auto& item : items) {
    QAction* action = window->commandAction(item.id);
    ASSERT_NE(action, nullptr) << item.id;
    EXPECT_EQ(action->text(), QString::fromUtf8(item.text)) << item.id;
    EXPECT_EQ(action->data().toInt(), item.id);
  }
  const QList<QAction*> top = window->menuBar()->actions();
  ASSERT_EQ(top.size(), 3);
  EXPECT_EQ(top[0]->text(), QStringLiteral("Файл"));
  EXPECT_EQ(top[1]->text(), QStringLiteral("Вид"));
  EXPECT_EQ(top[2]->text(), QStringLiteral("Настройки"));
  const QList<QAction*> file = top[0]->menu()->actions();
  ASSERT_EQ(file.size(), 8);
  const int ids[] = {kCmdExit, kCmdAbout, 0, kCmdSavePoint, 0, kCmdOpen, kCmdOpenTrack, kCmdCloseTrack};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(file[i]->isSeparator(), ids[i] == 0) << i;
    if (ids[i]) {
      EXPECT_EQ(file[i]->data().toInt(), ids[i]) << i;
    }
  }
}

TEST_F(MainWindowTest, BackBufferFollowsTheClientSize) {
  startWindow();
  window->resize(300, 420);
  processEvents();
  EXPECT_EQ(window->backBuffer().size(), QSize(window->clientWidth(), window->clientHeight()));
  EXPECT_EQ(window->clientWidth(), window->clientArea()->width());
  EXPECT_EQ(mapView().screenWidth(), window->clientWidth());
  EXPECT_EQ(mapView().screenHeight(), window->clientHeight());
}

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

TEST_F(MainWindowTest, StatusTextShowsInTheStatusArea) {
  startWindow();
  gps.setStatusText(u"NMEA на COM3");
  processEvents();
  EXPECT_EQ(window->statusLabel()->text(), QStringLiteral("NMEA на COM3"));
  EXPECT_FALSE(gps.isLatchSet(kMsgStatusChanged));
}

TEST_F(MainWindowTest, AboutDialogShowsItsVersionLine) {
  startWindow();
  QString version, platform;
  onDialog = [&](QDialog& dialog) {
    version = dialog.findChild<QLabel*>(QStringLiteral("1011"))->text();
    platform = dialog.findChild<QLabel*>(QStringLiteral("1014"))->text();
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("About"));
    if (const QByteArray dir = qgetenv("ORVEL_SCREENSHOT_DIR"); !dir.isEmpty()) {
      dialog.grab().save(QString::fromLocal8Bit(dir) + QStringLiteral("/about.png"));
    }
  };
  window->commandAction(kCmdAbout)->trigger();
  ASSERT_EQ(dialogsRun, std::vector<std::string>{"dialog123"});
  EXPECT_EQ(version, QStringLiteral("версия 1.0 (update 11.1)"));
  EXPECT_EQ(platform, QStringLiteral("для Pocket PC 2003"));
}

TEST_F(MainWindowTest, DialogsTakeSmallScreensWholeAndKeepTheirNaturalSizeOnLargerOnes) {
  struct Case {
    QRect screen, window;
    bool whole;
  };
  const Case cases[] = {
      {QRect(0, 0, 480, 272), QRect(0, 0, 480, 272), true},
      {QRect(0, 0, 800, 480), QRect(0, 0, 800, 480), true},
      {QRect(0, 0, 1280, 1024), QRect(300, 200, 800, 600), false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.screen.width());
    const std::unique_ptr<QDialog> about = makeAboutDialog(nullptr);
    const QSize natural = about->sizeHint();
    fitDialogToScreen(*about, c.screen, c.window);
    const QWidget* bar = about->findChild<QWidget*>(QStringLiteral("dialogTopBar"));
    EXPECT_EQ(bar != nullptr, c.whole);
    if (c.whole) {
      EXPECT_EQ(about->geometry(), c.screen);
      // "Закрыть" sits in the bar at the top, over the contents that scroll.
      EXPECT_EQ(about->findChild<QPushButton*>(QStringLiteral("2"))->parentWidget()->parentWidget(), bar);
    } else {
      EXPECT_EQ(about->size(), natural);
      EXPECT_TRUE(c.window.contains(about->geometry()));
    }
  }
}

TEST(Hyperlink, IsDecidedByClassAndText) {
  const struct { const char* text; bool link; } cases[] = {
      {"http://x.org", true}, {"HTTP://X.ORG", true}, {"Ftp:host", true},
      {"mailto:a@b", true},   {"www.x.org", false},  {"https://x.org", false},
      {"htt", false},         {"", false},           {" http://x", false},
  };
  for (const auto& c : cases) EXPECT_EQ(isHyperlinkText(QString::fromUtf8(c.text)), c.link) << c.text;
}

TEST_F(MainWindowTest, HyperlinkNeedsAStaticText) {
  QWidget parent;
  QLabel label(QStringLiteral("http://example.org"), &parent);
  QPushButton button(QStringLiteral("http://example.org"), &parent);
  EXPECT_TRUE(isHyperlink(&label));
  EXPECT_FALSE(isHyperlink(&button));
  EXPECT_FALSE(isHyperlink(nullptr));
}

TEST_F(MainWindowTest, OpenCommandOpensTheChosenMapAndRemembersItsFolder) {
  const std::filesystem::path map = dataFile("maps/monaco_default_6bit.img");
  if (map.empty()) GTEST_SKIP();
  startWindow();
  const QString path = QString::fromStdString(map.string());
  QStringList folders;
  window->dialogs().dialog = [&](QDialog& dialog) {
    auto* chooser = qobject_cast<QFileDialog*>(&dialog);
    if (chooser == nullptr) return 0;
    folders << chooser->directory().absolutePath();
    EXPECT_EQ(chooser->nameFilters(), QStringList{QStringLiteral("Все форматы (*.orv,*.img) (*.orv *.img)")});
    EXPECT_TRUE(chooser->testOption(QFileDialog::DontUseNativeDialog));
    chooser->selectFile(path);
    return static_cast<int>(QDialog::Accepted);
  };
  for (int i = 0; i < 2; ++i) {
    const uint64_t before = mapPage().compositionCount();
    window->commandAction(kCmdOpen)->trigger();
    EXPECT_NE(currentMap(), nullptr);
    EXPECT_EQ(mapPage().compositionCount(), before + 1);
  }
  // The second time the chooser opens where the first map was found.
  EXPECT_EQ(folders, (QStringList{QDir::homePath(), QFileInfo(path).absolutePath()}));
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  EXPECT_TRUE(messages->messages().empty());
}

TEST_F(MainWindowTest, CancelledOpenChangesNothing) {
  startWindow();
  window->dialogs().mapFile = [](QWidget*) { return QString(); };
  const uint64_t before = mapPage().compositionCount();
  window->onCommand(kCmdOpen);
  EXPECT_EQ(currentMap(), nullptr);
  EXPECT_EQ(mapPage().compositionCount(), before);
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

TEST_F(MainWindowTest, ExitClosesTheWindow) {
  startWindow();
  ASSERT_TRUE(window->isVisible());
  window->commandAction(kCmdExit)->trigger();
  EXPECT_FALSE(window->isVisible());
}

TEST_F(MainWindowTest, KeysOtherThanTheMapsGoUnconsumed) {
  startWindow();
  EXPECT_FALSE(window->keyDown(Qt::Key_A, false));
  EXPECT_FALSE(window->keyUp(Qt::Key_A, false));
  EXPECT_TRUE(window->keyUp(Qt::Key_Return, false));
}

}  // namespace
}  // namespace orvel::test
