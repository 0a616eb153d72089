// orvel: the moving-map viewer.
#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "app/app.h"
#include "app/quit_on_signal.h"

namespace {

constexpr const char* kUsage =
    "usage: orvel [--gps DEVICE | --gps gpsd://HOST[:PORT]]... [--demo] [MAP]\n"
    "\n"
    "The moving-map viewer. MAP is a Garmin .img map (one tile or a map set) or an .orv map.\n"
    "GPS receivers are looked for on the serial ports by themselves (NMEA-0183 at 4800 baud,\n"
    "Garmin binary at 9600 baud).\n"
    "\n"
    "  --gps DEVICE          also scan this serial device (USB, Bluetooth rfcomm, a pty)\n"
    "  --gps gpsd://HOST[:PORT]\n"
    "                        take fixes from a running gpsd (port 2947 by default)\n"
    "  --demo                open the bundled demo map when no MAP is given and, with no\n"
    "                        receiver found within five seconds, replay a recorded drive\n"
    "  --help                show this text\n"
    "\n"
    "Only one viewer runs at a time: a second start hands MAP to the running one and exits\n"
    "with status 255.\n";

}  // namespace

int main(int argc, char** argv) {
  // Answered before any window system is touched, so it works without a display.
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--help" || argument == "-h") {
      std::fputs(kUsage, stdout);
      return 0;
    }
  }
  QStringList arguments;
  for (int i = 1; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  if (const QString error = orvel::parseCommandLine(arguments).error; !error.isEmpty()) {
    std::fprintf(stderr, "orvel: %s\n", qPrintable(error));
    return orvel::kExitBadCommandLine;
  }
  const bool platformGiven = arguments.contains(QStringLiteral("-platform")) || std::getenv("QT_QPA_PLATFORM");
  if (!platformGiven && !std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
    std::fputs("orvel: no display is available (neither DISPLAY nor WAYLAND_DISPLAY is set); "
               "to draw a map into a picture use: orvel-tool render MAP -o OUT.png\n",
               stderr);
    return orvel::kExitNoWindow;
  }
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("orvel"));
  orvel::quitOnTerminationSignals();
  arguments = QApplication::arguments();
  arguments.removeFirst();
  return orvel::appMain(arguments);
}
