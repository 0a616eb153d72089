#pragma once
// The one door through which a decoded fix enters the program. It replaces the shared fix,
// decides whether the receiver moved far enough for a new track point, drives the track
// recorders and the reception indicator, and posts the fix message. Satellites and status
// texts pass through it into the same GpsState.
//
// The recorders live in the track library, which builds on this one; they are reached
// through a FixObserver that the program installs at start-up (see connectTrackRecorders
// in track/track_recording.h), so GPS input never depends on the track code.
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "gps/gps_fix.h"
#include "gps/gps_sink.h"
#include "gps/gps_state.h"

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

// The GPS sink of the program: everything GPS input hands on ends in `state`.
class FixProcessor final : public GpsSink {
 public:
  explicit FixProcessor(GpsState& state) : state_(state) {}
  FixProcessor(const FixProcessor&) = delete;
  FixProcessor& operator=(const FixProcessor&) = delete;

  // Installs the observer. Best while no reading thread runs (start-up, shutdown); the calls
  // of one fix always reach one observer as a whole.
  void setFixObserver(FixObserver observer);

  // Stores `newFix` and records it if it moved (see fix_processing.cpp). Called on the
  // reading thread that owns the receiver. The GPS lock is held only while the fix is
  // exchanged; the observer and the message poster run after it is released.
  void updateFix(const GpsFix& newFix) override;
  // The recorded track ends and the active track breaks. The shared fix is left as it is.
  void fixLost() override;
  void setSatellites(std::span<const SatelliteInfo> satellites) override { state_.setSatellites(satellites); }
  void satellitesChanged() override { state_.satellitesChanged(); }
  void setStatusText(std::u16string_view text) override { state_.setStatusText(text); }

  GpsState& state() const { return state_; }

 private:
  std::shared_ptr<const FixObserver> observer() const;

  GpsState& state_;
  mutable std::mutex observerLock_;  // guards only the installed observer, never held while it runs
  std::shared_ptr<const FixObserver> observer_;
};

// True when the receiver counts as moved from `old` to `newFix`: both have a position and
// both axes changed by more than the tolerance that newFix's horizontal error gives.
bool hasMoved(const GpsFix& old, const GpsFix& newFix);

}  // namespace orvel
