// Label decoding: every label of the Liechtenstein map (code page 1252), one after another.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "bench_support.h"
#include "map/img/label_decoder.h"

namespace {

using orvel::Bytes;

struct Labels {
  std::vector<uint8_t> file;
  Bytes data;
  orvel::LabelSchema schema = orvel::LabelSchema::Byte;
  uint16_t codePage = 0;
  std::vector<uint32_t> offsets;
};

uint32_t u32(const std::vector<uint8_t>& b, size_t at) {
  return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | static_cast<uint32_t>(b[at + 3]) << 24;
}

// Finds the LBL subfile through the container directory and lists where each label of its
// byte-string label data starts (labels end with a zero and start at multiples of
// 1 << shift). Empty when the map is missing or not of that kind.
Labels loadLabels() {
  Labels labels;
  const std::filesystem::path dir = orvel::bench::dataDir();
  std::ifstream in(dir / "maps/liechtenstein_route_cp1252_bs512.img", std::ios::binary);
  labels.file.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  const auto& f = labels.file;
  if (f.size() < 0x600) return labels;
  const size_t blockSize = size_t{1} << (f[0x61] + f[0x62]);
  for (size_t entry = 0x600; entry + 512 <= f.size(); entry += 512) {
    if (f[entry] != 1 || f[entry + 0x11] != 0 || std::memcmp(&f[entry + 9], "LBL", 3) != 0) continue;
    const size_t lbl = (f[entry + 0x20] | f[entry + 0x21] << 8) * blockSize;
    if (lbl + 0xAC > f.size() || f[lbl + 0x1E] != 9) return labels;
    const size_t start = lbl + u32(f, lbl + 0x15);
    const size_t length = u32(f, lbl + 0x19);
    if (start > f.size() || length > f.size() - start) return labels;
    labels.data = Bytes(f).subspan(start, length);
    labels.codePage = static_cast<uint16_t>(f[lbl + 0xAA] | f[lbl + 0xAB] << 8);
    const uint32_t step = 1u << f[lbl + 0x1D];
    for (uint32_t offset = step; offset < length;) {
      labels.offsets.push_back(offset);
      while (offset < length && labels.data[offset] != 0) ++offset;
      offset = (offset + step) / step * step;  // past the zero, then to the next multiple
    }
    break;
  }
  return labels;
}

void BM_DecodeAllLabels(benchmark::State& state) {
  static const Labels labels = loadLabels();
  if (labels.offsets.empty()) {
    state.SkipWithError("liechtenstein_route_cp1252_bs512.img missing or unreadable");
    return;
  }
  char16_t out[orvel::kLabelCapacity + 1];
  for (auto _ : state) {
    for (const uint32_t offset : labels.offsets) {
      orvel::decodeLabel(labels.data, offset, labels.schema, labels.codePage, out);
      benchmark::DoNotOptimize(out);
    }
  }
  // Reported per label.
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * labels.offsets.size()));
  state.counters["time_per_label"] =
      benchmark::Counter(static_cast<double>(state.iterations() * labels.offsets.size()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_DecodeAllLabels);

}  // namespace
