#pragma once
// Running a built program of ours (orvel-tool) from a test, the way a user runs it.
#include <filesystem>
#include <map>
#include <string>

namespace orvel::test {

struct ToolRun {
  int exitCode = -1;  // -1 when the program did not exit normally
  std::string out;
  std::string err;
};

// Runs `program args` through the shell (args are passed as written, quote paths yourself)
// with the offscreen platform, and collects its exit code, standard output and error.
ToolRun runProgram(const std::string& program, const std::string& args);

// The whole file as text; empty when it cannot be read.
std::string readText(const std::filesystem::path& path);

// The "key: value" lines of a text (orvel-tool info), by key.
std::map<std::string, std::string> keyValues(const std::string& text);

}  // namespace orvel::test
