#include "track/active_track.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <cmath>
#include <csignal>
#include <fstream>
#include <thread>

#include "child_process.h"
#include <QPainter>

#include "common/recording_device.h"
#include "core/message.h"
#include "data_dir_fixture.h"
#include "track/le_bytes.h"
#include "view/map_view.h"

namespace orvel::test {
namespace {

struct Header {
  uint32_t next = 0;
  uint32_t wrapped = 0;
};

TrackPoint point(Semicircles lon, Semicircles lat, bool startsSegment = false) {
  return {lon, (static_cast<uint32_t>(lat) & 0x7FFFFFFFu) | (startsSegment ? kTrackBreakFlag : 0u)};
}

class ActiveTrackTest : public DataDirTest {
 protected:
  std::filesystem::path ring() const { return dir / "Tracks.bin"; }
  Header header() const {
    const auto bytes = readFile(ring());
    return bytes.size() < 8 ? Header{0xDEAD, 0xDEAD} : Header{le::load32(bytes.data()), le::load32(bytes.data() + 4)};
  }
  TrackPoint slot(uint32_t i) const {
    const auto bytes = readFile(ring());
    const uint8_t* p = bytes.data() + 8 + 8 * size_t{i};
    return {static_cast<Semicircles>(le::load32(p)), le::load32(p + 4)};
  }
  // Writes a whole Tracks.bin: the header and every slot.
  void writeRing(Header h, const std::vector<TrackPoint>& cells) {
    std::vector<uint8_t> bytes(kTrackFileSize);
    le::store32(bytes.data(), h.next);
    le::store32(bytes.data() + 4, h.wrapped);
    for (size_t i = 0; i < cells.size() && i < kTrackSlots; ++i) {
      le::store32(bytes.data() + 8 + 8 * i, static_cast<uint32_t>(cells[i].lon));
      le::store32(bytes.data() + 12 + 8 * i, cells[i].latAndBreak);
    }
    std::ofstream(ring(), std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
  }
  // Open, recording, and the next point begins a segment.
  void openRecording() {
    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen());
    track.startRecording();
    track.markSegmentStart();
  }
  ActiveTrack track{dir, settings, messages};
};

TEST_F(ActiveTrackTest, TheFileIsCreatedOrResizedAndHasOneWriter) {
  for (size_t size : {size_t{0}, size_t{7}, size_t{80007}, size_t{100000}}) {
    std::vector<char> bytes(size, 0);
    if (size >= 16) bytes[0] = bytes[8] = 1;  // one point in slot 0
    std::ofstream(ring(), std::ios::binary | std::ios::trunc).write(bytes.data(), std::streamsize(size));
    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen()) << size;
    EXPECT_EQ(std::filesystem::file_size(ring()), kTrackFileSize) << size;
    EXPECT_EQ(track.activeTrackPoints().size(), size >= 16 ? 1u : 0u) << size;
    EXPECT_FALSE(track.isRecording());  // "RecordTrack" is off by default
    ActiveTrack second(dir, settings, messages);
    second.openTrackStore();
    EXPECT_FALSE(second.isTrackStoreOpen());
    track.closeTrackStore();
    track.closeTrackStore();  // a second close does nothing
  }
  EXPECT_EQ(recorded.last(), "Can't create file to write tracks:\n " + ring().string());
}

TEST_F(ActiveTrackTest, WrapsAfterTenThousandPoints) {
  openRecording();
  for (uint32_t i = 0; i < kTrackSlots - 1; ++i) track.appendActivePoint(static_cast<float>(i) * 0.001f, 1.0f);
  track.closeTrackStore();
  EXPECT_EQ(header().next, kTrackSlots - 1);
  EXPECT_EQ(header().wrapped, 0u);
  track.openTrackStore();
  track.appendActivePoint(9.999f, 1.0f);  // the 10000th
  track.closeTrackStore();
  EXPECT_EQ(header().next, 0u);
  EXPECT_EQ(header().wrapped, 1u);
  track.openTrackStore();
  track.appendActivePoint(-5.0f, -5.0f);  // the 10001st overwrites slot 0
  const auto points = track.activeTrackPoints();
  ASSERT_EQ(points.size(), kTrackSlots);
  EXPECT_EQ(points.front().lon, degreesToSemicircles(0.001f));  // slot 1 is now the oldest
  EXPECT_EQ(points.back().lon, degreesToSemicircles(-5.0f));
  track.closeTrackStore();
  EXPECT_EQ(header().next, 1u);
}

TEST_F(ActiveTrackTest, OldestPointOfAFullRingBeginsASegment) {
  writeRing({9999, 0}, std::vector<TrackPoint>(kTrackSlots, point(5, 5)));
  openRecording();
  track.appendActivePoint(1, 1);  // fills the ring: slot 0 is the oldest
  auto points = track.activeTrackPoints();
  ASSERT_EQ(points.size(), kTrackSlots);
  EXPECT_TRUE(points[0].startsSegment());
  EXPECT_FALSE(points[1].startsSegment());
  track.appendActivePoint(2, 2);  // overwrites slot 0: slot 1 is the oldest now
  points = track.activeTrackPoints();
  EXPECT_TRUE(points[0].startsSegment());
  EXPECT_FALSE(points[1].startsSegment());
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
  track.markSegmentStart();
  track.appendActivePoint(0.0f, -89.9f);
  track.closeTrackStore();
  EXPECT_EQ(header().next, 4u);
  const TrackPoint expected[] = {
      point(degreesToSemicircles(30.5f), degreesToSemicircles(-45.0f), true),
      point(degreesToSemicircles(30.6f), degreesToSemicircles(-45.0f)),
      point(degreesToSemicircles(-179.9f), degreesToSemicircles(89.9f), true),
      point(0, degreesToSemicircles(-89.9f), true),
  };
  for (uint32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(slot(i), expected[i]) << i;
    EXPECT_EQ(slot(i).latitude(), expected[i].latitude()) << i;
  }
  EXPECT_EQ(slot(1).latitude(), -536870912);  // -45 degrees with bit 31 clear
}

// The ring drawn, on positions known exactly: polylines of at most 1000 points whose
// joint stays undrawn, and a wrapped ring from its oldest slot on.
TEST_F(ActiveTrackTest, DrawsInBatchesAndAWrappedRingOldestFirst) {
  ensureGuiApplication();
  MapView view;
  view.setScreenSize(240, 320);
  view.setZoomIndex(10);
  view.setCentre(1000000, 2000000);
  const Semicircles lat = view.centre().y * 256;
  const auto at = [&](int32_t k, bool startsSegment = false) { return point(view.centre().x * 256 + k * 512, lat, startsSegment); };
  const auto polyline = [&](auto first, auto last) {
    QPolygonF line;
    for (auto p = first; p != last; ++p) {
      const MapPoint s = view.semicirclesToScreen({p->lon, p->latitude()});
      line << QPointF(s.x, s.y);
    }
    return line;
  };
  const auto draw = [&](const std::vector<TrackPoint>& cells, Header h) {
    writeRing(h, cells);
    track.openTrackStore();
    RecordingDevice device(240, 320);
    {
      QPainter painter(&device);
      track.drawActiveTrack(painter, view);
    }
    track.closeTrackStore();
    std::vector<QPolygonF> lines;
    for (const DrawCall& call : device.callsOf(DrawCall::Kind::Polyline)) lines.push_back(call.devicePoints());
    return lines;
  };
  std::vector<TrackPoint> points;
  for (int i = 0; i < 2500; ++i) points.push_back(at(i % 300));
  auto lines = draw(points, {2500, 0});
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], polyline(points.begin(), points.begin() + 1000));
  EXPECT_EQ(lines[1], polyline(points.begin() + 1000, points.begin() + 2000));
  EXPECT_EQ(lines[2], polyline(points.begin() + 2000, points.end()));

  std::vector<TrackPoint> cells(kTrackSlots, at(0, true));  // every point alone
  cells[9998] = at(1, true);
  cells[9999] = at(2);
  cells[0] = at(3);
  cells[1] = at(4);  // newest; slot 2 is the oldest and begins a segment
  lines = draw(cells, {2, 1});
  ASSERT_EQ(lines.size(), 1u);
  const std::vector<TrackPoint> wrapped{cells[9998], cells[9999], cells[0], cells[1]};
  EXPECT_EQ(lines[0], polyline(wrapped.begin(), wrapped.end()));
}

