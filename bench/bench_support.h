#pragma once
// What the benchmarks share: where the real test data is, and what drawing needs: a GUI
// application, the shared drawing objects, the map styles, and the map shown.
#include <filesystem>

#include "core/message.h"
#include "core/settings.h"
#include "map/catalogue/map_styles.h"
#include "map/current_map.h"
#include "view/drawing_objects.h"

class QGuiApplication;

namespace orvel::bench {

// $ORVEL_TEST_DATA if set, else the CMake variable ORVEL_TEST_DATA.
std::filesystem::path dataDir();

// Made the first time a benchmark asks, for the whole run of the benchmark program.
struct Kit {
  Kit();
  ~Kit();
  int argc = 1;
  char name[12] = "orvel-bench";
  char* argv[2] = {name, nullptr};
  QGuiApplication* app;  // first made, last gone
  const DrawingObjects drawing;
  const MapStyles styles;
  const Settings settings;  // never opened: every setting at its default
  Messages messages{[](const std::string&) {}};  // benchmarks say nothing
  CurrentMap map{messages};
};
Kit& kit();

}  // namespace orvel::bench
