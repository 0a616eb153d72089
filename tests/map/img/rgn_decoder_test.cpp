#include "map/img/rgn_decoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "map/img/rgn_test_util.h"

namespace orvel {
namespace {

using test::BitWriter;
using test::KeepingConsumer;
using test::putLe;

// Polygon or polyline record; bit 7 of `head` selects the 2-byte length field.
std::vector<uint8_t> polyRecord(uint8_t head, uint32_t label, int16_t ox, int16_t oy,
                                const std::vector<uint8_t>& stream, uint8_t bitSizes,
                                size_t lengthField = SIZE_MAX) {
  std::vector<uint8_t> r{head};
  putLe(r, label, 3);
  putLe(r, static_cast<uint16_t>(ox), 2);
  putLe(r, static_cast<uint16_t>(oy), 2);
  const size_t length = lengthField == SIZE_MAX ? stream.size() : lengthField;
  putLe(r, static_cast<uint32_t>(length), (head & 0x80) ? 2 : 1);
  r.push_back(bitSizes);
  r.insert(r.end(), stream.begin(), stream.end());
  return r;
}

std::vector<uint8_t> pointRecord(uint8_t type, uint32_t label, int16_t ox, int16_t oy, int subtype = -1) {
  std::vector<uint8_t> r{type};
  putLe(r, label | (subtype >= 0 ? kPointHasSubtype : 0u), 3);
  putLe(r, static_cast<uint16_t>(ox), 2);
  putLe(r, static_cast<uint16_t>(oy), 2);
  if (subtype >= 0) r.push_back(static_cast<uint8_t>(subtype));
  return r;
}

std::vector<uint8_t> concat(std::initializer_list<std::vector<uint8_t>> parts) {
  std::vector<uint8_t> out;
  for (const auto& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

// One dx = 1, dy = 2 point with shared positive signs and 2-bit widths (bit sizes 0x00).
std::vector<uint8_t> onePointStream() {
  BitWriter w;
  w.put(0b0101, 4);
  w.put(1, 2);
  w.put(2, 2);
  return w.bytes();
}

// The same coding with an extra bit per point, two such points: 14 bits in 2 bytes.
std::vector<uint8_t> twoPointExtraBitStream() {
  BitWriter w;
  w.put(0b0101, 4);
  for (int i = 0; i < 2; ++i) {
    w.put(1, 1);
    w.put(1, 2);
    w.put(2, 2);
  }
  return w.bytes();
}

// RGN data made of sections appended one after another.
struct Rgn {
  std::vector<uint8_t> bytes;
  std::vector<ImgSubdivision> subs;
  std::vector<uint8_t> net;
  std::vector<uint8_t> poi;

  ImgSubdivision& addSubdivision(uint16_t level = 0, MapRect bounds = {0, 0, 0, 0}) {
    ImgSubdivision s;
    s.level = level;
    s.bounds = bounds;
    subs.push_back(s);
    return subs.back();
  }
  void setSection(ImgSubdivision& s, ImgSection section, const std::vector<uint8_t>& data) {
    s.sectionStart[section] = static_cast<uint32_t>(bytes.size());
    s.sectionLength[section] = static_cast<uint32_t>(data.size());
    bytes.insert(bytes.end(), data.begin(), data.end());
  }
  ImgDecodeInput input(std::span<const ImgLevel> levels = {}) const {
    return ImgDecodeInput{levels, subs, Bytes(bytes.data(), bytes.size()), Bytes(net.data(), net.size()),
                          Bytes(poi.data(), poi.size())};
  }
  std::vector<test::KeptObject> decode(ImgSection section, size_t sub = 0) const {
    KeepingConsumer c;
    const int n = decodeSection(input(), subs[sub], section, c);
    EXPECT_EQ(n, static_cast<int>(c.objects.size()));
    return c.objects;
  }
};

TEST(RgnDecoder, PolylineTypeIsSixBitsAndBit22MeansExtraBits) {
  Rgn rgn;
  ImgSubdivision& s = rgn.addSubdivision();
  rgn.setSection(s, kSectionPolylines,
                 concat({polyRecord(0xC0 | 0x06, kLineExtraBit | 7, 0, 0, twoPointExtraBitStream(), 0x00),
                         polyRecord(0x41, 8, 0, 0, onePointStream(), 0x00)}));
  // A polygon's bit 22 does not announce extra bits.
  rgn.setSection(s, kSectionPolygons, polyRecord(0x02, kLineExtraBit | 9, 0, 0, onePointStream(), 0x00));
  const std::vector<MapPoint> expected{{0, 0}, {1, 2}};

  const auto lines = rgn.decode(kSectionPolylines);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].kind, ObjectKind::Line);
  EXPECT_EQ(lines[0].type, 0x06u);
  EXPECT_EQ(lines[0].labelRef, 7u);
  EXPECT_EQ(lines[0].points, (std::vector<MapPoint>{{0, 0}, {1, 2}, {2, 4}}));
  EXPECT_EQ(lines[1].type, 0x01u);
  EXPECT_EQ(lines[1].points, expected);

  const auto polygons = rgn.decode(kSectionPolygons);
  ASSERT_EQ(polygons.size(), 1u);
  EXPECT_EQ(polygons[0].labelRef, 9u);
  EXPECT_EQ(polygons[0].points, expected);
}

TEST(RgnDecoder, SectionEndsAtARecordThatDoesNotFit) {
  const auto good = polyRecord(0x05, 0, 0, 0, onePointStream(), 0x00);
  std::vector<uint8_t> shortHeader(good.begin(), good.begin() + 9);
  std::vector<uint8_t> shortLongHeader = polyRecord(0x85, 0, 0, 0, {}, 0x00);
  shortLongHeader.pop_back();
  const struct {
    std::string name;
    std::vector<uint8_t> tail;  // bytes after one good record
    size_t expected;
  } cases[] = {
      {"NothingElse", {}, 1}, {"AnotherGoodRecord", good, 2}, {"OneByte", {0x05}, 1},
      {"NineOfTenHeaderBytes", shortHeader, 1}, {"TenOfElevenHeaderBytes", shortLongHeader, 1},
      {"StreamLongerThanSection", polyRecord(0x05, 0, 0, 0, onePointStream(), 0x00, 3), 1},
      {"LongStreamLongerThanSection", polyRecord(0x85, 0, 0, 0, {1, 2, 3}, 0x00, 0x0104), 1},
      {"StreamExactlyToTheEnd", polyRecord(0x05, 0, 0, 0, {1, 2, 3}, 0x00), 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    for (ImgSection section : {kSectionPolygons, kSectionPolylines}) {
      Rgn rgn;
      ImgSubdivision& s = rgn.addSubdivision();
      rgn.setSection(s, section, concat({good, c.tail}));
      // The next section's bytes follow directly: a reader must not run into them.
      rgn.setSection(s, section == kSectionPolygons ? kSectionPolylines : kSectionPolygons, good);
      EXPECT_EQ(rgn.decode(section).size(), c.expected);
    }
  }
}

struct IndirectionCase {
  std::string name;
  size_t dataSize;      // 0: the map has no such data
  uint32_t offset;
  bool endsSection;     // else all three records arrive
  uint32_t labelRef;    // of the indirected record
};

// The indirected value is 0xC0xxxx: the reference keeps the low 22 bits only.
std::vector<uint8_t> indirectionData(size_t size, uint32_t offset) {
  std::vector<uint8_t> data(size, 0xEE);
  if (offset + 3 <= size) {
    data[offset] = 0x34;
    data[offset + 1] = 0x12;
    data[offset + 2] = 0xC0;
  }
  return data;
}

// A label reached through the road data (lines) or the point properties (points); a value
// that does not fit the rest of that data ends the section.
TEST(RgnDecoder, LabelIndirection) {
  const std::vector<IndirectionCase> net = {
      {"Resolved", 100, 10, false, 0x1234}, {"TwentyBytesLeft", 100, 80, false, 0x1234},
      {"NineteenBytesLeftEndsTheSection", 100, 81, true, 0}, {"OffsetPastTheEndEndsTheSection", 100, 5000, true, 0},
      {"NoNetDataKeepsTheField", 0, 81, false, 81},
  };
  const std::vector<IndirectionCase> poi = {
      {"Resolved", 30, 0, false, 0x1234}, {"FourBytesLeft", 30, 26, false, 0x1234},
      {"ThreeBytesLeftEndsTheSection", 30, 27, true, 0}, {"NoPoiPropertiesKeepsTheField", 0, 27, false, 27},
  };
  for (bool lines : {true, false}) {
    for (const auto& c : lines ? net : poi) {
      SCOPED_TRACE(std::string(lines ? "NET " : "POI ") + c.name);
      Rgn rgn;
      (lines ? rgn.net : rgn.poi) = indirectionData(c.dataSize, c.offset);
      ImgSubdivision& s = rgn.addSubdivision();
      if (lines) {
        const auto plain = polyRecord(0x05, 3, 0, 0, onePointStream(), 0x00);
        const auto viaNet = polyRecord(0x05, kLineNetLabel | c.offset, 0, 0, onePointStream(), 0x00);
        rgn.setSection(s, kSectionPolylines, concat({plain, viaNet, plain}));
      } else {
        rgn.setSection(s, kSectionPoints, concat({pointRecord(0x2C, 3, 0, 0),
                                                  pointRecord(0x2C, kPointPoiLabel | c.offset, 0, 0, 1),
                                                  pointRecord(0x2C, 3, 0, 0)}));
      }
      const auto objects = rgn.decode(lines ? kSectionPolylines : kSectionPoints);
      ASSERT_EQ(objects.size(), c.endsSection ? 1u : 3u);
      if (!c.endsSection) {
        EXPECT_EQ(objects[1].labelRef, c.labelRef);
      }
    }
  }
}

ImgLevel lv(uint8_t bits, bool inherited = false) { return ImgLevel{bits, inherited, 0, 0}; }

TEST(RgnDecoder, SelectLevel) {
  const std::vector<ImgLevel> mkgmap{lv(17, true), lv(18), lv(20), lv(22), lv(24)};
  const struct {
    std::string name;
    std::vector<ImgLevel> levels;
    int threshold;
    int expected;
  } cases[] = {
      {"AllInheritedDrawsTheLast", {lv(17, true), lv(18, true), lv(20, true)}, 24, 2},
      {"MostDetailed", mkgmap, 24, 4}, {"Between", mkgmap, 21, 2}, {"Exact", mkgmap, 22, 3},
      {"BelowAllStaysAfterTheInherited", mkgmap, 10, 1}, {"BelowAllWithoutInheritedIsFirst", {lv(18), lv(20)}, 10, 0},
      {"InheritedAfterAMatchWins", {lv(10), lv(12, true), lv(24)}, 11, 2}, {"NoLevels", {}, 24, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(selectLevel(c.levels, c.threshold), c.expected);
  }
}

}  // namespace
}  // namespace orvel
