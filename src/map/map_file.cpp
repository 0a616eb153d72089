#include "map/map_file.h"

#include <new>

#include "core/message.h"
#include "map/img/img_map_file.h"
#include "map/mapped_file.h"
#include "map/orv/orv_map_file.h"

namespace orvel {
namespace {

// The one map shown and the mapping its bytes live in. The map may keep pointers into
// the mapping, so it goes first.
struct CurrentMap {
  std::unique_ptr<MappedFile> file;
  std::unique_ptr<MapFile> map;

  ~CurrentMap() { clear(); }
  void clear() {
    map.reset();
    file.reset();
  }
};

CurrentMap& current() {
  static CurrentMap state;
  return state;
}

template <typename Format>
std::unique_ptr<MapFile> probed(Bytes file) {
  std::unique_ptr<MapFile> map(new (std::nothrow) Format());
  if (map && map->probe(file)) return map;
  return nullptr;
}

}  // namespace

std::unique_ptr<MapFile> createMapFile(Bytes file) {
  if (auto map = probed<OrvMapFile>(file)) return map;
  return probed<ImgMapFile>(file);
}

bool openMapFile(const std::filesystem::path& path, MapView& view) {
  closeMapFile();

  auto file = std::make_unique<MappedFile>();
  switch (file->open(path)) {
    case MappedFile::Status::Ok:
      break;
    case MappedFile::Status::OpenFailed:
      showMessage("Не удается открыть файл. (Ошибка %d.)", file->error());
      return false;
    case MappedFile::Status::ReadFailed:
      showMessage("Не удается прочитать файл. (Ошибка %d.)", file->error());
      return false;
  }

  std::unique_ptr<MapFile> map = createMapFile(file->bytes());
  if (!map) {
    showMessage("Не поддерживаемый формат файла либо файл поврежден.");
    return false;
  }
  if (!map->load(file->bytes())) return false;  // the loader has said why

  CurrentMap& state = current();
  state.file = std::move(file);
  state.map = std::move(map);
  view.fitNewMap(state.map->bounds());
  return true;
}

void closeMapFile() { current().clear(); }

MapFile* currentMap() { return current().map.get(); }

}  // namespace orvel
