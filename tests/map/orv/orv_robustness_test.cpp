// A converted real map cut short or with bytes changed still opens, decodes and draws
// without reading outside the file (run under the address sanitizer to see it).
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "common/recording_device.h"
#include "common/test_data.h"
#include "common/draw_kit.h"
#include "map/draw/draw_map.h"
#include "map/img/img_map_file.h"
#include "map/orv/convert/orv_writer.h"
#include "map/orv/orv_map_file.h"
#include "orv_test_util.h"
#include "view/map_view.h"

namespace orvel {
namespace {

class CountObjects final : public ObjectConsumer {
 public:
  void onObject(const MapObject& object) override {
    ++count;
    points += object.points.size();
  }
  size_t count = 0;
  size_t points = 0;
};

std::vector<uint8_t> convertedMap() {
  const auto path = test::dataFile("maps/monaco_cp1252.img");
  if (path.empty()) return {};
  const auto bytes = test::readFile(path);
  ImgMapFile img;
  if (!img.probe(bytes) || !img.load(bytes)) return {};
  OrvMapIn model;
  std::string error;
  std::vector<uint8_t> out;
  if (!orvFromImg(img, {}, model, error) || !writeOrv(model, out, error)) return {};
  return out;
}

// Opens the bytes, decodes every level and draws three zooms; the bytes are copied into a
// buffer of exactly their size so that any read past the end is caught.
void exercise(const std::vector<uint8_t>& bytes) {
  const std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), exact.get());
  const Bytes view(exact.get(), bytes.size());
  OrvMapFile orv;
  if (!orv.probe(view)) return;
  ASSERT_TRUE(orv.load(view));
  CountObjects objects;
  for (uint32_t l = 0; l < std::min<uint32_t>(orv.levelCount(), 8); ++l) {
    orv.decodeLevel(static_cast<int>(l), test::kEverywhere, objects);
  }
  char16_t text[kLabelCapacity + 1];
  for (uint32_t ref : {0u, 564u, static_cast<uint32_t>(bytes.size() - 1), static_cast<uint32_t>(bytes.size())}) {
    EXPECT_LE(orv.getLabel(ref, text), kOrvLabelMax);
  }
  MapView mapView;
  mapView.setScreenSize(120, 120);
  mapView.fitNewMap(orv.bounds());
  QImage image(120, 120, QImage::Format_RGB32);
  MapDrawContext drawing(test::mapStyles());
  for (uint32_t zoom : {2u, 9u, 20u}) {
    mapView.setZoomIndex(zoom);
    QPainter painter(&image);
    drawMap(painter, orv, mapView, mapView.visibleRect(), drawing);
  }
}

class OrvRobustness : public ::testing::Test {
 protected:
  void SetUp() override {
    test::ensureGuiApplication();
    bytes_ = convertedMap();
    if (bytes_.empty()) GTEST_SKIP();
  }
  std::vector<uint8_t> bytes_;
};

TEST_F(OrvRobustness, CutShortAnywhere) {
  const size_t size = bytes_.size();
  for (size_t cut = kOrvMinSize; cut < size; cut += 1 + size / 61) {
    std::vector<uint8_t> part(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(cut));
    test::putU32(part, kOrvFileSizeAt, static_cast<uint32_t>(cut));  // so that it is taken as .orv
    SCOPED_TRACE(cut);
    exercise(part);
  }
}

TEST_F(OrvRobustness, ChangedBytes) {
  uint32_t seed = 12345;
  auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return seed >> 8;
  };
  for (int round = 0; round < 120; ++round) {
    std::vector<uint8_t> changed = bytes_;
    const int flips = 1 + static_cast<int>(next() % 8);
    for (int i = 0; i < flips; ++i) {
      // Half of the changes hit the header fields and the start of the tables.
      const size_t at = next() % 2 ? 16 + next() % 1200 : next() % changed.size();
      changed[at] ^= static_cast<uint8_t>(1u << (next() % 8));
    }
    test::putU32(changed, kOrvFileSizeAt, static_cast<uint32_t>(changed.size()));
    test::putU32(changed, kOrvVersionAt, kOrvVersion);
    SCOPED_TRACE(round);
    exercise(changed);
  }
}

// Header fields that point anywhere at all.
TEST_F(OrvRobustness, HeaderOffsetsOutOfTheFile) {
  for (size_t field : {kOrvCodeTablesAt, kOrvSharedLabelsAt, kOrvSharedIndexBitsAt, kOrvLevelTableAt,
                       kOrvLevelCountAt, kOrvBiasXAt}) {
    for (uint32_t value : {0u, 1u, 31u, 33u, static_cast<uint32_t>(bytes_.size()) - 3, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
      std::vector<uint8_t> changed = bytes_;
      test::putU32(changed, field, value);
      SCOPED_TRACE(testing::Message() << field << " = " << value);
      exercise(changed);
    }
  }
}

TEST_F(OrvRobustness, DescribesItselfLikeAnImgMap) {
  OrvMapFile orv;
  ASSERT_TRUE(orv.probe(bytes_));
  ASSERT_TRUE(orv.load(bytes_));
  MapFacts facts;
  orv.describe(facts);
  std::map<std::string, std::string> byKey(facts.begin(), facts.end());
  EXPECT_EQ(byKey["format"], "orv");
  EXPECT_EQ(byKey["bounds_units"], "344072 2028007 349542 2039606");
  EXPECT_EQ(byKey["levels"], "4 18 20 22 24");
  EXPECT_EQ(byKey["blocks"], "33 (1 3 10 19)");
  EXPECT_TRUE(byKey.count("bounds_deg"));
}

}  // namespace
}  // namespace orvel
