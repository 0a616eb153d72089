#include "track/waypoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

#include "common/torture.h"
#include "core/message.h"
#include "data_dir_fixture.h"
#include "gps/ole_date.h"
#include "gpx/gpx_reader.h"
#include "track/le_bytes.h"
#include "track/waypoint_file.h"

namespace orvel::test {
namespace {

// One record as the file holds it, with arbitrary bytes in every fixed field.
std::string record(uint8_t seed, const std::vector<std::u16string>& strings, size_t fixedSize = 32) {
  std::string bytes;
  for (size_t i = 0; i < fixedSize; ++i) bytes.push_back(static_cast<char>(seed + i * 7));
  for (const std::u16string& s : strings) {
    uint8_t length[4];
    le::store32(length, static_cast<uint32_t>(s.size()));
    bytes.append(reinterpret_cast<const char*>(length), 4);
    for (char16_t c : s) {
      bytes.push_back(static_cast<char>(c & 0xFF));
      bytes.push_back(static_cast<char>(c >> 8));
    }
  }
  return bytes;
}

std::string header(uint8_t fixedSize = 32, uint8_t strings = 4) {
  return std::string{'W', 'O', 2, static_cast<char>(fixedSize), static_cast<char>(strings)};
}

class WaypointsTest : public DataDirTest {
 protected:
  std::filesystem::path file() const { return dir / "Waypoints.bin"; }
  std::vector<std::u16string> names() const {
    std::vector<std::u16string> result;
    for (const Waypoint& w : store.waypoints()) result.emplace_back(w.name());
    return result;
  }
  WaypointStore store{dir, messages};
};

TEST_F(WaypointsTest, DamagedFileKeepsWholeRecordsAndIsNotRewritten) {
  const std::string records[] = {record(1, {u"A", u"", u"", u""}), record(2, {u"BB", u"bb", u"", u""}),
                                 record(3, {u"CCC", u"", u"", u"c"})};
  const std::string whole = header() + records[0] + records[1] + records[2];
  std::vector<size_t> ends = {5};
  for (const std::string& r : records) ends.push_back(ends.back() + r.size());
  for (size_t cut = 5; cut < whole.size(); ++cut) {
    SCOPED_TRACE(cut);
    store.freeWaypoints();
    writeText(file(), whole.substr(0, cut));
    recorded.clear();
    store.loadWaypoints();
    const size_t wholeRecords = static_cast<size_t>(std::upper_bound(ends.begin(), ends.end(), cut) - ends.begin()) - 1;
    EXPECT_EQ(static_cast<size_t>(std::distance(store.waypoints().begin(), store.waypoints().end())), wholeRecords);
    const bool atBoundary = std::find(ends.begin(), ends.end(), cut) != ends.end();
    EXPECT_EQ(recorded.messages().size(), atBoundary ? 0u : 1u);
    if (!atBoundary) {
      EXPECT_EQ(recorded.last(), "Waypoint data are damaged.");
    }
    EXPECT_EQ(readText(file()), whole.substr(0, cut));
  }
  // A length far past the end.
  store.freeWaypoints();
  std::string huge = header() + records[0] + record(9, {u"X"});
  le::store32(reinterpret_cast<uint8_t*>(huge.data()) + huge.size() - 6, 0xFFFFFFFFu);
  writeText(file(), huge);
  recorded.clear();
  store.loadWaypoints();
  EXPECT_EQ(names(), std::vector<std::u16string>{u"A"});
  EXPECT_EQ(recorded.messages(), std::vector<std::string>{"Waypoint data are damaged."});
  // Records of no bytes at all cannot loop.
  store.freeWaypoints();
  writeText(file(), header(0, 0) + "x");
  store.loadWaypoints();
  EXPECT_TRUE(store.waypoints().empty());
}

TEST_F(WaypointsTest, AutomaticNames) {
  struct Case {
    std::vector<std::u16string> existing;
    std::u16string expected;
  };
  std::vector<std::u16string> all;
  for (int n = 1; n <= 999; ++n) {
    char text[8];
    std::snprintf(text, sizeof text, "%03d", n);
    all.emplace_back(text, text + 3);
  }
  const Case cases[] = {
      {{}, u"001"},
      {{u"001", u"003"}, u"002"},
      {{u"002"}, u"001"},
      {{u"", u"001"}, u"002"},
      {{u"1", u"01", u"001 "}, u"001"},
      {{std::u16string(u"001\0x", 5)}, u"002"},  // compared up to the terminator
      {all, u"999"},
  };
  for (const Case& c : cases) {
    store.freeWaypoints();
    std::string bytes = header();
    for (const std::u16string& name : c.existing) bytes += record(0, {name, u"", u"", u""});
    writeText(file(), bytes);
    store.loadWaypoints();
    EXPECT_EQ(store.nextWaypointName(), c.expected) << c.existing.size();
  }
}

TEST_F(WaypointsTest, AddedWaypointsAreNamedEditedAndSavedNewestFirst) {
  std::vector<std::u16string> edited;
  store.setWaypointEditor([&](Waypoint& w) {
    edited.emplace_back(w.name());
    setWaypointString(w, kWaypointComment, std::u16string(u"note\0tail", 9));
  });
  const Waypoint& first = store.addWaypoint(151.2f, -33.9f, 38173.5, 58.5f);
  EXPECT_EQ(first.attributeA, 18);
  EXPECT_EQ(first.attributeB, 1);
  store.addWaypoint(0.0f, 0.0f, 0.0, 0.0f);
  store.addWaypoint(-1.0f, 1.0f, 0.0, 0.0f);
  EXPECT_EQ(edited, (std::vector<std::u16string>{u"001", u"002", u"003"}));
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"003", u"002", u"001"}));
  const std::string saved = readText(file());
  store.freeWaypoints();
  store.loadWaypoints();  // the file's order reversed
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"001", u"002", u"003"}));
  const Waypoint& back = store.waypoints().front();
  EXPECT_EQ(back.lat, degreesToSemicircles(-33.9f));
  EXPECT_EQ(back.lon, degreesToSemicircles(151.2f));
  EXPECT_EQ(back.time, 38173.5);
  EXPECT_EQ(back.altitude, 58.5f);
  EXPECT_EQ(back.strings[kWaypointComment], u"note");
  ASSERT_TRUE(store.saveWaypoints());
  store.freeWaypoints();
  store.loadWaypoints();
  ASSERT_TRUE(store.saveWaypoints());
  EXPECT_EQ(readText(file()), saved);  // two reversals give the first file back
}

