#include "track/data_folder.h"

#include <cstdlib>
#include <system_error>

#include <QFile>
#include <QStandardPaths>
#include <QString>

namespace orvel {

std::filesystem::path ensureDataFolder() {
  std::filesystem::path folder;
  if (const char* override = std::getenv("ORVEL_DATA_DIR"); override && *override) {
    folder = override;
  } else {
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    folder = std::filesystem::path(QFile::encodeName(documents).toStdString()) / "GPS Tracks and Waypoints";
  }
  std::error_code ignored;
  if (!std::filesystem::is_directory(folder, ignored)) std::filesystem::create_directories(folder, ignored);
  return folder;
}

}  // namespace orvel
