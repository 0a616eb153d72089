#pragma once
// Fixes from a running gpsd, for receivers that gpsd already owns: a TCP connection to it,
// the WATCH request for JSON reports, and TPV (time, position, velocity) and SKY (dilutions,
// satellites) reports turned into the same fixes and satellite list as a receiver on a
// serial port gives.
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "gps/gps_sink.h"
#include "gps/host_lookup.h"
#include "gps/port_reader.h"
#include "gps/scan_signals.h"

namespace orvel {

struct GpsdAddress {
  std::string host = "127.0.0.1";
  uint16_t port = 2947;
};

// "gpsd://HOST[:PORT]", an IPv6 host in brackets ("gpsd://[::1]:2947"); "gpsd://" alone is
// the default address. False with a one-line reason for anything else.
bool parseGpsdUrl(std::string_view text, GpsdAddress& out, std::string& error);

// The request that makes gpsd send its reports as JSON.
inline constexpr std::string_view kGpsdWatch = "?WATCH={\"enable\":true,\"json\":true};\n";

// Turns gpsd's report lines into fixes (one per TPV) and the satellite list (one per SKY
// that lists satellites). The dilutions and the count of satellites used come with SKY; the
// next fixes carry them.
class GpsdDecoder {
 public:
  static constexpr size_t kMaxLine = 65536;  // a longer line is dropped

  // The sink must outlive the decoder.
  explicit GpsdDecoder(GpsSink& sink) : sink_(sink) {}

  // Bytes as they arrive; true when they completed at least one TPV or SKY report.
  bool process(std::span<const uint8_t> bytes);
  // One report; true for a TPV or SKY.
  bool handleLine(std::string_view line);
  // Forgets a partial line and what SKY said (a new connection).
  void reset();

 private:
  void handleTpv(std::string_view report);
  void handleSky(std::string_view report);

  GpsSink& sink_;
  std::string partial_;
  bool overlong_ = false;
  float hdop_ = 0, vdop_ = 0;
  bool haveHdop_ = false, haveVdop_ = false;
  uint32_t used_ = 0;
  bool haveUsed_ = false;
};

// The gpsd source as one reading thread of the scanner: connects (again after every loss,
// waiting longer each time up to half a minute), asks for reports and decodes them until
// a stop, or until another thread finds a receiver first. Fixes, satellites and the status
// texts go to `sink`; the texts and the indicator follow a serial port's ("gpsd через
// 127.0.0.1:2947"). The host name is looked up through `lookups`, which must outlive the
// thread. No wait is longer than kPollMs before the stop is looked at again.
void readGpsd(const GpsdAddress& address, ScanSignals& scan, GpsSink& sink, const ScanIndicator& indicator,
              HostLookups& lookups);

}  // namespace orvel
