#include "map/current_map.h"

#include <new>

#include "core/message.h"
#include "map/img/img_map_file.h"
#include "map/orv/orv_map_file.h"

namespace orvel {
namespace {

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

bool CurrentMap::openMapFile(const std::filesystem::path& path, MapView& view) {
  closeMapFile();

  auto file = std::make_unique<MappedFile>();
  switch (file->open(path)) {
    case MappedFile::Status::Ok:
      break;
    case MappedFile::Status::OpenFailed:
      showMessage(messages_, "Не удается открыть файл. (Ошибка %d.)", file->error());
      return false;
    case MappedFile::Status::ReadFailed:
      showMessage(messages_, "Не удается прочитать файл. (Ошибка %d.)", file->error());
      return false;
  }

  std::unique_ptr<MapFile> map = createMapFile(file->bytes());
  if (!map) {
    showMessage(messages_, "Не поддерживаемый формат файла либо файл поврежден.");
    return false;
  }
  if (!map->load(file->bytes())) {
    showMessage(messages_, "%s", map->loadError().c_str());
    return false;
  }

  file_ = std::move(file);
  map_ = std::move(map);
  view.fitNewMap(map_->bounds());
  return true;
}

void CurrentMap::closeMapFile() {
  map_.reset();
  file_.reset();
}

}  // namespace orvel
