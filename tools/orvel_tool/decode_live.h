#pragma once
// orvel-tool decode on a serial device: reads it live as the viewer's scanning thread does.
#include <span>
#include <string_view>

#include "gps/capture_replay.h"

namespace orvel::tool {

struct LiveDecodeOptions {
  ReplayProtocol protocol = ReplayProtocol::kAuto;
  bool eachSentence = false;
  bool verbose = false;   // the scanner's status texts on stderr
  double seconds = 0;     // stop after this long; 0 runs until interrupted (SIGINT, SIGTERM)
};

// True when `path` names a character device (a serial port, a pseudo-terminal).
bool isCharacterDevice(const char* path);

// Parses "--seconds N" at args[i] (advancing i). False with a usage error printed when N is
// not a positive number.
bool parseSecondsOption(std::span<const char* const> args, size_t& i, double& seconds);

// Reads `device` with the protocols `options` names, alternating them as the scanner does,
// printing every fix handed on and the satellites when they change, as decode does for a
// capture file. Exit code 0 when a protocol recognised data, 1 otherwise or when the device
// cannot be opened.
int runDecodeLive(const char* device, const LiveDecodeOptions& options);

}  // namespace orvel::tool
