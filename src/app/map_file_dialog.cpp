#include "app/map_file_dialog.h"

#include <QAbstractItemView>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QListView>

namespace orvel {

namespace {

// One tap on a folder opens it, one tap on a map chooses it: a finger has no double click.
void openOnTap(QFileDialog& dialog, QAbstractItemView& view) {
  QObject::connect(&view, &QAbstractItemView::clicked, &dialog, [&dialog](const QModelIndex& index) {
    const QString path = index.data(QFileSystemModel::FilePathRole).toString();
    if (path.isEmpty()) return;
    if (QFileInfo(path).isDir()) {
      dialog.setDirectory(path);
      return;
    }
    dialog.selectFile(path);
    static_cast<QDialog&>(dialog).accept();  // the file dialog's own accept, which checks the file
  });
}

}  // namespace

std::unique_ptr<QFileDialog> makeOpenFileDialog(QWidget* owner, const QString& folder, const char* filter,
                                                bool smallScreen) {
  const QString start = !folder.isEmpty() && QFileInfo(folder).isDir() ? folder : QDir::homePath();
  auto dialog = std::make_unique<QFileDialog>(owner, QStringLiteral("Открыть"), start, QString::fromUtf8(filter));
  dialog->setObjectName(QStringLiteral("openMapDialog"));
  dialog->setOptions(QFileDialog::DontUseNativeDialog | QFileDialog::HideNameFilterDetails);
  dialog->setAcceptMode(QFileDialog::AcceptOpen);
  dialog->setFileMode(QFileDialog::ExistingFile);
  dialog->setViewMode(QFileDialog::List);
  if (!smallScreen) return dialog;

  // One column from top to bottom, scrolled up and down like every list on the device.
  if (auto* list = dialog->findChild<QListView*>(QStringLiteral("listView"))) {
    list->setFlow(QListView::TopToBottom);
    list->setWrapping(false);
    list->setIconSize(QSize(24, 24));
    openOnTap(*dialog, *list);
  }
  if (auto* tree = dialog->findChild<QAbstractItemView*>(QStringLiteral("treeView"))) openOnTap(*dialog, *tree);
  // The side panel of places takes a third of a small screen's width.
  if (auto* sidebar = dialog->findChild<QWidget*>(QStringLiteral("sidebar"))) sidebar->hide();
  return dialog;
}

}  // namespace orvel
