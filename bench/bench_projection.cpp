// Projecting points to the screen: the per-point cost of drawing map objects and tracks.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "view/map_view.h"

namespace {

constexpr int kPoints = 1000000;

// A fixed view: 125 m per pixel, turned 30 degrees, over 55 degrees north.
orvel::MapView fixedView() {
  orvel::MapView v;
  v.setScreenSize(480, 640);
  v.setZoomIndex(15);
  v.setRotation(30);
  v.setCentre(1750000, 2600000);
  return v;
}

// Points scattered over a few screens around the centre, the same on every run.
std::vector<orvel::MapPoint> scatteredPoints(int32_t scale) {
  std::vector<orvel::MapPoint> points(kPoints);
  uint32_t state = 12345;
  auto next = [&state] {
    state = state * 1664525u + 1013904223u;
    return static_cast<int32_t>(state >> 16) - 32768;
  };
  for (auto& p : points) {
    p.x = (1750000 + next()) * scale;
    p.y = (2600000 + next()) * scale;
  }
  return points;
}

// items_per_second is points per second; its inverse is the cost of one point.
void perPoint(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kPoints); }

void BM_MapToScreen(benchmark::State& state) {
  const orvel::MapView view = fixedView();
  const auto points = scatteredPoints(1);
  for (auto _ : state) {
    int64_t sum = 0;
    for (const auto& p : points) {
      const orvel::MapPoint s = view.mapToScreen(p);
      sum += s.x + s.y;
    }
    benchmark::DoNotOptimize(sum);
  }
  perPoint(state);
}
BENCHMARK(BM_MapToScreen)->Unit(benchmark::kMillisecond);

void BM_SemicirclesToScreen(benchmark::State& state) {
  const orvel::MapView view = fixedView();
  const auto points = scatteredPoints(256);
  for (auto _ : state) {
    int64_t sum = 0;
    for (const auto& p : points) {
      const orvel::MapPoint s = view.semicirclesToScreen(p);
      sum += s.x + s.y;
    }
    benchmark::DoNotOptimize(sum);
  }
  perPoint(state);
}
BENCHMARK(BM_SemicirclesToScreen)->Unit(benchmark::kMillisecond);

}  // namespace