// The torture below runs through numbered states of the list: state s holds the waypoints of
// states r .. s, where r is s rounded down to a multiple of kRound, each with the day
// kFirstDay + its state as its time.
constexpr uint64_t kRound = 12;
constexpr double kFirstDay = 40000.0;

// The state a list of states is, if it is a whole one.
std::optional<uint64_t> wholeState(std::vector<uint64_t> states) {
  std::sort(states.begin(), states.end());
  if (states.empty()) return std::nullopt;
  std::vector<uint64_t> whole(states.back() % kRound + 1);
  std::iota(whole.begin(), whole.end(), states.back() - states.back() % kRound);
  return states == whole ? std::optional(states.back()) : std::nullopt;
}

// Saves killed at random moments, again and again: Waypoints.bin is always one whole state,
// the last saved or the one being saved, never a broken one; Waypoints.gpx, written after
// it, is whole too and at most one save behind it (a start writes a GPX left behind again);
// temporaries of killed saves do not pile up; the next start carries on from what is there.
TEST_F(WaypointsTest, SavesKilledAtRandomLeaveTheOldOrTheNewList) {
  std::optional<uint64_t> newest;
  uint64_t saves = 0;
  const int trials = killAtRandom("saveWaypointsUntilKilled", dir, 30, [&](uint64_t counted) {
    if (!std::filesystem::exists(file())) {  // killed before the first save ever ended
      ASSERT_FALSE(newest);
      ASSERT_EQ(counted, 0u);
      return;
    }
    std::vector<Waypoint> found;
    ASSERT_TRUE(parseWaypointFile(readFile(file()), found));
    std::vector<uint64_t> states;
    for (const Waypoint& w : found) states.push_back(static_cast<uint64_t>(w.time - kFirstDay));
    const auto state = wholeState(states);
    ASSERT_TRUE(state) << states.size() << " waypoints";
    const uint64_t first = newest ? *newest + 1 : 0;
    if (counted > 0) {
      ASSERT_TRUE(*state + 1 == counted || *state == counted) << *state << " after " << counted << " saves";
    } else {
      ASSERT_TRUE(*state == first || (newest && *state == *newest)) << *state;
    }
    GpxData gpx;
    QString error;
    if (readGpxFile(store.waypointsGpxPath(), gpx, error)) {
      states.clear();
      for (const GpxWaypoint& w : gpx.waypoints) {
        states.push_back(static_cast<uint64_t>(std::lround(unixSecondsToAutomationDate(w.point.time.value_or(0.0)) - kFirstDay)));
      }
      const auto gpxState = wholeState(states);
      ASSERT_TRUE(gpxState && *gpxState <= *state && *gpxState + 1 >= *state) << states.size() << " in the GPX";
    } else {
      ASSERT_EQ(counted, 0u) << error.toStdString();  // no save has returned yet
    }
    for (const std::string prefix : {"Waypoints.bin.tmp-", "Waypoints.gpx.tmp-"}) {
      int temporaries = 0;
      for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        temporaries += entry.path().filename().string().starts_with(prefix);
      }
      EXPECT_LE(temporaries, 1) << prefix;
    }
    saves += *state + 1 - first;
    newest = *state;
  });
  ASSERT_TRUE(newest);
  // As a save killed between its two writes leaves it: the start writes the GPX again.
  const auto gpxPath = store.waypointsGpxPath();
  std::filesystem::last_write_time(gpxPath, std::filesystem::last_write_time(file()) - std::chrono::seconds(1));
  store.loadWaypoints();
  EXPECT_GE(std::filesystem::last_write_time(gpxPath), std::filesystem::last_write_time(file()));
  EXPECT_EQ(static_cast<uint64_t>(std::distance(store.waypoints().begin(), store.waypoints().end())),
            *newest % kRound + 1);
  EXPECT_TRUE(recorded.messages().empty());
  reportTorture("waypoints: " + std::to_string(trials) + " kills while saving, " + std::to_string(saves) +
                " saves, every file whole");
}

}  // namespace

