#pragma once
// Loading IMG bytes the way createMapFile does, and the invariants every loaded map keeps.
#include <gtest/gtest.h>

#include <span>

#include "map/img/img_map_file.h"

namespace orvel::test {

// Every section of every subdivision lies inside the RGN data, and the areas the map keeps
// lie inside the bytes it reads.
inline ::testing::AssertionResult staysInside(const ImgMapFile& map) {
  const auto file = map.fileBytes();
  auto inside = [&](std::span<const uint8_t> area) {
    return area.empty() || (area.data() >= file.data() && area.data() + area.size() <= file.data() + file.size());
  };
  if (!inside(map.rgnData()) || !inside(map.labelData()) || !inside(map.poiProperties()) || !inside(map.netData())) {
    return ::testing::AssertionFailure() << "a data area lies outside the file";
  }
  for (size_t i = 0; i < map.subdivisions().size(); ++i) {
    const ImgSubdivision& s = map.subdivisions()[i];
    if (s.level >= map.levels().size() || s.shift > 23) {
      return ::testing::AssertionFailure() << "subdivision " << i << " has level " << s.level << " shift " << +s.shift;
    }
    for (size_t k = 0; k < 4; ++k) {
      const uint32_t start = s.sectionStart[k];
      const uint32_t length = s.sectionLength[k];
      if ((start == kNoSection) != (length == kNoSection)) {
        return ::testing::AssertionFailure() << "subdivision " << i << " section " << k << " half absent";
      }
      if (start != kNoSection && uint64_t{start} + length > map.rgnData().size()) {
        return ::testing::AssertionFailure() << "subdivision " << i << " section " << k << " [" << start << ", +"
                                             << length << ") outside " << map.rgnData().size();
      }
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orvel::test
