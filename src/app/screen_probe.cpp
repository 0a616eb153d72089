#include "app/screen_probe.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextStream>

#include "app/main_window.h"
#include "pages/gauges_page.h"

namespace orvel {

namespace {

// A description waits until the screen has been still this long.
constexpr int kSettleMs = 300;

QString name(const QWidget& widget) {
  if (widget.inherits("QMainWindow")) return QStringLiteral("main");
  return widget.objectName().isEmpty() ? QString::fromLatin1(widget.metaObject()->className()) : widget.objectName();
}

QString rect(const QRect& r) { return QStringLiteral("%1 %2 %3 %4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height()); }

QRect globalRect(const QWidget& widget, const QRect& local) {
  return QRect(widget.mapToGlobal(local.topLeft()), local.size());
}

// Text on one line, for the last field.
QString oneLine(QString text) { return text.replace(u'\n', u' ').replace(u'\t', u' '); }

QString textOf(const QWidget& widget) {
  if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) return button->text().remove(u'&');
  if (const auto* edit = qobject_cast<const QLineEdit*>(&widget)) return edit->text();
  if (const auto* combo = qobject_cast<const QComboBox*>(&widget)) return combo->currentText();
  return {};
}

bool isControl(const QWidget& widget) {
  if (qobject_cast<const QScrollBar*>(&widget)) return false;  // part of a list or a scroll area
  return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QLineEdit*>(&widget) ||
         qobject_cast<const QComboBox*>(&widget) || qobject_cast<const QAbstractItemView*>(&widget) ||
         qobject_cast<const QAbstractSpinBox*>(&widget);
}

// Where a control can be seen: inside a scroll area it can be scrolled into the area's view,
// elsewhere it is where it is.
QRect reachableRect(const QWidget& control) {
  for (const QWidget* up = control.parentWidget(); up != nullptr && !up->isWindow(); up = up->parentWidget()) {
    if (const auto* scroll = qobject_cast<const QScrollArea*>(up)) {
      return globalRect(*scroll->viewport(), scroll->viewport()->rect());
    }
  }
  return globalRect(control, control.rect());
}

}  // namespace

ScreenProbe::ScreenProbe(MainWindow& window, QString logFile, QString shotFolder)
    : window_(window), logFile_(std::move(logFile)), shotFolder_(std::move(shotFolder)) {
  if (!shotFolder_.isEmpty()) QDir().mkpath(shotFolder_);
  settle_.setSingleShot(true);
  settle_.setInterval(kSettleMs);
  connect(&settle_, &QTimer::timeout, this, [this] { writeDescription(); });
  qApp->installEventFilter(this);
  settle_.start();
}

ScreenProbe::~ScreenProbe() { qApp->removeEventFilter(this); }

bool ScreenProbe::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonRelease:  // a tap may change what a window holds
    case QEvent::KeyRelease:
      settle_.start();
      break;
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowTitleChange:
      if (watched->isWidgetType() && static_cast<QWidget*>(watched)->isWindow()) settle_.start();
      break;
    default:
      break;
  }
  return false;
}

void ScreenProbe::describeWindow(QTextStream& out, const QWidget& window) {
  const QString windowName = name(window);
  out << "window\t" << windowName << '\t' << rect(window.frameGeometry()) << '\t' << oneLine(window.windowTitle())
      << '\n';
  auto menuItems = [&](const QWidget& owner, const QList<QAction*>& actions, auto geometry) {
    for (QAction* action : actions) {
      if (action->isSeparator() || !action->isVisible()) continue;
      const QRect at = geometry(action);
      if (at.isEmpty()) continue;
      out << "item\t" << windowName << '\t' << rect(globalRect(owner, at)) << '\t'
          << oneLine(action->text().remove(u'&').section(u'\t', 0, 0)) << '\n';
    }
  };
  if (const auto* menu = qobject_cast<const QMenu*>(&window)) {
    menuItems(*menu, menu->actions(), [menu](QAction* a) { return menu->actionGeometry(a); });
  }
  for (const QWidget* child : window.findChildren<QWidget*>()) {
    if (!child->isVisibleTo(&window) || child->window() != &window) continue;
    if (const auto* bar = qobject_cast<const QMenuBar*>(child)) {
      menuItems(*bar, bar->actions(), [bar](QAction* a) { return bar->actionGeometry(a); });
      continue;
    }
    if (!isControl(*child)) continue;
    out << "control\t" << windowName << '\t' << name(*child) << '\t' << rect(globalRect(*child, child->rect()))
        << '\t' << rect(reachableRect(*child)) << '\t' << oneLine(textOf(*child)) << '\n';
    if (const auto* list = qobject_cast<const QAbstractItemView*>(child); list && list->model()) {
      const QAbstractItemModel& model = *list->model();
      const QModelIndex root = list->rootIndex();
      for (int row = 0; row < model.rowCount(root); ++row) {
        const QModelIndex index = model.index(row, 0, root);
        const QRect at = list->visualRect(index).intersected(list->viewport()->rect());
        if (at.isEmpty()) continue;
        out << "row\t" << windowName << '\t' << rect(globalRect(*list->viewport(), at)) << '\t'
            << oneLine(index.data().toString()) << '\n';
      }
    }
  }
}

void ScreenProbe::writeDescription() {
  ++serial_;
  QFile file(logFile_);
  if (!file.open(QIODevice::Append | QIODevice::Text)) return;
  QTextStream out(&file);
  QScreen* screen = window_.screen();
  out << "screen\t" << serial_ << '\t' << rect(screen ? screen->geometry() : QRect()) << '\n';
  const PageSet& pages = window_.pages();
  if (pages.pagesReady()) {
    out << "page\t" << pages.currentPageIndex() << '\n';
    if (&pages.currentPage() == &pages.gaugesPage()) {
      const GaugeGrid grid = gaugeGrid(window_.clientWidth(), window_.clientHeight());
      for (int cell = 0; cell < kGaugeCellCount; ++cell) {
        const GaugeRegistration* gauge = pages.gaugesPage().cell(cell);
        out << "gauge\t" << cell << '\t' << rect(globalRect(*window_.clientArea(), gaugeCellRect(grid, cell))) << '\t'
            << (gauge ? QString::fromStdU16String(gauge->key) : QString()) << '\n';
      }
    }
  }
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible()) describeWindow(out, *window);
  }
  // The picture is named for what is in front.
  const QWidget* front = QApplication::activePopupWidget();
  if (front == nullptr) front = QApplication::activeModalWidget();
  const QString top = front != nullptr ? name(*front) : QStringLiteral("page%1").arg(pages.currentPageIndex());
  out << "end\t" << serial_ << '\n';
  out.flush();
  if (!shotFolder_.isEmpty() && screen) {
    screen->grabWindow(0).save(QStringLiteral("%1/%2-%3.png").arg(shotFolder_).arg(serial_, 2, 10, QLatin1Char('0')).arg(top));
  }
}

}  // namespace orvel
