// orvel-tool info MAP|FILE.gpx
#include <cstdio>

#include <QFile>

#include "commands.h"
#include "core/message.h"
#include "gpx/gpx_reader.h"
#include "map/current_map.h"
#include "map/img/img_map_file.h"
#include "view/map_view.h"

namespace orvel::tool {
namespace {

// A GPX file by its name or by its first bytes.
bool isGpxFile(const QString& path) {
  if (path.endsWith(QLatin1String(".gpx"), Qt::CaseInsensitive)) return true;
  QFile file(path);
  return file.open(QIODevice::ReadOnly) && looksLikeGpx(file.read(256));
}

int gpxInfo(const QString& path) {
  GpxData data;
  QString error;
  if (!readGpxFile(path.toStdString(), data, error)) {
    std::fprintf(stderr, "orvel-tool info: %s\n", qPrintable(error));
    return kExitFailed;
  }
  const GpxCounts counts = countGpx(data);
  std::printf("tracks: %zu\nsegments: %zu\ntrack_points: %zu\n", counts.tracks, counts.segments, counts.trackPoints);
  std::printf("routes: %zu\nroute_points: %zu\nwaypoints: %zu\n", counts.routes, counts.routePoints, counts.waypoints);
  if (counts.bounds.empty) {
    std::printf("bounds_deg: none\n");
  } else {
    std::printf("bounds_deg: %.7f %.7f %.7f %.7f\n", counts.bounds.south, counts.bounds.west, counts.bounds.north,
                counts.bounds.east);
  }
  return kExitOk;
}

}  // namespace

int runInfo(std::span<const char* const> args) {
  if (args.empty()) return usageError("info", "missing MAP (try --help)");
  if (args.size() > 1) return usageError("info", "too many arguments (try --help)");
  const QString path = QString::fromLocal8Bit(args[0]);
  if (isGpxFile(path)) return gpxInfo(path);

  Messages messages;  // to stderr
  CurrentMap map(messages);
  MapView view;
  view.setCentre(0, 0);
  if (!map.openMapFile(args[0], view)) return kExitFailed;

  MapFacts facts;
  map.currentMap()->describe(facts);
  for (const auto& [key, value] : facts) std::printf("%s: %s\n", key.c_str(), value.c_str());
  std::printf("zoom_index: %u\n", view.zoomIndex());
  std::printf("centre_units: %d %d\n", view.centre().x, view.centre().y);
  if (const auto* img = dynamic_cast<const ImgMapFile*>(map.currentMap())) {
    MapFacts tiles;
    img->describeTiles(tiles);
    for (const auto& [key, value] : tiles) std::printf("%s: %s\n", key.c_str(), value.c_str());
  }
  return kExitOk;
}

}  // namespace orvel::tool
