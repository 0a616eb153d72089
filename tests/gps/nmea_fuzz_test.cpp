// Robustness of the NMEA protocol: random bytes, mangled sentences and random tick sequences
// (with a fixed seed) must never crash, hang or read outside a buffer.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "gps/nmea_protocol.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

const std::vector<std::string> kSeeds{
    "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7D\r\n",
    "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n",
    "$GPGSA,A,3,17,28,06,01,30,20,26,13,,,,,1.8,1.1,1.5*33\r\n",
    "$GPGSV,3,1,11,01,78,221,47,03,09,042,00,04,05,242,00,06,04,149,00*70\r\n",
    "$GLGSV,3,3,10,87,14,030,17,88,62,024,,1*74\r\n",
    "$GPGLL,4527.458,S,16709.165,E,225309,A*3E\r\n",
    "$PGRME,9.1,M,15.0,M,12.0,M*21\r\n",
    "$PGRMZ,48,f,3*27\r\n",
    "$SDHDG,229.8,,,1.3,E*36\r\n",
    "$GPVTG,87.21,T,,M,0.12,N,0.2,K*5D\r\n",
    "# comment line\r\n",
};

// Random tick steps: mostly small, sometimes long silences, sometimes a jump across the wrap.
uint32_t nextStep(std::mt19937& rng) {
  const uint32_t kind = rng() % 100;
  if (kind < 80) return rng() % 200;
  if (kind < 97) return rng() % 7000;
  return rng();
}

// A sentence with a few bytes changed, inserted or removed; checksums are fixed up on some.
std::string mangle(std::mt19937& rng) {
  std::string s = kSeeds[rng() % kSeeds.size()];
  static const char kSpecial[] = "$,*\r\n.-0123456789ANSEWMf \x00\xff";
  const int edits = static_cast<int>(rng() % 6);
  for (int e = 0; e < edits && !s.empty(); ++e) {
    const size_t at = rng() % s.size();
    const char c = rng() % 2 ? kSpecial[rng() % (sizeof kSpecial - 1)] : static_cast<char>(rng());
    switch (rng() % 3) {
      case 0: s[at] = c; break;
      case 1: s.insert(s.begin() + static_cast<std::ptrdiff_t>(at), c); break;
      default: s.erase(at, 1 + rng() % 20); break;
    }
  }
  if (rng() % 3 == 0) s.append(rng() % 300, static_cast<char>('A' + rng() % 26));  // overlong
  if (rng() % 2 == 0 && s.size() > 2 && s[0] == '$') {
    const size_t star = s.find('*');
    if (star != std::string::npos) s = test::nmeaLine(s.substr(1, star - 1));
  }
  return s;
}

void drive(NmeaProtocol& nmea, uint32_t& now, std::mt19937& rng, const std::string& stream, const GpsState& state) {
  size_t at = 0;
  while (at < stream.size()) {
    now += nextStep(rng);
    if (rng() % 8 == 0) {
      const ProcessResult r = nmea.process({});
      ASSERT_LE(static_cast<int>(r), 2);
      if (r == ProcessResult::kFailed) nmea.open();
      continue;
    }
    const size_t n = std::min<size_t>(stream.size() - at, 1 + rng() % (rng() % 4 == 0 ? 1024 : 40));
    const ProcessResult r = nmea.process(test::bytesOf(std::string_view(stream).substr(at, n)));
    ASSERT_LE(static_cast<int>(r), 2);
    if (r == ProcessResult::kFailed) nmea.open();
    at += n;
  }
  EXPECT_LE(state.getSatelliteCount(), kMaxSatellites);
}

class NmeaFuzz : public ::testing::Test {
 protected:
  uint32_t now = 0xFFFF0000u;
  test::FixCollector collected;
  NmeaProtocol nmea{[this] { return now; }, collected};
};

TEST_F(NmeaFuzz, RandomBytesAndTicks) {
  std::mt19937 rng(20240611);
  nmea.open();
  for (int run = 0; run < 300; ++run) {
    std::string stream(rng() % 4096, '\0');
    for (char& c : stream) c = static_cast<char>(rng() % 4 == 0 ? "$,*\n\r"[rng() % 5] : rng());
    drive(nmea, now, rng, stream, collected.state);
    if (HasFatalFailure()) return;
  }
}

TEST_F(NmeaFuzz, MangledSentencesAndTicks) {
  std::mt19937 rng(7);
  for (bool each : {false, true}) {
    nmea.setHandOverEachSentence(each);
    nmea.open();
    for (int run = 0; run < 400; ++run) {
      std::string stream;
      while (stream.size() < 2000) stream += mangle(rng);
      drive(nmea, now, rng, stream, collected.state);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_FALSE(collected.fixes.empty());
}

TEST(NmeaFuzzDirect, ParseSentencesOnAnyText) {
  std::mt19937 rng(99);
  test::FixCollector sink;
  NmeaProtocol nmea([] { return 0u; }, sink);
  for (int run = 0; run < 20000; ++run) {
    std::string text = rng() % 2 ? mangle(rng) : std::string(rng() % 64, '\0');
    if (text.size() < 64 && rng() % 2) {
      for (char& c : text) c = static_cast<char>(rng());
    }
    nmea.parseSentences(test::bytesOf(text));
  }
}

}  // namespace
}  // namespace orvel
