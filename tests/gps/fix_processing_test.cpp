#include "gps/fix_processing.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "gps/gps_state.h"

namespace orvel {
namespace {

// One step of a sequence: a fix (flags, position, satellites used), or with `lost` its loss.
struct Step {
  uint32_t flags = 0;
  float lon = 0, lat = 0;
  uint32_t used = 0;
  bool lost = false;
};
constexpr uint32_t kPos = kFixPosition;
const Step kNoPosition{kFixTime | kFixType};
const Step kLost{0, 0, 0, 0, true};

// A state and its fix processing, with an observer and a poster that log their calls.
struct Rig {
  Rig() {
    FixObserver observer;
    // Every hook reads the shared state: were the GPS lock still held, this would hang.
    const auto text = [](const char* what, double a, double b) {
      char line[64];
      std::snprintf(line, sizeof line, "%s %g %g", what, a, b);
      return std::string(line);
    };
    observer.beginRecordedTrack = [this] { note("begin"); };
    observer.markSegmentStart = [this] { note("mark"); };
    observer.appendRecordedPoint = [this, text](const GpsFix& f) { note(text("rec", f.longitude, f.latitude)); };
    observer.appendActivePoint = [this, text](float lon, float lat) { note(text("act", lon, lat)); };
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
        continue;
      }
      GpsFix fix;
      fix.flags = step.flags;
      fix.longitude = step.lon;
      fix.latitude = step.lat;
      fix.satellitesUsed = step.used;
      fix.time = 40000.0;
      fixes.updateFix(fix);
    }
  }

  GpsState state;
  FixProcessor fixes{state};
  std::vector<std::string> log;
  int messages = 0;
};

TEST(FixProcessing, Sequences) {
  const struct {
    const char* name;
    std::vector<Step> steps;
    std::vector<std::string> expected;
  } cases[] = {
      {"first fix begins a track and a segment", {{kPos, 10, 60}}, {"begin", "mark", "rec 10 60", "act 10 60", "icon 0"}},
      {"same latitude, far longitude: not moved",
       {{kPos, 10, 60}, {kPos, 20, 60}},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "icon 0"}},
      {"both axes changed a little, no error estimate: moved",
       {{kPos, 10, 60}, {kPos, 10.00001f, 59.99999f}},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "rec 10 60", "act 10 60", "icon 0"}},
      {"no position: nothing recorded, nothing broken; a position after none begins a new track",
       {{kPos, 10, 60}, kNoPosition, {kPos, 10, 60}},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "icon 0", "begin", "mark", "rec 10 60", "act 10 60",
        "icon 0"}},
      {"lost fix breaks the track but keeps the stored position",
       {{kPos, 10, 60}, kLost, {kPos, 11, 61}},
       {"begin", "mark", "rec 10 60", "act 10 60", "icon 0", "begin", "mark", "rec 11 61", "act 11 61", "icon 0"}},
      {"lost before any fix", {kLost, kLost}, {"begin", "mark", "begin", "mark"}},
      {"satellite count only when flagged",
       {{kFixTime | kFixSatellitesUsed, 0, 0, 7}, {kFixTime, 0, 0, 9}},
       {"icon 7", "icon 0"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Rig rig;
    rig.run(c.steps);
    EXPECT_EQ(rig.log, c.expected);
    size_t fixes = 0;
    for (const Step& step : c.steps) fixes += step.lost ? 0 : 1;
    EXPECT_EQ(rig.messages, fixes > 0 ? 1 : 0);  // coalesced: nobody cleared the latch
    EXPECT_EQ(rig.state.isLatchSet(kMsgFixChanged), fixes > 0);
  }
  Rig rig;  // the stored fix is the new one whole, also without observer or poster
  rig.fixes.setFixObserver({});
  rig.state.setGpsMessagePoster(nullptr);
  rig.run({{kPos | kFixSpeed, 10, 60}, kNoPosition});
  EXPECT_TRUE(rig.log.empty());
  EXPECT_EQ(rig.state.currentFix().flags, kFixTime | kFixType);
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
