#include "track/active_track.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QPainter>
#include <QPoint>

#include "core/message.h"
#include "core/settings.h"
#include "track/le_bytes.h"
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace orvel {
namespace {

constexpr size_t kNextIndexOffset = 0;
constexpr size_t kWrappedOffset = 4;
constexpr size_t kPointsOffset = 8;

uint8_t* slot(uint8_t* base, uint32_t index) { return base + kPointsOffset + 8 * size_t{index}; }

TrackPoint readSlot(const uint8_t* base, uint32_t index) {
  const uint8_t* p = base + kPointsOffset + 8 * size_t{index};
  return {static_cast<Semicircles>(le::load32(p)), le::load32(p + 4)};
}

// The valid slots as [first, kTrackSlots) then [0, end) oldest first, or false when the
// header cannot have been written by us (the ring is then treated as empty).
struct RingRange {
  uint32_t wrappedFrom = kTrackSlots;  // kTrackSlots: nothing before the wrap
  uint32_t end = 0;
};

bool ringRange(const uint8_t* base, RingRange& range) {
  const uint32_t next = le::load32(base + kNextIndexOffset);
  const uint32_t wrapped = le::load32(base + kWrappedOffset);
  if (next >= kTrackSlots || wrapped > 1) return false;
  range.wrappedFrom = wrapped ? next : kTrackSlots;
  range.end = next;
  return true;
}

template <typename Visit>
void forEachPoint(const uint8_t* base, Visit visit) {
  RingRange range;
  if (!ringRange(base, range)) return;
  for (uint32_t i = range.wrappedFrom; i < kTrackSlots; ++i) visit(readSlot(base, i));
  for (uint32_t i = 0; i < range.end; ++i) visit(readSlot(base, i));
}

// The polyline being gathered for drawActiveTrack, drawn in batches.
class PolylineBatch {
 public:
  explicit PolylineBatch(QPainter& painter) : painter_(painter) {}
  void drawIfLine() {
    if (count_ >= 2) painter_.drawPolyline(points_.data(), static_cast<int>(count_));
    count_ = 0;
  }
  void add(QPoint p) {
    points_[count_++] = p;
    if (count_ == points_.size()) {
      painter_.drawPolyline(points_.data(), static_cast<int>(count_));
      // The last point is kept in the first slot but the count restarts at 0, so the next
      // point overwrites it: the joint between two batches stays undrawn.
      points_[0] = points_[count_ - 1];
      count_ = 0;
    }
  }

 private:
  QPainter& painter_;
  std::array<QPoint, kTrackBatchPoints> points_;
  size_t count_ = 0;
};

}  // namespace

ActiveTrack::ActiveTrack(std::filesystem::path dataFolder, Settings& settings, Messages& messages)
    : folder_(std::move(dataFolder)), settings_(settings), messages_(messages) {}

ActiveTrack::~ActiveTrack() { closeTrackStore(); }

std::filesystem::path ActiveTrack::trackStorePath() const { return folder_ / "Tracks.bin"; }

void ActiveTrack::unmapLocked() {
  if (base_) {
    ::msync(base_, kTrackFileSize, MS_SYNC);
    ::munmap(base_, kTrackFileSize);
    base_ = nullptr;
  }
  if (fd_ >= 0) {
    ::close(fd_);  // releases the lock
    fd_ = -1;
  }
}

void ActiveTrack::openTrackStore() {
  if (isTrackStoreOpen()) return;
  const std::filesystem::path path = trackStorePath();

  // Non-blocking so that a FIFO in its place cannot hang start-up; anything but a regular
  // file, and a file another instance holds, count as a file we cannot create.
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
  struct stat info {};
  if (fd < 0 || ::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    if (fd >= 0) ::close(fd);
    showMessage(messages_, "Can't create file to write tracks:\n %s", path.c_str());
    return;
  }
  // A new file, and one of any other size, become 80008 bytes; a new one's zero header is
  // an empty ring.
  if (static_cast<size_t>(info.st_size) != kTrackFileSize &&
      ::ftruncate(fd, static_cast<off_t>(kTrackFileSize)) != 0) {
    const int error = errno;
    ::close(fd);
    showMessage(messages_, "Can't read/write active track file. (Error %d.)", error);
    return;
  }
  void* mapped = ::mmap(nullptr, kTrackFileSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (mapped == MAP_FAILED) {
    const int error = errno;
    ::close(fd);
    showMessage(messages_, "Can't read/write active track file. (Error %d.)", error);
    return;
  }
  {
    std::lock_guard guard(ring_);
    base_ = static_cast<uint8_t*>(mapped);
    fd_ = fd;
  }
  if (settings_.readSettingInt("RecordTrack", 0) != 0) startRecording();
}

void ActiveTrack::closeTrackStore() {
  std::lock_guard guard(ring_);
  unmapLocked();
}

bool ActiveTrack::isTrackStoreOpen() const {
  std::lock_guard guard(ring_);
  return base_ != nullptr;
}

void ActiveTrack::startRecording() { recording_.store(true); }

void ActiveTrack::stopRecording() {
  recording_.store(false);
  pendingBreak_.store(true);
}

bool ActiveTrack::isRecording() const { return recording_.load(); }

void ActiveTrack::markSegmentStart() { pendingBreak_.store(true); }

void ActiveTrack::appendActivePoint(float longitude, float latitude) {
  if (!recording_.load()) return;
  const Semicircles lon = degreesToSemicircles(longitude);
  const Semicircles lat = degreesToSemicircles(latitude);

  std::lock_guard guard(ring_);
  if (!base_) return;
  RingRange range;
  const bool valid = ringRange(base_, range);
  const uint32_t next = valid ? range.end : 0;  // an impossible header starts an empty ring
  const uint32_t breakBit = pendingBreak_.exchange(false) ? kTrackBreakFlag : 0;
  const uint32_t after = next + 1 == kTrackSlots ? 0 : next + 1;
  if ((valid && range.wrappedFrom != kTrackSlots) || after == 0) {
    // The ring is full once this point is in: the slot after it becomes the oldest. Marking
    // that point as a segment start changes nothing drawn (nothing comes before the oldest),
    // but while the slot below is rewritten, the half-written point that the header still
    // counts as the oldest is cut off from the rest instead of joined to it by a false line.
    uint8_t* oldest = slot(base_, after) + 4;
    le::store32(oldest, le::load32(oldest) | kTrackBreakFlag);
  }
  uint8_t* p = slot(base_, next);
  le::store32(p, static_cast<uint32_t>(lon));
  le::store32(p + 4, (static_cast<uint32_t>(lat) & ~kTrackBreakFlag) | breakBit);
  // The header last, one word at a time, so that a process killed at any moment leaves a
  // ring that reads as valid. At the wrap `wrapped` goes first: the full ring then stays
  // visible (its newest point, cut off, standing first) rather than reading as empty.
  if (next + 1 == kTrackSlots) {
    le::store32(base_ + kWrappedOffset, 1);
    le::store32(base_ + kNextIndexOffset, 0);
  } else {
    if (!valid) le::store32(base_ + kWrappedOffset, 0);
    le::store32(base_ + kNextIndexOffset, next + 1);
  }
}

void ActiveTrack::drawActiveTrack(QPainter& painter, const MapView& view) const {
  std::lock_guard guard(ring_);
  if (!base_) return;
  painter.save();
  painter.setPen(makeSolidPen(colorRefColor(kTrackPenColorRef), kTrackPenWidth));
  painter.setBrush(Qt::NoBrush);

  const int32_t width = view.screenWidth();
  const int32_t height = view.screenHeight();
  // 64-bit bounds: twice a screen size must not overflow.
  const int64_t right = 2 * int64_t{width};
  const int64_t bottom = 2 * int64_t{height};
  PolylineBatch line(painter);
  forEachPoint(base_, [&](const TrackPoint& point) {
    if (point.startsSegment()) line.drawIfLine();
    const MapPoint screen = view.semicirclesToScreen({point.lon, point.latitude()});
    const bool usable = screen.x > -int64_t{width} && screen.x < right && screen.y > -int64_t{height} &&
                        screen.y < bottom;
    if (usable) {
      line.add(QPoint(screen.x, screen.y));
    } else {
      line.drawIfLine();  // the piece towards the far point is not drawn
    }
  });
  line.drawIfLine();
  painter.restore();
}

bool readTrackRing(std::span<const uint8_t> bytes, std::vector<TrackPoint>& out) {
  RingRange range;
  if (bytes.size() != kTrackFileSize || !ringRange(bytes.data(), range)) return false;
  forEachPoint(bytes.data(), [&](const TrackPoint& p) { out.push_back(p); });
  return true;
}

std::vector<TrackPoint> ActiveTrack::activeTrackPoints() const {
  std::vector<TrackPoint> points;
  points.reserve(kTrackSlots);
  std::lock_guard guard(ring_);
  if (base_) forEachPoint(base_, [&](const TrackPoint& p) { points.push_back(p); });
  return points;
}

}  // namespace orvel
