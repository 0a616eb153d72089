#pragma once
// Drawing objects that many parts of the program share: two label fonts, the white outline
// pen and the black thin pen, and sixteen solid colour brushes. Made once at start-up (after
// the GUI application exists) by the program's owner and handed to whatever draws with them.
#include <array>
#include <cstdint>

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QPen>

namespace orvel {

// A Windows-style colour value, 0x00BBGGRR, as the colour tables are written.
constexpr QRgb colorRefToRgb(uint32_t bgr) {
  return 0xFF000000u | ((bgr & 0xFFu) << 16) | (bgr & 0xFF00u) | ((bgr >> 16) & 0xFFu);
}
inline QColor colorRefColor(uint32_t bgr) { return QColor::fromRgb(colorRefToRgb(bgr)); }

// The sixteen solid brushes, in the order they are made.
enum class SolidBrush : uint8_t {
  Black, DarkRed, DarkGreen, Olive, Navy, Purple, Teal, DarkGrey,
  Silver, Red, Green, Yellow, Blue, Magenta, Cyan, White,
};
inline constexpr int kSolidBrushCount = 16;
// Their colours as 0x00BBGGRR. The eighth is a darker grey (96,96,96) than the usual 128.
inline constexpr std::array<uint32_t, kSolidBrushCount> kSolidBrushColors{
    0x000000, 0x000080, 0x008000, 0x008080, 0x800000, 0x800080, 0x808000, 0x606060,
    0xC0C0C0, 0x0000FF, 0x00FF00, 0x00FFFF, 0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF,
};

struct DrawingObjects {
  DrawingObjects();

  QFont smallFont;   // "Arial", 12-pixel cell: scale bar, waypoint names
  QFont largeFont;   // "Arial", 14-pixel cell
  QPen outlinePen;   // white, 3 pixels
  QPen thinPen;      // black, 1 pixel
  std::array<QBrush, kSolidBrushCount> brushes;

  const QBrush& brush(SolidBrush which) const { return brushes[static_cast<size_t>(which)]; }
};

// A solid cosmetic pen as the program's pens are: round ends and joins when wider than one
// pixel, and one-pixel lines that leave out their last point.
QPen makeSolidPen(const QColor& colour, int width);

}  // namespace orvel
