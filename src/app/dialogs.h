#pragma once
// The program's message box, modal dialogs, pop-up menus, the wait cursor and hyperlink
// texts. Dialogs and menus run through replaceable runners so that a test (or a headless
// run) can answer them instead of a user.
#include <functional>
#include <memory>

#include <QString>

class QAction;
class QDialog;
class QMenu;
class QPoint;
class QWidget;

namespace orvel {

// Routes showMessage to a modal "ГИС Орвел" error box owned by `owner`.
void installMessageBox(QWidget* owner);
// Puts back the sink that was there before installMessageBox.
void removeMessageBox();

using DialogRunner = std::function<int(QDialog& dialog)>;
// Replaces how modal dialogs run (default: exec); returns the previous runner.
DialogRunner setDialogRunner(DialogRunner runner);
// Runs the dialog modally and returns its end code.
int runDialog(QDialog& dialog);

using PopupRunner = std::function<QAction*(QMenu& menu, const QPoint& globalPos)>;
PopupRunner setPopupRunner(PopupRunner runner);
// Shows the menu at the screen point; returns the chosen action or null.
QAction* runPopupMenu(QMenu& menu, const QPoint& globalPos);

using FileChooser = std::function<QString(QWidget* owner)>;
FileChooser setOpenFileChooser(FileChooser chooser);
// The open-file dialog for maps ("Все форматы (*.orv,*.img)"); empty when cancelled.
QString chooseMapFile(QWidget* owner);

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
