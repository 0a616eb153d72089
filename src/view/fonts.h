#pragma once
// Fonts named by their face as the map styles and the user interface name them, made with
// the metrics those names imply, and the free families that stand in for the faces here.
//
// The faces are mapped to free families found on Debian, all in fontFamiliesFor():
//   "Century Gothic" -> "URW Gothic" (fonts-urw-base35, a geometric sans of the same
//                       build) when installed, else "DejaVu Sans", whose condensed bold is
//                       close to the narrow map label font once squeezed to its width
//   "Tahoma"         -> "DejaVu Sans"
//   "Arial"          -> "Liberation Sans" (metric-compatible), then "DejaVu Sans"
// Any other face is asked for as it is, with "DejaVu Sans" behind it.
#include <string_view>

#include <QFont>
#include <QString>
#include <QStringList>

namespace orvel {

// The families to ask Qt for, best first.
QStringList fontFamiliesFor(std::string_view face);

// The first of them: the family a font made for `face` reports as QFont::family().
QString qtFamilyFor(std::string_view face);

// A font as a Windows LOGFONT describes it: height is the character cell in pixels (ascent
// + descent), or, when negative, the em size; width is the average character width in
// pixels (0: the face's own); weight 0..1000 (0: normal).
// Needs a QGuiApplication (the sizes are measured).
QFont makeGdiFont(std::string_view face, int height, int width, int weight);

}  // namespace orvel
