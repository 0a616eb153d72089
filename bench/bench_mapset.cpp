// A map set of 2,025 tiles in a 2 GB container (copies of the Monaco map on a grid, with
// holes between them): opening it as the viewer does, and composing 800x480 views at its
// centre and at its south-west corner, at a zoom that shows about 20 tiles and at a street
// zoom, and the whole set at its centre. The single-tile Monaco map at the same street zoom gives the time per object of a
// view inside one tile, for comparison.
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <QGuiApplication>

#include "bench_support.h"
#include "map/catalogue/map_styles.h"
#include "map/img/img_map_file.h"
#include "map/format/map_file.h"
#include "mapset_writer.h"
#include "compose/view_composer.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace {

using orvel::MapRect;

constexpr int kTiles = 2025;
constexpr uint64_t kTargetBytes = 2'000'000'000;
constexpr uint32_t kTwentyTilesZoom = 15;  // 5 km per 40 pixels
constexpr uint32_t kStreetZoom = 4;        // 30 m per 40 pixels
constexpr uint32_t kWholeSetZoom = 20;     // 80 km per 40 pixels: about 1,000 tiles in view
constexpr float kMonacoLat = 43.7384f;
constexpr float kMonacoLon = 7.4246f;

std::filesystem::path monaco() { return orvel::bench::dataDir() / "maps" / "monaco_default_6bit.img"; }

struct GeneratedSet {
  std::filesystem::path path;
  orvel::bench::MapSetLayout layout;
  std::string error;
};

// The file to remove at exit; a plain array, so that it outlives every static object.
char gWrittenPath[4096];

void removeSet() {
  if (gWrittenPath[0] != 0) std::remove(gWrittenPath);
}

// Written once per run into the temporary directory, removed at exit.
const GeneratedSet& generatedSet() {
  static GeneratedSet set = [] {
    GeneratedSet s;
    s.path = std::filesystem::temp_directory_path() / ("orvel-mapset-" + std::to_string(getpid()) + ".img");
    if (s.path.native().size() < sizeof gWrittenPath) {
      std::memcpy(gWrittenPath, s.path.c_str(), s.path.native().size() + 1);
      std::atexit(removeSet);
    }
    if (!orvel::bench::writeMapSet(monaco(), s.path, kTiles, kTargetBytes, s.layout, s.error)) s.path.clear();
    return s;
  }();
  return set;
}

// Resident memory of this process in KiB: anonymous (heap) and file-backed (mapped pages).
struct Resident {
  long anonKiB = 0;
  long fileKiB = 0;
  long heapKiB = 0;  // bytes in use by malloc
};

Resident resident() {
  Resident r;
  if (std::FILE* f = std::fopen("/proc/self/status", "r")) {
    char line[256];
    while (std::fgets(line, sizeof line, f)) {
      std::sscanf(line, "RssAnon: %ld", &r.anonKiB);
      std::sscanf(line, "RssFile: %ld", &r.fileKiB);
    }
    std::fclose(f);
  }
  r.heapKiB = static_cast<long>(mallinfo2().uordblks / 1024);
  return r;
}

class Counter final : public orvel::ObjectConsumer {
 public:
  void onObject(const orvel::MapObject&) override { ++objects; }
  long objects = 0;
};

void BM_MapSetOpen(benchmark::State& state) {
  const GeneratedSet& set = generatedSet();
  if (set.path.empty()) {
    state.SkipWithError(set.error.c_str());
    return;
  }
  orvel::MapView view;
  orvel::bench::kit().map.closeMapFile();
  Resident before;
  Resident after;
  for (auto _ : state) {
    state.PauseTiming();
    orvel::bench::kit().map.closeMapFile();
    before = resident();
    state.ResumeTiming();
    if (!orvel::bench::kit().map.openMapFile(set.path, view)) {
      state.SkipWithError("the map set cannot be opened");
      return;
    }
    state.PauseTiming();
    after = resident();
    state.ResumeTiming();
  }
  const auto* map = dynamic_cast<const orvel::ImgMapFile*>(orvel::bench::kit().map.currentMap());
  state.counters["tiles"] = map != nullptr ? static_cast<double>(map->tiles().size()) : 0;
  state.counters["file_MiB"] = static_cast<double>(set.layout.bytes >> 20);
  state.counters["block_size"] = set.layout.blockSize;
  state.counters["heap_growth_KiB"] = static_cast<double>(after.heapKiB - before.heapKiB);
  state.counters["anon_rss_growth_KiB"] = static_cast<double>(after.anonKiB - before.anonKiB);
  state.counters["mapped_pages_KiB"] = static_cast<double>(after.fileKiB - before.fileKiB);
  orvel::bench::kit().map.closeMapFile();
}
BENCHMARK(BM_MapSetOpen)->Unit(benchmark::kMillisecond)->Iterations(5);

