#pragma once
// Every dialog fits the screen it opens on. Small screens, the car and handheld ones of
// 640 pixels or less in either direction, give a dialog the whole screen: its buttons move
// into a bar at the top (OK reads "Готово"), where a finger reaches them first, and the rest
// scrolls where it does not fit. Larger screens show a dialog at its natural size inside
// the main window, and never beyond the screen.
#include <QRect>

class QDialog;

namespace orvel {

inline constexpr int kSmallScreen = 640;

// True for a screen area of at most kSmallScreen pixels in either direction.
bool isSmallScreen(const QRect& screen);

// Fits `dialog` (not yet shown) to `screen`, the screen's area, over `window`, the main
// window's frame. A dialog fitted before is fitted again without being rebuilt.
void fitDialogToScreen(QDialog& dialog, const QRect& screen, const QRect& window);

}  // namespace orvel
