// Opening the largest real map through openMapFile: mapping, probing and building the
// subdivision index, as the viewer does when the user picks a file.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <unistd.h>

#include "bench_support.h"
#include "map/format/map_file.h"
#include "view/map_view.h"

namespace {

// Resident set size of this process in KiB.
long residentKiB() {
  long pages = 0;
  long resident = 0;
  if (std::FILE* f = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
  }
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void BM_OpenLargestImgMap(benchmark::State& state) {
  const auto path = orvel::bench::dataDir() / "maps" / "liechtenstein_route_cp1252_bs512.img";
  orvel::MapView view;
  orvel::bench::kit().map.closeMapFile();
  const long before = residentKiB();
  long after = before;
  for (auto _ : state) {
    if (!orvel::bench::kit().map.openMapFile(path, view)) {
      state.SkipWithError("the map cannot be opened");
      return;
    }
    after = residentKiB();
    benchmark::DoNotOptimize(orvel::bench::kit().map.currentMap());
  }
  state.counters["rss_growth_KiB"] = static_cast<double>(after - before);
  state.counters["file_KiB"] = static_cast<double>(std::filesystem::file_size(path) / 1024);
  orvel::bench::kit().map.closeMapFile();
}
BENCHMARK(BM_OpenLargestImgMap)->Unit(benchmark::kMicrosecond);

}  // namespace
