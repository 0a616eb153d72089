// orvel-tool info MAP
#include <cstdio>

#include "commands.h"
#include "core/message.h"
#include "map/current_map.h"
#include "map/img/img_map_file.h"
#include "view/map_view.h"

namespace orvel::tool {

int runInfo(std::span<const char* const> args) {
  if (args.empty()) return usageError("info", "missing MAP (try --help)");
  if (args.size() > 1) return usageError("info", "too many arguments (try --help)");

  Messages messages;  // to stderr
  CurrentMap map(messages);
  MapView view;
  view.setCentre(0, 0);
  if (!map.openMapFile(args[0], view)) return kExitFailed;

  MapFacts facts;
  map.currentMap()->describe(facts);
  for (const auto& [key, value] : facts) std::printf("%s: %s\n", key.c_str(), value.c_str());
  std::printf("zoom_index: %u\n", view.zoomIndex());
  std::printf("centre_units: %d %d\n", view.centre().x, view.centre().y);
  if (const auto* img = dynamic_cast<const ImgMapFile*>(map.currentMap())) {
    MapFacts tiles;
    img->describeTiles(tiles);
    for (const auto& [key, value] : tiles) std::printf("%s: %s\n", key.c_str(), value.c_str());
  }
  return kExitOk;
}

}  // namespace orvel::tool
