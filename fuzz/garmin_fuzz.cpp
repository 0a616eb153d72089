// libFuzzer target: bytes from a serial port through the Garmin protocol (framing, checksum,
// position records) read by read with pauses between them; and the same bytes through the
// strict packet scanner and, as a bare record, the position decoder. The protocol must
// never send anything but its start and stop commands, and every fix it hands on carries
// exactly the fields a position record gives.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fuzz_check.h"
#include "gps/garmin_packet.h"
#include "gps/garmin_protocol.h"
#include "gps/garmin_pvt.h"

namespace {

using namespace orvel;

struct CommandCheckingPort final : GpsPort {
  void setLineSettings(uint32_t, uint8_t, bool, uint8_t) override {}
  void setTimeouts(const PortTimeouts&) override {}
  void purge() override {}
  void write(std::span<const uint8_t> bytes) override {
    FUZZ_CHECK(std::ranges::equal(bytes, kStartPvtPacket) || std::ranges::equal(bytes, kStopPvtPacket));
  }
};

struct FixCheckingSink final : GpsSink {
  void updateFix(const GpsFix& fix) override { FUZZ_CHECK(fix.flags == kGarminPvtFlags); }
  void fixLost() override {}
  void setSatellites(std::span<const SatelliteInfo>) override { FUZZ_CHECK(false); }
  void satellitesChanged() override { FUZZ_CHECK(false); }
  void setStatusText(std::u16string_view) override { FUZZ_CHECK(false); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::span<const uint8_t> whole(data, size);
  scanGarminPackets(whole, [&](uint8_t, std::span<const uint8_t> packet, size_t end) {
    FUZZ_CHECK(end <= size && packet.size() <= 255);
  });
  GpsFix record;
  if (decodeGarminPvt(whole.first(std::min<size_t>(size, 80)), record)) {
    FUZZ_CHECK(size >= kGarminPvtSize && record.flags == kGarminPvtFlags);
  } else {
    FUZZ_CHECK(record.flags == 0);
  }

  FuzzedDataProvider in(data, size);
  uint32_t now = in.ConsumeIntegral<uint32_t>();
  CommandCheckingPort port;
  FixCheckingSink sink;
  GarminProtocol garmin([&now] { return now; }, sink);
  garmin.setPort(&port);
  garmin.open();
  fuzz::forEachRead(in, [&](uint32_t pause, std::span<const uint8_t> bytes) {
    now += pause;
    const ProcessResult result = garmin.process(bytes);
    FUZZ_CHECK(result == ProcessResult::kNothing || result == ProcessResult::kRecognised ||
               result == ProcessResult::kFailed);
    if (result == ProcessResult::kFailed) {
      garmin.close();
      garmin.open();
    }
  });
  garmin.close();
  return 0;
}
