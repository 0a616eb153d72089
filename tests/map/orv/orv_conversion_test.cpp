// Every real single-tile IMG map converts to .orv, and the .orv map holds the same objects
// at every level and draws the same pictures.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <QImage>

#include "common/recording_device.h"
#include "common/test_data.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"
#include "map/orv/convert/orv_writer.h"
#include "map/orv/orv_map_file.h"
#include "orv_test_util.h"
#include "common/draw_kit.h"
#include "compose/view_composer.h"
#include "view/map_view.h"

namespace orvel {
namespace {

using test::Collect;
using test::Decoded;
using test::kEverywhere;

class RealMapConversion : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    const auto path = test::dataFile("maps/" + GetParam());
    if (path.empty()) GTEST_SKIP();
    imgBytes_ = test::readFile(path);
    ASSERT_TRUE(img_.probe(imgBytes_));
    ASSERT_TRUE(img_.load(imgBytes_));
    OrvMapIn model;
    std::string error;
    ASSERT_TRUE(orvFromImg(img_, {}, model, error)) << error;
    ASSERT_TRUE(writeOrv(model, orvBytes_, error)) << error;
    ASSERT_TRUE(orv_.probe(orvBytes_));
    ASSERT_TRUE(orv_.load(orvBytes_));
  }

  // The IMG level index of each .orv level: the drawn levels in order.
  std::vector<int> drawnImgLevels() const {
    std::vector<int> out;
    const auto levels = img_.levels();
    for (size_t i = 0; i < levels.size(); ++i) {
      if (!levels[i].inherited) out.push_back(static_cast<int>(i));
    }
    return out;
  }

  std::vector<uint8_t> imgBytes_;
  std::vector<uint8_t> orvBytes_;
  ImgMapFile img_;
  OrvMapFile orv_;
};

TEST_P(RealMapConversion, EveryLevelHoldsTheObjectsOfItsImgLevel) {
  const std::vector<int> imgLevels = drawnImgLevels();
  ASSERT_EQ(orv_.levelCount(), imgLevels.size());
  const ImgDecodeInput in = makeImgDecodeInput(img_);
  size_t total = 0;
  for (uint32_t l = 0; l < orv_.levelCount(); ++l) {
    const ImgLevel& imgLevel = img_.levels()[static_cast<size_t>(imgLevels[l])];
    OrvLevel level;
    ASSERT_TRUE(orv_.level(l, level));
    EXPECT_EQ(level.bits, imgLevel.bits);
    Collect fromImg(img_, 24u - imgLevel.bits, true, &img_);
    decodeImgLevel(in, imgLevels[l], kEverywhere, fromImg);
    Collect fromOrv(orv_);
    orv_.decodeLevel(static_cast<int>(l), kEverywhere, fromOrv);
    ASSERT_EQ(fromOrv.objects.size(), fromImg.objects.size()) << "level " << l;
    for (size_t i = 0; i < fromImg.objects.size(); ++i) {
      ASSERT_EQ(fromOrv.objects[i], fromImg.objects[i]) << "level " << l << " object " << i;
    }
    total += fromImg.objects.size();
  }
  EXPECT_GT(total, 1000u);
}

TEST_P(RealMapConversion, KeepsBoundsAndChoosesTheImgLevelAtEveryZoom) {
  EXPECT_EQ(orv_.bounds(), img_.bounds());
  const std::vector<int> imgLevels = drawnImgLevels();
  for (int32_t threshold = 0; threshold <= 30; ++threshold) {
    const int imgLevel = selectLevel(img_.levels(), threshold);
    const int orvLevel = orv_.chooseLevel(threshold);
    ASSERT_GE(orvLevel, 0);
    EXPECT_EQ(imgLevels[static_cast<size_t>(orvLevel)], imgLevel) << "threshold " << threshold;
  }
}

// A label used by more than one object is stored once, in the shared label area; the
// others lie inline, their reference being the object itself.
TEST_P(RealMapConversion, RepeatedLabelsAreSharedOnce) {
  std::map<std::u16string, std::vector<uint32_t>> refs;
  for (uint32_t l = 0; l < orv_.levelCount(); ++l) {
    Collect objects(orv_);
    orv_.decodeLevel(static_cast<int>(l), kEverywhere, objects);
    for (const Decoded& d : objects.objects) {
      if (!d.label.empty()) refs[d.label].push_back(d.labelRef);
    }
  }
  uint32_t levelTable = 0;
  std::memcpy(&levelTable, orvBytes_.data() + kOrvLevelTableAt, 4);
  uint32_t sharedStart = 0;
  std::memcpy(&sharedStart, orvBytes_.data() + kOrvSharedLabelsAt, 4);
  size_t shared = 0;
  for (const auto& [text, list] : refs) {
    if (list.size() == 1) {
      EXPECT_TRUE(list[0] < sharedStart || list[0] >= levelTable);
      continue;
    }
    ++shared;
    for (uint32_t ref : list) {
      EXPECT_EQ(ref, list[0]);
      EXPECT_GE(ref, sharedStart);
      EXPECT_LT(ref, levelTable);
    }
  }
  EXPECT_GT(shared, 0u);
}

TEST_P(RealMapConversion, DrawsTheSamePictureAsTheImgMap) {
  test::ensureGuiApplication();
  MapView view;
  view.setScreenSize(320, 320);
  view.fitNewMap(img_.bounds());
  const MapPoint centre = view.centre();
  // Zoom steps whose level has all 24 bits draw exactly the IMG picture.
  for (uint32_t zoom : {0u, 2u, 4u}) {
    view.setZoomIndex(zoom);
    view.setCentre(centre.x, centre.y);
    const test::DrawKit& kit = test::drawKit();
    ViewComposer fromImg(kit.settings, kit.drawing, kit.styles), fromOrv(kit.settings, kit.drawing, kit.styles);
    fromImg.composeView(&img_, view);
    fromOrv.composeView(&orv_, view);
    EXPECT_EQ(fromOrv.picture(), fromImg.picture()) << "zoom " << zoom;
  }
  // Coarser levels keep coordinates to the level's resolution, as IMG subdivisions do
  // relative to their centres: the pictures differ only by the rounding.
  for (uint32_t zoom : {8u, 12u, 16u}) {
    view.setZoomIndex(zoom);
    view.setCentre(centre.x, centre.y);
    const test::DrawKit& kit = test::drawKit();
    ViewComposer fromImg(kit.settings, kit.drawing, kit.styles), fromOrv(kit.settings, kit.drawing, kit.styles);
    fromImg.composeView(&img_, view);
    fromOrv.composeView(&orv_, view);
    const QImage& a = fromOrv.picture();
    const QImage& b = fromImg.picture();
    ASSERT_EQ(a.size(), b.size());
    int differing = 0;
    for (int y = 0; y < a.height(); ++y) {
      for (int x = 0; x < a.width(); ++x) differing += a.pixel(x, y) != b.pixel(x, y);
    }
    EXPECT_LT(differing, a.width() * a.height() / 10) << "zoom " << zoom;
  }
}

TEST_P(RealMapConversion, IsSmallerThanTheImgMap) { EXPECT_LT(orvBytes_.size(), imgBytes_.size()); }

INSTANTIATE_TEST_SUITE_P(Maps, RealMapConversion, ::testing::ValuesIn(test::singleTileMaps()),
                         [](const auto& info) {
                           std::string name = info.param.substr(0, info.param.find('.'));
                           for (char& c : name) {
                             if (!isalnum(static_cast<unsigned char>(c))) c = '_';
                           }
                           return name;
                         });

}  // namespace
}  // namespace orvel
