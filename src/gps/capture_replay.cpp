#include "gps/capture_replay.h"

#include <array>
#include <string_view>

#include "gps/garmin_packet.h"
#include "gps/garmin_protocol.h"
#include "gps/nmea_protocol.h"
#include "gps/replay_line.h"

namespace orvel {
namespace {

constexpr uint64_t kMs = 1'000'000;  // nanoseconds
constexpr uint64_t kPollNs = 20 * kMs;
constexpr uint64_t kLostWaitNs = 2000 * kMs;
constexpr size_t kMaxRead = 1024;

// The time-of-day field of the sentences that carry one, by sentence type.
size_t timeFieldOf(std::string_view type) {
  static constexpr std::array<std::pair<std::string_view, size_t>, 7> kTimeFields{
      {{"RMC", 1}, {"GGA", 1}, {"GLL", 5}, {"ZDA", 1}, {"GNS", 1}, {"GST", 1}, {"GBS", 1}}};
  for (const auto& [tag, field] : kTimeFields) {
    if (tag == type) return field;
  }
  return 0;
}

// The time of day a sentence starting at `text` states, or empty.
std::string_view sentenceTime(std::string_view text) {
  const size_t end = text.find_first_of("*\r\n$", 1);
  text = text.substr(0, end);
  if (text.size() < 7 || text[1] == 'P' || text[6] != ',') return {};
  size_t field = timeFieldOf(text.substr(3, 3));
  if (field == 0) return {};
  size_t start = 7;
  while (--field > 0) {
    start = text.find(',', start);
    if (start == std::string_view::npos) return {};
    ++start;
  }
  return text.substr(start, text.find(',', start) - start);
}

}  // namespace

CaptureLayout analyseCapture(std::span<const uint8_t> capture) {
  CaptureLayout layout;
  size_t packets = 0;
  std::vector<size_t> afterRecords;
  scanGarminPackets(capture, [&](uint8_t id, std::span<const uint8_t>, size_t end) {
    ++packets;
    if (id == kGarminPvt) afterRecords.push_back(end);
  });
  if (packets >= 2) {
    layout.garminBinary = true;
    layout.burstStarts = std::move(afterRecords);
    return layout;
  }
  const std::string_view text(reinterpret_cast<const char*>(capture.data()), capture.size());
  std::string_view current;
  for (size_t at = text.find('$'); at != std::string_view::npos; at = text.find('$', at + 1)) {
    const std::string_view time = sentenceTime(text.substr(at));
    if (time.empty() || time == current) continue;
    if (!current.empty()) layout.burstStarts.push_back(at);
    current = time;
  }
  return layout;
}

namespace {

enum class Outcome { kNextProtocol, kEnd };

class Scanner {
 public:
  Scanner(std::span<const uint8_t> capture, GpsSink& sink, const ReplayOptions& options)
      : layout_(analyseCapture(capture)),
        line_(capture, layout_.burstStarts, layout_.garminBinary),
        options_(options),
        nmea_(clock(), sink),
        garmin_(clock(), sink) {
    nmea_.setHandOverEachSentence(options.eachSentence);
    // Enough for the whole capture at the slowest rate with every gap, and many retries.
    limitNs_ = 120'000 * kMs + capture.size() * 2 * line_.byteNsAt(4800) +
               (layout_.burstStarts.size() + 1) * 2 * ReplayLine::kBurstGapNs;
  }

  ReplaySummary run(GpsSink& sink) {
    std::array<GpsProtocol*, 2> order{&nmea_, &garmin_};
    if (options_.protocol == ReplayProtocol::kGarmin) order = {&garmin_, &garmin_};
    if (options_.protocol == ReplayProtocol::kNmea) order = {&nmea_, &nmea_};
    for (size_t turn = 0;; ++turn) {
      if (runProtocol(*order[turn % 2]) == Outcome::kEnd) break;
      sink.fixLost();
      if (line_.exhausted() || nowNs_ > limitNs_) break;
    }
    summary_.simulatedMs = nowNs_ / kMs;
    return summary_;
  }

 private:
  TickClock clock() {
    return [this] { return options_.startTick + static_cast<uint32_t>(nowNs_ / kMs); };
  }
  void tell(ReplayEvent event, const GpsProtocol& protocol) const {
    if (options_.onEvent) options_.onEvent(nowNs_ / kMs, event, protocol.getName());
  }
  void wait(uint64_t ns) {
    nowNs_ += ns;
    line_.advanceTo(nowNs_);
  }

  // One attempt of one protocol, as the scanning thread runs it.
  Outcome runProtocol(GpsProtocol& protocol) {
    ++summary_.attempts;
    tell(ReplayEvent::kSearching, protocol);
    line_.purge();
    protocol.setPort(&line_);
    protocol.open();
    bool searching = true;
    std::array<uint8_t, kMaxRead> bytes{};
    while (true) {
      wait(kPollNs);
      if (nowNs_ > limitNs_) {
        protocol.close();
        return Outcome::kEnd;
      }
      ProcessResult result = ProcessResult::kNothing;
      const bool silent = line_.waiting() == 0;
      if (silent) {
        result = protocol.process({});
      } else {
        const size_t n = line_.read(bytes);
        result = protocol.process(std::span<const uint8_t>(bytes.data(), n));
      }
      if (result == ProcessResult::kFailed) {
        if (!searching) {
          tell(silent ? ReplayEvent::kNoData : ReplayEvent::kProtocolError, protocol);
          wait(kLostWaitNs);
        }
        protocol.close();
        return Outcome::kNextProtocol;
      }
      if (searching && result == ProcessResult::kRecognised) {
        searching = false;
        summary_.recognisedBy = protocol.getName();
        tell(ReplayEvent::kRecognised, protocol);
      }
    }
  }

  CaptureLayout layout_;
  ReplayLine line_;
  const ReplayOptions& options_;
  uint64_t nowNs_ = 0;
  uint64_t limitNs_ = 0;
  NmeaProtocol nmea_;
  GarminProtocol garmin_;
  ReplaySummary summary_;
};

}  // namespace

ReplaySummary replayCapture(std::span<const uint8_t> capture, GpsSink& sink, const ReplayOptions& options) {
  Scanner scanner(capture, sink, options);
  return scanner.run(sink);
}

}  // namespace orvel
