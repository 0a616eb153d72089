#include "gps/demo_replay.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "gps/capture_replay.h"
#include "gps/gps_state.h"
#include "gps/nmea_protocol.h"
#include "gps/port_reader.h"
#include "gps/port_scanner.h"
#include "gps/scan_signals.h"

namespace orvel {
namespace {

struct Demo {
  std::mutex mutex;  // the thread and the signals
  std::thread thread;
  std::shared_ptr<ScanSignals> signals;
  std::atomic<bool> running{false};
  std::atomic<uint64_t> fixes{0};
};

// Never destroyed: a thread still running at exit must not find it gone, and a thread
// object still joinable must not end the process from a destructor.
Demo& demo() {
  static Demo* const instance = new Demo;
  return *instance;
}

void replay(std::vector<uint8_t> capture, std::vector<size_t> bursts, DemoReplayOptions options,
            std::shared_ptr<ScanSignals> signals) {
  Demo& d = demo();
  FixSink sink = options.sink;
  FixSink counting{[&d, sink](const GpsFix& fix) {
                     ++d.fixes;
                     if (sink.fix) sink.fix(fix);
                   },
                   sink.lost};
  NmeaProtocol nmea({}, counting);
  if (options.setStatus) setStatusText(u"NMEA-0183 (демонстрация)");
  const auto ended = [&] { return signals->stopSet() || (options.stopOnReceiver && receiverFound()); };
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
        if (signals->waitStop(std::min<uint32_t>(kPollMs, due - tickCount()))) break;
        nmea.process({});
      }
    }
    if (sink.lost) sink.lost();  // the jump back to the start is no part of the track
  } while (options.loop && !ended());
  d.running = false;
}

}  // namespace

bool startDemoReplay(const std::string& path, DemoReplayOptions options) {
  stopDemoReplay();
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  const std::vector<uint8_t> original((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const auto first = firstCapturePosition(original);
  if (!first) return false;
  std::vector<uint8_t> capture = shiftCapturePositions(original, *first, options.anchor);
  std::vector<size_t> bursts = analyseCapture(capture).burstStarts;
  if (bursts.empty() || bursts.front() != 0) bursts.insert(bursts.begin(), 0);

  Demo& d = demo();
  std::lock_guard lock(d.mutex);
  d.signals = std::make_shared<ScanSignals>();
  d.fixes = 0;
  d.running = true;
  d.thread = std::thread(replay, std::move(capture), std::move(bursts), std::move(options), d.signals);
  return true;
}

void stopDemoReplay() {
  Demo& d = demo();
  std::lock_guard lock(d.mutex);
  if (d.signals) d.signals->setStop();
  if (d.thread.joinable()) d.thread.join();
  d.running = false;
}

bool isDemoReplaying() { return demo().running; }

uint64_t demoFixCount() { return demo().fixes; }

}  // namespace orvel
