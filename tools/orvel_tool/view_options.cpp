#include "view_options.h"

#include <cstdio>

#include "map/current_map.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>

#include <QGuiApplication>

#include "commands.h"
#include "map/format/map_file.h"
#include "geo/units.h"

namespace orvel::tool {
namespace {

constexpr int kMaxScreenSide = 8192;

bool parseInt(std::string_view text, int& out) {
  const char* end = text.data() + text.size();
  const auto [ptr, ec] = std::from_chars(text.data(), end, out);
  return ec == std::errc() && ptr == end;
}

bool parseDouble(std::string_view text, double& out) {
  // from_chars for doubles, without locale surprises.
  const char* end = text.data() + text.size();
  const auto [ptr, ec] = std::from_chars(text.data(), end, out);
  return ec == std::errc() && ptr == end && std::isfinite(out);
}

bool parseSize(std::string_view text, int& width, int& height) {
  const size_t x = text.find('x');
  return x != std::string_view::npos && parseInt(text.substr(0, x), width) && parseInt(text.substr(x + 1), height) &&
         width > 0 && height > 0 && width <= kMaxScreenSide && height <= kMaxScreenSide;
}

bool parseCentre(std::string_view text, MapPoint& out) {
  const size_t comma = text.find(',');
  double lat = 0;
  double lon = 0;
  if (comma == std::string_view::npos || !parseDouble(text.substr(0, comma), lat) ||
      !parseDouble(text.substr(comma + 1), lon) || std::fabs(lat) > 90.0 || std::fabs(lon) > 180.0) {
    return false;
  }
  out = MapPoint{degreesToMapUnits(static_cast<float>(lon)), degreesToMapUnits(static_cast<float>(lat))};
  return true;
}

}  // namespace

int parseViewOptions(std::string_view command, std::span<const char* const> args, OptionSet allowed,
                     ViewOptions& out) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    const bool takesValue = arg == "-o" || arg == "--size" || arg == "--zoom" || arg == "--centre" ||
                            arg == "--rotation" || arg == "--bench" || arg == "--gpx";
    if (!takesValue) {
      if (arg.size() > 1 && arg[0] == '-') return usageError(command, "unknown option '" + std::string(arg) + "'");
      if (out.map != nullptr) return usageError(command, "too many arguments (try --help)");
      out.map = args[i];
      continue;
    }
    if (i + 1 >= args.size()) return usageError(command, std::string(arg) + " needs a value");
    const std::string_view value = args[++i];
    int number = 0;
    if (arg == "-o" && allowed.output) {
      out.output = args[i];
    } else if (arg == "--size") {
      if (!parseSize(value, out.width, out.height)) return usageError(command, "bad --size (WxH, e.g. 240x320)");
    } else if (arg == "--zoom") {
      if (!parseInt(value, number) || number < 0 || number >= kZoomSteps) {
        return usageError(command, "bad --zoom (0 to 26)");
      }
      out.zoom = static_cast<uint32_t>(number);
    } else if (arg == "--centre") {
      MapPoint centre;
      if (!parseCentre(value, centre)) return usageError(command, "bad --centre (LAT,LON in degrees)");
      out.centre = centre;
    } else if (arg == "--rotation" && allowed.rotation) {
      if (!parseInt(value, number) || number < -360 || number > 360) {
        return usageError(command, "bad --rotation (-360 to 360 degrees)");
      }
      out.rotation = number;
    } else if (arg == "--gpx" && allowed.gpx) {
      out.gpx = args[i];
    } else if (arg == "--bench" && allowed.bench) {
      if (!parseInt(value, number) || number < 1) return usageError(command, "bad --bench (a count from 1)");
      out.bench = number;
    } else {
      return usageError(command, "unknown option '" + std::string(arg) + "'");
    }
  }
  if (out.map == nullptr && out.gpx == nullptr) return usageError(command, "missing MAP (try --help)");
  return kExitOk;
}

bool openMapView(const ViewOptions& options, MapView& view, CurrentMap& map) {
  view.setScreenSize(options.width, options.height);
  if (!map.openMapFile(options.map, view)) return false;  // the message went to stderr
  if (options.zoom) view.setZoomIndex(*options.zoom);
  if (options.centre) view.setCentre(options.centre->x, options.centre->y);
  view.setRotation(options.rotation);
  return true;
}

namespace {

// Qt's messages as Qt prints them, less the offscreen platform's note that it made up a
// runtime folder, which says nothing to the user.
void quietHandler(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type == QtWarningMsg && message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))) return;
  std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
}

}  // namespace

GuiApplication::GuiApplication() {
  qInstallMessageHandler(quietHandler);
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
      qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  app_ = std::make_unique<QGuiApplication>(argc_, argv_);
}

GuiApplication::~GuiApplication() {
  app_.reset();
  qInstallMessageHandler(nullptr);
}

}  // namespace orvel::tool
