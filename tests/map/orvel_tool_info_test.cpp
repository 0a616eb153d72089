// orvel-tool info, run as a program.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "common/test_data.h"
#include "common/tool_run.h"

namespace orvel {
namespace {

test::ToolRun runTool(const std::string& args) { return test::runProgram(ORVEL_TOOL_PATH, args); }

TEST(OrvelToolInfo, PrintsTheMapAndTheViewAfterOpening) {
  const auto path = test::dataFile("maps/liechtenstein_route_cp1252_bs512.img");
  if (path.empty()) GTEST_SKIP();
  const test::ToolRun run = runTool("info '" + path.string() + "'");
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");
  const auto values = test::keyValues(run.out);
  EXPECT_EQ(values.at("format"), "img");
  EXPECT_EQ(values.at("tile"), "63240021");
  EXPECT_EQ(values.at("bounds_units"), "441384 2192584 449080 2203001");
  EXPECT_EQ(values.at("bounds_deg"), "9.471073 47.047749 9.636211 47.271273");
  EXPECT_EQ(values.at("block_size"), "512");
  EXPECT_EQ(values.at("levels"), "5 17i 18 20 22 24");
  EXPECT_EQ(values.at("subdivisions"), "65 (1 1 4 18 41)");
  EXPECT_EQ(values.at("label_coding"), "9");
  EXPECT_EQ(values.at("codepage"), "1252");
  EXPECT_EQ(values.at("zoom_index"), "2");
  EXPECT_EQ(values.at("centre_units"), "445232 2197792");
}

TEST(OrvelToolInfo, FailuresAndUsage) {
  struct Case {
    std::string args;
    int exitCode;
    std::string err;  // start of stderr
  };
  const Case cases[] = {
      {"info /nonexistent/map.img", 1, "Не удается открыть файл. (Ошибка 2.)\n"},
      {"info", 2, "orvel-tool info: missing MAP"},
      {"info a b", 2, "orvel-tool info: too many arguments"},
      {"frobnicate", 2, "orvel-tool: unknown command 'frobnicate'"},
      {"", 2, "orvel-tool: missing command"},
      {"--help", 0, ""},
      {"info --help", 0, ""},
  };
  for (const Case& c : cases) {
    const test::ToolRun run = runTool(c.args);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.args;
    EXPECT_EQ(run.err.substr(0, c.err.size()), c.err) << c.args;
    if (c.exitCode == 2) {
      EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << c.args;
    }
    if (c.exitCode == 0) {
      EXPECT_NE(run.out.find("usage: orvel-tool"), std::string::npos) << c.args;
    }
  }
}

}  // namespace
}  // namespace orvel
