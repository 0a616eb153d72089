#include "pages/gauge_settings.h"

#include <cstdio>

#include "core/settings.h"
#include "pages/gauges_page.h"

namespace orvel {

namespace {

std::string settingName(int cell) {
  char name[24];
  std::snprintf(name, sizeof name, "Gauge_%d", cell);
  return name;
}

}  // namespace

std::u16string readGaugeSetting(const Settings& settings, int cell) {
  const std::u16string_view fallback =
      cell >= 0 && cell < kGaugeCellCount ? kDefaultGaugeKeys[static_cast<size_t>(cell)] : u"";
  return settings.readSettingString(settingName(cell), fallback, kGaugeKeyCapacity);
}

void writeGaugeSetting(Settings& settings, int cell, std::u16string_view key) {
  settings.writeSettingString(settingName(cell), key);
}

}  // namespace orvel
