#include "shell_fixture.h"

#include <QTest>

#include "common/test_data.h"

namespace orvel::test {

void ShellTest::SetUpTestSuite() {
  if (!QApplication::instance()) {
    static int argc = 1;
    static char name[] = "test_app";
    static char* argv[] = {name, nullptr};
    new QApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
  }
}

void ShellTest::SetUp() {
  session->settings.openSettingsAt(scratch / "GisOrvel.conf");
  messages = std::make_unique<MessageRecorder>(session->messages);
  mapView().setZoomIndex(10);
  mapView().setCentre(0, 0);
}

void ShellTest::startWindow() {
  window = std::make_unique<MainWindow>(*session);
  window->setWaypointDialog([this](float lon, float lat, double time, float altitude) {
    waypointRequests.push_back({lon, lat, time, altitude});
  });
  window->dialogs().popup = [this](QMenu& menu, const QPoint& at) -> QAction* {
    PopupShown shown;
    shown.globalPos = at;
    QAction* chosen = nullptr;
    for (QAction* action : menu.actions()) {
      shown.items.emplace_back(action->isSeparator() ? QString() : action->text(), action->isEnabled());
      if (!action->isSeparator() && action->text() == popupChoice) chosen = action;
    }
    popups.push_back(shown);
    return chosen;
  };
  window->dialogs().dialog = [this](QDialog& dialog) {
    dialogsRun.push_back(dialog.objectName().toStdString());
    if (onDialog) onDialog(dialog);
    return 0;
  };
  pages().initPages(*window);
  window->resize(240, 320);
  window->show();
  processEvents();
  mapPage().compose();
}

void ShellTest::processEvents() {
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents();
}

void ShellTest::TearDown() {
  if (window) {
    processEvents();
    pages().shutdownPages();
    window.reset();
  }
  messages.reset();
}

}  // namespace orvel::test
