#include "app/dialogs.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QUrl>
#include <QVBoxLayout>

#include "core/message.h"
#include "app/dialog_fit.h"
#include "app/map_file_dialog.h"
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

std::unique_ptr<QDialog> makeMessageDialog(QWidget* owner, const QString& text) {
  auto dialog = std::make_unique<QDialog>(owner);
  dialog->setObjectName(QStringLiteral("messageBox"));
  dialog->setWindowTitle(caption());
  auto* layout = new QVBoxLayout(dialog.get());
  auto* row = new QHBoxLayout;
  auto* icon = new QLabel(dialog.get());
  icon->setPixmap(dialog->style()->standardIcon(QStyle::SP_MessageBoxCritical).pixmap(32, 32));
  icon->setAlignment(Qt::AlignTop);
  row->addWidget(icon);
  auto* message = new QLabel(text, dialog.get());
  message->setObjectName(QStringLiteral("messageText"));
  message->setWordWrap(true);
  message->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  message->setTextInteractionFlags(Qt::TextSelectableByMouse);
  row->addWidget(message, 1);
  layout->addLayout(row);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, dialog.get());
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("1"));
  QObject::connect(buttons, &QDialogButtonBox::accepted, dialog.get(), &QDialog::accept);
  layout->addWidget(buttons);
  return dialog;
}

MessageSink messageBoxSink(const DialogRunners& runners, QWidget* owner) {
  return [&runners, owner](const std::string& text) {
    const std::unique_ptr<QDialog> box = makeMessageDialog(owner, QString::fromStdString(text));
    runners.runDialog(*box);
  };
}

int DialogRunners::runDialog(QDialog& shown) const {
  const QWidget* owner = shown.parentWidget();
  if (const QScreen* screen = owner ? owner->screen() : QGuiApplication::primaryScreen()) {
    fitDialogToScreen(shown, screen->availableGeometry(), owner ? owner->window()->frameGeometry() : QRect());
  }
  if (dialog) return dialog(shown);
  return shown.exec();
}

QAction* DialogRunners::runPopupMenu(QMenu& menu, const QPoint& globalPos) const {
  if (popup) return popup(menu, globalPos);
  return menu.exec(globalPos);
}

QString DialogRunners::chooseFile(QWidget* owner, const QString& folder, const char* filter) const {
  const QScreen* screen = owner ? owner->screen() : QGuiApplication::primaryScreen();
  const bool small = screen && isSmallScreen(screen->availableGeometry());
  const std::unique_ptr<QFileDialog> chooser = makeOpenFileDialog(owner, folder, filter, small);
  if (runDialog(*chooser) != QDialog::Accepted) return {};
  const QStringList chosen = chooser->selectedFiles();
  return chosen.isEmpty() ? QString() : chosen.front();
}

QString DialogRunners::chooseMapFile(QWidget* owner, const QString& folder) const {
  return mapFile ? mapFile(owner) : chooseFile(owner, folder, kMapFileFilter);
}

QString DialogRunners::chooseGpxFile(QWidget* owner) const {
  return gpxFile ? gpxFile(owner) : chooseFile(owner, QString(), kGpxFileFilter);
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

  auto* buttons = new QDialogButtonBox(dialog.get());
  QPushButton* close = buttons->addButton(QStringLiteral("Закрыть"), QDialogButtonBox::RejectRole);
  close->setObjectName(QStringLiteral("2"));
  QDialog* raw = dialog.get();
  QObject::connect(close, &QPushButton::clicked, raw, [raw] { raw->done(2); });
  layout->addWidget(buttons);

  installHyperlinkHook(*dialog);
  return dialog;
}

}  // namespace orvel
