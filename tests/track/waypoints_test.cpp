#include "track/waypoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <numeric>
#include <optional>
#include <random>
#include <cstring>
#include <fstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QPainter>

#include "core/atomic_file.h"
#include "core/message.h"
#include "common/torture.h"
#include "common/recording_device.h"
#include "data_dir_fixture.h"
#include "track/le_bytes.h"
#include "view/drawing_objects.h"
#include "view/fonts.h"
#include "view/map_view.h"

namespace orvel::test {
namespace {

std::string fileText(const std::filesystem::path& path) {
  const auto bytes = readFile(path);
  return {bytes.begin(), bytes.end()};
}

void writeText(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

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

TEST_F(WaypointsTest, MissingFileLoadsNothingQuietly) {
  store.loadWaypoints();
  EXPECT_TRUE(store.waypoints().empty());
  EXPECT_TRUE(recorded.messages().empty());
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(WaypointsTest, OtherMagicIsDamaged) {
  for (const std::string& bytes : {std::string("XO\x02\x20\x04"), std::string("W"), std::string(),
                                   std::string("WO\x02\x20")}) {
    writeText(file(), bytes);
    recorded.clear();
    store.loadWaypoints();
    EXPECT_TRUE(store.waypoints().empty());
    EXPECT_EQ(recorded.messages(), std::vector<std::string>{"Waypoint data are damaged."});
  }
}

TEST_F(WaypointsTest, LoadReversesAndSaveKeepsRecordsExactly) {
  const std::string a = record(1, {u"A", u"comment A", u"", u"x"});
  const std::string b = record(2, {u"B", u"", u"", u""});
  const std::string c = record(3, {u"Привет", u"", u"three", u""});
  writeText(file(), header() + a + b + c);
  store.loadWaypoints();
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"Привет", u"B", u"A"}));
  ASSERT_TRUE(store.saveWaypoints());
  EXPECT_EQ(fileText(file()), header() + c + b + a);
}

TEST_F(WaypointsTest, FixedRecordFields) {
  Waypoint w;
  w.reserved0 = 0x01020304;
  w.lon = -123456789;
  w.lat = 987654321;
  w.time = 38173.5;
  w.altitude = -12.25f;
  w.reserved24 = 0xAABBCCDD;
  w.attributeA = 18;
  w.attributeB = 1;
  w.reserved30 = 0xBEEF;
  w.strings = {u"n", u"c", u"", u"z"};
  std::string bytes = waypointFileHeader();
  appendWaypointRecord(bytes, w);
  ASSERT_EQ(bytes.size(), 5u + 32 + 4 * 4 + 2 * 3);
  const auto* p = reinterpret_cast<const uint8_t*>(bytes.data()) + 5;
  EXPECT_EQ(le::load32(p + 4), static_cast<uint32_t>(-123456789));
  EXPECT_EQ(le::loadDouble(p + 12), 38173.5);
  EXPECT_EQ(le::loadFloat(p + 20), -12.25f);
  EXPECT_EQ(p[28], 18);
  EXPECT_EQ(p[29], 1);
  std::vector<Waypoint> back;
  ASSERT_TRUE(parseWaypointFile(std::span(p - 5, bytes.size()), back));
  ASSERT_EQ(back.size(), 1u);
  EXPECT_EQ(back[0], w);
}

TEST_F(WaypointsTest, FifthStringsAreDroppedAndOtherRecordSizesRead) {
  writeText(file(), header(32, 5) + record(1, {u"A", u"a", u"", u"", u"dropped"}) +
                        record(2, {u"B", u"", u"", u"", u"gone"}));
  store.loadWaypoints();
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"B", u"A"}));
  ASSERT_TRUE(store.saveWaypoints());
  EXPECT_EQ(fileText(file()), header() + record(2, {u"B", u"", u"", u""}) + record(1, {u"A", u"a", u"", u""}));
  store.freeWaypoints();

  // A longer fixed record: its first 32 bytes are kept, the rest skipped.
  writeText(file(), header(40, 2) + record(5, {u"Long", u"c"}, 40));
  store.loadWaypoints();
  ASSERT_EQ(names(), std::vector<std::u16string>{u"Long"});
  EXPECT_EQ(store.waypoints().front().strings[1], u"c");
  EXPECT_EQ(store.waypoints().front().strings[2], u"");
  ASSERT_TRUE(store.saveWaypoints());
  const std::string longRecord = record(5, {}, 40);
  EXPECT_EQ(fileText(file()), header() + longRecord.substr(0, 32) + record(0, {u"Long", u"c", u"", u""}).substr(32));
}

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
    EXPECT_EQ(fileText(file()), whole.substr(0, cut));
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

