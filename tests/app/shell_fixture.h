#pragma once
// Drives the real main window headless: a session of its own per test (a fresh settings
// file and data folder), pages initialised as start-up does, and every dialog, pop-up menu
// and waypoint dialog answered by the test instead of a user.
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QPoint>
#include <gtest/gtest.h>

#include "app/dialogs.h"
#include "app/main_window.h"
#include "app/page_framework.h"
#include "app/session.h"
#include "core/message.h"
#include "core/settings.h"
#include "common/test_data.h"
#include "gps/fix_processing.h"
#include "gps/gps_state.h"
#include "map/format/map_file.h"
#include "pages/map_page.h"
#include "pages/page_host.h"
#include "view/map_view.h"

namespace orvel::test {

struct WaypointRequest {
  float lon = 0;
  float lat = 0;
  double time = 0;
  float altitude = 0;
};

struct PopupShown {
  std::vector<std::pair<QString, bool>> items;  // text and enabled; separators as ""
  QPoint globalPos;
};

class ShellTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite();

  void SetUp() override;
  void TearDown() override;

  // Builds the window as start-up does: pages, shown at 240 x 320, first composition.
  void startWindow();
  void processEvents();
  int pageSetting() { return readSettingInt("Page", -1); }
  QWidget* client() { return window->clientArea(); }

  // The parts of the session and the window, by the names the program calls them.
  MapView& mapView() { return session->view; }
  MapPage& mapPage() { return window->pages().mapPage(); }
  MapFile* currentMap() { return session->map.currentMap(); }
  PageSet& pages() { return window->pages(); }
  Page& currentPage() { return pages().currentPage(); }
  int32_t readSettingInt(std::string_view name, int32_t fallback) { return session->settings.readSettingInt(name, fallback); }
  bool readSettingBool(std::string_view name, bool fallback) { return session->settings.readSettingBool(name, fallback); }
  void writeSettingInt(std::string_view name, int32_t value) { session->settings.writeSettingInt(name, value); }
  void writeSettingBool(std::string_view name, bool value) { session->settings.writeSettingBool(name, value); }

  std::filesystem::path scratch = scratchDir(::testing::UnitTest::GetInstance()->current_test_info()->name());
  std::unique_ptr<Session> session = std::make_unique<Session>(scratch / "data");
  GpsState& gps = session->gps;
  FixProcessor& fixes = session->fixes;
  std::unique_ptr<MainWindow> window;
  std::unique_ptr<MessageRecorder> messages;
  std::vector<WaypointRequest> waypointRequests;
  std::vector<PopupShown> popups;
  // The item the next pop-up menu answers with (by text); empty = dismissed.
  QString popupChoice;
  std::vector<std::string> dialogsRun;
  std::function<void(QDialog&)> onDialog;
};

}  // namespace orvel::test
