#pragma once
// One gauge type: a readout of the current fix that the gauges page shows in a cell. There is
// one object per type, kept in the gauge registry of the page that shows them.
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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

// Every gauge type, made with their registry (see gauge_types.h for the fifteen).
class GaugeRegistry {
 public:
  GaugeRegistry() = default;
  GaugeRegistry(const GaugeRegistry&) = delete;
  GaugeRegistry& operator=(const GaugeRegistry&) = delete;

  // Puts a new registration at the head of the list, so the list runs in reverse order of
  // registration.
  void registerGauge(std::unique_ptr<Gauge> gauge, std::u16string_view key, std::u16string_view title);
  // The head of the list (the type registered last).
  GaugeRegistration* gaugeList() const { return head_; }
  // The first registration whose key equals `key` exactly; null if none.
  GaugeRegistration* findGauge(std::u16string_view key) const;
  // Called on every fix: updates every registered gauge, shown or not, in list order.
  void updateAllGauges(const GpsFix& fix);

 private:
  std::vector<std::unique_ptr<GaugeRegistration>> entries_;
  GaugeRegistration* head_ = nullptr;
};

}  // namespace orvel
