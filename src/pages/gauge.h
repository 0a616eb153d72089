#pragma once
// One gauge type: a readout of the current fix that the gauges page shows in a cell. There is
// one object per type; the types register themselves in one list before main() runs.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "gps/gps_fix.h"

namespace orvel {

class Gauge {
 public:
  virtual ~Gauge() = default;
  // Takes what the gauge shows from `fix`, with its validity.
  virtual void update(const GpsFix& fix) = 0;
  // The text to show; "-" while the value is invalid.
  virtual std::u16string format() const = 0;
};

// The page formats into a buffer of this many characters.
inline constexpr size_t kGaugeTextCapacity = 64;

struct GaugeRegistration {
  std::unique_ptr<Gauge> gauge;  // null when it could not be made
  std::u16string key;            // also the value of the "Gauge_%d" setting
  std::u16string title;          // shown in the cell and in the choice dialog
  GaugeRegistration* next = nullptr;
};

// Fills `registration` and puts it at the head of the list, so the list runs in reverse
// order of registration. `registration` must live as long as the program.
void registerGauge(GaugeRegistration& registration, std::unique_ptr<Gauge> gauge,
                   std::u16string_view key, std::u16string_view title);
// The head of the list (the type registered last).
GaugeRegistration* gaugeList();
// The first registration whose key equals `key` exactly; null if none.
GaugeRegistration* findGauge(std::u16string_view key);

// Called on every fix: updates every registered gauge, shown or not, in list order.
void updateAllGauges(const GpsFix& fix);

}  // namespace orvel
