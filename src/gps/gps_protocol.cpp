#include "gps/gps_protocol.h"

#include <chrono>

#include "gps/fix_processing.h"

namespace orvel {

uint32_t tickCount() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

FixSink programFixSink() {
  return FixSink{[](const GpsFix& fix) { updateFix(fix); }, [] { fixLost(); }};
}

GpsProtocol::GpsProtocol(TickClock clock, FixSink sink)
    : clock_(clock ? std::move(clock) : TickClock(tickCount)), sink_(std::move(sink)) {}

void GpsProtocol::handOnFix(const GpsFix& fix) const {
  if (sink_.fix) sink_.fix(fix);
}

void GpsProtocol::reportFixLost() const {
  if (sink_.lost) sink_.lost();
}

void GpsProtocol::writeToPort(std::span<const uint8_t> bytes) const {
  if (port_) port_->write(bytes);
}

}  // namespace orvel
