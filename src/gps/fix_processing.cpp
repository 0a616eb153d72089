#include "gps/fix_processing.h"

#include <cmath>
#include <limits>

#include "geo/trig.h"

namespace orvel {
namespace {

// About one metre per 9e-6 degree of latitude.
constexpr double kDegreesPerMetre = 9e-6;

}  // namespace

void FixProcessor::setFixObserver(FixObserver newObserver) {
  auto installed = std::make_shared<const FixObserver>(std::move(newObserver));
  std::lock_guard guard(observerLock_);
  observer_ = std::move(installed);
}

std::shared_ptr<const FixObserver> FixProcessor::observer() const {
  std::lock_guard guard(observerLock_);
  return observer_;
}

bool hasMoved(const GpsFix& old, const GpsFix& newFix) {
  if (!old.has(kFixPosition) || !newFix.has(kFixPosition)) return false;
  double latTolerance = 0.0;
  double lonTolerance = 0.0;
  if (newFix.has(kFixHorizontalError)) {
    latTolerance = static_cast<double>(newFix.horizontalError) * kDegreesPerMetre;
    // A degree of longitude shrinks with the cosine of the latitude. At the poles it is
    // nothing: no longitude change counts there.
    const float cosine = tableCos(newFix.latitude * kPi / 180.0f);
    lonTolerance = cosine > 0.0f ? latTolerance / static_cast<double>(cosine)
                                 : std::numeric_limits<double>::infinity();
  }
  // The differences in single precision, as the fix stores its degrees.
  const float lonChange = std::fabs(old.longitude - newFix.longitude);
  const float latChange = std::fabs(old.latitude - newFix.latitude);
  // Both axes must change: a movement due north or due east alone does not count.
  return static_cast<double>(lonChange) > lonTolerance && static_cast<double>(latChange) > latTolerance;
}

void FixProcessor::updateFix(const GpsFix& newFix) {
  const GpsFix old = state_.exchangeFix(newFix);
  const bool hasPosition = newFix.has(kFixPosition);
  // A position that appears after a time without one begins a new track and segment.
  const bool positionAppeared = hasPosition && !old.has(kFixPosition);
  const bool moved = positionAppeared || hasMoved(old, newFix);
  const uint32_t satellitesUsed = newFix.has(kFixSatellitesUsed) ? newFix.satellitesUsed : 0;

  const std::shared_ptr<const FixObserver> hooks = observer();
  if (hooks && positionAppeared) {
    if (hooks->beginRecordedTrack) hooks->beginRecordedTrack();
    if (hooks->markSegmentStart) hooks->markSegmentStart();
  }
  if (hooks && moved) {
    if (hooks->appendRecordedPoint) hooks->appendRecordedPoint(newFix);
    if (hooks->appendActivePoint) hooks->appendActivePoint(newFix.longitude, newFix.latitude);
  }
  state_.postGpsMessage(kMsgFixChanged);
  if (hooks && hooks->showReception) hooks->showReception(satellitesUsed);
}

void FixProcessor::fixLost() {
  const std::shared_ptr<const FixObserver> hooks = observer();
  if (!hooks) return;
  if (hooks->beginRecordedTrack) hooks->beginRecordedTrack();
  if (hooks->markSegmentStart) hooks->markSegmentStart();
}

}  // namespace orvel
