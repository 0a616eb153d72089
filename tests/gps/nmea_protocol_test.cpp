// The NMEA protocol object fed as a scanning thread feeds it, on a fake clock: buffering
// across reads, burst merging, hand-over on quiet gaps and every three seconds, overlong
// text, and what it tells the scanner.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gps/gps_state.h"
#include "gps/nmea_protocol.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

using test::bytesOf;
using test::nmeaLine;
constexpr auto kNothing = ProcessResult::kNothing;
constexpr auto kRecognised = ProcessResult::kRecognised;
constexpr auto kFailed = ProcessResult::kFailed;

const std::string kGga = "$GPGGA,030719.000,3747.0873,S,17518.8938,E,1,08,1.1,59.9,M,23.7,M,,0000*7D\r\n";
const std::string kGsa = "$GPGSA,A,3,17,28,06,01,30,20,26,13,,,,,1.8,1.1,1.5*33\r\n";
const std::string kRmc = "$GPRMC,030719.000,A,3747.0873,S,17518.8938,E,0.69,181.39,311214,,,A*7D\r\n";

class NmeaProtocolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    nmea.setPort(&port);
    nmea.open();
  }

  ProcessResult feed(std::string_view text) { return nmea.process(bytesOf(text)); }
  ProcessResult feedAt(uint32_t t, std::string_view text) {
    now = t;
    return feed(text);
  }
  ProcessResult silentAt(uint32_t t) {
    now = t;
    return nmea.process({});
  }
  // Bytes in reads of `chunk`, `step` ms apart, starting at `t`; the last result.
  ProcessResult trickle(uint32_t& t, std::string_view text, size_t chunk, uint32_t step = 20) {
    ProcessResult last = kNothing;
    for (size_t i = 0; i < text.size(); i += chunk) {
      t += step;
      last = feedAt(t, text.substr(i, chunk));
      if (last == kFailed) break;
    }
    return last;
  }
  std::vector<SatelliteInfo> satellites() { return state.gpsSnapshot().satellites; }

  uint32_t now = 1000;
  test::FakePort port;
  test::FixCollector collected;
  GpsState& state = collected.state;
  NmeaProtocol nmea{[this] { return now; }, collected};
};

TEST_F(NmeaProtocolTest, OpenSetsUpThePortForNmea) {
  EXPECT_EQ(port.baud, 4800u);
  EXPECT_EQ(port.dataBits, 8);
  EXPECT_FALSE(port.parity);
  EXPECT_EQ(port.stopBits, 1);
  EXPECT_EQ(port.timeouts.readInterval, 100u);
  EXPECT_EQ(port.timeouts.readTotalMultiplier, 10u);
  EXPECT_EQ(port.timeouts.readTotalConstant, 10u);
  EXPECT_EQ(port.timeouts.writeTotalMultiplier, 10u);
  EXPECT_EQ(port.timeouts.writeTotalConstant, 10u);
  EXPECT_EQ(port.purges, 1);
  EXPECT_TRUE(port.writes.empty());
  EXPECT_EQ(nmea.getName(), u"NMEA-0183");
}

TEST_F(NmeaProtocolTest, ABurstMergesAndIsHandedOnAfterAQuietGap) {
  EXPECT_EQ(feedAt(1010, kGga + kGsa + "$"), kRecognised);
  EXPECT_EQ(silentAt(1110), kNothing);  // 100 ms is not yet a gap
  EXPECT_TRUE(collected.fixes.empty());
  EXPECT_EQ(silentAt(1111), kRecognised);
  ASSERT_EQ(collected.fixes.size(), 1u);
  EXPECT_EQ(collected.fixes[0].flags, 0x782Au);  // GGA and GSA together
  // Nothing pending any more: quiet.
  EXPECT_EQ(silentAt(1500), kNothing);
  EXPECT_EQ(collected.fixes.size(), 1u);
  EXPECT_EQ(nmea.assembling().flags, 0u);
}

