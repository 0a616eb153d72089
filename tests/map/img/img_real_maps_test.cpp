// Every subdivision of the real single-tile maps: its sections tile the region data, and
// decoding them finds the records a plain walk over the record headers finds, with every
// object inside its subdivision and every label reference inside the label data.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"
#include "map/img/rgn_stream.h"

namespace orvel {
namespace {

// Record count of a section found by header lengths alone, and whether the records fill
// the section exactly.
struct PlainWalk {
  int records = 0;
  bool exact = false;
};

PlainWalk walkHeaders(Bytes section, ImgSection kind) {
  PlainWalk walk;
  size_t pos = 0;
  while (pos < section.size()) {
    size_t length = 0;
    if (kind == kSectionPoints || kind == kSectionIndexedPoints) {
      if (pos + 4 > section.size()) break;
      length = (section[pos + 3] & 0x80) ? 9 : 8;
    } else {
      const bool wide = (section[pos] & 0x80) != 0;
      if (pos + 11 > section.size()) break;
      length = (wide ? 11 : 10) + (wide ? section[pos + 8] + 256u * section[pos + 9] : section[pos + 8]);
    }
    if (pos + length > section.size()) break;
    pos += length;
    ++walk.records;
  }
  walk.exact = pos == section.size();
  return walk;
}

// Checks what every decoded object of one subdivision must satisfy.
class InvariantConsumer : public ObjectConsumer {
 public:
  InvariantConsumer(const ImgSubdivision& sub, const ImgMapFile& map) : sub_(sub), map_(map) {}
  void onObject(const MapObject& o) override {
    ++count;
    ASSERT_GE(o.points.size(), 1u);
    ASSERT_LE(o.points.size(), static_cast<size_t>(kMaxObjectPoints));
    if (o.kind == ObjectKind::Point) {
      ASSERT_EQ(o.points.size(), 1u);
    }
    // Objects lie in their subdivision; rounding of its half-extents may leave one unit.
    const int64_t marginX = int64_t{1} << sub_.shift;
    const int64_t marginY = marginX;
    for (const MapPoint& p : o.points) {
      ASSERT_GE(p.x, sub_.bounds.west - marginX);
      ASSERT_LE(p.x, sub_.bounds.east + marginX);
      ASSERT_GE(p.y, sub_.bounds.south - marginY);
      ASSERT_LE(p.y, sub_.bounds.north + marginY);
    }
    // A label reference names a byte of the label data.
    ASSERT_LT(uint64_t{o.labelRef} << map_.labelShift(), map_.labelData().size());
    if (o.labelRef) ++labelled;
  }
  int count = 0;
  int labelled = 0;

 private:
  const ImgSubdivision& sub_;
  const ImgMapFile& map_;
};

const char* const kRealMaps[] = {"monaco_default_6bit.img", "monaco_default_6bit_xor5a.img", "monaco_cp1252.img",
                                 "monaco_unicode.img", "liechtenstein_route_cp1252_bs512.img"};

class RealImgMap : public ::testing::TestWithParam<const char*> {};

TEST_P(RealImgMap, EverySubdivisionOfEveryLevelDecodes) {
  const std::vector<unsigned char> file = test::readFile(test::dataFile(std::string("maps/") + GetParam()));
  ImgMapFile map;
  ASSERT_TRUE(map.probe(file) && map.load(file)) << GetParam();
  const ImgDecodeInput in = makeImgDecodeInput(map);
  int objects = 0;
  int labelled = 0;
  for (const ImgSubdivision& sub : map.subdivisions()) {
    for (ImgSection section : {kSectionPoints, kSectionIndexedPoints, kSectionPolylines, kSectionPolygons}) {
      if (sub.sectionStart[section] == kNoSection) continue;
      SCOPED_TRACE(testing::Message() << "level " << sub.level << " rgn " << sub.rgnOffset << " section " << section);
      const Bytes bytes = map.rgnData().subspan(sub.sectionStart[section], sub.sectionLength[section]);
      const PlainWalk walk = walkHeaders(bytes, section);
      EXPECT_TRUE(walk.exact);
      InvariantConsumer check(sub, map);
      EXPECT_EQ(decodeSection(in, sub, section, check), walk.records);
      EXPECT_EQ(check.count, walk.records);
      objects += check.count;
      labelled += check.labelled;
    }
  }
  EXPECT_GT(objects, 100);
  EXPECT_GT(labelled, 10);
}

INSTANTIATE_TEST_SUITE_P(Maps, RealImgMap, ::testing::ValuesIn(kRealMaps), [](const auto& info) {
  std::string name = info.param;
  return name.substr(0, name.find('.'));
});

}  // namespace
}  // namespace orvel
