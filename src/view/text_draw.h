#pragma once
// Small text and shape primitives shared by the map view, the labels and the pages. Text is
// placed the way the program always placed it: a single line anchored at a point by format
// flags, never clipped, '&' drawn as itself.
#include <string_view>

#include <QColor>
#include <QSize>

class QFont;
class QPainter;

namespace orvel {

class TextMeasure;
struct DrawingObjects;

// Anchoring flags (their Windows values, which stored formats use).
inline constexpr unsigned kTextLeft = 0x0;
inline constexpr unsigned kTextCenter = 0x1;   // horizontal middle at x
inline constexpr unsigned kTextRight = 0x2;    // right edge (exclusive) at x
inline constexpr unsigned kTextVCenter = 0x4;  // vertical middle at y
inline constexpr unsigned kTextBottom = 0x8;   // bottom edge (exclusive) at y
inline constexpr unsigned kTextBottomCenter = kTextCenter | kTextBottom;

// Width and height of one line of text in `font`: the advance of the whole string and the
// font's cell height (ascent + descent).
QSize textExtent(const QFont& font, std::u16string_view text);

// Draws `text` as one line in the painter's font and pen colour. `format` picks which point
// of the text's box lies at (x, y): 0 top left, kTextBottomCenter bottom middle, and so on.
// Text drawn again and again is measured with the drawer's kept advances, when given.
void drawTextAt(QPainter& painter, int x, int y, std::u16string_view text, unsigned format,
                TextMeasure* measure = nullptr);

// Text with a one-pixel white halo: white at the four diagonal neighbours, then `colour` at
// (x, y). The painter's pen is left as it was.
void drawHaloText(QPainter& painter, int x, int y, std::u16string_view text, unsigned format,
                  const QColor& colour);

// Two triangles around (cx, cy) turned by `angle` radians clockwise: the blue half towards
// the top when angle is 0, the red half towards the bottom; black one-pixel outline.
void drawNorthArrow(QPainter& painter, const DrawingObjects& objects, int cx, int cy, int length,
                    int halfWidth, float angle);

}  // namespace orvel
