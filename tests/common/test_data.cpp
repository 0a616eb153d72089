#include "common/test_data.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace orvel::test {

std::filesystem::path dataDir() {
  if (const char* env = std::getenv("ORVEL_TEST_DATA"); env && *env) return env;
  return ORVEL_TEST_DATA_DEFAULT;
}

std::filesystem::path dataFile(const std::string& relative) {
  auto path = dataDir() / relative;
  return std::filesystem::exists(path) ? path : std::filesystem::path{};
}

std::vector<unsigned char> readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

namespace {
struct ScratchRoot {
  std::filesystem::path path;
  ScratchRoot() {
    path = std::filesystem::temp_directory_path() / ("orvel-test-" + std::to_string(::getpid()));
    std::filesystem::create_directories(path);
  }
  ~ScratchRoot() {
    std::error_code ec;
    std::filesystem::remove_all(path, ec);
  }
};
}  // namespace

std::filesystem::path scratchDir(const std::string& name) {
  static ScratchRoot root;
  auto dir = root.path / name;
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
  std::filesystem::create_directories(dir);
  return dir;
}

}  // namespace orvel::test
