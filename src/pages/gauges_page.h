#pragma once
// The gauges page: ten cells in a grid of two columns and five rows, each showing one gauge
// type chosen by the user and kept in the setting "Gauge_<cell>". Tap and hold on a cell
// offers the choice dialog and a reset to the initial set.
#include <array>
#include <string_view>

#include <QFont>
#include <QRect>

#include "pages/gauge.h"
#include "pages/gauge_types.h"
#include "pages/page.h"
#include "pages/page_context.h"

namespace orvel {

inline constexpr int kGaugeCellCount = 10;

// The key each cell shows until the user chooses another; cells 8 and 9 start empty.
inline constexpr std::array<std::u16string_view, kGaugeCellCount> kDefaultGaugeKeys{
    u"speed", u"azimuth", u"vspeed", u"elev", u"hdop", u"satellites", u"time", u"power", u"", u""};

// Cell geometry: 120 x 55 pixels on screens up to 240 wide, rows less high where five of
// them would not fit; wider screens share their width between the two columns and their
// height between the five rows. Fonts and text offsets scale with the cell.
struct GaugeGrid {
  int cellWidth = 120;
  int cellHeight = 55;
  double scale = 1.0;  // of the fonts and the text offsets
};
GaugeGrid gaugeGrid(int width, int height);
QRect gaugeCellRect(const GaugeGrid& grid, int cell);
// The cell under a point (it may name no cell, like a tap below the grid).
int gaugeCellAt(const GaugeGrid& grid, int x, int y);

class GaugesPage : public Page {
 public:
  explicit GaugesPage(const PageContext& context, std::filesystem::path powerSupplies = kPowerSupplyRoot);

  void initialize() override;
  void shutdown() override;
  std::u16string getTitle() const override { return u"Приборы"; }
  // A page that is not current hears of no fix: it catches up when it becomes current.
  void activate() override;
  void paint(QPainter& painter) override;
  void onFixChanged() override;
  void onContextMenu(int x, int y) override;
  int onCommand(int commandId) override;

  GaugeRegistration* cell(int index) const;
  void setCell(int index, GaugeRegistration* registration);
  // Reads every cell's setting again.
  void loadCells();
  // Every cell back to its default type, written to the settings.
  void resetCells();
  // The cell's type chosen in the choice dialog: shown and written to the settings.
  void chooseGauge(int cell, std::u16string_view key);
  GaugeRegistry& gauges() { return gauges_; }

 private:
  // The title font (16 pixels) and the bold value font (22), both scaled with the cell.
  void makeFonts(double scale);

  PageContext context_;
  GaugeRegistry gauges_;
  std::array<GaugeRegistration*, kGaugeCellCount> cells_{};
  double fontScale_ = 0.0;
  QFont titleFont_;
  QFont valueFont_;
  bool loaded_ = false;
  int tapX_ = 0;
  int tapY_ = 0;
};

}  // namespace orvel
