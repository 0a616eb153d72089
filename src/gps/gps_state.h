#pragma once
// The shared picture of the receiver: the latest fix, the satellites in view and a one-line
// status text, all under one lock. Reading threads write it (through fix processing); pages
// read copies of it. Writers never call into the user interface: after a change they post
// one of three messages to the main window, each coalesced by a latch so that a burst of
// changes costs the page one update.
//
// The program owns one GpsState and hands it by reference to whoever reads or writes it.
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gps/gps_fix.h"

namespace orvel {

// Messages posted to the main window.
inline constexpr int kMsgStatusChanged = 1024;
inline constexpr int kMsgFixChanged = 1025;
inline constexpr int kMsgSatellitesChanged = 1026;

inline constexpr size_t kStatusTextLength = 128;  // characters kept, not counting the end
// A satellite list longer than any constellation gives is cut to this many entries.
inline constexpr uint32_t kMaxSatellites = 1024;

// Everything at once, taken under one lock: what a page draws from.
struct GpsSnapshot {
  GpsFix fix;
  std::vector<SatelliteInfo> satellites;  // the announced count, unfilled entries zero
  std::u16string statusText;
};

// Delivers a message to the main window: the window installs one that queues the message
// to itself.
using GpsMessagePoster = std::function<void(int message)>;

class GpsState {
 public:
  GpsState() = default;
  GpsState(const GpsState&) = delete;
  GpsState& operator=(const GpsState&) = delete;

  // Stores at most 128 characters of `text` (up to its first zero character), then posts
  // kMsgStatusChanged.
  void setStatusText(std::u16string_view text);
  // Copies the status text into `buffer` as a zero-terminated string: `capacity` is first
  // limited to 128, then at most capacity - 1 characters are copied and buffer[capacity - 1]
  // is zero. Nothing is written when capacity is 0. Returns `buffer`.
  char16_t* getStatusText(char16_t* buffer, size_t capacity) const;

  // A copy of the whole current fix.
  GpsFix& getFix(GpsFix& out) const;
  GpsFix currentFix() const;

  // Stores `newFix` whole and returns the fix it replaced, in one step under the lock.
  // Fix processing is the only writer of the fix.
  GpsFix exchangeFix(const GpsFix& newFix);

  // Replaces the satellite list by `count` zero entries (at most kMaxSatellites).
  void resetSatellites(uint32_t count);
  // Fills the next unwritten entry; ignored once the announced count is filled.
  void addSatellite(const SatelliteInfo& info);
  // Replaces the list by `satellites` (at most kMaxSatellites of them) in one step.
  void setSatellites(std::span<const SatelliteInfo> satellites);
  // Posts kMsgSatellitesChanged.
  void satellitesChanged();
  // The announced size of the list (entries not yet received read as zeros). No lock.
  uint32_t getSatelliteCount() const;
  // The entry at `index`, or all zeros past the end. Returns `out`.
  SatelliteInfo& getSatellite(uint32_t index, SatelliteInfo& out) const;

  GpsSnapshot gpsSnapshot() const;

  // Installs the poster (null removes it). The main window installs its own while it
  // lives; it may be replaced while reading threads post.
  void setGpsMessagePoster(GpsMessagePoster poster);
  // Posts `message` unless one of its kind is still waiting (its latch is set).
  void postGpsMessage(int message);
  // Called by the main window after the current page has handled `message`, so that the
  // next change posts again.
  void clearLatch(int message);
  bool isLatchSet(int message) const;

 private:
  // The latch of one of the three messages; null for any other number.
  std::atomic<bool>* latchFor(int message);
  const std::atomic<bool>* latchFor(int message) const;
  size_t statusLength() const;  // under lock_

  mutable std::mutex lock_;  // guards everything below but the latches and the announced count
  uint32_t satellitesFilled_ = 0;
  std::atomic<uint32_t> satellitesInView_{0};
  std::vector<SatelliteInfo> satellites_;
  GpsFix fix_;
  std::array<char16_t, kStatusTextLength + 1> statusText_{};

  std::array<std::atomic<bool>, 3> latches_{};
  mutable std::mutex posterLock_;  // guards only the installed poster, never held while it runs
  std::shared_ptr<const GpsMessagePoster> poster_;
};

}  // namespace orvel
