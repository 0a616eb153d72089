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

// A state and its fix processing, with an observer and a poster that log their calls.
struct Rig {
  Rig() {
    FixObserver observer;
    // Every hook reads the shared state: were the GPS lock still held, this would hang.
    observer.beginRecordedTrack = [this] { note("begin"); };
    observer.markSegmentStart = [this] { note("mark"); };
    observer.appendRecordedPoint = [this](const GpsFix& fix) { note(text("rec %g %g", fix.longitude, fix.latitude)); };
    observer.appendActivePoint = [this](float lon, float lat) { note(text("act %g %g", lon, lat)); };
    observer.showReception = [this](uint32_t used) { note("icon " + std::to_string(used)); };
    fixes.setFixObserver(std::move(observer));
    state.setGpsMessagePoster([this](int message) {
      ++messages;
      EXPECT_EQ(message, kMsgFixChanged);
      touchState();
    });
  }
  void note(std::string entry) {
    log.push_back(std::move(entry));
    touchState();
  }
  void touchState() {
    GpsFix fix;
    state.getFix(fix);
    state.resetSatellites(0);
  }
  void run(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      if (step.lost) {
        fixes.fixLost();
      } else {
        fixes.updateFix(step.fix);
      }
    }
  }

  GpsState state;
  FixProcessor fixes{state};
  std::vector<std::string> log;
  int messages = 0;
};

struct SequenceCase {
  const char* name;
  std::vector<Step> steps;
  std::vector<std::string> expected;
};

TEST(FixProcessing, Sequences) {
  const SequenceCase cases[] = {
      {"first fix begins a track and a segment",
       {at(10, 60)},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0"}},
      {"same latitude, far longitude: not moved",
       {at(10, 60), at(20, 60)},
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
    Rig rig;
    rig.run(c.steps);
    EXPECT_EQ(rig.log, c.expected);
    size_t fixes = 0;
    for (const Step& step : c.steps) fixes += step.lost ? 0 : 1;
    EXPECT_EQ(rig.messages, fixes > 0 ? 1 : 0);  // coalesced: nobody cleared the latch
    EXPECT_EQ(rig.state.isLatchSet(kMsgFixChanged), fixes > 0);
  }
}

TEST(FixProcessing, StoredFixIsTheNewOneWholeAndWorksWithoutObserverOrPoster) {
  Step first = withSatellites(withError(at(10, 60), 5), 8);
  first.fix.flags |= kFixSpeed;
  Rig rig;
  rig.run({first, noPosition()});
  EXPECT_EQ(rig.state.currentFix().flags, kFixTime | kFixType);
  EXPECT_EQ(rig.state.currentFix().time, 40000.0);
  rig.fixes.setFixObserver({});
  rig.state.setGpsMessagePoster(nullptr);
  rig.log.clear();
  rig.run({at(10, 60), lost(), at(11, 61)});
  EXPECT_TRUE(rig.log.empty());
  EXPECT_EQ(rig.state.currentFix().longitude, 11.0f);
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
      {0, 0, 1e-5f, 1e-5f, true},
      {0, 0, 0, 1e-5f, false},
      {0, 0, 1e-5f, 0, false},
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
  // Both fixes need a position.
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
