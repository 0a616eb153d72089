#pragma once
// The compass page: a dial with a tick every ten degrees, turned by the course, and the
// course arrow while the fix carries one. Defined but not listed in the page menu.
#include "pages/page.h"
#include "pages/page_context.h"

namespace orvel {

// Centre and radius of the dial for a client area of the given size: a third of the width
// on small screens, a third of the shorter side on wider ones.
struct CompassLayout {
  int cx = 0;
  int cy = 0;
  int radius = 0;
};
CompassLayout compassLayout(int width, int height);

class CompassPage : public Page {
 public:
  explicit CompassPage(const PageContext& context) : context_(context) {}

  std::u16string getTitle() const override { return u"Компас"; }
  void paint(QPainter& painter) override;
  void onFixChanged() override;

 private:
  PageContext context_;
};


}  // namespace orvel
