// Garmin packet framing: the fixed packets, the checksum, DLE stuffing, the receiving
// framer's quirks and the check of a received packet.
#include <gtest/gtest.h>

#include <vector>

#include "gps/garmin_packet.h"

namespace orvel {
namespace {

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
  EXPECT_EQ(frameGarminPacket(kGarminNak, Bytes{kGarminPvt, 0}), Bytes(kNakPvtPacket.begin(), kNakPvtPacket.end()));
  // The checksum is the two's complement of the sum of id, size and data.
  EXPECT_EQ(garminChecksum(Bytes{0x0A, 0x02, 0x31, 0x00}), 0xC3);
  EXPECT_EQ(garminChecksum(Bytes{0xFF, 0x01}), 0x00);
  EXPECT_EQ(garminChecksum(Bytes{}), 0);
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
