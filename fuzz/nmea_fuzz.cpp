// libFuzzer target: bytes from a serial port through the NMEA protocol's `process`, read by
// read with pauses between them, into fix processing with the track recorders' conversions
// behind it. A failed attempt starts afresh, as the scanning thread's next attempt would.
#include <cstddef>
#include <cstdint>

#include "fuzz_check.h"
#include "geo/units.h"
#include "gps/fix_processing.h"
#include "gps/gps_state.h"
#include "gps/nmea_protocol.h"
#include "track/mps_format.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace orvel;
  FuzzedDataProvider in(data, size);
  uint32_t now = in.ConsumeIntegral<uint32_t>();
  GpsState state;
  FixProcessor fixes(state);
  FixObserver recorders;
  recorders.appendActivePoint = [](float lon, float lat) {
    degreesToSemicircles(lon);
    degreesToSemicircles(lat);
  };
  recorders.appendRecordedPoint = [](const GpsFix& fix) { encodeMpsPoint(mpsPointFromFix(fix)); };
  fixes.setFixObserver(std::move(recorders));
  NmeaProtocol nmea([&now] { return now; }, fixes);
  nmea.setHandOverEachSentence(in.ConsumeBool());
  nmea.open();
  fuzz::forEachRead(in, [&](uint32_t pause, std::span<const uint8_t> bytes) {
    now += pause;
    const ProcessResult result = nmea.process(bytes);
    FUZZ_CHECK(result == ProcessResult::kNothing || result == ProcessResult::kRecognised ||
               result == ProcessResult::kFailed);
    if (result == ProcessResult::kFailed) nmea.open();
  });
  const GpsSnapshot seen = state.gpsSnapshot();
  FUZZ_CHECK(seen.satellites.size() <= kMaxSatellites);
  FUZZ_CHECK(seen.statusText.empty());  // a protocol never speaks for the scanning thread
  return 0;
}
