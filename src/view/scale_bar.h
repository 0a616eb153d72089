#pragma once
// The scale bar: a fixed 40-pixel bracket whose label names the ground length it covers at
// the current zoom step.
class QPainter;

namespace orvel {

class MapView;
struct DrawingObjects;

inline constexpr int kScaleBarLength = 40;

// Draws the bar with its base line's left end at (x, y): ticks 4 pixels up at both ends,
// white 3-pixel outline under a black 1-pixel line, the zoom step's label centred above.
void drawScaleBar(QPainter& painter, const DrawingObjects& objects, const MapView& view, int x, int y);

}  // namespace orvel
