#pragma once
// The open-file dialog for maps and tracks: Qt's own dialog (not the desktop's), in Russian,
// folders listed before files. On a small touch screen one tap opens a folder or a file, and
// the rows are tall enough for a finger.
#include <memory>

#include <QString>

class QFileDialog;
class QWidget;

namespace orvel {

// The patterns follow in a second pair of brackets that the dialog hides, so the user reads
// the filter's own text while the patterns match.
inline constexpr char kMapFileFilter[] = "Все форматы (*.orv,*.img) (*.orv *.img)";
inline constexpr char kGpxFileFilter[] = "Треки GPX (*.gpx) (*.gpx)";

// Opens in `folder` (the home folder when it is empty or gone) with one filter.
std::unique_ptr<QFileDialog> makeOpenFileDialog(QWidget* owner, const QString& folder, const char* filter,
                                                bool smallScreen);

}  // namespace orvel
