#include "app/app.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>
#include <cstdio>

#include "core/settings.h"
#include "app/desktop_entry.h"
#include "app/dialogs.h"
#include "app/gps_notification.h"
#include "app/main_window.h"
#include "app/page_framework.h"
#include "app/single_instance.h"
#include "gps/demo_replay.h"
#include "gps/fix_processing.h"
#include "gps/gps_input.h"
#include "gps/gps_state.h"
#include "gps/ui/options_dialog.h"
#include "map/map_file.h"
#include "pages/gauge_dialog.h"
#include "pages/map_page.h"
#include "pages/page_host.h"
#include "track/active_track.h"
#include "track/mps_writer.h"
#include "track/track_recording.h"
#include "track/ui/waypoint_dialog.h"
#include "track/waypoints.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"
#include "geo/units.h"

#ifndef ORVEL_DEMO_DIR
#define ORVEL_DEMO_DIR ""
#endif

namespace orvel {

namespace {

// Screens at most this size in either direction get the whole screen.
constexpr int kSmallScreen = 640;
constexpr QSize kDesktopWindowSize(800, 600);

QString demoMapPath() {
  const QString path = QStringLiteral(ORVEL_DEMO_DIR "/monaco.img");
  return QFileInfo::exists(path) ? path : QString();
}

// How long the demo waits for a real receiver before it replays its recorded drive.
constexpr int kDemoGraceMs = 5000;
constexpr uint32_t kDemoZoomIndex = 7;  // "120 м": 3 m per pixel

void preparePortScanning(GpsInput& input) {
  input.setScanIndicator({[] { showSatellites(0); }, [] { showNoConnection(); }});
  setGpsReadingActive([&input] { return !input.isGpsInputShutDown(); });
}

void stopPortScanning(GpsInput& input) {
  input.demoReplay().stopDemoReplay();
  input.stopScanning();
  setGpsReadingActive(nullptr);
}

// With --demo and no receiver found after a few seconds, a recorded drive replays over the
// demo map so that a new user sees the position move. The setting "DemoReplay" (default on)
// turns it off for users who start with --demo but do not want it.
void scheduleDemoReplay(QObject* context, GpsInput& input) {
  if (!readSettingBool("DemoReplay", true)) return;
  QTimer::singleShot(kDemoGraceMs, context, [&input] {
    if (input.receiverFound() || input.demoReplay().isDemoReplaying()) return;
    input.demoReplay().startDemoReplay(std::string(ORVEL_DEMO_DIR "/") + kDemoCaptureName);
  });
}

void runOptions(MainWindow& window, GpsInput& input) {
  OptionsActions actions;
  actions.resetRotation = [] {
    mapView().setRotation(0);
    composeMapView();
  };
  actions.setTrackRecording = [](bool on) {
    if (on) {
      openTrackFile();
      startRecording();
    } else {
      closeTrackFile();
      stopRecording();
    }
  };
  actions.redrawMap = [] { composeMapView(); };
  runOptionsDialog(&window, input, processSettings(), std::move(actions));
}

void placeWindow(MainWindow& window) {
  const QScreen* screen = QGuiApplication::primaryScreen();
  const QRect available = screen->availableGeometry();
  if (available.width() <= kSmallScreen || available.height() <= kSmallScreen) {
    window.setGeometry(available);
    window.showMaximized();
  } else {
    window.resize(kDesktopWindowSize);
    window.show();
  }
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

int appMain(const QStringList& arguments) {
  const CommandLine commandLine = parseCommandLine(arguments);
  if (!commandLine.error.isEmpty()) {
    std::fprintf(stderr, "orvel: %s\n", qPrintable(commandLine.error));
    return kExitBadCommandLine;
  }
  // The GPS state and what feeds it; the window, the pages and the options dialog use them
  // by reference, and everything that does ends before they go.
  GpsState gps;
  FixProcessor fixes(gps);
  GpsInput input(fixes, processSettings());
  for (const QString& source : commandLine.gpsSources) {
    std::string error;
    if (!input.addGpsOption(source.toStdString(), error)) {
      std::fprintf(stderr, "orvel: %s\n", error.c_str());
      return kExitBadCommandLine;
    }
  }

  // Another viewer running takes over this start; nothing here is touched.
  QStringList forwarded;
  if (!commandLine.mapPath.isEmpty()) forwarded << commandLine.mapPath;
  if (sendToRunningInstance(forwarded)) return kExitAnotherInstance;

  openSettings();
  createDrawingObjects();

  const QString program = QCoreApplication::applicationFilePath();
  writeDesktopEntry(program);
  writeSettingString("Path", program.toStdU16String());
  // The geometric sans of the map styles comes with the program's resources and is used
  // from there; no font file is written into the system.

  if (!QGuiApplication::primaryScreen()) return kExitNoWindow;
  setPagesGpsState(&gps);
  auto window = std::make_unique<MainWindow>(fixes);
  if (!headless()) installMessageBox(window.get());

  InstanceServer server([&window](const QStringList& received) {
    window->raiseWindow();
    const CommandLine line = parseCommandLine(received);
    testLog(QStringLiteral("raised"));
    if (!line.mapPath.isEmpty()) {
      window->openMap(line.mapPath);
      testLog(QStringLiteral("opened ") + line.mapPath);
    }
  });
  if (server.listen()) testLog(QStringLiteral("listening"));

  initPages(*window);
  placeWindow(*window);
  createGpsNotification(*window);

  QString mapPath = commandLine.mapPath;
  const bool demoMap = mapPath.isEmpty() && commandLine.demo;
  if (demoMap) {
    mapPath = demoMapPath();
    // The demo map's middle is open sea: start over the streets the demo drive passes. The
    // centre lies inside the map, so opening it keeps the centre.
    mapView().setCentre(degreesToMapUnits(static_cast<float>(kDemoAnchor.longitude)),
                        degreesToMapUnits(static_cast<float>(kDemoAnchor.latitude)));
  }
  if (!mapPath.isEmpty()) {
    openMapFile(std::filesystem::path(mapPath.toStdString()), mapView());
    testLog(QStringLiteral("opened ") + mapPath);
    // A town scale shows a newcomer streets and their names rather than one kerb.
    if (demoMap && currentMap()) mapView().setZoomIndex(kDemoZoomIndex);
  }

  if (readSettingBool("RecordTrack", false)) openTrackFile();
  openTrackStore();

  FixObserver observer;
  connectTrackRecorders(observer);
  observer.showReception = [](uint32_t satellitesUsed) { showSatellites(satellitesUsed); };
  fixes.setFixObserver(std::move(observer));
  preparePortScanning(input);
  // Sets the status text, and scans unless "ScanCOMPorts" is off.
  input.startScanning();
  if (commandLine.demo) scheduleDemoReplay(window.get(), input);
  window->setOptionsHandler([&window, &input] { runOptions(*window, input); });
  setGaugeDialogRunner([](QDialog& dialog) { return runDialog(dialog); });

  // "Сохранить точку...", the map's pop-up menu and the action-key hold all end in the
  // waypoint dialog.
  setWaypointEditor([owner = window.get()](Waypoint& waypoint) {
    editWaypoint(waypoint, owner, runDialog);
  });
  loadWaypoints();
  composeMapView();

  const int status = QApplication::exec();
  (void)status;

  stopPortScanning(input);
  fixes.setFixObserver(FixObserver{});
  closeTrackFile();
  closeTrackStore();
  freeWaypoints();
  setWaypointEditor(nullptr);
  setGaugeDialogRunner(nullptr);
  removeGpsNotification();
  shutdownPages();
  removeMessageBox();
  window.reset();
  setPagesGpsState(nullptr);
  destroyDrawingObjects();
  closeSettings();
  return kExitNormal;
}

}  // namespace orvel
