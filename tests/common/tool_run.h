#pragma once
// Running a built program of ours (orvel-tool) from a test, the way a user runs it, and
// comparing what it prints with the outputs kept beside the real test data.
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "common/test_data.h"

namespace orvel::test {

struct ToolRun {
  int exitCode = -1;  // -1 when the program did not exit normally
  std::string out;
  std::string err;
};

// Runs `program args` through the shell (quote paths yourself) with the offscreen platform,
// in `workDir` when one is given.
ToolRun runProgram(const std::string& program, const std::string& args, const std::filesystem::path& workDir = {});


// The "key: value" lines of a text (orvel-tool info), by key.
std::map<std::string, std::string> keyValues(const std::string& text);

// A run as the expected-output files keep it (and scripts/regen-expected writes it):
// standard output as it is, each line of standard error behind "# ", then "# exit N" when
// the exit code N is not 0.
std::string expectedForm(const ToolRun& run);

// Fails the calling test unless `actual` is the text of the file `expected`, naming the
// file, the first line that differs, and how to rewrite the file when the change is meant.
void expectSameAsFile(const std::string& actual, const std::filesystem::path& expected);

// The regular files directly in `folder` whose names `wanted` accepts, sorted; with none, the
// folder itself, so that the test looping over them fails naming it.
std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder,
                                           const std::function<bool(const std::string& name)>& wanted);

// A test name for a file: its name with every character but letters and digits as '_'.
std::string testNameFor(const std::filesystem::path& file);

}  // namespace orvel::test
