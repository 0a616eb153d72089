#include <cstdio>
#include <string>

#include "map/orv/orv_map_file.h"

namespace orvel {
namespace {

std::string printed(const char* fmt, auto... args) {
  char buffer[128];
  std::snprintf(buffer, sizeof buffer, fmt, args...);
  return buffer;
}

double degrees(int32_t units) { return units * 360.0 / 16777216.0; }

}  // namespace

void OrvMapFile::describe(MapFacts& facts) const {
  const MapRect& b = bounds_;
  facts.emplace_back("format", "orv");
  facts.emplace_back("bounds_units", printed("%d %d %d %d", b.west, b.south, b.east, b.north));
  facts.emplace_back("bounds_deg", printed("%.6f %.6f %.6f %.6f", degrees(b.west), degrees(b.south),
                                          degrees(b.east), degrees(b.north)));
  std::string levels = std::to_string(levelCount_);
  std::string perLevel;
  unsigned long total = 0;
  OrvLevel entry;
  for (uint32_t i = 0; i < levelCount_ && level(i, entry); ++i) {
    levels += printed(" %u", unsigned{entry.bits});
    perLevel += printed(perLevel.empty() ? "%u" : " %u", unsigned{entry.blockCount});
    total += entry.blockCount;
  }
  facts.emplace_back("levels", levels);
  facts.emplace_back("blocks", printed("%lu (", total).append(perLevel).append(")"));
  std::string codes;
  for (const OrvLookupTable& table : tables_) {
    codes += printed(codes.empty() ? "%zu" : " %zu", table.codeCount());
  }
  facts.emplace_back("codes", codes);
  facts.emplace_back("shared_labels", printed("0x%x %u bits", sharedLabels_, sharedIndexBits_));
  facts.emplace_back("delta_bias", printed("%d %d", biasX_, biasY_));
  facts.emplace_back("file_bytes", std::to_string(file_.size()));
}

}  // namespace orvel
