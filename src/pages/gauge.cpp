#include "pages/gauge.h"

#include "pages/gauge_types.h"

namespace orvel {

namespace {

// Constant-initialised, so registrations made by other files' static initialisers find it
// ready whatever order those run in.
GaugeRegistration* listHead = nullptr;

}  // namespace

void registerGauge(GaugeRegistration& registration, std::unique_ptr<Gauge> gauge,
                   std::u16string_view key, std::u16string_view title) {
  registration.gauge = std::move(gauge);
  registration.key = std::u16string(key);
  registration.title = std::u16string(title);
  registration.next = listHead;
  listHead = &registration;
}

GaugeRegistration* gaugeList() {
  // The gauge types register from their own file; naming it here keeps the linker from
  // leaving it out of a program that only reads the list.
  linkGaugeTypes();
  return listHead;
}

GaugeRegistration* findGauge(std::u16string_view key) {
  for (GaugeRegistration* entry = gaugeList(); entry != nullptr; entry = entry->next) {
    if (entry->key == key) return entry;
  }
  return nullptr;
}

void updateAllGauges(const GpsFix& fix) {
  for (GaugeRegistration* entry = gaugeList(); entry != nullptr; entry = entry->next) {
    if (entry->gauge) entry->gauge->update(fix);
  }
}

}  // namespace orvel
