// Damaged real maps: cut short at many lengths, and with header bytes changed. A map that
// still loads keeps all its ranges inside its bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "core/message.h"
#include "img_test_util.h"
#include "map/img/img_map_file.h"
#include "common/test_data.h"

namespace orvel {
namespace {

const char* const kMaps[] = {
    "monaco_default_6bit.img",  "monaco_default_6bit_xor5a.img",        "monaco_cp1252.img",
    "monaco_unicode.img",       "liechtenstein_route_cp1252_bs512.img", "monaco_tiles_gmapsupp.img",
};

uint32_t u32At(const std::vector<uint8_t>& b, size_t at) {
  return at + 4 <= b.size() ? uint32_t{b[at]} | uint32_t{b[at + 1]} << 8 | uint32_t{b[at + 2]} << 16 |
                                  uint32_t{b[at + 3]} << 24
                            : 0;
}

// Loads a private copy of exactly these bytes, so that any read past them is caught.
void loadChecked(const uint8_t* data, size_t size, const std::string& what) {
  const std::vector<uint8_t> bytes(data, data + size);
  ImgMapFile map;
  if (!map.probe(bytes)) return;
  if (map.load(bytes)) {
    EXPECT_TRUE(test::staysInside(map)) << what;
  }
}

class DamagedImgMap : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    bytes_ = test::readFile(test::dataFile(std::string("maps/") + GetParam()));
    ASSERT_FALSE(bytes_.empty());
  }
  std::vector<uint8_t> bytes_;
};

TEST_P(DamagedImgMap, CutShort) {
  const size_t size = bytes_.size();
  for (size_t length = 0x600; length < std::min<size_t>(0x1000, size); length += 7) {
    loadChecked(bytes_.data(), length, "length " + std::to_string(length));
  }
  for (size_t i = 0; i < 100; ++i) {
    const size_t length = size * i / 100 + (i * 7919) % 512;
    if (length < size) loadChecked(bytes_.data(), length, "length " + std::to_string(length));
  }
}

// The areas whose bytes steer the loader, as found in the sound file.
struct Area {
  size_t start;
  size_t length;
};

std::vector<Area> steeringAreas(const std::vector<uint8_t>& plain, const ImgMapFile* map) {
  std::vector<Area> areas{{0, 0x600}, {0x600, std::max<uint32_t>(u32At(plain, 0x40C), 0x600) - 0x600}};
  if (!map) return areas;  // a map set: only its container steers the loader
  const size_t tre = map->subfileOffset(kSubfileTre);
  areas.push_back({tre, 0x80});
  areas.push_back({tre + u32At(plain, tre + 0x21), u32At(plain, tre + 0x25)});  // levels
  areas.push_back({tre + u32At(plain, tre + 0x29), u32At(plain, tre + 0x2D)});  // subdivisions
  areas.push_back({map->subfileOffset(kSubfileRgn), 0x1D});
  areas.push_back({map->subfileOffset(kSubfileLbl), 0xB0});
  // The start of the RGN data, where the subdivisions' offset tables lie.
  areas.push_back({static_cast<size_t>(map->rgnData().data() - map->fileBytes().data()), 64});
  if (map->hasNet()) areas.push_back({map->subfileOffset(kSubfileNet), 0x20});
  return areas;
}

TEST_P(DamagedImgMap, ChangedHeaderBytes) {
  ImgMapFile sound;
  const bool loads = sound.load(bytes_);
  // Descrambled bytes locate the areas; the damage is done to the bytes as stored.
  const std::vector<uint8_t> plain =
      loads ? std::vector<uint8_t>(sound.fileBytes().begin(), sound.fileBytes().end()) : bytes_;
  const std::vector<Area> areas = steeringAreas(plain, loads ? &sound : nullptr);

  std::mt19937 random(20240611);
  std::vector<uint8_t> damaged = bytes_;
  int loaded = 0;
  // A scrambled map is copied whole on every load: fewer rounds reach the same headers.
  const int rounds = sound.xorKey() != 0 ? 600 : 3000;
  for (int round = 0; round < rounds; ++round) {
    const Area& area = areas[random() % areas.size()];
    if (area.length == 0) continue;
    const int changes = 1 + static_cast<int>(random() % 4);
    std::vector<std::pair<size_t, uint8_t>> undo;
    for (int c = 0; c < changes; ++c) {
      const size_t at = area.start + random() % area.length;
      if (at >= damaged.size()) continue;
      undo.emplace_back(at, damaged[at]);
      const uint32_t how = random();
      damaged[at] = (how & 1) ? static_cast<uint8_t>(damaged[at] ^ (1u << ((how >> 1) % 8)))
                              : static_cast<uint8_t>(how >> 8);
    }
    ImgMapFile map;
    if (map.probe(damaged) && map.load(damaged)) {
      ++loaded;
      EXPECT_TRUE(test::staysInside(map)) << "round " << round;
    }
    for (auto it = undo.rbegin(); it != undo.rend(); ++it) damaged[it->first] = it->second;
  }
  if (loads) {
    EXPECT_GT(loaded, rounds / 10);  // many changes leave a loadable map
  }
}

INSTANTIATE_TEST_SUITE_P(Maps, DamagedImgMap, ::testing::ValuesIn(kMaps), [](const auto& info) {
  std::string name = info.param;
  for (char& c : name) {
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
});

}  // namespace
}  // namespace orvel
