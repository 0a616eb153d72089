#include "gps/gps_state.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

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

}  // namespace
}  // namespace orvel
