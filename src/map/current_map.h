#pragma once
// The map shown: one file, memory-mapped read-only and read in place by the format object
// that recognised it. Whoever shows a map owns one CurrentMap.
#include <filesystem>
#include <memory>

#include "map/format/map_file.h"
#include "map/format/mapped_file.h"

namespace orvel {

class MapView;
class Messages;

// A new, probed but not loaded map object for these bytes, or nullptr.
std::unique_ptr<MapFile> createMapFile(Bytes file);

class CurrentMap {
 public:
  // Failures to open a map are shown through `messages`.
  explicit CurrentMap(Messages& messages) : messages_(messages) {}
  CurrentMap(const CurrentMap&) = delete;
  CurrentMap& operator=(const CurrentMap&) = delete;
  ~CurrentMap() { closeMapFile(); }

  // Closes the current map, opens the file and makes it the current map, setting the view's
  // zoom and centre for it. Every failure is shown. Returns whether a map is loaded afterwards.
  bool openMapFile(const std::filesystem::path& path, MapView& view);
  // Unmaps and destroys the current map; safe when none is loaded.
  void closeMapFile();
  // The current map, or nullptr.
  MapFile* currentMap() const { return map_.get(); }

 private:
  Messages& messages_;
  // The map may keep pointers into the mapping, so it goes first.
  std::unique_ptr<MappedFile> file_;
  std::unique_ptr<MapFile> map_;
};

}  // namespace orvel
