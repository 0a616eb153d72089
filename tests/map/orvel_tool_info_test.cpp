// orvel-tool info and objects on the real maps, against the outputs kept beside them
// (X.img.info, views/NAME.objects; rewritten by scripts/regen-expected), and the tool's
// usage errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>

#include "common/test_data.h"
#include "common/tool_run.h"

namespace orvel {
namespace {

namespace fs = std::filesystem;

test::ToolRun runTool(const std::string& args, const fs::path& workDir = {}) {
  return test::runProgram(ORVEL_TOOL_PATH, args, workDir);
}

class MapInfo : public ::testing::TestWithParam<fs::path> {};

TEST_P(MapInfo, IsWhatItsInfoFileSays) {
  const fs::path& map = GetParam();
  ASSERT_FALSE(fs::is_directory(map)) << "no maps in " << map;
  const auto run = runTool("info '" + map.filename().string() + "'", map.parent_path());
  test::expectSameAsFile(test::expectedForm(run), map.string() + ".info");
}

INSTANTIATE_TEST_SUITE_P(Maps, MapInfo,
                         ::testing::ValuesIn(test::filesIn(test::dataDir() / "maps",
                                                           [](const std::string& name) { return name.ends_with(".img"); })),
                         [](const auto& info) { return test::testNameFor(info.param); });

// A view file's first line is "# objects MAP OPTIONS...", run in the maps folder.
class MapView : public ::testing::TestWithParam<fs::path> {};

TEST_P(MapView, ListsTheObjectsItsFileSays) {
  const fs::path& view = GetParam();
  ASSERT_FALSE(fs::is_directory(view)) << "no views in " << view;
  std::istringstream text(test::readText(view));
  std::string header;
  std::getline(text, header);
  ASSERT_TRUE(header.starts_with("# objects ")) << view << ": " << header;
  const auto run = runTool(header.substr(2), view.parent_path().parent_path());
  test::expectSameAsFile(header + "\n" + test::expectedForm(run), view);
}

INSTANTIATE_TEST_SUITE_P(Views, MapView,
                         ::testing::ValuesIn(test::filesIn(test::dataDir() / "maps" / "views",
                                                           [](const std::string& name) { return name.ends_with(".objects"); })),
                         [](const auto& info) { return test::testNameFor(info.param); });

TEST(OrvelTool, FailuresAndUsage) {
  const std::string map = "'" + test::dataFile("maps/monaco_cp1252.img").string() + "'";
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
      {"render " + map, 2, "orvel-tool render: missing -o OUT.png"},
      {"render -o /tmp/x.png", 2, "orvel-tool render: missing MAP"},
      {"render " + map + " -o /tmp/x.png --size 0x10", 2, "orvel-tool render: bad --size"},
      {"render " + map + " -o /tmp/x.png --zoom 27", 2, "orvel-tool render: bad --zoom"},
      {"render " + map + " -o /tmp/x.png --centre 95,7", 2, "orvel-tool render: bad --centre"},
      {"render " + map + " -o /tmp/x.png --rotation x", 2, "orvel-tool render: bad --rotation"},
      {"render " + map + " -o", 2, "orvel-tool render: -o needs a value"},
      {"render " + map + " -o /nonexistent/dir/x.png", 1, "orvel-tool render: cannot write"},
      {"objects " + map + " --rotation 30", 2, "orvel-tool objects: unknown option"},
      {"objects /nonexistent/map.img", 1, "Не удается открыть файл. (Ошибка 2.)"},
      {"decode --protocol x a.log", 2, "orvel-tool decode: unknown protocol 'x'"},
      {"decode /nonexistent/a.log", 1, "orvel-tool decode: /nonexistent/a.log: No such file"},
      {"--help", 0, ""},
      {"objects --help", 0, ""},
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
