// The real map set (a product subfile, three tiles and a sort subfile in one container):
// tiles indexed when first in view, drawing order across tiles, and the same streets as the
// single-tile map of the same area.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "draw_test_util.h"
#include "map/img/img_map_file.h"
#include "map/img/rgn_decoder.h"
#include "view/map_view.h"

namespace orvel {
namespace {

constexpr const char* kSetFile = "monaco_tiles_gmapsupp.img";
constexpr const char* kOneTileFile = "monaco_default_6bit.img";

class ImgMapSet : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
};

TEST_F(ImgMapSet, TileIndexIsBuiltWhenTheTileIsFirstInView) {
  auto set = test::loadMap(kSetFile);
  ASSERT_TRUE(set);
  ImgMapFile& map = set->map;
  for (const ImgTile& tile : map.tiles()) EXPECT_TRUE(tile.subdivisions().empty());

  // Inside tile 63243003 only, away from its edges.
  const MapView view = test::viewAt(43.7345, 7.4150, 2, 240, 320);
  std::vector<uint32_t> meeting;
  map.tilesMeeting(view.visibleRect(), meeting);
  ASSERT_EQ(meeting, std::vector<uint32_t>{2});
  test::ExpectedDrawing sink(view, view.visibleRect());
  map.decode(view, view.visibleRect(), sink);
  EXPECT_GT(sink.visited[static_cast<int>(ObjectKind::Line)], 0);
  EXPECT_TRUE(map.tiles()[0].subdivisions().empty());
  EXPECT_TRUE(map.tiles()[1].subdivisions().empty());
  EXPECT_EQ(map.tiles()[2].subdivisions().size(), 21u);
}

// Kinds in the order handed over, the tile tileSlots seen, and labels that do not resolve.
class OrderRecorder final : public ObjectConsumer {
 public:
  explicit OrderRecorder(MapFile& map) : map_(map) {}
  void onObject(const MapObject& object) override {
    kinds.push_back(object.kind);
    if (object.labelRef == 0) return;
    tileSlots.insert(object.labelRef >> kImgTileSlotShift);
    char16_t text[kLabelCapacity + 1];
    if (map_.getLabel(object.labelRef, text) == 0) ++unresolved;
  }
  std::vector<ObjectKind> kinds;
  std::set<uint32_t> tileSlots;
  int unresolved = 0;

 private:
  MapFile& map_;
};

TEST_F(ImgMapSet, AllPolygonsOfAllTilesComeBeforeAnyLineAndAllLinesBeforeAnyPoint) {
  auto set = test::loadMap(kSetFile);
  ASSERT_TRUE(set);
  ImgMapFile& map = set->map;
  const MapView views[] = {test::openingView(map, 800, 480), test::viewAt(43.7384, 7.4246, 4, 800, 480),
                           test::viewAt(43.7384, 7.4246, 10, 800, 480)};
  for (size_t i = 0; i < std::size(views); ++i) {
    const MapView& view = views[i];
    SCOPED_TRACE(view.zoomIndex());
    OrderRecorder order(map);
    map.decode(view, view.visibleRect(), order);
    if (i > 0) {  // the views at the centre of Monaco show where two tiles meet
      EXPECT_GE(order.tileSlots.size(), 2u) << "the view takes objects from two tiles";
    }
    EXPECT_TRUE(std::is_sorted(order.kinds.begin(), order.kinds.end()));
    EXPECT_EQ(order.unresolved, 0);
  }
}

bool isRoad(uint32_t type) { return (type >= 0x01 && type <= 0x0C) || type == 0x16; }

// Names of the roads that come near the middle of the view.
class RoadNames final : public ObjectConsumer {
 public:
  RoadNames(MapFile& map, const MapRect& middle) : map_(map), middle_(middle) {}
  void onObject(const MapObject& object) override {
    if (object.kind != ObjectKind::Line || !isRoad(object.type) || object.labelRef == 0) return;
    if (!intersects(pointBounds(object.points), middle_)) return;
    char16_t text[kLabelCapacity + 1];
    const int length = map_.getLabel(object.labelRef, text);
    if (length > 0) names.emplace(text, static_cast<size_t>(length));
  }
  std::set<std::u16string> names;

 private:
  MapFile& map_;
  MapRect middle_;
};

struct Place {
  const char* what;
  double lat;
  double lon;
};

const Place kPlaces[] = {
    {"centre of Monaco, where two tiles meet", 43.7384, 7.4246},
    {"southern tile", 43.7235, 7.4200},
    {"north-eastern tile", 43.7460, 7.4350},
    {"north-western tile", 43.7320, 7.4180},
};

TEST_F(ImgMapSet, ShowsTheStreetsTheSingleTileMapShows) {
  auto set = test::loadMap(kSetFile);
  auto single = test::loadMap(kOneTileFile);
  ASSERT_TRUE(set && single);
  for (const Place& place : kPlaces) {
    for (uint32_t zoom : {3u, 5u, 8u}) {
      SCOPED_TRACE(std::string(place.what) + " zoom " + std::to_string(zoom));
      const MapView view = test::viewAt(place.lat, place.lon, zoom, 800, 480);
      const MapRect visible = view.visibleRect();
      // The middle half of the view: roads reaching into it are in view on both maps.
      const int32_t w = (visible.east - visible.west) / 4;
      const int32_t h = (visible.north - visible.south) / 4;
      const MapRect middle{visible.west + w, visible.south + h, visible.east - w, visible.north - h};
      RoadNames fromSet(set->map, middle);
      RoadNames fromSingle(single->map, middle);
      set->map.decode(view, visible, fromSet);
      single->map.decode(view, visible, fromSingle);
      std::vector<std::u16string> onlySet;
      std::vector<std::u16string> onlySingle;
      std::set_difference(fromSet.names.begin(), fromSet.names.end(), fromSingle.names.begin(),
                          fromSingle.names.end(), std::back_inserter(onlySet));
      std::set_difference(fromSingle.names.begin(), fromSingle.names.end(), fromSet.names.begin(),
                          fromSet.names.end(), std::back_inserter(onlySingle));
      EXPECT_FALSE(fromSingle.names.empty());
      // The compilers split roads differently at tile edges; a name or two may differ.
      EXPECT_LE(onlySet.size() + onlySingle.size(), fromSingle.names.size() / 10 + 1)
          << onlySet.size() << " only in the set, " << onlySingle.size() << " only in the single tile, of "
          << fromSingle.names.size();
    }
  }
}

}  // namespace
}  // namespace orvel
