// Robustness of the Garmin protocol: random bytes rich in DLE and ETX, random framed packets
// and random tick sequences (fixed seed). Besides not crashing, the protocol must only ever
// send its start and stop commands.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "gps/garmin_protocol.h"
#include "gps/garmin_pvt.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

std::vector<uint8_t> randomPacket(std::mt19937& rng) {
  static const uint8_t kIds[] = {kGarminAck, kGarminNak, kGarminPvt, kGarminCommand, 0x72, 0x10, 0x03};
  const uint8_t id = rng() % 4 ? kIds[rng() % std::size(kIds)] : static_cast<uint8_t>(rng());
  std::vector<uint8_t> data(rng() % 3 ? (rng() % 2 ? 64 + rng() % 8 : 2) : rng() % 256);
  for (uint8_t& b : data) b = rng() % 100 == 0 ? kDle : static_cast<uint8_t>(rng());
  if ((id == kGarminAck || id == kGarminNak) && !data.empty()) data[0] = kGarminCommand;
  auto wire = frameGarminPacket(id, data);
  if (rng() % 6 == 0) wire[rng() % wire.size()] ^= static_cast<uint8_t>(1u << (rng() % 8));
  return wire;
}

std::vector<uint8_t> randomStream(std::mt19937& rng) {
  std::vector<uint8_t> stream;
  const size_t target = rng() % 3000;
  while (stream.size() < target) {
    if (rng() % 2) {
      const auto packet = randomPacket(rng);
      stream.insert(stream.end(), packet.begin(), packet.end());
    } else {
      for (size_t n = rng() % 40; n > 0; --n) {
        const uint32_t kind = rng() % 8;
        stream.push_back(kind == 0 ? kDle : kind == 1 ? kEtx : static_cast<uint8_t>(rng()));
      }
    }
  }
  return stream;
}

uint32_t nextStep(std::mt19937& rng) {
  const uint32_t kind = rng() % 100;
  if (kind < 75) return rng() % 100;
  if (kind < 97) return rng() % 4000;
  return rng();
}

TEST(GarminFuzz, RandomStreamsAndTicks) {
  std::mt19937 rng(424242);
  uint32_t now = 0xFFFFF000u;
  test::FakePort port;
  test::FixCollector collected;
  GarminProtocol garmin([&] { return now; }, collected);
  garmin.setPort(&port);
  garmin.open();
  const std::vector<uint8_t> start(kStartPvtPacket.begin(), kStartPvtPacket.end());
  const std::vector<uint8_t> stop(kStopPvtPacket.begin(), kStopPvtPacket.end());
  int failures = 0;
  for (int run = 0; run < 600; ++run) {
    const auto stream = randomStream(rng);
    size_t at = 0;
    while (at < stream.size()) {
      now += nextStep(rng);
      ProcessResult r;
      if (rng() % 6 == 0) {
        r = garmin.process({});
      } else {
        const size_t n = std::min<size_t>(stream.size() - at, 1 + rng() % (rng() % 4 == 0 ? 1024 : 30));
        r = garmin.process(std::span<const uint8_t>(stream.data() + at, n));
        at += n;
      }
      ASSERT_LE(static_cast<int>(r), 2);
      if (r == ProcessResult::kFailed) {
        ++failures;
        garmin.close();
        garmin.open();
      }
    }
  }
  for (const auto& written : port.writes) ASSERT_TRUE(written == start || written == stop);
  for (const GpsFix& fix : collected.fixes) EXPECT_EQ(fix.flags, kGarminPvtFlags);
  EXPECT_GT(failures, 0);
  EXPECT_FALSE(collected.fixes.empty());
}

TEST(GarminFuzz, AnyRecordBytesDecodeWithoutHarm) {
  std::mt19937 rng(5);
  for (int run = 0; run < 20000; ++run) {
    std::vector<uint8_t> data(rng() % 80);
    for (uint8_t& b : data) b = static_cast<uint8_t>(rng());
    GpsFix fix;
    if (decodeGarminPvt(data, fix)) {
      EXPECT_GE(data.size(), kGarminPvtSize);
      EXPECT_EQ(fix.flags, kGarminPvtFlags);
    } else {
      EXPECT_EQ(fix.flags, 0u);
    }
  }
}

}  // namespace
}  // namespace orvel
