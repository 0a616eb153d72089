#include "app/main_window.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFileInfo>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStatusBar>
#include <QTimer>
#include <QTouchEvent>
#include <QWheelEvent>

#include "app/program_icon.h"
#include "app/session.h"
#include "geo/units.h"
#include "core/message.h"
#include "gps/gps_state.h"
#include "gpx/layer/gpx_layer.h"
#include "pages/commands.h"
#include "pages/map_page.h"

namespace orvel {

namespace {

// The client area: hands every event to the window, which hands it to the page.
class ClientArea : public QWidget {
 public:
  ClientArea(MainWindow* window) : QWidget(window), window_(window) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setMinimumSize(64, 64);
    setAttribute(Qt::WA_AcceptTouchEvents);
  }

 protected:
  bool event(QEvent* e) override {
    switch (e->type()) {
      case QEvent::TouchBegin:
      case QEvent::TouchUpdate:
      case QEvent::TouchEnd:
      case QEvent::TouchCancel:
        window_->touched(e->type(), static_cast<QTouchEvent*>(e)->points());
        e->accept();
        return true;
      default:
        return QWidget::event(e);
    }
  }
  void wheelEvent(QWheelEvent* e) override {
    window_->wheelTurned(e->angleDelta().y());
    e->accept();
  }
  void paintEvent(QPaintEvent*) override { window_->clientPaint(); }
  void resizeEvent(QResizeEvent*) override { window_->clientResized(); }
  void mousePressEvent(QMouseEvent* e) override { window_->penPress(e->button(), e->position().toPoint()); }
  void mouseMoveEvent(QMouseEvent* e) override { window_->penMove(e->position().toPoint()); }
  void mouseReleaseEvent(QMouseEvent* e) override {
    window_->penRelease(e->button(), e->position().toPoint());
  }
  void keyPressEvent(QKeyEvent* e) override {
    if (!window_->keyDown(e->key(), e->isAutoRepeat())) QWidget::keyPressEvent(e);
  }
  void keyReleaseEvent(QKeyEvent* e) override {
    if (!window_->keyUp(e->key(), e->isAutoRepeat())) QWidget::keyReleaseEvent(e);
  }

 private:
  MainWindow* window_;
};

}  // namespace

int virtualKeyFor(int qtKey) {
  switch (qtKey) {
    case Qt::Key_Left: return kKeyLeft;
    case Qt::Key_Up: return kKeyUp;
    case Qt::Key_Right: return kKeyRight;
    case Qt::Key_Down: return kKeyDown;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Select: return kKeyAction;
    default: return qtKey;
  }
}

MainWindow::MainWindow(Session& session)
    : session_(session),
      pages_(PageContext{*this, session.settings, session.messages, session.drawing, session.styles, session.gps},
             session) {
  setWindowTitle(QStringLiteral("Orvel"));
  setWindowIcon(QIcon(QPixmap::fromImage(programIcon(64))));
  client_ = new ClientArea(this);
  setCentralWidget(client_);
  client_->setFocus();

  statusLabel_ = new QLabel(this);
  statusLabel_->setObjectName(QStringLiteral("gpsStatus"));
  statusBar()->addWidget(statusLabel_, 1);
  statusBar()->setSizeGripEnabled(false);

  holdTimer_ = new QTimer(this);
  holdTimer_->setSingleShot(true);
  holdTimer_->setInterval(kTapAndHoldMs);
  connect(holdTimer_, &QTimer::timeout, this, [this] { completeHold(); });

  buildMenuBar();

  session_.gps.setGpsMessagePoster([this](int message) { postGpsMessage(message); });
}

MainWindow::~MainWindow() {
  session_.gps.setGpsMessagePoster(nullptr);
  pages_.shutdownPages();
}

void MainWindow::invalidateMainWindow() { client_->repaint(); }

void MainWindow::capturePointer(bool captured) {
  if (captured) {
    client_->grabMouse();
  } else {
    client_->releaseMouse();
  }
}

