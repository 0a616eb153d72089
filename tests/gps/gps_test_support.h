#pragma once
// Helpers shared by the GPS tests: a port that records what a protocol writes to it, a sink
// that collects what it is given, and sentence building.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/utf.h"
#include "gps/gps_protocol.h"
#include "gps/gps_state.h"

namespace orvel::test {

// A port that keeps what is written to it.
struct FakePort final : GpsPort {
  std::vector<std::vector<uint8_t>> writes;
  void setLineSettings(uint32_t, uint8_t, bool, uint8_t) override {}
  void setTimeouts(const PortTimeouts&) override {}
  void purge() override {}
  void write(std::span<const uint8_t> bytes) override { writes.emplace_back(bytes.begin(), bytes.end()); }
};

// Keeps every fix, counts the losses and the status texts; fixes, satellites and status
// also go into a GpsState of its own. Reading threads may feed it: read `fixes` and `lost`
// once they ended, or through the locked copies.
struct FixCollector final : GpsSink {
  GpsState state;
  std::vector<GpsFix> fixes;
  int lost = 0;

  void updateFix(const GpsFix& fix) override {
    state.exchangeFix(fix);
    std::lock_guard lock(mutex);
    fixes.push_back(fix);
  }
  void fixLost() override {
    std::lock_guard lock(mutex);
    ++lost;
  }
  void setSatellites(std::span<const SatelliteInfo> satellites) override { state.setSatellites(satellites); }
  void satellitesChanged() override { state.satellitesChanged(); }
  void setStatusText(std::u16string_view text) override {
    state.setStatusText(text);
    std::lock_guard lock(mutex);
    statuses.push_back(utf16ToUtf8(text));
  }

  std::vector<GpsFix> fixesSoFar() {
    std::lock_guard lock(mutex);
    return fixes;
  }
  // How often the status `text` was set.
  int statusCount(const std::string& text) {
    std::lock_guard lock(mutex);
    return static_cast<int>(std::count(statuses.begin(), statuses.end(), text));
  }

  std::mutex mutex;
  std::vector<std::string> statuses;
};

inline std::span<const uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// "$" + body + "*" + the checksum in two hex digits + CR LF.
inline std::string nmeaLine(std::string_view body) {
  uint8_t sum = 0;
  for (char c : body) sum ^= static_cast<uint8_t>(c);
  char tail[8];
  std::snprintf(tail, sizeof tail, "*%02X\r\n", sum);
  return "$" + std::string(body) + tail;
}

}  // namespace orvel::test
