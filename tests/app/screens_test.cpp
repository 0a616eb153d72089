// The built viewer on a virtual screen of a small car or handheld computer, used as a person
// would: Xvfb is the screen, xdotool the finger and the keys. Every dialog, page and gauge
// cell is reached by taps and keys alone; what the viewer describes of its windows (its
// screen probe) shows that each window and control lies on the screen, that the dialogs
// speak Russian, and that every gauge cell is tall enough to hold. The probe's pictures of
// the screen stay in the build folder, under screens/WIDTHxHEIGHT.
#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QStandardPaths>
#include <QThread>
#include <gtest/gtest.h>

#include "common/test_data.h"

namespace orvel::test {
namespace {

constexpr int kPatienceMs = 15000;     // for one thing the viewer is asked to do
constexpr int kMinGaugeCellHeight = 40;  // a cell a finger can hold

// One description the viewer's probe wrote (see app/screen_probe.h).
struct Shown {
  struct Window {
    QString name;
    QRect rect;
  };
  struct Control {
    QString window, name;
    QRect rect, reach;
    QString text;
  };
  struct Entry {  // a menu item or a row of a list
    QString window;
    QRect rect;
    QString text;
  };
  struct Gauge {
    QRect rect;
    QString key;
  };

  int serial = 0;
  QRect screen;
  int page = -1;
  std::vector<Window> windows;
  std::vector<Control> controls;
  std::vector<Entry> items, rows;
  std::vector<Gauge> gauges;

  bool has(const QString& window) const {
    for (const Window& w : windows) {
      if (w.name == window) return true;
    }
    return false;
  }
  // The control of `window` whose text or name is `label`.
  const Control* control(const QString& window, const QString& label) const {
    for (const Control& c : controls) {
      if (c.window == window && (c.text == label || c.name == label)) return &c;
    }
    return nullptr;
  }
  const Entry* item(const QString& text) const {
    for (const Entry& e : items) {
      if (e.text == text) return &e;
    }
    return nullptr;
  }
  const Entry* row(const QString& window, const QString& text) const {
    for (const Entry& e : rows) {
      if (e.window == window && e.text == text) return &e;
    }
    return nullptr;
  }
};

QRect parseRect(const QStringList& fields, int at) {
  return QRect(fields.value(at).toInt(), fields.value(at + 1).toInt(), fields.value(at + 2).toInt(),
               fields.value(at + 3).toInt());
}

// The last complete description in the log.
Shown lastShown(const QString& log) {
  QFile file(log);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
  Shown last, current;
  for (const QString& line : lines) {
    const QStringList f = line.split(u'\t');
    const QString kind = f.value(0);
    if (kind == QLatin1String("screen")) {
      current = Shown();
      current.serial = f.value(1).toInt();
      current.screen = QRect(f.value(2).section(u' ', 0, 0).toInt(), f.value(2).section(u' ', 1, 1).toInt(),
                             f.value(2).section(u' ', 2, 2).toInt(), f.value(2).section(u' ', 3, 3).toInt());
    } else if (kind == QLatin1String("page")) {
      current.page = f.value(1).toInt();
    } else if (kind == QLatin1String("gauge")) {
      current.gauges.push_back({parseRect(f.value(2).split(u' '), 0), f.value(3)});
    } else if (kind == QLatin1String("window")) {
      current.windows.push_back({f.value(1), parseRect(f.value(2).split(u' '), 0)});
    } else if (kind == QLatin1String("control")) {
      current.controls.push_back(
          {f.value(1), f.value(2), parseRect(f.value(3).split(u' '), 0), parseRect(f.value(4).split(u' '), 0), f.value(5)});
    } else if (kind == QLatin1String("item") || kind == QLatin1String("row")) {
      auto& list = kind == QLatin1String("item") ? current.items : current.rows;
      list.push_back({f.value(1), parseRect(f.value(2).split(u' '), 0), f.value(3)});
    } else if (kind == QLatin1String("end") && f.value(1).toInt() == current.serial) {
      last = current;
    }
  }
  return last;
}

struct ScreenSize {
  int width, height;
};

void PrintTo(const ScreenSize& size, std::ostream* out) { *out << size.width << "x" << size.height; }

class ScreensTest : public ::testing::TestWithParam<ScreenSize> {
 protected:
  void SetUp() override {
    const QSize size(GetParam().width, GetParam().height);
    const QString label = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
    for (const char* tool : {"Xvfb", "xdotool"}) {
      ASSERT_FALSE(QStandardPaths::findExecutable(QString::fromLatin1(tool)).isEmpty())
          << tool << " is missing: scripts/setup installs it";
    }
    const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
    ASSERT_FALSE(map.empty());

    // A screen of its own: Xvfb picks a free display number and tells it.
    xvfb_.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                                        QStringLiteral("0"), label + QStringLiteral("x24"), QStringLiteral("-nolisten"),
                                        QStringLiteral("tcp")});
    ASSERT_TRUE(xvfb_.waitForStarted());
    QByteArray number;
    for (QElapsedTimer waited; !number.contains('\n');) {
      if (!waited.isValid()) waited.start();
      ASSERT_LT(waited.elapsed(), kPatienceMs) << "Xvfb named no display";
      ASSERT_EQ(xvfb_.state(), QProcess::Running) << "Xvfb ended";
      xvfb_.waitForReadyRead(200);
      number += xvfb_.readAllStandardOutput();
    }
    display_ = QStringLiteral(":") + QString::fromLatin1(number.trimmed());

