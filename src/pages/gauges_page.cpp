#include "pages/gauges_page.h"

#include <algorithm>

#include <QDialog>
#include <QPainter>

#include "core/settings.h"
#include "gps/gps_state.h"
#include "pages/commands.h"
#include "pages/gauge_dialog.h"
#include "pages/gauge_settings.h"
#include "pages/page_host.h"
#include "view/fonts.h"
#include "view/text_draw.h"

namespace orvel {

namespace {

constexpr int kCellWidth = 120;
constexpr int kCellHeight = 55;
constexpr int kRows = kGaugeCellCount / 2;

}  // namespace

GaugeGrid gaugeGrid(int width, int height) {
  GaugeGrid grid;
  // All five rows stay on the screen, so that every cell can be held and given a gauge:
  // rows shrink to fit, and on a wide screen they also grow to share the height.
  const int rowHeight = std::max(1, height / kRows);
  if (width > 2 * kCellWidth) {
    grid.cellWidth = width / 2;
    grid.cellHeight = rowHeight;
  } else {
    grid.cellHeight = std::min(kCellHeight, rowHeight);
  }
  grid.scale = std::min(static_cast<double>(grid.cellWidth) / kCellWidth,
                        static_cast<double>(grid.cellHeight) / kCellHeight);
  return grid;
}

QRect gaugeCellRect(const GaugeGrid& grid, int cell) {
  return QRect(grid.cellWidth * (cell % 2), grid.cellHeight * (cell / 2), grid.cellWidth, grid.cellHeight);
}

int gaugeCellAt(const GaugeGrid& grid, int x, int y) {
  return x / grid.cellWidth + 2 * (y / grid.cellHeight);
}

GaugesPage::GaugesPage(const PageContext& context, std::filesystem::path powerSupplies) : context_(context) {
  registerGaugeTypes(gauges_, std::move(powerSupplies));
}

void GaugesPage::makeFonts(double scale) {
  fontScale_ = scale;
  titleFont_ = makeGdiFont("Tahoma", static_cast<int>(16 * scale + 0.5), 0, 400);
  valueFont_ = makeGdiFont("Tahoma", static_cast<int>(22 * scale + 0.5), 0, 700);
}

void GaugesPage::initialize() {
  makeFonts(1.0);
  loadCells();
}

void GaugesPage::shutdown() {
  fontScale_ = 0.0;
  titleFont_ = QFont();
  valueFont_ = QFont();
}

void GaugesPage::loadCells() {
  for (int i = 0; i < kGaugeCellCount; ++i) {
    cells_[static_cast<size_t>(i)] = gauges_.findGauge(readGaugeSetting(context_.settings, i));
  }
  loaded_ = true;
}

void GaugesPage::resetCells() {
  for (int i = 0; i < kGaugeCellCount; ++i) {
    const std::u16string_view key = kDefaultGaugeKeys[static_cast<size_t>(i)];
    cells_[static_cast<size_t>(i)] = gauges_.findGauge(key);
    writeGaugeSetting(context_.settings, i, key);
  }
  loaded_ = true;
}

void GaugesPage::chooseGauge(int cell, std::u16string_view key) {
  setCell(cell, gauges_.findGauge(key));
  writeGaugeSetting(context_.settings, cell, key);
}

GaugeRegistration* GaugesPage::cell(int index) const {
  if (index < 0 || index >= kGaugeCellCount) return nullptr;
  return cells_[static_cast<size_t>(index)];
}

void GaugesPage::setCell(int index, GaugeRegistration* registration) {
  if (index < 0 || index >= kGaugeCellCount) return;
  cells_[static_cast<size_t>(index)] = registration;
}

void GaugesPage::paint(QPainter& painter) {
  if (!loaded_) loadCells();  // painted without the framework (a test, a tool)
  const int width = context_.host.clientWidth();
  const int height = context_.host.clientHeight();
  const GaugeGrid grid = gaugeGrid(width, height);
  if (fontScale_ != grid.scale) makeFonts(grid.scale);
  const int textX = static_cast<int>(10 * grid.scale + 0.5);
  const int titleY = static_cast<int>(5 * grid.scale + 0.5);
  const int valueY = static_cast<int>(20 * grid.scale + 0.5);

  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.fillRect(QRect(0, 0, width, height), QColor(128, 128, 128));
  for (int i = 0; i < kGaugeCellCount; ++i) {
    const QRect box = gaugeCellRect(grid, i);
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(Qt::white);
    // GDI's rectangle leaves out its right and bottom edges.
    painter.drawRect(box.adjusted(0, 0, -1, -1));
    const GaugeRegistration* entry = cells_[static_cast<size_t>(i)];
    if (entry == nullptr) continue;
    painter.setFont(titleFont_);
    drawTextAt(painter, box.x() + textX, box.y() + titleY, entry->title, kTextLeft);
    std::u16string text = entry->gauge ? entry->gauge->format() : std::u16string(u"-");
    if (text.size() >= kGaugeTextCapacity) text.resize(kGaugeTextCapacity - 1);
    painter.setFont(valueFont_);
    drawTextAt(painter, box.x() + textX, box.y() + valueY, text, kTextLeft);
  }
  painter.restore();
}

void GaugesPage::activate() {
  GpsFix fix;
  gauges_.updateAllGauges(context_.gps.getFix(fix));
}

void GaugesPage::onFixChanged() {
  GpsFix fix;
  gauges_.updateAllGauges(context_.gps.getFix(fix));
  context_.host.invalidateMainWindow();
}

void GaugesPage::onContextMenu(int x, int y) {
  tapX_ = x;
  tapY_ = y;
  context_.host.showPopupMenu(kMenuGaugesPopup, x, y);
}

int GaugesPage::onCommand(int commandId) {
  if (commandId == kCmdChooseGauge) {
    const int cell = gaugeCellAt(gaugeGrid(context_.host.clientWidth(), context_.host.clientHeight()), tapX_, tapY_);
    if (cell < 0 || cell >= kGaugeCellCount) return 0;  // held below the grid
    const std::unique_ptr<QDialog> dialog = makeGaugeChoiceDialog(*this, cell);
    if (context_.host.runDialog(*dialog) == 1) context_.host.invalidateMainWindow();
    return 0;
  }
  if (commandId == kCmdResetGauges) {
    resetCells();
    context_.host.invalidateMainWindow();
  }
  return 0;
}

}  // namespace orvel