TEST_F(WaypointsTest, AddedWaypointsAreNamedEditedAndSaved) {
  std::vector<std::u16string> edited;
  store.setWaypointEditor([&](Waypoint& w) {
    edited.emplace_back(w.name());
    setWaypointString(w, kWaypointComment, std::u16string(u"note\0tail", 9));
  });
  Waypoint& first = store.addWaypoint(151.2f, -33.9f, 38173.5, 58.5f);
  EXPECT_EQ(first.lon, degreesToSemicircles(151.2f));
  EXPECT_EQ(first.lat, degreesToSemicircles(-33.9f));
  EXPECT_EQ(first.attributeA, 18);
  EXPECT_EQ(first.attributeB, 1);
  EXPECT_EQ(first.reserved0, 0u);
  store.addWaypoint(0.0f, 0.0f, 0.0, 0.0f);
  store.addWaypoint(-1.0f, 1.0f, 0.0, 0.0f);
  EXPECT_EQ(edited, (std::vector<std::u16string>{u"001", u"002", u"003"}));
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"003", u"002", u"001"}));

  const std::string saved = fileText(file());
  store.freeWaypoints();
  store.loadWaypoints();
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"001", u"002", u"003"}));  // the file's order reversed
  const Waypoint& back = store.waypoints().front();
  EXPECT_EQ(back.lat, degreesToSemicircles(-33.9f));
  EXPECT_LT(back.lat, 0);
  EXPECT_EQ(back.lon, degreesToSemicircles(151.2f));
  EXPECT_EQ(back.time, 38173.5);
  EXPECT_EQ(back.altitude, 58.5f);
  EXPECT_EQ(back.strings[kWaypointComment], u"note");
  ASSERT_TRUE(store.saveWaypoints());
  store.freeWaypoints();
  store.loadWaypoints();
  EXPECT_EQ(names(), (std::vector<std::u16string>{u"003", u"002", u"001"}));
  ASSERT_TRUE(store.saveWaypoints());
  EXPECT_EQ(fileText(file()), saved);  // two reversals give the first file back
}

TEST_F(WaypointsTest, SetWaypointStringOutsideTheSlotsDoesNothing) {
  Waypoint w;
  setWaypointString(w, 4, u"x");
  setWaypointString(w, 3, u"last");
  EXPECT_EQ(w.strings[3], u"last");
  setWaypointString(w, 3, u"");
  EXPECT_TRUE(w.strings[3].empty());
}

// Run in a child by the next test, without the right to write into the data folder.
TEST_F(WaypointsTest, DISABLED_SaveIntoReadOnlyFolder) {
  if (!inChildTest()) GTEST_SKIP();
  if (::geteuid() == 0) {
    // Root writes anywhere: continue as nobody, for whom the folder is read-only.
    ASSERT_EQ(::setgid(65534), 0);
    ASSERT_EQ(::setuid(65534), 0);
  }
  const auto path = store.waypointsPath();
  const std::string before = fileText(path);
  ASSERT_FALSE(before.empty());
  store.loadWaypoints();
  store.addWaypoint(10, 20, 0, 0);
  EXPECT_EQ(std::distance(store.waypoints().begin(), store.waypoints().end()), 3);
  ASSERT_EQ(recorded.messages().size(), 1u);
  EXPECT_EQ(recorded.last().rfind("Не удается открыть файл " + path.string() + ". (Ошибка ", 0), 0u);
  EXPECT_EQ(fileText(path), before);
}