TEST_F(NmeaProtocolTest, TheLastSentenceOfABurstWaitsForTheNextDollar) {
  EXPECT_EQ(feedAt(1010, kGga + kRmc), kRecognised);
  EXPECT_EQ(silentAt(1200), kRecognised);
  ASSERT_EQ(collected.fixes.size(), 1u);
  EXPECT_FALSE(collected.fixes[0].has(kFixTime));  // the RMC is still in the buffer
  feedAt(2000, kGsa);
  EXPECT_EQ(silentAt(2200), kRecognised);
  ASSERT_EQ(collected.fixes.size(), 2u);
  EXPECT_EQ(collected.fixes[1].flags, 0x0383u);  // the RMC; the GSA waits in turn
}

TEST_F(NmeaProtocolTest, ASentenceSplitAcrossReadsIsJoined) {
  uint32_t t = 1000;
  EXPECT_EQ(trickle(t, kRmc, 7), kNothing);
  EXPECT_EQ(feedAt(t + 20, "$"), kRecognised);
  EXPECT_EQ(nmea.assembling().flags, 0x0383u);
  EXPECT_NEAR(nmea.assembling().longitude, 175.3148967, 2e-5);
}

TEST_F(NmeaProtocolTest, AContinuousStreamHandsOnEveryThreeSeconds) {
  // A sentence every 500 ms never leaves a quiet gap.
  uint32_t t = 1000;
  for (int i = 0; i < 6; ++i) {
    feedAt(t += 500, kGsa);
    EXPECT_TRUE(collected.fixes.empty()) << "at " << t;
  }
  EXPECT_EQ(t, 4000u);  // exactly 3000 ms after open: not yet
  feedAt(4001, kGsa);
  EXPECT_EQ(collected.fixes.size(), 1u);
  feedAt(7001, kGsa);
  EXPECT_EQ(collected.fixes.size(), 1u);
  feedAt(7002, kGsa);
  EXPECT_EQ(collected.fixes.size(), 2u);
}

TEST_F(NmeaProtocolTest, FiveSecondsOfSilenceEndTheProtocol) {
  EXPECT_EQ(silentAt(6000), kNothing);
  EXPECT_EQ(silentAt(6001), kFailed);
  feedAt(7000, kGsa + "$");
  EXPECT_EQ(silentAt(12000), kRecognised);  // the pending fix goes out first
  EXPECT_EQ(silentAt(12001), kFailed);
}

TEST_F(NmeaProtocolTest, SilenceCountsAcrossTheTickWrap) {
  nmea.setPort(nullptr);
  now = 0xFFFFF000u;
  nmea.open();
  EXPECT_EQ(feedAt(0xFFFFFF00u, kGsa + "$"), kRecognised);
  EXPECT_EQ(silentAt(0x00000100u), kRecognised);  // 512 ms later, past the wrap
  EXPECT_EQ(collected.fixes.size(), 1u);
  // Five seconds after the bytes came: 0xFFFFFF00 + 5000 wraps to 4744.
  EXPECT_EQ(silentAt(4744u), kNothing);
  EXPECT_EQ(silentAt(4745u), kFailed);
}

TEST_F(NmeaProtocolTest, BytesWithoutDollarOrLinesFailAt128) {
  const std::string junk(127, 'A');
  EXPECT_EQ(feed(junk), kNothing);
  EXPECT_EQ(feed("A"), kFailed);
}

TEST_F(NmeaProtocolTest, BinaryBytesOverflowingTheBufferFail) {
  std::string junk(200, '\x01');
  junk[50] = '\n';
  uint32_t t = 1000;
  EXPECT_EQ(trickle(t, junk, 10), kFailed);
}

TEST_F(NmeaProtocolTest, CommentLinesBeforeTheFirstSentenceAreSkipped) {
  std::string header;
  for (int i = 0; i < 12; ++i) header += "# Chipset = SiRF-IV, Location = Hamilton, Waikato, 37.8S 175.3E\r\n";
  header += "# " + std::string(150, 'x') + "\r\n";  // one line longer than the buffer
  uint32_t t = 1000;
  EXPECT_EQ(trickle(t, header + kGga + kRmc + "$", 10), kRecognised);
  EXPECT_EQ(nmea.assembling().flags, 0x0383u | 0x382Au);
}

