#include "view/fonts.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>

namespace orvel {

QStringList fontFamiliesFor(std::string_view face) {
  if (face == "Century Gothic") return {QStringLiteral("URW Gothic"), QStringLiteral("DejaVu Sans")};
  if (face == "Tahoma") return {QStringLiteral("DejaVu Sans")};
  if (face == "Arial") return {QStringLiteral("Liberation Sans"), QStringLiteral("DejaVu Sans")};
  return {QString::fromUtf8(face.data(), static_cast<qsizetype>(face.size())),
          QStringLiteral("DejaVu Sans")};
}

QString qtFamilyFor(std::string_view face) { return fontFamiliesFor(face).first(); }

QFont makeGdiFont(std::string_view face, int height, int width, int weight) {
  QFont font;
  font.setFamilies(fontFamiliesFor(face));
  font.setStyleHint(QFont::SansSerif);
  // GDI sets text without kerning; measuring relies on it (text_measure.h).
  font.setKerning(false);
  font.setWeight(weight <= 0 ? QFont::Normal
                             : static_cast<QFont::Weight>(std::clamp(weight, 100, 900)));
  if (height < 0) {
    font.setPixelSize(-height);
  } else if (height > 0) {
    // Measure the cell at a large size and scale, so rounding does not pile up.
    constexpr int kProbe = 100;
    font.setPixelSize(kProbe);
    const QFontMetricsF probe(font);
    const qreal cell = probe.ascent() + probe.descent();
    const int em = cell > 0 ? static_cast<int>(std::floor(height * kProbe / cell + 0.5)) : height;
    font.setPixelSize(std::max(1, em));
  }
  if (width > 0) {
    const qreal natural = QFontMetricsF(font).averageCharWidth();
    if (natural > 0) {
      const int stretch = static_cast<int>(std::floor(100.0 * width / natural + 0.5));
      font.setStretch(std::clamp(stretch, 1, 4000));
    }
  }
  return font;
}

}  // namespace orvel
