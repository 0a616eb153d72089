#include "track/mps_writer.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <unistd.h>

#include "core/message.h"
#include "track/buffered_writer.h"
#include "track/data_folder.h"

namespace orvel {
namespace {

struct ExportState {
  // Runs start and end on the interface thread while points arrive on the reading thread.
  std::mutex lock;
  std::unique_ptr<BufferedWriter> writer;  // null while no run is open
  int fd = -1;
  std::filesystem::path path;
  bool trackBegun = false;
  uint64_t recordStart = 0;    // where the current track record's length field is
  uint64_t countPosition = 0;  // where its point count is
  uint32_t pointCount = 0;
  int nextTrackNumber = 0;
};

ExportState& exportState() {
  static ExportState s;
  return s;
}

void finishTrack(ExportState& s) {
  BufferedWriter& w = *s.writer;
  const uint64_t end = w.total;
  writerSeek(w, s.recordStart);
  writerWrite32(w, static_cast<uint32_t>(end - s.recordStart - 5));
  writerSeek(w, s.countPosition);
  writerWrite32(w, s.pointCount);
  writerSeek(w, end);
}

void beginTrack(ExportState& s) {
  if (!s.writer) return;
  if (s.trackBegun) {
    if (s.pointCount == 0) return;  // an empty track is reused, not repeated
    finishTrack(s);
  }
  BufferedWriter& w = *s.writer;
  s.recordStart = w.total;
  writerWrite32(w, kMpsLengthPlaceholder);
  writerWrite(w, "T", 1);
  char name[32];
  const int length = std::snprintf(name, sizeof name, "Track %03d", s.nextTrackNumber++);
  writerWrite(w, name, static_cast<size_t>(length) + 1);  // with its zero byte
  const uint8_t displayAndColour[5] = {0, 0, 0, 0, 0};
  writerWrite(w, displayAndColour, sizeof displayAndColour);
  s.countPosition = w.total;
  writerWrite32(w, kMpsCountPlaceholder);
  s.pointCount = 0;
  s.trackBegun = true;
}

void endRun(ExportState& s) {
  if (!s.writer) return;
  finishTrack(s);
  const std::string_view end = mpsEndRecord();
  writerWrite(*s.writer, end.data(), end.size());
  writerFlush(*s.writer);
  s.writer.reset();
  ::close(s.fd);
  s.fd = -1;
  s.path.clear();
  s.trackBegun = false;
}

}  // namespace

void openTrackFileAt(const std::tm& start) {
  ExportState& s = exportState();
  std::lock_guard guard(s.lock);
  endRun(s);

  char name[64];
  std::snprintf(name, sizeof name, "%d-%02d-%02d_%02d-%02d-%02d.mps", start.tm_year + 1900, start.tm_mon + 1,
                start.tm_mday, start.tm_hour, start.tm_min, start.tm_sec);
  const std::filesystem::path path = ensureDataFolder() / name;
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) {
    showMessage("Не удается создать файл для записи треков:\n %s", path.c_str());
    return;
  }
  s.fd = fd;
  s.path = path;
  s.writer = std::make_unique<BufferedWriter>();
  writerOpen(*s.writer, fd);
  const std::string_view header = mpsHeader();
  writerWrite(*s.writer, header.data(), header.size());
  s.nextTrackNumber = 0;
  s.trackBegun = false;
  beginTrack(s);
}

void openTrackFile() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  openTrackFileAt(local);
}

void closeTrackFile() {
  ExportState& s = exportState();
  std::lock_guard guard(s.lock);
  endRun(s);
}

bool isTrackFileOpen() {
  ExportState& s = exportState();
  std::lock_guard guard(s.lock);
  return s.writer != nullptr;
}

std::filesystem::path trackFilePath() {
  ExportState& s = exportState();
  std::lock_guard guard(s.lock);
  return s.path;
}

void beginRecordedTrack() {
  ExportState& s = exportState();
  std::lock_guard guard(s.lock);
  beginTrack(s);
}

void appendRecordedPoint(const GpsFix& fix) {
  if (!fix.has(kFixPosition)) return;
  appendMpsPoint(mpsPointFromFix(fix));
}

void appendMpsPoint(const MpsPoint& point) {
  const auto bytes = encodeMpsPoint(point);
  ExportState& s = exportState();
  std::lock_guard guard(s.lock);
  if (!s.writer) return;
  ++s.pointCount;
  writerWrite(*s.writer, bytes.data(), bytes.size());
}

}  // namespace orvel
