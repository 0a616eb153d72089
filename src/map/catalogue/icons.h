#pragma once
// The point icons, loaded from the program's resources (res/icons/<id>.png, drawn by
// tools/make_art): a white symbol on a round (places and services) or square (transport,
// parking, exits) badge of its category's colour, or, for small map symbols (settlements,
// hazards, natural features), a bare symbol with a thin white halo. Every icon is kIconSize
// square with its anchor in the middle pixel: draw it at the object's screen point minus
// kIconHotSpot in x and y.
#include <cstdint>
#include <span>

#include <QImage>

namespace orvel {

inline constexpr int kIconSize = 31;
inline constexpr int kIconHotSpot = 15;
inline constexpr uint16_t kWaypointIconId = 1400;

// Every icon id the resources hold, ascending: those the point table refers to (1000..1225)
// and the waypoint flag (1400).
std::span<const uint16_t> iconIds();

// The icon as a premultiplied-ARGB image, or a null image for an id the resources lack.
QImage loadIcon(uint16_t id);

}  // namespace orvel
