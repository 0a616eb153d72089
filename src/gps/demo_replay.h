#pragma once
// The demo: with no receiver about, a recorded drive is replayed through the NMEA protocol
// and fix processing at the pace it was recorded, so the position moves over the demo map.
// The recording is moved onto the map first (see demo_capture.h). The replay runs in a
// thread of its own, starts again from the beginning when it reaches the end (the track
// breaks there), and ends by itself when a real receiver is found.
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "gps/demo_capture.h"
#include "gps/gps_sink.h"
#include "gps/scan_signals.h"

namespace orvel {

// Where the bundled recording's first position is put: the harbour side of Monte Carlo, so
// that the whole track lies within the demo map of Monaco.
inline constexpr GeoPoint kDemoAnchor{43.7400, 7.4280};
// The bundled recording's file name in the demo folder, beside the demo map.
inline constexpr const char* kDemoCaptureName = "bundg_zeus_9.log";

struct DemoReplayOptions {
  GeoPoint anchor = kDemoAnchor;
  uint32_t burstMs = 1000;     // from one burst of sentences to the next, as recorded
  bool loop = true;            // start again at the end
  bool stopOnReceiver = true;  // end when a receiver is found
  bool setStatus = true;       // status line "NMEA-0183 (демонстрация)"
};

class DemoReplay {
 public:
  // Everything the replay decodes goes to `sink`. `receiverFound`, when given, says whether
  // a real receiver has been found (asked from the replay's thread).
  explicit DemoReplay(GpsSink& sink, std::function<bool()> receiverFound = {});
  // Stops the replay and joins its thread.
  ~DemoReplay();
  DemoReplay(const DemoReplay&) = delete;
  DemoReplay& operator=(const DemoReplay&) = delete;

  // Starts replaying the capture at `path` (a running replay is stopped first). False when
  // the file cannot be read or has no position to anchor.
  bool startDemoReplay(const std::string& path, DemoReplayOptions options = {});
  // Ends the replay and joins its thread; returns within about 20 ms.
  void stopDemoReplay();
  bool isDemoReplaying() const { return running_; }
  // Fixes handed on by the current or last replay.
  uint64_t demoFixCount() const { return fixes_; }

 private:
  void replay(std::vector<uint8_t> capture, std::vector<size_t> bursts, DemoReplayOptions options);

  GpsSink& sink_;
  const std::function<bool()> receiverFound_;
  std::mutex mutex_;  // start and stop
  ScanSignals signals_;
  std::atomic<bool> running_{false};
  std::atomic<uint64_t> fixes_{0};
  std::thread thread_;
};

}  // namespace orvel
