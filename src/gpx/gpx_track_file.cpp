#include "gpx/gpx_track_file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include <QXmlStreamWriter>

#include "gpx/gpx_writer.h"

namespace orvel {
namespace {

// The bytes that end the document after a point (`inSegment`) or after a whole segment or the
// track's name, as the stream writer writes them.
QByteArray closingTags(bool inSegment) {
  QString text;
  QXmlStreamWriter xml(&text);
  xml.setAutoFormatting(true);
  xml.setAutoFormattingIndent(1);
  xml.writeStartElement(QStringLiteral("gpx"));
  xml.writeStartElement(QStringLiteral("trk"));
  // Whole elements before the mark: an empty element's "/>" would only come after it.
  if (inSegment) {
    xml.writeStartElement(QStringLiteral("trkseg"));
    xml.writeTextElement(QStringLiteral("trkpt"), QStringLiteral("."));
  } else {
    xml.writeTextElement(QStringLiteral("name"), QStringLiteral("."));
  }
  const qsizetype start = text.size();
  xml.writeEndDocument();
  return text.sliced(start).toUtf8();
}

bool writeAllAt(int fd, const QByteArray& bytes, off_t offset) {
  const char* data = bytes.constData();
  size_t left = static_cast<size_t>(bytes.size());
  while (left > 0) {
    const ssize_t written = ::pwrite(fd, data, left, offset);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    left -= static_cast<size_t>(written);
    offset += written;
  }
  return true;
}

}  // namespace

GpxTrackFile::GpxTrackFile() : afterPoint_(closingTags(true)), afterSegment_(closingTags(false)) {}

GpxTrackFile::~GpxTrackFile() { close(); }

bool GpxTrackFile::create(const std::filesystem::path& path, const QString& trackName) {
  close();
  // Made under a passing name and given its own once the document's start is in it, so that
  // a run killed sooner leaves no empty track file, which other programs refuse.
  std::filesystem::path part = path;
  part += ".part";
  const int fd = ::open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  fd_ = fd;
  end_ = 0;
  failed_ = false;
  segmentOpen_ = false;
  pending_.clear();
  xml_ = std::make_unique<QXmlStreamWriter>(&pending_);
  xml_->setAutoFormatting(true);
  xml_->setAutoFormattingIndent(1);
  startGpxDocument(*xml_);
  xml_->writeStartElement(QStringLiteral("trk"));
  // The name completes the track's start tag, so that the first batch ends between elements.
  xml_->writeTextElement(QStringLiteral("name"), trackName.isEmpty() ? QStringLiteral("Track") : trackName);
  writeBatch(afterSegment_);
  if (failed_ || ::rename(part.c_str(), path.c_str()) != 0) {
    const int error = failed_ ? EIO : errno;
    close();
    ::unlink(part.c_str());
    errno = error;
    return false;
  }
  return true;
}

void GpxTrackFile::beginSegment() {
  if (!isOpen() || !segmentOpen_) return;
  xml_->writeEndElement();
  segmentOpen_ = false;
  writeBatch(afterSegment_);
}

void GpxTrackFile::appendPoint(const GpxPoint& point) {
  if (!isOpen()) return;
  if (!segmentOpen_) {
    xml_->writeStartElement(QStringLiteral("trkseg"));
    segmentOpen_ = true;
  }
  writeGpxPoint(*xml_, QStringLiteral("trkpt"), point);
  writeBatch(afterPoint_);
}

void GpxTrackFile::close() {
  if (!isOpen()) return;
  xml_->writeEndDocument();
  writeBatch(QByteArray());
  // The document's own end may be shorter than the closing tags it replaces.
  if (!failed_ && ::ftruncate(fd_, end_) != 0) failed_ = true;
  ::close(fd_);
  fd_ = -1;
  xml_.reset();
  pending_.clear();
}

void GpxTrackFile::writeBatch(const QByteArray& tail) {
  if (failed_) return;  // after a failed write nothing more is written
  const QByteArray batch = pending_.toUtf8();
  pending_.clear();
  if (!writeAllAt(fd_, batch + tail, end_)) {
    failed_ = true;
    return;
  }
  end_ += batch.size();
}

}  // namespace orvel
