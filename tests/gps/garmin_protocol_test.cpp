// Garmin packet framing and checking, and the Garmin protocol on a fake clock and port.
#include <gtest/gtest.h>

#include <vector>

#include "gps/garmin_packet.h"
#include "gps/garmin_protocol.h"
#include "gps/garmin_pvt.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

constexpr auto kNothing = ProcessResult::kNothing;
constexpr auto kRecognised = ProcessResult::kRecognised;
constexpr auto kFailed = ProcessResult::kFailed;

const std::vector<uint8_t> kStart(kStartPvtPacket.begin(), kStartPvtPacket.end());
const std::vector<uint8_t> kStop(kStopPvtPacket.begin(), kStopPvtPacket.end());

std::vector<uint8_t> ackOf(uint8_t id) { return frameGarminPacket(kGarminAck, std::vector<uint8_t>{id, 0}); }
std::vector<uint8_t> nakOf(uint8_t id) { return frameGarminPacket(kGarminNak, std::vector<uint8_t>{id, 0}); }

// A position record as the receiver lays it out: packed, little-endian.
static_assert(std::endian::native == std::endian::little);
struct [[gnu::packed]] Pvt {
  float altitude = 100.0f, epe = 5.0f, eph = 8.0f, epv = 12.0f;
  uint16_t fix = 3;
  double timeOfWeek = 74835.0, latitude = 0.5, longitude = -1.0;
  float east = 3.0f, north = 4.0f, up = 0.0f, mslHeight = 26.5f;
  uint16_t leapSeconds = 18;
  uint32_t weekStartDays = 3773;

  std::vector<uint8_t> bytes(size_t size = sizeof(Pvt)) const {
    static_assert(sizeof(Pvt) == 64);
    const auto* raw = reinterpret_cast<const uint8_t*>(this);
    return std::vector<uint8_t>(raw, raw + size);
  }
};

class GarminProtocolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    garmin.setPort(&port);
    garmin.open();
  }
  ProcessResult feedAt(uint32_t t, const std::vector<uint8_t>& bytes) {
    now = t;
    return garmin.process(bytes);
  }
  ProcessResult silentAt(uint32_t t) {
    now = t;
    return garmin.process({});
  }
  void acknowledge(uint32_t t) { ASSERT_EQ(feedAt(t, ackOf(kGarminCommand)), kRecognised); }

  uint32_t now = 5000;
  test::FakePort port;
  test::FixCollector collected;
  GarminProtocol garmin{[this] { return now; }, collected};
};

TEST_F(GarminProtocolTest, TheStartRequestAndItsAnswer) {
  EXPECT_EQ(port.writes, std::vector<std::vector<uint8_t>>{kStart});
  EXPECT_TRUE(garmin.awaitingAck());
  EXPECT_EQ(silentAt(8000), kNothing);  // unanswered: fails after three seconds
  EXPECT_EQ(silentAt(8001), kFailed);

  now = 20000;
  garmin.open();  // an ACK of another packet is not the answer
  EXPECT_EQ(feedAt(20100, ackOf(kGarminPvt)), kRecognised);
  EXPECT_FALSE(garmin.streaming());
  EXPECT_EQ(silentAt(23001), kFailed);

  now = 30000;
  garmin.open();  // a NAK ends the attempt at the next silence
  EXPECT_EQ(feedAt(30100, nakOf(kGarminCommand)), kRecognised);
  EXPECT_FALSE(garmin.awaitingAck() || garmin.streaming());
  EXPECT_EQ(silentAt(30120), kFailed);

  now = 40000;
  garmin.open();
  acknowledge(40100);
  EXPECT_TRUE(garmin.streaming());
  EXPECT_FALSE(garmin.awaitingAck());
  EXPECT_EQ(silentAt(55000), kNothing);  // the ACK time-out no longer applies
}

