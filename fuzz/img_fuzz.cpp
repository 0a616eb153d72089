// libFuzzer target: arbitrary bytes opened as a map file and drawn at a few zoom steps, as
// the map page would compose them. Finds reads outside the bytes (AddressSanitizer), undefined
// arithmetic (UndefinedBehaviorSanitizer) and crashes in loading, decoding and drawing.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include <QGuiApplication>

#include "compose/view_composer.h"
#include "core/settings.h"
#include "map/catalogue/map_styles.h"
#include "map/current_map.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace {

// What drawing needs, made once for the whole run: libFuzzer calls plain functions, so the
// run's one fixture is reached through this pointer.
struct Fixture {
  QGuiApplication* app;
  const orvel::DrawingObjects drawing;
  const orvel::MapStyles styles;
  const orvel::Settings settings;
};
Fixture* fixture = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  auto* app = new QGuiApplication(*argc, *argv);
  fixture = new Fixture{app, {}, {}, {}};
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const orvel::Bytes bytes(data, size);
  std::unique_ptr<orvel::MapFile> map = orvel::createMapFile(bytes);
  if (!map || !map->load(bytes)) return 0;

  orvel::MapView view;
  view.setScreenSize(240, 320);
  view.fitNewMap(map->bounds());
  const uint32_t opening = view.zoomIndex();
  orvel::ViewComposer composer(fixture->settings, fixture->drawing, fixture->styles);
  for (uint32_t zoom : {opening, 4u, 9u, 14u, 20u}) {
    view.setZoomIndex(zoom);
    view.setRotation(zoom == 9u ? 30 : 0);
    composer.composeView(map.get(), view);
  }
  return 0;
}
