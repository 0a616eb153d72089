// Region decoding: every object of the Liechtenstein map's most detailed level, as drawing
// the whole map at the finest zoom decodes them (no drawing, a consumer that only counts).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "bench_support.h"
#include "core/message.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"

namespace {

class CountingConsumer : public orvel::ObjectConsumer {
 public:
  void onObject(const orvel::MapObject& object) override {
    ++objects;
    points += static_cast<int64_t>(object.points.size());
  }
  int64_t objects = 0;
  int64_t points = 0;
};

void BM_DecodeMostDetailedLevel(benchmark::State& state) {
  const std::filesystem::path dir = orvel::bench::dataDir();
  std::ifstream in(dir / "maps/liechtenstein_route_cp1252_bs512.img", std::ios::binary);
  const std::vector<uint8_t> file{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  orvel::ImgMapFile map;
  if (!map.probe(file) || !map.load(file)) {
    state.SkipWithError("liechtenstein_route_cp1252_bs512.img not found or not loadable");
    return;
  }
  const orvel::ImgDecodeInput input = orvel::makeImgDecodeInput(map);
  const int level = static_cast<int>(map.levels().size()) - 1;
  CountingConsumer counter;
  for (auto _ : state) {
    orvel::decodeImgLevel(input, level, map.bounds(), counter);
    benchmark::DoNotOptimize(counter.points);
  }
  state.SetItemsProcessed(counter.objects);
  state.counters["objects"] = static_cast<double>(counter.objects) / static_cast<double>(state.iterations());
  state.counters["points"] = static_cast<double>(counter.points) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_DecodeMostDetailedLevel)->Unit(benchmark::kMicrosecond);

}  // namespace
