#pragma once
// The subdivision index of an IMG map: records of the TRE subdivisions section, their
// levels and areas, and the ranges of their object sections in the RGN data.
#include <cstdint>
#include <span>

#include "map/img/img_map_file.h"
#include "map/img/img_subdivision.h"

namespace orvel {

inline constexpr size_t kImgSubdivisionRecord = 16;
inline constexpr size_t kImgLastLevelRecord = 14;  // the last level lacks the child index

// Fills `out` (sized to the sum of the levels' counts) from the subdivisions section: 16-byte
// records for every level but the last, then 14-byte records for as long as a record's
// offset + 14 is less than the section size (the section ends with a 4-byte value). Entries
// left over keep their defaults. Returns false when the 16-byte records do not fit.
bool readImgSubdivisions(std::span<const uint8_t> section, std::span<const ImgLevel> levels,
                         std::span<ImgSubdivision> out);

// Gives each subdivision its level, shift and area. Levels must have 1 to 24 bits.
void placeImgSubdivisions(std::span<const ImgLevel> levels, std::span<ImgSubdivision> subdivisions);

// Finds the object sections of every subdivision in the RGN data. A section that runs past
// the end of the RGN data is cut at that end; one that starts past it, ends before it
// starts, or whose offset table does not fit, is marked absent (kNoSection).
void findImgSections(std::span<const uint8_t> rgnData, std::span<ImgSubdivision> subdivisions);

}  // namespace orvel
