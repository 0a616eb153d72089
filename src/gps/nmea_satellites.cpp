#include "gps/nmea_satellites.h"

#include <algorithm>

namespace orvel {
namespace {

std::array<char, 2> talkerKey(std::string_view talker) {
  std::array<char, 2> key{};
  for (size_t i = 0; i < key.size() && i < talker.size(); ++i) key[i] = talker[i];
  return key;
}

}  // namespace

void NmeaSatellites::clear() {
  lists_.clear();
  freshBurst_ = true;
}

NmeaSatellites::TalkerList* NmeaSatellites::find(std::string_view talker) {
  const auto key = talkerKey(talker);
  for (TalkerList& list : lists_) {
    if (list.talker == key) return &list;
  }
  return nullptr;
}

void NmeaSatellites::merge(TalkerList& list, const SatelliteInfo& info) {
  for (SatelliteInfo& known : list.satellites) {
    if (known.prn != info.prn) continue;
    // The same satellite on another signal: keep the strongest signal and any position.
    known.snr = std::max(known.snr, info.snr);
    if (known.elevation == 0 && known.azimuth == 0) {
      known.elevation = info.elevation;
      known.azimuth = info.azimuth;
    }
    return;
  }
  if (list.satellites.size() < list.announced) list.satellites.push_back(info);
}

void NmeaSatellites::addMessage(std::string_view talker, uint32_t count, uint32_t number,
                                uint32_t inView, std::span<const SatelliteInfo> satellites) {
  TalkerList* list = nullptr;
  if (number == 1) {
    if (freshBurst_) {
      lists_.clear();
      freshBurst_ = false;
    }
    const uint32_t announced = std::min(inView, kMaxPerTalker);
    list = find(talker);
    if (list) {
      list->announced = std::max(list->announced, announced);
    } else if (lists_.size() < kMaxTalkers) {
      lists_.push_back(TalkerList{talkerKey(talker), announced, {}});
      list = &lists_.back();
    }
  } else {
    // A list whose first message was lost fills only what is already there.
    list = find(talker);
  }
  if (list) {
    for (const SatelliteInfo& info : satellites) merge(*list, info);
    publish();
  }
  if (number == count) sink_.satellitesChanged();
}

std::vector<SatelliteInfo> NmeaSatellites::merged() const {
  std::vector<SatelliteInfo> all;
  size_t total = 0;
  for (const TalkerList& list : lists_) {
    total += std::max<size_t>(list.announced, list.satellites.size());
    all.insert(all.end(), list.satellites.begin(), list.satellites.end());
  }
  all.resize(std::max(total, all.size()));
  return all;
}

void NmeaSatellites::publish() const { sink_.setSatellites(merged()); }

}  // namespace orvel
