#pragma once
// A page host of the original screen's size, a settings store of each test's own, an empty
// GPS state, and the widget application pages need.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <QApplication>
#include <QPainter>

#include "common/draw_kit.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "core/message.h"
#include "core/settings.h"
#include "gps/gps_state.h"
#include "pages/info_pages.h"
#include "pages/page.h"
#include "pages/page_context.h"
#include "pages/page_host.h"

namespace orvel::test {

class TestHost : public PageHost {
 public:
  void invalidateMainWindow() override {}
  int clientWidth() const override { return 240; }
  int clientHeight() const override { return 320; }
  void setPageTimer(int, int) override {}
  void killPageTimer(int) override {}
  void capturePointer(bool) override {}
  void showPopupMenu(int, int, int) override {}
  int runDialog(QDialog&) override { return 0; }
  void openWaypointDialog(float, float, double, float) override {}
};

class PagesTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (QCoreApplication::instance()) return;
    static int argc = 1;
    static char name[] = "orvel-pages-test";
    static char* argv[] = {name, nullptr};
    new QApplication(argc, argv);  // lives as long as the test program
  }
  void SetUp() override {
    ASSERT_EQ(settings_.openSettingsAt(scratchDir("pages") / "Orvel" / "GisOrvel.conf"), 0);
  }

  SatellitesPage& satellitesPage() {
    if (!satellites_) satellites_ = std::make_unique<SatellitesPage>(context_);
    return *satellites_;
  }

  // Everything `page` draws, recorded.
  std::vector<DrawCall> record(Page& page) {
    RecordingDevice device(host_.clientWidth(), host_.clientHeight());
    {
      QPainter painter(&device);
      page.paint(painter);
    }
    return device.calls();
  }

  Settings settings_;
  Messages messages_;
  TestHost host_;
  GpsState gps;
  PageContext context_{host_, settings_, messages_, drawKit().drawing, drawKit().styles, gps};
  std::unique_ptr<SatellitesPage> satellites_;
};

}  // namespace orvel::test
