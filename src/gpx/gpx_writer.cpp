#include "gpx/gpx_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include <QLocale>
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

// The text without what XML 1.0 cannot carry at all (control characters, unpaired
// surrogates), which only a damaged waypoint file holds.
QString xmlText(const QString& text) {
  QString kept;
  kept.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t c = text[i].unicode();
    if (QChar::isHighSurrogate(c) && i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1].unicode())) {
      kept.append(text[i]).append(text[i + 1]);
      ++i;
    } else if ((c >= 0x20 || c == u'\t' || c == u'\n' || c == u'\r') && !QChar::isSurrogate(c) && c != 0xFFFE &&
               c != 0xFFFF) {
      kept.append(text[i]);
    }
  }
  return kept;
}

}  // namespace

QString gpxTimeText(double unixSeconds) {
  if (!(unixSeconds >= kFirstSecond && unixSeconds < kPastLastSecond)) return {};
  const int64_t ms = static_cast<int64_t>(std::floor(unixSeconds * 1000.0 + 0.5));
  const int64_t seconds = ms >= 0 ? ms / 1000 : (ms - 999) / 1000;
  const int64_t millisecond = ms - seconds * 1000;
  const int64_t daySeconds = (seconds % 86400 + 86400) % 86400;
  // Civil date from days since 1970 (proleptic Gregorian).
  const int64_t z = (seconds - daySeconds) / 86400 + 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  const int64_t day = doy - (153 * mp + 2) / 5 + 1;
  const int64_t month = mp < 10 ? mp + 3 : mp - 9;
  const int64_t year = yoe + era * 400 + (month <= 2 ? 1 : 0);
  char text[40];
  const int n = millisecond == 0
                    ? std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", int(year), int(month),
                                    int(day), int(daySeconds / 3600), int(daySeconds / 60 % 60), int(daySeconds % 60))
                    : std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", int(year), int(month),
                                    int(day), int(daySeconds / 3600), int(daySeconds / 60 % 60), int(daySeconds % 60),
                                    int(millisecond));
  return QString::fromLatin1(text, n);
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
    if (!waypoint->name.isEmpty()) xml.writeTextElement(QStringLiteral("name"), xmlText(waypoint->name));
    if (!waypoint->description.isEmpty()) xml.writeTextElement(QStringLiteral("desc"), xmlText(waypoint->description));
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
    if (!route.name.isEmpty()) xml.writeTextElement(QStringLiteral("name"), xmlText(route.name));
    for (const GpxPoint& p : route.points) writeGpxPoint(xml, QStringLiteral("rtept"), p);
    xml.writeEndElement();
  }
  for (const GpxTrack& track : data.tracks) {
    xml.writeStartElement(QStringLiteral("trk"));
    if (!track.name.isEmpty()) xml.writeTextElement(QStringLiteral("name"), xmlText(track.name));
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
