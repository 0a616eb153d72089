#pragma once
// The satellites in view as GSV sentences describe them, kept per talker so that the lists
// of several constellations in one burst (GPGSV, GLGSV, GAGSV, ...) add up instead of
// replacing each other. A receiver that reports several signals of one constellation sends
// one list per signal; the same satellite then appears in each and is kept once, with its
// strongest signal. After every sentence the merged list is handed to the GPS sink.
#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "gps/gps_fix.h"
#include "gps/gps_sink.h"

namespace orvel {

class NmeaSatellites {
 public:
  explicit NmeaSatellites(GpsSink& sink) : sink_(sink) {}

  // Longest list kept per talker, and most talkers kept at once.
  static constexpr uint32_t kMaxPerTalker = 64;
  static constexpr size_t kMaxTalkers = 16;

  // A new burst begins: the first list that starts in it replaces everything known so far.
  void beginBurst() { freshBurst_ = true; }
  // Forgets every list (what the sink was given stays).
  void clear();

  // One GSV message of `talker`: message `number` of `count`, `inView` satellites announced,
  // and the satellites whose number field was present. Hands the merged list on, and tells
  // the sink that the satellites changed after the last message of a list.
  void addMessage(std::string_view talker, uint32_t count, uint32_t number, uint32_t inView,
                  std::span<const SatelliteInfo> satellites);

  // The merged list as published: every talker's satellites in order of first appearance,
  // then zero entries up to the announced total.
  std::vector<SatelliteInfo> merged() const;

 private:
  struct TalkerList {
    std::array<char, 2> talker{};
    uint32_t announced = 0;
    std::vector<SatelliteInfo> satellites;
  };
  TalkerList* find(std::string_view talker);
  void merge(TalkerList& list, const SatelliteInfo& info);
  void publish() const;

  GpsSink& sink_;
  std::vector<TalkerList> lists_;
  bool freshBurst_ = true;
};

}  // namespace orvel
