#include "gps/replay_line.h"

#include <algorithm>

#include "gps/garmin_packet.h"

namespace orvel {

ReplayLine::ReplayLine(std::span<const uint8_t> capture, std::vector<size_t> burstStarts, bool answersGarmin)
    : capture_(capture), burstStarts_(std::move(burstStarts)), answersGarmin_(answersGarmin) {
  std::sort(burstStarts_.begin(), burstStarts_.end());
  std::erase_if(burstStarts_, [&](size_t at) { return at == 0 || at >= capture_.size(); });
  burstStarts_.erase(std::unique(burstStarts_.begin(), burstStarts_.end()), burstStarts_.end());
}

void ReplayLine::setLineSettings(uint32_t baud, uint8_t, bool, uint8_t) {
  if (baud > 0) baud_ = baud;
}

void ReplayLine::write(std::span<const uint8_t> bytes) {
  if (!answersGarmin_ || pos_ >= capture_.size()) return;  // nobody there any more
  scanGarminPackets(bytes, [&](uint8_t id, std::span<const uint8_t>, size_t) {
    if (id != kGarminCommand) return;
    const uint8_t acknowledged[2] = {kGarminCommand, 0};
    replies_.push_back(Reply{nowNs_, frameGarminPacket(kGarminAck, acknowledged)});
  });
}

void ReplayLine::advanceTo(uint64_t ns) {
  nowNs_ = std::max(nowNs_, ns);
  while (true) {
    if (sendingPos_ < sending_.size()) {
      const uint64_t arrival = sentNs_ + byteNs();
      if (arrival > nowNs_) break;
      queue_.push_back(sending_[sendingPos_++]);
      sentNs_ = arrival;
      if (sendingPos_ == sending_.size()) {
        sending_.clear();
        sendingPos_ = 0;
        nextBurstNs_ = std::max(nextBurstNs_, sentNs_);
      }
      continue;
    }
    if (inBurst_) {
      const uint64_t arrival = sentNs_ + byteNs();
      if (arrival > nowNs_) break;
      queue_.push_back(capture_[pos_++]);
      sentNs_ = arrival;
      if (pos_ >= nextBoundary()) {
        inBurst_ = false;
        nextBurstNs_ = sentNs_ + kBurstGapNs;
        if (boundary_ < burstStarts_.size()) ++boundary_;
      }
      continue;
    }
    // Between bursts: answers first, then the next burst when its time has come.
    if (!replies_.empty()) {
      if (replies_.front().writtenNs > nowNs_) break;
      sentNs_ = std::max(sentNs_, replies_.front().writtenNs);
      sending_ = std::move(replies_.front().bytes);
      sendingPos_ = 0;
      replies_.pop_front();
      continue;
    }
    if (pos_ >= capture_.size() || nextBurstNs_ > nowNs_) break;
    sentNs_ = std::max(sentNs_, nextBurstNs_);
    inBurst_ = true;
  }
}

size_t ReplayLine::read(std::span<uint8_t> out) {
  const size_t n = std::min(out.size(), queue_.size());
  std::copy_n(queue_.begin(), n, out.begin());
  queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(n));
  return n;
}

bool ReplayLine::exhausted() const {
  return pos_ >= capture_.size() && replies_.empty() && sending_.empty() && queue_.empty();
}

}  // namespace orvel
