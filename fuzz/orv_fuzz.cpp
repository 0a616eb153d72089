// libFuzzer target: arbitrary bytes opened as an .orv map and drawn at a few zooms into an
// image. The signature, version and stored size are written over the input's first bytes so
// that nearly every input gets past recognition and into the code tables and object data.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include "map/catalogue/map_styles.h"
#include "map/current_map.h"
#include "map/draw/draw_map.h"
#include "map/orv/orv_format.h"
#include "view/map_view.h"

namespace {

// The map styles, made once for the whole run: libFuzzer calls plain functions, so the run's
// one fixture is reached through this pointer.
struct Fixture {
  QGuiApplication* app;
  const orvel::MapStyles styles;
};
Fixture* fixture = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  auto* app = new QGuiApplication(*argc, *argv);
  fixture = new Fixture{app, {}};
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<uint8_t> bytes(data, data + size);
  if (bytes.size() >= orvel::kOrvMinSize) {
    std::memcpy(bytes.data(), "GORV", 4);
    const auto length = static_cast<uint32_t>(bytes.size());
    for (int i = 0; i < 4; ++i) {
      bytes[orvel::kOrvVersionAt + static_cast<size_t>(i)] = static_cast<uint8_t>(orvel::kOrvVersion >> (8 * i));
      bytes[orvel::kOrvFileSizeAt + static_cast<size_t>(i)] = static_cast<uint8_t>(length >> (8 * i));
    }
  }
  // Exactly the input's size, so that a read past the end is caught.
  std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size() + 1]);
  if (!bytes.empty()) std::memcpy(exact.get(), bytes.data(), bytes.size());
  const orvel::Bytes file(exact.get(), bytes.size());

  std::unique_ptr<orvel::MapFile> map = orvel::createMapFile(file);
  if (!map || !map->load(file)) return 0;
  orvel::MapView view;
  view.setScreenSize(96, 96);
  view.fitNewMap(map->bounds());
  QImage image(96, 96, QImage::Format_RGB32);
  orvel::MapDrawContext drawing(fixture->styles);
  for (uint32_t zoom : {0u, 8u, 16u, 26u}) {
    view.setZoomIndex(zoom);
    image.fill(Qt::white);
    QPainter painter(&image);
    orvel::drawMap(painter, *map, view, view.visibleRect(), drawing);
  }
  return 0;
}
