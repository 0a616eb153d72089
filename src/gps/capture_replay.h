#pragma once
// Replays a recorded receiver capture through the receiver protocols as a scanning thread
// would run them on a port, on a simulated clock: the bytes arrive as the line's baud rate
// delivers them (10 bits a byte), every 20 ms the waiting bytes are read (at most 1024 at a
// time), and a second of silence follows each burst of the capture (a burst ends where the
// stream's time of day changes). A Garmin receiver behind a capture acknowledges every
// command it is sent while its capture lasts and otherwise sends what was recorded. The
// replay never sleeps and gives the same result every time.
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "gps/gps_protocol.h"

namespace orvel {

enum class ReplayProtocol { kNmea, kGarmin, kAuto };  // kAuto alternates, NMEA first

struct CaptureLayout {
  bool garminBinary = false;       // holds well-formed Garmin packets
  std::vector<size_t> burstStarts;  // offsets where a burst begins after a silence
};

// Where the bursts of a capture begin: at each NMEA sentence whose time of day differs from
// the one before it, or after each Garmin position record.
CaptureLayout analyseCapture(std::span<const uint8_t> capture);

enum class ReplayEvent {
  kSearching,      // a protocol was opened on the line
  kRecognised,     // it recognised its data
  kProtocolError,  // the recognised stream broke
  kNoData,         // the recognised stream went silent
};

struct ReplayOptions {
  ReplayProtocol protocol = ReplayProtocol::kAuto;
  bool eachSentence = false;  // NMEA hands the fix on after every sentence
  uint32_t startTick = 0;     // the tick count when the replay begins
  // Called for every event with the simulated time in milliseconds and the protocol's name.
  std::function<void(uint64_t ms, ReplayEvent event, std::u16string_view protocol)> onEvent;
};

struct ReplaySummary {
  int attempts = 0;                  // protocols opened
  std::u16string_view recognisedBy;  // the last protocol that recognised the data, if any
  uint64_t simulatedMs = 0;
};

// Runs the capture to its end through the protocols that `options` names, handing fixes and
// satellites to `sink` and telling it after every attempt that ended (as a reading thread
// does).
ReplaySummary replayCapture(std::span<const uint8_t> capture, GpsSink& sink, const ReplayOptions& options);

}  // namespace orvel
