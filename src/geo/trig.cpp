#include "geo/trig.h"

#include <array>
#include <cstddef>

#include "geo/units.h"

namespace orvel {
namespace {

// sin(k degrees), k = 0 ... 90.
constexpr std::array<float, 91> kSineTable = {
    0.0f, 0.0174524058f, 0.0348994955f, 0.0523359552f, 0.0697564706f, 0.0871557444f,
    0.104528464f, 0.121869341f, 0.139173105f, 0.156434461f, 0.173648179f, 0.190808997f,
    0.207911685f, 0.224951059f, 0.241921902f, 0.258819044f, 0.275637358f, 0.29237169f,
    0.309017003f, 0.325568169f, 0.342020154f, 0.35836795f, 0.37460658f, 0.390731126f,
    0.406736642f, 0.42261827f, 0.438371152f, 0.453990489f, 0.469471574f, 0.484809607f,
    0.5f, 0.515038073f, 0.529919267f, 0.544639051f, 0.559192896f, 0.57357645f,
    0.587785244f, 0.601815045f, 0.615661502f, 0.629320383f, 0.642787635f, 0.656059027f,
    0.669130623f, 0.681998372f, 0.694658399f, 0.707106769f, 0.719339788f, 0.7313537f,
    0.74314481f, 0.754709601f, 0.766044438f, 0.777145982f, 0.788010776f, 0.798635483f,
    0.809017003f, 0.819152057f, 0.829037547f, 0.838670552f, 0.848048091f, 0.857167304f,
    0.866025388f, 0.874619722f, 0.882947564f, 0.891006529f, 0.898794055f, 0.906307817f,
    0.91354543f, 0.920504868f, 0.927183867f, 0.933580399f, 0.939692616f, 0.945518553f,
    0.95105654f, 0.956304729f, 0.96126169f, 0.965925813f, 0.970295727f, 0.974370062f,
    0.978147626f, 0.981627166f, 0.98480773f, 0.987688363f, 0.990268052f, 0.992546141f,
    0.994521916f, 0.99619472f, 0.997564077f, 0.99862951f, 0.999390841f, 0.99984771f,
    1.0f,
};

// atan(k / 100) in radians, k = 0 ... 100.
constexpr std::array<float, 101> kAtanTable = {
    0.0f, 0.00999966636f, 0.0199973341f, 0.0299910046f, 0.0399786867f, 0.0499583967f,
    0.0599281564f, 0.069885999f, 0.0798299834f, 0.0897581726f, 0.0996686518f, 0.109559529f,
    0.119428925f, 0.129275009f, 0.139095947f, 0.148889944f, 0.158655256f, 0.168390155f,
    0.178092942f, 0.187761948f, 0.197395563f, 0.206992194f, 0.216550305f, 0.226068392f,
    0.23554498f, 0.244978666f, 0.254368067f, 0.26371184f, 0.273008704f, 0.282257408f,
    0.291456789f, 0.300605685f, 0.309702933f, 0.31874755f, 0.327738494f, 0.336674809f,
    0.345555574f, 0.354379922f, 0.36314702f, 0.371856064f, 0.380506366f, 0.389097244f,
    0.39762798f, 0.406098068f, 0.414506882f, 0.422853917f, 0.431138754f, 0.439360887f,
    0.447519988f, 0.45561564f, 0.463647604f, 0.471615583f, 0.479519278f, 0.48735857f,
    0.495133251f, 0.502843201f, 0.510488331f, 0.518068552f, 0.525583804f, 0.533034086f,
    0.540419519f, 0.547740042f, 0.554995716f, 0.562186718f, 0.569313169f, 0.576375246f,
    0.58337301f, 0.590306759f, 0.597176671f, 0.603982985f, 0.610725939f, 0.617405891f,
    0.62402308f, 0.630577743f, 0.637070358f, 0.643501103f, 0.649870455f, 0.656178713f,
    0.662426293f, 0.668613553f, 0.67474097f, 0.680808842f, 0.686817646f, 0.692767859f,
    0.698659837f, 0.704494059f, 0.710271001f, 0.715991139f, 0.721654832f, 0.727262676f,
    0.732815087f, 0.738312602f, 0.743755579f, 0.749144614f, 0.754480183f, 0.759762764f,
    0.764992833f, 0.770170927f, 0.775297523f, 0.780373096f, 0.785398185f,
};

// floor(v * scale + 0.5): product in single precision, half added in double precision.
int32_t roundedIndex(float v, float scale) {
  const float product = v * scale;
  return floorToInt(static_cast<float>(static_cast<double>(product) + 0.5));
}

// Angles beyond two full turns are outside the contract, but must not read outside a table.
template <std::size_t N>
float entry(const std::array<float, N>& table, int32_t k) {
  if (k < 0) k = 0;
  if (k >= static_cast<int32_t>(N)) k = static_cast<int32_t>(N) - 1;
  return table[static_cast<std::size_t>(k)];
}

// Quarter turns in the angle, folded to be non-negative.
float quarterTurns(float radians) {
  float q = static_cast<float>(static_cast<double>(radians) / (static_cast<double>(kPi) * 0.5));
  if (radians < 0) q = -q;
  return q;
}

}  // namespace

float tableSin(float radians) {
  float q = quarterTurns(radians);
  const bool lowerHalf = q > 2;
  if (lowerHalf) q = 4 - q;
  if (q > 1) q = 2 - q;
  float value = entry(kSineTable, roundedIndex(q, 90.0f));
  if (lowerHalf) value = -value;
  if (radians < 0) value = -value;
  return value;
}

float tableCos(float radians) {
  float q = quarterTurns(radians);
  if (q > 2) q = 4 - q;
  const bool leftHalf = q > 1;
  if (leftHalf) q = 2 - q;
  float value = entry(kSineTable, roundedIndex(1 - q, 90.0f));
  if (leftHalf) value = -value;
  return value;
}

float tableAtan(int32_t num, int32_t den) {
  if (num == 0) return 0.0f;
  if (den == 0) return num < 1 ? kPi * -0.5f : kPi * 0.5f;
  // 64 bits: negating INT32_MIN must not overflow.
  const int64_t s = den < 0 ? -static_cast<int64_t>(num) : static_cast<int64_t>(num);
  const float p = static_cast<float>(s < 0 ? -s : s);
  const float d = static_cast<float>(den < 0 ? -static_cast<int64_t>(den) : den);
  float v;
  if (p < d) {
    v = entry(kAtanTable, roundedIndex(p / d, 100.0f));
  } else {
    v = kPi * 0.5f - entry(kAtanTable, roundedIndex(d / p, 100.0f));
  }
  return s >= 0 ? v : -v;
}

}  // namespace orvel