TEST_F(NmeaProtocolTest, AnOverlongPrintableSentenceIsDroppedAndTheStreamResyncs) {
  const std::string longOne = nmeaLine("PMTKCHN," + std::string(190, '0'));
  ASSERT_GT(longOne.size(), 200u);
  for (size_t chunk : {size_t{10}, size_t{1024}}) {
    SCOPED_TRACE(chunk);
    nmea.open();
    uint32_t t = 1000;
    EXPECT_NE(trickle(t, kGsa + longOne + kRmc + longOne + kGga + "$", chunk), kFailed);
    EXPECT_EQ(nmea.assembling().flags, 0x0383u | 0x782Au);
  }
}

TEST_F(NmeaProtocolTest, AnOverlongSentenceWithBinaryInsideFails) {
  std::string binary = "$GPRMC,";
  for (int i = 0; i < 200; ++i) binary += static_cast<char>(i % 32);
  uint32_t t = 1000;
  EXPECT_EQ(trickle(t, kGsa + binary, 10), kFailed);
}

TEST_F(NmeaProtocolTest, EndlessTextWithoutSentencesFails) {
  std::string lines;
  while (lines.size() < 5000) lines += "Lorem ipsum dolor sit amet, consectetur adipiscing elit\r\n";
  uint32_t t = 1000;
  EXPECT_EQ(trickle(t, lines, 10), kFailed);
}

TEST_F(NmeaProtocolTest, WhatLiesBetweenTwoDollarsDecidesTheRead) {
  struct Case {
    std::string between;
    ProcessResult result;
  };
  const Case cases[] = {
      {"$GP", kFailed},                                        // too short to count
      {"$\x8e\x03\x10GPS data\r\n", kFailed},                  // binary after the "$"
      {"$PUBX,00,081350.00,4717.113210,N,00833.915187,E*5C\r\n", kRecognised},
      {"$PFEC,GPtps,101025222449,3,1,1,090101000000,00,15\r\n", kRecognised},
      {"$pgrmz,93,f,3*21\r\n", kRecognised},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.between);
    nmea.open();
    EXPECT_EQ(feed(kGsa + c.between + kRmc + "$"), c.result);
  }
}

TEST_F(NmeaProtocolTest, ReopeningForgetsAHalfSentence) {
  feed(kRmc.substr(0, 40));
  nmea.open();
  feed(kRmc.substr(40) + kGsa + "$");
  EXPECT_EQ(nmea.assembling().flags, 0x7000u);  // only the GSA
}

TEST_F(NmeaProtocolTest, EachSentenceModeHandsOnEverySentence) {
  nmea.setHandOverEachSentence(true);
  EXPECT_EQ(feedAt(1010, kGga + kGsa + kRmc + "$"), kRecognised);
  ASSERT_EQ(collected.fixes.size(), 3u);
  EXPECT_EQ(collected.fixes[0].flags, 0x382Au);
  EXPECT_EQ(collected.fixes[1].flags, 0x7000u);
  EXPECT_EQ(collected.fixes[2].flags, 0x0383u);
  EXPECT_EQ(silentAt(1200), kRecognised);  // the burst still ends, with nothing more to hand on
  EXPECT_EQ(collected.fixes.size(), 3u);
}

const std::string kGsv1 = "$GPGSV,3,1,11,01,78,221,47,03,09,042,00,04,05,242,00,06,04,149,00*70\r\n";
const std::string kGsv2 = "$GPGSV,3,2,11,13,37,235,48,20,41,333,46,22,65,081,46,24,02,205,00*7B\r\n";
const std::string kGsv3 = "$GPGSV,3,3,11,25,20,108,00,27,08,281,00,28,17,339,39,,,,*4C\r\n";

