// orvel-tool decode on a live serial device.
#include <signal.h>
#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "core/utf.h"
#include "capture_source.h"
#include "commands.h"
#include "decode_live.h"
#include "gps/garmin_protocol.h"
#include "gps/nmea_protocol.h"
#include "gps/port_reader.h"
#include "gps/serial_port.h"

namespace orvel::tool {
namespace {

volatile sig_atomic_t interrupted = 0;

void onInterrupt(int) { interrupted = 1; }

}  // namespace

bool isCharacterDevice(const char* path) {
  struct stat info {};
  return ::stat(path, &info) == 0 && S_ISCHR(info.st_mode);
}

bool parseSecondsOption(std::span<const char* const> args, size_t& i, double& seconds) {
  if (i + 1 >= args.size()) {
    usageError("decode", "--seconds needs a number");
    return false;
  }
  char* end = nullptr;
  const double value = std::strtod(args[++i], &end);
  if (!end || *end != '\0' || !(value > 0) || value > 1e7) {
    usageError("decode", "bad --seconds '" + std::string(args[i]) + "'");
    return false;
  }
  seconds = value;
  return true;
}

int runDecodeLive(const char* device, const LiveDecodeOptions& options) {
  SerialPort port;
  if (!port.open(device)) {
    std::fprintf(stderr, "orvel-tool decode: %s: cannot open it as a serial port (missing, busy or no terminal)\n",
                 device);
    return kExitFailed;
  }

  const auto started = std::chrono::steady_clock::now();
  std::function<void(std::u16string_view)> status;
  if (options.verbose) {
    status = [started](std::u16string_view text) {
      const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - started);
      std::fprintf(stderr, "[%lld.%03lld s] %s\n", static_cast<long long>(ms.count() / 1000),
                   static_cast<long long>(ms.count() % 1000), utf16ToUtf8(text).c_str());
    };
  }
  PrintingSink sink(true, status);
  NmeaProtocol nmea({}, sink);
  nmea.setHandOverEachSentence(options.eachSentence);
  GarminProtocol garmin({}, sink);
  std::vector<GpsProtocol*> protocols;
  if (options.protocol != ReplayProtocol::kGarmin) protocols.push_back(&nmea);
  if (options.protocol != ReplayProtocol::kNmea) protocols.push_back(&garmin);

  std::atomic<bool> recognised{false};
  ScanIndicator indicator;
  indicator.connected = [&recognised] { recognised = true; };

  // The reader wakes every 20 ms; a watcher turns an interrupt or the time limit into its
  // stop event (a signal handler may not touch the event itself).
  ScanSignals signals;
  interrupted = 0;
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  struct sigaction oldInt {}, oldTerm {};
  ::sigaction(SIGINT, &action, &oldInt);
  ::sigaction(SIGTERM, &action, &oldTerm);
  std::atomic<bool> done{false};
  std::thread watcher([&] {
    while (!done) {
      const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
      if (interrupted || (options.seconds > 0 && elapsed >= options.seconds)) {
        signals.setStop();
        return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(kPollMs));
    }
  });

  readPort(device, port, utf8ToUtf16(device).value_or(u"?"), protocols, signals, sink, indicator);

  done = true;
  watcher.join();
  ::sigaction(SIGINT, &oldInt, nullptr);
  ::sigaction(SIGTERM, &oldTerm, nullptr);
  port.close();
  std::fflush(stdout);
  if (!recognised) {
    std::fprintf(stderr, "orvel-tool decode: %s: no receiver data recognised\n", device);
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace orvel::tool