void MainWindow::openWaypointDialog(float lon, float lat, double time, float altitude) {
  if (waypointDialog_) waypointDialog_(lon, lat, time, altitude);
}

QAction* MainWindow::commandAction(int commandId) const {
  const auto it = actions_.find(commandId);
  return it == actions_.end() ? nullptr : it->second;
}

void MainWindow::postCommand(int commandId) {
  QMetaObject::invokeMethod(this, [this, commandId] { onCommand(commandId); }, Qt::QueuedConnection);
}

void MainWindow::onCommand(int commandId) {
  switch (commandId) {
    case kCmdExit:
      close();
      return;
    case kCmdAbout: {
      std::unique_ptr<QDialog> about = makeAboutDialog(this);
      dialogs_.runDialog(*about);
      return;
    }
    case kCmdSavePoint:
      savePointAtCentre();
      return;
    case kCmdOpen:
      openMapFromDialog();
      return;
    case kCmdOpenTrack:
      openTrackFromDialog();
      return;
    case kCmdCloseTrack:
      closeTrack();
      return;
    case kCmdOptions:
      if (optionsHandler_) optionsHandler_();
      return;
    default:
      break;
  }
  if (commandId >= kCmdFirstPage && commandId <= kCmdLastPage) {
    pages_.selectPage(static_cast<uint32_t>(commandId - kCmdFirstPage));
    return;
  }
  if (pages_.pagesReady()) pages_.currentPage().onCommand(commandId);
}

void MainWindow::savePointAtCentre() {
  // The new waypoint lies at the centre of the screen, not at the GPS position.
  const GpsFix fix = session_.gps.currentFix();
  const double time = (fix.flags & kFixTime) ? fix.time : 0.0;
  const float altitude = (fix.flags & kFixAltitude) ? fix.altitude : 0.0f;
  const MapPoint centre = session_.view.centre();
  openWaypointDialog(mapUnitsToDegrees(centre.x), mapUnitsToDegrees(centre.y), time, altitude);
  pages_.mapPage().compose();
}

void MainWindow::openMapFromDialog() {
  // The chooser opens where the user last found a map.
  const QString folder = QString::fromStdU16String(session_.settings.readSettingString("MapFolder", u"", 1024));
  const QString path = dialogs_.chooseMapFile(this, folder);
  if (path.isEmpty()) return;
  session_.settings.writeSettingString("MapFolder", QFileInfo(path).absolutePath().toStdU16String());
  openMap(path);
}

void MainWindow::openMap(const QString& path) {
  showWaitCursor();
  session_.map.openMapFile(std::filesystem::path(path.toStdString()), session_.view);
  pages_.mapPage().compose();
  restoreArrowCursor();
}

void MainWindow::openTrackFromDialog() {
  const QString path = dialogs_.chooseGpxFile(this);
  if (!path.isEmpty()) openTrack(path, true);
}

bool MainWindow::openTrack(const QString& path, bool showWhole) {
  showWaitCursor();
  QString error;
  const bool opened = session_.gpxLayer.openGpx(std::filesystem::path(path.toStdString()), error);
  restoreArrowCursor();
  if (!opened) {
    showMessage(session_.messages, "Не удается открыть трек %s:\n%s", qPrintable(path), qPrintable(error));
    return false;
  }
  session_.settings.writeSettingString("GpxFile", path.toStdU16String());
  if (QAction* close = commandAction(kCmdCloseTrack)) close->setEnabled(true);
  if (showWhole) fitViewTo(session_.view, session_.gpxLayer.bounds());
  pages_.mapPage().compose();
  return true;
}

void MainWindow::closeTrack() {
  session_.gpxLayer.closeGpx();
  session_.settings.writeSettingString("GpxFile", u"");
  if (QAction* close = commandAction(kCmdCloseTrack)) close->setEnabled(false);
  pages_.mapPage().compose();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  QMainWindow::closeEvent(event);
  if (event->isAccepted()) QCoreApplication::quit();
}

void MainWindow::raiseWindow() {
  if (isMinimized()) showNormal();
  show();
  raise();
  activateWindow();
}

