#include "gps/demo_replay.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <vector>

#include "gps/capture_replay.h"
#include "gps/nmea_protocol.h"
#include "gps/port_reader.h"

namespace orvel {
namespace {

// Counts the fixes on their way to the real sink.
class CountingSink final : public GpsSink {
 public:
  CountingSink(GpsSink& next, std::atomic<uint64_t>& count) : next_(next), count_(count) {}
  void updateFix(const GpsFix& fix) override {
    ++count_;
    next_.updateFix(fix);
  }
  void fixLost() override { next_.fixLost(); }
  void setSatellites(std::span<const SatelliteInfo> satellites) override { next_.setSatellites(satellites); }
  void satellitesChanged() override { next_.satellitesChanged(); }
  void setStatusText(std::u16string_view text) override { next_.setStatusText(text); }

 private:
  GpsSink& next_;
  std::atomic<uint64_t>& count_;
};

}  // namespace

DemoReplay::DemoReplay(GpsSink& sink, std::function<bool()> receiverFound)
    : sink_(sink), receiverFound_(std::move(receiverFound)) {}

DemoReplay::~DemoReplay() { stopDemoReplay(); }

void DemoReplay::replay(std::vector<uint8_t> capture, std::vector<size_t> bursts, DemoReplayOptions options) {
  CountingSink counting(sink_, fixes_);
  NmeaProtocol nmea({}, counting);
  if (options.setStatus) sink_.setStatusText(u"NMEA-0183 (демонстрация)");
  const auto ended = [&] {
    return signals_.stopSet() || (options.stopOnReceiver && receiverFound_ && receiverFound_());
  };
  do {
    nmea.open();
    uint32_t due = tickCount();
    for (size_t b = 0; b < bursts.size() && !ended(); ++b) {
      const size_t begin = bursts[b];
      const size_t end = b + 1 < bursts.size() ? bursts[b + 1] : capture.size();
      for (size_t at = begin; at < end; at += kReadChunk) {
        const size_t n = std::min(kReadChunk, end - at);
        nmea.process(std::span<const uint8_t>(capture).subspan(at, n));
      }
      // The quiet time until the next burst, in the same steps as a reading thread; the
      // protocol hands the burst's fix on in it.
      due += options.burstMs;
      while (static_cast<int32_t>(due - tickCount()) > 0) {
        if (signals_.waitStop(std::min<uint32_t>(kPollMs, due - tickCount()))) break;
        nmea.process({});
      }
    }
    sink_.fixLost();  // the jump back to the start is no part of the track
  } while (options.loop && !ended());
  running_ = false;
}

bool DemoReplay::startDemoReplay(const std::string& path, DemoReplayOptions options) {
  stopDemoReplay();
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  const std::vector<uint8_t> original((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const auto first = firstCapturePosition(original);
  if (!first) return false;
  std::vector<uint8_t> capture = shiftCapturePositions(original, *first, options.anchor);
  std::vector<size_t> bursts = analyseCapture(capture).burstStarts;
  if (bursts.empty() || bursts.front() != 0) bursts.insert(bursts.begin(), 0);

  std::lock_guard lock(mutex_);
  signals_.reset();
  fixes_ = 0;
  running_ = true;
  thread_ = std::thread([this, capture = std::move(capture), bursts = std::move(bursts), options]() mutable {
    replay(std::move(capture), std::move(bursts), options);
  });
  return true;
}

void DemoReplay::stopDemoReplay() {
  std::lock_guard lock(mutex_);
  signals_.setStop();
  if (thread_.joinable()) thread_.join();
  running_ = false;
}

}  // namespace orvel
