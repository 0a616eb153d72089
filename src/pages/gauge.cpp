#include "pages/gauge.h"

namespace orvel {

void GaugeRegistry::registerGauge(std::unique_ptr<Gauge> gauge, std::u16string_view key,
                                  std::u16string_view title) {
  auto entry = std::make_unique<GaugeRegistration>();
  entry->gauge = std::move(gauge);
  entry->key = std::u16string(key);
  entry->title = std::u16string(title);
  entry->next = head_;
  head_ = entry.get();
  entries_.push_back(std::move(entry));
}

GaugeRegistration* GaugeRegistry::findGauge(std::u16string_view key) const {
  for (GaugeRegistration* entry = head_; entry != nullptr; entry = entry->next) {
    if (entry->key == key) return entry;
  }
  return nullptr;
}

void GaugeRegistry::updateAllGauges(const GpsFix& fix) {
  for (GaugeRegistration* entry = head_; entry != nullptr; entry = entry->next) {
    if (entry->gauge) entry->gauge->update(fix);
  }
}

}  // namespace orvel