void MainWindow::postGpsMessage(int message) {
  QMetaObject::invokeMethod(this, [this, message] { handleGpsMessage(message); },
                            Qt::QueuedConnection);
}

void MainWindow::handleGpsMessage(int message) {
  // The page first, then the latch: a change that arrives while the page is busy with the
  // previous one is picked up by this handling and posts nothing new.
  if (pages_.pagesReady()) {
    Page& page = pages_.currentPage();
    if (message == kMsgStatusChanged) page.onStatusChanged();
    if (message == kMsgFixChanged) page.onFixChanged();
    if (message == kMsgSatellitesChanged) page.onSatellitesChanged();
  }
  if (message == kMsgStatusChanged) updateStatusText();
  session_.gps.clearLatch(message);
}

void MainWindow::updateStatusText() {
  char16_t text[kStatusTextLength + 1] = {};
  session_.gps.getStatusText(text, kStatusTextLength + 1);
  statusLabel_->setText(QString::fromUtf16(text));
}

void MainWindow::startPageTimer(int timerId, int periodMs) {
  QTimer*& timer = timers_[timerId];
  if (!timer) {
    timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timerId] { deliverTimer(timerId); });
  }
  timer->start(periodMs);
}

void MainWindow::stopPageTimer(int timerId) {
  if (QTimer* timer = pageTimer(timerId)) timer->stop();
}

QTimer* MainWindow::pageTimer(int timerId) const {
  const auto it = timers_.find(timerId);
  return it == timers_.end() ? nullptr : it->second;
}

void MainWindow::deliverTimer(int timerId) {
  if (pages_.pagesReady()) pages_.currentPage().onTimer(timerId);
}

void MainWindow::clientPaint() {
  QPainter painter(client_);
  if (!pages_.pagesReady()) {
    painter.fillRect(client_->rect(), Qt::white);
    return;
  }
  Page& page = pages_.currentPage();
  if (!page.usesBackBuffer()) {
    page.paint(painter);
    return;
  }
  {
    QPainter buffer(&backBuffer_);
    page.paint(buffer);
  }
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.drawImage(QPoint(0, 0), backBuffer_, QRect(0, 0, clientWidth_, clientHeight_));
}

void MainWindow::clientResized() {
  clientWidth_ = client_->width();
  clientHeight_ = client_->height();
  session_.view.setScreenSize(clientWidth_, clientHeight_);
  if (backBuffer_.width() != clientWidth_ || backBuffer_.height() != clientHeight_) {
    backBuffer_ = QImage(std::max(clientWidth_, 1), std::max(clientHeight_, 1), QImage::Format_RGB32);
    backBuffer_.fill(Qt::white);
  }
  if (pages_.pagesReady()) pages_.currentPage().onSize();
}

void MainWindow::penPress(Qt::MouseButton button, QPoint at) {
  if (!pages_.pagesReady()) return;
  if (button == Qt::RightButton) {
    pages_.currentPage().onContextMenu(at.x(), at.y());
    return;
  }
  if (button != Qt::LeftButton) return;
  holdPending_ = true;
  swallowUntilRelease_ = false;
  holdPoint_ = at;
  holdTimer_->start();
}

void MainWindow::completeHold() {
  if (!holdPending_) return;
  holdTimer_->stop();
  holdPending_ = false;
  swallowUntilRelease_ = true;  // the rest of this press belongs to the gesture
  if (pages_.pagesReady()) pages_.currentPage().onContextMenu(holdPoint_.x(), holdPoint_.y());
}

void MainWindow::penMove(QPoint at) {
  if (!pages_.pagesReady() || swallowUntilRelease_) return;
  if (holdPending_) {
    if (std::abs(at.x() - holdPoint_.x()) < kTapAndHoldSlop &&
        std::abs(at.y() - holdPoint_.y()) < kTapAndHoldSlop) {
      return;
    }
    // Moved: not a tap-and-hold but a pen that went down where the press began.
    holdTimer_->stop();
    holdPending_ = false;
    penDown_ = true;
    pages_.currentPage().onPenDown(holdPoint_.x(), holdPoint_.y());
  }
  pages_.currentPage().onPenMove(at.x(), at.y());
}

