#include "bench_support.h"

#include <cstdlib>

#include <QGuiApplication>

#include "map/catalogue/map_styles.h"
#include "view/drawing_objects.h"

namespace orvel::bench {

std::filesystem::path dataDir() {
  if (const char* env = std::getenv("ORVEL_TEST_DATA"); env && *env) return env;
  return ORVEL_TEST_DATA_DEFAULT;
}

void ensureGui() {
  if (QGuiApplication::instance() != nullptr) return;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  static int argc = 1;
  static char name[] = "orvel-bench";
  static char* argv[] = {name, nullptr};
  static QGuiApplication* app = new QGuiApplication(argc, argv);  // lives as long as the process
  (void)app;
  createDrawingObjects();
  createMapStyles();
}

}  // namespace orvel::bench
