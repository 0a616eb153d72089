#include "gpx/gpx_track_file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include <QXmlStreamWriter>

#include "gpx/gpx_writer.h"

namespace orvel {
namespace {

void openTrack(QXmlStreamWriter& xml) {
  xml.writeStartElement(QStringLiteral("trk"));
}

void openSegment(QXmlStreamWriter& xml) {
  xml.writeStartElement(QStringLiteral("trkseg"));
  xml.writeCharacters(QString());  // completes the start tag, so a batch never ends inside it
}

// The bytes that close <gpx>, <trk> and <trkseg> as the stream writer writes them.
QByteArray closingTagsOfSegment() {
  QString text;
  QXmlStreamWriter xml(&text);
  xml.setAutoFormatting(true);
  xml.setAutoFormattingIndent(1);
  xml.writeStartElement(QStringLiteral("gpx"));
  openTrack(xml);
  openSegment(xml);
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

GpxTrackFile::GpxTrackFile() : closingTags_(closingTagsOfSegment()) {}

GpxTrackFile::~GpxTrackFile() { close(); }

bool GpxTrackFile::create(const std::filesystem::path& path, const QString& trackName) {
  close();
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  fd_ = fd;
  end_ = 0;
  failed_ = false;
  segmentPoints_ = 0;
  pending_.clear();
  xml_ = std::make_unique<QXmlStreamWriter>(&pending_);
  xml_->setAutoFormatting(true);
  xml_->setAutoFormattingIndent(1);
  startGpxDocument(*xml_);
  openTrack(*xml_);
  if (!trackName.isEmpty()) xml_->writeTextElement(QStringLiteral("name"), trackName);
  openSegment(*xml_);
  writeBatch(closingTags_);
  return true;
}

void GpxTrackFile::beginSegment() {
  if (!isOpen() || segmentPoints_ == 0) return;
  xml_->writeEndElement();
  openSegment(*xml_);
  segmentPoints_ = 0;
  writeBatch(closingTags_);
}

void GpxTrackFile::appendPoint(const GpxPoint& point) {
  if (!isOpen()) return;
  writeGpxPoint(*xml_, QStringLiteral("trkpt"), point);
  ++segmentPoints_;
  writeBatch(closingTags_);
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
