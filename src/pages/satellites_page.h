#pragma once
// The satellites page: the receiver's sky (each satellite by elevation and azimuth, shaded
// by its signal), a signal bar per satellite, the position, the fix quality and the
// scanner's status line. It only reads the GPS state and repaints on each GPS message.
#include <array>

#include <QBrush>
#include <QFont>
#include <QPen>

#include "pages/page.h"
#include "pages/page_context.h"

namespace orvel {

// Where the page puts things for a client area of the given size. On a screen up to 240
// pixels wide the sky's radius is a quarter of the width and its centre a quarter of the
// height down, the signal band and the texts below it; wider screens keep the sky and the
// texts below it on the screen. A landscape screen too low for a sky of the small screen's
// size below which the band and texts fit (480 x 272) puts the sky on the left and the band,
// bars and texts beside it.
struct SatellitesLayout {
  int radius = 0;     // of the sky
  int cx = 0;         // centre of the sky
  int cy = 0;
  int base = 0;       // bottom row of the signal band, foot of the bars
  int barWidth = 0;
  int bandLeft = 0;   // the band's first and last columns
  int bandRight = 0;
  int firstBarX = 0;  // left edge of the first bar
  int textX = 0;      // the labels, and the values beside them
  int valueX = 0;
};
SatellitesLayout satellitesLayout(int width, int height);

// Grey level of brush `index` (0 white .. 31 black).
int satelliteGreyLevel(int index);
// The brush index for a signal-to-noise ratio.
int snrGreyIndex(uint32_t snr);
// The fix quality name the page shows ("None" when the fix gives neither count nor type).
std::u16string fixQualityName(uint32_t flags, uint32_t fixType);

class SatellitesPage : public Page {
 public:
  explicit SatellitesPage(const PageContext& context) : context_(context) {}

  void initialize() override;
  void shutdown() override;
  std::u16string getTitle() const override { return u"Спутники"; }
  void paint(QPainter& painter) override;
  void onStatusChanged() override;
  void onFixChanged() override;
  void onSatellitesChanged() override;

 private:
  PageContext context_;
  void makeResources();

  bool ready_ = false;
  QBrush background_;
  QBrush sky_;
  QPen skyPen_;
  QBrush bar_;
  std::array<QBrush, 32> greys_;
  QFont font_;
};


}  // namespace orvel
