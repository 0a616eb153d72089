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
  scratch = scratchDir(::testing::UnitTest::GetInstance()->current_test_info()->name());
  openSettingsAt(scratch / "GisOrvel.conf");
  messages = std::make_unique<MessageRecorder>();
  setPagesGpsState(&gps);
  mapView() = MapView{};
  mapView().setZoomIndex(10);
  mapView().setCentre(0, 0);

  setWaypointDialog([this](float lon, float lat, double time, float altitude) {
    waypointRequests.push_back({lon, lat, time, altitude});
  });
  setPopupRunner([this](QMenu& menu, const QPoint& at) -> QAction* {
    PopupShown shown;
    shown.globalPos = at;
    QAction* chosen = nullptr;
    for (QAction* action : menu.actions()) {
      shown.items.emplace_back(action->isSeparator() ? QString() : action->text(), action->isEnabled());
      if (!action->isSeparator() && action->text() == popupChoice) chosen = action;
    }
    popups.push_back(shown);
    return chosen;
  });
  setDialogRunner([this](QDialog& dialog) {
    dialogsRun.push_back(dialog.objectName().toStdString());
    if (onDialog) onDialog(dialog);
    return 0;
  });
}

void ShellTest::startWindow() {
  window = std::make_unique<MainWindow>(fixes);
  initPages(*window);
  window->resize(240, 320);
  window->show();
  processEvents();
  composeMapView();
}

void ShellTest::processEvents() {
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents();
}

void ShellTest::TearDown() {
  if (window) {
    processEvents();
    shutdownPages();
    window.reset();
  }
  setWaypointDialog(nullptr);
  setPopupRunner(nullptr);
  setDialogRunner(nullptr);
  setOpenFileChooser(nullptr);
  messages.reset();
  closeSettings();
  setPagesGpsState(nullptr);
}

}  // namespace orvel::test
