#pragma once
// What the benchmarks share: where the real test data is, and a GUI application for drawing.
#include <filesystem>

namespace orvel::bench {

// $ORVEL_TEST_DATA if set, else the CMake variable ORVEL_TEST_DATA.
std::filesystem::path dataDir();

// A QGuiApplication (offscreen unless a platform is set), the shared drawing objects and the
// map styles, made once for the whole process.
void ensureGui();

}  // namespace orvel::bench
