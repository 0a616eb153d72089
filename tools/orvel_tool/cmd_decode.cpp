// orvel-tool decode [--protocol nmea|garmin|auto] [--each-line] [--verbose] SOURCE
#include <cstdio>
#include <string>
#include <vector>

#include "core/utf.h"
#include "capture_source.h"
#include "commands.h"
#include "decode_live.h"
#include "gps/capture_replay.h"

namespace orvel::tool {

int runDecode(std::span<const char* const> args) {
  ReplayOptions options;
  bool verbose = false;
  double seconds = 0;  // a live device only
  const char* source = nullptr;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "--protocol") {
      if (i + 1 >= args.size()) return usageError("decode", "--protocol needs nmea, garmin or auto");
      if (!parseReplayProtocol(args[++i], options.protocol)) {
        return usageError("decode", "unknown protocol '" + std::string(args[i]) + "' (nmea, garmin or auto)");
      }
    } else if (arg == "--each-line") {
      options.eachSentence = true;
    } else if (arg == "--verbose") {
      verbose = true;
    } else if (arg == "--seconds") {
      if (!parseSecondsOption(args, i, seconds)) return kExitUsage;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return usageError("decode", "unknown option '" + std::string(arg) + "' (try --help)");
    } else if (source) {
      return usageError("decode", "too many arguments (try --help)");
    } else {
      source = args[i];
    }
  }
  if (!source) return usageError("decode", "missing SOURCE (try --help)");
  if (isCharacterDevice(source)) {
    return runDecodeLive(source, LiveDecodeOptions{options.protocol, options.eachSentence, verbose, seconds});
  }

  std::vector<uint8_t> capture;
  if (!readCapture("decode", source, capture)) return kExitFailed;

  PrintingSink sink(false);
  if (verbose) options.onEvent = printReplayEvent;
  const ReplaySummary summary = replayCapture(capture, sink, options);
  std::fflush(stdout);

  if (verbose) {
    std::fprintf(stderr, "%zu fixes, %d attempts, %llu s simulated\n", sink.fixCount(), summary.attempts,
                 static_cast<unsigned long long>(summary.simulatedMs / 1000));
  }
  if (summary.recognisedBy.empty()) {
    std::fprintf(stderr, "orvel-tool decode: %s: no receiver data recognised\n", source);
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace orvel::tool
