#pragma once
// Moving a recorded NMEA capture to another place: the positions of its RMC, GGA and GLL
// sentences (any talker) are shifted so that the first one lies at an anchor point, with
// distances kept (east-west offsets are scaled by the ratio of the two latitudes' cosines),
// and the checksums are made anew. Everything else stays byte for byte, so the capture
// still exercises the parser as the receiver's own stream did.
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvel {

struct GeoPoint {
  double latitude = 0;   // degrees, north positive
  double longitude = 0;  // degrees, east positive
};

// The first position an RMC, GGA or GLL sentence of `capture` gives, valid or not.
std::optional<GeoPoint> firstCapturePosition(std::span<const uint8_t> capture);

// `capture` with every position moved so that `from` lands on `to`.
std::vector<uint8_t> shiftCapturePositions(std::span<const uint8_t> capture, GeoPoint from, GeoPoint to);

// One sentence (from "$" to its line end) moved likewise; other lines come back unchanged.
std::string shiftSentence(std::string_view line, GeoPoint from, GeoPoint to);

}  // namespace orvel
