// Composing the map view of the largest real map, as the map page does after every change of
// the view: at every zoom step, at the handheld's screen (240x320) and at 800x480, centred on
// the densest town view of the map. Each composition is timed on its own; the counters give
// the median and the slowest in milliseconds.
//
// The densest view is found once: the centre, on a grid of half-screen steps over the map,
// whose 800x480 view at 5 m per pixel (zoom step 8) draws the most objects.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <vector>

#include <QGuiApplication>

#include "bench_support.h"
#include "core/message.h"
#include "map/catalogue/map_styles.h"
#include "map/format/map_file.h"
#include "compose/view_composer.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace {

using orvel::MapPoint;
using orvel::MapRect;

constexpr int kTownZoom = 8;

// Objects that drawing the view would put on the screen (their box meets the view).
class VisibleCounter final : public orvel::ObjectConsumer {
 public:
  explicit VisibleCounter(const MapRect& visible) : visible_(visible) {}
  void onObject(const orvel::MapObject& object) override {
    MapRect box;
    for (const MapPoint& p : object.points) {
      box.west = std::min(box.west, p.x);
      box.east = std::max(box.east, p.x);
      box.south = std::min(box.south, p.y);
      box.north = std::max(box.north, p.y);
    }
    if (orvel::intersects(box, visible_)) ++count;
  }
  int count = 0;

 private:
  MapRect visible_;
};

// The largest map, opened as the viewer opens it, and the densest town view's centre.
struct DenseView {
  bool ok = false;
  MapPoint centre;
  int objects = 0;
};

const DenseView& denseView() {
  static const DenseView found = [] {
    DenseView dense;
    orvel::MapView view;
    const auto map = orvel::bench::dataDir() / "maps" / "liechtenstein_route_cp1252_bs512.img";
    if (!orvel::bench::kit().map.openMapFile(map, view)) return dense;
    view.setScreenSize(800, 480);
    view.setZoomIndex(kTownZoom);
    const MapRect bounds = orvel::bench::kit().map.currentMap()->bounds();
    const MapRect screen = view.visibleRect();
    const int32_t stepX = std::max(1, (screen.east - screen.west) / 2);
    const int32_t stepY = std::max(1, (screen.north - screen.south) / 2);
    for (int32_t y = bounds.south; y <= bounds.north; y += stepY) {
      for (int32_t x = bounds.west; x <= bounds.east; x += stepX) {
        view.setCentre(x, y);
        const MapRect visible = view.visibleRect();
        VisibleCounter counter(visible);
        orvel::bench::kit().map.currentMap()->decode(view, visible, counter);
        if (counter.count > dense.objects) {
          dense.objects = counter.count;
          dense.centre = view.centre();
        }
      }
    }
    dense.ok = true;
    return dense;
  }();
  return found;
}

// Args: screen width, zoom step. The height is 320 for width 240, else 480.
void BM_ComposeDensestView(benchmark::State& state) {
  orvel::bench::kit();
  const DenseView& dense = denseView();
  if (!dense.ok) {
    state.SkipWithError("liechtenstein_route_cp1252_bs512.img not found or not loadable");
    return;
  }
  const int width = static_cast<int>(state.range(0));
  orvel::MapView view;
  view.setScreenSize(width, width == 240 ? 320 : 480);
  view.setZoomIndex(static_cast<uint32_t>(state.range(1)));
  view.setCentre(dense.centre.x, dense.centre.y);
  orvel::ViewComposer composer(orvel::bench::kit().settings, orvel::bench::kit().drawing, orvel::bench::kit().styles);
  composer.composeView(orvel::bench::kit().map.currentMap(), view);  // the picture is made once, as on screen

  std::vector<double> ms;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    composer.composeView(orvel::bench::kit().map.currentMap(), view);
    ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(ms.begin(), ms.end());
  state.counters["median_ms"] = ms[ms.size() / 2];
  state.counters["slowest_ms"] = ms.back();
  state.counters["m_per_px"] =
      static_cast<double>(view.unitsNum()) / view.unitsDen() / 0.4194304;  // 2^24 units make 40,000 km
  state.counters["objects_at_town_scale"] = dense.objects;
  state.counters["centre_lat"] = orvel::mapUnitsToDegrees(dense.centre.y);
  state.counters["centre_lon"] = orvel::mapUnitsToDegrees(dense.centre.x);
}
BENCHMARK(BM_ComposeDensestView)
    ->ArgsProduct({{240, 800}, benchmark::CreateDenseRange(0, orvel::kZoomSteps - 1, 1)})
    ->ArgNames({"width", "zoom"})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.2);

}  // namespace
