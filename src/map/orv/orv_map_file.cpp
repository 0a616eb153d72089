#include "map/orv/orv_map_file.h"

#include <cstring>

#include "app/core/message.h"

namespace orvel {
namespace {

uint32_t u32At(Bytes file, size_t offset) {
  return uint32_t{file[offset]} | uint32_t{file[offset + 1]} << 8 | uint32_t{file[offset + 2]} << 16 |
         uint32_t{file[offset + 3]} << 24;
}

}  // namespace

bool OrvMapFile::probe(Bytes file) {
  return file.size() >= kOrvMinSize && std::memcmp(file.data(), "GORV", 4) == 0 && u32At(file, 4) == kOrvVersion &&
         u32At(file, 8) == file.size();
}

bool OrvMapFile::load(Bytes) {
  showMessage("Не поддерживаемый формат файла либо файл поврежден.");
  return false;
}

void OrvMapFile::decode(const MapView&, const MapRect&, ObjectConsumer&) {}

void OrvMapFile::draw(QPainter&, const MapView&, const MapRect&) {}

int OrvMapFile::getLabel(uint32_t, char16_t* out) {
  out[0] = 0;
  return 0;
}

void OrvMapFile::describe(MapFacts& facts) const { facts.emplace_back("format", "orv"); }

}  // namespace orvel
