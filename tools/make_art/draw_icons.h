#pragma once
// The point icons as the program's own drawings: a white symbol on a round (places and
// services) or square (transport, parking, exits) badge of its category's colour, or, for
// small map symbols (settlements, hazards, natural features), a bare symbol with a thin
// white halo. The catalogue loads them from the files made of these drawings.
#include <cstdint>
#include <span>

#include <QImage>

namespace orvel::art {

// Every icon id that drawIcon draws, ascending: those the point table refers to (1000..1225)
// and the waypoint flag (1400).
std::span<const uint16_t> drawnIconIds();

// A new kIconSize square premultiplied-ARGB image of the icon, or a null image for an
// unknown id. Needs a QGuiApplication (letters in some icons are set in a font).
QImage drawIcon(uint16_t id);

}  // namespace orvel::art
