#include "track/active_track.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <cmath>
#include <functional>
#include <optional>
#include <random>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <QPainter>

#include "core/message.h"
#include "common/recording_device.h"
#include "data_dir_fixture.h"
#include "track/le_bytes.h"
#include "view/map_view.h"

namespace orvel::test {
namespace {

struct Header {
  uint32_t next = 0;
  uint32_t wrapped = 0;
};

Header readHeader(const std::filesystem::path& path) {
  const auto bytes = readFile(path);
  if (bytes.size() < 8) return {0xDEAD, 0xDEAD};
  return {le::load32(bytes.data()), le::load32(bytes.data() + 4)};
}

TrackPoint readSlotFromFile(const std::vector<unsigned char>& bytes, uint32_t slot) {
  const uint8_t* p = bytes.data() + 8 + 8 * size_t{slot};
  return {static_cast<Semicircles>(le::load32(p)), le::load32(p + 4)};
}

// Writes a whole Tracks.bin: the header and every slot.
void writeRing(const std::filesystem::path& path, Header header, const std::vector<TrackPoint>& ringSlots) {
  std::vector<uint8_t> bytes(kTrackFileSize);
  le::store32(bytes.data(), header.next);
  le::store32(bytes.data() + 4, header.wrapped);
  for (size_t i = 0; i < ringSlots.size() && i < kTrackSlots; ++i) {
    le::store32(bytes.data() + 8 + 8 * i, static_cast<uint32_t>(ringSlots[i].lon));
    le::store32(bytes.data() + 12 + 8 * i, ringSlots[i].latAndBreak);
  }
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

TrackPoint point(Semicircles lon, Semicircles lat, bool startsSegment = false) {
  return {lon, (static_cast<uint32_t>(lat) & 0x7FFFFFFFu) | (startsSegment ? kTrackBreakFlag : 0u)};
}

class ActiveTrackTest : public DataDirTest {
 protected:
  std::filesystem::path ring() const { return dir / "Tracks.bin"; }
  // Open, recording, and the next point begins a segment.
  void openRecording() {
    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen());
    track.startRecording();
    track.markSegmentStart();
  }
  ActiveTrack track{dir, settings, messages};
};

TEST_F(ActiveTrackTest, MissingFileIsCreatedEmpty) {
  track.openTrackStore();
  ASSERT_TRUE(track.isTrackStoreOpen());
  EXPECT_EQ(std::filesystem::file_size(ring()), kTrackFileSize);
  EXPECT_TRUE(track.activeTrackPoints().empty());
  EXPECT_FALSE(track.isRecording());  // "RecordTrack" is off by default
  ActiveTrack second(dir, settings, messages);  // a second writer of the same ring is kept out
  second.openTrackStore();
  EXPECT_FALSE(second.isTrackStoreOpen());
  EXPECT_EQ(recorded.last(), "Can't create file to write tracks:\n " + ring().string());
  track.closeTrackStore();
  EXPECT_FALSE(track.isTrackStoreOpen());
  track.closeTrackStore();  // a second close does nothing
}

TEST_F(ActiveTrackTest, FileOfAnotherSizeIsResized) {
  for (size_t size : {size_t{0}, size_t{7}, size_t{100}, size_t{80007}, size_t{80009}, size_t{100000}}) {
    std::vector<uint8_t> bytes(size, 0);
    if (size >= 16) {
      le::store32(bytes.data(), 1);  // one point in slot 0
      le::store32(bytes.data() + 8, 1234);
      le::store32(bytes.data() + 12, 5678);
    }
    std::ofstream(ring(), std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen()) << size;
    EXPECT_EQ(std::filesystem::file_size(ring()), kTrackFileSize) << size;
    EXPECT_EQ(track.activeTrackPoints().size(), size >= 16 ? 1u : 0u) << size;
    track.closeTrackStore();
  }
}

TEST_F(ActiveTrackTest, UnopenableFileIsReported) {
  std::filesystem::create_directories(ring());  // a folder where the file should be
  track.openTrackStore();
  EXPECT_FALSE(track.isTrackStoreOpen());
  EXPECT_EQ(recorded.last(), "Can't create file to write tracks:\n " + ring().string());
  track.startRecording();
  track.appendActivePoint(1, 2);  // closed: nothing happens
  EXPECT_TRUE(track.activeTrackPoints().empty());
}

TEST_F(ActiveTrackTest, WrapsAfterTenThousandPoints) {
  openRecording();
  for (uint32_t i = 0; i < kTrackSlots - 1; ++i) track.appendActivePoint(static_cast<float>(i) * 0.001f, 1.0f);
  EXPECT_EQ(track.activeTrackPoints().size(), kTrackSlots - 1);
  track.closeTrackStore();
  EXPECT_EQ(readHeader(ring()).next, kTrackSlots - 1);
  EXPECT_EQ(readHeader(ring()).wrapped, 0u);

  track.openTrackStore();
  track.appendActivePoint(9.999f, 1.0f);  // the 10000th
  track.closeTrackStore();
  EXPECT_EQ(readHeader(ring()).next, 0u);
  EXPECT_EQ(readHeader(ring()).wrapped, 1u);

  track.openTrackStore();
  track.appendActivePoint(-5.0f, -5.0f);  // the 10001st overwrites slot 0
  const auto points = track.activeTrackPoints();
  ASSERT_EQ(points.size(), kTrackSlots);
  EXPECT_EQ(points.front().lon, degreesToSemicircles(0.001f));  // slot 1 is now the oldest
  EXPECT_EQ(points.back().lon, degreesToSemicircles(-5.0f));
  track.closeTrackStore();
  EXPECT_EQ(readHeader(ring()).next, 1u);
  EXPECT_EQ(readHeader(ring()).wrapped, 1u);
}

TEST_F(ActiveTrackTest, OldestPointOfAFullRingBeginsASegment) {
  std::vector<TrackPoint> ringSlots(kTrackSlots, point(5, 5));
  writeRing(ring(), {9999, 0}, ringSlots);
  openRecording();
  track.appendActivePoint(1, 1);  // fills the ring: slot 0 is the oldest
  auto points = track.activeTrackPoints();
  ASSERT_EQ(points.size(), kTrackSlots);
  EXPECT_TRUE(points[0].startsSegment());
  EXPECT_FALSE(points[1].startsSegment());
  EXPECT_EQ(points[0].lon, 5);
  track.appendActivePoint(2, 2);  // overwrites slot 0: slot 1 is the oldest now
  points = track.activeTrackPoints();
  EXPECT_TRUE(points[0].startsSegment());
  EXPECT_FALSE(points[1].startsSegment());
  EXPECT_EQ(points.back().lon, degreesToSemicircles(2.0f));
  EXPECT_FALSE(points.back().startsSegment());
}

TEST_F(ActiveTrackTest, StoresSemicirclesAndBreakFlags) {
  openRecording();
  track.appendActivePoint(30.5f, -45.0f);  // begins a segment
  track.appendActivePoint(30.6f, -45.0f);
  track.stopRecording();
  track.appendActivePoint(3, 3);  // not recording: nothing, and the pending break stays
  track.startRecording();
  track.appendActivePoint(-179.9f, 89.9f);  // the restart begins a segment
  track.appendActivePoint(-179.8f, 89.9f);
  track.markSegmentStart();
  track.appendActivePoint(0.0f, -89.9f);
  track.closeTrackStore();
  const auto bytes = readFile(ring());
  ASSERT_EQ(bytes.size(), kTrackFileSize);
  EXPECT_EQ(readHeader(ring()).next, 5u);
  const TrackPoint expected[] = {
      point(degreesToSemicircles(30.5f), degreesToSemicircles(-45.0f), true),
      point(degreesToSemicircles(30.6f), degreesToSemicircles(-45.0f)),
      point(degreesToSemicircles(-179.9f), degreesToSemicircles(89.9f), true),
      point(degreesToSemicircles(-179.8f), degreesToSemicircles(89.9f)),
      point(0, degreesToSemicircles(-89.9f), true),
  };
  for (uint32_t i = 0; i < 5; ++i) {
    const TrackPoint stored = readSlotFromFile(bytes, i);
    EXPECT_EQ(stored, expected[i]) << i;
    EXPECT_EQ(stored.latitude(), expected[i].latitude()) << i;
  }
  EXPECT_EQ(readSlotFromFile(bytes, 1).latAndBreak >> 31, 0u);  // -45 degrees, bit 31 clear
  EXPECT_EQ(readSlotFromFile(bytes, 1).latitude(), degreesToSemicircles(-45.0f));
  EXPECT_EQ(readSlotFromFile(bytes, 1).latitude(), -536870912);
}

TEST_F(ActiveTrackTest, ImpossibleHeaderReadsAsEmptyAndKeepsOtherSlots) {
  const Header headers[] = {{10000, 0}, {10000, 1}, {0xFFFFFFFF, 0}, {5, 2}, {5, 0xFFFFFFFF}, {0x80000000, 1}};
  std::vector<TrackPoint> ringSlots;
  for (uint32_t i = 0; i < kTrackSlots; ++i) ringSlots.push_back(point(int32_t(i) * 1000, int32_t(i), i % 3 == 0));
  ensureGuiApplication();
  for (const Header& header : headers) {
    SCOPED_TRACE(::testing::Message() << header.next << "/" << header.wrapped);
    writeRing(ring(), header, ringSlots);
    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen());
    EXPECT_TRUE(track.activeTrackPoints().empty());
    RecordingDevice device(240, 320);
    {
      QPainter painter(&device);
      MapView view;
      view.setScreenSize(240, 320);
      track.drawActiveTrack(painter, view);
    }
    EXPECT_TRUE(device.calls().empty());

    track.startRecording();
    track.markSegmentStart();
    track.appendActivePoint(10.0f, 20.0f);  // an empty ring's first point
    ASSERT_EQ(track.activeTrackPoints().size(), 1u);
    track.closeTrackStore();
    const auto bytes = readFile(ring());
    ASSERT_EQ(bytes.size(), kTrackFileSize);
    EXPECT_EQ(readHeader(ring()).next, 1u);
    EXPECT_EQ(readHeader(ring()).wrapped, 0u);
    EXPECT_EQ(readSlotFromFile(bytes, 0), point(degreesToSemicircles(10.0f), degreesToSemicircles(20.0f), true));
    for (uint32_t i = 1; i < kTrackSlots; ++i) ASSERT_EQ(readSlotFromFile(bytes, i), ringSlots[i]) << i;
  }
}

// Drawing works on files written here, so the screen positions are known exactly.
class ActiveTrackDrawTest : public ActiveTrackTest {
 protected:
  static void SetUpTestSuite() { ensureGuiApplication(); }
  void SetUp() override {
    ActiveTrackTest::SetUp();
    view.setScreenSize(240, 320);
    view.setZoomIndex(10);
    view.setCentre(1000000, 2000000);
  }
  // The smallest longitude (semicircles, on the centre's latitude) drawn at column x or
  // further right: the projection only grows with the longitude.
  Semicircles lonForColumn(int32_t x) const {
    int64_t lo = (view.centre().x - 4000000) * int64_t{256};
    int64_t hi = (view.centre().x + 4000000) * int64_t{256};
    while (lo < hi) {
      const int64_t mid = lo + (hi - lo) / 2;
      if (view.semicirclesToScreen({static_cast<int32_t>(mid), latMid()}).x >= x) {
        hi = mid;
      } else {
        lo = mid + 1;
      }
    }
    return static_cast<Semicircles>(lo);
  }
  Semicircles latMid() const { return view.centre().y * 256; }
  TrackPoint at(int32_t x, bool startsSegment = false) const { return point(lonForColumn(x), latMid(), startsSegment); }
  QPoint screenOf(const TrackPoint& p) const {
    const MapPoint s = view.semicirclesToScreen({p.lon, p.latitude()});
    return {s.x, s.y};
  }
  // The polylines drawn for a ring holding `points` (oldest first from slot 0).
  std::vector<QPolygonF> draw(const std::vector<TrackPoint>& points, Header header) {
    writeRing(ring(), header, points);
    track.openTrackStore();
    RecordingDevice device(240, 320);
    {
      QPainter painter(&device);
      track.drawActiveTrack(painter, view);
    }
    track.closeTrackStore();
    std::vector<QPolygonF> lines;
    for (const DrawCall& call : device.calls()) {
      EXPECT_EQ(call.kind, DrawCall::Kind::Polyline);
      EXPECT_EQ(call.pen.color(), QColor(207, 3, 218));
      EXPECT_EQ(call.pen.width(), 2);
      lines.push_back(call.devicePoints());
    }
    return lines;
  }
  QPolygonF polyline(const std::vector<TrackPoint>& points) const {
    QPolygonF line;
    for (const TrackPoint& p : points) line << QPointF(screenOf(p));
    return line;
  }

