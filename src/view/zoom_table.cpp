// The 27 zoom steps. The scale bar is always 40 pixels long, so each step is chosen to make
// those 40 pixels a round ground length: 5, 8, 12, 20, 30, 50, 80 m, then 120 ... 800 in
// each following decade, up to 800 km.
#include <string>

#include "view/map_view.h"

namespace orvel {
namespace {

constexpr double kUnitsPerMetre = 0.4194304;  // 2^24 map units make 40,000 km
constexpr int32_t kBarPixels = 40;

// Map detail (bits of coordinate resolution) drawn at steps 1 ... 26.
constexpr int32_t kLevels[kZoomSteps - 1] = {24, 24, 24, 24, 24, 24, 24, 23, 23, 22, 21, 21, 20,
                                             19, 18, 18, 17, 16, 16, 15, 14, 14, 13, 12, 12, 11};

// Ground length of the bar at steps 2 ... 26 repeats this series once per decade.
constexpr int32_t kSeries[5] = {12, 20, 30, 50, 80};

int32_t unitsNumFor(int32_t metres) {
  return static_cast<int32_t>(static_cast<double>(metres) * kUnitsPerMetre);
}

std::u16string labelFor(int32_t barMetres) {
  std::string text;
  if (barMetres < 1000) {
    text = std::to_string(barMetres);
  } else {
    text = std::to_string(barMetres / 1000);
    if (barMetres % 1000 != 0) {
      text += '.';
      text += std::to_string(barMetres % 1000 / 100);
    }
  }
  std::u16string label(text.begin(), text.end());  // digits and the full stop only
  label += barMetres < 1000 ? u" м" : u" км";
  return label;
}

// Built in place: the entries' labels are views into labels_.
class ZoomTable {
 public:
  ZoomTable() {
    entries_[0] = ZoomEntry{u"5 м", 24, 40000, 0};
    entries_[0].unitsNum = unitsNumFor(5000);

    int32_t den = 40000;
    for (int i = 1; i < kZoomSteps; ++i) {
      int32_t bar = 8;
      if (i >= 2) {
        bar = kSeries[(i - 2) % 5];
        for (int decade = 0; decade < (i - 2) / 5; ++decade) bar *= 10;
      }
      // A finer denominator per decade keeps the numerator at four to five digits; one
      // metre (40 per bar) is the coarsest.
      while (static_cast<int64_t>(bar) * den / kBarPixels >= 100000 && den > kBarPixels) den /= 10;
      const int32_t metres = static_cast<int32_t>(static_cast<int64_t>(bar) * den / kBarPixels);
      labels_[i] = labelFor(bar);
      entries_[i] = ZoomEntry{labels_[i], kLevels[i - 1], den, unitsNumFor(metres)};
    }
  }
  ZoomTable(const ZoomTable&) = delete;
  ZoomTable& operator=(const ZoomTable&) = delete;

  const std::array<ZoomEntry, kZoomSteps>& entries() const { return entries_; }

 private:
  std::array<std::u16string, kZoomSteps> labels_;
  std::array<ZoomEntry, kZoomSteps> entries_;
};

// Forces the table to be built during start-up rather than at the first zoom change.
[[maybe_unused]] const auto& builtAtStart = zoomTable();

}  // namespace

const std::array<ZoomEntry, kZoomSteps>& zoomTable() {
  static const ZoomTable table;
  return table.entries();
}

}  // namespace orvel
