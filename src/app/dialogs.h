#pragma once
// The program's message box, modal dialogs, pop-up menus, the wait cursor and hyperlink
// texts. Dialogs and menus run through replaceable runners, kept by the main window, so that
// a test (or a headless run) can answer them instead of a user.
#include <functional>
#include <memory>

#include <QString>

#include "core/message.h"

class QAction;
class QDialog;
class QMenu;
class QPoint;
class QWidget;

namespace orvel {

struct DialogRunners;

// The program's message box: caption "ГИС Орвел", the error icon, the text and one OK button.
std::unique_ptr<QDialog> makeMessageDialog(QWidget* owner, const QString& text);
// A sink that shows each message in that box, owned by `owner` and run by `runners`; both
// must outlive the sink.
MessageSink messageBoxSink(const DialogRunners& runners, QWidget* owner);

using DialogRunner = std::function<int(QDialog& dialog)>;
using PopupRunner = std::function<QAction*(QMenu& menu, const QPoint& globalPos)>;
using FileChooser = std::function<QString(QWidget* owner)>;

// How dialogs, pop-up menus and the open-file dialog run; each one left empty runs the
// ordinary way, for a user.
struct DialogRunners {
  DialogRunner dialog;
  PopupRunner popup;
  FileChooser mapFile;
  FileChooser gpxFile;

  // Fits the dialog to its owner's screen (dialog_fit.h), then runs it modally and returns
  // its end code. Every dialog of the program runs through here.
  int runDialog(QDialog& dialog) const;
  // Shows the menu at the screen point; returns the chosen action or null.
  QAction* runPopupMenu(QMenu& menu, const QPoint& globalPos) const;
  // The open-file dialog for maps (map_file_dialog.h), opening in `folder`; empty when
  // cancelled.
  QString chooseMapFile(QWidget* owner, const QString& folder) const;
  // The open-file dialog for GPX tracks ("Треки GPX (*.gpx)"); empty when cancelled.
  QString chooseGpxFile(QWidget* owner) const;

 private:
  // The file chosen in the finger-usable open-file dialog; empty when cancelled.
  QString chooseFile(QWidget* owner, const QString& folder, const char* filter) const;
};

void showWaitCursor();
void restoreArrowCursor();

// A static text becomes a link by its text alone: a label whose text begins with "http:",
// "ftp:" or "mailto:" (ASCII letters in any case).
bool isHyperlink(const QWidget* control);
bool isHyperlinkText(const QString& text);
// Shows the dialog's link texts in blue, underlined, and opens them when clicked.
void installHyperlinkHook(QDialog& dialog);

// "версия 1.0 (update 11.1)"
QString aboutVersionLine();
// The about dialog (object name "dialog123"), not yet run.
std::unique_ptr<QDialog> makeAboutDialog(QWidget* owner);

}  // namespace orvel
