#pragma once
// The one door through which a decoded fix enters the program. It replaces the shared fix,
// decides whether the receiver moved far enough for a new track point, drives the track
// recorders and the reception indicator, and posts the fix message.
//
// The recorders live in the track library, which builds on this one; they are reached
// through a FixObserver that the program installs at start-up (see connectTrackRecorders
// in track/track_recording.h), so GPS input never depends on the track code.
#include <cstdint>
#include <functional>

#include "gps/gps_fix.h"

namespace orvel {

// What fix processing drives. Any member left empty is skipped.
struct FixObserver {
  // End the recorded track in the export file if it has points and begin a new one.
  std::function<void()> beginRecordedTrack;
  // The next point of the active track begins a new segment.
  std::function<void()> markSegmentStart;
  // A fix that moved far enough, for the export file.
  std::function<void(const GpsFix& fix)> appendRecordedPoint;
  // The same fix's position in degrees, for the active track.
  std::function<void(float longitude, float latitude)> appendActivePoint;
  // After every fix: the number of satellites used (0 when the fix does not say).
  std::function<void(uint32_t satellitesUsed)> showReception;
};

// Installs the observer. Call it while no reading thread runs (start-up, shutdown); the
// calls of one fix always reach one observer as a whole.
void setFixObserver(FixObserver observer);

// Stores `newFix` and records it if it moved (see fix_processing.cpp). Called on the reading
// thread that owns the receiver. The GPS lock is held only while the fix is exchanged;
// the observer and the message poster run after it is released.
void updateFix(const GpsFix& newFix);

// The receiver has no usable fix or the connection is gone: the recorded track ends and the
// active track breaks. The shared fix is left as it is.
void fixLost();

// True when the receiver counts as moved from `old` to `newFix`: both have a position and
// both axes changed by more than the tolerance that newFix's horizontal error gives.
bool hasMoved(const GpsFix& old, const GpsFix& newFix);

}  // namespace orvel
