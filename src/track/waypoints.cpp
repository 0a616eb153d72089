#include "track/waypoints.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <tuple>
#include <vector>

#include <QByteArray>

#include "core/atomic_file.h"
#include "core/message.h"
#include "gpx/gpx_writer.h"
#include "track/gpx_export.h"

namespace orvel {
namespace {

// The whole file, or false with errno set.
bool readWholeFile(int fd, std::vector<uint8_t>& bytes) {
  uint8_t chunk[65536];
  for (;;) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) return true;
    bytes.insert(bytes.end(), chunk, chunk + got);
  }
}

}  // namespace

WaypointStore::WaypointStore(std::filesystem::path dataFolder, Messages& messages)
    : folder_(std::move(dataFolder)), messages_(messages), icon_(drawWaypointIcon()) {}

std::filesystem::path WaypointStore::waypointsPath() const { return folder_ / "Waypoints.bin"; }

std::filesystem::path WaypointStore::waypointsGpxPath() const { return folder_ / "Waypoints.gpx"; }

void WaypointStore::loadWaypoints() {
  const std::filesystem::path path = waypointsPath();
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return;  // no file yet: nothing to load

  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0 || ::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    if (fd >= 0) ::close(fd);
    showMessage(messages_, "Can't read file:\n %s", path.c_str());
    return;
  }
  std::vector<uint8_t> bytes;
  bytes.reserve(static_cast<size_t>(info.st_size));
  const bool read = readWholeFile(fd, bytes);
  const int error = errno;
  ::close(fd);
  if (!read) {
    showMessage(messages_, "Can't read/write active track file. (Error %d.)", error);
    return;
  }

  std::vector<Waypoint> records;
  const bool whole = parseWaypointFile(bytes, records);
  for (Waypoint& w : records) list_.push_front(std::move(w));
  if (!whole) {
    showMessage(messages_, "Waypoint data are damaged.");
    return;
  }
  // A run killed between the two writes of a save left Waypoints.gpx behind Waypoints.bin
  // (it is always written second); bring it up to date now rather than at the next save. A
  // folder we cannot write is told by the next save, not at start.
  struct stat gpx {};
  const bool gpxBehind = ::stat(waypointsGpxPath().c_str(), &gpx) != 0 ||
                         std::tie(gpx.st_mtim.tv_sec, gpx.st_mtim.tv_nsec) < std::tie(info.st_mtim.tv_sec, info.st_mtim.tv_nsec);
  if (gpxBehind) writeWaypointsGpx(false);
}

bool WaypointStore::saveWaypoints() {
  std::string bytes = waypointFileHeader();
  for (const Waypoint& w : list_) appendWaypointRecord(bytes, w);
  const std::filesystem::path path = waypointsPath();
  errno = 0;
  if (!writeFileAtomically(path, bytes, beforeReplace_)) {
    showMessage(messages_, "Не удается открыть файл %s. (Ошибка %d).", path.c_str(), errno);
    return false;
  }
  return writeWaypointsGpx(true);
}

bool WaypointStore::writeWaypointsGpx(bool tellFailure) {
  GpxData gpx;
  for (const Waypoint& w : list_) gpx.waypoints.push_back(gpxWaypointOf(w));
  const QByteArray document = gpxDocument(gpx);
  const std::filesystem::path gpxPath = waypointsGpxPath();
  errno = 0;
  if (!writeFileAtomically(gpxPath, std::string_view(document.constData(), size_t(document.size())), beforeReplace_)) {
    if (tellFailure) showMessage(messages_, "Не удается открыть файл %s. (Ошибка %d).", gpxPath.c_str(), errno);
    return false;
  }
  return true;
}

void WaypointStore::freeWaypoints() { list_.clear(); }

std::u16string WaypointStore::nextWaypointName() const {
  for (int n = 1; n <= 999; ++n) {
    const std::u16string candidate{static_cast<char16_t>(u'0' + n / 100), static_cast<char16_t>(u'0' + n / 10 % 10),
                                   static_cast<char16_t>(u'0' + n % 10)};
    bool taken = false;
    for (const Waypoint& w : list_) {
      if (!w.name().empty() && w.name() == candidate) {
        taken = true;
        break;
      }
    }
    if (!taken) return candidate;
  }
  return u"999";
}

void WaypointStore::setWaypointEditor(WaypointEditor editor) { editor_ = std::move(editor); }

Waypoint& WaypointStore::addWaypoint(float lonDegrees, float latDegrees, double time, float altitude) {
  Waypoint w;
  w.lon = degreesToSemicircles(lonDegrees);
  w.lat = degreesToSemicircles(latDegrees);
  w.time = time;
  w.altitude = altitude;
  w.attributeA = kNewWaypointAttributeA;
  w.attributeB = kNewWaypointAttributeB;
  w.strings[kWaypointName] = nextWaypointName();
  Waypoint& added = list_.emplace_front(std::move(w));
  if (editor_) editor_(added);
  saveWaypoints();
  return added;
}

}  // namespace orvel
