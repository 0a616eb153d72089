// Opening map files as the viewer does: format detection, the messages of every failure,
// and the current map afterwards.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/message.h"
#include "map/img/img_map_file.h"
#include "map/current_map.h"
#include "map/orv/orv_map_file.h"
#include "common/test_data.h"
#include "map/img/img_builder.h"

namespace orvel {
namespace {

// "GORV" with version 2 is the own format only when the stored size is the file's size;
// otherwise the IMG probe gets its turn (the signature of an IMG lies at 0x10).
TEST(OpenMap, OwnFormatProbeComesFirst) {
  const auto path = test::dataFile("maps/monaco_default_6bit.img");
  std::vector<uint8_t> bytes = test::readFile(path);
  std::copy_n("GORV", 4, bytes.begin());
  test::putLe(bytes, 4, 2, 4);
  test::putLe(bytes, 8, static_cast<uint32_t>(bytes.size() + 1), 4);
  auto img = createMapFile(bytes);
  EXPECT_NE(dynamic_cast<ImgMapFile*>(img.get()), nullptr);
  Messages messages;
  CurrentMap current(messages);
  MapView view;
  const auto copy = test::scratchDir("open_map") / "gorv_wrong_size.img";
  test::writeText(copy, std::string(bytes.begin(), bytes.end()));
  EXPECT_TRUE(current.openMapFile(copy, view));
  EXPECT_NE(dynamic_cast<ImgMapFile*>(current.currentMap()), nullptr);

  test::putLe(bytes, 8, static_cast<uint32_t>(bytes.size()), 4);
  auto orv = createMapFile(bytes);
  EXPECT_NE(dynamic_cast<OrvMapFile*>(orv.get()), nullptr);
  test::putLe(bytes, 4, 3, 4);
  EXPECT_NE(dynamic_cast<ImgMapFile*>(createMapFile(bytes).get()), nullptr);
  for (size_t i = 0x10; i < 0x16; ++i) {  // any byte of the signature "DSKIMG" wrong: no map
    bytes[i] ^= 0x20;
    EXPECT_EQ(createMapFile(bytes), nullptr) << i;
    bytes[i] ^= 0x20;
  }
}

}  // namespace
}  // namespace orvel