    const std::filesystem::path scratch = scratchDir("screens-" + label.toStdString());
    dir_ = QString::fromStdString(scratch.string());
    home_ = dir_ + QStringLiteral("/home");
    QDir().mkpath(home_ + QStringLiteral("/maps"));
    QFile::link(QString::fromStdString(map.string()), home_ + QStringLiteral("/maps/monaco.img"));
    QDir().mkpath(dir_ + QStringLiteral("/runtime"));
    ::chmod((dir_ + QStringLiteral("/runtime")).toLocal8Bit().constData(), 0700);
    log_ = dir_ + QStringLiteral("/probe.log");
    QDir shots(QStringLiteral(ORVEL_SCREENS_DIR "/") + label);
    shots.removeRecursively();

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.insert(QStringLiteral("DISPLAY"), display_);
    env.insert(QStringLiteral("HOME"), home_);
    env.insert(QStringLiteral("ORVEL_CONFIG_FILE"), dir_ + QStringLiteral("/GisOrvel.conf"));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir_ + QStringLiteral("/runtime"));
    env.insert(QStringLiteral("XDG_DATA_HOME"), dir_ + QStringLiteral("/share"));
    env.insert(QStringLiteral("ORVEL_DATA_DIR"), dir_ + QStringLiteral("/data"));
    env.insert(QStringLiteral("ORVEL_TEST_LOG"), log_);
    env.insert(QStringLiteral("ORVEL_TEST_SHOTS"), shots.path());
    env_ = env;
    viewer_.setProcessEnvironment(env);
    viewer_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    viewer_.start(QStringLiteral(ORVEL_VIEWER_PATH), {QStringLiteral("--demo")});
    ASSERT_TRUE(viewer_.waitForStarted());
  }

  void TearDown() override {
    for (QProcess* process : {&viewer_, &xvfb_}) {
      if (process->state() == QProcess::NotRunning) continue;
      process->terminate();
      if (!process->waitForFinished(10000)) {
        process->kill();
        process->waitForFinished(5000);
      }
    }
  }

  // Waits until the viewer describes a screen for which `ready` holds; that description.
  Shown waitFor(const std::function<bool(const Shown&)>& ready, const std::string& what) {
    QElapsedTimer waited;
    waited.start();
    Shown shown = lastShown(log_);
    while (!(shown.serial > 0 && ready(shown))) {
      if (waited.elapsed() > kPatienceMs || viewer_.state() == QProcess::NotRunning) {
        ADD_FAILURE() << "waiting for " << what;
        return shown;
      }
      viewer_.waitForFinished(100);
      shown = lastShown(log_);
    }
    return shown;
  }
  Shown waitForWindow(const QString& name) {
    return waitFor([&name](const Shown& s) { return s.has(name); }, "window " + name.toStdString());
  }
  Shown waitForNoWindow(const QString& name) {
    return waitFor([&name](const Shown& s) { return !s.has(name); }, "no window " + name.toStdString());
  }

  void xdotool(const QStringList& arguments) {
    QProcess run;
    run.setProcessEnvironment(env_);
    run.start(QStringLiteral("xdotool"), arguments);
    ASSERT_TRUE(run.waitForFinished(kPatienceMs));
    EXPECT_EQ(run.exitCode(), 0) << arguments.join(u' ').toStdString();
  }
  void tap(const QRect& at) {
    const QPoint p = at.center();
    xdotool({QStringLiteral("mousemove"), QString::number(p.x()), QString::number(p.y()), QStringLiteral("click"),
             QStringLiteral("1")});
  }
  // Press, keep the finger still for longer than a tap, lift.
  void hold(const QRect& at) {
    const QPoint p = at.center();
    xdotool({QStringLiteral("mousemove"), QString::number(p.x()), QString::number(p.y()), QStringLiteral("mousedown"),
             QStringLiteral("1"), QStringLiteral("sleep"), QStringLiteral("1"), QStringLiteral("mouseup"),
             QStringLiteral("1")});
  }
  void key(const QString& name) { xdotool({QStringLiteral("key"), name}); }

  void tapControl(const Shown& shown, const QString& window, const QString& label) {
    const Shown::Control* control = shown.control(window, label);
    ASSERT_NE(control, nullptr) << window.toStdString() << " has no " << label.toStdString();
    tap(control->rect);
  }
  void tapItem(const Shown& shown, const QString& text) {
    const Shown::Entry* item = shown.item(text);
    ASSERT_NE(item, nullptr) << "no menu item " << text.toStdString();
    tap(item->rect);
  }
  // Opens a menu of the menu bar and taps one of its items.
  void choose(const QString& menu, const QString& item) {
    Shown shown = waitFor([&](const Shown& s) { return s.item(menu) != nullptr; }, "menu " + menu.toStdString());
    tapItem(shown, menu);
    if (item.isEmpty()) return;
    shown = waitFor([&](const Shown& s) { return s.item(item) != nullptr; }, "menu item " + item.toStdString());
    tapItem(shown, item);
  }

  // Every window and every control lies on the screen (a control in a scrolling area can be
  // scrolled into its view); a dialog covers the small screen and has its buttons on top.
  void expectFits(const Shown& shown, const QString& dialog) {
    SCOPED_TRACE(dialog.toStdString());
    const QRect screen = shown.screen;
    ASSERT_EQ(screen.size(), QSize(GetParam().width, GetParam().height));
    for (const Shown::Window& window : shown.windows) {
      EXPECT_TRUE(screen.contains(window.rect)) << window.name.toStdString();
    }
    for (const Shown::Control& control : shown.controls) {
      const std::string what = control.window.toStdString() + " " + control.name.toStdString() + " \"" +
                               control.text.toStdString() + "\"";
      EXPECT_TRUE(screen.contains(control.reach)) << what;
      EXPECT_LE(control.rect.width(), control.reach.width()) << what;
      EXPECT_LE(control.rect.height(), control.reach.height()) << what;
    }
    if (dialog.isEmpty()) return;
    bool found = false;
    for (const Shown::Window& window : shown.windows) {
      if (window.name == dialog) {
        found = true;
        EXPECT_EQ(window.rect, screen) << "a dialog covers the small screen";
      }
    }
    EXPECT_TRUE(found);
    bool buttonOnTop = false;
    for (const Shown::Control& control : shown.controls) {
      const bool closes = control.text == QStringLiteral("Готово") || control.text == QStringLiteral("Закрыть") ||
                          control.text == QStringLiteral("Отмена");
      if (control.window == dialog && closes && control.rect.bottom() < screen.top() + 60) buttonOnTop = true;
      // Qt's own texts are Russian too.
      EXPECT_NE(control.text, QStringLiteral("Cancel"));
      EXPECT_NE(control.text, QStringLiteral("Open"));
    }
    EXPECT_TRUE(buttonOnTop) << "no Готово, Закрыть or Отмена at the top";
  }

  QProcess xvfb_;
  QProcess viewer_;
  QProcessEnvironment env_;
  QString display_, dir_, home_, log_;
};

