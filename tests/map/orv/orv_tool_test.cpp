// orvel-tool mkorv, info and render on .orv maps, run as a program.
#include <gtest/gtest.h>


#include <fstream>
#include <string>

#include "common/test_data.h"
#include "common/tool_run.h"
#include "map/orv/orv_map_file.h"

namespace orvel {
namespace {

test::ToolRun runTool(const std::string& args) { return test::runProgram(ORVEL_TOOL_PATH, args); }

TEST(OrvTool, ConvertsQuietlyThenInfoAndRenderTakeTheOrvMapAsTheImg) {
  const auto img = test::dataFile("maps/monaco_unicode.img");
  const auto orv = test::scratchDir("orv_tool_out") / "monaco.orv";
  const test::ToolRun made = runTool("mkorv '" + img.string() + "' -o '" + orv.string() + "'");
  ASSERT_EQ(made.exitCode, 0) << made.err;
  EXPECT_EQ(made.out, "");
  EXPECT_EQ(made.err, "");
  const auto bytes = test::readFile(orv);
  OrvMapFile probe;
  EXPECT_TRUE(probe.probe(bytes));

  const auto fromImg = test::keyValues(runTool("info '" + img.string() + "'").out);
  const test::ToolRun info = runTool("info '" + orv.string() + "'");
  ASSERT_EQ(info.exitCode, 0) << info.err;
  const auto fromOrv = test::keyValues(info.out);
  EXPECT_EQ(fromOrv.at("format"), "orv");
  for (const char* key : {"bounds_units", "bounds_deg", "zoom_index", "centre_units"}) {
    EXPECT_EQ(fromOrv.at(key), fromImg.at(key)) << key;
  }
  EXPECT_EQ(fromOrv.at("levels"), "4 18 20 22 24");  // the inherited level is not drawn
  EXPECT_EQ(fromOrv.at("blocks"), "33 (1 3 10 19)");

  const auto dir = test::scratchDir("orv_tool_png");
  for (const std::string zoom : {"4", "16"}) {  // a detailed level and the coarsest
    const std::string view = " --size 200x200 --zoom " + zoom + " --centre 43.7384,7.4246 -o ";
    ASSERT_EQ(runTool("render '" + orv.string() + "'" + view + "'" + (dir / "orv.png").string() + "'").exitCode, 0);
    ASSERT_EQ(runTool("render '" + img.string() + "'" + view + "'" + (dir / "img.png").string() + "'").exitCode, 0);
    EXPECT_EQ(test::readText(dir / "orv.png"), test::readText(dir / "img.png")) << "zoom " << zoom;
  }
}

TEST(OrvTool, LevelsOptionKeepsTheLevelsAskedFor) {
  const auto img = test::dataFile("maps/monaco_default_6bit.img");
  const auto orv = test::scratchDir("orv_tool_levels") / "two.orv";
  ASSERT_EQ(runTool("mkorv '" + img.string() + "' --levels 20,24 -o '" + orv.string() + "'").exitCode, 0);
  EXPECT_EQ(test::keyValues(runTool("info '" + orv.string() + "'").out).at("levels"), "2 20 24");
}

TEST(OrvTool, RefusesBadInputAndLeavesNoFile) {
  const auto dir = test::scratchDir("orv_tool_bad");
  std::ofstream(dir / "junk.img") << "not a map";
  const test::ToolRun run = runTool("mkorv '" + (dir / "junk.img").string() + "' -o '" + (dir / "out.orv").string() + "'");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(dir / "out.orv"));
  EXPECT_EQ(runTool("mkorv x.img").exitCode, 2);
  EXPECT_EQ(runTool("mkorv x.img -o y.orv --levels 30").exitCode, 2);
  // One .orv holds one map: a map set is refused.
  const auto set = test::dataFile("maps/monaco_tiles_gmapsupp.img");
  EXPECT_EQ(runTool("mkorv '" + set.string() + "' -o '" + (dir / "set.orv").string() + "'").exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(dir / "set.orv"));
}

}  // namespace
}  // namespace orvel
