#include "common/tool_run.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "common/test_data.h"

namespace orvel::test {
std::string readText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

ToolRun runProgram(const std::string& program, const std::string& args) {
  const auto dir = scratchDir("tool-run");
  const auto out = dir / "out.txt";
  const auto err = dir / "err.txt";
  const std::string command = "QT_QPA_PLATFORM=offscreen '" + program + "' " + args + " >'" + out.string() +
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

}  // namespace orvel::test
