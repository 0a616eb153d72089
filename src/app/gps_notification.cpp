#include "app/gps_notification.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include <QLabel>
#include <QPointer>
#include <QPainter>
#include <QStatusBar>
#include <QSystemTrayIcon>

#include "core/settings.h"
#include "app/main_window.h"

namespace orvel {

namespace {

constexpr int kStatusIconSize = 16;
constexpr int kIconSizes[] = {16, 22, 24, 32, 48, 64};

}  // namespace

// The indicator's widgets and the one pending icon update. Lives on the window's thread.
class Notification : public QObject {
 public:
  Notification(MainWindow& window, const std::atomic<int>& state) : window_(window), state_(state) {
    label_ = new QLabel(&window);
    label_->setObjectName(QStringLiteral("gpsReception"));
    label_->setToolTip(gpsNotificationTitle() + QStringLiteral("\n") + gpsNotificationText());
    // Before the status text, always visible.
    window.statusBar()->insertWidget(0, label_);
    if (QSystemTrayIcon::isSystemTrayAvailable()) {
      tray_ = std::make_unique<QSystemTrayIcon>();
      tray_->setToolTip(gpsNotificationTitle());
      connect(tray_.get(), &QSystemTrayIcon::activated, this, [this] { opened(); });
      connect(tray_.get(), &QSystemTrayIcon::messageClicked, this, [this] { window_.raiseWindow(); });
    }
    show(GpsReception::NoConnection);
    if (tray_) tray_->show();
  }

  ~Notification() override {
    if (tray_) tray_->hide();
    delete label_;
  }

  // Brings the icons in line with the state last set.
  void catchUp() {
    pending.store(false);
    show(static_cast<GpsReception>(state_.load()));
  }

  GpsReception shown() const { return shown_; }
  QLabel* label() const { return label_; }
  QSystemTrayIcon* tray() const { return tray_.get(); }

  std::atomic<bool> pending{false};

 private:
  void show(GpsReception state) {
    shown_ = state;
    if (tray_) tray_->setIcon(receptionIcon(state));
    if (!label_) return;
    label_->setPixmap(QPixmap::fromImage(drawReceptionIcon(state, kStatusIconSize)));
    label_->setProperty("iconId", receptionIconId(state));
  }

  // The user opened the tray icon: the short text, and the program in front.
  void opened() {
    tray_->showMessage(gpsNotificationTitle(), gpsNotificationText(), receptionIcon(shown_),
                       kGpsNotificationDurationS * 1000);
    window_.raiseWindow();
  }

  MainWindow& window_;
  const std::atomic<int>& state_;
  // The window owns the label; it may be gone first when a window is torn down early.
  QPointer<QLabel> label_;
  std::unique_ptr<QSystemTrayIcon> tray_;
  GpsReception shown_ = GpsReception::NoConnection;
};

namespace {

void drawSatellite(QPainter& p, const QColor& body) {
  p.save();
  p.translate(12, 12);
  p.rotate(-45);
  p.setPen(QPen(Qt::black, 1));
  p.setBrush(QColor(0x30, 0x50, 0xB0));
  p.drawRect(QRectF(-12, -3.5, 8, 7));  // solar panels
  p.drawRect(QRectF(4, -3.5, 8, 7));
  p.drawLine(QPointF(-4, 0), QPointF(4, 0));
  p.setBrush(body);
  p.drawRect(QRectF(-3.5, -5, 7, 10));
  p.drawLine(QPointF(0, 5), QPointF(0, 8));  // antenna towards the ground
  p.restore();
}

void drawSignal(QPainter& p, const QColor& colour, int arcs) {
  p.setBrush(Qt::NoBrush);
  p.setPen(QPen(colour, 2.5, Qt::SolidLine, Qt::RoundCap));
  for (int i = 0; i < arcs; ++i) {
    const qreal r = 9 + 6 * i;
    p.drawArc(QRectF(14 - r, 14 - r, 2 * r, 2 * r), -80 * 16, 70 * 16);
  }
}

}  // namespace

int receptionIconId(GpsReception state) {
  switch (state) {
    case GpsReception::NoConnection: return kIconNoConnection;
    case GpsReception::NoSatellites: return kIconNoSatellites;
    case GpsReception::Receiving: return kIconReceiving;
  }
  return kIconNoConnection;
}

QString gpsNotificationTitle() { return QStringLiteral("Статус GPS-приема"); }

QString gpsNotificationBody() {
  return QStringLiteral(
      "<body>Это информация о качестве приема GPS.<br><hr><a href=\"cmd:2\">закрыть</a></body>");
}

QString gpsNotificationText() { return QStringLiteral("Это информация о качестве приема GPS."); }

QImage drawReceptionIcon(GpsReception state, int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter p(&image);
  p.setRenderHint(QPainter::Antialiasing);
  p.scale(size / 32.0, size / 32.0);
  switch (state) {
    case GpsReception::NoConnection:
      drawSatellite(p, QColor(0x90, 0x90, 0x90));
      p.setPen(QPen(QColor(0xD0, 0x10, 0x10), 4, Qt::SolidLine, Qt::RoundCap));
      p.drawLine(QPointF(4, 28), QPointF(28, 4));
      break;
    case GpsReception::NoSatellites:
      drawSatellite(p, QColor(0xF0, 0xB0, 0x00));
      drawSignal(p, QColor(0xA0, 0xA0, 0xA0), 1);
      break;
    case GpsReception::Receiving:
      drawSatellite(p, QColor(0x20, 0xB0, 0x20));
      drawSignal(p, QColor(0x10, 0xA0, 0x10), 2);
      break;
  }
  return image;
}

QIcon receptionIcon(GpsReception state) {
  QIcon icon;
  for (int size : kIconSizes) icon.addPixmap(QPixmap::fromImage(drawReceptionIcon(state, size)));
  return icon;
}

GpsNotification::GpsNotification(MainWindow& window, Settings& settings)
    : state_(static_cast<int>(GpsReception::NoConnection)) {
  settings.writeSettingInt(kNotificationDurationSetting, 0);
  settings.writeSettingInt(kNotificationOptionsSetting, 0);
  icons_ = std::make_unique<Notification>(window, state_);
}

// Deleting the icons also drops an update still queued for them.
GpsNotification::~GpsNotification() = default;

void GpsNotification::setState(GpsReception state) {
  state_.store(static_cast<int>(state));
  if (icons_->pending.exchange(true)) return;
  Notification* target = icons_.get();
  QMetaObject::invokeMethod(target, [target] { target->catchUp(); }, Qt::QueuedConnection);
}

void GpsNotification::showNoConnection() { setState(GpsReception::NoConnection); }

void GpsNotification::showSatellites(uint32_t satellitesUsed) {
  setState(satellitesUsed > 0 ? GpsReception::Receiving : GpsReception::NoSatellites);
}

GpsReception GpsNotification::gpsReception() const { return static_cast<GpsReception>(state_.load()); }

GpsReception GpsNotification::shownReception() const { return icons_->shown(); }

QLabel* GpsNotification::receptionLabel() const { return icons_->label(); }

QSystemTrayIcon* GpsNotification::receptionTrayIcon() const { return icons_->tray(); }

}  // namespace orvel
