#pragma once
// Waypoints and the Waypoints.bin layout, independent of where the list lives.
//
// Waypoints.bin, little-endian: "WO", a header length h (2), the fixed record size f (32),
// the strings per record k (4); records from offset 3 + h. Each record is the fixed record
// (f bytes) followed by k strings, each a u32 length n in UTF-16 code units and n units
// without terminator.
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "geo/units.h"

namespace orvel {

inline constexpr size_t kWaypointRecordSize = 32;
inline constexpr size_t kWaypointStrings = 4;
inline constexpr size_t kWaypointName = 0;     // drawn on the map, numbered automatically
inline constexpr size_t kWaypointComment = 1;  // edited beside the name
inline constexpr uint8_t kNewWaypointAttributeA = 18;
inline constexpr uint8_t kNewWaypointAttributeB = 1;

struct Waypoint {
  // The fixed record, field by field as it stands in the file; reserved fields are carried
  // through load and save unchanged.
  uint32_t reserved0 = 0;
  Semicircles lon = 0;
  Semicircles lat = 0;
  double time = 0.0;  // UTC automation date, 0 when unknown
  float altitude = 0.0f;  // metres, 0 when unknown
  uint32_t reserved24 = 0;
  uint8_t attributeA = 0;
  uint8_t attributeB = 0;
  uint16_t reserved30 = 0;
  std::array<std::u16string, kWaypointStrings> strings;

  // The name up to its first zero character, as it is shown and compared.
  std::u16string_view name() const;
  friend bool operator==(const Waypoint&, const Waypoint&) = default;
};

// Replaces one of the four strings by a copy of `text` up to its first zero character; a
// slot beyond the four does nothing.
void setWaypointString(Waypoint& waypoint, size_t slot, std::u16string_view text);

// Reads the records of a Waypoints.bin in file order into `out`. Returns false when the file
// is damaged: no "WO" or header, or a record that runs past the end; `out` then holds the
// whole records before the damage. Strings beyond the fourth are dropped; a record shorter
// than 32 bytes reads its fixed fields from what follows it, as the format has always done.
bool parseWaypointFile(std::span<const uint8_t> bytes, std::vector<Waypoint>& out);

// The five header bytes, then each waypoint's record, in the order given.
std::string waypointFileHeader();
void appendWaypointRecord(std::string& bytes, const Waypoint& waypoint);

}  // namespace orvel
