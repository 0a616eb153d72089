#pragma once
// What decode and record share: reading a receiver capture and the options of the replay.
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gps/capture_replay.h"

namespace orvel::tool {

// Parses "nmea", "garmin" or "auto".
bool parseReplayProtocol(std::string_view text, ReplayProtocol& out);

// Reads the capture at `path` into `bytes`. A serial device is refused ("serial devices:
// not yet"). On failure prints the reason for `command` to stderr and returns false.
bool readCapture(std::string_view command, const char* path, std::vector<uint8_t>& bytes);

// Prints the replay's events to stderr ("[12.340 s] searching NMEA-0183").
void printReplayEvent(uint64_t ms, ReplayEvent event, std::u16string_view protocol);

}  // namespace orvel::tool
