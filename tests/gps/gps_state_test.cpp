// The GPS state the reading threads share with the viewer, and the fix processing rule of
// when a position counts as moved.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "gps/fix_processing.h"
#include "gps/gps_state.h"

namespace orvel {
namespace {

class GpsStateTest : public ::testing::Test {
 protected:
  void SetUp() override { state.setGpsMessagePoster([this](int message) { posted.push_back(message); }); }
  GpsState state;
  std::vector<int> posted;
};

TEST_F(GpsStateTest, MessagesAreCoalescedUntilTheLatchIsCleared) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this] {
      for (int i = 0; i < 1000; ++i) state.postGpsMessage(kMsgFixChanged);
    });
  }
  for (auto& thread : threads) thread.join();
  state.satellitesChanged();
  state.satellitesChanged();
  EXPECT_EQ(posted, (std::vector<int>{kMsgFixChanged, kMsgSatellitesChanged}));
  EXPECT_TRUE(state.isLatchSet(kMsgFixChanged));
  EXPECT_FALSE(GpsState().isLatchSet(kMsgFixChanged)) << "each state keeps latches of its own";
  state.clearLatch(kMsgFixChanged);
  EXPECT_FALSE(state.isLatchSet(kMsgFixChanged));
  state.postGpsMessage(kMsgFixChanged);
  state.satellitesChanged();  // still latched
  state.postGpsMessage(1027);  // not one of ours
  EXPECT_EQ(posted, (std::vector<int>{kMsgFixChanged, kMsgSatellitesChanged, kMsgFixChanged}));
}

TEST(FixTolerance, BothAxesBeyondTheErrorEstimate) {
  // 10 m at 60 degrees: 9e-5 degrees of latitude and 1.8e-4 of longitude.
  const struct {
    float lat, error, dLon, dLat;
    bool moved;
  } cases[] = {
      {60, 10, 2.0e-4f, 1.0e-4f, true},   {60, 10, 1.6e-4f, 1.0e-4f, false},  {60, 10, 2.0e-4f, 0.8e-4f, false},
      {60, 10, -2.0e-4f, -1.0e-4f, true}, {-60, 10, 2.0e-4f, -1.0e-4f, true}, {-60, 10, 1.6e-4f, -1.0e-4f, false},
      {0, 0, 1e-5f, 1e-5f, true},         {0, 0, 0, 1e-5f, false},            {0, 0, 1e-5f, 0, false},
      {89.9f, 10, 1.0f, 0.05f, false},  // the table's cosine of 90 is 0: no longitude counts
  };
  for (const auto& c : cases) {
    GpsFix old;
    old.flags = kFixPosition;
    old.longitude = 30.0f;
    old.latitude = c.lat;
    GpsFix next = old;
    next.longitude += c.dLon;
    next.latitude += c.dLat;
    if (c.error > 0) {
      next.flags |= kFixHorizontalError;
      next.horizontalError = c.error;
    }
    EXPECT_EQ(hasMoved(old, next), c.moved) << c.lat << " " << c.error << " " << c.dLon << " " << c.dLat;
  }
  GpsFix a;  // both fixes need a position
  a.flags = kFixPosition;
  GpsFix b;
  b.longitude = 1;
  b.latitude = 1;
  EXPECT_FALSE(hasMoved(a, b));
  EXPECT_FALSE(hasMoved(b, a));
  b.flags = kFixPosition;
  EXPECT_TRUE(hasMoved(a, b));
}

}  // namespace
}  // namespace orvel
