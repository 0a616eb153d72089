// libFuzzer target: what a gpsd socket hands the client, read by read, through the report
// decoder into fixes and satellites; and the first line as a gpsd address the way
// `--gps gpsd://...` gives one. A fix only ever has a position on the globe.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_check.h"
#include "gps/gps_state.h"
#include "gps/gpsd_client.h"

namespace {

using namespace orvel;

struct CheckingSink final : GpsSink {
  void updateFix(const GpsFix& fix) override {
    if (fix.has(kFixPosition)) FUZZ_CHECK(std::fabs(fix.latitude) <= 90 && std::fabs(fix.longitude) <= 180);
    state.exchangeFix(fix);
  }
  void fixLost() override {}
  void setSatellites(std::span<const SatelliteInfo> satellites) override {
    FUZZ_CHECK(satellites.size() <= kMaxSatellites);
    state.setSatellites(satellites);
  }
  void satellitesChanged() override { state.satellitesChanged(); }
  void setStatusText(std::u16string_view) override { FUZZ_CHECK(false); }
  GpsState state;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  GpsdAddress address;
  std::string error;
  if (parseGpsdUrl("gpsd://" + std::string(text.substr(0, text.find('\n'))), address, error)) {
    FUZZ_CHECK(!address.host.empty() && address.port != 0);
  } else {
    FUZZ_CHECK(!error.empty());
  }

  FuzzedDataProvider in(data, size);
  CheckingSink sink;
  GpsdDecoder decoder(sink);
  fuzz::forEachRead(in, [&](uint32_t, std::span<const uint8_t> bytes) { decoder.process(bytes); });
  return 0;
}