TEST_F(WaypointsTest, SaveIntoReadOnlyFolderLosesNothing) {
  const std::string bytes = header() + record(1, {u"A", u"", u"", u""}) + record(2, {u"B", u"", u"", u""});
  writeText(file(), bytes);
  ASSERT_EQ(::chmod(dir.c_str(), 0555), 0);
  const int status = runChildTest("WaypointsTest.DISABLED_SaveIntoReadOnlyFolder", dir);
  ::chmod(dir.c_str(), 0755);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_EQ(fileText(file()), bytes);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1);
}

// Run in a child by the next test: killed in the middle of replacing the file.
TEST_F(WaypointsTest, DISABLED_KilledWhileSaving) {
  if (!inChildTest()) GTEST_SKIP();
  store.loadWaypoints();
  store.setBeforeReplaceHook([](const std::filesystem::path&) { ::raise(SIGKILL); });
  store.addWaypoint(10, 20, 0, 0);
}

TEST_F(WaypointsTest, InterruptedSaveLosesNothing) {
  const std::string bytes = header() + record(1, {u"A", u"", u"", u""});
  writeText(file(), bytes);
  const int status = runChildTest("WaypointsTest.DISABLED_KilledWhileSaving", dir);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  EXPECT_EQ(fileText(file()), bytes);
  store.loadWaypoints();
  EXPECT_EQ(names(), std::vector<std::u16string>{u"A"});
}

// The torture below runs through numbered states of the list: state s holds the waypoints of
// states r .. s, where r is s rounded down to a multiple of kRound, each with its state as
// its time.
constexpr uint64_t kRound = 12;

// Run in a child by the next test: carries on from the list on disk, one state after the
// other, each saved, until it is killed; counts every save that returned.
TEST_F(WaypointsTest, DISABLED_SaveUntilKilled) {
  ASSERT_TRUE(inChildTest()) << "started by the test after it";
  ProgressCounter progress(dir / "progress");
  store.loadWaypoints();
  uint64_t state = 0;
  for (const Waypoint& w : store.waypoints()) state = std::max(state, static_cast<uint64_t>(w.time) + 1);
  for (;; ++state) {
    if (state % kRound == 0) store.freeWaypoints();
    store.addWaypoint(10.0f, 20.0f, static_cast<double>(state), 0.0f);
    progress.set(state + 1);
  }
}

// Saves killed at random moments, again and again: the file is always one whole state, the
// last saved or the one being saved, never a broken one; temporaries of killed saves do not
// pile up; the next start carries on from what is there.
TEST_F(WaypointsTest, SavesKilledAtRandomLeaveTheOldOrTheNewList) {
  std::mt19937 random(std::random_device{}());
  ProgressCounter progress(dir / "progress");
  std::optional<uint64_t> newest;
  uint64_t saves = 0;
  const int trials = tortureCount(10, 100);
  for (int trial = 0; trial < trials; ++trial) {
    SCOPED_TRACE("trial " + std::to_string(trial));
    progress.set(0);
    std::function<bool()> saving;
    if (trial % 4 != 0) saving = [&] { return progress.get() > 0; };
    const int status = killChildTestAtRandom("WaypointsTest.DISABLED_SaveUntilKilled", dir, random, 30, saving);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    const uint64_t counted = progress.get();
    if (!std::filesystem::exists(file())) {  // killed before the first save ever ended
      ASSERT_FALSE(newest);
      ASSERT_EQ(counted, 0u);
      continue;
    }
    std::vector<Waypoint> found;
    ASSERT_TRUE(parseWaypointFile(readFile(file()), found));
    std::vector<uint64_t> states;
    for (const Waypoint& w : found) states.push_back(static_cast<uint64_t>(w.time));
    std::sort(states.begin(), states.end());
    ASSERT_FALSE(states.empty());
    const uint64_t state = states.back();
    std::vector<uint64_t> whole(state % kRound + 1);
    std::iota(whole.begin(), whole.end(), state - state % kRound);
    ASSERT_EQ(states, whole);
    const uint64_t first = newest ? *newest + 1 : 0;
    if (counted > 0) {
      ASSERT_TRUE(state + 1 == counted || state == counted) << state << " after " << counted << " saves";
    } else {
      ASSERT_TRUE(state == first || (newest && state == *newest)) << state;
    }
    int temporaries = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
      temporaries += entry.path().filename().string().rfind("Waypoints.bin.tmp-", 0) == 0;
    }
    EXPECT_LE(temporaries, 1);
    saves += state + 1 - first;
    newest = state;
  }
  ASSERT_TRUE(newest);
  store.loadWaypoints();
  EXPECT_EQ(static_cast<uint64_t>(std::distance(store.waypoints().begin(), store.waypoints().end())),
            *newest % kRound + 1);
  EXPECT_TRUE(recorded.messages().empty());
  reportTorture("waypoints: " + std::to_string(trials) + " kills while saving, " + std::to_string(saves) +
                " saves, every file whole");
}

