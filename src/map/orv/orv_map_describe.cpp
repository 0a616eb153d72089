#include <cstdio>
#include <string>

#include "map/format/map_facts.h"
#include "map/orv/orv_map_file.h"

namespace orvel {

void OrvMapFile::describe(MapFacts& facts) const {
  const MapRect& b = bounds_;
  facts.emplace_back("format", "orv");
  addBoundsFacts(b, facts);
  std::string levels = std::to_string(levelCount_);
  std::string perLevel;
  unsigned long total = 0;
  OrvLevel entry;
  for (uint32_t i = 0; i < levelCount_ && level(i, entry); ++i) {
    levels += printedFact(" %u", unsigned{entry.bits});
    perLevel += printedFact(perLevel.empty() ? "%u" : " %u", unsigned{entry.blockCount});
    total += entry.blockCount;
  }
  facts.emplace_back("levels", levels);
  facts.emplace_back("blocks", printedFact("%lu (", total).append(perLevel).append(")"));
  std::string codes;
  for (const OrvLookupTable& table : tables_) {
    codes += printedFact(codes.empty() ? "%zu" : " %zu", table.codeCount());
  }
  facts.emplace_back("codes", codes);
  facts.emplace_back("shared_labels", printedFact("0x%x %u bits", sharedLabels_, sharedIndexBits_));
  facts.emplace_back("delta_bias", printedFact("%d %d", biasX_, biasY_));
  facts.emplace_back("file_bytes", std::to_string(file_.size()));
}

}  // namespace orvel
