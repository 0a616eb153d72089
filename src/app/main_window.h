#pragma once
#include <functional>
// The main window: one client area with its back buffer, the menu bar, one command
// dispatch, and the translation of Qt's events into the operations of the current page.
#include <map>
#include <string>

#include <QImage>
#include <QMainWindow>
#include <QPoint>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QTimer;

namespace orvel {

class FixProcessor;
class GpsState;

// How long a press must be held without moving to count as tap-and-hold.
inline constexpr int kTapAndHoldMs = 600;
// A press that moves less than this (pixels, either axis) is still held.
inline constexpr int kTapAndHoldSlop = 4;

class MainWindow : public QMainWindow {
 public:
  // The window posts and handles the messages of the GPS state behind `fixes`, which must
  // outlive it.
  explicit MainWindow(FixProcessor& fixes);
  ~MainWindow() override;

  QWidget* clientArea() const { return client_; }
  int clientWidth() const { return clientWidth_; }
  int clientHeight() const { return clientHeight_; }
  const QImage& backBuffer() const { return backBuffer_; }
  QLabel* statusLabel() const { return statusLabel_; }
  // Where the program's fixes enter (tests feed the running viewer through it).
  FixProcessor& fixProcessor() const { return fixes_; }

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

  // Pop-up menus 111 and 125 at a client point.
  void showPopupMenu(int menuId, int x, int y);

  // Opens a map with the wait cursor and composes the view.
  void openMap(const QString& path);
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

 protected:
  // Closing the window ends the program, as destroying it always did.
  void closeEvent(QCloseEvent* event) override;

 private:
  FixProcessor& fixes_;
  GpsState& gps_;
  std::function<void()> optionsHandler_;
  void buildMenuBar();
  void addCommand(QMenu* menu, const QString& text, int commandId);
  void openMapFromDialog();
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
  QPoint holdPoint_;
};

// Maps a Qt key to the virtual key code pages see (arrows, the action key).
int virtualKeyFor(int qtKey);

// The window that start-up made, or null.
MainWindow* mainWindow();

}  // namespace orvel
