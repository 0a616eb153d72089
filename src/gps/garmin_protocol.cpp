#include "gps/garmin_protocol.h"

#include "gps/garmin_pvt.h"

namespace orvel {

GarminProtocol::GarminProtocol(TickClock clock, GpsSink& sink) : GpsProtocol(std::move(clock), sink) {}

void GarminProtocol::open() {
  if (GpsPort* p = port()) {
    p->setLineSettings(9600, 8, false, 1);
    p->setTimeouts(kReceiverTimeouts);
    p->purge();
  }
  framer_.reset();
  lastReceiveTick_ = now();
  sendStartRequest();
}

void GarminProtocol::close() { writeToPort(kStopPvtPacket); }

void GarminProtocol::sendStartRequest() {
  awaitingAck_ = true;
  streaming_ = false;
  requestTick_ = now();
  writeToPort(kStartPvtPacket);
}

bool GarminProtocol::handlePacket(std::span<const uint8_t> packet) {
  switch (checkGarminPacket(packet)) {
    case GarminPacketCheck::kChecksumMismatch:
      return true;  // silently ignored
    case GarminPacketCheck::kMalformed:
      return false;
    case GarminPacketCheck::kGood:
      break;
  }
  const uint8_t id = packet[0];
  const std::span<const uint8_t> data = packet.subspan(2, packet[1]);
  const bool aboutCommand = !data.empty() && data[0] == kGarminCommand;
  if (id == kGarminAck && aboutCommand && awaitingAck_) {
    streaming_ = true;
    awaitingAck_ = false;
  } else if (id == kGarminNak && aboutCommand && awaitingAck_) {
    streaming_ = false;
    awaitingAck_ = false;
  } else if (id == kGarminPvt) {
    GpsFix fix;
    if (data.size() >= 64) {
      if (decodeGarminPvt(data, fix)) {
        sink().updateFix(fix);
      } else {
        sink().fixLost();
      }
    }
    writeToPort(kStopPvtPacket);
  }
  return true;
}

ProcessResult GarminProtocol::process(std::span<const uint8_t> bytes) {
  const uint32_t tick = now();
  if (bytes.empty()) {
    if (awaitingAck_ && !streaming_ && tick - requestTick_ > kAckTimeoutMs) return ProcessResult::kFailed;
    if (!awaitingAck_ && !streaming_) return ProcessResult::kFailed;  // the receiver said no
    if (!streaming_) return ProcessResult::kNothing;
    if (tick - lastReceiveTick_ < kQuietMs) return ProcessResult::kNothing;
    framer_.reset();
    lastReceiveTick_ = tick;
    sendStartRequest();
    return ProcessResult::kNothing;
  }
  lastReceiveTick_ = tick;
  bool handled = false;
  for (uint8_t b : bytes) {
    if (!framer_.feed(b)) continue;
    if (!handlePacket(framer_.packet())) return ProcessResult::kFailed;
    handled = true;
  }
  return handled ? ProcessResult::kRecognised : ProcessResult::kNothing;
}

}  // namespace orvel
