#pragma once
// The freedesktop entry that puts the viewer into the desktop's program menu.
#include <QString>

namespace orvel {

// The entry's text for the program at `programPath`.
QString desktopEntryText(const QString& programPath);
// Writes $XDG_DATA_HOME/applications/orvel.desktop when it is missing or differs. Failures
// do not matter and are ignored.
void writeDesktopEntry(const QString& programPath);

}  // namespace orvel
