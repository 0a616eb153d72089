#include "gps/ui/options_dialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <string>

#include "core/settings.h"
#include "gps/gps_input.h"

namespace orvel {
namespace {

constexpr int kPortIndexRole = Qt::UserRole;

QCheckBox* addSwitch(QVBoxLayout* layout, const char* id, const QString& text, bool on) {
  auto* box = new QCheckBox(text);
  box->setObjectName(id);
  box->setChecked(on);
  layout->addWidget(box);
  return box;
}

std::string enableKey(int index) { return "Enable_COM" + std::to_string(index); }

}  // namespace

OptionsDialog::OptionsDialog(GpsInput& input, Settings& settings, OptionsActions actions, QWidget* parent)
    : QDialog(parent), input_(input), settings_(settings), actions_(std::move(actions)) {
  setObjectName("103");
  setWindowTitle(QStringLiteral("Настройки"));
  auto* layout = new QVBoxLayout(this);
  keepVisible_ = addSwitch(layout, "1102", QStringLiteral("Держать позицию на экране"),
                           settings_.readSettingBool("KeepVisible", true));
  rotateMap_ = addSwitch(layout, "1103", QStringLiteral("Поворачивать карту по курсу"),
                         settings_.readSettingBool("RotateMap", false));
  recordTrack_ = addSwitch(layout, "1101", QStringLiteral("Записывать трек"), settings_.readSettingBool("RecordTrack", false));
  showTrack_ = addSwitch(layout, "1104", QStringLiteral("Показывать трек"), settings_.readSettingBool("ShowTrack", true));
  // Shows whether scanning runs now, which is what OK compares against.
  scanPorts_ = addSwitch(layout, "1007", QStringLiteral("Искать GPS-приемник на COM-портах"), input_.isScanning());

  ports_ = new QTreeWidget;
  ports_->setObjectName("1005");
  ports_->setRootIsDecorated(false);
  ports_->setHeaderLabels({QStringLiteral("Порт"), QStringLiteral("Устройство")});
  ports_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  layout->addWidget(ports_, 1);
  fillPorts();

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &OptionsDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &OptionsDialog::reject);
  layout->addWidget(buttons);
}

// One row per port in COM number order (the list comes sorted that way).
void OptionsDialog::fillPorts() {
  for (const SerialPortInfo& port : input_.scanPortList()) {
    auto* row = new QTreeWidgetItem(ports_);
    row->setText(0, QStringLiteral("COM%1:").arg(port.number));
    row->setText(1, QString::fromStdString(port.name));
    row->setData(0, kPortIndexRole, port.number);
    row->setFlags(row->flags() | Qt::ItemIsUserCheckable);
    row->setCheckState(0, settings_.readSettingInt(enableKey(port.number), 1) != 0 ? Qt::Checked : Qt::Unchecked);
  }
}

void OptionsDialog::accept() {
  const bool rotateWas = settings_.readSettingBool("RotateMap", false);
  const bool showWas = settings_.readSettingBool("ShowTrack", true);

  settings_.writeSettingBool("KeepVisible", keepVisible_->isChecked());

  const bool rotate = rotateMap_->isChecked();
  settings_.writeSettingBool("RotateMap", rotate);
  if (!rotate && actions_.resetRotation) actions_.resetRotation();

  const bool record = recordTrack_->isChecked();
  settings_.writeSettingBool("RecordTrack", record);
  if (actions_.setTrackRecording) actions_.setTrackRecording(record);

  const bool show = showTrack_->isChecked();
  settings_.writeSettingBool("ShowTrack", show);

  if ((rotate != rotateWas || show != showWas) && actions_.redrawMap) actions_.redrawMap();

  // Scanning first, with the port settings as they were; the ports written below take
  // effect at the next scan.
  const bool scan = scanPorts_->isChecked();
  if (scan != input_.isScanning()) {
    settings_.writeSettingBool("ScanCOMPorts", scan);
    if (scan) {
      input_.beginScan();
    } else {
      input_.stopScanning();
    }
  }

  for (int i = 0; i < ports_->topLevelItemCount(); ++i) {
    const QTreeWidgetItem* row = ports_->topLevelItem(i);
    settings_.writeSettingInt(enableKey(row->data(0, kPortIndexRole).toInt()),
                              row->checkState(0) == Qt::Checked ? 1 : 0);
  }
  QDialog::accept();
}

bool runOptionsDialog(QWidget* parent, GpsInput& input, Settings& settings, OptionsActions actions,
                      const std::function<int(QDialog& dialog)>& run) {
  OptionsDialog dialog(input, settings, std::move(actions), parent);
  return (run ? run(dialog) : dialog.exec()) == QDialog::Accepted;
}

}  // namespace orvel