TEST_F(GarminProtocolTest, RecordsThatGiveNoFix) {
  acknowledge(5100);
  for (uint16_t code : {0, 1}) {  // no fix: the track breaks instead
    Pvt pvt;
    pvt.fix = code;
    feedAt(5200, frameGarminPacket(kGarminPvt, pvt.bytes()));
  }
  EXPECT_EQ(collected.lost, 2);
  EXPECT_EQ(port.writes.back(), kStop);
  // Too short: only answered with stop.
  EXPECT_EQ(feedAt(5300, frameGarminPacket(kGarminPvt, Pvt{}.bytes(60))), kRecognised);
  EXPECT_EQ(port.writes.size(), 4u);
  // A DLE inside: the framer loses the record.
  Pvt dle;
  dle.leapSeconds = 0x10;
  EXPECT_EQ(feedAt(5400, frameGarminPacket(kGarminPvt, dle.bytes())), kRecognised);
  // A wrong checksum: ignored, but still Garmin.
  auto packet = frameGarminPacket(kGarminPvt, Pvt{}.bytes());
  packet[packet.size() - 3] ^= 0x01;
  EXPECT_EQ(feedAt(5500, packet), kRecognised);
  EXPECT_TRUE(collected.fixes.empty());
  EXPECT_EQ(collected.lost, 2);
  // A size that does not match its data (checksum right) is no Garmin.
  EXPECT_EQ(feedAt(5600, std::vector<uint8_t>{0x10, 0x06, 0x03, 0x0A, 0x00, 0xED, 0x10, 0x03}), kFailed);
}


using Bytes = std::vector<uint8_t>;

// Feeds every byte; returns the packets the framer completed.
std::vector<Bytes> frame(const Bytes& bytes) {
  GarminFramer framer;
  std::vector<Bytes> packets;
  for (uint8_t b : bytes) {
    if (framer.feed(b)) packets.emplace_back(framer.packet().begin(), framer.packet().end());
  }
  return packets;
}

TEST(GarminPacket, FramingSumsAndDoublesEveryDle) {
  EXPECT_EQ(frameGarminPacket(kGarminCommand, Bytes{kGarminCommandStartPvt, 0}),
            Bytes(kStartPvtPacket.begin(), kStartPvtPacket.end()));
  // id 0x10, size 2, data 10 20, checksum 0xBE which is no DLE.
  EXPECT_EQ(frameGarminPacket(0x10, Bytes{0x10, 0x20}), (Bytes{0x10, 0x10, 0x10, 0x02, 0x10, 0x10, 0x20, 0xBE, 0x10, 0x03}));
}

TEST(GarminFramer, KeepsIdSizeDataChecksumAndTheClosingDle) {
  auto packets = frame(Bytes{'x', 'y', 0x10, 0x06, 0x02, 0x0A, 0x00, 0xEE, 0x10, 0x03});
  ASSERT_EQ(packets.size(), 1u);
  EXPECT_EQ(packets[0], (Bytes{0x06, 0x02, 0x0A, 0x00, 0xEE, 0x10}));
  // The packet after a doubled DLE starts anew: 5 6, the checksum and the DLE are left.
  packets = frame(frameGarminPacket(kGarminPvt, Bytes{1, 2, 0x10, 5, 6}));
  ASSERT_EQ(packets.size(), 1u);
  EXPECT_EQ(packets[0].size(), 4u);
  EXPECT_EQ(packets[0][0], 5);
  // Bytes past the buffer are dropped.
  Bytes longOne(405, 0x55);
  longOne[0] = 0x10;
  longOne[1] = 0x33;
  longOne[2] = 0xFF;
  longOne[403] = 0x10;
  longOne[404] = 0x03;
  packets = frame(longOne);
  ASSERT_EQ(packets.size(), 1u);
  EXPECT_EQ(packets[0].size(), GarminFramer::kPacketSize);
}

TEST(GarminPacket, CheckOfAReceivedPacket) {
  struct Case {
    Bytes packet;
    GarminPacketCheck expected;
  };
  const Case cases[] = {
      {{0x0A, 0x02, 0x31, 0x00, 0xC3, 0x10}, GarminPacketCheck::kGood},
      {{0x0A, 0x02, 0x31, 0x00, 0xC4, 0x10}, GarminPacketCheck::kChecksumMismatch},
      {{0x0A, 0x03, 0x31, 0x00, 0xC2, 0x10}, GarminPacketCheck::kMalformed},  // checksum right, size wrong
      {{0x00, 0x10}, GarminPacketCheck::kMalformed},
      {{0x10}, GarminPacketCheck::kMalformed},
      {{}, GarminPacketCheck::kMalformed},
      // A stuffed DLE that survived is left out of the sum.
      {{0x05, 0x03, 0x10, 0x10, 0x07, 0xE1, 0x10}, GarminPacketCheck::kGood},
  };
  for (const Case& c : cases) EXPECT_EQ(checkGarminPacket(c.packet), c.expected) << ::testing::PrintToString(c.packet);
}

}  // namespace
}  // namespace orvel
