// The own format against the IMG maps it is made from: file size and conversion time per
// real map, and the composition time of the same views of the largest map in both formats.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <QGuiApplication>

#include "bench_support.h"
#include "core/message.h"
#include "map/catalogue/map_styles.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"
#include "map/orv/convert/orv_writer.h"
#include "map/orv/orv_map_file.h"
#include "compose/view_composer.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace {

const char* const kMaps[] = {"monaco_default_6bit.img", "monaco_cp1252.img", "monaco_unicode.img",
                             "liechtenstein_route_cp1252_bs512.img"};

// One real map in both formats, kept for the whole run.
struct BothFormats {
  std::vector<uint8_t> imgBytes;
  std::vector<uint8_t> orvBytes;
  orvel::ImgMapFile img;
  orvel::OrvMapFile orv;
  bool ok = false;
};

std::vector<uint8_t> readAll(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

BothFormats& bothFormats(size_t index) {
  static BothFormats maps[std::size(kMaps)];
  BothFormats& m = maps[index];
  if (m.ok || !m.imgBytes.empty()) return m;
  m.imgBytes = readAll(orvel::bench::dataDir() / "maps" / kMaps[index]);
  if (!m.img.probe(m.imgBytes) || !m.img.load(m.imgBytes)) return m;
  orvel::OrvMapIn model;
  std::string error;
  if (!orvel::orvFromImg(m.img, {}, model, error) || !orvel::writeOrv(model, m.orvBytes, error)) return m;
  m.ok = m.orv.probe(m.orvBytes) && m.orv.load(m.orvBytes);
  return m;
}

// Arg: index into kMaps. Times the conversion; the counters give both sizes.
void BM_OrvConvert(benchmark::State& state) {
  const auto index = static_cast<size_t>(state.range(0));
  BothFormats& m = bothFormats(index);
  if (!m.ok) {
    state.SkipWithError("map not found or not convertible");
    return;
  }
  for (auto _ : state) {
    orvel::OrvMapIn model;
    std::string error;
    std::vector<uint8_t> out;
    orvel::orvFromImg(m.img, {}, model, error);
    orvel::writeOrv(model, out, error);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetLabel(kMaps[index]);
  state.counters["img_bytes"] = static_cast<double>(m.imgBytes.size());
  state.counters["orv_bytes"] = static_cast<double>(m.orvBytes.size());
  state.counters["orv_per_img"] = static_cast<double>(m.orvBytes.size()) / static_cast<double>(m.imgBytes.size());
  state.counters["img_rgn_lbl_net_bytes"] = static_cast<double>(m.img.rgnData().size() + m.img.labelData().size() +
                                                                m.img.netData().size());
}
BENCHMARK(BM_OrvConvert)->DenseRange(0, static_cast<int>(std::size(kMaps)) - 1)->Unit(benchmark::kMillisecond);

// Args: format (0 IMG, 1 .orv), zoom step. 800x480 at the middle of the largest map.
void BM_ComposeImgAgainstOrv(benchmark::State& state) {
  orvel::bench::kit();
  BothFormats& m = bothFormats(std::size(kMaps) - 1);
  if (!m.ok) {
    state.SkipWithError("map not found or not convertible");
    return;
  }
  orvel::MapFile* map = state.range(0) == 0 ? static_cast<orvel::MapFile*>(&m.img) : &m.orv;
  orvel::MapView view;
  view.setScreenSize(800, 480);
  view.fitNewMap(map->bounds());
  view.setZoomIndex(static_cast<uint32_t>(state.range(1)));
  orvel::ViewComposer composer(orvel::bench::kit().settings, orvel::bench::kit().drawing, orvel::bench::kit().styles);
  composer.composeView(map, view);
  std::vector<double> ms;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    composer.composeView(map, view);
    ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(ms.begin(), ms.end());
  state.SetLabel(state.range(0) == 0 ? "img" : "orv");
  state.counters["median_ms"] = ms[ms.size() / 2];
}
BENCHMARK(BM_ComposeImgAgainstOrv)
    ->ArgsProduct({{0, 1}, {0, 4, 8, 10, 11, 12, 13, 14, 16, 20}})
    ->ArgNames({"orv", "zoom"})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.2);

class PointCounter final : public orvel::ObjectConsumer {
 public:
  void onObject(const orvel::MapObject& object) override { points += object.points.size(); }
  size_t points = 0;
};

// Arg: format (0 IMG, 1 .orv). Decodes every object of the finest level of the largest map,
// nothing drawn: the readers alone.
void BM_DecodeFinestLevel(benchmark::State& state) {
  BothFormats& m = bothFormats(std::size(kMaps) - 1);
  if (!m.ok) {
    state.SkipWithError("map not found or not convertible");
    return;
  }
  const orvel::MapRect everywhere{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  const orvel::ImgDecodeInput in = orvel::makeImgDecodeInput(m.img);
  const int imgLevel = static_cast<int>(m.img.levels().size()) - 1;
  const int orvLevel = static_cast<int>(m.orv.levelCount()) - 1;
  size_t points = 0;
  for (auto _ : state) {
    PointCounter counter;
    if (state.range(0) == 0) {
      orvel::decodeImgLevel(in, imgLevel, everywhere, counter);
    } else {
      m.orv.decodeLevel(orvLevel, everywhere, counter);
    }
    points = counter.points;
  }
  state.SetLabel(state.range(0) == 0 ? "img" : "orv");
  state.counters["points"] = static_cast<double>(points);
}
BENCHMARK(BM_DecodeFinestLevel)->Arg(0)->Arg(1)->ArgName("orv")->Unit(benchmark::kMicrosecond);

}  // namespace
