#include "gps/gps_state.h"

#include <algorithm>
#include <utility>

namespace orvel {

std::string_view fixTypeName(uint32_t code) {
  static constexpr std::array<std::string_view, 12> kNames{
      "Invalid", "Unknown", "2D", "3D", "2D diff", "3d diff", "Prec", "RTK", "Float RTK",
      "Estimated", "Manual", "Simulation"};
  return code < kNames.size() ? kNames[code] : kNames[kFixTypeUnknown];
}

std::atomic<bool>* GpsState::latchFor(int message) {
  return const_cast<std::atomic<bool>*>(std::as_const(*this).latchFor(message));
}

const std::atomic<bool>* GpsState::latchFor(int message) const {
  const int index = message - kMsgStatusChanged;
  if (index < 0 || index >= static_cast<int>(latches_.size())) return nullptr;
  return &latches_[static_cast<size_t>(index)];
}

size_t GpsState::statusLength() const {
  return static_cast<size_t>(std::find(statusText_.begin(), statusText_.end(), u'\0') - statusText_.begin());
}

void GpsState::setStatusText(std::u16string_view text) {
  text = text.substr(0, std::min(text.find(u'\0'), kStatusTextLength));
  {
    std::lock_guard guard(lock_);
    std::copy(text.begin(), text.end(), statusText_.begin());
    statusText_[text.size()] = u'\0';
  }
  postGpsMessage(kMsgStatusChanged);
}

char16_t* GpsState::getStatusText(char16_t* buffer, size_t capacity) const {
  capacity = std::min(capacity, kStatusTextLength);
  if (capacity == 0) return buffer;
  std::lock_guard guard(lock_);
  const size_t count = std::min(statusLength(), capacity - 1);
  std::copy_n(statusText_.begin(), count, buffer);
  buffer[count] = u'\0';
  buffer[capacity - 1] = u'\0';
  return buffer;
}

GpsFix& GpsState::getFix(GpsFix& out) const {
  std::lock_guard guard(lock_);
  out = fix_;
  return out;
}

GpsFix GpsState::currentFix() const {
  GpsFix fix;
  return getFix(fix);
}

GpsFix GpsState::exchangeFix(const GpsFix& newFix) {
  std::lock_guard guard(lock_);
  const GpsFix old = fix_;
  fix_ = newFix;
  return old;
}

void GpsState::resetSatellites(uint32_t count) {
  count = std::min(count, kMaxSatellites);
  // The new list is made before the lock is taken: the lock covers only the swap.
  std::vector<SatelliteInfo> fresh(count);
  std::lock_guard guard(lock_);
  satellites_.swap(fresh);
  satellitesFilled_ = 0;
  satellitesInView_.store(count);
}

void GpsState::addSatellite(const SatelliteInfo& info) {
  std::lock_guard guard(lock_);
  if (satellitesFilled_ < satellites_.size()) satellites_[satellitesFilled_++] = info;
}

void GpsState::setSatellites(std::span<const SatelliteInfo> satellites) {
  satellites = satellites.first(std::min<size_t>(satellites.size(), kMaxSatellites));
  std::vector<SatelliteInfo> fresh(satellites.begin(), satellites.end());
  const auto count = static_cast<uint32_t>(fresh.size());
  std::lock_guard guard(lock_);
  satellites_.swap(fresh);
  satellitesFilled_ = count;
  satellitesInView_.store(count);
}

void GpsState::satellitesChanged() { postGpsMessage(kMsgSatellitesChanged); }

uint32_t GpsState::getSatelliteCount() const { return satellitesInView_.load(); }

SatelliteInfo& GpsState::getSatellite(uint32_t index, SatelliteInfo& out) const {
  {
    std::lock_guard guard(lock_);
    if (index < satellites_.size()) {
      out = satellites_[index];
      return out;
    }
  }
  out = SatelliteInfo{};
  return out;
}

GpsSnapshot GpsState::gpsSnapshot() const {
  GpsSnapshot snapshot;
  snapshot.satellites.reserve(satellitesInView_.load());  // usually no allocation under the lock
  snapshot.statusText.reserve(kStatusTextLength);
  std::lock_guard guard(lock_);
  snapshot.fix = fix_;
  snapshot.satellites.assign(satellites_.begin(), satellites_.end());
  snapshot.statusText.assign(statusText_.data(), statusLength());
  return snapshot;
}

void GpsState::setGpsMessagePoster(GpsMessagePoster poster) {
  auto installed = poster ? std::make_shared<const GpsMessagePoster>(std::move(poster)) : nullptr;
  std::lock_guard guard(posterLock_);
  poster_ = std::move(installed);
}

void GpsState::postGpsMessage(int message) {
  std::atomic<bool>* latch = latchFor(message);
  if (!latch || latch->exchange(true)) return;
  std::shared_ptr<const GpsMessagePoster> poster;
  {
    std::lock_guard guard(posterLock_);
    poster = poster_;
  }
  if (poster) (*poster)(message);
}

void GpsState::clearLatch(int message) {
  if (std::atomic<bool>* latch = latchFor(message)) latch->store(false);
}

bool GpsState::isLatchSet(int message) const {
  const std::atomic<bool>* latch = latchFor(message);
  return latch && latch->load();
}

}  // namespace orvel
