#include "gpx/gpx_writer.h"

#include <algorithm>
#include <cmath>

#include <QDateTime>
#include <QLocale>
#include <QTimeZone>
#include <QXmlStreamWriter>

namespace orvel {
namespace {

const char16_t kGpxNamespace[] = u"http://www.topografix.com/GPX/1/1";
const char16_t kSchemaNamespace[] = u"http://www.w3.org/2001/XMLSchema-instance";

// Seconds of 0001-01-01 and of 10000-01-01 since 1970.
constexpr double kFirstSecond = -62135596800.0;
constexpr double kPastLastSecond = 253402300800.0;

// Plain decimals, as the schema's xsd:decimal has no exponent form: `decimals` of them, or as
// many as reading the text back to the same value takes.
QString decimal(double value, int decimals) {
  const QString fixed = QString::number(value, 'f', decimals);
  if (fixed.toDouble() == value) return fixed;
  return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

}  // namespace

QString gpxTimeText(double unixSeconds) {
  if (!(unixSeconds >= kFirstSecond && unixSeconds < kPastLastSecond)) return {};
  const qint64 ms = static_cast<qint64>(std::floor(unixSeconds * 1000.0 + 0.5));
  const QDateTime time = QDateTime::fromMSecsSinceEpoch(ms, QTimeZone::utc());
  return time.toString(ms % 1000 == 0 ? Qt::ISODate : Qt::ISODateWithMs);
}

void startGpxDocument(QXmlStreamWriter& xml) {
  xml.writeStartDocument();
  xml.writeStartElement(QStringLiteral("gpx"));
  xml.writeDefaultNamespace(QString::fromUtf16(kGpxNamespace));
  xml.writeNamespace(QString::fromUtf16(kSchemaNamespace), QStringLiteral("xsi"));
  xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.1"));
  xml.writeAttribute(QStringLiteral("creator"), QStringLiteral("Orvel"));
  xml.writeAttribute(QString::fromUtf16(kSchemaNamespace), QStringLiteral("schemaLocation"),
                     QStringLiteral("http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd"));
}

void writeGpxPoint(QXmlStreamWriter& xml, const QString& tag, const GpxPoint& point, const GpxWaypoint* waypoint) {
  xml.writeStartElement(tag);
  // Latitudes beyond a pole, which only a damaged file holds, are written at the pole: the
  // schema allows nothing else. Nine decimals are finer than a semicircle, the finest step
  // of the positions Orvel records.
  xml.writeAttribute(QStringLiteral("lat"), decimal(std::clamp(point.latitude, -90.0, 90.0), 9));
  xml.writeAttribute(QStringLiteral("lon"), decimal(point.longitude, 9));
  if (point.elevation && std::isfinite(*point.elevation)) {
    xml.writeTextElement(QStringLiteral("ele"), decimal(*point.elevation, 3));
  }
  if (point.time) {
    const QString time = gpxTimeText(*point.time);
    if (!time.isEmpty()) xml.writeTextElement(QStringLiteral("time"), time);
  }
  if (waypoint) {
    if (!waypoint->name.isEmpty()) xml.writeTextElement(QStringLiteral("name"), waypoint->name);
    if (!waypoint->description.isEmpty()) xml.writeTextElement(QStringLiteral("desc"), waypoint->description);
  }
  xml.writeEndElement();
}

QByteArray gpxDocument(const GpxData& data) {
  QByteArray bytes;
  QXmlStreamWriter xml(&bytes);
  xml.setAutoFormatting(true);
  xml.setAutoFormattingIndent(1);
  startGpxDocument(xml);
  for (const GpxWaypoint& w : data.waypoints) writeGpxPoint(xml, QStringLiteral("wpt"), w.point, &w);
  for (const GpxRoute& route : data.routes) {
    xml.writeStartElement(QStringLiteral("rte"));
    if (!route.name.isEmpty()) xml.writeTextElement(QStringLiteral("name"), route.name);
    for (const GpxPoint& p : route.points) writeGpxPoint(xml, QStringLiteral("rtept"), p);
    xml.writeEndElement();
  }
  for (const GpxTrack& track : data.tracks) {
    xml.writeStartElement(QStringLiteral("trk"));
    if (!track.name.isEmpty()) xml.writeTextElement(QStringLiteral("name"), track.name);
    for (const GpxSegment& segment : track.segments) {
      xml.writeStartElement(QStringLiteral("trkseg"));
      for (const GpxPoint& p : segment.points) writeGpxPoint(xml, QStringLiteral("trkpt"), p);
      xml.writeEndElement();
    }
    xml.writeEndElement();
  }
  xml.writeEndDocument();
  return bytes;
}

}  // namespace orvel
