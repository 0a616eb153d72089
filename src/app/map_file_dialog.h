#pragma once
// The open-file dialog for maps: Qt's own dialog (not the desktop's), in Russian, with the
// filter "Все форматы (*.orv,*.img)", folders listed before files. On a small touch screen
// one tap opens a folder or a map, and the rows are tall enough for a finger.
#include <memory>

#include <QString>

class QFileDialog;
class QWidget;

namespace orvel {

// Opens in `folder` (the home folder when it is empty or gone).
std::unique_ptr<QFileDialog> makeMapFileDialog(QWidget* owner, const QString& folder, bool smallScreen);

}  // namespace orvel
