// A drive recorded by the viewer itself: fixes enter fix processing while the real window
// runs, the trail appears on the composed map, and after a restart in this process the trail
// and the waypoints are still there and the MapSource file holds exactly the recorded points.
#include <sys/stat.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <fstream>
#include <iterator>
#include <thread>

#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include "app/app.h"
#include "app/gps_notification.h"
#include "common/test_data.h"
#include "core/message.h"
#include "core/settings.h"
#include "gps/fix_processing.h"
#include "gps/ole_date.h"
#include "pages/commands.h"
#include "shell_fixture.h"
#include "track/active_track.h"
#include "track/mps_reader.h"
#include "track/ui/waypoint_dialog.h"
#include "track/waypoints.h"

namespace orvel::test {
namespace {

constexpr uint32_t kDriveZoom = 8;  // 200 m to the 40-pixel bar
constexpr double kStartSeconds = 1717236000.0;  // 2024-06-01 10:00:00 UTC
const QColor kTrackColour(207, 3, 218);

struct DrivePoint {
  GpsFix fix;
  bool recorded;  // far enough from the one before to become a track point
};

GpsFix driveFix(int step, float lon, float lat) {
  GpsFix fix;
  fix.flags = kFixTime | kFixPosition | kFixAltitude | kFixHorizontalError | kFixSatellitesUsed |
              kFixSpeed | kFixCourse;
  fix.time = unixSecondsToAutomationDate(kStartSeconds + 5.0 * step);
  fix.longitude = lon;
  fix.latitude = lat;
  fix.altitude = 50.0f + 0.25f * static_cast<float>(step);
  fix.horizontalError = 5.0f;
  fix.satellitesUsed = 7;
  fix.speed = 24.0f;
  fix.course = 55.0f;
  return fix;
}

// Two stretches north-east through Monaco with jitter that is no movement, split by a
// stretch without a position.
std::vector<DrivePoint> drive() {
  std::vector<DrivePoint> points;
  float lon = 7.4150f, lat = 43.7300f;
  int step = 0;
  for (int i = 0; i < 10; ++i, ++step, lon += 0.0003f, lat += 0.0002f) {
    points.push_back({driveFix(step, lon, lat), true});
    if (i == 4) points.push_back({driveFix(++step, lon + 1e-5f, lat - 1e-5f), false});  // jitter
  }
  GpsFix noPosition = driveFix(++step, 0, 0);
  noPosition.flags &= ~kFixPosition;
  points.push_back({noPosition, false});
  lon += 0.0006f;
  for (int i = 0; i < 8; ++i, ++step, lon += 0.0003f, lat += 0.0002f) {
    points.push_back({driveFix(step, lon, lat), true});
  }
  return points;
}

MapPoint toScreen(const MapView& view, float lon, float lat) {
  return view.mapToScreen({degreesToMapUnits(lon), degreesToMapUnits(lat)});
}

bool trackPixelNear(const QImage& picture, QPointF at) {
  for (int dy = -2; dy <= 2; ++dy) {
    for (int dx = -2; dx <= 2; ++dx) {
      const QPoint p(static_cast<int>(std::lround(at.x())) + dx, static_cast<int>(std::lround(at.y())) + dy);
      if (!picture.rect().contains(p)) continue;
      const QColor c = picture.pixelColor(p);
      if (std::abs(c.red() - kTrackColour.red()) < 30 && c.green() < 40 &&
          std::abs(c.blue() - kTrackColour.blue()) < 30) {
        return true;
      }
    }
  }
  return false;
}

// Every stretch between consecutive recorded points of one segment is drawn; the gap between
// the two segments is not.
void expectTrailDrawn(const MapPage& page, const MapView& view, const std::vector<DrivePoint>& points,
                      const char* when) {
  const QImage& picture = page.composer().picture();
  ASSERT_FALSE(picture.isNull()) << when;
  const DrivePoint* previous = nullptr;
  bool gapChecked = false;
  const DrivePoint* lastOfFirst = nullptr;
  for (const DrivePoint& point : points) {
    if (!point.fix.has(kFixPosition)) {
      previous = nullptr;  // the next recorded point begins a new segment
      continue;
    }
    if (!point.recorded) continue;
    if (previous) {
      const MapPoint a = toScreen(view, previous->fix.longitude, previous->fix.latitude);
      const MapPoint b = toScreen(view, point.fix.longitude, point.fix.latitude);
      for (double t : {0.25, 0.5, 0.75}) {
        const QPointF at(a.x + t * (b.x - a.x), a.y + t * (b.y - a.y));
        EXPECT_TRUE(trackPixelNear(picture, at)) << when << ": no trail at " << at.x() << "," << at.y();
      }
      lastOfFirst = &point;
    } else if (lastOfFirst && !gapChecked) {
      const MapPoint a = toScreen(view, lastOfFirst->fix.longitude, lastOfFirst->fix.latitude);
      const MapPoint b = toScreen(view, point.fix.longitude, point.fix.latitude);
      EXPECT_FALSE(trackPixelNear(picture, QPointF((a.x + b.x) / 2.0, (a.y + b.y) / 2.0))) << when;
      gapChecked = true;
    }
    previous = &point;
  }
  EXPECT_TRUE(gapChecked) << when;
}

std::string fileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class RecordingTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    writeSettingBool("RecordTrack", true);
    session->settings.closeSettings();
    const std::string dir = scratch.string();
    std::filesystem::create_directories(scratch / "runtime");
    ::chmod((scratch / "runtime").c_str(), 0700);
    ::setenv("ORVEL_CONFIG_FILE", (dir + "/GisOrvel.conf").c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", (dir + "/runtime").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (dir + "/share").c_str(), 1);
    ::setenv("ORVEL_DATA_DIR", (dir + "/data").c_str(), 1);
  }
  void TearDown() override {
    for (const char* name : {"ORVEL_CONFIG_FILE", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "ORVEL_DATA_DIR"}) {
      ::unsetenv(name);
    }
    ShellTest::TearDown();
  }