  MapView view;
};

TEST_F(ActiveTrackDrawTest, BreaksAndSinglePointsSplitTheLine) {
  const std::vector<TrackPoint> points = {at(10, true), at(20), at(30), at(40, true), at(50), at(60, true),
                                          at(70, true), at(80)};
  const auto lines = draw(points, {8, 0});
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], polyline({points[0], points[1], points[2]}));
  EXPECT_EQ(lines[1], polyline({points[3], points[4]}));
  EXPECT_EQ(lines[2], polyline({points[6], points[7]}));  // the lone point 5 draws nothing
}

TEST_F(ActiveTrackDrawTest, PointsBeyondOneScreenOfMarginEndTheLine) {
  ASSERT_EQ(screenOf(at(479)).x(), 479);
  ASSERT_EQ(screenOf(at(480)).x(), 480);
  ASSERT_EQ(screenOf(at(-239)).x(), -239);
  const std::vector<TrackPoint> points = {at(-239), at(100), at(479), at(480), at(200), at(-240), at(-239), at(0)};
  const auto lines = draw(points, {8, 0});
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], polyline({points[0], points[1], points[2]}));
  EXPECT_EQ(lines[1], polyline({points[6], points[7]}));  // 200 alone between two far points
}

TEST_F(ActiveTrackDrawTest, LongLinesGoInBatchesWithoutTheJoint) {
  std::vector<TrackPoint> points;
  for (int i = 0; i < 2500; ++i) points.push_back(at(-200 + (i % 600)));
  const auto lines = draw(points, {2500, 0});
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], polyline({points.begin(), points.begin() + 1000}));
  EXPECT_EQ(lines[1], polyline({points.begin() + 1000, points.begin() + 2000}));
  EXPECT_EQ(lines[2], polyline({points.begin() + 2000, points.end()}));
}

