#include "common/tool_run.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "common/test_data.h"

namespace orvel::test {

ToolRun runProgram(const std::string& program, const std::string& args, const std::filesystem::path& workDir) {
  const auto dir = scratchDir("tool-run");
  const auto out = dir / "out.txt";
  const auto err = dir / "err.txt";
  const std::string cd = workDir.empty() ? "" : "cd '" + workDir.string() + "' && ";
  const std::string command = cd + "QT_QPA_PLATFORM=offscreen '" + program + "' " + args + " >'" + out.string() +
                              "' 2>'" + err.string() + "'";
  const int status = std::system(command.c_str());
  ToolRun run;
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.out = readText(out);
  run.err = readText(err);
  return run;
}

std::map<std::string, std::string> keyValues(const std::string& text) {
  std::map<std::string, std::string> values;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const size_t colon = line.find(": ");
    if (colon != std::string::npos) values[line.substr(0, colon)] = line.substr(colon + 2);
  }
  return values;
}

std::string expectedForm(const ToolRun& run) {
  std::string text = run.out;
  std::istringstream err(run.err);
  for (std::string line; std::getline(err, line);) text += "# " + line + "\n";
  if (run.exitCode != 0) text += "# exit " + std::to_string(run.exitCode) + "\n";
  return text;
}

void expectSameAsFile(const std::string& actual, const std::filesystem::path& expected) {
  if (!std::ifstream(expected)) {
    ADD_FAILURE() << "no expected output " << expected << " (scripts/regen-expected writes it)";
    return;
  }
  const std::string want = readText(expected);
  if (actual == want) return;
  std::istringstream a(actual), w(want);
  std::string gotLine, wantLine;
  int line = 1;
  for (;; ++line) {
    const bool moreGot = static_cast<bool>(std::getline(a, gotLine));
    const bool moreWant = static_cast<bool>(std::getline(w, wantLine));
    if (!moreGot) gotLine = "(end)";
    if (!moreWant) wantLine = "(end)";
    if (gotLine != wantLine || !moreGot || !moreWant) break;
  }
  ADD_FAILURE() << expected.string() << ":" << line << " differs\n  expected: " << wantLine << "\n  got:      "
                << gotLine << "\nIf the change is meant, run scripts/regen-expected and read the diff.";
}

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder,
                                           const std::function<bool(const std::string& name)>& wanted) {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.is_regular_file() && wanted(entry.path().filename().string())) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  if (files.empty()) files.push_back(folder);
  return files;
}

std::string testNameFor(const std::filesystem::path& file) {
  std::string name = file.filename().string();
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

}  // namespace orvel::test
