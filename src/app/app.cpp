#include "app/app.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <QTranslator>
#include <cstdio>
#include <memory>

#include "app/desktop_entry.h"
#include "app/dialog_fit.h"
#include "app/dialogs.h"
#include "app/gps_notification.h"
#include "app/main_window.h"
#include "app/page_framework.h"
#include "app/qt_translation.h"
#include "app/screen_probe.h"
#include "app/session.h"
#include "app/single_instance.h"
#include "geo/units.h"
#include "gps/demo_replay.h"
#include "gps/fix_processing.h"
#include "gps/gps_state.h"
#include "gps/gps_input.h"
#include "gps/ui/options_dialog.h"
#include "pages/map_page.h"
#include "track/active_track.h"
#include "track/data_folder.h"
#include "track/mps_writer.h"
#include "track/track_recording.h"
#include "track/ui/waypoint_dialog.h"
#include "track/waypoints.h"

#ifndef ORVEL_DEMO_DIR
#define ORVEL_DEMO_DIR ""
#endif

namespace orvel {

namespace {

constexpr QSize kDesktopWindowSize(800, 600);

QString demoMapPath() {
  const QString path = QStringLiteral(ORVEL_DEMO_DIR "/monaco.img");
  return QFileInfo::exists(path) ? path : QString();
}

// How long the demo waits for a real receiver before it replays its recorded drive.
constexpr int kDemoGraceMs = 5000;
constexpr uint32_t kDemoZoomIndex = 7;  // "120 м": 3 m per pixel

void preparePortScanning(GpsInput& input, GpsNotification& notification) {
  input.setScanIndicator({[&notification] { notification.showSatellites(0); },
                    [&notification] { notification.showNoConnection(); }});
}

void stopPortScanning(GpsInput& input) {
  input.demoReplay().stopDemoReplay();
  input.stopScanning();
}

// With --demo and no receiver found after a few seconds, a recorded drive replays over the
// demo map so that a new user sees the position move. The setting "DemoReplay" (default on)
// turns it off for users who start with --demo but do not want it.
void scheduleDemoReplay(QObject* context, const Settings& settings, GpsInput& input) {
  if (!settings.readSettingBool("DemoReplay", true)) return;
  QTimer::singleShot(kDemoGraceMs, context, [&input] {
    if (input.receiverFound() || input.demoReplay().isDemoReplaying()) return;
    input.demoReplay().startDemoReplay(std::string(ORVEL_DEMO_DIR "/") + kDemoCaptureName);
  });
}

void runOptions(MainWindow& window) {
  Session& session = window.session();
  MapPage& mapPage = window.pages().mapPage();
  OptionsActions actions;
  actions.resetRotation = [&session, &mapPage] {
    session.view.setRotation(0);
    mapPage.compose();
  };
  actions.setTrackRecording = [&session](bool on) {
    if (on) {
      session.trackExport.openTrackFile();
      session.track.startRecording();
    } else {
      session.trackExport.closeTrackFile();
      session.track.stopRecording();
    }
  };
  actions.redrawMap = [&mapPage] { mapPage.compose(); };
  runOptionsDialog(&window, session.gpsInput, session.settings, std::move(actions),
                   [&window](QDialog& dialog) { return window.runDialog(dialog); });
}

void placeWindow(MainWindow& window) {
  const QScreen* screen = QGuiApplication::primaryScreen();
  const QRect available = screen->availableGeometry();
  if (isSmallScreen(available)) {
    window.setGeometry(available);
    window.showMaximized();
  } else {
    window.resize(kDesktopWindowSize);
    window.show();
  }
}

// The map page draws the GPX file shown, the recorded trail and the waypoints over the map,
// and the position marker while GPS input runs. The marker stands where the fix's position
// fields say even when the fix holds no valid position (a receiver that lost its fix keeps
// the last one).
void connectMapLayers(MapPage& page, Session& session) {
  ViewComposer& composer = page.composer();
  composer.setGpxLayer([&session](QPainter& painter, const MapView& view, const MapRect& visible) {
    session.gpxLayer.drawGpx(painter, session.drawing, view, visible);
  });
  composer.setTrackLayer([&session](QPainter& painter, const MapView& view, const MapRect&) {
    session.track.drawActiveTrack(painter, view);
  });
  composer.setWaypointLayer([&session](QPainter& painter, const MapView& view, const MapRect& visible) {
    session.waypoints.drawWaypoints(painter, session.drawing, view, visible);
  });
  composer.setPositionSource([&session]() -> std::optional<PositionSnapshot> {
    if (session.gpsInput.isGpsInputShutDown()) return std::nullopt;
    const GpsFix fix = session.gps.currentFix();
    PositionSnapshot position;
    position.longitude = fix.longitude;
    position.latitude = fix.latitude;
    position.speedValid = (fix.flags & kFixSpeed) != 0;
    position.speedKmh = fix.speed;
    position.courseValid = (fix.flags & kFixCourse) != 0;
    position.course = fix.course;
    return position;
  });
}

bool headless() {
  const QString platform = QGuiApplication::platformName();
  return platform == QLatin1String("offscreen") || platform == QLatin1String("minimal");
}

}  // namespace

void testLog(const QString& line) {
  const QByteArray file = qgetenv("ORVEL_TEST_LOG");
  if (file.isEmpty()) return;
  QFile log(QString::fromLocal8Bit(file));
  if (log.open(QIODevice::Append)) log.write(line.toUtf8() + '\n');
}

CommandLine parseCommandLine(const QStringList& arguments) {
  CommandLine line;
  for (qsizetype i = 0; i < arguments.size(); ++i) {
    const QString& argument = arguments[i];
    if (argument == QLatin1String("--demo")) {
      line.demo = true;
    } else if (argument == QLatin1String("--gps")) {
      if (i + 1 >= arguments.size()) {
        line.error = QStringLiteral("--gps needs a device path or gpsd://HOST[:PORT]");
      } else {
        line.gpsSources << arguments[++i];
      }
    } else if (argument.startsWith(QLatin1String("--"))) {
      line.error = QStringLiteral("unknown option %1 (try --help)").arg(argument);
    } else if (line.mapPath.isEmpty() && !argument.isEmpty()) {
      line.mapPath = QFileInfo(argument).absoluteFilePath();
    }
  }
  return line;
}

int appMain(const QStringList& arguments, const RunningHook& onRunning) {
  const CommandLine commandLine = parseCommandLine(arguments);
  if (!commandLine.error.isEmpty()) {
    std::fprintf(stderr, "orvel: %s\n", qPrintable(commandLine.error));
    return kExitBadCommandLine;
  }
  // One viewer per user, settled before anything else: a viewer that holds the lock, even
  // one still starting, takes over this start, and nothing here is touched.
  InstanceServer server;
  if (!server.claim()) {
    QStringList forwarded;
    if (!commandLine.mapPath.isEmpty()) forwarded << commandLine.mapPath;
    sendToRunningInstance(forwarded);
    return kExitAnotherInstance;
  }
  if (server.listening()) testLog(QStringLiteral("listening"));

  QTranslator qtTexts;
  installQtTranslation(qtTexts);

  Session session(ensureDataFolder());
  for (const QString& source : commandLine.gpsSources) {
    std::string error;
    if (!session.gpsInput.addGpsOption(source.toStdString(), error)) {
      std::fprintf(stderr, "orvel: %s\n", error.c_str());
      return kExitBadCommandLine;
    }
  }

  if (!QGuiApplication::primaryScreen()) return kExitNoWindow;
  Settings& settings = session.settings;
  settings.openSettings();

  const QString program = QCoreApplication::applicationFilePath();
  writeDesktopEntry(program);
  settings.writeSettingString("Path", program.toStdU16String());
  // The geometric sans of the map styles comes with the program's resources and is used
  // from there; no font file is written into the system.

  MainWindow window(session);
  if (!headless()) session.messages.setSink(messageBoxSink(window.dialogs(), &window));

  std::unique_ptr<ScreenProbe> probe;
  if (const QString log = qEnvironmentVariable("ORVEL_TEST_LOG"); !log.isEmpty()) {
    probe = std::make_unique<ScreenProbe>(window, log, qEnvironmentVariable("ORVEL_TEST_SHOTS"));
  }

  server.setHandler([&window](const QStringList& received) {
    window.raiseWindow();
    const CommandLine line = parseCommandLine(received);
    testLog(QStringLiteral("raised"));
    if (!line.mapPath.isEmpty()) {
      window.openMap(line.mapPath);
      testLog(QStringLiteral("opened ") + line.mapPath);
    }
  });

  PageSet& pages = window.pages();
  pages.initPages(window);
  placeWindow(window);
  GpsNotification notification(window, settings);

  QString mapPath = commandLine.mapPath;
  const bool demoMap = mapPath.isEmpty() && commandLine.demo;
  if (demoMap) {
    mapPath = demoMapPath();
    // The demo map's middle is open sea: start over the streets the demo drive passes. The
    // centre lies inside the map, so opening it keeps the centre.
    session.view.setCentre(degreesToMapUnits(static_cast<float>(kDemoAnchor.longitude)),
                           degreesToMapUnits(static_cast<float>(kDemoAnchor.latitude)));
  }
  if (!mapPath.isEmpty()) {
    session.map.openMapFile(std::filesystem::path(mapPath.toStdString()), session.view);
    testLog(QStringLiteral("opened ") + mapPath);
    // A town scale shows a newcomer streets and their names rather than one kerb.
    if (demoMap && session.map.currentMap()) session.view.setZoomIndex(kDemoZoomIndex);
  }

  if (settings.readSettingBool("RecordTrack", false)) session.trackExport.openTrackFile();
  session.track.openTrackStore();

  FixObserver observer;
  connectTrackRecorders(observer, session.track, session.trackExport);
  observer.showReception = [&notification](uint32_t satellitesUsed) { notification.showSatellites(satellitesUsed); };
  session.fixes.setFixObserver(std::move(observer));
  preparePortScanning(session.gpsInput, notification);
  // Sets the status text, and scans unless "ScanCOMPorts" is off.
  session.gpsInput.startScanning();
  if (commandLine.demo) scheduleDemoReplay(&window, settings, session.gpsInput);
  window.setOptionsHandler([&window] { runOptions(window); });

  // "Сохранить точку...", the map's pop-up menu and the action-key hold all end in the
  // waypoint dialog.
  session.waypoints.setWaypointEditor([&window, &session](Waypoint& waypoint) {
    editWaypoint(waypoint, session.lengths, session.messages, &window,
                 [&window](QDialog& dialog) { return window.runDialog(dialog); });
  });
  window.setWaypointDialog([&session](float lon, float lat, double time, float altitude) {
    session.waypoints.addWaypoint(lon, lat, time, altitude);
  });
  session.waypoints.loadWaypoints();
  MapPage& mapPage = pages.mapPage();
  connectMapLayers(mapPage, session);
  // The GPX file shown at the last exit is shown again; one that is gone is told and forgotten.
  const std::u16string track = settings.readSettingString("GpxFile", u"");
  if (!track.empty() && !window.openTrack(QString::fromStdU16String(track), false)) {
    settings.writeSettingString("GpxFile", u"");
  }
  mapPage.compose();

  if (onRunning) QTimer::singleShot(0, &window, [&] { onRunning(session, window); });
  const int status = QApplication::exec();
  (void)status;

  server.setHandler(nullptr);
  stopPortScanning(session.gpsInput);
  session.fixes.setFixObserver(FixObserver{});
  session.trackExport.closeTrackFile();
  session.track.closeTrackStore();
  session.waypoints.freeWaypoints();
  session.waypoints.setWaypointEditor(nullptr);
  pages.shutdownPages();
  session.messages.setSink(nullptr);
  return kExitNormal;
}

}  // namespace orvel