TEST_F(ActiveTrackDrawTest, WrappedRingIsDrawnOldestFirst) {
  std::vector<TrackPoint> ringSlots(kTrackSlots, at(0, true));  // every point alone
  ringSlots[9998] = at(1, true);
  ringSlots[9999] = at(2);
  ringSlots[0] = at(3);
  ringSlots[1] = at(4);
  ringSlots[2] = at(5);  // newest; slot 3 is the oldest and begins a segment
  const auto lines = draw(ringSlots, {3, 1});
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], polyline({ringSlots[9998], ringSlots[9999], ringSlots[0], ringSlots[1], ringSlots[2]}));
}

TEST_F(ActiveTrackDrawTest, ClosedStoreDrawsNothing) {
  RecordingDevice device(240, 320);
  QPainter painter(&device);
  track.drawActiveTrack(painter, view);
  painter.end();
  EXPECT_TRUE(device.calls().empty());
}

// The numbering of the torture below: point k lies at longitude (k mod 100000) / 1000 - 50
// and latitude (k / 100000) / 50 - 40 degrees, unique for the first 4e8 points.
void appendNumbered(ActiveTrack& track, uint32_t k) {
  track.appendActivePoint(static_cast<float>(k % 100000) * 0.001f - 50.0f,
                          static_cast<float>(k / 100000) * 0.02f - 40.0f);
}