// Carries on from the list on disk, one state after the other, each saved, until it is
// killed; counts every save that returned.
int saveWaypointsUntilKilled(const std::filesystem::path& folder) {
  Messages messages;
  WaypointStore store(folder, messages);
  ProgressCounter progress(folder / "progress");
  store.loadWaypoints();
  uint64_t state = 0;
  for (const Waypoint& w : store.waypoints()) state = std::max(state, static_cast<uint64_t>(w.time - kFirstDay) + 1);
  for (;; ++state) {
    if (state % kRound == 0) store.freeWaypoints();
    store.addWaypoint(10.0f, 20.0f, kFirstDay + static_cast<double>(state), 0.0f);
    progress.set(state + 1);
  }
}

// Without the right to write into the data folder, the child adds a waypoint: the message
// names the file, the waypoint is kept in memory and the file is left as it was. Exit code
// 0 when all of that holds.
int saveWaypointsIntoReadOnlyFolder(const std::filesystem::path& folder) {
  // Root writes anywhere: continue as nobody, for whom the folder is read-only.
  if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) return 2;
  Messages messages;
  MessageRecorder recorded(messages);
  WaypointStore store(folder, messages);
  const auto path = store.waypointsPath();
  const std::string before = readText(path);
  store.loadWaypoints();
  store.addWaypoint(10, 20, 0, 0);
  const bool kept = std::distance(store.waypoints().begin(), store.waypoints().end()) == 3;
  const bool told = recorded.messages().size() == 1 &&
                    recorded.last().rfind("Не удается открыть файл " + path.string() + ". (Ошибка ", 0) == 0;
  return !before.empty() && kept && told && readText(path) == before ? 0 : 1;
}

namespace {

TEST_F(WaypointsTest, SaveIntoReadOnlyFolderLosesNothing) {
  const std::string bytes = header() + record(1, {u"A", u"", u"", u""}) + record(2, {u"B", u"", u"", u""});
  writeText(file(), bytes);
  ASSERT_EQ(::chmod(dir.c_str(), 0555), 0);
  const int status = runChild("saveWaypointsIntoReadOnlyFolder", dir);
  ::chmod(dir.c_str(), 0755);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(readText(file()), bytes);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1);
}


}  // namespace
}  // namespace orvel::test
