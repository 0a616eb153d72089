#include "track/track_recording.h"

#include "track/active_track.h"
#include "track/mps_writer.h"

namespace orvel {

void connectTrackRecorders(FixObserver& observer) {
  observer.beginRecordedTrack = [] { beginRecordedTrack(); };
  observer.markSegmentStart = [] { markSegmentStart(); };
  observer.appendRecordedPoint = [](const GpsFix& fix) { appendRecordedPoint(fix); };
  observer.appendActivePoint = [](float longitude, float latitude) { appendActivePoint(longitude, latitude); };
}

}  // namespace orvel
