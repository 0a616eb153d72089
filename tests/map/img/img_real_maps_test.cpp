// The real maps open with the facts read independently from their bytes.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "core/message.h"
#include "img_test_util.h"
#include "map/img/img_map_file.h"
#include "common/test_data.h"

namespace orvel {
namespace {

struct KnownMap {
  const char* file;
  uint16_t blockSize;
  const char* tile;
  MapRect bounds;  // west, south, east, north
  std::array<uint16_t, 5> perLevel;
  uint8_t labelCoding;
  uint16_t codePage;
  bool net;
};

constexpr MapRect kMonaco{344072, 2028007, 349542, 2039606};
constexpr std::array<uint16_t, 5> kMonacoLevels{1, 1, 3, 10, 19};

const KnownMap kMaps[] = {
    {"monaco_default_6bit.img", 1024, "63240011", kMonaco, kMonacoLevels, 6, 0, false},
    {"monaco_default_6bit_xor5a.img", 1024, "63240011", kMonaco, kMonacoLevels, 6, 0, false},
    {"monaco_cp1252.img", 512, "63240012", kMonaco, kMonacoLevels, 9, 1252, false},
    {"monaco_unicode.img", 512, "63240013", kMonaco, kMonacoLevels, 10, 65001, false},
    {"liechtenstein_route_cp1252_bs512.img", 512, "63240021", {441384, 2192584, 449080, 2203001}, {1, 1, 4, 18, 41},
     9, 1252, true},
};

// All mkgmap maps here: 17 (inherited), 18, 20, 22, 24 bits.
constexpr std::array<uint8_t, 5> kBits{17, 18, 20, 22, 24};

class RealImgMap : public ::testing::TestWithParam<KnownMap> {};

TEST_P(RealImgMap, LoadsWithItsFacts) {
  const KnownMap& facts = GetParam();
  const auto path = test::dataFile("maps/" + std::string(facts.file));
  if (path.empty()) GTEST_SKIP();
  const auto bytes = test::readFile(path);
  ImgMapFile map;
  ASSERT_TRUE(map.probe(bytes));
  ASSERT_TRUE(map.load(bytes)) << map.loadError();
  EXPECT_TRUE(map.loadError().empty());

  EXPECT_EQ(map.bounds(), facts.bounds);
  EXPECT_EQ(map.blockSize(), facts.blockSize);
  EXPECT_EQ(map.tileName(), facts.tile);
  EXPECT_EQ(map.labelCoding(), facts.labelCoding);
  EXPECT_EQ(static_cast<int>(map.labelSchema()), facts.labelCoding == 6 ? 0 : facts.labelCoding == 9 ? 1 : 2);
  EXPECT_EQ(map.codePage(), facts.codePage);
  EXPECT_EQ(map.labelShift(), 1);
  EXPECT_EQ(map.netData().empty(), !facts.net);

  ASSERT_EQ(map.levels().size(), 5u);
  std::array<uint16_t, 5> counted{};
  for (const ImgSubdivision& s : map.subdivisions()) {
    ASSERT_LT(s.level, 5);
    ++counted[s.level];
    EXPECT_EQ(s.shift, 24 - kBits[s.level]);
  }
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(map.levels()[i].bits, kBits[i]) << i;
    EXPECT_EQ(map.levels()[i].inherited, i == 0) << i;
    EXPECT_EQ(map.levels()[i].subdivisions, facts.perLevel[i]) << i;
    EXPECT_EQ(counted[i], facts.perLevel[i]) << i;
  }
  EXPECT_TRUE(test::staysInside(map));
}

// In a sound map the sections of consecutive subdivisions tile the RGN data without gaps:
// each starts right after its offset table or where the previous one ended, and the last
// ends where the next subdivision starts. Nothing may have been cut or dropped.
TEST_P(RealImgMap, SectionsTileTheRgnData) {
  const auto path = test::dataFile("maps/" + std::string(GetParam().file));
  if (path.empty()) GTEST_SKIP();
  const auto bytes = test::readFile(path);
  ImgMapFile map;
  ASSERT_TRUE(map.load(bytes));
  const auto subdivisions = map.subdivisions();
  uint64_t covered = 0;
  int withSections = 0;
  for (size_t i = 0; i < subdivisions.size(); ++i) {
    const ImgSubdivision& s = subdivisions[i];
    const uint32_t end = i + 1 < subdivisions.size() ? subdivisions[i + 1].rgnOffset
                                                     : static_cast<uint32_t>(map.rgnData().size());
    const int n = __builtin_popcount(s.flags & 0xF0);
    if (n == 0) continue;
    ++withSections;
    uint32_t next = s.rgnOffset + 2 * static_cast<uint32_t>(n - 1);
    covered += 2 * static_cast<uint32_t>(n - 1);
    for (size_t k = 0; k < 4; ++k) {
      if (!(s.flags & (0x10 << k))) {
        EXPECT_EQ(s.sectionStart[k], kNoSection);
        continue;
      }
      ASSERT_EQ(s.sectionStart[k], next) << "subdivision " << i << " section " << k;
      next += s.sectionLength[k];
      covered += s.sectionLength[k];
    }
    EXPECT_EQ(next, end) << "subdivision " << i;
  }
  EXPECT_GT(withSections, 10);
  EXPECT_GT(covered, map.rgnData().size() * 9 / 10);
}

INSTANTIATE_TEST_SUITE_P(Maps, RealImgMap, ::testing::ValuesIn(kMaps), [](const auto& info) {
  std::string name = info.param.file;
  for (char& c : name) {
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
});

TEST(RealImgMap, ScrambledCopyLoadsLikeItsOriginal) {
  const auto plainPath = test::dataFile("maps/monaco_default_6bit.img");
  const auto xorPath = test::dataFile("maps/monaco_default_6bit_xor5a.img");
  if (plainPath.empty() || xorPath.empty()) GTEST_SKIP();
  const auto plainBytes = test::readFile(plainPath);
  const auto xorBytes = test::readFile(xorPath);
  ImgMapFile plain;
  ImgMapFile scrambled;
  ASSERT_TRUE(plain.load(plainBytes));
  ASSERT_TRUE(scrambled.load(xorBytes));

  EXPECT_EQ(plain.xorKey(), 0);
  EXPECT_EQ(plain.fileBytes().data(), plainBytes.data());  // read in place
  EXPECT_EQ(scrambled.xorKey(), 0x5A);
  EXPECT_NE(scrambled.fileBytes().data(), xorBytes.data());  // a private copy

  EXPECT_EQ(scrambled.bounds(), plain.bounds());
  ASSERT_EQ(scrambled.subdivisions().size(), plain.subdivisions().size());
  for (size_t i = 0; i < plain.subdivisions().size(); ++i) {
    const ImgSubdivision& a = plain.subdivisions()[i];
    const ImgSubdivision& b = scrambled.subdivisions()[i];
    EXPECT_EQ(a.rgnOffset, b.rgnOffset);
    EXPECT_EQ(a.flags, b.flags);
    EXPECT_EQ(a.bounds, b.bounds);
    EXPECT_EQ(a.sectionStart, b.sectionStart);
    EXPECT_EQ(a.sectionLength, b.sectionLength);
  }
  auto same = [](std::span<const uint8_t> a, std::span<const uint8_t> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  };
  EXPECT_TRUE(same(plain.rgnData(), scrambled.rgnData()));
  EXPECT_TRUE(same(plain.labelData(), scrambled.labelData()));
  EXPECT_TRUE(same(plain.poiProperties(), scrambled.poiProperties()));
}

// Its RGN subfile has two directory entries; the second carries part number 1 and is skipped.
TEST(RealImgMap, RgnOverTwoDirectoryEntriesComesFromTheFirst) {
  const auto path = test::dataFile("maps/liechtenstein_route_cp1252_bs512.img");
  if (path.empty()) GTEST_SKIP();
  const auto bytes = test::readFile(path);
  // The data: two RGN entries of the same tile, the second with part 1.
  std::vector<size_t> rgnEntries;
  for (size_t at = 0x600; at + 512 <= bytes.size() && bytes[at] == 1; at += 512) {
    if (std::string(bytes.begin() + at + 9, bytes.begin() + at + 12) == "RGN") rgnEntries.push_back(at);
  }
  ASSERT_EQ(rgnEntries.size(), 2u);
  ASSERT_EQ(bytes[rgnEntries[1] + 0x11], 1);
  const uint32_t firstBlock = bytes[rgnEntries[0] + 0x20] | bytes[rgnEntries[0] + 0x21] << 8;

  ImgMapFile map;
  ASSERT_TRUE(map.load(bytes));
  EXPECT_EQ(map.subfileOffset(kSubfileRgn), firstBlock * 512);
  EXPECT_EQ(map.subdivisions().size(), 65u);
}

// A map set whose first directory entry is its product file has no TRE, RGN or LBL of that
// name. Opening map sets is not supported yet: today it is refused as an unknown format.
TEST(RealImgMap, MapSetOpensWithoutAMessage) {
  const auto path = test::dataFile("maps/monaco_tiles_gmapsupp.img");
  if (path.empty()) GTEST_SKIP();
  const auto bytes = test::readFile(path);
  ImgMapFile map;
  ASSERT_TRUE(map.probe(bytes));
  EXPECT_TRUE(map.load(bytes));
  EXPECT_TRUE(map.isMapSet());
  EXPECT_EQ(map.tileName(), "MAKEGMAP");
  EXPECT_TRUE(map.loadError().empty());
}

}  // namespace
}  // namespace orvel
