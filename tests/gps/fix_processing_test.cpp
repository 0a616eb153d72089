#include "gps/fix_processing.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "gps/gps_state.h"

namespace orvel {
namespace {

// One step of a sequence: a fix, or the loss of it.
struct Step {
  bool lost = false;
  GpsFix fix;
};

Step at(float lon, float lat) {
  Step s;
  s.fix.flags = kFixPosition;
  s.fix.longitude = lon;
  s.fix.latitude = lat;
  return s;
}
Step withError(Step s, float metres) {
  s.fix.flags |= kFixHorizontalError;
  s.fix.horizontalError = metres;
  return s;
}
Step withSatellites(Step s, uint32_t used) {
  s.fix.flags |= kFixSatellitesUsed;
  s.fix.satellitesUsed = used;
  return s;
}
Step noPosition() {
  Step s;
  s.fix.flags = kFixTime | kFixType;
  s.fix.time = 40000.0;
  return s;
}
Step lost() {
  Step s;
  s.lost = true;
  return s;
}

std::string text(const char* format, double a, double b) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, a, b);
  return buffer;
}

class FixProcessingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    resetGpsState();
    FixObserver observer;
    // Every hook reads the shared state: were the GPS lock still held, this would hang.
    observer.beginRecordedTrack = [this] { log.push_back("begin"); touchState(); };
    observer.markSegmentStart = [this] { log.push_back("mark"); touchState(); };
    observer.appendRecordedPoint = [this](const GpsFix& fix) {
      log.push_back(text("rec %g %g", fix.longitude, fix.latitude));
      touchState();
    };
    observer.appendActivePoint = [this](float lon, float lat) {
      log.push_back(text("act %g %g", lon, lat));
      touchState();
    };
    observer.showReception = [this](uint32_t used) {
      log.push_back("icon " + std::to_string(used));
      touchState();
    };
    setFixObserver(std::move(observer));
    setGpsMessagePoster([this](int message) {
      ++messages;
      EXPECT_EQ(message, kMsgFixChanged);
      touchState();
    });
  }
  void TearDown() override {
    setFixObserver({});
    setGpsMessagePoster(nullptr);
    resetGpsState();
  }
  void touchState() {
    GpsFix fix;
    getFix(fix);
    resetSatellites(0);
  }
  void run(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      if (step.lost) {
        fixLost();
      } else {
        updateFix(step.fix);
      }
    }
  }

  std::vector<std::string> log;
  int messages = 0;
};

struct SequenceCase {
  const char* name;
  std::vector<Step> steps;
  std::vector<std::string> expected;
};

TEST_F(FixProcessingTest, Sequences) {
  const SequenceCase cases[] = {
      {"first fix begins a track and a segment",
       {at(10, 60)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0"}},
      {"same latitude, far longitude: not moved",
       {at(10, 60), at(20, 60)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "icon 0"}},
      {"same longitude, far latitude: not moved",
       {at(10, 60), at(10, 61)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "icon 0"}},
      {"both axes changed a little, no error estimate: moved",
       {at(10, 60), at(10.00001f, 59.99999f)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "rec 10 60", "act 10 60", "icon 0"}},
      {"no position: nothing recorded, nothing broken",
       {at(10, 60), noPosition()},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "icon 0"}},
      {"position after none begins a new track",
       {at(10, 60), noPosition(), at(10, 60)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "icon 0", "begin", "mark", "rec 10 60", "act 10 60",
        "icon 0"}},
      {"lost fix breaks the track but keeps the stored position",
       {at(10, 60), lost(), at(11, 61)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "begin", "mark", "rec 11 61", "act 11 61", "icon 0"}},
      {"lost before any fix",
       {lost(), lost()},
       {"begin", "mark", "begin", "mark"}},
      {"satellite count only when flagged",
       {withSatellites(noPosition(), 7), [] { Step s = noPosition(); s.fix.satellitesUsed = 9; return s; }()},
       {"icon 7", "icon 0"}},
  };
  for (const SequenceCase& c : cases) {
    SCOPED_TRACE(c.name);
    resetGpsState();
    log.clear();
    messages = 0;
    run(c.steps);
    EXPECT_EQ(log, c.expected);
    size_t fixes = 0;
    for (const Step& step : c.steps) fixes += step.lost ? 0 : 1;
    EXPECT_EQ(messages, fixes > 0 ? 1 : 0);  // coalesced: nobody cleared the latch
    EXPECT_EQ(isLatchSet(kMsgFixChanged), fixes > 0);
  }
}

TEST_F(FixProcessingTest, StoredFixIsTheNewOneWhole) {
  Step first = withSatellites(withError(at(10, 60), 5), 8);
  first.fix.flags |= kFixSpeed;
  first.fix.speed = 12;
  run({first, noPosition()});
  const GpsFix now = currentFix();
  EXPECT_EQ(now.flags, kFixTime | kFixType);
  EXPECT_EQ(now.time, 40000.0);
}

TEST_F(FixProcessingTest, MessagePostsAgainAfterTheLatchIsCleared) {
  for (int i = 0; i < 20; ++i) run({at(10, 60)});
  EXPECT_EQ(messages, 1);
  clearLatch(kMsgFixChanged);
  run({at(10, 60)});
  EXPECT_EQ(messages, 2);
}

TEST_F(FixProcessingTest, WorksWithoutObserverOrPoster) {
  setFixObserver({});
  setGpsMessagePoster(nullptr);
  run({at(10, 60), lost(), at(11, 61)});
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(currentFix().longitude, 11.0f);
}

struct ToleranceCase {
  float lat;
  float error;
  float dLon;
  float dLat;
  bool moved;
};

TEST(FixTolerance, BothAxesBeyondTheErrorEstimate) {
  // 10 m at 60 degrees: 9e-5 degrees of latitude and 1.8e-4 of longitude.
  const ToleranceCase cases[] = {
      {60, 10, 2.0e-4f, 1.0e-4f, true},
      {60, 10, 1.6e-4f, 1.0e-4f, false},
      {60, 10, 2.0e-4f, 0.8e-4f, false},
      {60, 10, -2.0e-4f, -1.0e-4f, true},
      {-60, 10, 2.0e-4f, -1.0e-4f, true},
      {-60, 10, 1.6e-4f, -1.0e-4f, false},
      {0, 10, 1.0e-4f, 1.0e-4f, true},
      {0, 10, 0.8e-4f, 1.0e-4f, false},
      {0, 0, 1e-5f, 1e-5f, true},
      {0, 0, 0, 1e-5f, false},
      {0, 0, 1e-5f, 0, false},
      {45, 100, 1.3e-3f, 1.0e-3f, true},   // 9e-4 and 1.27e-3
      {45, 100, 1.2e-3f, 1.0e-3f, false},
      {89.9f, 10, 1.0f, 0.05f, false},     // the table's cosine of 90 is 0: no longitude counts
  };
  for (const ToleranceCase& c : cases) {
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
}

TEST(FixTolerance, NeedsBothPositions) {
  GpsFix a;
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
