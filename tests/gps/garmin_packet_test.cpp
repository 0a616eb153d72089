// Garmin packet framing: the fixed packets, DLE stuffing, the receiving framer's quirks and
// the check of a received packet.
#include <gtest/gtest.h>

#include <vector>

#include "common/test_data.h"
#include "gps/garmin_packet.h"

namespace orvel {
namespace {

std::vector<uint8_t> v(std::initializer_list<uint8_t> bytes) { return bytes; }

// Feeds every byte; returns the packets the framer completed.
std::vector<std::vector<uint8_t>> frame(GarminFramer& framer, const std::vector<uint8_t>& bytes) {
  std::vector<std::vector<uint8_t>> packets;
  for (uint8_t b : bytes) {
    if (framer.feed(b)) packets.emplace_back(framer.packet().begin(), framer.packet().end());
  }
  return packets;
}

TEST(GarminPacket, TheFixedPacketsAreWhatAWellBehavedSenderSends) {
  EXPECT_EQ(frameGarminPacket(kGarminCommand, v({kGarminCommandStartPvt, 0})),
            std::vector<uint8_t>(kStartPvtPacket.begin(), kStartPvtPacket.end()));
  EXPECT_EQ(frameGarminPacket(kGarminCommand, v({kGarminCommandStopPvt, 0})),
            std::vector<uint8_t>(kStopPvtPacket.begin(), kStopPvtPacket.end()));
  EXPECT_EQ(frameGarminPacket(kGarminAck, v({kGarminPvt, 0})),
            std::vector<uint8_t>(kAckPvtPacket.begin(), kAckPvtPacket.end()));
  EXPECT_EQ(frameGarminPacket(kGarminNak, v({kGarminPvt, 0})),
            std::vector<uint8_t>(kNakPvtPacket.begin(), kNakPvtPacket.end()));
}

TEST(GarminPacket, ChecksumIsTheTwosComplementOfTheSum) {
  EXPECT_EQ(garminChecksum(v({})), 0);
  EXPECT_EQ(garminChecksum(v({0x0A, 0x02, 0x31, 0x00})), 0xC3);
  EXPECT_EQ(garminChecksum(v({0xFF, 0x01})), 0x00);
  EXPECT_EQ(garminChecksum(v({0x01})), 0xFF);
}

TEST(GarminPacket, ADleInsideIsSentTwice) {
  // id 0x10, size 2, data 10 20, checksum 0xBE which is no DLE.
  EXPECT_EQ(frameGarminPacket(0x10, v({0x10, 0x20})),
            v({0x10, 0x10, 0x10, 0x02, 0x10, 0x10, 0x20, 0xBE, 0x10, 0x03}));
}

TEST(GarminFramer, StoresIdSizeDataChecksumAndTheClosingDle) {
  GarminFramer framer;
  const auto packets = frame(framer, v({'x', 'y', 0x10, 0x06, 0x02, 0x0A, 0x00, 0xEE, 0x10, 0x03}));
  ASSERT_EQ(packets.size(), 1u);
  EXPECT_EQ(packets[0], v({0x06, 0x02, 0x0A, 0x00, 0xEE, 0x10}));
  EXPECT_EQ(checkGarminPacket(packets[0]), GarminPacketCheck::kGood);
}

TEST(GarminFramer, ThePacketAfterADoubledDleStartsAnew) {
  GarminFramer framer;
  const auto packets = frame(framer, frameGarminPacket(kGarminPvt, v({1, 2, 0x10, 5, 6})));
  ASSERT_EQ(packets.size(), 1u);
  // What is left after the doubled DLE: 5 6, the checksum and the DLE.
  EXPECT_EQ(packets[0].size(), 4u);
  EXPECT_EQ(packets[0][0], 5);
  EXPECT_NE(checkGarminPacket(packets[0]), GarminPacketCheck::kGood);
}

TEST(GarminFramer, BytesPastTheBufferAreDropped) {
  GarminFramer framer;
  std::vector<uint8_t> bytes{0x10, 0x33, 0xFF};
  bytes.insert(bytes.end(), 400, 0x55);
  bytes.insert(bytes.end(), {0x10, 0x03});
  const auto packets = frame(framer, bytes);
  ASSERT_EQ(packets.size(), 1u);
  EXPECT_EQ(packets[0].size(), GarminFramer::kPacketSize);
}

struct CheckCase {
  const char* name;
  std::vector<uint8_t> packet;
  GarminPacketCheck expected;
};

class GarminPacketCheckTest : public ::testing::TestWithParam<CheckCase> {};

TEST_P(GarminPacketCheckTest, Classifies) {
  EXPECT_EQ(checkGarminPacket(GetParam().packet), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, GarminPacketCheckTest,
    ::testing::Values(CheckCase{"Good", v({0x0A, 0x02, 0x31, 0x00, 0xC3, 0x10}), GarminPacketCheck::kGood},
                      CheckCase{"WrongChecksum", v({0x0A, 0x02, 0x31, 0x00, 0xC4, 0x10}),
                                GarminPacketCheck::kChecksumMismatch},
                      // Checksum right, but the size says 3 data bytes.
                      CheckCase{"SizeMismatch", v({0x0A, 0x03, 0x31, 0x00, 0xC2, 0x10}),
                                GarminPacketCheck::kMalformed},
                      CheckCase{"TooShort", v({0x00, 0x10}), GarminPacketCheck::kMalformed},
                      CheckCase{"OneByte", v({0x10}), GarminPacketCheck::kMalformed},
                      CheckCase{"Empty", v({}), GarminPacketCheck::kMalformed},
                      // A stuffed DLE that survived is left out of the sum.
                      CheckCase{"StuffedDleSkipped", v({0x05, 0x03, 0x10, 0x10, 0x07, 0xE1, 0x10}),
                                GarminPacketCheck::kGood}),
    [](const ::testing::TestParamInfo<CheckCase>& info) { return info.param.name; });

TEST(GarminScan, FindsWellFormedPacketsWithTheirStuffingUndone) {
  std::vector<uint8_t> stream{'j', 'u', 'n', 'k', 0x10};
  const auto a = frameGarminPacket(0x72, v({0x10, 0x10, 1}));
  const auto b = frameGarminPacket(0x33, v({7}));
  stream.insert(stream.end(), a.begin(), a.end());
  stream.insert(stream.end(), {0x10, 0x33, 0x01, 0x07, 0x00, 0x10, 0x03});  // bad checksum
  stream.insert(stream.end(), b.begin(), b.end());
  std::vector<std::pair<uint8_t, std::vector<uint8_t>>> found;
  scanGarminPackets(stream, [&](uint8_t id, std::span<const uint8_t> data, size_t end) {
    found.emplace_back(id, std::vector<uint8_t>(data.begin(), data.end()));
    EXPECT_EQ(stream[end - 1], 0x03);
  });
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].first, 0x72);
  EXPECT_EQ(found[0].second, v({0x10, 0x10, 1}));
  EXPECT_EQ(found[1].second, v({7}));
}

TEST(GarminScan, TheRecordedGarminCaptureHoldsItsPackets) {
  const auto path = test::dataFile("gps/garmin_binary/garmin18x-bin.raw");
  if (path.empty()) GTEST_SKIP() << "no test data";
  const auto bytes = test::readFile(path);
  int satellites = 0;
  int records = 0;
  scanGarminPackets(std::vector<uint8_t>(bytes.begin(), bytes.end()),
                    [&](uint8_t id, std::span<const uint8_t> data, size_t) {
                      if (id == 0x72 && data.size() == 84) ++satellites;
                      if (id == 0x33 && data.size() == 64) ++records;
                    });
  EXPECT_EQ(satellites, 29);
  EXPECT_EQ(records, 29);
}

}  // namespace
}  // namespace orvel
