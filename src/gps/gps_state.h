#pragma once
// The one shared picture of the receiver: the latest fix, the satellites in view and a
// one-line status text, all under one lock. Reading threads write it; pages read copies of
// it. Writers never call into the user interface: after a change they post one of three
// messages to the main window, each coalesced by a latch so that a burst of changes costs
// the page one update.
#include <cstddef>
#include <cstdint>
#include <functional>
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

// Stores at most 128 characters of `text` (up to its first zero character), then posts
// kMsgStatusChanged.
void setStatusText(std::u16string_view text);
// Copies the status text into `buffer` as a zero-terminated string: `capacity` is first
// limited to 128, then at most capacity - 1 characters are copied and buffer[capacity - 1]
// is zero. Nothing is written when capacity is 0. Returns `buffer`.
char16_t* getStatusText(char16_t* buffer, size_t capacity);

// A copy of the whole current fix.
GpsFix& getFix(GpsFix& out);
GpsFix currentFix();

// Stores `newFix` whole and returns the fix it replaced, in one step under the lock.
// Fix processing is the only caller; everyone else goes through updateFix.
GpsFix exchangeFix(const GpsFix& newFix);

// Replaces the satellite list by `count` zero entries (at most kMaxSatellites).
void resetSatellites(uint32_t count);
// Fills the next unwritten entry; ignored once the announced count is filled.
void addSatellite(const SatelliteInfo& info);
// Posts kMsgSatellitesChanged.
void satellitesChanged();
// The announced size of the list (entries not yet received read as zeros). No lock.
uint32_t getSatelliteCount();
// The entry at `index`, or all zeros past the end. Returns `out`.
SatelliteInfo& getSatellite(uint32_t index, SatelliteInfo& out);

// Everything at once, taken under one lock: what a page draws from.
struct GpsSnapshot {
  GpsFix fix;
  std::vector<SatelliteInfo> satellites;  // the announced count, unfilled entries zero
  std::u16string statusText;
};
GpsSnapshot gpsSnapshot();

// Delivers a message to the main window: the window installs one that queues the message
// to itself. Install before any reading thread starts.
using GpsMessagePoster = std::function<void(int message)>;
void setGpsMessagePoster(GpsMessagePoster poster);

// Posts `message` unless one of its kind is still waiting (its latch is set).
void postGpsMessage(int message);
// Called by the main window after the current page has handled `message`, so that the next
// change posts again.
void clearLatch(int message);
bool isLatchSet(int message);

// Empties the state: no fix, no satellites, empty status text, latches clear. The poster
// stays installed.
void resetGpsState();

}  // namespace orvel
