#pragma once
// The GPS reception indicator: one icon of three states (no connection, connected without
// satellites, receiving), shown beside the status text in the main window's status area and
// in the system tray where the desktop has one. Opening the tray icon shows a short text and
// brings the program to the front.
//
// The reading threads change the state through showNoConnection and showSatellites; the
// icons follow on the user-interface thread, once per burst of changes.
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include <QIcon>
#include <QImage>
#include <QString>

class QLabel;
class QSystemTrayIcon;

namespace orvel {

class MainWindow;
class Notification;
class Settings;

enum class GpsReception { NoConnection, NoSatellites, Receiving };

// The icon ids of the three states.
inline constexpr int kIconNoConnection = 105;
inline constexpr int kIconNoSatellites = 107;
inline constexpr int kIconReceiving = 127;
int receptionIconId(GpsReception state);

inline constexpr char kGpsNotificationClass[] = "{64DCFFDF-DD70-4610-A3F9-2B6046813A52}";
inline constexpr int kGpsNotificationId = 1;
inline constexpr int kGpsNotificationDurationS = 5;
// The settings the notification keeps under its class identifier.
inline constexpr char kNotificationDurationSetting[] =
    "ControlPanel\\Notifications\\{64DCFFDF-DD70-4610-A3F9-2B6046813A52}\\Duration";
inline constexpr char kNotificationOptionsSetting[] =
    "ControlPanel\\Notifications\\{64DCFFDF-DD70-4610-A3F9-2B6046813A52}\\Options";
QString gpsNotificationTitle();  // "Статус GPS-приема"
QString gpsNotificationBody();   // the HTML body with its "закрыть" link
QString gpsNotificationText();   // the body's text, for the tray's balloon

// The state's icon, drawn in code: `size` pixels square, transparent background.
QImage drawReceptionIcon(GpsReception state, int size);
QIcon receptionIcon(GpsReception state);

class GpsNotification {
 public:
  // Puts the indicator into the window's status area (and the tray), in the no-connection
  // state, and writes the notification's settings. Made once at start-up, on the window's
  // thread; destroyed after the reading threads that report to it have stopped.
  GpsNotification(MainWindow& window, Settings& settings);
  ~GpsNotification();
  GpsNotification(const GpsNotification&) = delete;
  GpsNotification& operator=(const GpsNotification&) = delete;

  // Safe from any thread.
  void showNoConnection();
  // Receiving when `satellitesUsed` > 0, else connected without satellites.
  void showSatellites(uint32_t satellitesUsed);

  // The state last set (any thread).
  GpsReception gpsReception() const;
  // What the icons show now (they catch up with gpsReception when the window's thread runs).
  GpsReception shownReception() const;
  // The status-area icon and the tray icon (null when there is no tray). For the window's
  // thread.
  QLabel* receptionLabel() const;
  QSystemTrayIcon* receptionTrayIcon() const;

 private:
  void setState(GpsReception state);

  std::atomic<int> state_;
  std::unique_ptr<Notification> icons_;
};

}  // namespace orvel
