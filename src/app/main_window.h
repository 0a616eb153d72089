#pragma once
// The main window: one client area with its back buffer, the menu bar, one command
// dispatch, and the translation of Qt's events into the operations of the current page. It
// is the pages' host, and it owns the pages and the runners of its dialogs.
#include <functional>
#include <map>
#include <string>

#include <QEvent>
#include <QEventPoint>
#include <QImage>
#include <QMainWindow>
#include <QPoint>

#include "app/dialogs.h"
#include "app/page_framework.h"
#include "pages/page_host.h"

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QTimer;

namespace orvel {

class Session;

// How long a press must be held without moving to count as tap-and-hold.
inline constexpr int kTapAndHoldMs = 600;
// A press that moves less than this (pixels, either axis) is still held.
inline constexpr int kTapAndHoldSlop = 4;

class MainWindow : public QMainWindow, public PageHost {
 public:
  explicit MainWindow(Session& session);
  ~MainWindow() override;

  Session& session() const { return session_; }
  PageSet& pages() { return pages_; }
  DialogRunners& dialogs() { return dialogs_; }

  // The page host.
  void invalidateMainWindow() override;
  int clientWidth() const override { return clientWidth_; }
  int clientHeight() const override { return clientHeight_; }
  void setPageTimer(int timerId, int periodMs) override { startPageTimer(timerId, periodMs); }
  void killPageTimer(int timerId) override { stopPageTimer(timerId); }
  void capturePointer(bool captured) override;
  void showPopupMenu(int menuId, int x, int y) override;
  int runDialog(QDialog& dialog) override { return dialogs_.runDialog(dialog); }
  void openWaypointDialog(float lon, float lat, double time, float altitude) override;

  // What a new waypoint opens (the waypoint dialog); the program sets it at start-up.
  using WaypointDialog = std::function<void(float lon, float lat, double time, float altitude)>;
  void setWaypointDialog(WaypointDialog dialog) { waypointDialog_ = std::move(dialog); }

  QWidget* clientArea() const { return client_; }
  const QImage& backBuffer() const { return backBuffer_; }
  QLabel* statusLabel() const { return statusLabel_; }

  // The one command dispatch: every menu item and pop-up item ends here.
  void onCommand(int commandId);
  // Queues a command, as a chosen pop-up item arrives.
  void postCommand(int commandId);
  // The menu bar's item with this command id, or null.
  QAction* commandAction(int commandId) const;
  QMenu* viewMenu() const { return viewMenu_; }

  // Page menu support.
  void appendPageItem(const std::u16string& title, int commandId);
  void checkPageItem(int commandId);
  void enableZoomItems(bool enabled);
  void setPageTitle(const std::u16string& title);

  // GPS messages 1024..1026: posting is safe from any thread; handling calls the page and
  // then clears the message's latch.
  void postGpsMessage(int message);
  void handleGpsMessage(int message);

  // Page timers by id; deliverTimer is the timer message itself.
  void startPageTimer(int timerId, int periodMs);
  void stopPageTimer(int timerId);
  QTimer* pageTimer(int timerId) const;
  void deliverTimer(int timerId);

  // Tap-and-hold: a left press waits kTapAndHoldMs before it becomes a pen-down.
  bool holdPending() const { return holdPending_; }
  void completeHold();

  // Opens a map with the wait cursor and composes the view.
  void openMap(const QString& path);
  // Shows a GPX file over the map (replacing the one shown) and remembers it in the setting
  // "GpxFile"; `showWhole` moves the view onto it. A file that is not a whole GPX file is
  // told in a message and changes nothing. Returns whether it is shown.
  bool openTrack(const QString& path, bool showWhole);
  // Removes the GPX file from the map and forgets it.
  void closeTrack();
  // Brings the window to the front (another start asked for it).
  void raiseWindow();
  // What "Настройки" runs; the program installs the options dialog at start-up.
  void setOptionsHandler(std::function<void()> handler) { optionsHandler_ = std::move(handler); }

  // Events of the client area.
  void clientPaint();
  void clientResized();
  void penPress(Qt::MouseButton button, QPoint at);
  void penMove(QPoint at);
  void penRelease(Qt::MouseButton button, QPoint at);
  bool keyDown(int qtKey, bool autoRepeat);
  bool keyUp(int qtKey, bool autoRepeat);
  // The mouse wheel turned by `angleDelta` eighths of a degree (120 a notch, away from the
  // user positive): one zoom step in or out per notch, halves adding up.
  void wheelTurned(int angleDelta);
  // Touch: one finger is the pen; two fingers pinch, one zoom step per factor of 1.5 by
  // which their distance grew or shrank since they touched.
  void touched(QEvent::Type type, const QList<QEventPoint>& points);
  // Zoom steps of the current page, as its zoom commands make them: in for positive.
  void zoomSteps(int steps);

 protected:
  // Closing the window ends the program, as destroying it always did.
  void closeEvent(QCloseEvent* event) override;

 private:
  Session& session_;
  DialogRunners dialogs_;
  PageSet pages_;
  WaypointDialog waypointDialog_;
  std::function<void()> optionsHandler_;
  void buildMenuBar();
  void addCommand(QMenu* menu, const QString& text, int commandId);
  void openMapFromDialog();
  void openTrackFromDialog();
  void savePointAtCentre();
  void updateStatusText();

  QWidget* client_ = nullptr;
  QLabel* statusLabel_ = nullptr;
  QMenu* viewMenu_ = nullptr;
  QActionGroup* pageGroup_ = nullptr;
  std::map<int, QAction*> actions_;
  std::map<int, QTimer*> timers_;
  QImage backBuffer_;
  int clientWidth_ = 0;
  int clientHeight_ = 0;

  QTimer* holdTimer_ = nullptr;
  bool holdPending_ = false;
  bool swallowUntilRelease_ = false;
  bool penDown_ = false;  // the page had a pen-down and waits for its pen-up
  QPoint holdPoint_;

  int wheelRemainder_ = 0;
  bool pinching_ = false;
  double pinchStartDistance_ = 0.0;
  int pinchSteps_ = 0;
};

// Maps a Qt key to the virtual key code pages see (arrows, the action key).
int virtualKeyFor(int qtKey);

}  // namespace orvel
