#pragma once
// One entry of the IMG subdivision index built when a map is loaded: where a subdivision's
// four object sections lie in the RGN data, and the area it covers.
#include <array>
#include <cstdint>

#include "geo/units.h"

namespace orvel {

enum ImgSection : int { kSectionPoints = 0, kSectionIndexedPoints = 1, kSectionPolylines = 2, kSectionPolygons = 3 };

inline constexpr uint8_t kImgFlagPoints = 0x10;
inline constexpr uint8_t kImgFlagIndexedPoints = 0x20;
inline constexpr uint8_t kImgFlagPolylines = 0x40;
inline constexpr uint8_t kImgFlagPolygons = 0x80;
inline constexpr uint32_t kNoSection = 0xFFFFFFFFu;

struct ImgSubdivision {
  uint32_t rgnOffset = 0;   // relative to the RGN data
  uint8_t flags = 0;        // kImgFlag* bits
  uint16_t halfWidth = 0;   // 15 bits
  uint16_t halfHeight = 0;
  uint32_t centreX = 0;     // 24-bit, as read (not sign-extended)
  uint32_t centreY = 0;
  MapRect bounds;           // empty until the level walk fills it
  uint16_t level = 0;       // index of its level record
  uint8_t shift = 0;        // 24 - bits per coordinate of its level
  // Per section (ImgSection order): start relative to the RGN data, and length in bytes;
  // both kNoSection when the section is absent.
  std::array<uint32_t, 4> sectionStart{kNoSection, kNoSection, kNoSection, kNoSection};
  std::array<uint32_t, 4> sectionLength{kNoSection, kNoSection, kNoSection, kNoSection};
};

}  // namespace orvel