uint32_t numberOf(const TrackPoint& p) {
  const double lon = p.lon / 11930464.711111111, lat = p.latitude() / 11930464.711111111;
  return static_cast<uint32_t>(std::lround((lon + 50.0) * 1000.0) + 100000 * std::lround((lat + 40.0) * 50.0));
}

// Run in a child by the next test: carries on after the newest point of the ring, appending
// numbered points at full speed until it is killed, and counts each one it completed. A run
// begins a segment, and so does every 37th point.
TEST_F(ActiveTrackTest, DISABLED_AppendUntilKilled) {
  if (!inChildTest()) GTEST_SKIP();
  ProgressCounter progress(dir / "progress");
  track.openTrackStore();
  if (!track.isTrackStoreOpen()) ::_exit(3);
  const auto before = track.activeTrackPoints();
  track.startRecording();
  track.markSegmentStart();
  for (uint32_t k = before.empty() ? 0 : numberOf(before.back()) + 1;; ++k) {
    if (k % 37 == 0) track.markSegmentStart();
    appendNumbered(track, k);
    progress.set(k + 1);
  }
}

// The writer killed at random moments, again and again on the same ring: after every kill
// the ring opens, holds every point counted before the kill (and perhaps the one in hand)
// in order, none twice, with the breaks where they were written; the next run carries on.
TEST_F(ActiveTrackTest, RingStaysWholeWhenTheWriterIsKilledAtRandom) {
  std::mt19937 random(std::random_device{}());
  ProgressCounter progress(dir / "progress");
  std::set<uint32_t> runStarts;
  std::optional<uint32_t> newest;
  uint64_t written = 0;
  const int trials = tortureCount(10, 100);
  for (int trial = 0; trial < trials; ++trial) {
    SCOPED_TRACE("trial " + std::to_string(trial));
    progress.set(0);
    const uint32_t first = newest ? *newest + 1 : 0;
    runStarts.insert(first);
    // Most kills fall among the appends; every fourth anywhere from the program's start on.
    std::function<bool()> appending;
    if (trial % 4 != 0) appending = [&] { return progress.get() > 0; };
    const int status = killChildTestAtRandom("ActiveTrackTest.DISABLED_AppendUntilKilled", dir, random, 30, appending);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;

    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen());
    const auto points = track.activeTrackPoints();
    track.closeTrackStore();
    const uint64_t counted = progress.get();
    if (points.empty()) {  // killed before its first point, and no run before it wrote one
      ASSERT_FALSE(newest);
      ASSERT_EQ(counted, 0u);
      continue;
    }
    const uint32_t last = numberOf(points.back());
    if (counted > 0) {
      ASSERT_TRUE(last + 1 == counted || last == counted) << last << " after " << counted << " counted";
    } else {
      ASSERT_TRUE(last == first || (newest && last == *newest)) << last;
    }
    // The point the writer died in may stand first, cut off from the rest by a break: the
    // header still counts its slot as the oldest.
    const bool cutOff = points.size() > 1 && numberOf(points[1]) != numberOf(points[0]) + 1;
    if (cutOff) {
      EXPECT_TRUE(points[1].startsSegment());
    }
    const size_t from = cutOff ? 1 : 0;
    if (!cutOff) {
      EXPECT_EQ(points.size(), std::min<size_t>(last + 1, kTrackSlots));
    }
    for (size_t i = from; i < points.size(); ++i) {
      const uint32_t k = numberOf(points[i]);
      if (i > from) {
        ASSERT_EQ(k, numberOf(points[i - 1]) + 1) << i;
      }
      const bool written = k % 37 == 0 || runStarts.count(k) > 0;
      // The two oldest points of a full ring may have gained a break (see appendTrackPoint).
      if (written || i >= from + 2) {
        ASSERT_EQ(points[i].startsSegment(), written) << i << ": point " << k;
      }
    }
    written += last + 1 - first;
    newest = last;
  }
  ASSERT_TRUE(newest);
  reportTorture("ring: " + std::to_string(trials) + " kills of the writer, " + std::to_string(written) +
                " points written, none lost, none twice");
  // The reopened ring takes new points after the newest.
  track.openTrackStore();
  track.startRecording();
  appendNumbered(track, *newest + 1);
  EXPECT_EQ(numberOf(track.activeTrackPoints().back()), *newest + 1);
}

}  // namespace
}  // namespace orvel::test
