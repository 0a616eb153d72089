#pragma once
// The active track: the trail of the last 10000 recorded positions, kept in a ring inside
// Tracks.bin in the data folder. The file is mapped for the whole run, so every point is in
// the file the moment it is written and the trail survives a restart or a crash.
//
// The layout of Tracks.bin is in track_ring.h.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <span>
#include <vector>

#include "geo/units.h"
#include "track/track_ring.h"

class QPainter;

namespace orvel {

class MapView;
class Messages;
class Settings;

inline constexpr uint32_t kTrackPenColorRef = 14287823;  // RGB(207, 3, 218) as 0x00BBGGRR
inline constexpr int kTrackPenWidth = 2;
inline constexpr size_t kTrackBatchPoints = 1000;  // screen points per polyline call

// One Tracks.bin ring: opened at start-up, appended to by fix processing on the reading
// thread and drawn by the interface thread. The header and the slots are guarded by the
// ring's own lock, which is never taken while the GPS state's is held.
class ActiveTrack {
 public:
  // `dataFolder` holds Tracks.bin; "RecordTrack" is read from `settings` when the store
  // opens; failures to open are told through `messages`.
  ActiveTrack(std::filesystem::path dataFolder, Settings& settings, Messages& messages);
  ~ActiveTrack();  // closes the store
  ActiveTrack(const ActiveTrack&) = delete;
  ActiveTrack& operator=(const ActiveTrack&) = delete;

  // Opens (creating or resizing it to 80008 bytes) and maps Tracks.bin, and starts recording
  // when the setting "RecordTrack" is on. Failures are shown and leave the store closed;
  // appending and drawing then do nothing.
  void openTrackStore();
  // Writes the ring to storage and unmaps it. Nothing happens when it is not open.
  void closeTrackStore();
  bool isTrackStoreOpen() const;
  std::filesystem::path trackStorePath() const;  // data folder/Tracks.bin

  void startRecording();
  // Stops; the first point recorded after the next start begins a new segment.
  void stopRecording();
  bool isRecording() const;

  // The next point stored begins a new segment.
  void markSegmentStart();

  // Stores a position (degrees) in the next slot while recording and open. No distance or
  // time filter: fix processing decides what is worth a point.
  void appendActivePoint(float longitude, float latitude);

  // Draws the ring, oldest point first, as polylines with the track pen. Points more than
  // one screen beyond any edge are left out and split the line.
  void drawActiveTrack(QPainter& painter, const MapView& view) const;

  // The valid points, oldest first; empty when the store is closed or its header impossible.
  std::vector<TrackPoint> activeTrackPoints() const;

 private:
  void unmapLocked();
  // The mapped file's bytes; only while open, under `ring_`.
  TrackRing ring() const { return TrackRing(base_, kTrackFileSize); }

  const std::filesystem::path folder_;
  Settings& settings_;
  Messages& messages_;
  mutable std::mutex ring_;  // guards the header and the slots, and `base_` changing
  uint8_t* base_ = nullptr;  // the mapped file, null while closed
  int fd_ = -1;              // held for the lock that keeps a second writer out
  std::atomic<bool> recording_{false};
  std::atomic<bool> pendingBreak_{false};
};

// The valid points of a Tracks.bin read into memory, oldest first, as drawing walks them.
// False, with `out` untouched, when the bytes are not such a ring: not 80008 bytes, or a
// header that no ring has.
bool readTrackRing(std::span<const uint8_t> bytes, std::vector<TrackPoint>& out);

}  // namespace orvel
