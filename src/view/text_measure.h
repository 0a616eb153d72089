#pragma once
// Measuring single lines of text often and cheaply. A font that does not kern (as the
// program's fonts, made like GDI fonts, do not) sets a text as the sum of its characters'
// advances, so the width of a common character is looked up once per font and kept; texts
// with other characters, or with an 'f' that may start a ligature (fi, fl), are laid out
// in full.
#include <memory>
#include <string_view>
#include <vector>

#include <QSize>

class QFont;

namespace orvel {

struct FontAdvances;

// Kept advances of the fonts measured; whoever draws text again and again owns one (and
// drops it before the GUI application goes).
class TextMeasure {
 public:
  TextMeasure();
  ~TextMeasure();
  TextMeasure(const TextMeasure&) = delete;
  TextMeasure& operator=(const TextMeasure&) = delete;

  // Width (advance of the whole string) and height (the font's cell, ascent + descent) of
  // one line of text; the same figures as QFontMetrics gives.
  QSize measureText(const QFont& font, std::u16string_view text);

 private:
  FontAdvances* tableFor(const QFont& font);

  std::vector<std::unique_ptr<FontAdvances>> tables_;
};

}  // namespace orvel
