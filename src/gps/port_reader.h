#pragma once
// What one reading thread does on one serial port: it tries the receiver protocols in turn
// until one recognises the data, keeps reading while the data flow, and searches again when
// they stop or break. The port scanner runs one per enabled port; `orvel-tool decode` runs
// one on a device the user names.
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "gps/gps_protocol.h"
#include "gps/scan_signals.h"
#include "gps/serial_port.h"

namespace orvel {

// Where a reading thread reports. Any member left empty is skipped.
struct ReaderHooks {
  std::function<void(std::u16string_view text)> status;  // the status line
  std::function<void()> connected;     // a receiver was found: connected, no satellites yet
  std::function<void()> noConnection;  // it was lost again
  std::function<void()> fixLost;       // an attempt ended without a receiver
};

inline constexpr uint32_t kPollMs = 20;          // a searching thread looks at the events this often
inline constexpr uint32_t kLostPauseMs = 2000;   // pause after a receiver was lost
inline constexpr size_t kReadChunk = 1024;       // bytes taken by one read

enum class AttemptEnd {
  kEnd,   // stop, or another thread found the receiver: the thread ends
  kNext,  // try the next protocol
};

// One attempt of `protocol` on `port`, which is known to the user as `portLabel` ("COM3").
AttemptEnd runProtocol(GpsProtocol& protocol, SerialPort& port, std::u16string_view portLabel, ScanSignals& signals,
                       const ReaderHooks& hooks);

// Alternates `protocols` on `port` (already opened at `path`, or closed when that failed)
// until a stop or another thread's success. A port that failed is opened again before each
// attempt, so an unplugged receiver is taken up again when it comes back.
void readPort(const std::string& path, SerialPort& port, std::u16string_view portLabel,
              std::span<GpsProtocol* const> protocols, ScanSignals& signals, const ReaderHooks& hooks);

}  // namespace orvel
