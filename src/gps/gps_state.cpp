#include "gps/gps_state.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <mutex>

namespace orvel {
namespace {

struct State {
  std::mutex lock;  // guards everything below but the latches and the announced count
  uint32_t satellitesFilled = 0;
  std::atomic<uint32_t> satellitesInView{0};
  std::vector<SatelliteInfo> satellites;
  GpsFix fix;
  std::array<char16_t, kStatusTextLength + 1> statusText{};
};

State& state() {
  static State s;
  return s;
}

std::array<std::atomic<bool>, 3> latches{};

std::mutex posterLock;  // guards only the installed poster, never held while it runs
std::shared_ptr<const GpsMessagePoster> installedPoster;

std::atomic<bool>* latchFor(int message) {
  const int index = message - kMsgStatusChanged;
  if (index < 0 || index >= static_cast<int>(latches.size())) return nullptr;
  return &latches[static_cast<size_t>(index)];
}

size_t statusLength(const std::array<char16_t, kStatusTextLength + 1>& text) {
  return static_cast<size_t>(std::find(text.begin(), text.end(), u'\0') - text.begin());
}

}  // namespace

std::string_view fixTypeName(uint32_t code) {
  static constexpr std::array<std::string_view, 12> kNames{
      "Invalid", "Unknown", "2D", "3D", "2D diff", "3d diff", "Prec", "RTK", "Float RTK",
      "Estimated", "Manual", "Simulation"};
  return code < kNames.size() ? kNames[code] : kNames[kFixTypeUnknown];
}

void setStatusText(std::u16string_view text) {
  text = text.substr(0, std::min(text.find(u'\0'), kStatusTextLength));
  {
    State& s = state();
    std::lock_guard guard(s.lock);
    std::copy(text.begin(), text.end(), s.statusText.begin());
    s.statusText[text.size()] = u'\0';
  }
  postGpsMessage(kMsgStatusChanged);
}

char16_t* getStatusText(char16_t* buffer, size_t capacity) {
  capacity = std::min(capacity, kStatusTextLength);
  if (capacity == 0) return buffer;
  State& s = state();
  std::lock_guard guard(s.lock);
  const size_t count = std::min(statusLength(s.statusText), capacity - 1);
  std::copy_n(s.statusText.begin(), count, buffer);
  buffer[count] = u'\0';
  buffer[capacity - 1] = u'\0';
  return buffer;
}

GpsFix& getFix(GpsFix& out) {
  State& s = state();
  std::lock_guard guard(s.lock);
  out = s.fix;
  return out;
}

GpsFix currentFix() {
  GpsFix fix;
  return getFix(fix);
}

GpsFix exchangeFix(const GpsFix& newFix) {
  State& s = state();
  std::lock_guard guard(s.lock);
  const GpsFix old = s.fix;
  s.fix = newFix;
  return old;
}

void resetSatellites(uint32_t count) {
  count = std::min(count, kMaxSatellites);
  // The new list is made before the lock is taken: the lock covers only the swap.
  std::vector<SatelliteInfo> fresh(count);
  State& s = state();
  {
    std::lock_guard guard(s.lock);
    s.satellites.swap(fresh);
    s.satellitesFilled = 0;
    s.satellitesInView.store(count);
  }
}

void addSatellite(const SatelliteInfo& info) {
  State& s = state();
  std::lock_guard guard(s.lock);
  if (s.satellitesFilled < s.satellites.size()) s.satellites[s.satellitesFilled++] = info;
}

void satellitesChanged() { postGpsMessage(kMsgSatellitesChanged); }

uint32_t getSatelliteCount() { return state().satellitesInView.load(); }

SatelliteInfo& getSatellite(uint32_t index, SatelliteInfo& out) {
  State& s = state();
  {
    std::lock_guard guard(s.lock);
    if (index < s.satellites.size()) {
      out = s.satellites[index];
      return out;
    }
  }
  out = SatelliteInfo{};
  return out;
}

GpsSnapshot gpsSnapshot() {
  GpsSnapshot snapshot;
  State& s = state();
  snapshot.satellites.reserve(s.satellitesInView.load());  // usually no allocation under the lock
  snapshot.statusText.reserve(kStatusTextLength);
  std::lock_guard guard(s.lock);
  snapshot.fix = s.fix;
  snapshot.satellites.assign(s.satellites.begin(), s.satellites.end());
  snapshot.statusText.assign(s.statusText.data(), statusLength(s.statusText));
  return snapshot;
}

void setGpsMessagePoster(GpsMessagePoster poster) {
  auto installed = poster ? std::make_shared<const GpsMessagePoster>(std::move(poster)) : nullptr;
  std::lock_guard guard(posterLock);
  installedPoster = std::move(installed);
}

void postGpsMessage(int message) {
  std::atomic<bool>* latch = latchFor(message);
  if (!latch || latch->exchange(true)) return;
  std::shared_ptr<const GpsMessagePoster> poster;
  {
    std::lock_guard guard(posterLock);
    poster = installedPoster;
  }
  if (poster) (*poster)(message);
}

void clearLatch(int message) {
  if (std::atomic<bool>* latch = latchFor(message)) latch->store(false);
}

bool isLatchSet(int message) {
  const std::atomic<bool>* latch = latchFor(message);
  return latch && latch->load();
}

void resetGpsState() {
  std::vector<SatelliteInfo> old;
  State& s = state();
  {
    std::lock_guard guard(s.lock);
    s.fix = GpsFix{};
    old.swap(s.satellites);
    s.satellitesFilled = 0;
    s.satellitesInView.store(0);
    s.statusText.fill(u'\0');
  }
  for (auto& latch : latches) latch.store(false);
}

}  // namespace orvel
