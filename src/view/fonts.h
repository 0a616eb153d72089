#pragma once
// Font faces as the map styles and drawing objects name them, and the free families that
// stand in for them on this system.
#include <string_view>

#include <QString>

namespace orvel {

// The installed family to ask Qt for when a style names `face` ("Arial", "Tahoma", ...).
// Faces without a row of their own are passed through unchanged, so that fontconfig's own
// substitution still applies.
QString qtFamilyFor(std::string_view face);

}  // namespace orvel
