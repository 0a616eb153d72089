#pragma once
// Fixes and satellite lists as one line of text each, for logs and the command-line tool.
#include <span>
#include <string>

#include "gps/gps_fix.h"

namespace orvel {

// "key=value" fields separated by blanks: time (ISO 8601 UTC), lat and lon (degrees, 7
// decimals), alt (m), speed (km/h), course (degrees), hdop, vdop, sats and fix (the fix type's
// name, quoted when it has a blank), each only when valid, then flags in hex.
std::string formatFixLine(const GpsFix& fix);

// "sats:" and one "prn/elevation/azimuth/snr" per satellite received (entries announced but
// not yet received are left out).
std::string formatSatellitesLine(std::span<const SatelliteInfo> satellites);

}  // namespace orvel
