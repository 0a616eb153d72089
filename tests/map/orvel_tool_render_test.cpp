// orvel-tool render, run as a program and compared with the same view opened and composed
// in this process.
#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace orvel
