// orvel-tool render and objects, run as a program and compared with the same work done in
// this process through openMapFile and the view composer.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <QImage>
#include <QPainter>

#include "core/message.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "common/tool_run.h"
#include "common/draw_kit.h"
#include "map/current_map.h"
#include "compose/view_composer.h"
#include "view/map_view.h"

namespace orvel {
namespace {

test::ToolRun runTool(const std::string& args) { return test::runProgram(ORVEL_TOOL_PATH, args); }

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

std::vector<std::vector<std::string>> tabLines(const std::string& text) {
  std::vector<std::vector<std::string>> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1) {
      fields.push_back(line.substr(start, tab - start));
    }
    fields.push_back(line.substr(start));
    lines.push_back(fields);
  }
  return lines;
}

// The screen as the tool should have written it: opened, composed and painted here.
QImage screenHere(const std::filesystem::path& map, int width, int height, int zoom, double lat, double lon,
                  int rotation) {
  Messages quiet([](const std::string&) {});
  CurrentMap opened(quiet);
  MapView view;
  view.setScreenSize(width, height);
  if (!opened.openMapFile(map, view)) return {};
  if (zoom >= 0) view.setZoomIndex(uint32_t(zoom));
  if (lat != 0 || lon != 0) view.setCentre(degreesToMapUnits(float(lon)), degreesToMapUnits(float(lat)));
  view.setRotation(rotation);
  const test::DrawKit& kit = test::drawKit();
  ViewComposer composer(kit.settings, kit.drawing, kit.styles);
  composer.composeView(opened.currentMap(), view);
  QImage screen(width, height, QImage::Format_RGB32);
  screen.fill(Qt::white);
  {
    QPainter painter(&screen);
    composer.paintView(painter, view);
  }
  return screen;
}

class RenderTool : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
};

TEST_F(RenderTool, WritesTheScreenTheViewerWouldShow) {
  const auto path = test::dataFile("maps/liechtenstein_route_cp1252_bs512.img");
  if (path.empty()) GTEST_SKIP();
  struct Case {
    std::string options;
    int width, height, zoom;
    double lat, lon;
    int rotation;
  };
  const Case cases[] = {
      {"", 240, 320, -1, 0, 0, 0},
      {"--size 800x480 --zoom 7 --centre 47.14,9.52", 800, 480, 7, 47.14, 9.52, 0},
      {"--zoom 9 --centre 47.14,9.52 --rotation 30", 240, 320, 9, 47.14, 9.52, 30},
  };
  for (const Case& c : cases) {
    const auto png = test::scratchDir("render-png") / "out.png";
    const test::ToolRun run = runTool("render " + quoted(path) + " -o " + quoted(png) + " " + c.options);
    ASSERT_EQ(run.exitCode, 0) << c.options << ": " << run.err;
    const QImage written(QString::fromStdString(png.string()));
    ASSERT_EQ(written.size(), QSize(c.width, c.height)) << c.options;
    const QImage here = screenHere(path, c.width, c.height, c.zoom, c.lat, c.lon, c.rotation);
    EXPECT_EQ(written.convertToFormat(QImage::Format_RGB32), here) << c.options;
  }
}

TEST_F(RenderTool, BenchPrintsMedianAndSlowest) {
  const auto path = test::dataFile("maps/monaco_cp1252.img");
  if (path.empty()) GTEST_SKIP();
  const test::ToolRun run = runTool("render " + quoted(path) + " --bench 5 --zoom 8 --centre 43.735,7.42");
  ASSERT_EQ(run.exitCode, 0) << run.err;
  std::map<std::string, double> values;
  std::istringstream in(run.out);
  for (std::string key; in >> key;) {
    double value = -1;
    in >> value;
    values[key] = value;
  }
  EXPECT_EQ(values["compositions:"], 5);
  EXPECT_GT(values["median_ms:"], 0);
  EXPECT_GE(values["slowest_ms:"], values["median_ms:"]);
}

// Counts of decoded objects by kind, as the viewer's decoding hands them over.
struct KindCounts : ObjectConsumer {
  int counts[3] = {0, 0, 0};
  void onObject(const MapObject& o) override { ++counts[int(o.kind)]; }
};

