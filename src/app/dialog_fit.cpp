#include "app/dialog_fit.h"

#include <algorithm>

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QScroller>
#include <QVBoxLayout>

namespace orvel {

namespace {

constexpr int kFingerHeight = 36;  // buttons and list rows a finger hits
const char* const kFittedProperty = "orvelFullScreen";

// Takes `widget` out of `layout` or any layout nested in it; true if it was there.
bool takeFromLayout(QLayout& layout, QWidget* widget) {
  for (int i = 0; i < layout.count(); ++i) {
    QLayoutItem* item = layout.itemAt(i);
    if (item->widget() == widget) {
      delete layout.takeAt(i);
      return true;
    }
    if (QLayout* inner = item->layout(); inner && takeFromLayout(*inner, widget)) return true;
  }
  return false;
}

// The bar at the top: the title, then the dialog's buttons.
QWidget* makeTopBar(QDialog& dialog, QWidget& content) {
  auto* bar = new QWidget(&dialog);
  bar->setObjectName(QStringLiteral("dialogTopBar"));
  auto* row = new QHBoxLayout(bar);
  row->setContentsMargins(6, 2, 2, 2);
  auto* title = new QLabel(dialog.windowTitle(), bar);
  title->setObjectName(QStringLiteral("dialogTitle"));
  QFont bold = title->font();
  bold.setBold(true);
  title->setFont(bold);
  // A long title gives way to the buttons.
  title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  row->addWidget(title, 1);
  for (QDialogButtonBox* box : content.findChildren<QDialogButtonBox*>()) {
    if (QLayout* layout = content.layout()) takeFromLayout(*layout, box);
    box->setOrientation(Qt::Horizontal);
    row->addWidget(box);
    if (QPushButton* ok = box->button(QDialogButtonBox::Ok)) ok->setText(QStringLiteral("Готово"));
    for (QAbstractButton* button : box->buttons()) button->setMinimumHeight(kFingerHeight);
  }
  return bar;
}

// Rebuilds the dialog as a bar at the top over its former contents in a scroll area.
void rebuildForSmallScreen(QDialog& dialog) {
  auto* content = new QWidget;
  content->setObjectName(QStringLiteral("dialogContent"));
  if (QLayout* layout = dialog.layout()) content->setLayout(layout);  // takes its widgets along
  // Widgets outside the layout (none in the program's dialogs) stay where they were.
  QWidget* bar = makeTopBar(dialog, *content);

  auto* scroll = new QScrollArea(&dialog);
  scroll->setObjectName(QStringLiteral("dialogScroll"));
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidgetResizable(true);
  scroll->setWidget(content);
  QScroller::grabGesture(scroll->viewport(), QScroller::TouchGesture);
  for (QAbstractScrollArea* inner : content->findChildren<QAbstractScrollArea*>()) {
    QScroller::grabGesture(inner->viewport(), QScroller::TouchGesture);
  }

  auto* outer = new QVBoxLayout(&dialog);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->setSpacing(0);
  outer->addWidget(bar);
  outer->addWidget(scroll, 1);

  dialog.setSizeGripEnabled(false);
  dialog.setStyleSheet(QStringLiteral("QAbstractItemView::item { min-height: %1px; }").arg(kFingerHeight));
  dialog.setProperty(kFittedProperty, true);
}

}  // namespace

bool isSmallScreen(const QRect& screen) {
  return screen.width() <= kSmallScreen || screen.height() <= kSmallScreen;
}

void fitDialogToScreen(QDialog& dialog, const QRect& screen, const QRect& window) {
  if (isSmallScreen(screen)) {
    if (!dialog.property(kFittedProperty).toBool()) rebuildForSmallScreen(dialog);
    dialog.setWindowState(dialog.windowState() | Qt::WindowFullScreen);
    dialog.setGeometry(screen);
    return;
  }
  dialog.adjustSize();
  const QSize size = dialog.size().boundedTo(screen.size());
  QRect placed(QPoint(0, 0), size);
  placed.moveCenter(window.isValid() ? window.center() : screen.center());
  placed.moveLeft(std::clamp(placed.left(), screen.left(), screen.right() + 1 - size.width()));
  placed.moveTop(std::clamp(placed.top(), screen.top(), screen.bottom() + 1 - size.height()));
  dialog.setGeometry(placed);
}

}  // namespace orvel
