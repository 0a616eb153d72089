// The built viewer on the virtual screen of a small car or handheld computer (Xvfb), driven by
// taps and keys (xdotool) through every dialog, page and gauge cell. Every description its
// screen probe wrote on the way (see app/screen_probe.h) shows each window and control on the
// screen, the dialogs covering it with a closing button on top and speaking Russian, and every
// gauge cell tall enough to hold. Its pictures stay under build/screens/.
#include <sys/stat.h>

#include <algorithm>
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

// One description: its lines "kind<TAB>window<TAB>...", the first one "screen".
using Description = std::vector<QStringList>;

// Every complete description in the log, oldest first.
std::vector<Description> descriptions(const QString& log) {
  QFile file(log);
  std::vector<Description> all;
  Description current;
  for (const QString& line : file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n') : QStringList()) {
    const QStringList f = line.split(u'\t');
    if (f[0] == QLatin1String("screen")) {
      current = {f};
    } else if (f[0] == QLatin1String("end")) {
      if (!current.empty() && current[0].value(1) == f.value(1)) all.push_back(current);
      current.clear();
    } else if (!current.empty()) {
      current.push_back(f);
    }
  }
  return all;
}

QRect rectOf(const QString& field) {
  const QStringList n = field.split(u' ');
  return QRect(n.value(0).toInt(), n.value(1).toInt(), n.value(2).toInt(), n.value(3).toInt());
}
// Where a line's thing lies: controls give their rectangle after their name.
QRect rectOf(const QStringList& line) { return rectOf(line.value(line[0] == QLatin1String("control") ? 3 : 2)); }

// The first line of `kind` in `window` (any when empty) showing `label` (any when empty).
QStringList find(const Description& d, const QString& kind, const QString& window = {}, const QString& label = {}) {
  for (const QStringList& f : d) {
    if (f[0] == kind && (window.isEmpty() || f.value(1) == window) && (label.isEmpty() || f.mid(2).contains(label))) {
      return f;
    }
  }
  return {};
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
  Description waitFor(const std::function<bool(const Description&)>& ready, const QString& what) {
    QElapsedTimer waited;
    waited.start();
    for (;;) {
      const std::vector<Description> all = descriptions(log_);
      if (!all.empty() && ready(all.back())) return all.back();
      if (waited.elapsed() > kPatienceMs || viewer_.state() == QProcess::NotRunning) {
        ADD_FAILURE() << "waiting for " << what.toStdString();
        return all.empty() ? Description{} : all.back();
      }
      viewer_.waitForFinished(100);
    }
  }
  bool shows(const QString& window) {
    const Description d = waitFor([&](const Description& s) { return !find(s, "window", window).isEmpty(); }, window);
    return !find(d, "window", window).isEmpty();
  }
  void gone(const QString& window) {
    waitFor([&](const Description& s) { return find(s, "window", window).isEmpty(); }, window + " gone");
  }

  void xdotool(const QStringList& arguments) {
    QProcess run;
    run.setProcessEnvironment(env_);
    run.start(QStringLiteral("xdotool"), arguments);
    ASSERT_TRUE(run.waitForFinished(kPatienceMs));
    EXPECT_EQ(run.exitCode(), 0) << arguments.join(u' ').toStdString();
  }
  // A tap on what the viewer describes, or a press held longer than a tap.
  void tap(const QString& kind, const QString& window, const QString& label, bool hold = false) {
    const Description d = waitFor([&](const Description& s) { return !find(s, kind, window, label).isEmpty(); },
                                  kind + " " + window + " " + label);
    const QPoint at = rectOf(find(d, kind, window, label)).center();
    const QStringList move{"mousemove", QString::number(at.x()), QString::number(at.y())};
    xdotool(move + (hold ? QStringList{"mousedown", "1", "sleep", "1", "mouseup", "1"} : QStringList{"click", "1"}));
  }
  // Opens a menu of the menu bar and taps one of its items.
  void choose(const QString& menu, const QString& item = {}) {
    tap("item", {}, menu);
    if (!item.isEmpty()) tap("item", {}, item);
  }
  // Waits for `dialog` and taps its `button`, after which it is gone unless the button opens
  // another window over it.
  void visit(const QString& dialog, const QString& button, bool closes = true) {
    dialogs_ << dialog;
    ASSERT_TRUE(shows(dialog));
    if (button.isEmpty()) return;
    tap("control", dialog, button);
    if (closes) gone(dialog);
  }

  QProcess xvfb_, viewer_;
  QProcessEnvironment env_;
  QString home_, config_, log_;
  QStringList dialogs_;
};

