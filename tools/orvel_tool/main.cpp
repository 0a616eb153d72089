// orvel-tool: the map readers and the view without a window, one subcommand at a time.
#include <array>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "commands.h"

namespace orvel::tool {
namespace {

constexpr std::array kCommands{
    Command{"info", "open a map or a GPX file as the viewer does and print what it holds",
            "usage: orvel-tool info MAP\n"
            "       orvel-tool info FILE.gpx\n"
            "\n"
            "Opens MAP exactly as the viewer does, with the view centred at 0,0, and prints\n"
            "the map's facts then the view's zoom_index and centre_units, one \"key: value\"\n"
            "a line. Exit code 1 if the map cannot be opened (the reason goes to stderr).\n"
            "\n"
            "A GPX file (named .gpx, or beginning as XML) is read as \"Открыть трек...\" reads\n"
            "it, and what was read is printed: tracks, segments (those holding points),\n"
            "track_points, routes, route_points, waypoints and bounds_deg (south west north\n"
            "east, or none). Exit code 1 if it is not a whole GPX file.\n",
            runInfo},
    Command{"waypoints", "list the waypoints of a Waypoints.bin in file order",
            "usage: orvel-tool waypoints FILE\n"
            "\n"
            "Prints one line per waypoint of FILE (a Waypoints.bin) in file order, the fields\n"
            "separated by tabs: name, latitude and longitude in degrees, altitude in metres,\n"
            "time as ISO 8601 UTC (\"-\" when unknown) and comment. Exit code 1 if FILE cannot\n"
            "be read or is damaged (the whole waypoints before the damage are still printed).\n",
            runWaypoints},
    Command{"decode", "decode a receiver capture as the viewer would and print every fix",
            "usage: orvel-tool decode [--protocol nmea|garmin|auto] [--each-line] [--verbose]\n"
            "                         [--seconds N] SOURCE\n"
            "\n"
            "Runs the receiver protocols and fix processing over the capture file SOURCE as a\n"
            "port scanner would, on a simulated clock: the bytes arrive at the line's baud rate\n"
            "(4800 for NMEA, 9600 for Garmin), are read every 20 ms, at most 1024 at a time, and\n"
            "each burst (one time of day) is followed by a second of silence. A Garmin receiver\n"
            "behind the capture acknowledges every command. auto (the default) tries NMEA, then\n"
            "Garmin, in turn. Prints one line per fix handed on, \"key=value\" fields: time\n"
            "(ISO 8601 UTC), lat, lon, alt, speed (km/h), course, hdop, vdop, sats, fix, each\n"
            "when valid, and flags in hex; and \"sats: prn/elev/azim/snr ...\" whenever the\n"
            "satellites in view change. --each-line hands the NMEA fix on after every sentence.\n"
            "--verbose tells the scanner's steps on stderr. When SOURCE is a serial device (or a\n"
            "pseudo-terminal) it is read live as the viewer reads it, with each protocol's line\n"
            "settings, until interrupted or for --seconds N. Exit code 1 when no protocol\n"
            "recognised the data or SOURCE cannot be read.\n",
            runDecode},
    Command{"record", "decode a receiver capture into a MapSource track file",
            "usage: orvel-tool record [--protocol nmea|garmin|auto] CAPTURE -o OUT.mps\n"
            "\n"
            "Decodes CAPTURE as decode does and records the track as the viewer would, a new\n"
            "track after every break in the fixes, into OUT.mps, and the same run as GPX into\n"
            "OUT.gpx beside it (one track, a segment for every track of OUT.mps). Prints how\n"
            "many points were written. Exit code 1 when no protocol recognised the data or a\n"
            "file fails.\n",
            runRecord},
    Command{"gpx", "convert a MapSource track, the Tracks.bin trail or a Waypoints.bin to GPX",
            "usage: orvel-tool gpx IN -o OUT.gpx\n"
            "\n"
            "Writes IN as a GPX 1.1 file, OUT.gpx. IN is told by its contents:\n"
            "  a MapSource .mps file: one track for each of its tracks, named as it is (records\n"
            "    of other kinds are left out, and how many is said on stderr);\n"
            "  a Tracks.bin trail: one track named \"Tracks.bin\", oldest point first, a new\n"
            "    segment at each break, as the viewer draws it;\n"
            "  a Waypoints.bin: one waypoint for each, in file order, with its name, time,\n"
            "    elevation (its altitude when not 0) and its comment as the description.\n"
            "OUT.gpx is written whole or not at all. Exit code 1, with a one-line reason on\n"
            "stderr and OUT.gpx untouched, when IN cannot be read, is damaged or is none of\n"
            "these.\n",
            runGpx},
    Command{"render", "compose a map view as the viewer would and write it as a PNG",
            "usage: orvel-tool render MAP -o OUT.png [--gpx FILE] [--size WxH] [--zoom N]\n"
            "                         [--centre LAT,LON] [--rotation DEG] [--bench N]\n"
            "       orvel-tool render --gpx FILE -o OUT.png [view options]\n"
            "\n"
            "Opens MAP as the viewer does and composes the view exactly as the map page would,\n"
            "then writes the screen (the map with the scale bar and the north arrow) to OUT.png.\n"
            "--gpx draws FILE over the map as \"Открыть трек...\" shows it and, unless --centre\n"
            "is given, centres the view on the whole file at the finest zoom step that shows\n"
            "it all (or at --zoom); without MAP only the file is drawn, on white.\n"
            "The view is 240x320 pixels at the zoom step and centre that opening the map chose,\n"
            "unless --size, --zoom (0 to 26), --centre (degrees of latitude and longitude) or\n"
            "--rotation (whole degrees) say otherwise. --bench N composes the view N times more\n"
            "and prints the median and the slowest composition time in milliseconds (-o may\n"
            "then be left out). Without a display the offscreen platform is used. Exit code 1\n"
            "if the map or the GPX file cannot be opened or OUT.png cannot be written.\n",
            runRender},
    Command{"objects", "list the objects drawing a map view would visit, in drawing order",
            "usage: orvel-tool objects MAP [--zoom N] [--centre LAT,LON] [--size WxH]\n"
            "\n"
            "Opens MAP as the viewer does and prints every object that composing the view would\n"
            "visit after choosing the map level and the subdivisions that meet the view, in\n"
            "drawing order, one per line, the fields separated by tabs: kind (polygon, line,\n"
            "point), type code in hex, catalogue name, number of points, the first point in map\n"
            "units (x y) and the label text (empty when none). The view options are those of\n"
            "render. Exit code 1 if the map cannot be opened.\n",
            runObjects},
    Command{"mkorv", "convert an IMG map into the viewer's own .orv format",
            "usage: orvel-tool mkorv IN.img -o OUT.orv [--levels BITS[,BITS...]] [--verbose]\n"
            "\n"
            "Writes the first map tile of IN.img as an .orv map: each IMG level that is drawn\n"
            "(inherited levels are not) becomes a level of the same resolution, coarsest\n"
            "first, and each of its subdivisions that holds objects a block with its areas,\n"
            "lines and points in the IMG drawing order. Coordinates keep the level's\n"
            "resolution. Labels lose their control characters and are cut at 255 characters;\n"
            "a label used by more than one object is stored once in the shared label area,\n"
            "the others inline. Labels of ASCII characters only are coded with label set A,\n"
            "the others with set B. Every code table is a Huffman code of the map's own\n"
            "symbol counts, at most 24 bits long.\n"
            "\n"
            "--levels keeps only the IMG levels of these resolutions (bits per coordinate,\n"
            "e.g. --levels 18,22,24). --verbose tells the steps on stderr.\n"
            "\n"
            "The viewer's own point types 0xF001-0xF106 have no source in IMG maps and are\n"
            "never produced here. A writer that has them stores them like any other point:\n"
            "the 16-bit code (e.g. 0xF001) is the symbol of the point type table.\n"
            "\n"
            "Exit code 1 if IN.img cannot be read or the map does not fit the format (the\n"
            "reason goes to stderr); OUT.orv is then left as it was.\n",
            runMkorv},
};

void printHelp(std::FILE* out) {
  std::fprintf(out, "usage: orvel-tool COMMAND [ARGS...]\n       orvel-tool COMMAND --help\n\ncommands:\n");
  for (const Command& command : kCommands) {
    std::fprintf(out, "  %-10.*s %.*s\n", static_cast<int>(command.name.size()), command.name.data(),
                 static_cast<int>(command.summary.size()), command.summary.data());
  }
}

}  // namespace

int usageError(std::string_view command, std::string_view reason) {
  std::fprintf(stderr, "orvel-tool%s%.*s: %.*s\n", command.empty() ? "" : " ", static_cast<int>(command.size()),
               command.data(), static_cast<int>(reason.size()), reason.data());
  return kExitUsage;
}

}  // namespace orvel::tool

int main(int argc, char** argv) {
  using namespace orvel::tool;
  const std::span<const char* const> args(argv, static_cast<size_t>(argc));
  if (args.size() < 2) return usageError("", "missing command (try --help)");
  const std::string_view name = args[1];
  if (name == "--help" || name == "-h" || name == "help") {
    printHelp(stdout);
    return kExitOk;
  }
  for (const Command& command : kCommands) {
    if (command.name != name) continue;
    const auto rest = args.subspan(2);
    for (const char* arg : rest) {
      if (std::string_view(arg) == "--help") {
        std::fwrite(command.usage.data(), 1, command.usage.size(), stdout);
        return kExitOk;
      }
    }
    return command.run(rest);
  }
  return usageError("", "unknown command '" + std::string(name) + "' (try --help)");
}
