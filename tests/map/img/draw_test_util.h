#pragma once
// Real IMG maps loaded for drawing tests, views on them, and what drawing is expected to
// visit and draw, counted from the decoded objects on their own.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <QImage>

#include "core/message.h"
#include "common/draw_kit.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "map/catalogue/catalogue.h"
#include "map/catalogue/map_styles.h"
#include "map/draw/draw_map.h"
#include "map/img/img_map_file.h"
#include "compose/view_composer.h"
#include "core/settings.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace orvel::test {


// The single-tile maps of the test data.
inline const char* const kSingleTileMaps[] = {
    "monaco_default_6bit.img", "monaco_default_6bit_xor5a.img", "monaco_cp1252.img",
    "monaco_unicode.img", "liechtenstein_route_cp1252_bs512.img",
};

struct LoadedMap {
  std::vector<unsigned char> bytes;  // exactly the file: reading past it is caught by ASan
  ImgMapFile map;
};

inline std::unique_ptr<LoadedMap> loadBytes(std::vector<unsigned char> bytes) {
  auto loaded = std::make_unique<LoadedMap>();
  loaded->bytes = std::move(bytes);
  loaded->bytes.shrink_to_fit();
  const Bytes view(loaded->bytes.data(), loaded->bytes.size());
  if (!loaded->map.probe(view) || !loaded->map.load(view)) return nullptr;
  return loaded;
}

inline std::unique_ptr<LoadedMap> loadMap(const std::string& name) {
  return loadBytes(readFile(dataFile("maps/" + name)));
}

// The view opening the map sets up, at the given size.
inline MapView openingView(const MapFile& map, int width = 240, int height = 320) {
  MapView view;
  view.setScreenSize(width, height);
  view.fitNewMap(map.bounds());
  return view;
}

inline MapView viewAt(double lat, double lon, uint32_t zoom, int width = 240, int height = 320,
                      int rotation = 0) {
  MapView view;
  view.setScreenSize(width, height);
  view.setZoomIndex(zoom);
  view.setCentre(degreesToMapUnits(float(lon)), degreesToMapUnits(float(lat)));
  view.setRotation(rotation);
  return view;
}

// The map picture as the map page composes it.
inline QImage compose(MapFile& map, const MapView& view) {
  ViewComposer composer(drawKit().settings, drawKit().drawing, drawKit().styles);
  composer.composeView(&map, view);
  return composer.picture();
}

inline int inkPixels(const QImage& image) {
  int ink = 0;
  for (int y = 0; y < image.height(); ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (int x = 0; x < image.width(); ++x) ink += (line[x] & 0xFFFFFF) != 0xFFFFFF;
  }
  return ink;
}

// Draws the map's view onto a recording device.
inline std::unique_ptr<RecordingDevice> record(MapFile& map, const MapView& view) {
  auto device = std::make_unique<RecordingDevice>(view.screenWidth(), view.screenHeight());
  QPainter painter(device.get());
  MapDrawContext drawing(mapStyles());
  drawMap(painter, map, view, view.visibleRect(), drawing);
  return device;
}

// What drawing must do with the decoded objects, from the objects alone: polygons of the
// drawn types with 3 points or more, lines of 2 points or more, whose box meets the view
// and spans 2 pixels; points inside the view (edges included).
class ExpectedDrawing final : public ObjectConsumer {
 public:
  ExpectedDrawing(const MapView& view, const MapRect& visible) : view_(view), visible_(visible) {}

  void onObject(const MapObject& o) override {
    ++visited[static_cast<int>(o.kind)];
    MapRect box;
    for (const MapPoint& p : o.points) {
      box.west = std::min(box.west, p.x);
      box.east = std::max(box.east, p.x);
      box.south = std::min(box.south, p.y);
      box.north = std::max(box.north, p.y);
    }
    const bool onScreen = intersects(box, visible_) && view_.isLargeEnough(box, 2);
    switch (o.kind) {
      case ObjectKind::Polygon:
        if (o.type != 0x01 && o.type != 0x02 && o.type != 0x4A && o.type != 0x4B && o.points.size() >= 3 &&
            onScreen) {
          ++polygons;
        }
        break;
      case ObjectKind::Line:
        if (o.points.size() >= 2 && onScreen) {
          ++polylines;
          if (mapStyles().lineSecondPen(findLineType(o.type)) != nullptr) ++polylines;
        }
        break;
      case ObjectKind::Point: {
        const MapPoint p = o.points.front();
        if (p.x >= visible_.west && p.x <= visible_.east && p.y >= visible_.south && p.y <= visible_.north &&
            mapStyles().pointIcon(findPointType(o.type)) != nullptr) {
          ++icons;
        }
        break;
      }
    }
  }

  int visited[3] = {0, 0, 0};  // by ObjectKind
  int polygons = 0;
  int polylines = 0;  // calls: one per line, two for lines with a second pen
  int icons = 0;

 private:
  const MapView& view_;
  MapRect visible_;
};

}  // namespace orvel::test
