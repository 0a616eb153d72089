#pragma once
// A map format: the bytes of one file, read in place. Readers only decode: they hand objects
// to a consumer. Drawing (map/draw, the same for every format) is one such consumer, the
// command-line tool's object listing another.
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "view/map_view.h"
#include "geo/units.h"

namespace orvel {

using Bytes = std::span<const uint8_t>;

// Room for a label: 256 UTF-16 characters and a terminating zero.
inline constexpr size_t kLabelCapacity = 256;

enum class ObjectKind : uint8_t { Polygon, Line, Point };

// One decoded map object. `points` stays valid only during the consumer call.
struct MapObject {
  ObjectKind kind = ObjectKind::Point;
  uint32_t type = 0;                 // catalogue code (points: type << 8 | subtype)
  std::span<const MapPoint> points;  // map units
  uint32_t labelRef = 0;             // for MapFile::getLabel; 0 = no label
};

class ObjectConsumer {
 public:
  virtual ~ObjectConsumer() = default;
  virtual void onObject(const MapObject& object) = 0;
};

// Facts a map tells about itself, as "key: value" lines for `orvel-tool info`.
using MapFacts = std::vector<std::pair<std::string, std::string>>;

class MapFile {
 public:
  virtual ~MapFile() = default;

  // True if the bytes are this format. Cheap; reads only a header.
  virtual bool probe(Bytes file) = 0;
  // Builds the index. On failure loadError() says why, in words for the user.
  virtual bool load(Bytes file) = 0;
  // Hands every object that drawing this view would visit to the consumer, in drawing order.
  virtual void decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) = 0;
  // The format's own test of whether a decoded object is drawn at all (its types that are
  // never drawn, the fewest points of an area or a line). Culling against the view, sizes on
  // screen and labels are the same for every format and left to drawing.
  virtual bool isDrawn(const MapObject& object) const = 0;
  // Writes the label's text and a terminating zero into out[kLabelCapacity + 1]; returns its length.
  virtual int getLabel(uint32_t labelRef, char16_t* out) = 0;
  // Format-specific facts for `orvel-tool info` (format, bounds, levels, ...).
  virtual void describe(MapFacts& facts) const = 0;

  const MapRect& bounds() const { return bounds_; }
  const std::string& loadError() const { return loadError_; }

 protected:
  // Keeps the reason a load failed; returns false.
  bool fail(std::string reason) {
    loadError_ = std::move(reason);
    return false;
  }

  MapRect bounds_;  // west, south, east, north in map units; empty until load
  std::string loadError_;
};

}  // namespace orvel
