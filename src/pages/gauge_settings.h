#pragma once
// The settings "Gauge_0".."Gauge_9": the key of the gauge type each cell shows.
#include <string>
#include <string_view>

namespace orvel {

class Settings;

inline constexpr size_t kGaugeKeyCapacity = 32;

// The stored key of `cell`, or its default when none is stored.
std::u16string readGaugeSetting(const Settings& settings, int cell);
void writeGaugeSetting(Settings& settings, int cell, std::u16string_view key);

}  // namespace orvel
