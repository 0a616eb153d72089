#include "track/active_track.h"

#include <array>
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
#include "view/drawing_objects.h"
#include "view/map_view.h"

namespace orvel {
namespace {

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
  appendTrackPoint(ring(), lon, lat, pendingBreak_.exchange(false));
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
  forEachTrackPoint(ring(), [&](const TrackPoint& point) {
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
  if (bytes.size() != kTrackFileSize) return false;
  const ConstTrackRing ring(bytes.data(), kTrackFileSize);
  TrackRingRange range;
  if (!trackRingRange(ring, range)) return false;
  forEachTrackPoint(ring, [&](const TrackPoint& p) { out.push_back(p); });
  return true;
}

std::vector<TrackPoint> ActiveTrack::activeTrackPoints() const {
  std::lock_guard guard(ring_);
  return base_ ? trackRingPoints(ring()) : std::vector<TrackPoint>{};
}

}  // namespace orvel
