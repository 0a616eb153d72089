// orvel-tool record [--protocol nmea|garmin|auto] CAPTURE -o OUT.mps (and OUT.gpx)
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "capture_source.h"
#include "commands.h"
#include "core/message.h"
#include "gps/capture_replay.h"
#include "gps/fix_processing.h"
#include "track/mps_writer.h"

namespace orvel::tool {
namespace {

// The track export writes into the data folder under a name of its own; the run is made in a
// private folder beside OUT and then moved to OUT.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::filesystem::path& besides) {
    std::string pattern = (besides / ".orvel-record-XXXXXX").string();
    if (::mkdtemp(pattern.data())) path_ = pattern;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace

int runRecord(std::span<const char* const> args) {
  ReplayOptions options;
  const char* capturePath = nullptr;
  const char* outPath = nullptr;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string_view arg = args[i];
    if (arg == "--protocol" || arg == "-o") {
      if (i + 1 >= args.size()) return usageError("record", std::string(arg) + " needs a value");
      if (arg == "-o") {
        outPath = args[++i];
      } else if (!parseReplayProtocol(args[++i], options.protocol)) {
        return usageError("record", "unknown protocol '" + std::string(args[i]) + "' (nmea, garmin or auto)");
      }
    } else if (arg.size() > 1 && arg[0] == '-') {
      return usageError("record", "unknown option '" + std::string(arg) + "' (try --help)");
    } else if (capturePath) {
      return usageError("record", "too many arguments (try --help)");
    } else {
      capturePath = args[i];
    }
  }
  if (!capturePath) return usageError("record", "missing CAPTURE (try --help)");
  if (!outPath) return usageError("record", "missing -o OUT.mps (try --help)");

  std::vector<uint8_t> capture;
  if (!readCapture("record", capturePath, capture)) return kExitFailed;

  const std::filesystem::path out = std::filesystem::absolute(outPath);
  ScratchFolder scratch(out.parent_path());
  if (scratch.path().empty()) {
    std::fprintf(stderr, "orvel-tool record: cannot write beside %s: %s\n", out.c_str(), std::strerror(errno));
    return kExitFailed;
  }
  Messages messages;  // to stderr
  TrackExport trackExport(scratch.path(), messages);

  GpsState state;
  FixProcessor fixes(state);
  size_t points = 0;
  FixObserver observer;
  observer.beginRecordedTrack = [&trackExport] { trackExport.beginRecordedTrack(); };
  observer.appendRecordedPoint = [&trackExport, &points](const GpsFix& fix) {
    trackExport.appendRecordedPoint(fix);
    ++points;
  };
  fixes.setFixObserver(std::move(observer));
  std::tm start{};
  start.tm_year = 100;
  start.tm_mday = 1;
  trackExport.openTrackFileAt(start);
  if (!trackExport.isTrackFileOpen()) return kExitFailed;  // the reason was shown
  const std::filesystem::path written = trackExport.trackFilePath();
  const ReplaySummary summary = replayCapture(capture, fixes, options);
  trackExport.closeTrackFile();

  // The run's GPX twin goes beside OUT under OUT's name.
  std::filesystem::path writtenGpx = written;
  writtenGpx.replace_extension(".gpx");
  std::filesystem::path outGpx = out;
  outGpx.replace_extension(".gpx");
  for (const auto& [from, to] : {std::pair{written, out}, std::pair{writtenGpx, outGpx}}) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    if (error) {
      std::fprintf(stderr, "orvel-tool record: cannot write %s: %s\n", to.c_str(), error.message().c_str());
      return kExitFailed;
    }
  }
  std::printf("%zu points written to %s and %s\n", points, out.c_str(), outGpx.c_str());
  if (summary.recognisedBy.empty()) {
    std::fprintf(stderr, "orvel-tool record: %s: no receiver data recognised\n", capturePath);
    return kExitFailed;
  }
  return kExitOk;
}

}  // namespace orvel::tool
