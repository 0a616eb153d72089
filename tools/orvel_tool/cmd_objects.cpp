// orvel-tool objects MAP [--zoom N] [--centre LAT,LON] [--size WxH]
#include <cstdio>
#include <string>

#include "core/utf.h"
#include "commands.h"
#include "core/message.h"
#include "map/current_map.h"
#include "map/catalogue/catalogue.h"
#include "map/format/map_file.h"
#include "view/map_view.h"
#include "view_options.h"

namespace orvel::tool {
namespace {

// Prints each object as a tab-separated line: kind, type, name, points, first point, label.
class ObjectPrinter final : public ObjectConsumer {
 public:
  explicit ObjectPrinter(MapFile& map) : map_(map) {}

  void onObject(const MapObject& object) override {
    const char* kind = "point";
    const TypeStyle* row = nullptr;
    switch (object.kind) {
      case ObjectKind::Polygon:
        kind = "polygon";
        row = findPolygonType(object.type);
        break;
      case ObjectKind::Line:
        kind = "line";
        row = findLineType(object.type);
        break;
      case ObjectKind::Point:
        row = findPointType(object.type);
        break;
    }
    const MapPoint first = object.points.empty() ? MapPoint{} : object.points.front();
    std::printf("%s\t0x%0*x\t%s\t%zu\t%d %d\t%s\n", kind, object.kind == ObjectKind::Point ? 4 : 2, object.type,
                typeName(row), object.points.size(), first.x, first.y, label(object.labelRef).c_str());
  }

 private:
  // UTF-8, with tabs and line breaks as blanks so that a line stays one object.
  std::string label(uint32_t labelRef) {
    if (labelRef == 0) return {};
    const int length = map_.getLabel(labelRef, text_);
    std::string bytes = utf16ToUtf8(std::u16string_view(text_, length > 0 ? static_cast<size_t>(length) : 0));
    for (char& c : bytes) {
      if (c == '\t' || c == '\n' || c == '\r') c = ' ';
    }
    return bytes;
  }

  MapFile& map_;
  char16_t text_[kLabelCapacity + 1];
};

}  // namespace

int runObjects(std::span<const char* const> args) {
  ViewOptions options;
  if (const int code = parseViewOptions("objects", args, OptionSet{}, options); code != kExitOk) return code;

  Messages messages;  // to stderr
  CurrentMap map(messages);
  MapView view;
  if (!openMapView(options, view, map)) return kExitFailed;
  ObjectPrinter printer(*map.currentMap());
  map.currentMap()->decode(view, view.visibleRect(), printer);
  return kExitOk;
}

}  // namespace orvel::tool
