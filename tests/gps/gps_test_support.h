#pragma once
// Helpers shared by the GPS tests: a port that records what a protocol does with it, a sink
// that collects fixes, and sentence building.
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gps/gps_protocol.h"

namespace orvel::test {

struct FakePort final : GpsPort {
  uint32_t baud = 0;
  uint8_t dataBits = 0;
  bool parity = true;
  uint8_t stopBits = 0;
  PortTimeouts timeouts{};
  int purges = 0;
  std::vector<std::vector<uint8_t>> writes;

  void setLineSettings(uint32_t b, uint8_t d, bool p, uint8_t s) override {
    baud = b;
    dataBits = d;
    parity = p;
    stopBits = s;
  }
  void setTimeouts(const PortTimeouts& t) override { timeouts = t; }
  void purge() override { ++purges; }
  void write(std::span<const uint8_t> bytes) override { writes.emplace_back(bytes.begin(), bytes.end()); }
};

struct FixCollector {
  std::vector<GpsFix> fixes;
  int lost = 0;
  FixSink sink() {
    return FixSink{[this](const GpsFix& fix) { fixes.push_back(fix); }, [this] { ++lost; }};
  }
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
