#include "gps/nmea_sentences.h"

#include <array>
#include <cfloat>
#include <cmath>

#include "gps/nmea_satellites.h"
#include "gps/ole_date.h"

namespace orvel {
namespace {

constexpr double kMinutesToDegrees = 0.016666668;
constexpr double kKnotsToKmh = 1.852;
constexpr double kFeetToMetres = 1.0 / 3.28084;
constexpr double kSecondsToDays = 1.1574074e-5;

bool startsWith(std::string_view text, char c) { return !text.empty() && text.front() == c; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

// Two decimal digits at `at`; false when either is not a digit.
bool digitPair(std::string_view text, size_t at, int& value) {
  if (at + 2 > text.size() || !isDigit(text[at]) || !isDigit(text[at + 1])) return false;
  value = (text[at] - '0') * 10 + (text[at + 1] - '0');
  return true;
}

uint32_t storeReal(float& field, double value, uint32_t bit, GpsFix& fix) {
  field = toFixFloat(value);
  fix.flags |= bit;
  return bit;
}

// Both coordinate fields must be present.
uint32_t storePosition(GpsFix& fix, const NmeaFields& f, size_t first) {
  if (f[first].empty() || f[first + 2].empty()) return 0;
  fix.latitude = toFixFloat(parseNmeaCoordinate(f[first], f[first + 1], 2));
  fix.longitude = toFixFloat(parseNmeaCoordinate(f[first + 2], f[first + 3], 3));
  fix.flags |= kFixPosition;
  return kFixPosition;
}

// Time of day "hhmmss[.sss]" and date "ddmmyy" (years 2000-2099).
uint32_t storeRmcTime(GpsFix& fix, std::string_view time, std::string_view date) {
  if (time.size() < 6 || date.size() < 6) return 0;
  CalendarTime t;
  int yy = 0;
  if (!digitPair(date, 0, t.day) || !digitPair(date, 2, t.month) || !digitPair(date, 4, yy) ||
      !digitPair(time, 0, t.hour) || !digitPair(time, 2, t.minute) || !digitPair(time, 4, t.second)) {
    return 0;
  }
  t.year = 2000 + yy;
  double value = 0.0;
  if (!calendarToAutomationDate(t, value)) return 0;
  if (time.size() > 6 && time[6] == '.') value += parseNmeaReal(time.substr(6)) * kSecondsToDays;
  fix.time = value;
  fix.flags |= kFixTime;
  return kFixTime;
}

uint32_t decodeRmc(const NmeaFields& f, NmeaTarget& t) {
  if (!startsWith(f[2], 'A')) return 0;  // no valid fix: the whole sentence is dropped
  GpsFix& fix = t.fix;
  uint32_t set = storePosition(fix, f, 3);
  set |= storeReal(fix.speed, parseNmeaReal(f[7]) * kKnotsToKmh, kFixSpeed, fix);
  set |= storeReal(fix.course, parseNmeaReal(f[8]), kFixCourse, fix);
  const double sign = startsWith(f[11], 'E') ? 1.0 : -1.0;
  set |= storeReal(fix.magneticVariation, parseNmeaReal(f[10]) * sign, kFixMagneticVariation, fix);
  set |= storeRmcTime(fix, f[1], f[9]);
  return set;
}

uint32_t fixTypeFromQuality(std::string_view quality) {
  static constexpr std::array<uint32_t, 8> kByQuality{kFixType3D,       kFixType3DDiff, kFixTypePrecise,
                                                      kFixTypeRtk,      kFixTypeFloatRtk, kFixTypeEstimated,
                                                      kFixTypeManual,   kFixTypeSimulation};
  if (startsWith(quality, '0')) return kFixTypeInvalid;
  if (!quality.empty() && quality[0] >= '1' && quality[0] <= '8') return kByQuality[static_cast<size_t>(quality[0] - '1')];
  return kFixTypeUnknown;
}

// Metres unless the unit field says otherwise.
double metres(std::string_view value, std::string_view unit) {
  return parseNmeaReal(value) * (startsWith(unit, 'M') ? 1.0 : kFeetToMetres);
}

uint32_t decodeGga(const NmeaFields& f, NmeaTarget& t) {
  GpsFix& fix = t.fix;
  // The position is stored whatever the quality; quality 0 then takes it back.
  uint32_t set = storePosition(fix, f, 2);
  fix.satellitesUsed = parseNmeaUnsigned(f[7]);
  fix.flags |= kFixSatellitesUsed;
  set |= kFixSatellitesUsed;
  set |= storeReal(fix.hdop, parseNmeaReal(f[8]), kFixHdop, fix);
  const uint32_t type = fixTypeFromQuality(f[6]);
  setFixType(fix, type);
  set |= kFixType;
  if (type == kFixTypeInvalid) set &= ~kNoFixClearMask;
  set |= storeReal(fix.altitude, metres(f[9], f[10]), kFixAltitude, fix);
  set |= storeReal(fix.geoidSeparation, metres(f[11], f[12]), kFixGeoidSeparation, fix);
  return set;
}

uint32_t decodeGll(const NmeaFields& f, NmeaTarget& t) {
  if (!startsWith(f[6], 'A')) return 0;
  return storePosition(t.fix, f, 1);
}

uint32_t decodeVtg(const NmeaFields&, NmeaTarget&) { return 0; }

uint32_t decodeHdg(const NmeaFields& f, NmeaTarget& t) {
  return storeReal(t.fix.course, parseNmeaReal(f[1]), kFixCourse, t.fix);
}

uint32_t decodePgrmz(const NmeaFields& f, NmeaTarget& t) {
  const double factor = startsWith(f[2], 'f') ? kFeetToMetres : 1.0;
  return storeReal(t.fix.altitude, parseNmeaReal(f[1]) * factor, kFixAltitude, t.fix);
}

uint32_t decodePgrme(const NmeaFields& f, NmeaTarget& t) {
  GpsFix& fix = t.fix;
  uint32_t set = storeReal(fix.horizontalError, metres(f[1], f[2]), kFixHorizontalError, fix);
  set |= storeReal(fix.verticalError, metres(f[3], f[4]), kFixVerticalError, fix);
  return set;
}

uint32_t decodeGsa(const NmeaFields& f, NmeaTarget& t) {
  GpsFix& fix = t.fix;
  uint32_t set = storeReal(fix.hdop, parseNmeaReal(f[16]), kFixHdop, fix);
  set |= storeReal(fix.vdop, parseNmeaReal(f[17]), kFixVdop, fix);
  uint32_t type = kFixTypeUnknown;
  if (startsWith(f[2], '1')) type = kFixTypeInvalid;
  if (startsWith(f[2], '2')) type = kFixType2D;
  if (startsWith(f[2], '3')) type = kFixType3D;
  setFixType(fix, type);
  set |= kFixType;
  if (type == kFixTypeInvalid) set &= ~kNoFixClearMask;
  return set;
}

uint32_t decodeGsv(const NmeaFields& f, NmeaTarget& t) {
  // Up to four satellites of four fields each follow the three counts. Receivers of NMEA
  // 4.10 append one more field, the signal, which is not a satellite.
  size_t last = f.count();
  if (last > 3 && (last - 3) % 4 == 1) --last;
  std::array<SatelliteInfo, 4> found{};
  size_t n = 0;
  for (size_t group = 0; group < found.size(); ++group) {
    const size_t at = 4 + group * 4;
    if (at > last || f[at].empty()) continue;
    auto field = [&](size_t i) { return i <= last ? parseNmeaUnsigned(f[i]) : 0u; };
    found[n++] = SatelliteInfo{field(at), field(at + 1), field(at + 2), field(at + 3)};
  }
  t.satellites.addMessage(t.talker, parseNmeaUnsigned(f[1]), parseNmeaUnsigned(f[2]),
                          parseNmeaUnsigned(f[3]), std::span(found.data(), n));
  return 0;
}

constexpr std::array<NmeaSentenceRow, 9> kSentences{{
    {"RMC", 9, decodeRmc},
    {"GGA", 12, decodeGga},
    {"GLL", 6, decodeGll},
    {"VTG", 0, decodeVtg},
    {"HDG", 1, decodeHdg},
    {"PGRMZ", 2, decodePgrmz},
    {"PGRME", 4, decodePgrme},
    {"GSA", 17, decodeGsa},
    {"GSV", 3, decodeGsv},
}};

}  // namespace

NmeaFields::NmeaFields(std::string_view body) {
  size_t start = 0;
  while (true) {
    const size_t comma = body.find(',', start);
    const size_t end = comma == std::string_view::npos ? body.size() : comma;
    if (count_ < kMaxFields) fields_[count_] = body.substr(start, end - start);
    ++count_;
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
}

const NmeaSentenceRow* findNmeaSentence(std::string_view address, std::string_view& talker) {
  if (address.size() < 6 || address[5] != ',') return nullptr;
  std::string_view tag;
  if (address[0] == 'P') {  // proprietary: the maker's code belongs to the type
    talker = {};
    tag = address.substr(0, 5);
  } else {
    if (!isUpper(address[0]) || !isUpper(address[1])) return nullptr;
    talker = address.substr(0, 2);
    tag = address.substr(2, 3);
  }
  for (const NmeaSentenceRow& row : kSentences) {
    if (row.tag == tag) return &row;
  }
  return nullptr;
}

bool decodeNmeaSentence(std::string_view sentence, GpsFix& fix, NmeaSatellites& satellites,
                        uint32_t& fieldsSet) {
  fieldsSet = 0;
  if (sentence.size() < 7 || sentence[0] != '$') return false;
  std::string_view talker;
  const NmeaSentenceRow* row = findNmeaSentence(sentence.substr(1, 6), talker);
  if (!row) return false;
  std::string_view body = sentence.substr(7);
  body = body.substr(0, body.find_first_of("*\r\n"));
  const NmeaFields fields(body);
  if (fields.count() < row->minFields) return false;
  NmeaTarget target{fix, satellites, talker};
  fieldsSet = row->decode(fields, target);
  return true;
}

uint32_t parseNmeaUnsigned(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && text[i] == ' ') ++i;
  uint32_t value = 0;
  for (; i < text.size() && isDigit(text[i]); ++i) value = value * 10u + static_cast<uint32_t>(text[i] - '0');
  return value;
}

double parseNmeaReal(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && text[i] == ' ') ++i;
  double sign = 1.0;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
    if (text[i] == '-') sign = -1.0;
    ++i;
  }
  double value = 0.0;
  for (; i < text.size() && isDigit(text[i]); ++i) value = value * 10.0 + (text[i] - '0');
  if (i < text.size() && text[i] == '.') {
    // The fraction's digits as one whole number over a power of ten rounds only once.
    double fraction = 0.0;
    double scale = 1.0;
    for (++i; i < text.size() && isDigit(text[i]); ++i) {
      if (scale >= 1e17) continue;  // past what a double holds
      fraction = fraction * 10.0 + (text[i] - '0');
      scale *= 10.0;
    }
    value += fraction / scale;
  }
  return value * sign;
}

double parseNmeaCoordinate(std::string_view value, std::string_view hemisphere, size_t degreeDigits) {
  const size_t split = std::min(degreeDigits, value.size());
  const double degrees = parseNmeaUnsigned(value.substr(0, split));
  const double minutes = parseNmeaReal(value.substr(split));
  const bool negative = startsWith(hemisphere, degreeDigits == 2 ? 'S' : 'W');
  return (degrees + minutes * kMinutesToDegrees) * (negative ? -1.0 : 1.0);
}

float toFixFloat(double value) {
  if (std::isnan(value)) return static_cast<float>(value);
  return static_cast<float>(std::fmax(-static_cast<double>(FLT_MAX), std::fmin(value, static_cast<double>(FLT_MAX))));
}

}  // namespace orvel
