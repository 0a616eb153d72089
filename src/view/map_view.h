#pragma once
// The zoom table and the one map view: centre, zoom step, rotation, screen size, and the
// integer projection of map points to screen pixels and back.
#include <array>
#include <cstdint>
#include <string_view>

#include "geo/units.h"

namespace orvel {

struct ZoomEntry {
  std::u16string_view label;  // the scale bar's text for 40 pixels, e.g. u"1.2 км"
  int32_t level = 0;           // map detail, in bits per coordinate, drawn at this step
  int32_t unitsDen = 0;
  int32_t unitsNum = 0;        // map units (of latitude) per pixel = unitsNum / unitsDen
};

inline constexpr int kZoomSteps = 27;
inline constexpr int32_t kMaxCentreLatitude = 3728270;  // 80 degrees in map units

// Built once, before anything else uses it.
const std::array<ZoomEntry, kZoomSteps>& zoomTable();

class MapView {
 public:
  MapView();

  // Out-of-range indexes (27 and above, and negatives through the unsigned test) give 26.
  void setZoomIndex(uint32_t index);
  uint32_t zoomIndex() const { return zoomIndex_; }
  std::u16string_view zoomLabel() const;
  int32_t zoomLevel() const;

  int32_t setRotation(int32_t degrees);  // returns sinRot
  int32_t rotation() const { return rotation_; }
  int32_t cosRot() const { return cosRot_; }
  int32_t sinRot() const { return sinRot_; }

  int32_t setCentre(int32_t x, int32_t y);  // returns latScale
  MapPoint centre() const { return centre_; }
  int32_t latScale() const { return latScale_; }
  int32_t pan(int32_t dx, int32_t dy);  // picture moves dx right, dy down; returns latScale

  void setScreenSize(int32_t width, int32_t height);
  int32_t screenWidth() const { return screenWidth_; }
  int32_t screenHeight() const { return screenHeight_; }
  int32_t unitsNum() const { return unitsNum_; }
  int32_t unitsDen() const { return unitsDen_; }

  MapPoint mapToScreen(MapPoint map) const;
  MapPoint semicirclesToScreen(MapPoint fine) const;
  MapPoint screenToMap(int32_t sx, int32_t sy) const;
  MapRect visibleRect() const;
  bool isLargeEnough(const MapRect& r, int32_t minPixels) const;

  // Zoom and centre for a newly opened map with these bounds: the zoom from the map's height,
  // and the centre moved to the middle of the map unless it already lies inside it.
  void fitNewMap(const MapRect& bounds);

 private:
  uint32_t zoomIndex_ = 0;
  int32_t cosRot_ = 1024;
  int32_t sinRot_ = 0;
  int32_t rotation_ = 0;
  MapPoint centre_;
  int32_t latScale_ = 255;
  int32_t unitsNum_ = 0;
  int32_t unitsDen_ = 1;
  int32_t screenWidth_ = 240;
  int32_t screenHeight_ = 320;
};

}  // namespace orvel
