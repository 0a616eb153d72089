#pragma once
// What the viewer shows, written down for the end-to-end test of the real program on a
// virtual screen. With ORVEL_TEST_LOG naming a file, each time the screen changes (a window
// shown, hidden, moved, resized or retitled, or a tap or key released) and has been still for
// a moment, the probe appends a description of it: every visible window with its controls
// and the rows of its lists, menus with their items, the current page and, on the gauges
// page, its cells. With ORVEL_TEST_SHOTS naming a folder it also keeps a picture of the
// screen there.
#include <QObject>
#include <QString>
#include <QTimer>

class QTextStream;
class QWidget;

namespace orvel {

class MainWindow;

class ScreenProbe : public QObject {
 public:
  // Watches the whole application; the window must outlive the probe.
  ScreenProbe(MainWindow& window, QString logFile, QString shotFolder);
  ~ScreenProbe() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void writeDescription();
  void describeWindow(QTextStream& out, const QWidget& window);

  MainWindow& window_;
  QString logFile_;
  QString shotFolder_;
  QTimer settle_;
  int serial_ = 0;
};

}  // namespace orvel
