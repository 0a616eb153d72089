#pragma once
// One fix as a receiver reports it. Every field but `flags` means something only while its
// bit in `flags` is set; a decoder sets the bit when it stores the field. The record is
// copied whole by value and never merged with an older one.
#include <cstdint>
#include <string_view>

namespace orvel {

// Validity bits of GpsFix::flags.
inline constexpr uint32_t kFixTime = 0x0001;
inline constexpr uint32_t kFixPosition = 0x0002;  // longitude and latitude together
inline constexpr uint32_t kFixHorizontalError = 0x0004;
inline constexpr uint32_t kFixAltitude = 0x0008;
inline constexpr uint32_t kFixVerticalError = 0x0010;
inline constexpr uint32_t kFixGeoidSeparation = 0x0020;
inline constexpr uint32_t kFixReserved = 0x0040;  // no decoder sets it
inline constexpr uint32_t kFixCourse = 0x0080;
inline constexpr uint32_t kFixMagneticVariation = 0x0100;
inline constexpr uint32_t kFixSpeed = 0x0200;
inline constexpr uint32_t kFixVerticalSpeed = 0x0400;
inline constexpr uint32_t kFixSatellitesUsed = 0x0800;
inline constexpr uint32_t kFixType = 0x1000;
inline constexpr uint32_t kFixHdop = 0x2000;
inline constexpr uint32_t kFixVdop = 0x4000;

// What becomes invalid together when a receiver says it has no fix: position, both error
// estimates and both dilutions.
inline constexpr uint32_t kNoFixClearMask =
    kFixPosition | kFixHorizontalError | kFixVerticalError | kFixHdop | kFixVdop;  // 0x6016

// fixType codes.
inline constexpr uint32_t kFixTypeInvalid = 0;
inline constexpr uint32_t kFixTypeUnknown = 1;
inline constexpr uint32_t kFixType2D = 2;
inline constexpr uint32_t kFixType3D = 3;
inline constexpr uint32_t kFixType2DDiff = 4;
inline constexpr uint32_t kFixType3DDiff = 5;
inline constexpr uint32_t kFixTypePrecise = 6;
inline constexpr uint32_t kFixTypeRtk = 7;
inline constexpr uint32_t kFixTypeFloatRtk = 8;
inline constexpr uint32_t kFixTypeEstimated = 9;
inline constexpr uint32_t kFixTypeManual = 10;
inline constexpr uint32_t kFixTypeSimulation = 11;

struct GpsFix {
  double time = 0.0;            // kFixTime: UTC automation date (days since 1899-12-30)
  float longitude = 0.0f;       // kFixPosition: degrees, east positive
  float latitude = 0.0f;        // kFixPosition: degrees, north positive
  float horizontalError = 0.0f; // kFixHorizontalError: metres
  float altitude = 0.0f;        // kFixAltitude: metres above mean sea level
  float verticalError = 0.0f;   // kFixVerticalError: metres
  float geoidSeparation = 0.0f; // kFixGeoidSeparation: geoid above the ellipsoid, metres
  float hdop = 0.0f;            // kFixHdop
  float vdop = 0.0f;            // kFixVdop
  float reserved = 0.0f;        // kFixReserved: carried as the track export's depth
  float course = 0.0f;          // kFixCourse: degrees
  float magneticVariation = 0.0f;  // kFixMagneticVariation: degrees, east positive
  float speed = 0.0f;           // kFixSpeed: km/h over ground
  float verticalSpeed = 0.0f;   // kFixVerticalSpeed: m/s, up positive
  uint32_t satellitesUsed = 0;  // kFixSatellitesUsed
  uint32_t fixType = 0;         // kFixType: one of the kFixType* codes
  uint32_t flags = 0;

  bool has(uint32_t bits) const { return (flags & bits) == bits; }
};

// Stores a fix type code. Code 0 (no fix) also clears kNoFixClearMask in the same record,
// so a decoder can never leave a stale position valid beside "no fix".
inline void setFixType(GpsFix& fix, uint32_t code) {
  fix.fixType = code;
  fix.flags |= kFixType;
  if (code == kFixTypeInvalid) fix.flags &= ~kNoFixClearMask;
}

// The name the satellites page shows for a fix type code ("Unknown" for codes not listed).
std::string_view fixTypeName(uint32_t code);

// One satellite in view. A field the receiver left empty is 0.
struct SatelliteInfo {
  uint32_t prn = 0;
  uint32_t elevation = 0;  // degrees
  uint32_t azimuth = 0;    // degrees
  uint32_t snr = 0;        // dB
  friend bool operator==(const SatelliteInfo&, const SatelliteInfo&) = default;
};

}  // namespace orvel