TEST_F(NmeaProtocolTest, GsvFillsTheSatelliteListAndPostsAtTheLastMessage) {
  feedAt(1010, kGsv1 + kGsv2 + "$");
  EXPECT_EQ(state.getSatelliteCount(), 11u);
  EXPECT_FALSE(state.isLatchSet(kMsgSatellitesChanged));
  SatelliteInfo s;
  EXPECT_EQ(state.getSatellite(7, s), (SatelliteInfo{24, 2, 205, 0}));
  EXPECT_EQ(state.getSatellite(8, s), SatelliteInfo{});  // not received yet
  feed(kGsv3 + "$");
  EXPECT_TRUE(state.isLatchSet(kMsgSatellitesChanged));
  const auto list = satellites();
  ASSERT_EQ(list.size(), 11u);
  EXPECT_EQ(list[0], (SatelliteInfo{1, 78, 221, 47}));
  EXPECT_EQ(list[10], (SatelliteInfo{28, 17, 339, 39}));
}

TEST_F(NmeaProtocolTest, AGsvListWhoseFirstMessageIsLostLeavesThePreviousList) {
  feedAt(1010, kGsv1 + kGsv2 + kGsv3 + "$");
  silentAt(1200);
  state.clearLatch(kMsgSatellitesChanged);
  const auto before = satellites();
  feedAt(2010, nmeaLine("GPGSV,3,2,11,13,37,235,48,20,41,333,46,22,65,081,46,24,02,205,00") + kGsv3 + "$");
  EXPECT_EQ(satellites(), before);
  EXPECT_TRUE(state.isLatchSet(kMsgSatellitesChanged));
}

TEST_F(NmeaProtocolTest, GsvListsOfSeveralConstellationsInOneBurstAddUp) {
  const std::string gl = "$GLGSV,3,1,10,65,53,144,,66,58,305,32,67,06,313,,72,09,137,,1*7A\r\n"
                         "$GLGSV,3,2,10,73,06,174,,74,05,132,,81,64,223,35,82,13,214,33,1*7F\r\n"
                         "$GLGSV,3,3,10,87,14,030,17,88,62,024,,1*74\r\n";
  feedAt(1010, kGsv1 + kGsv2 + kGsv3 + gl + "$");
  auto list = satellites();
  ASSERT_EQ(list.size(), 21u);
  EXPECT_EQ(list[10].prn, 28u);
  EXPECT_EQ(list[11], (SatelliteInfo{65, 53, 144, 0}));
  // The signal field that NMEA 4.10 appends is no satellite.
  EXPECT_EQ(list[19], (SatelliteInfo{87, 14, 30, 17}));
  EXPECT_EQ(list[20], (SatelliteInfo{88, 62, 24, 0}));
  // The next burst starts afresh.
  silentAt(1200);
  feedAt(2010, kGsv1 + kGsv2 + kGsv3 + "$");
  EXPECT_EQ(satellites().size(), 11u);
}

TEST_F(NmeaProtocolTest, ListsOfSeveralSignalsKeepEachSatelliteOnceWithItsBestSignal) {
  const std::string l1 = "$GPGSV,3,1,12,05,06,110,19,10,24,284,34,13,37,124,29,15,63,083,11,1*60\r\n"
                         "$GPGSV,3,2,12,16,11,248,10,20,52,273,34,21,79,231,30,24,07,045,,1*64\r\n"
                         "$GPGSV,3,3,12,26,04,276,,27,15,218,31,29,24,004,13,30,00,159,,1*69\r\n";
  const std::string l2 = "$GPGSV,3,1,12,05,06,110,,10,24,284,,13,37,124,,15,63,083,,6*63\r\n"
                         "$GPGSV,3,2,12,16,11,248,,20,52,273,,21,79,231,,24,07,045,,6*66\r\n"
                         "$GPGSV,3,3,12,26,04,276,,27,15,218,29,29,24,004,,30,00,159,,6*65\r\n";
  feedAt(1010, l1 + l2 + "$");
  const auto list = satellites();
  ASSERT_EQ(list.size(), 12u);
  EXPECT_EQ(list[0], (SatelliteInfo{5, 6, 110, 19}));
  EXPECT_EQ(list[9], (SatelliteInfo{27, 15, 218, 31}));
}

}  // namespace
}  // namespace orvel
