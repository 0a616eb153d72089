#pragma once
// What one reading thread does on one serial port: it tries the receiver protocols in turn
// until one recognises the data, keeps reading while the data flow, and searches again when
// they stop or break. GPS input runs one per enabled port; `orvel-tool decode` runs one on a
// device the user names.
//
// Every wait is at most kPollMs long and then looks at the stop signal, and reads never
// block, so a stop ends the thread within a few polls.
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "gps/gps_protocol.h"
#include "gps/gps_sink.h"
#include "gps/scan_signals.h"
#include "gps/serial_port.h"

namespace orvel {

// The reception indicator a reading thread drives (the status icon). Any member left empty
// is skipped.
struct ScanIndicator {
  std::function<void()> connected;     // a receiver was found, no satellites known yet
  std::function<void()> noConnection;  // the receiver was lost
};

inline constexpr uint32_t kPollMs = 20;          // a searching thread looks at the events this often
inline constexpr uint32_t kLostPauseMs = 2000;   // pause after a receiver was lost
inline constexpr size_t kReadChunk = 1024;       // bytes taken by one read

enum class AttemptEnd {
  kEnd,   // stop, or another thread found the receiver: the thread ends
  kNext,  // try the next protocol
};

// One attempt of `protocol` on `port`, which is known to the user as `portLabel` ("COM3").
// Status texts go to `sink`.
AttemptEnd runProtocol(GpsProtocol& protocol, SerialPort& port, std::u16string_view portLabel, ScanSignals& scan,
                       GpsSink& sink, const ScanIndicator& indicator);

// Alternates `protocols` on `port` (already opened at `path`, or closed when that failed)
// until a stop or another thread's success, telling `sink` of the fix's loss after every
// attempt that ended. A port that failed is opened again before each attempt, so an
// unplugged receiver is taken up again when it comes back.
void readPort(const std::string& path, SerialPort& port, std::u16string_view portLabel,
              std::span<GpsProtocol* const> protocols, ScanSignals& scan, GpsSink& sink,
              const ScanIndicator& indicator);

}  // namespace orvel
