#pragma once
// The two manual-reset events the reading threads share: "stop" (the user or the program
// ends scanning) and "found" (some thread has the receiver, the searching ones give up).
// Waiting is bounded; a set event wakes every waiter at once.
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace orvel {

class ScanSignals {
 public:
  void setStop();
  void setFound();
  void resetFound();
  // Clears both.
  void reset();
  bool stopSet() const;
  bool foundSet() const;
  // Up to `ms` for stop or found; true when either is set.
  bool waitStopOrFound(uint32_t ms);
  // Up to `ms` for stop alone; true when it is set.
  bool waitStop(uint32_t ms);

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool stop_ = false;
  bool found_ = false;
};

}  // namespace orvel
