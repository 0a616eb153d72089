#include "track/track_recording.h"

#include "track/active_track.h"
#include "track/mps_writer.h"

namespace orvel {

void connectTrackRecorders(FixObserver& observer, ActiveTrack& activeTrack, TrackExport& trackExport) {
  observer.beginRecordedTrack = [&trackExport] { trackExport.beginRecordedTrack(); };
  observer.markSegmentStart = [&activeTrack] { activeTrack.markSegmentStart(); };
  observer.appendRecordedPoint = [&trackExport](const GpsFix& fix) { trackExport.appendRecordedPoint(fix); };
  observer.appendActivePoint = [&activeTrack](float longitude, float latitude) {
    activeTrack.appendActivePoint(longitude, latitude);
  };
}

}  // namespace orvel
