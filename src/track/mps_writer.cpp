#include "track/mps_writer.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "core/message.h"
#include "track/buffered_writer.h"
#include "track/gpx_export.h"

namespace orvel {

TrackExport::TrackExport(std::filesystem::path dataFolder, Messages& messages)
    : folder_(std::move(dataFolder)), messages_(messages) {}

TrackExport::~TrackExport() { closeTrackFile(); }

void TrackExport::finishTrackLocked() {
  BufferedWriter& w = *writer_;
  const uint64_t end = w.total;
  writerSeek(w, recordStart_);
  writerWrite32(w, static_cast<uint32_t>(end - recordStart_ - 5));
  writerSeek(w, countPosition_);
  writerWrite32(w, pointCount_);
  writerSeek(w, end);
}

void TrackExport::beginTrackLocked() {
  if (!writer_) return;
  if (trackBegun_) {
    if (pointCount_ == 0) return;  // an empty track is reused, not repeated
    finishTrackLocked();
    gpx_.beginSegment();
  }
  BufferedWriter& w = *writer_;
  recordStart_ = w.total;
  writerWrite32(w, kMpsLengthPlaceholder);
  writerWrite(w, "T", 1);
  char name[32];
  const int length = std::snprintf(name, sizeof name, "Track %03d", nextTrackNumber_++);
  writerWrite(w, name, static_cast<size_t>(length) + 1);  // with its zero byte
  const uint8_t displayAndColour[5] = {0, 0, 0, 0, 0};
  writerWrite(w, displayAndColour, sizeof displayAndColour);
  countPosition_ = w.total;
  writerWrite32(w, kMpsCountPlaceholder);
  pointCount_ = 0;
  trackBegun_ = true;
}

void TrackExport::endRunLocked() {
  if (!writer_) return;
  finishTrackLocked();
  const std::string_view end = mpsEndRecord();
  writerWrite(*writer_, end.data(), end.size());
  writerFlush(*writer_);
  writer_.reset();
  gpx_.close();
  ::close(fd_);
  fd_ = -1;
  path_.clear();
  trackBegun_ = false;
}

void TrackExport::openTrackFileAt(const std::tm& start) {
  std::lock_guard guard(lock_);
  endRunLocked();

  char name[64];
  std::snprintf(name, sizeof name, "%d-%02d-%02d_%02d-%02d-%02d.mps", start.tm_year + 1900, start.tm_mon + 1,
                start.tm_mday, start.tm_hour, start.tm_min, start.tm_sec);
  const std::filesystem::path path = folder_ / name;
  // The file is made under a passing name and takes its own once the header and the first
  // track record are in it, so that a run killed sooner leaves no empty track file, which
  // other programs refuse.
  std::filesystem::path part = path;
  part += ".part";
  const int fd = ::open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) {
    showMessage(messages_, "Не удается создать файл для записи треков:\n %s", path.c_str());
    return;
  }
  fd_ = fd;
  path_ = path;
  writer_ = std::make_unique<BufferedWriter>();
  writerOpen(*writer_, fd);
  const std::string_view header = mpsHeader();
  writerWrite(*writer_, header.data(), header.size());
  std::filesystem::path gpxPath = path;
  gpxPath.replace_extension(".gpx");
  if (!gpx_.create(gpxPath, QString::fromStdString(path.stem().string()))) {
    showMessage(messages_, "Не удается создать файл для записи треков:\n %s", gpxPath.c_str());
  }
  nextTrackNumber_ = 0;
  trackBegun_ = false;
  beginTrackLocked();
  writerFlush(*writer_);
  if (::rename(part.c_str(), path.c_str()) != 0) {
    showMessage(messages_, "Не удается создать файл для записи треков:\n %s", path.c_str());
    path_ = part;  // the run goes on where it is
  }
}

void TrackExport::openTrackFile() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  openTrackFileAt(local);
}

void TrackExport::closeTrackFile() {
  std::lock_guard guard(lock_);
  endRunLocked();
}

bool TrackExport::isTrackFileOpen() const {
  std::lock_guard guard(lock_);
  return writer_ != nullptr;
}

std::filesystem::path TrackExport::trackFilePath() const {
  std::lock_guard guard(lock_);
  return path_;
}

void TrackExport::beginRecordedTrack() {
  std::lock_guard guard(lock_);
  beginTrackLocked();
}

void TrackExport::appendRecordedPoint(const GpsFix& fix) {
  if (!fix.has(kFixPosition)) return;
  appendMpsPoint(mpsPointFromFix(fix));
}

void TrackExport::appendMpsPoint(const MpsPoint& point) {
  const auto bytes = encodeMpsPoint(point);
  std::lock_guard guard(lock_);
  if (!writer_) return;
  ++pointCount_;
  writerWrite(*writer_, bytes.data(), bytes.size());
  gpx_.appendPoint(gpxPointOf(point));
}

}  // namespace orvel
