// Writes the seeds of the fuzz targets whose files the program makes itself, with the
// program's own writers: a settings file as the viewer and its dialogs leave it, a
// Waypoints.bin of a few saved waypoints, and Tracks.bin rings (short, and full after the
// wrap). Usage: orvel-fuzz-seeds FOLDER (makes settings/, waypoints/ and ring/ in it).
#include <cstdio>
#include <filesystem>
#include <string>

#include "core/message.h"
#include "core/settings.h"
#include "track/active_track.h"
#include "track/waypoints.h"

namespace fs = std::filesystem;
using namespace orvel;

namespace {

void writeSettings(const fs::path& file) {
  Settings settings;
  settings.openSettingsAt(file);
  settings.writeSettingString("Path", u"/opt/Орвел/bin/orvel");
  settings.writeSettingInt("Page", 2);
  settings.writeSettingBool("KeepVisible", true);
  settings.writeSettingBool("RotateMap", false);
  settings.writeSettingBool("RecordTrack", true);
  settings.writeSettingBool("ShowTrack", true);
  settings.writeSettingBool("ScanCOMPorts", true);
  for (int port = 1; port <= 3; ++port) settings.writeSettingInt("Enable_COM" + std::to_string(port), port != 2);
  const char16_t* gauges[] = {u"speed", u"azimuth", u"vspeed", u"elev", u"hdop", u"satellites"};
  for (int cell = 0; cell < 6; ++cell) settings.writeSettingString("Gauge_" + std::to_string(cell), gauges[cell]);
  settings.writeSettingString("Comment", u"back\\slash\nnew line\r");
  settings.writeSettingInt("NotificationOptions", -1);
}

void writeWaypoints(const fs::path& folder, Messages& messages) {
  WaypointStore store(folder, messages);
  store.addWaypoint(7.4280f, 43.7400f, 45292.5, 12.5f);
  store.setWaypointEditor([](Waypoint& w) {
    setWaypointString(w, kWaypointName, u"Дом");
    setWaypointString(w, kWaypointComment, u"у моста");
  });
  store.addWaypoint(-98.6066f, 29.4456f, 0.0, 0.0f);
  store.setWaypointEditor({});
  store.addWaypoint(175.3149f, -37.7848f, 41999.125, -3.0f);
}

void writeRing(const fs::path& folder, Settings& settings, Messages& messages, int points) {
  ActiveTrack track(folder, settings, messages);
  track.openTrackStore();
  track.startRecording();
  for (int i = 0; i < points; ++i) {
    if (i % 97 == 0) track.markSegmentStart();
    track.appendActivePoint(7.42f + 0.0001f * static_cast<float>(i % 500), 43.73f + 0.00005f * static_cast<float>(i));
  }
  track.closeTrackStore();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  const fs::path out = argv[1];
  for (const char* sub : {"settings", "waypoints", "ring/short", "ring/full"}) fs::create_directories(out / sub);
  Settings noFile;
  Messages messages;
  writeSettings(out / "settings" / "GisOrvel.conf");
  writeWaypoints(out / "waypoints", messages);
  writeRing(out / "ring" / "short", noFile, messages, 300);
  writeRing(out / "ring" / "full", noFile, messages, 12345);
  fs::rename(out / "ring" / "short" / "Tracks.bin", out / "ring" / "Tracks-short.bin");
  fs::rename(out / "ring" / "full" / "Tracks.bin", out / "ring" / "Tracks-full.bin");
  fs::remove(out / "ring" / "short");
  fs::remove(out / "ring" / "full");
  return 0;
}
