#pragma once
// What decode and record share: reading a receiver capture and the options of the replay,
// and the sink that prints what decode shows.
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gps/capture_replay.h"
#include "gps/fix_processing.h"

namespace orvel::tool {

// Parses "nmea", "garmin" or "auto".
bool parseReplayProtocol(std::string_view text, ReplayProtocol& out);

// Reads the capture at `path` into `bytes`. A serial device is refused ("serial devices:
// not yet"). On failure prints the reason for `command` to stderr and returns false.
bool readCapture(std::string_view command, const char* path, std::vector<uint8_t>& bytes);

// Prints the replay's events to stderr ("[12.340 s] searching NMEA-0183").
void printReplayEvent(uint64_t ms, ReplayEvent event, std::u16string_view protocol);

// What decode shows: every fix handed on, then passed to fix processing, and the satellites
// whenever a whole list that differs from the last one printed has arrived. Status texts go
// to `status` when it is set. Lines are flushed at once when `flush` is set.
class PrintingSink final : public GpsSink {
 public:
  explicit PrintingSink(bool flush, std::function<void(std::u16string_view text)> status = {});

  void updateFix(const GpsFix& fix) override;
  void fixLost() override { fixes_.fixLost(); }
  void setSatellites(std::span<const SatelliteInfo> satellites) override { fixes_.setSatellites(satellites); }
  void satellitesChanged() override { fixes_.satellitesChanged(); }
  void setStatusText(std::u16string_view text) override;

  size_t fixCount() const { return fixCount_; }

 private:
  void printSatellites();

  const bool flush_;
  const std::function<void(std::u16string_view text)> status_;
  GpsState state_;
  FixProcessor fixes_{state_};
  std::string lastSatellites_;
  size_t fixCount_ = 0;
};

}  // namespace orvel::tool
