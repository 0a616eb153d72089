#pragma once
// Where everything GPS input learns goes: the receiver protocols, the gpsd client, the
// reading threads and the demo replay hand their fixes, fix losses, satellites and status
// texts to one GpsSink and touch nothing else. In the program the sink is fix processing
// (fix_processing.h), which stores into the GpsState; tools and tests put their own in
// between or in its place.
//
// The reading threads call a sink from several threads at once: an implementation guards
// its own state.
#include <span>
#include <string_view>

#include "gps/gps_fix.h"

namespace orvel {

class GpsSink {
 public:
  virtual ~GpsSink() = default;

  // A complete fix, to replace the current one.
  virtual void updateFix(const GpsFix& fix) = 0;
  // The receiver has no usable fix, or an attempt on a port ended without a receiver.
  virtual void fixLost() = 0;
  // The satellites in view as now known: the announced count, entries not yet received zero.
  virtual void setSatellites(std::span<const SatelliteInfo> satellites) = 0;
  // A whole list has arrived.
  virtual void satellitesChanged() = 0;
  // The one-line status text.
  virtual void setStatusText(std::u16string_view text) = 0;
};

}  // namespace orvel
