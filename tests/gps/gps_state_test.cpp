#include "gps/gps_state.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace orvel {
namespace {

class GpsStateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    resetGpsState();
    setGpsMessagePoster([this](int message) { posted.push_back(message); });
  }
  void TearDown() override {
    setGpsMessagePoster(nullptr);
    resetGpsState();
  }
  std::vector<int> posted;
};

TEST_F(GpsStateTest, StatusTextIsCutTo128Characters) {
  setStatusText(std::u16string(200, u'x'));
  char16_t buffer[600];
  getStatusText(buffer, 600);
  EXPECT_EQ(std::u16string(buffer), std::u16string(127, u'x'));  // capacity is limited to 128 first
  EXPECT_EQ(gpsSnapshot().statusText, std::u16string(128, u'x'));
  EXPECT_EQ(posted, std::vector<int>{kMsgStatusChanged});
}

TEST_F(GpsStateTest, StatusTextStopsAtItsTerminator) {
  setStatusText(std::u16string(u"COM3\0junk", 9));
  EXPECT_EQ(gpsSnapshot().statusText, u"COM3");
}

TEST_F(GpsStateTest, GetStatusTextHonoursCapacity) {
  setStatusText(u"Поиск GPS");
  struct Case {
    size_t capacity;
    std::u16string expected;
  };
  for (const Case& c : {Case{1, u""}, Case{2, u"П"}, Case{5, u"Поис"}, Case{10, u"Поиск GPS"}, Case{500, u"Поиск GPS"}}) {
    std::u16string buffer(600, u'#');
    getStatusText(buffer.data(), c.capacity);
    EXPECT_EQ(std::u16string(buffer.c_str()), c.expected) << c.capacity;
  }
  std::u16string untouched(4, u'#');
  getStatusText(untouched.data(), 0);
  EXPECT_EQ(untouched, u"####");
}

TEST_F(GpsStateTest, SatelliteListIsTheAnnouncedSize) {
  resetSatellites(12);
  for (uint32_t prn : {5u, 7u, 9u}) addSatellite({prn, 10 * prn, 100 + prn, 30 + prn});
  EXPECT_EQ(getSatelliteCount(), 12u);
  SatelliteInfo info;
  EXPECT_EQ(getSatellite(1, info), (SatelliteInfo{7, 70, 107, 37}));
  for (uint32_t i = 3; i < 12; ++i) EXPECT_EQ(getSatellite(i, info), SatelliteInfo{}) << i;
  for (int i = 0; i < 9; ++i) addSatellite({100u + i, 1, 1, 1});
  addSatellite({99, 99, 99, 99});  // the 13th is ignored
  EXPECT_EQ(getSatellite(11, info).prn, 108u);
  const GpsSnapshot snapshot = gpsSnapshot();
  ASSERT_EQ(snapshot.satellites.size(), 12u);
  EXPECT_EQ(snapshot.satellites[0].prn, 5u);
  EXPECT_EQ(snapshot.satellites[11].prn, 108u);
}

TEST_F(GpsStateTest, SatellitePastTheEndIsZero) {
  resetSatellites(2);
  addSatellite({1, 2, 3, 4});
  addSatellite({5, 6, 7, 8});
  for (uint32_t index : {2u, 3u, 0xFFFFFFFFu}) {
    SatelliteInfo info{9, 9, 9, 9};
    EXPECT_EQ(getSatellite(index, info), SatelliteInfo{}) << index;
  }
  resetSatellites(0xFFFFFFFFu);  // an absurd count is cut, not allocated
  EXPECT_EQ(getSatelliteCount(), kMaxSatellites);
  resetSatellites(0);
  SatelliteInfo info{9, 9, 9, 9};
  EXPECT_EQ(getSatellite(0, info), SatelliteInfo{});
}

TEST_F(GpsStateTest, MessagesAreCoalescedUntilTheLatchIsCleared) {
  for (int i = 0; i < 20; ++i) postGpsMessage(kMsgFixChanged);
  satellitesChanged();
  satellitesChanged();
  EXPECT_EQ(posted, (std::vector<int>{kMsgFixChanged, kMsgSatellitesChanged}));
  EXPECT_TRUE(isLatchSet(kMsgFixChanged));
  clearLatch(kMsgFixChanged);
  EXPECT_FALSE(isLatchSet(kMsgFixChanged));
  postGpsMessage(kMsgFixChanged);
  satellitesChanged();  // still latched
  EXPECT_EQ(posted, (std::vector<int>{kMsgFixChanged, kMsgSatellitesChanged, kMsgFixChanged}));
  postGpsMessage(1027);  // not one of ours
  clearLatch(5);
  EXPECT_EQ(posted.size(), 3u);
}

TEST_F(GpsStateTest, ManyThreadsPostOneMessage) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 1000; ++i) postGpsMessage(kMsgFixChanged);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(posted, std::vector<int>{kMsgFixChanged});
}

TEST_F(GpsStateTest, FixIsReplacedWhole) {
  GpsFix first;
  first.flags = kFixPosition | kFixSpeed;
  first.longitude = 10.5f;
  first.speed = 30.0f;
  exchangeFix(first);
  GpsFix second;
  second.flags = kFixTime;
  second.time = 38173.5;
  const GpsFix old = exchangeFix(second);
  EXPECT_EQ(old.flags, first.flags);
  EXPECT_EQ(old.longitude, 10.5f);
  GpsFix now;
  getFix(now);
  EXPECT_EQ(now.flags, kFixTime);
  EXPECT_EQ(currentFix().time, 38173.5);
  EXPECT_EQ(gpsSnapshot().fix.flags, kFixTime);
}

TEST(GpsFixTest, NoFixClearsPositionErrorsAndDilutions) {
  GpsFix fix;
  fix.flags = 0x7FFF & ~kFixReserved;
  setFixType(fix, kFixType3D);
  EXPECT_EQ(fix.flags, 0x7FFFu & ~kFixReserved);
  setFixType(fix, kFixTypeInvalid);
  EXPECT_EQ(fix.flags, (0x7FFFu & ~kFixReserved) & ~0x6016u);
  EXPECT_EQ(fix.fixType, 0u);
  EXPECT_TRUE(fix.has(kFixType | kFixTime | kFixAltitude | kFixSpeed));
}

TEST(GpsFixTest, FixTypeNames) {
  const char* names[] = {"Invalid", "Unknown", "2D", "3D", "2D diff", "3d diff",
                         "Prec", "RTK", "Float RTK", "Estimated", "Manual", "Simulation"};
  for (uint32_t code = 0; code < 12; ++code) EXPECT_EQ(fixTypeName(code), names[code]);
  EXPECT_EQ(fixTypeName(12), "Unknown");
  EXPECT_EQ(fixTypeName(0xFFFFFFFF), "Unknown");
}

}  // namespace
}  // namespace orvel
