#pragma once
// The gauge choice dialog (126): one list (1008) of every gauge type under the column
// "Датчик", in registry order, with the cell's current type selected.
#include <memory>

class QDialog;
class QTreeWidget;
class QWidget;

namespace orvel {

class GaugesPage;

// Builds the dialog for `cell` (0..9) of the gauges page; not yet run. On OK it stores the
// selected type in the cell and in the cell's "Gauge_%d" setting; with no selection it
// changes nothing. OK ends the dialog with 1, Cancel with 0.
std::unique_ptr<QDialog> makeGaugeChoiceDialog(GaugesPage& page, int cell, QWidget* owner = nullptr);
// The list of a dialog made above (object name "1008").
QTreeWidget* gaugeChoiceList(QDialog& dialog);

}  // namespace orvel
