// Every real single-tile IMG map converts to .orv, and the .orv map holds the same objects
// at every level, chooses the same level at every zoom and shares repeated labels.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"
#include "map/orv/convert/orv_writer.h"
#include "map/orv/orv_map_file.h"
#include "orv_test_util.h"

namespace orvel {
namespace {

using test::Collect;
using test::Decoded;
using test::kEverywhere;

class RealMapConversion : public ::testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    imgBytes_ = test::readFile(test::dataFile("maps/" + GetParam()));
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
