#include "view/text_measure.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include <QFont>
#include <QFontMetrics>
#include <QFontMetricsF>
#include <QString>

namespace orvel {
namespace {

// Latin, Latin-1, Latin Extended A and B, Greek and Cyrillic: what map labels are made of.
constexpr char16_t kKeptChars = 0x500;
// Fonts beyond this many are measured without a table.
constexpr size_t kKeptFonts = 16;

QString borrowed(std::u16string_view text) {
  return QString::fromRawData(reinterpret_cast<const QChar*>(text.data()), qsizetype(text.size()));
}

}  // namespace

// Advances are kept in 64ths of a pixel, as the layout adds them up before rounding.
struct FontAdvances {
  explicit FontAdvances(const QFont& f) : font(f), metrics(f), exact(f), height(metrics.height()) {
    advance.fill(-1);
  }

  QFont font;
  QFontMetrics metrics;
  QFontMetricsF exact;
  int height;
  std::array<int32_t, kKeptChars> advance;  // -1 until measured
};

TextMeasure::TextMeasure() = default;
TextMeasure::~TextMeasure() = default;

FontAdvances* TextMeasure::tableFor(const QFont& font) {
  for (const auto& table : tables_) {
    if (table->font == font) return table.get();
  }
  if (tables_.size() >= kKeptFonts) return nullptr;
  tables_.push_back(std::make_unique<FontAdvances>(font));
  return tables_.back().get();
}

QSize TextMeasure::measureText(const QFont& font, std::u16string_view text) {
  FontAdvances* table = tableFor(font);
  if (table == nullptr) {
    const QFontMetrics metrics(font);
    return {metrics.horizontalAdvance(borrowed(text)), metrics.height()};
  }
  if (!font.kerning()) {
    int64_t width = 0;  // 64ths of a pixel
    bool simple = true;
    for (const char16_t c : text) {
      // 'f' starts the ligatures of common fonts (fi, fl, ff): such texts are laid out.
      if (c >= kKeptChars || c == u'f') {
        simple = false;
        break;
      }
      int32_t& advance = table->advance[c];
      if (advance < 0) advance = static_cast<int32_t>(std::lround(table->exact.horizontalAdvance(QChar(c)) * 64));
      width += advance;
    }
    // Rounded half up, as the layout rounds its sum.
    if (simple) return {static_cast<int>((width + 32) >> 6), table->height};
  }
  return {table->metrics.horizontalAdvance(borrowed(text)), table->height};
}

}  // namespace orvel
