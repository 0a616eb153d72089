#pragma once
// The Garmin binary serial protocol: asks the receiver for position records, frames and
// checks what comes back, and turns every position record into a fix. After each record the
// stop command is sent; the receiver is asked again after every quiet gap. That pacing is
// how the receiver is kept from flooding the port.
#include <cstdint>
#include <span>
#include <string_view>

#include "gps/garmin_packet.h"
#include "gps/gps_protocol.h"

namespace orvel {

class GarminProtocol final : public GpsProtocol {
 public:
  static constexpr uint32_t kAckTimeoutMs = 3000;  // a start request unanswered this long fails
  static constexpr uint32_t kQuietMs = 700;        // while streaming, a gap this long re-requests

  GarminProtocol(TickClock clock, GpsSink& sink);

  std::u16string_view getName() const override { return u"Протокол Garmin"; }
  // 9600 baud, 8 data bits, no parity check, one stop bit; purges; sends the start request.
  void open() override;
  // Sends the stop command.
  void close() override;
  ProcessResult process(std::span<const uint8_t> bytes) override;

  bool awaitingAck() const { return awaitingAck_; }
  bool streaming() const { return streaming_; }

 private:
  void sendStartRequest();
  // False when the packet is malformed: the stream is not (or no longer) Garmin.
  bool handlePacket(std::span<const uint8_t> packet);

  GarminFramer framer_;
  uint32_t requestTick_ = 0;
  uint32_t lastReceiveTick_ = 0;
  bool awaitingAck_ = false;
  bool streaming_ = false;
};

}  // namespace orvel
