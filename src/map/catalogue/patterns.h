#pragma once
// The fill patterns of the catalogue: small opaque tiles loaded from the program's resources
// (res/patterns/<id>.png, drawn by tools/make_art). Brushes made from them repeat the tile
// from the painter's brush origin, which the map drawing sets to the projected map centre so
// the patterns stay fixed to the ground while the map moves.
#include <QImage>

namespace orvel {

inline constexpr int kFirstPatternId = 116;
inline constexpr int kLastPatternId = 122;
inline constexpr int kDefaultFillPatternId = 120;
inline constexpr int kPatternTileSize = 16;

// 116 cemetery crosses, 117 orchard rows, 118 scrub tufts, 119 tundra, 120 the neutral
// hatch of unknown areas (also golf courses), 121 intermittent water, 122 marsh: an RGB32
// tile. A null image for any other id.
QImage loadPatternTile(int bitmapId);

}  // namespace orvel
