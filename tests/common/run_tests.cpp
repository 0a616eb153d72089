#include <gtest/gtest.h>
#include <signal.h>

#include <QApplication>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "common/test_data.h"
#include "common/test_main.h"

namespace orvel::test {
namespace {

// Scratch folders of test programs that no longer run: a killed one never removes its own.
void removeAbandonedScratch() {
  const std::string prefix = "orvel-test-";
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::temp_directory_path(), ec)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind(prefix, 0) != 0) continue;
    const std::string pid = name.substr(prefix.size());
    if (pid.empty() || pid.size() > 9 || pid.find_first_not_of("0123456789") != std::string::npos) continue;
    if (::kill(static_cast<pid_t>(std::atol(pid.c_str())), 0) == 0 || errno != ESRCH) continue;
    std::filesystem::remove_all(entry.path(), ec);
  }
}

struct ScratchFolder {
  ScratchFolder() = default;
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ec;
    std::filesystem::remove_all(scratchRoot(), ec);
  }
};

}  // namespace

int runTests(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  removeAbandonedScratch();
  const ScratchFolder scratch;
  QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}

}  // namespace orvel::test
