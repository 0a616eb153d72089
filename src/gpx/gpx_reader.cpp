#include "gpx/gpx_reader.h"

#include <cmath>
#include <cstdint>

#include <QFile>
#include <QXmlStreamReader>

namespace orvel {
namespace {

// Days from 1970-01-01 to the given date of the proleptic Gregorian calendar.
int64_t daysFromCivil(int64_t y, int64_t m, int64_t d) {
  y -= m <= 2 ? 1 : 0;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

// Reads `count` digits at `pos` into `value`.
bool digits(QStringView text, qsizetype& pos, int count, int& value) {
  if (pos + count > text.size()) return false;
  value = 0;
  for (int i = 0; i < count; ++i) {
    const char16_t c = text[pos + i].unicode();
    if (c < u'0' || c > u'9') return false;
    value = value * 10 + (c - u'0');
  }
  pos += count;
  return true;
}

bool expect(QStringView text, qsizetype& pos, char16_t c) {
  if (pos >= text.size() || text[pos] != c) return false;
  ++pos;
  return true;
}

// A decimal number as GPX writes them; blanks around it are allowed.
std::optional<double> number(QStringView text) {
  bool ok = false;
  const double value = text.trimmed().toDouble(&ok);
  if (!ok || !std::isfinite(value)) return std::nullopt;
  return value;
}

class GpxParser {
 public:
  explicit GpxParser(const QByteArray& bytes) : xml_(bytes) {}

  bool read(GpxData& out, QString& error) {
    if (!xml_.readNextStartElement()) {
      error = notGpx(xml_.hasError() ? xml_.errorString() : QStringLiteral("no XML element in it"));
      return false;
    }
    if (xml_.name() != u"gpx") {
      error = notGpx(QStringLiteral("its root element is <%1>").arg(xml_.qualifiedName()));
      return false;
    }
    namespace_ = xml_.namespaceUri().toString();
    readRoot(out);
    while (!xml_.atEnd()) xml_.readNext();  // what follows the root must be well-formed too
    if (xml_.hasError()) {
      out = GpxData{};
      error = QStringLiteral("damaged GPX file at line %1, column %2: %3")
                  .arg(xml_.lineNumber())
                  .arg(xml_.columnNumber())
                  .arg(xml_.errorString());
      return false;
    }
    return true;
  }

 private:
  static QString notGpx(const QString& why) { return QStringLiteral("not a GPX file: ") + why; }

  // An element of the file's own GPX namespace; extensions in other namespaces are not.
  bool ours() const { return xml_.namespaceUri() == namespace_; }

  void readRoot(GpxData& out) {
    while (xml_.readNextStartElement()) {
      if (!ours()) {
        xml_.skipCurrentElement();
      } else if (xml_.name() == u"wpt") {
        GpxWaypoint& w = out.waypoints.emplace_back();
        readPoint(w.point, &w);
      } else if (xml_.name() == u"rte") {
        readRoute(out.routes.emplace_back());
      } else if (xml_.name() == u"trk") {
        readTrack(out.tracks.emplace_back());
      } else {
        xml_.skipCurrentElement();
      }
    }
  }

  void readTrack(GpxTrack& track) {
    while (xml_.readNextStartElement()) {
      if (ours() && xml_.name() == u"name") {
        track.name = text();
      } else if (ours() && xml_.name() == u"trkseg") {
        GpxSegment segment;
        while (xml_.readNextStartElement()) {
          if (ours() && xml_.name() == u"trkpt") {
            readPoint(segment.points.emplace_back(), nullptr);
          } else {
            xml_.skipCurrentElement();
          }
        }
        if (!segment.points.empty()) track.segments.push_back(std::move(segment));
      } else {
        xml_.skipCurrentElement();
      }
    }
  }

  void readRoute(GpxRoute& route) {
    while (xml_.readNextStartElement()) {
      if (ours() && xml_.name() == u"name") {
        route.name = text();
      } else if (ours() && xml_.name() == u"rtept") {
        readPoint(route.points.emplace_back(), nullptr);
      } else {
        xml_.skipCurrentElement();
      }
    }
  }

  // A wpt, rtept or trkpt; `waypoint` takes the name and description of a wpt.
  void readPoint(GpxPoint& point, GpxWaypoint* waypoint) {
    const QXmlStreamAttributes attributes = xml_.attributes();
    const std::optional<double> lat = number(attributes.value(QLatin1StringView("lat")));
    const std::optional<double> lon = number(attributes.value(QLatin1StringView("lon")));
    if (!lat || !lon || std::fabs(*lat) > 90.0 || std::fabs(*lon) > 180.0) {
      xml_.raiseError(QStringLiteral("<%1> without a valid lat and lon").arg(xml_.name()));
      return;
    }
    point.latitude = *lat;
    point.longitude = *lon;
    while (xml_.readNextStartElement()) {
      if (!ours()) {
        xml_.skipCurrentElement();
      } else if (xml_.name() == u"ele") {
        // An unreadable elevation is no elevation, an unreadable time no time.
        withText([&point](QStringView text) { point.elevation = number(text); });
      } else if (xml_.name() == u"time") {
        withText([&point](QStringView text) { point.time = parseGpxTime(text); });
      } else if (waypoint && xml_.name() == u"name") {
        waypoint->name = text();
      } else if (waypoint && xml_.name() == u"desc") {
        waypoint->description = text();
      } else {
        xml_.skipCurrentElement();
      }
    }
  }

  QString text() { return xml_.readElementText(QXmlStreamReader::SkipChildElements); }

  // Hands the element's text to `use` through one buffer kept for all elements, so that a
  // hundred thousand numbers are read without a string made for each.
  template <typename Use>
  void withText(Use use) {
    buffer_.resize(0);
    for (;;) {
      const QXmlStreamReader::TokenType token = xml_.readNext();
      if (token == QXmlStreamReader::EndElement || token == QXmlStreamReader::Invalid) break;
      if (token == QXmlStreamReader::Characters) buffer_.append(xml_.text());
      if (token == QXmlStreamReader::StartElement) xml_.skipCurrentElement();
    }
    use(QStringView(buffer_));
  }

  QXmlStreamReader xml_;
  QString namespace_;
  QString buffer_;
};

}  // namespace

bool readGpx(const QByteArray& bytes, GpxData& out, QString& error) {
  out = GpxData{};
  error.clear();
  GpxParser parser(bytes);
  return parser.read(out, error);
}

bool readGpxFile(const std::filesystem::path& path, GpxData& out, QString& error) {
  out = GpxData{};
  QFile file(QString::fromStdString(path.string()));
  if (!file.open(QIODevice::ReadOnly)) {
    error = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
    return false;
  }
  const QByteArray bytes = file.readAll();
  if (file.error() != QFileDevice::NoError) {
    error = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
    return false;
  }
  return readGpx(bytes, out, error);
}

bool looksLikeGpx(const QByteArray& bytes) {
  QByteArrayView rest(bytes);
  if (rest.startsWith("\xEF\xBB\xBF")) rest = rest.sliced(3);
  rest = rest.trimmed();
  return rest.startsWith("<?xml") || rest.startsWith("<gpx");
}

std::optional<double> parseGpxTime(QStringView text) {
  text = text.trimmed();
  qsizetype pos = 0;
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (!digits(text, pos, 4, year) || !expect(text, pos, u'-') || !digits(text, pos, 2, month) ||
      !expect(text, pos, u'-') || !digits(text, pos, 2, day)) {
    return std::nullopt;
  }
  if (pos >= text.size() || (text[pos] != u'T' && text[pos] != u't' && text[pos] != u' ')) return std::nullopt;
  ++pos;
  if (!digits(text, pos, 2, hour) || !expect(text, pos, u':') || !digits(text, pos, 2, minute) ||
      !expect(text, pos, u':') || !digits(text, pos, 2, second)) {
    return std::nullopt;
  }
  if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 24 || minute > 59 || second > 60) return std::nullopt;
  double fraction = 0.0;
  if (pos < text.size() && (text[pos] == u'.' || text[pos] == u',')) {
    ++pos;
    double scale = 0.1;
    const qsizetype start = pos;
    while (pos < text.size() && text[pos] >= u'0' && text[pos] <= u'9') {
      fraction += (text[pos].unicode() - u'0') * scale;
      scale /= 10.0;
      ++pos;
    }
    if (pos == start) return std::nullopt;
  }
  int64_t offsetMinutes = 0;
  if (pos < text.size()) {
    if (text[pos] == u'Z' || text[pos] == u'z') {
      ++pos;
    } else if (text[pos] == u'+' || text[pos] == u'-') {
      const int sign = text[pos] == u'-' ? -1 : 1;
      ++pos;
      int zoneHours = 0, zoneMinutes = 0;
      if (!digits(text, pos, 2, zoneHours)) return std::nullopt;
      if (pos < text.size()) {
        expect(text, pos, u':');
        if (!digits(text, pos, 2, zoneMinutes)) return std::nullopt;
      }
      offsetMinutes = sign * (zoneHours * 60 + zoneMinutes);
    }
  }
  if (pos != text.size()) return std::nullopt;
  const int64_t seconds = daysFromCivil(year, month, day) * 86400 + hour * 3600 + minute * 60 + second -
                          offsetMinutes * 60;
  return static_cast<double>(seconds) + fraction;
}

}  // namespace orvel