// Composes the view over and over; counters give the tiles and objects it visits.
void composeLoop(benchmark::State& state, orvel::MapView& view) {
  orvel::ViewComposer composer(orvel::bench::kit().settings, orvel::bench::kit().drawing, orvel::bench::kit().styles);
  composer.composeView(orvel::bench::kit().map.currentMap(), view);  // tiles in view are indexed on first sight
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) composer.composeView(orvel::bench::kit().map.currentMap(), view);
  const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;

  Counter counter;
  orvel::bench::kit().map.currentMap()->decode(view, view.visibleRect(), counter);
  std::vector<uint32_t> tiles;
  if (const auto* map = dynamic_cast<const orvel::ImgMapFile*>(orvel::bench::kit().map.currentMap())) {
    map->tilesMeeting(view.visibleRect(), tiles);
  }
  state.counters["tiles_in_view"] = static_cast<double>(tiles.size());
  state.counters["objects"] = static_cast<double>(counter.objects);
  if (counter.objects > 0 && state.iterations() > 0) {
    state.counters["us_per_object"] =
        elapsed.count() / static_cast<double>(state.iterations()) / static_cast<double>(counter.objects);
  }
}

// range(0): 0 = the set's centre, 1 = its south-west corner; range(1): the zoom step.
void BM_MapSetCompose(benchmark::State& state) {
  orvel::bench::kit();
  const GeneratedSet& set = generatedSet();
  orvel::MapView view;
  if (set.path.empty() || !orvel::bench::kit().map.openMapFile(set.path, view)) {
    state.SkipWithError("the map set cannot be opened");
    return;
  }
  // The centre of Monaco in the copy in the middle of the grid, or in the first copy (the
  // source's own place, the south-west corner of the set).
  const orvel::bench::MapSetLayout& grid = set.layout;
  const int32_t column = state.range(0) == 0 ? grid.columns / 2 : 0;
  const int32_t row = state.range(0) == 0 ? grid.rows / 2 : 0;
  view.setScreenSize(800, 480);
  view.setZoomIndex(static_cast<uint32_t>(state.range(1)));
  view.setCentre(orvel::degreesToMapUnits(kMonacoLon) + column * grid.cellWidth,
                 orvel::degreesToMapUnits(kMonacoLat) + row * grid.cellHeight);
  composeLoop(state, view);
  orvel::bench::kit().map.closeMapFile();
}
BENCHMARK(BM_MapSetCompose)
    ->ArgsProduct({{0, 1}, {kTwentyTilesZoom - 1, kTwentyTilesZoom, kStreetZoom}})
    ->Args({0, kWholeSetZoom})
    ->ArgNames({"corner", "zoom"})
    ->Unit(benchmark::kMillisecond);

// The single-tile map at the centre of Monaco.
void BM_OneTileCompose(benchmark::State& state) {
  orvel::bench::kit();
  orvel::MapView view;
  if (!orvel::bench::kit().map.openMapFile(monaco(), view)) {
    state.SkipWithError("monaco_default_6bit.img not found");
    return;
  }
  view.setScreenSize(800, 480);
  view.setZoomIndex(static_cast<uint32_t>(state.range(0)));
  view.setCentre(orvel::degreesToMapUnits(kMonacoLon), orvel::degreesToMapUnits(kMonacoLat));
  composeLoop(state, view);
  orvel::bench::kit().map.closeMapFile();
}
BENCHMARK(BM_OneTileCompose)->Arg(kTwentyTilesZoom)->Arg(kStreetZoom)->ArgName("zoom")->Unit(benchmark::kMillisecond);

}  // namespace
