#pragma once
// The pages besides the map: gauges and satellites (listed in the page menu) and the compass
// (defined, never listed). Until their contents arrive each shows its title on white.
#include "pages/page.h"

namespace orvel {

class TitledPage : public Page {
 public:
  void paint(QPainter& painter) override;
};

class GaugesPage : public TitledPage {
 public:
  std::u16string getTitle() const override { return u"Приборы"; }
};

class SatellitesPage : public TitledPage {
 public:
  std::u16string getTitle() const override { return u"Спутники"; }
};

class CompassPage : public TitledPage {
 public:
  std::u16string getTitle() const override { return u"Компас"; }
  void onFixChanged() override;
};

GaugesPage& gaugesPage();
SatellitesPage& satellitesPage();
CompassPage& compassPage();

}  // namespace orvel
