// Hand-made map sets: locked tiles, subfiles spread over several directory entries, and
// containers that hold no usable tile.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/message.h"
#include "img_builder.h"
#include "map/img/img_container.h"
#include "map/img/img_map_file.h"

namespace orvel {
namespace {

using test::BuiltImg;
using test::ByteVector;
using test::ImgLayout;

constexpr size_t kBlock = 512;
constexpr const char* kUnsupported = "Не поддерживаемый формат файла либо файл поврежден.";
constexpr const char* kEncrypted = "Карта зашифрована.\n (ПРИМЕЧАНИЕ: Зашифрованные карты не поддерживаются.)";

struct SetTile {
  std::string name;
  ImgLayout layout;
  bool withLbl = true;
};

struct SetEntry {
  std::string name;
  std::string type;
  uint16_t block = 0;
  uint32_t size = 0;
  uint8_t partHigh = 0;
};

// A container with a product entry first, then the tiles' entries in the order given;
// `extra` entries are put after the product entry, `trailing` ones after all others.
ByteVector buildSet(const std::vector<SetTile>& tiles, const std::vector<SetEntry>& extra = {},
                    const std::vector<SetEntry>& trailing = {}) {
  std::vector<SetEntry> entries{{"MAKEGMAP", "MPS", 1, 16}};
  entries.insert(entries.end(), extra.begin(), extra.end());
  std::vector<BuiltImg> built;
  for (const SetTile& tile : tiles) built.push_back(test::buildImg(tile.layout));
  for (size_t i = 0; i < tiles.size(); ++i) {
    const char* types[] = {"TRE", "RGN", "LBL"};
    for (int t = 0; t < (tiles[i].withLbl ? 3 : 2); ++t) entries.push_back({tiles[i].name, types[t]});
  }
  entries.insert(entries.end(), trailing.begin(), trailing.end());

  ByteVector b(0x600 + entries.size() * kImgDirectoryEntrySize, 0);
  test::putText(b, 0x10, "DSKIMG");
  test::putU8(b, 0x61, 9);
  test::putLe(b, 0x40C, b.size(), 4);
  test::padToBlock(b, kBlock);

  // Each tile's subfiles as buildImg laid them out, from its TRE on.
  size_t next = 0;
  for (size_t i = 0; i < tiles.size(); ++i) {
    const BuiltImg& img = built[i];
    const size_t base = b.size();
    b.insert(b.end(), img.bytes.begin() + img.offsets[0], img.bytes.end());
    test::padToBlock(b, kBlock);
    while (next < entries.size() && (entries[next].name != tiles[i].name || entries[next].partHigh != 0)) ++next;
    for (int t = 0; t < 3 && next < entries.size() && entries[next].name == tiles[i].name; ++t, ++next) {
      entries[next].block = static_cast<uint16_t>((base + img.offsets[t] - img.offsets[0]) / kBlock);
      entries[next].size = img.sizes[t];
    }
  }
  for (size_t i = 0; i < entries.size(); ++i) {
    const size_t at = 0x600 + i * kImgDirectoryEntrySize;
    test::putU8(b, at, 1);
    test::putText(b, at + 1, (entries[i].name + "        ").substr(0, 8));
    test::putText(b, at + 9, entries[i].type);
    test::putLe(b, at + 0x0C, entries[i].size, 4);
    test::putU8(b, at + 0x11, entries[i].partHigh);
    test::putLe(b, at + 0x20, entries[i].block, 2);
  }
  return b;
}

ImgLayout tileAt(int32_t west, int32_t south, uint8_t treFlags = 0) {
  ImgLayout layout;
  layout.west = west;
  layout.south = south;
  layout.east = west + 1000;
  layout.north = south + 1000;
  layout.treFlags = treFlags;
  return layout;
}

struct Loaded {
  bool ok = false;
  std::vector<std::string> messages;
  std::vector<std::string> names;
  MapRect bounds;
};

Loaded load(const ByteVector& bytes) {
  ImgMapFile map;
  Loaded out;
  out.ok = map.probe(bytes) && map.load(bytes);
  if (!map.loadError().empty()) out.messages.push_back(map.loadError());
  for (const ImgTile& tile : map.tiles()) out.names.push_back(tile.name());
  out.bounds = map.bounds();
  return out;
}

TEST(ImgMapSetBuilt, LockedTilesAreSkipped) {
  const Loaded set = load(buildSet({{"00000001", tileAt(0, 0)},
                                    {"00000002", tileAt(5000, 5000, 0x80)},
                                    {"00000003", tileAt(-3000, 1000)}}));
  ASSERT_TRUE(set.ok);
  EXPECT_TRUE(set.messages.empty());
  EXPECT_EQ(set.names, (std::vector<std::string>{"00000001", "00000003"}));
  EXPECT_EQ(set.bounds, (MapRect{-3000, 0, 1000, 2000}));
}

struct RefusedCase {
  const char* what;
  std::vector<SetTile> tiles;
  const char* message;
};

TEST(ImgMapSetBuilt, SetsWithoutAUsableTileAreRefused) {
  const RefusedCase cases[] = {
      {"every tile locked", {{"00000001", tileAt(0, 0, 0x80)}, {"00000002", tileAt(9, 9, 0x80)}}, kEncrypted},
      {"no tile at all", {}, kUnsupported},
      {"no tile with LBL", {{"00000001", tileAt(0, 0), false}}, kUnsupported},
      {"locked, and one without LBL", {{"00000001", tileAt(0, 0, 0x80)}, {"00000002", tileAt(0, 0), false}},
       kEncrypted},
  };
  for (const RefusedCase& c : cases) {
    SCOPED_TRACE(c.what);
    const Loaded set = load(buildSet(c.tiles));
    EXPECT_FALSE(set.ok);
    EXPECT_EQ(set.messages, std::vector<std::string>{c.message});
  }
}

TEST(ImgMapSetBuilt, ContinuationEntriesNeitherMoveNorResizeASubfile) {
  // Later parts of tile 2's subfiles, listed before and after the first parts and pointing
  // at blocks of their own.
  const std::vector<SetEntry> before{{"00000002", "TRE", 90, 0, 1}, {"00000002", "RGN", 91, 0, 1}};
  const std::vector<SetEntry> after{{"00000002", "RGN", 92, 0, 2}, {"00000002", "LBL", 93, 7, 1}};
  const std::vector<SetTile> tiles{{"00000001", tileAt(0, 0)}, {"00000002", tileAt(3000, 0)}};
  const ByteVector bytes = buildSet(tiles, before, after);
  const std::vector<ImgTileFiles> withParts = scanImgTiles(bytes);
  const std::vector<ImgTileFiles> plain = scanImgTiles(buildSet(tiles));
  ASSERT_EQ(withParts.size(), 3u);  // the product and two tiles, in order of first appearance
  ASSERT_EQ(plain.size(), 3u);
  EXPECT_EQ(withParts[0].name, "MAKEGMAP");
  EXPECT_EQ(withParts[1].name, "00000001");
  EXPECT_EQ(withParts[2].name, "00000002");
  for (int type : {kSubfileTre, kSubfileRgn, kSubfileLbl}) {
    SCOPED_TRACE(type);
    const ImgSubfile& got = withParts[2].subfiles[static_cast<size_t>(type)];
    const ImgSubfile& want = plain[2].subfiles[static_cast<size_t>(type)];
    EXPECT_TRUE(got.found);
    // Four more directory entries move every subfile four blocks on.
    EXPECT_EQ(got.offset, want.offset + 4 * kImgDirectoryEntrySize);
    EXPECT_EQ(got.size, want.size);
  }
  const Loaded set = load(bytes);
  ASSERT_TRUE(set.ok);
  EXPECT_EQ(set.names, (std::vector<std::string>{"00000001", "00000002"}));
  EXPECT_EQ(set.bounds, (MapRect{0, 0, 4000, 1000}));
}

TEST(ImgMapSetBuilt, TilesAreGroupedByNameWhereverTheirEntriesStand) {
  // Tile 2's TRE comes before tile 1's entries.
  const std::vector<SetTile> tiles{{"00000001", tileAt(0, 0)}, {"00000002", tileAt(3000, 0)}};
  ByteVector bytes = buildSet(tiles);
  const std::vector<ImgTileFiles> plain = scanImgTiles(bytes);
  ASSERT_EQ(plain.size(), 3u);
  // Swap the directory entries 1 (tile 1 TRE) and 4 (tile 2 TRE).
  std::swap_ranges(bytes.begin() + 0x600 + 1 * 512, bytes.begin() + 0x600 + 2 * 512, bytes.begin() + 0x600 + 4 * 512);
  const std::vector<ImgTileFiles> swapped = scanImgTiles(bytes);
  ASSERT_EQ(swapped.size(), 3u);
  EXPECT_EQ(swapped[1].name, "00000002");
  EXPECT_EQ(swapped[2].name, "00000001");
  for (size_t type = 0; type < 3; ++type) {
    EXPECT_EQ(swapped[1].subfiles[type].offset, plain[2].subfiles[type].offset);
    EXPECT_EQ(swapped[2].subfiles[type].offset, plain[1].subfiles[type].offset);
  }
}

TEST(ImgMapSetBuilt, OneUsableTileStillReadsAsASet) {
  ImgMapFile map;
  const ByteVector bytes = buildSet({{"00000007", tileAt(100, 200)}});
  ASSERT_TRUE(map.load(bytes));
  EXPECT_TRUE(map.isMapSet());
  ASSERT_EQ(map.tiles().size(), 1u);
  EXPECT_EQ(map.bounds(), (MapRect{100, 200, 1100, 1200}));
}

}  // namespace
}  // namespace orvel
