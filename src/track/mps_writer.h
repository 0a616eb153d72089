#pragma once
// Track export: each recording run is written as it happens to a MapSource file named by
// the local time the run began, one track record per continuous stretch of fixes. Length
// fields are written as placeholders and patched when a track ends; a run cut short by a
// crash keeps the placeholders and has no end record.
//
// Beside it, under the same name, the run is written as GPX: one track, one segment per
// stretch, whole after every point, so that a crash leaves a file every GPS program opens.
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory>
#include <mutex>

#include "gps/gps_fix.h"
#include "gpx/gpx_track_file.h"
#include "track/mps_format.h"

namespace orvel {

class Messages;
struct BufferedWriter;

// The export of one program: runs start and end on the interface thread while fix
// processing adds points on the reading thread, so every operation takes the export's lock.
class TrackExport {
 public:
  // Runs are written into `dataFolder`; a file that cannot be created is told through
  // `messages`.
  TrackExport(std::filesystem::path dataFolder, Messages& messages);
  ~TrackExport();  // ends an open run as closeTrackFile does
  TrackExport(const TrackExport&) = delete;
  TrackExport& operator=(const TrackExport&) = delete;

  // Ends any open run and starts one in data folder/"Y-MM-DD_hh-mm-ss.mps" (local time now),
  // with an empty first track, and its GPX twin "Y-MM-DD_hh-mm-ss.gpx". A GPX file that cannot
  // be created is told through the messages too; the run then goes on in the .mps alone.
  void openTrackFile();
  // The same, with the run's start time given (local broken-down time).
  void openTrackFileAt(const std::tm& localStart);
  // Finishes the current track (even an empty one), writes the end record and closes.
  void closeTrackFile();
  bool isTrackFileOpen() const;
  // The open run's file; empty when none is open.
  std::filesystem::path trackFilePath() const;

  // Ends the current track if it has points and begins the next; an empty one is kept.
  void beginRecordedTrack();
  // Adds the fix to the current track when it has a position.
  void appendRecordedPoint(const GpsFix& fix);
  // Adds a point already in the file's units to the current track.
  void appendMpsPoint(const MpsPoint& point);

 private:
  void finishTrackLocked();
  void beginTrackLocked();
  void endRunLocked();

  const std::filesystem::path folder_;
  Messages& messages_;
  mutable std::mutex lock_;
  std::unique_ptr<BufferedWriter> writer_;  // null while no run is open
  int fd_ = -1;
  std::filesystem::path path_;
  GpxTrackFile gpx_;
  bool trackBegun_ = false;
  uint64_t recordStart_ = 0;    // where the current track record's length field is
  uint64_t countPosition_ = 0;  // where its point count is
  uint32_t pointCount_ = 0;
  int nextTrackNumber_ = 0;
};

}  // namespace orvel