  // Runs the viewer with `during` called once it is up, its real waypoint store and dialog
  // answered here; ends it with the exit command.
  int runViewer(const std::function<void(Session&, MainWindow&)>& during) {
    return appMain({}, [&](Session& running, MainWindow& shown) {
      shown.dialogs().dialog = [this](QDialog& dialog) {
        dialogsRun.push_back(dialog.objectName().toStdString());
        if (onDialog) onDialog(dialog);
        return dialog.result();
      };
      during(running, shown);
      processEvents();
      shown.onCommand(kCmdExit);
    });
  }

  static void showDrive(Session& running, MainWindow& shown, const GpsFix& last) {
    running.view.setZoomIndex(kDriveZoom);
    running.view.setCentre(degreesToMapUnits(last.longitude), degreesToMapUnits(last.latitude));
    shown.pages().mapPage().compose();
  }
};

TEST_F(RecordingTest, TrailWaypointsAndExportSurviveARestart) {
  const std::vector<DrivePoint> points = drive();
  const GpsFix& last = points.back().fix;
  ASSERT_EQ(last.altitude, 54.75f);
  const float waypointLon = last.longitude - 0.004f;  // beside the trail, in its own pixels
  const float waypointLat = last.latitude + 0.002f;
  std::filesystem::path exported;

  const int first = runViewer([&](Session& running, MainWindow& shown) {
    running.view.setZoomIndex(kDriveZoom);
    for (const DrivePoint& point : points) {
      running.fixes.updateFix(point.fix);
      processEvents();  // the map page follows each fix, as the message loop would
    }
    EXPECT_EQ(shown.findChild<QLabel*>("gpsReception")->property("iconId").toInt(), kIconReceiving);
    showDrive(running, shown, last);
    expectTrailDrawn(shown.pages().mapPage(), running.view, points, "while recording");

    // "Сохранить точку..." at a centre away from the trail, named in the dialog.
    running.view.setCentre(degreesToMapUnits(waypointLon), degreesToMapUnits(waypointLat));
    onDialog = [](QDialog& shown) {
      auto& dialog = static_cast<WaypointEditDialog&>(shown);
      EXPECT_EQ(dialog.field(kWaypointAltitudeId)->text(), QStringLiteral("54.8"));  // the fix's
      dialog.field(kWaypointNameId)->setText(QStringLiteral("Дом"));
      dialog.field(kWaypointCommentId)->setText(QStringLiteral("у моста"));
      dialog.accept();
    };
    shown.onCommand(kCmdSavePoint);
    onDialog = nullptr;
  });
  ASSERT_EQ(first, 0);
  EXPECT_EQ(dialogsRun, std::vector<std::string>{"109"});

  // The export holds the recorded points and nothing else, one track per stretch.
  int exports = 0;
  for (const auto& entry : std::filesystem::directory_iterator(scratch / "data")) {
    if (entry.path().extension() != ".mps") continue;
    exported = entry.path();
    ++exports;
  }
  ASSERT_EQ(exports, 1);
  const std::string firstExport = fileBytes(exported);
  const auto* bytes = reinterpret_cast<const uint8_t*>(firstExport.data());
  const std::optional<MpsFile> file = readMpsFile({bytes, firstExport.size()});
  ASSERT_TRUE(file.has_value());
  EXPECT_TRUE(file->ended);
  ASSERT_EQ(file->tracks.size(), 2u);
  std::vector<MpsPoint> written;
  for (const MpsTrack& track : file->tracks) written.insert(written.end(), track.points.begin(), track.points.end());
  EXPECT_EQ(file->tracks[0].points.size(), 10u);
  std::vector<const GpsFix*> recorded;
  for (const DrivePoint& point : points) {
    if (point.recorded) recorded.push_back(&point.fix);
  }
  ASSERT_EQ(written.size(), recorded.size());
  constexpr double kSemicirclesPerDegree = 2147483648.0 / 180.0;
  for (size_t i = 0; i < recorded.size(); ++i) {
    const GpsFix& fix = *recorded[i];
    EXPECT_NEAR(written[i].latitude, fix.latitude * kSemicirclesPerDegree, 64.0) << i;
    EXPECT_NEAR(written[i].longitude, fix.longitude * kSemicirclesPerDegree, 64.0) << i;
    EXPECT_TRUE(written[i].hasAltitude);
    EXPECT_EQ(written[i].altitude, static_cast<double>(fix.altitude)) << i;
    EXPECT_TRUE(written[i].hasTime);
    EXPECT_EQ(written[i].time, static_cast<uint32_t>(std::lround(automationDateToUnixSeconds(fix.time)))) << i;
  }
  // The viewer let go of the ring at exit (it opens here) and left the trail and the named
  // waypoint on disk.
  Settings settings;
  Messages quiet;
  ActiveTrack ring(scratch / "data", settings, quiet);
  ring.openTrackStore();
  EXPECT_EQ(ring.activeTrackPoints().size(), recorded.size());  // none unless it opened
  ring.closeTrackStore();
  WaypointStore saved(scratch / "data", quiet);
  saved.loadWaypoints();
  ASSERT_FALSE(saved.waypoints().empty());
  const Waypoint& home = saved.waypoints().front();
  EXPECT_EQ(home.name(), u"Дом");
  EXPECT_EQ(home.strings[kWaypointComment], u"у моста");
  EXPECT_NEAR(home.altitude, 54.8f, 1e-4f);  // the shown tenths went back in
  EXPECT_NEAR(home.lat / kSemicirclesPerDegree, waypointLat, 1e-4);
  EXPECT_NEAR(home.lon / kSemicirclesPerDegree, waypointLon, 1e-4);

  // The export is named by the second its run began: start the second run in a later one.
  const std::time_t firstEnded = std::time(nullptr);
  while (std::time(nullptr) == firstEnded) std::this_thread::sleep_for(std::chrono::milliseconds(20));

  const char* shots = std::getenv("ORVEL_SHOT_DIR");
  const int second = runViewer([&](Session& running, MainWindow& shown) {
    showDrive(running, shown, last);
    expectTrailDrawn(shown.pages().mapPage(), running.view, points, "after the restart");
    // The waypoint's icon is drawn where it lies; the trail is nowhere near.
    const MapPoint at = toScreen(running.view, waypointLon, waypointLat);
    const QImage& picture = shown.pages().mapPage().composer().picture();
    int marked = 0;
    for (int dy = -8; dy <= 8; ++dy) {
      for (int dx = -8; dx <= 8; ++dx) {
        const QPoint p(at.x + dx, at.y + dy);
        if (picture.rect().contains(p) && picture.pixelColor(p) != QColor(Qt::white)) ++marked;
      }
    }
    EXPECT_GT(marked, 20);
    EXPECT_FALSE(trackPixelNear(picture, QPointF(at.x, at.y)));

    // Holding the action key opens the same dialog; a cancelled one keeps the numbered point.
    dialogsRun.clear();
    ASSERT_TRUE(shown.keyDown(Qt::Key_Return, false));
    shown.deliverTimer(kActionTimerId);
    shown.keyUp(Qt::Key_Return, false);
    EXPECT_EQ(dialogsRun, std::vector<std::string>{"109"});

    if (shots) {
      const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
      if (!map.empty()) shown.openMap(QString::fromStdString(map.string()));
      running.fixes.setStatusText(u"NMEA 4800, COM1");
      running.fixes.updateFix(last);
      processEvents();
      showDrive(running, shown, last);
      running.view.setZoomIndex(5);
      running.view.pan(150, 50);
      shown.pages().mapPage().compose();
      processEvents();
      shown.grab().save(QString::fromUtf8(shots) + QStringLiteral("/recording.png"));
    }
  });
  ASSERT_EQ(second, 0);
  // Saved newest first, loaded reversed.
  saved.freeWaypoints();
  saved.loadWaypoints();
  std::vector<std::u16string> names;
  for (const Waypoint& w : saved.waypoints()) names.emplace_back(w.name());
  EXPECT_EQ(names, (std::vector<std::u16string>{u"Дом", u"001"}));
  // The first run's export is untouched by the second run.
  EXPECT_EQ(fileBytes(exported), firstExport);
}

}  // namespace
}  // namespace orvel::test
