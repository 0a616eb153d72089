#pragma once
// Track export: each recording run is written as it happens to a MapSource file named by
// the local time the run began, one track record per continuous stretch of fixes. Length
// fields are written as placeholders and patched when a track ends; a run cut short by a
// crash keeps the placeholders and has no end record.
#include <ctime>
#include <filesystem>

#include "gps/gps_fix.h"
#include "track/mps_format.h"

namespace orvel {

// Ends any open run and starts one in data folder/"Y-MM-DD_hh-mm-ss.mps" (local time now),
// with an empty first track. A file that cannot be created is shown with showMessage.
void openTrackFile();
// The same, with the run's start time given (local broken-down time).
void openTrackFileAt(const std::tm& localStart);
// Finishes the current track (even an empty one), writes the end record and closes.
void closeTrackFile();
bool isTrackFileOpen();
// The open run's file; empty when none is open.
std::filesystem::path trackFilePath();

// Ends the current track if it has points and begins the next; an empty one is kept.
void beginRecordedTrack();
// Adds the fix to the current track when it has a position.
void appendRecordedPoint(const GpsFix& fix);
// Adds a point already in the file's units to the current track.
void appendMpsPoint(const MpsPoint& point);

}  // namespace orvel