TEST_P(ScreensTest, EveryDialogPageAndGaugeCellIsReachedByTapsAndFitsTheScreen) {
  const Description first = waitFor(
      [](const Description& s) { return !find(s, "window", "main").isEmpty() && find(s, "page").value(1) == "0"; },
      "the map page");
  const QPoint middle = rectOf(first[0].value(2)).center();

  choose("Файл", "О программе");
  visit("dialog123", "Закрыть");
  choose("Настройки");
  visit("103", "Отмена");
  choose("Файл", "Сохранить точку...");  // its "Значок..." shows a message box over it
  visit("109", "Значок...", false);
  visit("messageBox", "Готово");
  visit("109", "Отмена");
  // "Открыть...": folders first, one tap opens a folder, one tap the map in it; the folder
  // is remembered.
  choose("Файл", "Открыть...");
  visit("openMapDialog", {});
  EXPECT_FALSE(find(descriptions(log_).back(), "control", "openMapDialog", "Открыть").isEmpty());
  tap("row", "openMapDialog", "maps");
  tap("row", "openMapDialog", "monaco.img");
  gone("openMapDialog");
  QFile settings(config_);
  ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
  EXPECT_TRUE(settings.readAll().contains(("MapFolder string " + home_ + "/maps").toUtf8()));

  // The gauges page: the last of its ten cells, empty, is given a gauge by holding it.
  xdotool({"mousemove", QString::number(middle.x()), QString::number(middle.y())});
  xdotool({"key", "Right"});
  const Description gauges = waitFor(
      [](const Description& s) { return find(s, "page").value(1) == "1" && !find(s, "gauge", "9").isEmpty(); }, "gauges");
  EXPECT_EQ(std::count_if(gauges.begin(), gauges.end(), [](const QStringList& f) { return f[0] == "gauge"; }), 10);
  EXPECT_TRUE(find(gauges, "gauge", "9").value(3).isEmpty());
  tap("gauge", "9", {}, true);
  tap("item", {}, "Выбрать датчик...");
  visit("dialog126", {});
  tap("row", "dialog126", {});
  tap("control", "dialog126", "Готово");
  waitFor([](const Description& s) { return !find(s, "gauge", "9").value(3).isEmpty(); }, "a gauge in cell 9");
  // The satellites page, then round to the map.
  xdotool({"key", "Right"});
  waitFor([](const Description& s) { return find(s, "page").value(1) == "2"; }, "the satellites page");
  xdotool({"key", "Right"});
  waitFor([](const Description& s) { return find(s, "page").value(1) == "0"; }, "the map page again");

  // Every screen on the way: windows and controls on it (a control in a scrolling area can be
  // scrolled into its view), Qt's own texts in Russian too, dialogs over the whole screen
  // with a closing button on top, gauge cells that can be held.
  int gaugeCells = 0;
  for (const Description& d : descriptions(log_)) {
    const QRect screen = rectOf(d[0].value(2));
    ASSERT_EQ(screen.size(), GetParam());
    for (const QStringList& f : d) {
      SCOPED_TRACE(f.join(u' ').toStdString());
      if (f[0] == QLatin1String("window") || f[0] == QLatin1String("gauge")) {
        EXPECT_TRUE(screen.contains(rectOf(f)));
      }
      if (f[0] == QLatin1String("gauge")) {
        ++gaugeCells;
        EXPECT_GE(rectOf(f).height(), kMinGaugeCellHeight);
      }
      if (f[0] == QLatin1String("control")) {
        EXPECT_TRUE(screen.contains(rectOf(f.value(4))));
        EXPECT_LE(rectOf(f).width(), rectOf(f.value(4)).width());
        EXPECT_LE(rectOf(f).height(), rectOf(f.value(4)).height());
        EXPECT_NE(f.value(5), "Cancel");
        EXPECT_NE(f.value(5), "Open");
      }
      if (f[0] != QLatin1String("window") || !dialogs_.contains(f.value(1))) continue;
      EXPECT_EQ(rectOf(f), screen) << "a dialog covers the small screen";
      bool buttonOnTop = false;
      for (const char* close : {"Готово", "Закрыть", "Отмена"}) {
        const QStringList button = find(d, "control", f.value(1), QString::fromUtf8(close));
        buttonOnTop = buttonOnTop || (!button.isEmpty() && rectOf(button).bottom() < screen.top() + 60);
      }
      EXPECT_TRUE(buttonOnTop) << "no Готово, Закрыть or Отмена at the top";
    }
  }
  EXPECT_GE(gaugeCells, 10);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreensTest, ::testing::Values(QSize(480, 272), QSize(800, 480)),
                         [](const ::testing::TestParamInfo<QSize>& info) {
                           return std::to_string(info.param.width()) + "x" + std::to_string(info.param.height());
                         });

}  // namespace
}  // namespace orvel::test