void MainWindow::penRelease(Qt::MouseButton button, QPoint at) {
  if (button != Qt::LeftButton || !pages_.pagesReady()) return;
  if (swallowUntilRelease_) {
    swallowUntilRelease_ = false;
    return;
  }
  if (holdPending_) {
    holdTimer_->stop();
    holdPending_ = false;
    pages_.currentPage().onPenDown(holdPoint_.x(), holdPoint_.y());
  }
  penDown_ = false;
  pages_.currentPage().onPenUp(at.x(), at.y());
}

void MainWindow::wheelTurned(int angleDelta) {
  constexpr int kNotch = 120;
  wheelRemainder_ += angleDelta;
  const int steps = wheelRemainder_ / kNotch;
  wheelRemainder_ -= steps * kNotch;
  zoomSteps(steps);
}

void MainWindow::touched(QEvent::Type type, const QList<QEventPoint>& points) {
  if (!pages_.pagesReady()) return;
  QList<QPointF> down;
  for (const QEventPoint& point : points) {
    if (point.state() != QEventPoint::Released) down << point.position();
  }
  const bool ends = type == QEvent::TouchEnd || type == QEvent::TouchCancel;
  if (!pinching_ && down.size() >= 2 && !ends) {
    // A second finger: the pen of the first ends where it began, and the pinch starts.
    if (holdPending_) {
      holdTimer_->stop();
      holdPending_ = false;
    } else if (penDown_) {
      penDown_ = false;
      pages_.currentPage().onPenUp(holdPoint_.x(), holdPoint_.y());
    }
    swallowUntilRelease_ = false;
    pinching_ = true;
    pinchStartDistance_ = std::hypot(down[1].x() - down[0].x(), down[1].y() - down[0].y());
    pinchSteps_ = 0;
    return;
  }
  if (pinching_) {
    if (down.size() >= 2 && pinchStartDistance_ > 0.0) {
      constexpr double kStepFactor = 1.5;
      const double distance = std::hypot(down[1].x() - down[0].x(), down[1].y() - down[0].y());
      if (distance > 0.0) {
        const int target = static_cast<int>(std::log(distance / pinchStartDistance_) / std::log(kStepFactor));
        zoomSteps(target - pinchSteps_);
        pinchSteps_ = target;
      }
    }
    if (ends) pinching_ = false;
    return;
  }
  if (points.isEmpty()) return;
  const QPoint at = points.front().position().toPoint();
  if (type == QEvent::TouchBegin) {
    penPress(Qt::LeftButton, at);
  } else if (ends) {
    penRelease(Qt::LeftButton, at);
  } else {
    penMove(at);
  }
}

void MainWindow::zoomSteps(int steps) {
  if (steps == 0 || !pages_.pagesReady() || !pages_.currentPage().canZoom()) return;
  // Each step composes once, as a zoom key does.
  for (int i = 0; i < std::abs(steps); ++i) pages_.currentPage().onCommand(steps > 0 ? kCmdZoomIn : kCmdZoomOut);
}

bool MainWindow::keyDown(int qtKey, bool autoRepeat) {
  if (!pages_.pagesReady()) return false;
  const int key = virtualKeyFor(qtKey);
  // A held action key must not restart its own hold.
  if (autoRepeat && key == kKeyAction) return true;
  if (key == kKeyRight) {
    pages_.nextPage();
    return true;
  }
  if (key == kKeyLeft) {
    pages_.previousPage();
    return true;
  }
  return pages_.currentPage().onKeyDown(key);
}

bool MainWindow::keyUp(int qtKey, bool autoRepeat) {
  // Qt reports a held key as repeated release and press pairs; only the last one counts.
  if (autoRepeat || !pages_.pagesReady()) return autoRepeat;
  return pages_.currentPage().onKeyUp(virtualKeyFor(qtKey));
}

}  // namespace orvel
