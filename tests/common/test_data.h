#pragma once
// Where the tests find real maps and receiver captures that nobody here wrote.
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orvel::test {

// The data folder: $ORVEL_TEST_DATA if set, else the CMake variable ORVEL_TEST_DATA
// (tests/data of the checkout).
std::filesystem::path dataDir();

// dataDir() / relative. A file that is missing or cannot be read fails the calling test,
// naming its path.
std::filesystem::path dataFile(const std::string& relative);

// The whole file as bytes. A file that cannot be read fails the calling test, naming its path.
std::vector<unsigned char> readFile(const std::filesystem::path& path);

// The whole file as text; empty if there is none.
std::string readText(const std::filesystem::path& path);
// Replaces the file by `bytes`.
void writeText(const std::filesystem::path& path, std::string_view bytes);

// This test program's scratch folder below the system's temporary folder, made fresh by
// scratchDir and removed when the tests end (runTests).
std::filesystem::path scratchRoot();
// A fresh empty folder `name` in the scratch folder.
std::filesystem::path scratchDir(const std::string& name);

}  // namespace orvel::test