TEST_F(WaypointsTest, DrawsIconsAndNamesInsideTheVisibleBox) {
  ensureGuiApplication();
  MapView view;
  view.setScreenSize(240, 320);
  view.setZoomIndex(8);
  view.setCentre(2000000, 2500000);
  const MapRect visible = view.visibleRect();
  // On the box's edges (inclusive), and just beyond them.
  const struct {
    const char16_t* name;
    int32_t x;
    int32_t y;
    bool drawn;
  } places[] = {
      {u"centre", view.centre().x, view.centre().y, true},
      {u"west edge", visible.west, view.centre().y, true},
      {u"north-east corner", visible.east, visible.north, true},
      {u"past east", visible.east + 1, view.centre().y, false},
      {u"past south", view.centre().x, visible.south - 1, false},
  };
  std::string bytes = header();
  std::vector<std::u16string> expectedNames;
  std::vector<QPoint> expectedIcons;
  for (const auto& place : places) {
    Waypoint w;
    w.lon = place.x * 256 + 100;  // the fine part is dropped for the visibility test
    w.lat = place.y * 256 + 100;
    w.strings[0] = place.name;
    appendWaypointRecord(bytes, w);
  }
  writeText(file(), bytes);
  store.loadWaypoints();
  for (const Waypoint& w : store.waypoints()) {  // drawn from the head: the file's order reversed
    for (const auto& place : places) {
      if (w.name() != place.name || !place.drawn) continue;
      expectedNames.emplace_back(place.name);
      const MapPoint s = view.semicirclesToScreen({w.lon, w.lat});
      expectedIcons.emplace_back(s.x - 15, s.y - 15);
    }
  }

  const DrawingObjects drawing;
  RecordingDevice device(240, 320);
  {
    QPainter painter(&device);
    store.drawWaypoints(painter, drawing, view, visible);
  }
  std::vector<std::u16string> texts;
  std::vector<QPoint> icons;
  for (const DrawCall& call : device.calls()) {
    if (call.kind == DrawCall::Kind::Text) {
      texts.push_back(call.text.toStdU16String());
      // The shared 12-pixel "Arial" label font.
      EXPECT_EQ(call.font.pixelSize(), drawing.smallFont.pixelSize());
      EXPECT_EQ(call.font.family(), qtFamilyFor("Arial"));
      EXPECT_EQ(call.pen.color(), QColor(Qt::black));
      EXPECT_EQ(call.backgroundMode, Qt::TransparentMode);
    } else if (call.kind == DrawCall::Kind::Image || call.kind == DrawCall::Kind::Pixmap) {
      icons.push_back(call.transform.map(call.rect.topLeft()).toPoint());
      EXPECT_EQ(call.rect.size(), QSizeF(32, 32));
    }
  }
  EXPECT_EQ(texts, expectedNames);
  EXPECT_EQ(icons, expectedIcons);
}

TEST(WaypointIcon, IsAFlagStandingOnThePoint) {
  const QImage icon = drawWaypointIcon();
  ASSERT_EQ(icon.size(), QSize(32, 32));
  EXPECT_GT(qAlpha(icon.pixel(15, 8)), 128);   // the pole
  EXPECT_GT(qAlpha(icon.pixel(20, 6)), 128);   // the pennant
  EXPECT_GT(qRed(icon.pixel(20, 6)), 150);
  EXPECT_EQ(qAlpha(icon.pixel(2, 28)), 0);     // clear around it
  EXPECT_EQ(qAlpha(icon.pixel(30, 30)), 0);
}

}  // namespace
}  // namespace orvel::test
