#pragma once
// Drives the real main window headless: a session of its own per test (a fresh settings
// file and data folder), pages initialised as start-up does, every dialog and pop-up menu
// dismissed and the waypoint dialog's requests kept instead of shown.
#include <filesystem>
#include <memory>
#include <vector>

#include <QApplication>
#include <gtest/gtest.h>

#include "app/main_window.h"
#include "app/page_framework.h"
#include "app/session.h"
#include "common/test_data.h"
#include "pages/map_page.h"
#include "view/map_view.h"

namespace orvel::test {

struct WaypointRequest {
  float lon = 0;
  float lat = 0;
};

class ShellTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite();

  void SetUp() override;
  void TearDown() override;

  // Builds the window as start-up does: pages, shown at 240 x 320, first composition.
  void startWindow();
  void processEvents();
  QWidget* client() { return window->clientArea(); }
  MapView& mapView() { return session->view; }
  MapPage& mapPage() { return window->pages().mapPage(); }
  void writeSettingInt(std::string_view name, int32_t value) { session->settings.writeSettingInt(name, value); }

  std::filesystem::path scratch = scratchDir(::testing::UnitTest::GetInstance()->current_test_info()->name());
  std::unique_ptr<Session> session = std::make_unique<Session>(scratch / "data");
  std::unique_ptr<MainWindow> window;
  std::vector<WaypointRequest> waypointRequests;
};

}  // namespace orvel::test
