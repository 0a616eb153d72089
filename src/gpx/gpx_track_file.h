#pragma once
// A GPX file written while a track is recorded: one <trk>, one <trkseg> per continuous
// stretch of points. Every call that adds something writes it at once, followed by the
// closing tags, and the next call writes over those tags, so that the file on disk is a
// whole GPX document after every point: a crash loses at most the point being written.
#include <filesystem>
#include <memory>

#include <QString>
#include <sys/types.h>

#include "gpx/gpx_data.h"

class QXmlStreamWriter;

namespace orvel {

class GpxTrackFile {
 public:
  GpxTrackFile();
  ~GpxTrackFile();  // closes as close() does
  GpxTrackFile(const GpxTrackFile&) = delete;
  GpxTrackFile& operator=(const GpxTrackFile&) = delete;

  // Creates `path` (in place of any file of that name) holding a document with one track
  // named `trackName` (or "Track") and no segment yet; the file has that name only once the
  // document's start is in it. False, with errno set, when the file cannot be created.
  bool create(const std::filesystem::path& path, const QString& trackName);
  bool isOpen() const { return fd_ >= 0; }
  // Ends the current segment, if any: the next point begins a new one. Segments never stay
  // empty.
  void beginSegment();
  // Adds the point to the current segment, beginning one when none is open.
  void appendPoint(const GpxPoint& point);
  // Writes the document's own end and closes the file. Nothing happens when none is open.
  void close();
  // A write failed since the file was created (the document on disk ends before it).
  bool failed() const { return failed_; }

 private:
  // Writes what the stream writer produced since the last batch, then `tail`, over the
  // previous closing tags.
  void writeBatch(const QByteArray& tail);

  int fd_ = -1;
  QString pending_;  // the stream writer's output not yet in the file
  std::unique_ptr<QXmlStreamWriter> xml_;
  QByteArray afterPoint_;    // what ends the document inside a segment
  QByteArray afterSegment_;  // what ends it between segments
  off_t end_ = 0;            // where the closing tags start in the file
  bool segmentOpen_ = false;
  bool failed_ = false;
};

}  // namespace orvel
