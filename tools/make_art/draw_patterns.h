#pragma once
// The fill patterns as the program's own drawings: small opaque tiles of two inks on a
// background.
#include <QImage>

namespace orvel::art {

// 116 cemetery crosses, 117 orchard rows, 118 scrub tufts, 119 tundra, 120 the neutral
// hatch of unknown areas (also golf courses), 121 intermittent water, 122 marsh: an RGB32
// tile kPatternTileSize square. A null image for any other id.
QImage drawPatternTile(int bitmapId);

}  // namespace orvel::art