TEST_P(ScreensTest, EveryDialogPageAndGaugeCellIsReachedByTapsAndFitsTheScreen) {
  Shown shown = waitFor([](const Shown& s) { return s.has(QStringLiteral("main")) && s.page == 0; }, "the map page");
  expectFits(shown, {});
  const QRect middle(shown.screen.center(), QSize(1, 1));

  // "Файл" → "О программе": the about dialog, closed by "Закрыть".
  choose(QStringLiteral("Файл"), QStringLiteral("О программе"));
  shown = waitForWindow(QStringLiteral("dialog123"));
  expectFits(shown, QStringLiteral("dialog123"));
  tapControl(shown, QStringLiteral("dialog123"), QStringLiteral("Закрыть"));
  waitForNoWindow(QStringLiteral("dialog123"));

  // "Настройки": the options, left with "Отмена".
  choose(QStringLiteral("Настройки"), {});
  shown = waitForWindow(QStringLiteral("103"));
  expectFits(shown, QStringLiteral("103"));
  tapControl(shown, QStringLiteral("103"), QStringLiteral("Отмена"));
  waitForNoWindow(QStringLiteral("103"));

  // "Файл" → "Сохранить точку...": the waypoint dialog; its "Значок..." shows a message box.
  choose(QStringLiteral("Файл"), QStringLiteral("Сохранить точку..."));
  shown = waitForWindow(QStringLiteral("109"));
  expectFits(shown, QStringLiteral("109"));
  tapControl(shown, QStringLiteral("109"), QStringLiteral("Значок..."));
  shown = waitForWindow(QStringLiteral("messageBox"));
  expectFits(shown, QStringLiteral("messageBox"));
  tapControl(shown, QStringLiteral("messageBox"), QStringLiteral("Готово"));
  shown = waitForNoWindow(QStringLiteral("messageBox"));
  tapControl(shown, QStringLiteral("109"), QStringLiteral("Отмена"));
  waitForNoWindow(QStringLiteral("109"));

  // "Файл" → "Открыть...": folders first, one tap opens a folder, one tap the map in it.
  choose(QStringLiteral("Файл"), QStringLiteral("Открыть..."));
  const QString chooser = QStringLiteral("openMapDialog");
  shown = waitForWindow(chooser);
  expectFits(shown, chooser);
  EXPECT_NE(shown.control(chooser, QStringLiteral("Открыть")), nullptr);
  shown = waitFor([&](const Shown& s) { return s.row(chooser, QStringLiteral("maps")) != nullptr; }, "the maps folder");
  tap(shown.row(chooser, QStringLiteral("maps"))->rect);
  shown = waitFor([&](const Shown& s) { return s.row(chooser, QStringLiteral("monaco.img")) != nullptr; }, "the map");
  tap(shown.row(chooser, QStringLiteral("monaco.img"))->rect);
  waitForNoWindow(chooser);
  QFile settings(dir_ + QStringLiteral("/GisOrvel.conf"));
  ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
  EXPECT_TRUE(settings.readAll().contains(("MapFolder string " + home_ + "/maps").toUtf8()));

  // The gauges page: ten cells, each tall enough to hold; the last one is given a gauge.
  xdotool({QStringLiteral("mousemove"), QString::number(middle.x()), QString::number(middle.y())});
  key(QStringLiteral("Right"));
  shown = waitFor([](const Shown& s) { return s.page == 1 && s.gauges.size() == 10; }, "the gauges page");
  expectFits(shown, {});
  for (const Shown::Gauge& cell : shown.gauges) {
    EXPECT_TRUE(shown.screen.contains(cell.rect));
    EXPECT_GE(cell.rect.height(), kMinGaugeCellHeight);
  }
  ASSERT_EQ(shown.gauges.size(), 10u);
  EXPECT_TRUE(shown.gauges[9].key.isEmpty());
  hold(shown.gauges[9].rect);
  shown = waitFor([](const Shown& s) { return s.item(QStringLiteral("Выбрать датчик...")) != nullptr; }, "menu 125");
  tapItem(shown, QStringLiteral("Выбрать датчик..."));
  const QString choice = QStringLiteral("dialog126");
  shown = waitForWindow(choice);
  expectFits(shown, choice);
  const auto row = std::find_if(shown.rows.begin(), shown.rows.end(), [&](const Shown::Entry& e) { return e.window == choice; });
  ASSERT_NE(row, shown.rows.end());
  tap(row->rect);
  tapControl(shown, choice, QStringLiteral("Готово"));
  shown = waitFor([](const Shown& s) { return s.gauges.size() == 10 && !s.gauges[9].key.isEmpty(); }, "a gauge in cell 9");

  // The satellites page, then round to the map.
  key(QStringLiteral("Right"));
  shown = waitFor([](const Shown& s) { return s.page == 2; }, "the satellites page");
  expectFits(shown, {});
  key(QStringLiteral("Right"));
  waitFor([](const Shown& s) { return s.page == 0; }, "the map page again");
}

INSTANTIATE_TEST_SUITE_P(Sizes, ScreensTest, ::testing::Values(ScreenSize{480, 272}, ScreenSize{800, 480}),
                         [](const ::testing::TestParamInfo<ScreenSize>& info) {
                           return std::to_string(info.param.width) + "x" + std::to_string(info.param.height);
                         });

}  // namespace
}  // namespace orvel::test
