#include "pages/gauge_dialog.h"

#include <utility>

#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "pages/gauges_page.h"

namespace orvel {

namespace {

QString fromU16(const std::u16string& text) { return QString::fromStdU16String(text); }

}  // namespace

std::unique_ptr<QDialog> makeGaugeChoiceDialog(GaugesPage& page, int cell, QWidget* owner) {
  auto dialog = std::make_unique<QDialog>(owner);
  dialog->setObjectName(QStringLiteral("dialog126"));
  dialog->setWindowTitle(QStringLiteral("Датчик"));
  dialog->setProperty("gaugeCell", cell);

  auto* list = new QTreeWidget(dialog.get());
  list->setObjectName(QStringLiteral("1008"));
  list->setColumnCount(1);
  list->setHeaderLabels({QStringLiteral("Датчик")});
  list->setRootIsDecorated(false);
  list->setSelectionBehavior(QAbstractItemView::SelectRows);
  list->setSelectionMode(QAbstractItemView::SingleSelection);

  const GaugeRegistration* current = page.cell(cell);
  for (const GaugeRegistration* entry = page.gauges().gaugeList(); entry != nullptr; entry = entry->next) {
    auto* row = new QTreeWidgetItem(list, {fromU16(entry->title)});
    row->setData(0, Qt::UserRole, fromU16(entry->key));
    if (current != nullptr && entry->key == current->key) {
      list->setCurrentItem(row);
      row->setSelected(true);
    }
  }
  list->resizeColumnToContents(0);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog.get());
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("1"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("2"));
  auto* layout = new QVBoxLayout(dialog.get());
  layout->addWidget(list);
  layout->addWidget(buttons);

  QDialog* raw = dialog.get();
  QObject::connect(buttons, &QDialogButtonBox::accepted, raw, [raw, list, cell, &page] {
    const QList<QTreeWidgetItem*> selected = list->selectedItems();
    if (!selected.isEmpty()) {
      const std::u16string key = selected.front()->data(0, Qt::UserRole).toString().toStdU16String();
      page.chooseGauge(cell, key);
    }
    raw->done(1);
  });
  QObject::connect(buttons, &QDialogButtonBox::rejected, raw, [raw] { raw->done(0); });
  return dialog;
}

QTreeWidget* gaugeChoiceList(QDialog& dialog) {
  return dialog.findChild<QTreeWidget*>(QStringLiteral("1008"));
}

}  // namespace orvel
