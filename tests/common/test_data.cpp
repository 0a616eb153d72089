#include "common/test_data.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace orvel::test {

std::filesystem::path dataDir() {
  if (const char* env = std::getenv("ORVEL_TEST_DATA"); env && *env) return env;
  return ORVEL_TEST_DATA_DEFAULT;
}

std::filesystem::path dataFile(const std::string& relative) {
  auto path = dataDir() / relative;
  if (!std::ifstream(path, std::ios::binary) || std::filesystem::is_directory(path)) {
    ADD_FAILURE() << "cannot read the test data file " << path;
  }
  return path;
}

std::vector<unsigned char> readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) ADD_FAILURE() << "cannot read " << path;
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string readText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeText(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::filesystem::path scratchRoot() {
  return std::filesystem::temp_directory_path() / ("orvel-test-" + std::to_string(::getpid()));
}

std::filesystem::path scratchDir(const std::string& name) {
  auto dir = scratchRoot() / name;
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
  std::filesystem::create_directories(dir);
  return dir;
}

}  // namespace orvel::test
