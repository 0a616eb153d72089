#pragma once
// Reading GPX files as users have them: versions 1.0 and 1.1, with or without the GPX
// namespace, byte-order marks, comments, extensions in any namespace or none (skipped), empty
// segments (dropped: they draw nothing), points without time or elevation (kept without).
//
// A read is whole or refused: any XML damage, a root element other than <gpx> or a point
// without a usable position gives a reason and no data, never the part before the damage.
#include <filesystem>
#include <optional>

#include <QByteArray>
#include <QString>
#include <QStringView>

#include "gpx/gpx_data.h"

namespace orvel {

// On success fills `out` and returns true; otherwise leaves `out` empty and puts a one-line
// reason in `error` ("not a GPX file: ..." or "damaged GPX file at line L, column C: ...").
bool readGpx(const QByteArray& bytes, GpxData& out, QString& error);
// The same for a file; a file that cannot be read gives "cannot read PATH: reason".
bool readGpxFile(const std::filesystem::path& path, GpxData& out, QString& error);

// True when the bytes begin (after a byte-order mark and blanks) like an XML document or a
// <gpx> element: what tools use to tell a GPX file from a map.
bool looksLikeGpx(const QByteArray& bytes);

// "YYYY-MM-DDThh:mm:ss" with optional fractions of a second and an optional zone ("Z",
// "+hh:mm", "-hhmm"); without a zone the time is taken as UTC. Seconds since 1970 UTC.
std::optional<double> parseGpxTime(QStringView text);

}  // namespace orvel
