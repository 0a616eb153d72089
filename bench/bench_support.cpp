#include "bench_support.h"

#include <cstdlib>

#include <QGuiApplication>

namespace orvel::bench {
namespace {

QGuiApplication* makeApplication(int& argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  return new QGuiApplication(argc, argv);
}

}  // namespace

std::filesystem::path dataDir() {
  if (const char* env = std::getenv("ORVEL_TEST_DATA"); env && *env) return env;
  return ORVEL_TEST_DATA_DEFAULT;
}

Kit::Kit() : app(makeApplication(argc, argv)) {}

Kit::~Kit() { map.closeMapFile(); }

Kit& kit() {
  static Kit made;  // the benchmark program's one owner of what its benchmarks draw with
  return made;
}

}  // namespace orvel::bench
