#pragma once
// Writes the drawings as the PNG files the catalogue is built with: icons/<id>.png and
// patterns/<id>.png under a resource folder.
#include <QString>

namespace orvel::art {

// Writes every icon and pattern under resDir, making the two subfolders as needed.
// Returns an empty string on success, otherwise what went wrong. Needs a QGuiApplication.
QString writeArt(const QString& resDir);

}  // namespace orvel::art
