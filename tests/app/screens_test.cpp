// The built viewer on the virtual screen of a small car or handheld computer (Xvfb), driven by
// taps and keys (xdotool) through every dialog, page and gauge cell; its screen probe's
// descriptions show that each window and control lies on the screen, that the dialogs speak
// Russian and that every gauge cell can be held. Its pictures stay under build/screens/.
#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QStandardPaths>
#include <gtest/gtest.h>

#include "common/test_data.h"

namespace orvel::test {
namespace {

constexpr int kPatienceMs = 15000;       // for one thing the viewer is asked to do
constexpr int kMinGaugeCellHeight = 40;  // a cell a finger can hold

// One description the probe wrote (see app/screen_probe.h): its windows, controls, menu
// items, list rows and gauge cells, each a line "kind<TAB>fields".
struct Shown {
  struct Thing {
    QString kind, window, name, text;
    QRect rect, reach;
  };
  int serial = 0;
  QRect screen;
  int page = -1;
  std::vector<Thing> things;

  // The first `kind` of `window` (any window when empty) whose text or name is `label`
  // (any when empty).
  const Thing* find(const QString& kind, const QString& window, const QString& label = {}) const {
    for (const Thing& t : things) {
      if (t.kind == kind && (window.isEmpty() || t.window == window) &&
          (label.isEmpty() || t.text == label || t.name == label)) {
        return &t;
      }
    }
    return nullptr;
  }
  bool has(const QString& window) const { return find(QStringLiteral("window"), window) != nullptr; }
  std::vector<Thing> all(const QString& kind) const {
    std::vector<Thing> out;
    for (const Thing& t : things) {
      if (t.kind == kind) out.push_back(t);
    }
    return out;
  }
};

QRect rectOf(const QString& field) {
  const QStringList n = field.split(u' ');
  return QRect(n.value(0).toInt(), n.value(1).toInt(), n.value(2).toInt(), n.value(3).toInt());
}

// The last complete description in the log.
Shown lastShown(const QString& log) {
  QFile file(log);
  if (!file.open(QIODevice::ReadOnly)) return {};
  Shown last, current;
  for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n')) {
    const QStringList f = line.split(u'\t');
    const QString kind = f.value(0);
    if (kind == QLatin1String("screen")) {
      current = Shown{f.value(1).toInt(), rectOf(f.value(2)), -1, {}};
    } else if (kind == QLatin1String("page")) {
      current.page = f.value(1).toInt();
    } else if (kind == QLatin1String("window")) {
      current.things.push_back({kind, f.value(1), f.value(1), {}, rectOf(f.value(2)), {}});
    } else if (kind == QLatin1String("control")) {
      current.things.push_back({kind, f.value(1), f.value(2), f.value(5), rectOf(f.value(3)), rectOf(f.value(4))});
    } else if (kind == QLatin1String("item") || kind == QLatin1String("row") || kind == QLatin1String("gauge")) {
      current.things.push_back({kind, f.value(1), {}, f.value(3), rectOf(f.value(2)), {}});
    } else if (kind == QLatin1String("end") && f.value(1).toInt() == current.serial) {
      last = current;
    }
  }
  return last;
}

class ScreensTest : public ::testing::TestWithParam<QSize> {
 protected:
  void SetUp() override {
    const QString label = QStringLiteral("%1x%2").arg(GetParam().width()).arg(GetParam().height());
    for (const char* tool : {"Xvfb", "xdotool"}) {
      ASSERT_FALSE(QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty())
          << tool << " is missing: scripts/setup installs it";
    }
    const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
    ASSERT_FALSE(map.empty());

    // A screen of its own: Xvfb picks a free display number and tells it.
    xvfb_.start(QStringLiteral("Xvfb"), {"-displayfd", "1", "-screen", "0", label + "x24", "-nolisten", "tcp"});
    ASSERT_TRUE(xvfb_.waitForStarted());
    QByteArray number;
    QElapsedTimer waited;
    waited.start();
    while (!number.contains('\n')) {
      ASSERT_LT(waited.elapsed(), kPatienceMs) << "Xvfb named no display";
      ASSERT_EQ(xvfb_.state(), QProcess::Running) << "Xvfb ended";
      xvfb_.waitForReadyRead(200);
      number += xvfb_.readAllStandardOutput();
    }

    const QString dir = QString::fromStdString(scratchDir("screens-" + label.toStdString()).string());
    home_ = dir + QStringLiteral("/home");
    config_ = dir + QStringLiteral("/GisOrvel.conf");
    log_ = dir + QStringLiteral("/probe.log");
    QDir().mkpath(home_ + QStringLiteral("/maps"));
    QFile::link(QString::fromStdString(map.string()), home_ + QStringLiteral("/maps/monaco.img"));
    QDir().mkpath(dir + QStringLiteral("/runtime"));
    ::chmod((dir + QStringLiteral("/runtime")).toLocal8Bit().constData(), 0700);
    QDir shots(QStringLiteral(ORVEL_SCREENS_DIR "/") + label);
    shots.removeRecursively();

    env_ = QProcessEnvironment::systemEnvironment();
    env_.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env_.remove(QStringLiteral("WAYLAND_DISPLAY"));
    const std::pair<const char*, QString> settings[] = {
        {"DISPLAY", QStringLiteral(":") + QString::fromLatin1(number.trimmed())},
        {"HOME", home_}, {"ORVEL_CONFIG_FILE", config_}, {"XDG_RUNTIME_DIR", dir + QStringLiteral("/runtime")},
        {"XDG_DATA_HOME", dir + QStringLiteral("/share")}, {"ORVEL_DATA_DIR", dir + QStringLiteral("/data")},
        {"ORVEL_TEST_LOG", log_}, {"ORVEL_TEST_SHOTS", shots.path()}};
    for (const auto& [name, value] : settings) env_.insert(QString::fromLatin1(name), value);
    viewer_.setProcessEnvironment(env_);
    viewer_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    viewer_.start(QStringLiteral(ORVEL_VIEWER_PATH), {QStringLiteral("--demo")});
    ASSERT_TRUE(viewer_.waitForStarted());
  }

