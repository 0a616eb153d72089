#pragma once
// Writing GPX 1.1 through Qt's XML stream writer, in the element order of the published
// schema: every file Orvel writes validates against it.
#include <QByteArray>
#include <QString>

#include "gpx/gpx_data.h"

class QXmlStreamWriter;

namespace orvel {

// The XML declaration and the <gpx> start tag with its namespace, schema location, version
// "1.1" and creator "Orvel".
void startGpxDocument(QXmlStreamWriter& xml);

// One <wpt>, <rtept> or <trkpt> (`tag`): lat and lon with nine decimals, then <ele> and
// <time> when the point has them; a waypoint's name and description follow.
void writeGpxPoint(QXmlStreamWriter& xml, const QString& tag, const GpxPoint& point,
                   const GpxWaypoint* waypoint = nullptr);

// The whole data as one document: waypoints, routes, tracks.
QByteArray gpxDocument(const GpxData& data);

// "YYYY-MM-DDThh:mm:ssZ", with milliseconds when the time has them; empty outside the
// years 1 to 9999 (and for what is not a number).
QString gpxTimeText(double unixSeconds);

}  // namespace orvel
