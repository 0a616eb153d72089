#pragma once
// What the viewer makes once at start-up for drawing, made once for a test program (and never
// changed), after the GUI application it needs. Only for tests that link the drawing code.
#include "common/recording_device.h"
#include "core/settings.h"
#include "map/catalogue/map_styles.h"
#include "view/drawing_objects.h"

namespace orvel::test {

struct DrawKit {
  const Settings settings;  // never opened: every layer at its default
  const DrawingObjects drawing;
  const MapStyles styles;
};

inline const DrawKit& drawKit() {
  ensureGuiApplication();
  static const DrawKit* const kit = new DrawKit;  // lives as long as the application
  return *kit;
}

inline const MapStyles& mapStyles() { return drawKit().styles; }

}  // namespace orvel::test
