#pragma once
// The NMEA-0183 receiver protocol: cuts the byte stream into sentences, checks them, merges
// the sentences of one burst into one fix and hands it on when the burst is over (a quiet
// gap after it, or at the latest every three seconds of continuous data).
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "gps/gps_protocol.h"
#include "gps/nmea_satellites.h"

namespace orvel {

class NmeaProtocol final : public GpsProtocol {
 public:
  // A sentence still waiting for its end is kept in this many bytes (one less usable).
  static constexpr size_t kBufferSize = 128;
  // Printable text dropped without a sentence in between before the stream counts as
  // something else.
  static constexpr size_t kMaxDroppedText = 4096;
  static constexpr uint32_t kSilenceMs = 5000;      // no bytes this long: not NMEA (any more)
  static constexpr uint32_t kQuietGapMs = 101;      // a burst is over after this quiet gap
  static constexpr uint32_t kMaxHoldMs = 3000;      // a fix is handed on at least this often

  NmeaProtocol(TickClock clock, GpsSink& sink);

  std::u16string_view getName() const override { return u"NMEA-0183"; }
  // 4800 baud, 8 data bits, no parity check, one stop bit; purges the port; starts afresh.
  void open() override;
  void close() override {}
  ProcessResult process(std::span<const uint8_t> bytes) override;

  // Hands the fix on after every decoded sentence instead of once per burst (for a close
  // look at a capture). The burst rules still decide what process() returns.
  void setHandOverEachSentence(bool each) { eachSentence_ = each; }

  // Cuts `text` into lines and decodes those whose checksum holds into the fix being
  // assembled. True when a line begins with "$" and the text runs at least 8 bytes past that
  // "$", whatever follows it (proprietary four-letter addresses such as "$PUBX,", lower-case
  // text) and whatever its checksum or type.
  bool parseSentences(std::span<const uint8_t> text);

  // The fix being assembled from the current burst.
  const GpsFix& assembling() const { return assembling_; }

 private:
  ProcessResult pendingResult() const { return pending_ ? ProcessResult::kRecognised : ProcessResult::kNothing; }
  void handOver(uint32_t now);
  void append(std::span<const uint8_t> bytes);
  // Text that outgrew the buffer: printable text is dropped, anything else fails.
  bool dropText(std::span<const uint8_t> first, std::span<const uint8_t> second);
  // Bytes dropped while waiting for the next "$" after a drop.
  bool skip(std::span<const uint8_t> bytes);

  std::array<uint8_t, kBufferSize> buffer_{};
  size_t bufferLength_ = 0;
  uint32_t lastReceiveTick_ = 0;
  uint32_t lastFlushTick_ = 0;
  bool pending_ = false;
  GpsFix assembling_;
  NmeaSatellites satellites_;
  bool eachSentence_ = false;

  // Resynchronising after an overlong text: bytes are dropped until the next "$".
  bool skipping_ = false;
  size_t droppedText_ = 0;  // bytes dropped since the last sentence
};

}  // namespace orvel
