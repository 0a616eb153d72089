#include "gps/gps_protocol.h"

#include <chrono>

namespace orvel {

uint32_t tickCount() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

GpsProtocol::GpsProtocol(TickClock clock, GpsSink& sink)
    : clock_(clock ? std::move(clock) : TickClock(tickCount)), sink_(sink) {}

void GpsProtocol::writeToPort(std::span<const uint8_t> bytes) const {
  if (port_) port_->write(bytes);
}

}  // namespace orvel
