#pragma once
// Table-driven trigonometry with one-degree resolution: enough for the 1024- and 255-based
// integer factors of the view, and cheap on processors without a floating-point unit.
#include <cstdint>

namespace orvel {

inline constexpr float kPi = 3.1415927f;

// Valid for |radians| <= 2 pi.
float tableSin(float radians);
float tableCos(float radians);
// Arctangent of num / den folded into [-pi/2, pi/2]; 0 when num is 0.
float tableAtan(int32_t num, int32_t den);

}  // namespace orvel