  void TearDown() override {
    for (QProcess* process : {&viewer_, &xvfb_}) {
      if (process->state() == QProcess::NotRunning) continue;
      process->terminate();
      if (!process->waitForFinished(10000)) process->kill();
      process->waitForFinished(5000);
    }
  }

  // Waits until the viewer describes a screen for which `ready` holds; that description.
  Shown waitFor(const std::function<bool(const Shown&)>& ready, const QString& what) {
    QElapsedTimer waited;
    waited.start();
    Shown shown = lastShown(log_);
    while (!(shown.serial > 0 && ready(shown))) {
      if (waited.elapsed() > kPatienceMs || viewer_.state() == QProcess::NotRunning) {
        ADD_FAILURE() << "waiting for " << what.toStdString();
        return shown;
      }
      viewer_.waitForFinished(100);
      shown = lastShown(log_);
    }
    return shown;
  }
  Shown waitForWindow(const QString& name, bool shown = true) {
    return waitFor([&](const Shown& s) { return s.has(name) == shown; }, name + (shown ? " shown" : " gone"));
  }
  // The thing once it is described.
  Shown::Thing waitForThing(const QString& kind, const QString& window, const QString& label) {
    const Shown shown = waitFor([&](const Shown& s) { return s.find(kind, window, label) != nullptr; }, kind + " " + label);
    const Shown::Thing* thing = shown.find(kind, window, label);
    return thing ? *thing : Shown::Thing{};
  }

  void xdotool(const QStringList& arguments) {
    QProcess run;
    run.setProcessEnvironment(env_);
    run.start(QStringLiteral("xdotool"), arguments);
    ASSERT_TRUE(run.waitForFinished(kPatienceMs));
    EXPECT_EQ(run.exitCode(), 0) << arguments.join(u' ').toStdString();
  }
  // A tap, or a press held longer than a tap.
  void tap(const QRect& at, bool hold = false) {
    const QStringList move{"mousemove", QString::number(at.center().x()), QString::number(at.center().y())};
    xdotool(move + (hold ? QStringList{"mousedown", "1", "sleep", "1", "mouseup", "1"} : QStringList{"click", "1"}));
  }
  void tapThing(const QString& kind, const QString& window, const QString& label) {
    tap(waitForThing(kind, window, label).rect);
  }
  // Opens a menu of the menu bar and taps one of its items.
  void choose(const QString& menu, const QString& item = {}) {
    tapThing(QStringLiteral("item"), {}, menu);
    if (!item.isEmpty()) tapThing(QStringLiteral("item"), {}, item);
  }

  // Every window and every control lies on the screen (a control in a scrolling area can be
  // scrolled into its view); a dialog covers the small screen, speaks Russian and has its
  // buttons on top.
  void expectFits(const Shown& shown, const QString& dialog = {}) {
    SCOPED_TRACE(dialog.toStdString());
    ASSERT_EQ(shown.screen.size(), GetParam());
    for (const Shown::Thing& t : shown.things) {
      const std::string what = (t.window + " " + t.name + " \"" + t.text + "\"").toStdString();
      if (t.kind == QLatin1String("window")) {
        EXPECT_TRUE(shown.screen.contains(t.rect)) << what;
      }
      if (t.kind != QLatin1String("control")) continue;
      EXPECT_TRUE(shown.screen.contains(t.reach)) << what;
      EXPECT_LE(t.rect.width(), t.reach.width()) << what;
      EXPECT_LE(t.rect.height(), t.reach.height()) << what;
      EXPECT_NE(t.text, QStringLiteral("Cancel"));  // Qt's own texts are Russian too
      EXPECT_NE(t.text, QStringLiteral("Open"));
    }
    if (dialog.isEmpty()) return;
    const Shown::Thing* window = shown.find(QStringLiteral("window"), dialog);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->rect, shown.screen) << "a dialog covers the small screen";
    bool buttonOnTop = false;
    for (const char* close : {"Готово", "Закрыть", "Отмена"}) {
      const Shown::Thing* button = shown.find(QStringLiteral("control"), dialog, QString::fromUtf8(close));
      buttonOnTop = buttonOnTop || (button && button->rect.bottom() < shown.screen.top() + 60);
    }
    EXPECT_TRUE(buttonOnTop) << "no Готово, Закрыть or Отмена at the top";
  }
  // Waits for `dialog`, checks that it fits and taps `button`, after which it is gone unless
  // the button opens another window over it.
  void visit(const QString& dialog, const QString& button, bool closes = true) {
    expectFits(waitForWindow(dialog), dialog);
    if (button.isEmpty()) return;
    tapThing(QStringLiteral("control"), dialog, button);
    if (closes) waitForWindow(dialog, false);
  }

