#include "track/active_track.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <optional>
#include <set>

#include <QPainter>

#include "common/recording_device.h"
#include "common/torture.h"
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

// The writer killed at random moments, again and again on the same ring (the first kill
// after the ring has wrapped, so that the joint moves from then on): after every kill the
// ring opens, holds every point counted before the kill (and perhaps the one in hand) in
// order, none twice, with the breaks where they were written; the next run carries on.
TEST_F(ActiveTrackTest, RingStaysWholeWhenTheWriterIsKilledAtRandom) {
  std::set<uint32_t> runStarts;
  std::optional<uint32_t> newest;
  uint64_t written = 0;
  const int trials = killAtRandom("appendTrackPointsUntilKilled", dir, 30, [&](uint64_t counted) {
    const uint32_t first = newest ? *newest + 1 : 0;
    runStarts.insert(first);
    track.openTrackStore();
    ASSERT_TRUE(track.isTrackStoreOpen());
    const auto points = track.activeTrackPoints();
    track.closeTrackStore();
    if (points.empty()) {  // killed before its first point, and no run before it wrote one
      ASSERT_FALSE(newest);
      ASSERT_EQ(counted, 0u);
      return;
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
    const size_t from = cutOff ? 1 : 0;
    if (cutOff) {
      EXPECT_TRUE(points[1].startsSegment());
    } else {
      EXPECT_EQ(points.size(), std::min<size_t>(last + 1, kTrackSlots));
    }
    for (size_t i = from; i < points.size(); ++i) {
      const uint32_t k = numberOf(points[i]);
      if (i > from) {
        ASSERT_EQ(k, numberOf(points[i - 1]) + 1) << i;
      }
      const bool marked = k % 37 == 0 || runStarts.count(k) > 0;
      // The two oldest points of a full ring may have gained a break (see appendTrackPoint).
      if (marked || i >= from + 2) {
        ASSERT_EQ(points[i].startsSegment(), marked) << i << ": point " << k;
      }
    }
    written += last + 1 - first;
    newest = last;
  }, kTrackSlots + 1);
  ASSERT_TRUE(newest);
  EXPECT_GT(*newest, kTrackSlots);
  reportTorture("ring: " + std::to_string(trials) + " kills of the writer, " + std::to_string(written) +
                " points written, none lost, none twice");
  track.openTrackStore();  // the reopened ring takes new points after the newest
  track.startRecording();
  appendNumbered(track, *newest + 1);
  EXPECT_EQ(numberOf(track.activeTrackPoints().back()), *newest + 1);
}

}  // namespace

// Carries on after the newest point of the ring, appending numbered points at full speed
// until it is killed, and counts each one it completed. A run begins a segment, and so does
// every 37th point.
int appendTrackPointsUntilKilled(const std::filesystem::path& folder) {
  Settings settings;
  Messages messages;
  ActiveTrack track(folder, settings, messages);
  ProgressCounter progress(folder / "progress");
  track.openTrackStore();
  if (!track.isTrackStoreOpen()) return 3;
  const auto before = track.activeTrackPoints();
  track.startRecording();
  track.markSegmentStart();
  for (uint32_t k = before.empty() ? 0 : numberOf(before.back()) + 1;; ++k) {
    if (k % 37 == 0) track.markSegmentStart();
    appendNumbered(track, k);
    progress.set(k + 1);
  }
}

}  // namespace orvel::test
