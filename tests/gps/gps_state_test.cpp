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

TEST_F(GpsStateTest, StatusTextIsCutAndCopiedWithinTheCapacity) {
  state.setStatusText(std::u16string(200, u'x'));
  char16_t buffer[600];
  state.getStatusText(buffer, 600);
  EXPECT_EQ(std::u16string(buffer), std::u16string(127, u'x'));  // capacity is limited to 128 first
  EXPECT_EQ(state.gpsSnapshot().statusText, std::u16string(128, u'x'));
  EXPECT_EQ(posted, std::vector<int>{kMsgStatusChanged});
  state.setStatusText(std::u16string(u"COM3\0junk", 9));  // stops at its terminator
  EXPECT_EQ(state.gpsSnapshot().statusText, u"COM3");

  state.setStatusText(u"Поиск GPS");
  for (const auto& [capacity, expected] : std::vector<std::pair<size_t, std::u16string>>{
           {1, u""}, {2, u"П"}, {5, u"Поис"}, {10, u"Поиск GPS"}, {500, u"Поиск GPS"}}) {
    std::u16string out(600, u'#');
    state.getStatusText(out.data(), capacity);
    EXPECT_EQ(std::u16string(out.c_str()), expected) << capacity;
  }
  std::u16string untouched(4, u'#');
  state.getStatusText(untouched.data(), 0);
  EXPECT_EQ(untouched, u"####");
}

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
