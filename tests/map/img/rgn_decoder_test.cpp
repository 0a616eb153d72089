#include "map/img/rgn_decoder.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "map/img/rgn_stream.h"
#include "map/img/rgn_test_util.h"

namespace orvel {
namespace {

using test::BitWriter;
using test::KeepingConsumer;
using test::putLe;

constexpr MapRect kEverywhere{INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

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

TEST(RgnDecoder, PolygonRecordsWithOneAndTwoByteLengths) {
  Rgn rgn;
  ImgSubdivision& s = rgn.addSubdivision();
  s.centreX = 0x1000;
  s.centreY = 0x2000;
  s.shift = 2;
  rgn.setSection(s, kSectionPolygons,
                 concat({polyRecord(0x05, 0x1234, 10, -3, onePointStream(), 0x00),
                         polyRecord(0x80 | 0x13, 0x22, 0, 0, onePointStream(), 0x00),
                         polyRecord(0x7F, 0, 1, 1, onePointStream(), 0x00)}));
  const auto objects = rgn.decode(kSectionPolygons);
  ASSERT_EQ(objects.size(), 3u);
  const MapPoint first{0x1000 + 40, 0x2000 - 12};
  EXPECT_EQ(objects[0].kind, ObjectKind::Polygon);
  EXPECT_EQ(objects[0].type, 0x05u);
  EXPECT_EQ(objects[0].labelRef, 0x1234u);
  EXPECT_EQ(objects[0].points, (std::vector<MapPoint>{first, {first.x + 4, first.y + 8}}));
  EXPECT_EQ(objects[1].type, 0x13u);
  EXPECT_EQ(objects[1].points, (std::vector<MapPoint>{{0x1000, 0x2000}, {0x1004, 0x2008}}));
  EXPECT_EQ(objects[2].type, 0x7Fu);
}

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

struct TailCase {
  std::string name;
  std::vector<uint8_t> tail;  // bytes after one good record
  size_t expected;
};

TEST(RgnDecoder, SectionEndsAtARecordThatDoesNotFit) {
  const auto good = polyRecord(0x05, 0, 0, 0, onePointStream(), 0x00);
  std::vector<uint8_t> shortHeader(good.begin(), good.begin() + 9);
  std::vector<uint8_t> shortLongHeader = polyRecord(0x85, 0, 0, 0, {}, 0x00);
  shortLongHeader.pop_back();
  const std::vector<TailCase> cases = {
      {"NothingElse", {}, 1},
      {"AnotherGoodRecord", good, 2},
      {"OneByte", {0x05}, 1},
      {"NineOfTenHeaderBytes", shortHeader, 1},
      {"TenOfElevenHeaderBytes", shortLongHeader, 1},
      {"StreamLongerThanSection", polyRecord(0x05, 0, 0, 0, onePointStream(), 0x00, 3), 1},
      {"LongStreamLongerThanSection", polyRecord(0x85, 0, 0, 0, {1, 2, 3}, 0x00, 0x0104), 1},
      {"StreamExactlyToTheEnd", polyRecord(0x05, 0, 0, 0, {1, 2, 3}, 0x00), 2},
  };
  for (const TailCase& c : cases) {
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

TEST(RgnDecoder, PointRecordsWithAndWithoutSubtype) {
  Rgn rgn;
  ImgSubdivision& s = rgn.addSubdivision();
  s.centreX = 0xFFFF00;  // -256 once sign-extended
  s.centreY = 0x000100;
  s.shift = 1;
  const auto records = concat({pointRecord(0x2C, 0x1234, -1, 3), pointRecord(0x2F, 0x55, 0, 0, 0x0B),
                               pointRecord(0x01, 0, 0, 0, 0x00)});
  rgn.setSection(s, kSectionPoints, records);
  // The same records as indexed points, cut in the middle of a subtype record's ninth byte.
  rgn.setSection(s, kSectionIndexedPoints, std::vector<uint8_t>(records.begin(), records.begin() + 8 + 8));

  const auto points = rgn.decode(kSectionPoints);
  ASSERT_EQ(points.size(), 3u);
  EXPECT_EQ(points[0].kind, ObjectKind::Point);
  EXPECT_EQ(points[0].type, 0x2C00u);
  EXPECT_EQ(points[0].labelRef, 0x1234u);
  EXPECT_EQ(points[0].points, (std::vector<MapPoint>{{-258, 262}}));
  EXPECT_EQ(points[1].type, 0x2F0Bu);
  EXPECT_EQ(points[1].labelRef, 0x55u);
  EXPECT_EQ(points[2].type, 0x0100u);

  const auto indexed = rgn.decode(kSectionIndexedPoints);
  ASSERT_EQ(indexed.size(), 1u);
  EXPECT_EQ(indexed[0].type, 0x2C00u);
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

TEST(RgnDecoder, NetLabelIndirection) {
  const std::vector<IndirectionCase> cases = {
      {"Resolved", 100, 10, false, 0x1234},
      {"TwentyBytesLeft", 100, 80, false, 0x1234},
      {"NineteenBytesLeftEndsTheSection", 100, 81, true, 0},
      {"OffsetPastTheEndEndsTheSection", 100, 5000, true, 0},
      {"NoNetDataKeepsTheField", 0, 81, false, 81},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Rgn rgn;
    rgn.net = indirectionData(c.dataSize, c.offset);
    ImgSubdivision& s = rgn.addSubdivision();
    const auto plain = polyRecord(0x05, 3, 0, 0, onePointStream(), 0x00);
    const auto viaNet = polyRecord(0x05, kLineNetLabel | c.offset, 0, 0, onePointStream(), 0x00);
    rgn.setSection(s, kSectionPolylines, concat({plain, viaNet, plain}));
    const auto objects = rgn.decode(kSectionPolylines);
    ASSERT_EQ(objects.size(), c.endsSection ? 1u : 3u);
    if (!c.endsSection) {
      EXPECT_EQ(objects[1].labelRef, c.labelRef);
    }
  }
}

TEST(RgnDecoder, PoiPropertiesLabelIndirection) {
  const std::vector<IndirectionCase> cases = {
      {"Resolved", 30, 0, false, 0x1234},
      {"FourBytesLeft", 30, 26, false, 0x1234},
      {"ThreeBytesLeftEndsTheSection", 30, 27, true, 0},
      {"NoPoiPropertiesKeepsTheField", 0, 27, false, 27},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Rgn rgn;
    rgn.poi = indirectionData(c.dataSize, c.offset);
    ImgSubdivision& s = rgn.addSubdivision();
    const auto records = concat({pointRecord(0x2C, 3, 0, 0), pointRecord(0x2C, kPointPoiLabel | c.offset, 0, 0, 1),
                                 pointRecord(0x2C, 3, 0, 0)});
    rgn.setSection(s, kSectionPoints, records);
    const auto objects = rgn.decode(kSectionPoints);
    ASSERT_EQ(objects.size(), c.endsSection ? 1u : 3u);
    if (!c.endsSection) {
      EXPECT_EQ(objects[1].labelRef, c.labelRef);
    }
  }
}

struct LevelCase {
  std::string name;
  std::vector<ImgLevel> levels;
  int threshold;
  int expected;
};

ImgLevel lv(uint8_t bits, bool inherited = false) { return ImgLevel{bits, inherited, 0, 0}; }

TEST(RgnDecoder, SelectLevel) {
  const std::vector<ImgLevel> mkgmap{lv(17, true), lv(18), lv(20), lv(22), lv(24)};
  const std::vector<LevelCase> cases = {
      {"AllInheritedDrawsTheLast", {lv(17, true), lv(18, true), lv(20, true)}, 24, 2},
      {"MostDetailed", mkgmap, 24, 4},
      {"Between", mkgmap, 21, 2},
      {"Exact", mkgmap, 22, 3},
      {"BelowAllStaysAfterTheInherited", mkgmap, 10, 1},
      {"BelowAllWithoutInheritedIsFirst", {lv(18), lv(20)}, 10, 0},
      {"InheritedAfterAMatchWins", {lv(10), lv(12, true), lv(24)}, 11, 2},
      {"NoLevels", {}, 24, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(selectLevel(c.levels, c.threshold), c.expected);
  }
}

TEST(RgnDecoder, VisitsVisibleSubdivisionsOfTheLevelInDrawingOrder) {
  Rgn rgn;
  const MapRect visible{100, 100, 200, 200};
  struct Spec {
    uint16_t level;
    MapRect bounds;
    uint8_t tag;
  };
  const Spec specs[] = {
      {1, {150, 150, 160, 160}, 0x10},  // inside
      {0, {150, 150, 160, 160}, 0x20},  // other level
      {1, {200, 200, 300, 300}, 0x30},  // touches the corner: visible
      {1, {201, 100, 300, 200}, 0x38},  // just east: not visible
  };
  rgn.subs.reserve(4);
  for (const Spec& sp : specs) {
    ImgSubdivision& s = rgn.addSubdivision(sp.level, sp.bounds);
    rgn.setSection(s, kSectionPoints, pointRecord(sp.tag + 1, 0, 0, 0));
    rgn.setSection(s, kSectionIndexedPoints, pointRecord(sp.tag + 2, 0, 0, 0));
    rgn.setSection(s, kSectionPolylines, polyRecord(sp.tag + 3, 0, 0, 0, {}, 0));
    rgn.setSection(s, kSectionPolygons, polyRecord(sp.tag + 4, 0, 0, 0, {}, 0));
  }
  const std::vector<ImgLevel> levels{lv(18), lv(24)};
  KeepingConsumer c;
  decodeImgView(rgn.input(levels), visible, 24, c);
  std::vector<uint32_t> order;
  for (const auto& o : c.objects) order.push_back(o.kind == ObjectKind::Point ? o.type >> 8 : o.type);
  EXPECT_EQ(order, (std::vector<uint32_t>{0x14, 0x34, 0x13 & 0x3F, 0x33 & 0x3F, 0x11, 0x12, 0x31, 0x32}));
}

TEST(RgnDecoder, AbsentAndOutOfRangeSectionsGiveNothing) {
  Rgn rgn;
  ImgSubdivision& s = rgn.addSubdivision();
  rgn.setSection(s, kSectionPoints, pointRecord(0x2C, 0, 0, 0));
  s.sectionStart[kSectionIndexedPoints] = 1000;
  s.sectionLength[kSectionIndexedPoints] = 8;
  s.sectionStart[kSectionPolygons] = 0;
  s.sectionLength[kSectionPolygons] = kNoSection;
  EXPECT_EQ(rgn.decode(kSectionPoints).size(), 1u);
  EXPECT_TRUE(rgn.decode(kSectionIndexedPoints).empty());
  EXPECT_TRUE(rgn.decode(kSectionPolylines).empty());
  EXPECT_TRUE(rgn.decode(kSectionPolygons).empty());
}

TEST(RgnDecoder, DrawingRules) {
  const MapPoint pts[3] = {{0, 0}, {1, 0}, {1, 1}};
  struct Case {
    ObjectKind kind;
    uint32_t type;
    size_t points;
    bool drawn;
  };
  const Case cases[] = {
      {ObjectKind::Polygon, 0x03, 3, true},  {ObjectKind::Polygon, 0x01, 3, false},
      {ObjectKind::Polygon, 0x02, 3, false}, {ObjectKind::Polygon, 0x4A, 3, false},
      {ObjectKind::Polygon, 0x4B, 3, false}, {ObjectKind::Polygon, 0x03, 2, false},
      {ObjectKind::Line, 0x01, 2, true},     {ObjectKind::Line, 0x01, 1, false},
      {ObjectKind::Point, 0x0100, 1, true},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(isDrawnObject(MapObject{c.kind, c.type, std::span<const MapPoint>(pts, c.points), 0}), c.drawn)
        << static_cast<int>(c.kind) << " " << c.type << " " << c.points;
  }
  EXPECT_EQ(pointBounds(pts), (MapRect{0, 0, 1, 1}));
  EXPECT_EQ(pointBounds({}), MapRect{});
}

// Random bytes everywhere: the decoder must stay inside its inputs (checked by the
// sanitizer build) and hand over only well-formed objects.
class CheckingConsumer : public ObjectConsumer {
 public:
  void onObject(const MapObject& o) override {
    ++count;
    if (o.points.empty() || o.points.size() > static_cast<size_t>(kMaxObjectPoints)) ++bad;
    if (o.kind == ObjectKind::Point && o.points.size() != 1) ++bad;
    if (o.labelRef > kLabelRefMask) ++bad;
    for (const MapPoint& p : o.points) sum += static_cast<uint32_t>(p.x ^ p.y);
  }
  long count = 0;
  long bad = 0;
  uint32_t sum = 0;
};

TEST(RgnDecoder, RandomBytesStayInside) {
  std::mt19937 rng(20240611);
  auto below = [&](uint32_t n) { return n ? static_cast<uint32_t>(rng() % n) : 0u; };
  CheckingConsumer c;
  for (int iteration = 0; iteration < 4000; ++iteration) {
    Rgn rgn;
    rgn.bytes.resize(below(800));
    for (auto& b : rgn.bytes) b = static_cast<uint8_t>(rng());
    rgn.net.resize(below(3) ? below(64) : 0);
    for (auto& b : rgn.net) b = static_cast<uint8_t>(rng());
    rgn.poi.resize(below(3) ? below(16) : 0);
    for (auto& b : rgn.poi) b = static_cast<uint8_t>(rng());
    const auto size = static_cast<uint32_t>(rgn.bytes.size());
    for (int i = 0; i < 4; ++i) {
      ImgSubdivision& s = rgn.addSubdivision(static_cast<uint16_t>(below(2)));
      s.centreX = rng();
      s.centreY = rng();
      s.shift = static_cast<uint8_t>(below(4) ? below(25) : rng());
      for (int k = 0; k < 4; ++k) {
        if (below(8) == 0) continue;  // absent
        const uint32_t start = below(size + 8);
        s.sectionStart[k] = start;
        s.sectionLength[k] = below(6) ? below(size - std::min(start, size) + 1) : rng();
      }
    }
    const std::vector<ImgLevel> levels{lv(static_cast<uint8_t>(rng())), lv(static_cast<uint8_t>(rng()))};
    decodeImgView(rgn.input(levels), kEverywhere, static_cast<int>(below(30)), c);
    decodeImgLevel(rgn.input(levels), 0, kEverywhere, c);
  }
  EXPECT_EQ(c.bad, 0);
  EXPECT_GT(c.count, 4000);
}

}  // namespace
}  // namespace orvel
