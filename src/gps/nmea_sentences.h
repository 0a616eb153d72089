#pragma once
// Decoding of single NMEA-0183 sentences into the fix being assembled. Each known sentence
// type is one row of a table: its tag, the fewest fields it must have, and its decoder.
// Position, course and satellite sentences are taken from any two-letter talker (GP, GN,
// GL, GA, BD, IN, ...), the heading from any talker; Garmin's proprietary PGRMZ and PGRME
// are known by their full address.
#include <array>
#include <cstdint>
#include <string_view>

#include "gps/gps_fix.h"

namespace orvel {

class NmeaSatellites;

// The data fields of one sentence, counted from 1 after the address. A field the sentence
// does not have reads as empty.
class NmeaFields {
 public:
  static constexpr size_t kMaxFields = 40;  // fields past this read as empty

  // `body` is the text after "$XXYYY," up to (not including) the checksum or the line end.
  explicit NmeaFields(std::string_view body);
  std::string_view operator[](size_t index) const {
    return index >= 1 && index <= count_ && index <= kMaxFields ? fields_[index - 1] : std::string_view{};
  }
  size_t count() const { return count_; }

 private:
  std::array<std::string_view, kMaxFields> fields_{};
  size_t count_ = 0;
};

// What a decoder works on.
struct NmeaTarget {
  GpsFix& fix;
  NmeaSatellites& satellites;
  std::string_view talker;  // two letters; empty for proprietary sentences
};

// Stores what the sentence says and returns the validity bits it set (bits it cleared for
// "no fix" are not included).
using NmeaDecoder = uint32_t (*)(const NmeaFields& fields, NmeaTarget& target);

struct NmeaSentenceRow {
  std::string_view tag;  // "RMC" after any talker, or a whole proprietary address ("PGRMZ")
  size_t minFields;      // a sentence with fewer fields is dropped
  NmeaDecoder decode;
};

// The row for a sentence that begins with `address` ("GPRMC," - six bytes after "$"), or
// null for an unknown type. `talker` receives the talker letters.
const NmeaSentenceRow* findNmeaSentence(std::string_view address, std::string_view& talker);

// Decodes a sentence that passed its checksum. `sentence` begins with "$" and runs to the
// end of its line. Returns false when the type is unknown or the sentence has too few
// fields; `fieldsSet` receives the decoder's result.
bool decodeNmeaSentence(std::string_view sentence, GpsFix& fix, NmeaSatellites& satellites,
                        uint32_t& fieldsSet);

// Unsigned decimal: leading blanks skipped, digits up to the first non-digit; empty is 0.
uint32_t parseNmeaUnsigned(std::string_view text);
// Decimal with optional sign and fraction, leading blanks skipped, no exponent; empty is 0.
double parseNmeaReal(std::string_view text);
// "ddmm.mmmm" (degreeDigits 2) or "dddmm.mmmm" (3) with its hemisphere letter: negative
// for "S" and "W".
double parseNmeaCoordinate(std::string_view value, std::string_view hemisphere, size_t degreeDigits);

// A double as a fix stores it: clamped to the float range (NaN stays NaN).
float toFixFloat(double value);

}  // namespace orvel
