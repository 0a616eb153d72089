#pragma once
// A simulated serial line with a recorded receiver behind it. The receiver sends its capture
// in bursts with a silence after each; the bytes arrive at the baud rate the line is set to,
// 10 bits a byte, and wait in the receive queue until they are read or purged. The receiver
// answers commands only between bursts, as a real one finishes what it is sending first.
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "gps/gps_protocol.h"

namespace orvel {

class ReplayLine final : public GpsPort {
 public:
  static constexpr uint64_t kBurstGapNs = 1'000'000'000;

  // `burstStarts`: capture offsets that follow a silence. With `answersGarmin` every Garmin
  // command written to the line is acknowledged while the capture lasts.
  ReplayLine(std::span<const uint8_t> capture, std::vector<size_t> burstStarts, bool answersGarmin);

  void setLineSettings(uint32_t baud, uint8_t dataBits, bool parity, uint8_t stopBits) override;
  void setTimeouts(const PortTimeouts&) override {}
  void purge() override { queue_.clear(); }
  void write(std::span<const uint8_t> bytes) override;

  // Lets the simulated time run to `ns`: every byte finished by then joins the queue.
  void advanceTo(uint64_t ns);
  size_t waiting() const { return queue_.size(); }
  // Takes at most `out.size()` waiting bytes; returns how many.
  size_t read(std::span<uint8_t> out);
  // Everything was sent and read, and nothing more will come.
  bool exhausted() const;
  uint32_t baud() const { return baud_; }
  // How long one byte (10 bits) takes at `baud`.
  static uint64_t byteNsAt(uint32_t baud) { return 10'000'000'000ull / baud; }

 private:
  uint64_t byteNs() const { return byteNsAt(baud_); }
  size_t nextBoundary() const { return boundary_ < burstStarts_.size() ? burstStarts_[boundary_] : capture_.size(); }

  std::span<const uint8_t> capture_;
  std::vector<size_t> burstStarts_;
  bool answersGarmin_;
  uint32_t baud_ = 4800;

  uint64_t nowNs_ = 0;
  uint64_t sentNs_ = 0;       // when the last byte on the line was complete
  uint64_t nextBurstNs_ = 0;  // when the next burst may begin
  size_t pos_ = 0;            // next capture byte to send
  size_t boundary_ = 0;       // next entry of burstStarts_ ahead of pos_
  bool inBurst_ = false;

  struct Reply {
    uint64_t writtenNs;
    std::vector<uint8_t> bytes;
  };
  std::deque<Reply> replies_;
  std::vector<uint8_t> sending_;  // the reply on the line now
  size_t sendingPos_ = 0;

  std::deque<uint8_t> queue_;
};

}  // namespace orvel
