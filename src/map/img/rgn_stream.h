#pragma once
// The packed point list of an RGN polygon or polyline: after the first point, a bit stream
// of coordinate deltas whose widths and signs are set up by the record's bit-size byte and
// the stream's first bits.
#include <cstdint>

#include "map/format/map_file.h"
#include "geo/units.h"

namespace orvel {

// Points kept per object; further points of a longer stream are decoded and dropped.
inline constexpr int kMaxObjectPoints = 256;

// Decodes the points of one polygon or polyline into out[kMaxObjectPoints], the first point
// included, and returns how many were kept (1 to kMaxObjectPoints).
//   stream    the record's bit stream, exactly its length field long
//   first     the first point in map units
//   shift     24 - bits per coordinate of the level; deltas are scaled by 2^shift
//             (taken modulo 32, so a damaged level record cannot shift out of range)
//   bitSizes  low nibble: x width code, high nibble: y width code
//   extraBit  every point carries one bit of its own before its deltas (skipped)
// Bits are read least significant first. The loop is bounded by the stream's bit count; an
// escape sequence of an own-sign value that runs past the end reads zero bits there, so
// nothing outside `stream` is ever read.
int decodePolyStream(Bytes stream, MapPoint first, int shift, uint8_t bitSizes, bool extraBit,
                     MapPoint* out);

}  // namespace orvel
