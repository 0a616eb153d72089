#include "view/map_view.h"

#include <cmath>

#include "geo/trig.h"

namespace orvel {
namespace {

// Screen arithmetic is 32-bit and wraps for points far off-screen at fine zoom steps; callers
// only draw what meets visibleRect(). Done on unsigned values so the wrap is well defined.
int32_t wrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
int32_t wrapSub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
int32_t wrapMul(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}
int32_t wrapAbs(int32_t a) { return a < 0 ? wrapSub(0, a) : a; }

// round(v) = floor(v + 0.5), the half added in double precision.
int32_t roundToInt(float v) {
  return floorToInt(static_cast<float>(static_cast<double>(v) + 0.5));
}

// Cosine of the latitude y (map units) times 255. 2^-23 turns map units into radians over pi.
int32_t latitudeScale(int32_t y) {
  const float radians = static_cast<float>(y) * kPi * 1.1920929e-7f;
  return roundToInt(tableCos(radians) * 255.0f);
}

int32_t clampLatitude(int32_t y) {
  if (y > kMaxCentreLatitude) return kMaxCentreLatitude;
  if (y < -kMaxCentreLatitude) return -kMaxCentreLatitude;
  return y;
}

}  // namespace

MapView::MapView() {
  setZoomIndex(0);
  setRotation(0);
  setCentre(0, 0);
}

void MapView::setZoomIndex(uint32_t index) {
  if (index >= static_cast<uint32_t>(kZoomSteps)) index = kZoomSteps - 1;
  zoomIndex_ = index;
  unitsDen_ = zoomTable()[index].unitsDen;
  unitsNum_ = zoomTable()[index].unitsNum;
}

std::u16string_view MapView::zoomLabel() const { return zoomTable()[zoomIndex_].label; }

int32_t MapView::zoomLevel() const { return zoomTable()[zoomIndex_].level; }

int32_t MapView::setRotation(int32_t degrees) {
  rotation_ = degrees;
  const float r = static_cast<float>(degrees) * kPi * 0.0055555557f;
  cosRot_ = roundToInt(tableCos(r) * 1024.0f);
  sinRot_ = roundToInt(tableSin(r) * 1024.0f);
  return sinRot_;
}

int32_t MapView::setCentre(int32_t x, int32_t y) {
  centre_.x = x;
  centre_.y = clampLatitude(y);
  latScale_ = latitudeScale(centre_.y);
  return latScale_;
}

int32_t MapView::pan(int32_t dx, int32_t dy) {
  const int32_t across = wrapSub(wrapMul(cosRot_, dx), wrapMul(sinRot_, dy)) / 1024;
  const int32_t along = wrapSub(wrapMul(cosRot_, wrapSub(0, dy)), wrapMul(sinRot_, dx)) / 1024;
  centre_.x = wrapSub(centre_.x, mulDiv(across, unitsNum_ * 255, latScale_ * unitsDen_));
  centre_.y = clampLatitude(wrapSub(centre_.y, mulDiv(along, unitsNum_, unitsDen_)));
  latScale_ = latitudeScale(centre_.y);
  return latScale_;
}

void MapView::setScreenSize(int32_t width, int32_t height) {
  screenWidth_ = width;
  screenHeight_ = height;
}

MapPoint MapView::mapToScreen(MapPoint map) const {
  const int32_t dx = mulDiv(wrapSub(map.x, centre_.x), latScale_ * unitsDen_, unitsNum_ * 255);
  const int32_t dy = mulDiv(wrapSub(map.y, centre_.y), unitsDen_, unitsNum_);
  return {wrapAdd(wrapSub(wrapMul(cosRot_, dx), wrapMul(sinRot_, dy)) / 1024, screenWidth_ / 2),
          wrapSub(screenHeight_ / 2, wrapAdd(wrapMul(cosRot_, dy), wrapMul(sinRot_, dx)) / 1024)};
}

// The difference is formed in sixteenths of a map unit, which keeps the sub-unit precision of
// recorded tracks at the finest zoom steps.
MapPoint MapView::semicirclesToScreen(MapPoint fine) const {
  const int32_t dx = mulDiv(wrapSub(fine.x / 16, wrapMul(centre_.x, 16)), latScale_ * unitsDen_,
                            unitsNum_ * 4080);
  const int32_t dy = mulDiv(wrapSub(fine.y / 16, wrapMul(centre_.y, 16)), unitsDen_, unitsNum_ * 16);
  return {wrapAdd(wrapSub(wrapMul(cosRot_, dx), wrapMul(sinRot_, dy)) / 1024, screenWidth_ / 2),
          wrapSub(screenHeight_ / 2, wrapAdd(wrapMul(cosRot_, dy), wrapMul(sinRot_, dx)) / 1024)};
}

MapPoint MapView::screenToMap(int32_t sx, int32_t sy) const {
  const int32_t a = wrapSub(sx, screenWidth_ / 2);
  const int32_t b = wrapSub(screenHeight_ / 2, sy);
  const int32_t across = wrapAdd(wrapMul(sinRot_, b), wrapMul(cosRot_, a)) / 1024;
  const int32_t along = wrapSub(wrapMul(cosRot_, b), wrapMul(sinRot_, a)) / 1024;
  return {wrapAdd(centre_.x, mulDiv(across, unitsNum_ * 255, latScale_ * unitsDen_)),
          wrapAdd(centre_.y, mulDiv(along, unitsNum_, unitsDen_))};
}

// The bounding box of the turned screen.
MapRect MapView::visibleRect() const {
  const int32_t wPixels =
      wrapAdd(wrapAbs(wrapMul(sinRot_, screenHeight_)), wrapAbs(wrapMul(cosRot_, screenWidth_))) / 1024;
  const int32_t hPixels =
      wrapAdd(wrapAbs(wrapMul(screenHeight_, cosRot_)), wrapAbs(wrapMul(sinRot_, screenWidth_))) / 1024;
  const int32_t w = mulDiv(wPixels, unitsNum_ * 255, latScale_ * unitsDen_);
  const int32_t h = mulDiv(hPixels, unitsNum_, unitsDen_);
  MapRect r;
  r.west = wrapSub(centre_.x, w / 2);
  r.east = wrapAdd(centre_.x, w / 2);
  r.south = wrapSub(centre_.y, h / 2);
  r.north = wrapAdd(centre_.y, h / 2);
  return r;
}

bool MapView::isLargeEnough(const MapRect& r, int32_t minPixels) const {
  // Extents in 64 bits so that an empty or inverted box counts as nothing rather than wrapping.
  const auto extent = [](int32_t lo, int32_t hi) {
    const int64_t e = static_cast<int64_t>(hi) - lo;
    return static_cast<int32_t>(e < 0 ? 0 : (e > INT32_MAX ? INT32_MAX : e));
  };
  if (mulDiv(extent(r.west, r.east), latScale_ * unitsDen_, unitsNum_ * 255) >= minPixels) return true;
  return mulDiv(extent(r.south, r.north), unitsDen_, unitsNum_) >= minPixels;
}

void MapView::fitNewMap(const MapRect& bounds) {
  // 320 pixels is the height of the portrait screen: q is map units per pixel when the whole
  // map fills it. Each zoom step is about 2^(1/3) coarser than the one before.
  const int64_t span = bounds.north > bounds.south
                           ? static_cast<int64_t>(bounds.north) - bounds.south
                           : 0;
  const int64_t q = span / 320;
  if (q == 0) {
    // A map under 320 units tall is smaller than one screen at every step (the logarithm
    // would be minus infinity): show it as large as possible.
    setZoomIndex(0);
  } else {
    const double steps = 3.0 * std::log(static_cast<double>(q)) / std::log(2.0) - 13.0 + 0.5;
    // A negative result wraps through the unsigned index to the coarsest step.
    setZoomIndex(static_cast<uint32_t>(floorToInt(static_cast<float>(steps))));
  }

  const bool inside = centre_.x >= bounds.west && centre_.x <= bounds.east &&
                      centre_.y >= bounds.south && centre_.y <= bounds.north;
  if (!inside) {
    // 64-bit sums cannot overflow; truncating toward zero matches plain 32-bit halving for
    // every real map.
    const auto middle = [](int32_t lo, int32_t hi) {
      return static_cast<int32_t>((static_cast<int64_t>(lo) + hi) / 2);
    };
    setCentre(middle(bounds.west, bounds.east), middle(bounds.south, bounds.north));
  }
}


}  // namespace orvel
