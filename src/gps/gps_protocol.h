#pragma once
// A receiver protocol: the scanning thread of a port hands it every read (also the empty
// ones), and it tells the thread whether the port carries its kind of data. Two variants
// exist, NMEA-0183 sentences and Garmin binary packets.
//
// Everything a protocol touches outside itself is handed in, so that the same objects run
// on a real port, in tests with a fake clock, and in a replay of a recorded capture:
// - the clock: a 32-bit millisecond tick count, intervals by unsigned subtraction;
// - the sink: where decoded fixes and satellites go (fix processing in the program);
// - the port: line settings, time-outs, purge and writes (set before open()).
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "gps/gps_fix.h"
#include "gps/gps_sink.h"

namespace orvel {

// Milliseconds, wrapping at 2^32.
using TickClock = std::function<uint32_t()>;

// A 32-bit millisecond count from the steady clock.
uint32_t tickCount();

// Time-outs of a port in milliseconds, as a read and a write are bounded.
struct PortTimeouts {
  uint32_t readInterval = 0;
  uint32_t readTotalMultiplier = 0;
  uint32_t readTotalConstant = 0;
  uint32_t writeTotalMultiplier = 0;
  uint32_t writeTotalConstant = 0;
};

// The line a protocol talks on. Reading is the scanning thread's business; a protocol only
// configures the line and writes to it.
class GpsPort {
 public:
  virtual ~GpsPort() = default;
  virtual void setLineSettings(uint32_t baud, uint8_t dataBits, bool parity, uint8_t stopBits) = 0;
  virtual void setTimeouts(const PortTimeouts& timeouts) = 0;
  // Drops whatever waits in the receive and transmit queues.
  virtual void purge() = 0;
  virtual void write(std::span<const uint8_t> bytes) = 0;
};

// Both protocols set these time-outs.
inline constexpr PortTimeouts kReceiverTimeouts{100, 10, 10, 10, 10};

// What process() tells the scanning thread.
enum class ProcessResult : int {
  kNothing = 0,     // nothing recognised yet
  kRecognised = 1,  // data of this protocol
  kFailed = 2,      // not this protocol, or the stream broke
};

class GpsProtocol {
 public:
  virtual ~GpsProtocol() = default;
  GpsProtocol(const GpsProtocol&) = delete;
  GpsProtocol& operator=(const GpsProtocol&) = delete;

  // The display name: "NMEA-0183" or "Протокол Garmin".
  virtual std::u16string_view getName() const = 0;
  // Sets the port's line settings and time-outs and starts the protocol.
  virtual void open() = 0;
  // Ends the protocol on the port.
  virtual void close() = 0;
  // Consumes one read; `bytes` is empty when the read returned nothing.
  virtual ProcessResult process(std::span<const uint8_t> bytes) = 0;

  // The port this protocol works on, not owned; may be null (nothing is configured or sent).
  void setPort(GpsPort* port) { port_ = port; }
  GpsPort* port() const { return port_; }

 protected:
  // `clock` empty is tickCount. The sink must outlive the protocol.
  GpsProtocol(TickClock clock, GpsSink& sink);
  uint32_t now() const { return clock_(); }
  GpsSink& sink() const { return sink_; }
  void writeToPort(std::span<const uint8_t> bytes) const;

 private:
  TickClock clock_;
  GpsSink& sink_;
  GpsPort* port_ = nullptr;
};

}  // namespace orvel