TEST_F(RenderTool, ObjectsListsWhatDrawingVisitsInDrawingOrder) {
  struct Case {
    const char* map;
    const char* options;
    int zoom;
    double lat, lon;
    std::vector<std::string> someLine;  // kind, type, name, -, -, label
  };
  const Case cases[] = {
      {"monaco_cp1252.img", "--zoom 8 --centre 43.735,7.42", 8, 43.735, 7.42,
       {"line", "0x06", "Residential street", "", "", "Avenue Albert II"}},
      {"monaco_default_6bit.img", "--zoom 8 --centre 43.735,7.42", 8, 43.735, 7.42,
       {"line", "0x06", "Residential street", "", "", "AVENUE ALBERT II"}},
      {"monaco_unicode.img", "--zoom 5 --centre 43.735,7.42 --size 800x480", 5, 43.735, 7.42,
       {"point", "0x2a00", "Dining", "1", "", ""}},
      {"liechtenstein_route_cp1252_bs512.img", "--zoom 8 --centre 47.14,9.52", 8, 47.14, 9.52,
       {"line", "0x18", "Stream", "", "", "Wäschgräbli"}},
  };
  for (const Case& c : cases) {
    const auto path = test::dataFile(std::string("maps/") + c.map);
    if (path.empty()) continue;
    const test::ToolRun run = runTool("objects " + quoted(path) + " " + c.options);
    ASSERT_EQ(run.exitCode, 0) << c.map << ": " << run.err;
    const auto lines = tabLines(run.out);

    int counts[3] = {0, 0, 0};
    int order = 0;
    bool found = false;
    for (const auto& f : lines) {
      ASSERT_EQ(f.size(), 6u) << c.map;
      const int kind = f[0] == "polygon" ? 0 : f[0] == "line" ? 1 : f[0] == "point" ? 2 : -1;
      ASSERT_GE(kind, 0) << f[0];
      ASSERT_GE(kind, order) << c.map << ": a " << f[0] << " after later kinds";
      order = kind;
      ++counts[kind];
      EXPECT_EQ(f[1].substr(0, 2), "0x");
      EXPECT_NE(f[4].find(' '), std::string::npos);
      bool match = true;
      for (size_t i = 0; i < 6; ++i) match &= c.someLine[i].empty() || c.someLine[i] == f[i];
      found |= match;
    }
    EXPECT_TRUE(found) << c.map << ": no " << c.someLine[0] << " " << c.someLine[2] << " " << c.someLine[5];

    Messages quiet([](const std::string&) {});
    CurrentMap map(quiet);
    MapView view;
    ASSERT_TRUE(map.openMapFile(path, view));
    view.setZoomIndex(uint32_t(c.zoom));
    view.setCentre(degreesToMapUnits(float(c.lon)), degreesToMapUnits(float(c.lat)));
    if (std::string(c.options).find("800x480") != std::string::npos) view.setScreenSize(800, 480);
    KindCounts decoded;
    map.currentMap()->decode(view, view.visibleRect(), decoded);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(counts[k], decoded.counts[k]) << c.map << " kind " << k;
    EXPECT_GT(counts[0] + counts[1] + counts[2], 0) << c.map;
  }
}

// The Monaco maps' background area is the map's bounding box (west, south first), as the TRE
// headers give it; the opening view lies in the sea off Monaco, where only that area and
// the borders are.
TEST_F(RenderTool, ObjectsOfTheOpeningViewOfMonaco) {
  for (const char* name : {"monaco_cp1252.img", "monaco_default_6bit.img", "monaco_unicode.img"}) {
    const auto path = test::dataFile(std::string("maps/") + name);
    if (path.empty()) continue;
    const test::ToolRun run = runTool("objects " + quoted(path));
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto lines = tabLines(run.out);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0], (std::vector<std::string>{"polygon", "0x4b", "Background", "4", "344072 2028007", ""}))
        << name;
    for (size_t i = 1; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i][0], "line") << name;
      EXPECT_NE(lines[i][2].find("border"), std::string::npos) << name;
    }
  }
}

TEST_F(RenderTool, FailuresAndUsage) {
  const auto path = test::dataFile("maps/monaco_cp1252.img");
  if (path.empty()) GTEST_SKIP();
  const std::string map = quoted(path);
  struct Case {
    std::string args;
    int exitCode;
    std::string err;  // start of stderr
  };
  const Case cases[] = {
      {"render " + map, 2, "orvel-tool render: missing -o OUT.png"},
      {"render -o /tmp/x.png", 2, "orvel-tool render: missing MAP"},
      {"render " + map + " -o /tmp/x.png --size 0x10", 2, "orvel-tool render: bad --size"},
      {"render " + map + " -o /tmp/x.png --zoom 27", 2, "orvel-tool render: bad --zoom"},
      {"render " + map + " -o /tmp/x.png --centre 95,7", 2, "orvel-tool render: bad --centre"},
      {"render " + map + " -o /tmp/x.png --rotation x", 2, "orvel-tool render: bad --rotation"},
      {"render " + map + " -o /tmp/x.png --frobnicate", 2, "orvel-tool render: unknown option"},
      {"render " + map + " -o", 2, "orvel-tool render: -o needs a value"},
      {"render /nonexistent/map.img -o /tmp/x.png", 1, "Не удается открыть файл. (Ошибка 2.)"},
      {"render " + map + " -o /nonexistent/dir/x.png", 1, "orvel-tool render: cannot write"},
      {"objects " + map + " --rotation 30", 2, "orvel-tool objects: unknown option"},
      {"objects " + map + " -o /tmp/x.png", 2, "orvel-tool objects: unknown option"},
      {"objects", 2, "orvel-tool objects: missing MAP"},
      {"objects /nonexistent/map.img", 1, "Не удается открыть файл. (Ошибка 2.)"},
      {"render --help", 0, ""},
      {"objects --help", 0, ""},
  };
  for (const Case& c : cases) {
    const test::ToolRun run = runTool(c.args);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.args;
    EXPECT_EQ(run.err.substr(0, c.err.size()), c.err) << c.args << "\n" << run.err;
    if (c.exitCode == 0) {
      EXPECT_NE(run.out.find("usage: orvel-tool"), std::string::npos) << c.args;
    }
  }
}

}  // namespace
}  // namespace orvel
