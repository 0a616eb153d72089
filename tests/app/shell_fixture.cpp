#include "shell_fixture.h"

#include "app/dialogs.h"

namespace orvel::test {

// Closing a window a test opened must not end the application the test program owns.
void ShellTest::SetUpTestSuite() { QApplication::setQuitOnLastWindowClosed(false); }

void ShellTest::SetUp() {
  session->settings.openSettingsAt(scratch / "GisOrvel.conf");
  mapView().setZoomIndex(10);
  mapView().setCentre(0, 0);
}

void ShellTest::startWindow() {
  window = std::make_unique<MainWindow>(*session);
  window->setWaypointDialog([this](float lon, float lat, double, float) { waypointRequests.push_back({lon, lat}); });
  window->dialogs().popup = [](QMenu&, const QPoint&) -> QAction* { return nullptr; };
  window->dialogs().dialog = [](QDialog&) { return 0; };
  window->pages().initPages(*window);
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
    window->pages().shutdownPages();
    window.reset();
  }
}

}  // namespace orvel::test
