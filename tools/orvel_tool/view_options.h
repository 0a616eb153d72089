#pragma once
// What render and objects share: the view options of the command line, opening the map as
// the viewer does and setting the view up from the options, and the GUI application that
// drawing needs.
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "view/map_view.h"

class QGuiApplication;

namespace orvel {
class CurrentMap;
}  // namespace orvel

namespace orvel::tool {

struct ViewOptions {
  const char* map = nullptr;     // MAP
  const char* output = nullptr;  // -o OUT.png
  const char* gpx = nullptr;     // --gpx FILE
  int width = 240;
  int height = 320;
  std::optional<uint32_t> zoom;    // --zoom N (0..26)
  std::optional<MapPoint> centre;  // --centre LAT,LON, in map units
  int rotation = 0;                // --rotation DEG
  int bench = 0;                   // --bench N
};

// Which options a command takes besides MAP, --size, --zoom and --centre.
struct OptionSet {
  bool output = false;
  bool rotation = false;
  bool bench = false;
  bool gpx = false;  // --gpx FILE, which may stand in for MAP
};

// Parses the arguments after the command's name. On a bad command line prints the reason
// for `command` and returns kExitUsage; kExitOk otherwise.
int parseViewOptions(std::string_view command, std::span<const char* const> args, OptionSet allowed,
                     ViewOptions& out);

// Opens the map into `map` as the viewer does (the view's zoom and centre chosen by opening),
// then applies the options. False (the reason on stderr) when the map cannot be opened.
bool openMapView(const ViewOptions& options, MapView& view, CurrentMap& map);

// The GUI application for painting, on the offscreen platform when there is no display.
class GuiApplication {
 public:
  GuiApplication();
  ~GuiApplication();
  GuiApplication(const GuiApplication&) = delete;
  GuiApplication& operator=(const GuiApplication&) = delete;

 private:
  int argc_ = 1;
  char name_[11] = "orvel-tool";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> app_;
};

}  // namespace orvel::tool