  QProcess xvfb_, viewer_;
  QProcessEnvironment env_;
  QString home_, config_, log_;
};

TEST_P(ScreensTest, EveryDialogPageAndGaugeCellIsReachedByTapsAndFitsTheScreen) {
  Shown shown = waitFor([](const Shown& s) { return s.has(QStringLiteral("main")) && s.page == 0; }, "the map page");
  expectFits(shown);
  const QPoint middle = shown.screen.center();

  choose(QStringLiteral("Файл"), QStringLiteral("О программе"));
  visit(QStringLiteral("dialog123"), QStringLiteral("Закрыть"));
  choose(QStringLiteral("Настройки"));
  visit(QStringLiteral("103"), QStringLiteral("Отмена"));
  // The waypoint dialog; its "Значок..." shows a message box over it.
  choose(QStringLiteral("Файл"), QStringLiteral("Сохранить точку..."));
  visit(QStringLiteral("109"), QStringLiteral("Значок..."), false);
  visit(QStringLiteral("messageBox"), QStringLiteral("Готово"));
  visit(QStringLiteral("109"), QStringLiteral("Отмена"));

  // "Открыть...": folders first, one tap opens a folder, one tap the map in it; the folder
  // is remembered.
  choose(QStringLiteral("Файл"), QStringLiteral("Открыть..."));
  const QString chooser = QStringLiteral("openMapDialog");
  visit(chooser, {});
  EXPECT_NE(lastShown(log_).find(QStringLiteral("control"), chooser, QStringLiteral("Открыть")), nullptr);
  tapThing(QStringLiteral("row"), chooser, QStringLiteral("maps"));
  tapThing(QStringLiteral("row"), chooser, QStringLiteral("monaco.img"));
  waitForWindow(chooser, false);
  QFile settings(config_);
  ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
  EXPECT_TRUE(settings.readAll().contains(("MapFolder string " + home_ + "/maps").toUtf8()));

  // The gauges page: ten cells on the screen, each tall enough to hold; the last one, empty,
  // is given a gauge by holding it.
  xdotool({QStringLiteral("mousemove"), QString::number(middle.x()), QString::number(middle.y())});
  xdotool({QStringLiteral("key"), QStringLiteral("Right")});
  shown = waitFor([](const Shown& s) { return s.page == 1 && s.all(QStringLiteral("gauge")).size() == 10; }, "gauges");
  expectFits(shown);
  const std::vector<Shown::Thing> cells = shown.all(QStringLiteral("gauge"));
  for (const Shown::Thing& cell : cells) {
    EXPECT_TRUE(shown.screen.contains(cell.rect));
    EXPECT_GE(cell.rect.height(), kMinGaugeCellHeight);
  }
  ASSERT_EQ(cells.size(), 10u);
  EXPECT_TRUE(cells[9].text.isEmpty());
  tap(cells[9].rect, true);
  tapThing(QStringLiteral("item"), {}, QStringLiteral("Выбрать датчик..."));
  const QString choice = QStringLiteral("dialog126");
  visit(choice, {});
  tapThing(QStringLiteral("row"), choice, {});
  tapThing(QStringLiteral("control"), choice, QStringLiteral("Готово"));
  waitFor([](const Shown& s) {
    const std::vector<Shown::Thing> now = s.all(QStringLiteral("gauge"));
    return now.size() == 10 && !now[9].text.isEmpty();
  }, "a gauge in cell 9");

  // The satellites page, then round to the map.
  xdotool({QStringLiteral("key"), QStringLiteral("Right")});
  expectFits(waitFor([](const Shown& s) { return s.page == 2; }, "the satellites page"));
  xdotool({QStringLiteral("key"), QStringLiteral("Right")});
  waitFor([](const Shown& s) { return s.page == 0; }, "the map page again");
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreensTest, ::testing::Values(QSize(480, 272), QSize(800, 480)),
                         [](const ::testing::TestParamInfo<QSize>& info) {
                           return std::to_string(info.param.width()) + "x" + std::to_string(info.param.height());
                         });

}  // namespace
}  // namespace orvel::test
