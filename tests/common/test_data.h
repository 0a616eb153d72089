#pragma once
// Where the tests find real maps and receiver captures that nobody here wrote.
#include <filesystem>
#include <string>
#include <vector>

namespace orvel::test {

// The shared data folder: $ORVEL_TEST_DATA if set, else the CMake variable ORVEL_TEST_DATA.
std::filesystem::path dataDir();

// dataDir() / relative, or an empty path (and a GoogleTest skip message) when it is missing.
std::filesystem::path dataFile(const std::string& relative);

// The whole file as bytes; empty when it cannot be read.
std::vector<unsigned char> readFile(const std::filesystem::path& path);

// A fresh empty folder below the system's temporary folder, removed at process exit.
std::filesystem::path scratchDir(const std::string& name);

}  // namespace orvel::test
