// The menu bar (menu 101), the page entries in "Вид", and the pop-up menus 111 and 125.
#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>

#include "app/dialogs.h"
#include "app/main_window.h"
#include "pages/commands.h"

namespace orvel {

namespace {

QString fromU16(const std::u16string& text) {
  return QString::fromUtf16(text.data(), qsizetype(text.size()));
}

// Fills a pop-up menu resource; false for an id that names none.
bool fillPopupMenu(QMenu& menu, int menuId) {
  auto add = [&menu](const QString& text, int id, bool enabled = true) {
    QAction* action = menu.addAction(text);
    action->setData(id);
    action->setEnabled(enabled);
  };
  switch (menuId) {
    case kMenuMapPopup:
      add(QStringLiteral("Сохранить точку..."), kCmdSavePointHere);
      add(QStringLiteral("Go to..."), kCmdGoTo, false);
      menu.addSeparator();
      add(QStringLiteral("Отменить"), kCmdCancel);
      return true;
    case kMenuGaugesPopup:
      add(QStringLiteral("Выбрать датчик..."), kCmdChooseGauge);
      add(QStringLiteral("Изначальный набор"), kCmdResetGauges);
      return true;
    default:
      return false;
  }
}

}  // namespace

void MainWindow::addCommand(QMenu* menu, const QString& text, int commandId) {
  QAction* action = menu->addAction(text);
  action->setData(commandId);
  actions_[commandId] = action;
  connect(action, &QAction::triggered, this, [this, commandId] { onCommand(commandId); });
}

void MainWindow::buildMenuBar() {
  QMenuBar* bar = menuBar();
  QMenu* file = bar->addMenu(QStringLiteral("Файл"));
  addCommand(file, QStringLiteral("Выход"), kCmdExit);
  addCommand(file, QStringLiteral("О программе"), kCmdAbout);
  file->addSeparator();
  addCommand(file, QStringLiteral("Сохранить точку..."), kCmdSavePoint);
  file->addSeparator();
  addCommand(file, QStringLiteral("&Открыть...\tCtrl+O"), kCmdOpen);
  addCommand(file, QStringLiteral("Открыть трек..."), kCmdOpenTrack);
  addCommand(file, QStringLiteral("Закрыть трек"), kCmdCloseTrack);
  actions_[kCmdCloseTrack]->setEnabled(false);  // until a track is shown

  viewMenu_ = bar->addMenu(QStringLiteral("Вид"));
  addCommand(viewMenu_, QStringLiteral("Увеличить"), kCmdZoomIn);
  addCommand(viewMenu_, QStringLiteral("Уменьшить"), kCmdZoomOut);

  QAction* options = bar->addAction(QStringLiteral("Настройки"));
  options->setData(kCmdOptions);
  actions_[kCmdOptions] = options;
  connect(options, &QAction::triggered, this, [this] { onCommand(kCmdOptions); });

  pageGroup_ = new QActionGroup(this);
  pageGroup_->setExclusive(true);
}

void MainWindow::appendPageItem(const std::u16string& title, int commandId) {
  if (pageGroup_->actions().isEmpty()) viewMenu_->addSeparator();
  addCommand(viewMenu_, fromU16(title), commandId);
  QAction* action = actions_[commandId];
  action->setCheckable(true);
  pageGroup_->addAction(action);
}

void MainWindow::checkPageItem(int commandId) {
  if (QAction* action = commandAction(commandId)) action->setChecked(true);
}

void MainWindow::enableZoomItems(bool enabled) {
  for (int id : {kCmdZoomIn, kCmdZoomOut}) {
    if (QAction* action = commandAction(id)) action->setEnabled(enabled);
  }
}

void MainWindow::setPageTitle(const std::u16string& title) { setWindowTitle(fromU16(title)); }

void MainWindow::showPopupMenu(int menuId, int x, int y) {
  QMenu menu(this);
  if (!fillPopupMenu(menu, menuId)) return;
  // The choice arrives later as a command, as a menu item's always does.
  if (QAction* chosen = dialogs_.runPopupMenu(menu, clientArea()->mapToGlobal(QPoint(x, y)))) {
    postCommand(chosen->data().toInt());
  }
}

}  // namespace orvel
