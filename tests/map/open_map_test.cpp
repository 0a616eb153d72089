// Opening map files as the viewer does: format detection, the messages of every failure,
// and the current map afterwards.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "core/message.h"
#include "map/img/img_map_file.h"
#include "map/current_map.h"
#include "map/orv/orv_map_file.h"
#include "common/test_data.h"

namespace orvel {
namespace {

std::filesystem::path writeFile(const std::string& name, const std::vector<uint8_t>& bytes) {
  const auto path = test::scratchDir("open_map") / name;
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                              static_cast<std::streamsize>(bytes.size()));
  return path;
}

void putU32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
  for (int i = 0; i < 4; ++i) b[at + static_cast<size_t>(i)] = static_cast<uint8_t>(v >> (8 * i));
}

// "GORV" with version 2 is the own format only when the stored size is the file's size;
// otherwise the IMG probe gets its turn (the signature of an IMG lies at 0x10).
TEST(OpenMap, OwnFormatProbeComesFirst) {
  const auto path = test::dataFile("maps/monaco_default_6bit.img");
  std::vector<uint8_t> bytes = test::readFile(path);
  std::copy_n("GORV", 4, bytes.begin());
  putU32(bytes, 4, 2);
  putU32(bytes, 8, static_cast<uint32_t>(bytes.size() + 1));
  auto img = createMapFile(bytes);
  EXPECT_NE(dynamic_cast<ImgMapFile*>(img.get()), nullptr);
  Messages messages;
  CurrentMap current(messages);
  MapView view;
  EXPECT_TRUE(current.openMapFile(writeFile("gorv_wrong_size.img", bytes), view));
  EXPECT_NE(dynamic_cast<ImgMapFile*>(current.currentMap()), nullptr);

  putU32(bytes, 8, static_cast<uint32_t>(bytes.size()));
  auto orv = createMapFile(bytes);
  EXPECT_NE(dynamic_cast<OrvMapFile*>(orv.get()), nullptr);
  putU32(bytes, 4, 3);
  EXPECT_NE(dynamic_cast<ImgMapFile*>(createMapFile(bytes).get()), nullptr);
}

}  // namespace
}  // namespace orvel
