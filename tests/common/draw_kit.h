#pragma once
// What the viewer makes once at start-up for drawing, made by a test or its fixture. Only for
// tests that link the drawing code.
#include "core/settings.h"
#include "map/catalogue/map_styles.h"
#include "view/drawing_objects.h"

namespace orvel::test {

struct DrawKit {
  const Settings settings;  // never opened: every layer at its default
  const DrawingObjects drawing;
  const MapStyles styles;
};

}  // namespace orvel::test
