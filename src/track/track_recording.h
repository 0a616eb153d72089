#pragma once
// Hands fix processing the recorders of this library. GPS input is built below the track
// code and reaches it only through the FixObserver the program installs at start-up:
//
//   FixObserver observer;
//   connectTrackRecorders(observer, activeTrack, trackExport);
//   observer.showReception = ...;  // the reception indicator
//   fixes.setFixObserver(std::move(observer));  // the program's FixProcessor
#include "gps/fix_processing.h"

namespace orvel {

class ActiveTrack;
class TrackExport;

// Fills the observer's track members: the export's beginRecordedTrack and
// appendRecordedPoint, the active track's markSegmentStart and appendActivePoint. Both
// objects must outlive the observer's use.
void connectTrackRecorders(FixObserver& observer, ActiveTrack& activeTrack, TrackExport& trackExport);

}  // namespace orvel
