// The whole start-up and shutdown in this process, ended by the exit command: a receiver on a
// pseudo-terminal found and recorded by the reading thread meanwhile, and a GPX file shown
// over the map, shown again at the next start until it is closed.
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include <QAction>
#include <QCoreApplication>
#include <QImage>
#include <QPainter>

#include "app/app.h"
#include "app/dialogs.h"
#include "common/test_data.h"
#include "core/utf.h"
#include "geo/units.h"
#include "gps/pty_support.h"
#include "gpx/layer/gpx_layer.h"
#include "pages/commands.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

// The environment appMain finds its files through, in the test's scratch folder.
class AppMainTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
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
};

TEST_F(AppMainTest, StartsWithMapAndReceiverShowsATrackFileAndEndsWithZero) {
  const std::filesystem::path map = dataFile("maps/monaco_cp1252.img");
  const std::filesystem::path capture = dataFile("gps/nmea/bu353s4.log");
  const std::filesystem::path gpx = dataFile("gpx/cerknicko-jezero-no-creator.gpx");
  ASSERT_FALSE(map.empty() || capture.empty() || gpx.empty());
  const std::filesystem::path notes = scratch / "notes.gpx";
  std::ofstream(notes) << "not a track\n";
  PtyPair pty;
  ASSERT_FALSE(pty.path.empty());
  const std::jthread receiver = receiverThread(pty.master, readFile(capture));
  writeSettingInt("RecordTrack", 1);  // the settings file appMain reads

  bool mapOpenAtFirstComposition = false, markerWithoutValidPosition = false, recorded = false;
  uint64_t compositions = 0;
  std::string found, refusal;
  QString cancel;
  bool shown = false, viewOnTrack = false, unchangedByRefusal = false;
  int trackPixels = 0;
  const QStringList arguments{QString::fromStdString(map.string()), "--gps", QString::fromStdString(pty.path)};
  const int status = appMain(arguments, [&](Session& running, MainWindow& window) {
    mapOpenAtFirstComposition = running.map.currentMap() != nullptr;
    compositions = window.pages().mapPage().compositionCount();
    cancel = QCoreApplication::translate("QPlatformTheme", "Cancel");  // Qt's own texts in Russian
    // The window goes on handling what the reading thread posts until the receiver is in
    // (its status names the port's COM number) and its fixes are recorded.
    waitUntil([&] {
      QCoreApplication::processEvents();
      found = utf16ToUtf8(running.gps.gpsSnapshot().statusText);
      recorded = !running.track.activeTrackPoints().empty();
      return found.rfind("NMEA-0183 через COM", 0) == 0 && running.gps.currentFix().has(kFixPosition) && recorded;
    }, 8000);
    // A fix whose position is not valid still puts the marker where its fields point.
    auto paintWithFixAt = [&](float lon, float lat) {
      GpsFix fix;
      fix.longitude = lon;
      fix.latitude = lat;
      running.gps.exchangeFix(fix);
      QImage image(running.view.screenWidth(), running.view.screenHeight(), QImage::Format_RGB32);
      QPainter painter(&image);
      window.pages().mapPage().composer().paintView(painter, running.view);
      return image;
    };
    const MapPoint centre = running.view.centre();
    markerWithoutValidPosition = paintWithFixAt(mapUnitsToDegrees(centre.x), mapUnitsToDegrees(centre.y)) !=
                                 paintWithFixAt(-170.0f, -80.0f);

    // "Открыть трек..." shows a GPX file over the map; a file that is not GPX changes nothing.
    MessageRecorder recorder(running.messages);
    std::filesystem::path chosen = gpx;
    window.dialogs().gpxFile = [&chosen](QWidget*) { return QString::fromStdString(chosen.string()); };
    window.onCommand(kCmdOpenTrack);
    shown = running.gpxLayer.isShown() && running.gpxLayer.gpxPath() == gpx &&
            window.commandAction(kCmdCloseTrack)->isEnabled();
    viewOnTrack = contains(running.gpxLayer.bounds(), running.view.centre());
    const QImage& picture = window.pages().mapPage().composer().picture();
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) trackPixels += picture.pixel(x, y) == (0xFF000000u | kGpxLayerRgb);
    }
    chosen = notes;
    window.onCommand(kCmdOpenTrack);
    refusal = recorder.last();
    unchangedByRefusal = running.gpxLayer.isShown() && running.gpxLayer.gpxPath() == gpx &&
                         running.settings.readSettingString("GpxFile", u"") == gpx.u16string();
    window.onCommand(kCmdExit);
  });
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(mapOpenAtFirstComposition);
  EXPECT_EQ(compositions, 1u);
  EXPECT_EQ(cancel, QStringLiteral("Отмена"));
  EXPECT_EQ(found.rfind("NMEA-0183 через COM", 0), 0u) << found;
  EXPECT_TRUE(recorded);
  EXPECT_TRUE(markerWithoutValidPosition);
  EXPECT_TRUE(std::filesystem::exists(scratch / "data" / "Tracks.bin"));
  EXPECT_TRUE(shown);
  EXPECT_TRUE(viewOnTrack);
  EXPECT_GT(trackPixels, 300);
  EXPECT_EQ(refusal.rfind("Не удается открыть трек " + notes.string() + ":\nnot a GPX file: ", 0), 0u) << refusal;
  EXPECT_TRUE(unchangedByRefusal);

  // The file shown at exit is shown again at the next start, until "Закрыть трек".
  bool shownAgain = false, closed = false;
  std::u16string remembered = u"?";
  EXPECT_EQ(appMain({}, [&](Session& running, MainWindow& window) {
    shownAgain = running.gpxLayer.isShown() && running.gpxLayer.gpxPath() == gpx;
    window.onCommand(kCmdCloseTrack);
    closed = !running.gpxLayer.isShown() && !window.commandAction(kCmdCloseTrack)->isEnabled();
    remembered = running.settings.readSettingString("GpxFile", u"?");
    window.onCommand(kCmdExit);
  }), 0);
  EXPECT_TRUE(shownAgain);
  EXPECT_TRUE(closed);
  EXPECT_EQ(remembered, u"");
}

}  // namespace
}  // namespace orvel::test
