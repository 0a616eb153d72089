// orvel-tool render [MAP] -o OUT.png [--gpx FILE] [--size WxH] [--zoom N] [--centre LAT,LON] [--rotation DEG]
//                  [--bench N]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QString>

#include "commands.h"
#include "compose/view_composer.h"
#include "core/message.h"
#include "core/settings.h"
#include "gpx/layer/gpx_layer.h"
#include "map/catalogue/map_styles.h"
#include "map/current_map.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"
#include "view_options.h"

namespace orvel::tool {
namespace {

// Composes `count` times; prints the median and the slowest time.
void benchCompose(ViewComposer& composer, MapFile* map, const MapView& view, int count) {
  std::vector<double> ms;
  ms.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const auto start = std::chrono::steady_clock::now();
    composer.composeView(map, view);
    const auto end = std::chrono::steady_clock::now();
    ms.push_back(std::chrono::duration<double, std::milli>(end - start).count());
  }
  std::vector<double> sorted = ms;
  std::sort(sorted.begin(), sorted.end());
  const size_t n = sorted.size();
  const double median = n % 2 == 1 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2.0;
  std::printf("compositions: %d\nmedian_ms: %.3f\nslowest_ms: %.3f\n", count, median, sorted.back());
}

// The screen as the map page shows it: the composed picture with the scale bar and the
// north arrow over it (no receiver, so no position marker).
bool writePicture(const ViewComposer& composer, const MapView& view, const char* path) {
  QImage screen(view.screenWidth(), view.screenHeight(), QImage::Format_RGB32);
  screen.fill(Qt::white);
  {
    QPainter painter(&screen);
    composer.paintView(painter, view);
  }
  if (!screen.save(QString::fromLocal8Bit(path), "PNG")) {
    std::fprintf(stderr, "orvel-tool render: cannot write %s\n", path);
    return false;
  }
  return true;
}

}  // namespace

int runRender(std::span<const char* const> args) {
  ViewOptions options;
  if (const int code = parseViewOptions("render", args, OptionSet{true, true, true, true}, options);
      code != kExitOk) {
    return code;
  }
  if (options.output == nullptr && options.bench == 0) return usageError("render", "missing -o OUT.png (try --help)");

  const GuiApplication app;
  // Made once before any drawing, as the viewer does at start-up.
  const DrawingObjects drawing;
  const MapStyles styles;
  const Settings settings;  // none opened: every layer at its default
  Messages messages;        // to stderr
  CurrentMap map(messages);
  MapView view;
  GpxLayer gpx;
  if (options.gpx) {
    QString error;
    if (!gpx.openGpx(options.gpx, error)) {
      std::fprintf(stderr, "orvel-tool render: %s\n", qPrintable(error));
      return kExitFailed;
    }
  }
  if (options.map) {
    if (!openMapView(options, view, map)) return kExitFailed;
  } else {
    view.setScreenSize(options.width, options.height);
    view.setRotation(options.rotation);
  }
  if (options.gpx && !options.centre) {
    // The whole file, at the zoom step asked for if any.
    fitViewTo(view, gpx.bounds());
    if (options.zoom) view.setZoomIndex(*options.zoom);
  } else if (!options.map) {
    if (options.zoom) view.setZoomIndex(*options.zoom);
    if (options.centre) view.setCentre(options.centre->x, options.centre->y);
  }
  ViewComposer composer(settings, drawing, styles);
  composer.setGpxLayer([&gpx, &drawing](QPainter& painter, const MapView& shown, const MapRect& visible) {
    gpx.drawGpx(painter, drawing, shown, visible);
  });
  composer.composeView(map.currentMap(), view);
  int result = kExitOk;
  if (options.output != nullptr && !writePicture(composer, view, options.output)) result = kExitFailed;
  if (options.bench > 0) benchCompose(composer, map.currentMap(), view, options.bench);
  return result;
}

}  // namespace orvel::tool