// The child appends numbered points until it is killed. Point k has longitude
// (k mod kNumbering) / 1000 - 50 degrees and begins a segment when k is a multiple of 37. The
// numbering is a multiple of 37, so the breaks stay recognisable from lap to lap.
constexpr uint32_t kNumbering = 37 * 2700;

uint32_t numberOf(const TrackPoint& p) {
  return static_cast<uint32_t>(std::lround((p.lon / 11930465.0 + 50.0) * 1000.0));
}

TEST_F(ActiveTrackTest, RingStaysConsistentWhenTheWriterIsKilled) {
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    std::filesystem::remove(ring());
    const pid_t child = startChild("appendTrackPointsUntilKilled", dir);
    ASSERT_GT(child, 0);
    // Let it fill the ring at least once, then stop it at a moment of its choosing.
    bool wrapped = false;
    for (int i = 0; i < 60000 && !wrapped; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      wrapped = std::filesystem::exists(ring()) && std::filesystem::file_size(ring()) == kTrackFileSize &&
                header().wrapped == 1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(3 * round));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(wrapped && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);

    track.openTrackStore();
    const auto points = track.activeTrackPoints();
    ASSERT_EQ(points.size(), kTrackSlots);
    // Consecutive numbers, oldest first, with the breaks where the writer put them. The one
    // exception is the point the writer died in: the header still counts its slot as the
    // oldest, so it stands first, cut off from the rest by a break.
    const bool cutOff = numberOf(points[1]) != (numberOf(points[0]) + 1) % kNumbering;
    if (cutOff) {
      EXPECT_TRUE(points[1].startsSegment());
    }
    for (size_t i = cutOff ? 1 : 0; i < points.size(); ++i) {
      const uint32_t k = numberOf(points[i]);
      ASSERT_EQ(points[i].latitude(), degreesToSemicircles(10.0f)) << i;
      if (i > (cutOff ? 1u : 0u)) {
        ASSERT_EQ(k, (numberOf(points[i - 1]) + 1) % kNumbering) << i;
      }
      if (k % 37 == 0) {
        ASSERT_TRUE(points[i].startsSegment()) << i;
      }
    }
    // The reopened ring takes new points after the newest.
    track.startRecording();
    track.appendActivePoint(static_cast<float>((numberOf(points.back()) + 1) % kNumbering) * 0.001f - 50.0f, 10.0f);
    EXPECT_EQ(numberOf(track.activeTrackPoints().back()), (numberOf(points.back()) + 1) % kNumbering);
    EXPECT_EQ(track.activeTrackPoints().front().lon, points[1].lon);
    track.closeTrackStore();
    track.stopRecording();
  }
}

}  // namespace

int appendTrackPointsUntilKilled(const std::filesystem::path& folder) {
  Settings settings;
  Messages messages;
  ActiveTrack track(folder, settings, messages);
  track.openTrackStore();
  if (!track.isTrackStoreOpen()) return 3;
  track.startRecording();
  for (uint32_t k = 0;; ++k) {
    if (k % 37 == 0) track.markSegmentStart();
    track.appendActivePoint(static_cast<float>(k % kNumbering) * 0.001f - 50.0f, 10.0f);
  }
}

}  // namespace orvel::test
