#include "gps/scan_signals.h"

#include <chrono>

namespace orvel {

void ScanSignals::setStop() {
  {
    std::lock_guard lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
}

void ScanSignals::setFound() {
  {
    std::lock_guard lock(mutex_);
    found_ = true;
  }
  changed_.notify_all();
}

void ScanSignals::resetFound() {
  std::lock_guard lock(mutex_);
  found_ = false;
}

void ScanSignals::reset() {
  std::lock_guard lock(mutex_);
  stop_ = false;
  found_ = false;
}

bool ScanSignals::stopSet() const {
  std::lock_guard lock(mutex_);
  return stop_;
}

bool ScanSignals::foundSet() const {
  std::lock_guard lock(mutex_);
  return found_;
}

bool ScanSignals::waitStopOrFound(uint32_t ms) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(ms), [this] { return stop_ || found_; });
}

bool ScanSignals::waitStop(uint32_t ms) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(ms), [this] { return stop_; });
}

}  // namespace orvel
