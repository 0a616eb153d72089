#include "app/dialogs.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QFrame>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include "core/message.h"
#include "app/program_icon.h"

namespace orvel {

namespace {

QString caption() { return QString::fromUtf8(kMessageCaption.data(), qsizetype(kMessageCaption.size())); }

// Opens a link text when it is clicked; styles it when the dialog is set up.
class HyperlinkHook : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonRelease) {
      auto* label = qobject_cast<QLabel*>(watched);
      if (label && isHyperlink(label)) {
        QDesktopServices::openUrl(QUrl(label->text().left(256)));
        return true;
      }
    }
    return false;
  }
};

// The link font: the dialog font underlined.
QFont linkFont(const QFont& base) {
  QFont font = base;
  font.setUnderline(true);
  return font;
}

}  // namespace

MessageSink messageBoxSink(QWidget* owner) {
  return [owner](const std::string& text) {
    QMessageBox::critical(owner, caption(), QString::fromStdString(text));
  };
}

int DialogRunners::runDialog(QDialog& shown) const {
  if (dialog) return dialog(shown);
  return shown.exec();
}

QAction* DialogRunners::runPopupMenu(QMenu& menu, const QPoint& globalPos) const {
  if (popup) return popup(menu, globalPos);
  return menu.exec(globalPos);
}

QString DialogRunners::chooseMapFile(QWidget* owner) const {
  if (mapFile) return mapFile(owner);
  // The patterns follow in a second pair of brackets that the dialog hides, so the user
  // reads the filter's own text while both extensions match.
  return QFileDialog::getOpenFileName(owner, QString(), QString(),
                                      QStringLiteral("Все форматы (*.orv,*.img) (*.orv *.img)"),
                                      nullptr, QFileDialog::HideNameFilterDetails);
}

QString DialogRunners::chooseGpxFile(QWidget* owner) const {
  if (gpxFile) return gpxFile(owner);
  return QFileDialog::getOpenFileName(owner, QString(), QString(), QStringLiteral("Треки GPX (*.gpx)"));
}

void showWaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }

void restoreArrowCursor() {
  while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
}

bool isHyperlinkText(const QString& text) {
  const QString head = text.left(8);
  auto startsWith = [&head](const char* prefix) {
    const int length = int(qstrlen(prefix));
    if (head.size() < length) return false;
    for (int i = 0; i < length; ++i) {
      char16_t c = head[i].unicode();
      if (c >= u'A' && c <= u'Z') c = char16_t(c - u'A' + u'a');  // ASCII letters only
      if (c != char16_t(prefix[i])) return false;
    }
    return true;
  };
  return startsWith("http:") || startsWith("ftp:") || startsWith("mailto:");
}

bool isHyperlink(const QWidget* control) {
  const auto* label = qobject_cast<const QLabel*>(control);
  return label && isHyperlinkText(label->text());
}

void installHyperlinkHook(QDialog& dialog) {
  auto* hook = new HyperlinkHook(&dialog);
  for (QLabel* label : dialog.findChildren<QLabel*>()) {
    if (!isHyperlink(label)) continue;
    label->setFont(linkFont(label->font()));
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(0, 0, 255));
    label->setPalette(palette);
    label->setCursor(Qt::PointingHandCursor);
    label->installEventFilter(hook);
  }
}

QString aboutVersionLine() {
  return QString::asprintf("версия %d.%d (update %d.%d)", 1, 0, 11, 1);
}

std::unique_ptr<QDialog> makeAboutDialog(QWidget* owner) {
  auto dialog = std::make_unique<QDialog>(owner);
  dialog->setObjectName(QStringLiteral("dialog123"));
  dialog->setWindowTitle(QStringLiteral("About"));
  auto* layout = new QVBoxLayout(dialog.get());

  auto* icon = new QLabel(dialog.get());
  icon->setPixmap(QPixmap::fromImage(programIcon(48)));
  icon->setAlignment(Qt::AlignCenter);
  layout->addWidget(icon);

  auto* title = new QLabel(caption(), dialog.get());
  QFont bold = title->font();
  bold.setBold(true);
  title->setFont(bold);
  title->setAlignment(Qt::AlignCenter);
  layout->addWidget(title);

  auto* group = new QFrame(dialog.get());
  group->setFrameShape(QFrame::Box);
  auto* groupLayout = new QVBoxLayout(group);
  auto addLine = [&](const QString& text, const char* name) {
    auto* line = new QLabel(text, group);
    line->setObjectName(QString::fromLatin1(name));
    line->setAlignment(Qt::AlignCenter);
    groupLayout->addWidget(line);
  };
  addLine(aboutVersionLine(), "1011");
  addLine(QString::asprintf("для %s", "Pocket PC 2003"), "1014");
  addLine(QStringLiteral("© Orvel contributors"), "copyright");
  addLine(QStringLiteral("Карты: © участники OpenStreetMap, ODbL"), "mapSource");
  addLine(QStringLiteral("http://www.openstreetmap.org/copyright"), "link1");
  addLine(QStringLiteral("http://opendatacommons.org/licenses/odbl/"), "link2");
  layout->addWidget(group);

  auto* close = new QPushButton(QStringLiteral("Закрыть"), dialog.get());
  close->setObjectName(QStringLiteral("2"));
  QDialog* raw = dialog.get();
  QObject::connect(close, &QPushButton::clicked, raw, [raw] { raw->done(2); });
  layout->addWidget(close);

  installHyperlinkHook(*dialog);
  return dialog;
}

}  // namespace orvel
