// A GPX file of 100,000 track points, as a long recorded trip is: opening it as "Открыть
// трек..." does (read and prepared for drawing), and composing an 800x480 view with it,
// the whole file at once and a town view panned along it.
//
// The file is made once per run in the system's temporary folder: ten tracks of ten
// segments of 1,000 points, each point ten metres or so from the last, with elevation and
// time, written by Orvel's own GPX writer.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <unistd.h>

#include <QPainter>

#include "bench_support.h"
#include "compose/view_composer.h"
#include "gpx/gpx_writer.h"
#include "gpx/layer/gpx_layer.h"
#include "view/map_view.h"

namespace {

constexpr int kTracks = 10;
constexpr int kSegments = 10;
constexpr int kPoints = 1000;  // per segment: 100,000 in all

struct TripFile {
  std::filesystem::path path;
  size_t bytes = 0;
  ~TripFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
  }
};

const TripFile& tripFile() {
  static const TripFile made = [] {
    orvel::GpxData data;
    double lat = 47.05;
    double lon = 9.48;
    double heading = 0.3;
    double time = 1.7e9;
    for (int t = 0; t < kTracks; ++t) {
      orvel::GpxTrack& track = data.tracks.emplace_back();
      track.name = QStringLiteral("Day %1").arg(t + 1);
      for (int s = 0; s < kSegments; ++s) {
        orvel::GpxSegment& segment = track.segments.emplace_back();
        for (int p = 0; p < kPoints; ++p) {
          // A wandering walk of about ten metres a step, kept inside a box of 0.2 degrees.
          heading += std::sin(p * 0.37 + s) * 0.2;
          lat += std::cos(heading) * 9e-5;
          lon += std::sin(heading) * 1.3e-4;
          if (lat < 47.05 || lat > 47.25) heading += 3.14159;
          if (lon < 9.47 || lon > 9.67) heading += 3.14159;
          time += 2.0;
          segment.points.push_back({std::round(lat * 1e9) / 1e9, std::round(lon * 1e9) / 1e9,
                                    400.0 + std::fmod(p * 0.7, 300.0), time});
        }
      }
    }
    TripFile file;
    file.path = std::filesystem::temp_directory_path() / ("orvel-bench-trip-" + std::to_string(::getpid()) + ".gpx");
    const QByteArray document = orvel::gpxDocument(data);
    std::FILE* out = std::fopen(file.path.c_str(), "wb");
    if (out) {
      file.bytes = std::fwrite(document.constData(), 1, size_t(document.size()), out);
      std::fclose(out);
    }
    return file;
  }();
  return made;
}

void BM_GpxOpen100k(benchmark::State& state) {
  orvel::bench::kit();
  const TripFile& file = tripFile();
  size_t points = 0;
  for (auto _ : state) {
    orvel::GpxLayer layer;
    QString error;
    if (!layer.openGpx(file.path, error)) {
      state.SkipWithError(qPrintable(error));
      return;
    }
    points = 0;
    for (const orvel::GpxTrack& t : layer.gpxData().tracks) {
      for (const orvel::GpxSegment& s : t.segments) points += s.points.size();
    }
  }
  state.counters["points"] = double(points);
  state.counters["file_MB"] = double(file.bytes) / 1e6;
}
BENCHMARK(BM_GpxOpen100k)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// Arg 0: the whole file on the screen; arg 1: a town view (zoom step 8, 5 m a pixel) moved
// 40 pixels along at every composition, as a drag does.
void BM_GpxCompose800x480(benchmark::State& state) {
  orvel::bench::Kit& kit = orvel::bench::kit();
  orvel::GpxLayer layer;
  QString error;
  if (!layer.openGpx(tripFile().path, error)) {
    state.SkipWithError(qPrintable(error));
    return;
  }
  orvel::MapView view;
  view.setScreenSize(800, 480);
  orvel::fitViewTo(view, layer.bounds());
  if (state.range(0) == 1) view.setZoomIndex(8);
  orvel::ViewComposer composer(kit.settings, kit.drawing, kit.styles);
  composer.setGpxLayer([&](QPainter& painter, const orvel::MapView& shown, const orvel::MapRect& visible) {
    layer.drawGpx(painter, kit.drawing, shown, visible);
  });
  composer.composeView(nullptr, view);  // the first drawing at this zoom step projects
  int step = 0;
  for (auto _ : state) {
    if (state.range(0) == 1) view.pan(++step % 20 < 10 ? 40 : -40, 0);
    composer.composeView(nullptr, view);
  }
  state.counters["projections"] = double(layer.projections());
  state.counters["runs_drawn"] = double(layer.runsDrawn());
}
BENCHMARK(BM_GpxCompose800x480)->Arg(0)->Arg(1)->ArgName("town")->Unit(benchmark::kMillisecond)->MinTime(1.0);

}  // namespace
