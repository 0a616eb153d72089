#pragma once
// A page host of a given size that counts repaints, a settings store of each test's own, an
// empty GPS state, and the widget application the gauge dialog needs.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QString>

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

inline void ensureWidgetApplication() {
  if (QCoreApplication::instance()) return;
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  static int argc = 1;
  static char name[] = "orvel-pages-test";
  static char* argv[] = {name, nullptr};
  static QApplication* application = new QApplication(argc, argv);
  (void)application;
}

// A host of a given size that counts repaints and keeps the pop-up menus asked for; dialogs
// are answered by `answerDialog`.
class TestHost : public PageHost {
 public:
  struct Popup {
    int menu, x, y;
  };

  void invalidateMainWindow() override { ++repaints; }
  int clientWidth() const override { return width; }
  int clientHeight() const override { return height; }
  void setPageTimer(int, int) override {}
  void killPageTimer(int) override {}
  void capturePointer(bool) override {}
  void showPopupMenu(int menu, int x, int y) override { popups.push_back({menu, x, y}); }
  int runDialog(QDialog& dialog) override { return answerDialog ? answerDialog(dialog) : 0; }
  void openWaypointDialog(float, float, double, float) override {}

  int width = 240;
  int height = 320;
  int repaints = 0;
  std::vector<Popup> popups;
  std::function<int(QDialog&)> answerDialog;
};

class PagesTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { ensureWidgetApplication(); }
  void SetUp() override {
    static int serial = 0;
    const std::filesystem::path dir = scratchDir("pages-" + std::to_string(serial++));
    ASSERT_EQ(settings_.openSettingsAt(dir / "Orvel" / "GisOrvel.conf"), 0);
    power_ = dir / "power_supply";
    std::filesystem::create_directories(power_);
    useSize(240, 320);
  }

  void useSize(int width, int height) {
    host_.width = width_ = width;
    host_.height = height_ = height;
  }

  // Each page is made the first time a test asks for it, with this test's context.
  GaugesPage& gaugesPage() {
    if (!gauges_) gauges_ = std::make_unique<GaugesPage>(context_, power_);
    return *gauges_;
  }
  SatellitesPage& satellitesPage() { return made(satellites_); }
  CompassPage& compassPage() { return made(compass_); }

  // Everything `page` draws, recorded.
  std::vector<DrawCall> record(Page& page) {
    RecordingDevice device(width_, height_);
    {
      QPainter painter(&device);
      page.paint(painter);
    }
    return device.calls();
  }

  QImage render(Page& page) {
    QImage image(width_, height_, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    page.paint(painter);
    return image;
  }

  // A text drawn with one call may reach the paint engine in several pieces (one per run
  // of a script or font): these are the drawn texts, pieces joined, each with its origin.
  struct DrawnText {
    QString text;
    QPointF origin;
    QColor colour;
  };
  static std::vector<DrawnText> drawnTexts(const std::vector<DrawCall>& calls) {
    std::vector<DrawnText> out;
    bool joining = false;
    for (const DrawCall& call : calls) {
      if (call.kind != DrawCall::Kind::Text) {
        joining = false;
        continue;
      }
      const QPointF at = call.deviceOrigin();
      if (joining && at.y() == out.back().origin.y() && at.x() > out.back().origin.x() + 2 &&
          call.pen.color() == out.back().colour) {
        out.back().text += call.text;
      } else {
        out.push_back({call.text, at, call.pen.color()});
      }
      joining = true;
    }
    return out;
  }
  static std::vector<QString> textsOf(const std::vector<DrawCall>& calls) {
    std::vector<QString> texts;
    for (const DrawnText& drawn : drawnTexts(calls)) texts.push_back(drawn.text);
    return texts;
  }

  template <typename P>
  P& made(std::unique_ptr<P>& page) {
    if (!page) page = std::make_unique<P>(context_);
    return *page;
  }

  Settings settings_;
  Messages messages_;
  std::filesystem::path power_;  // the power supplies the battery gauge reads
  TestHost host_;
  GpsState gps;
  PageContext context_{host_, settings_, messages_, drawKit().drawing, drawKit().styles, gps};
  int width_ = 240;
  int height_ = 320;
  int& repaints_ = host_.repaints;
  std::vector<TestHost::Popup>& popups_ = host_.popups;
  std::unique_ptr<GaugesPage> gauges_;
  std::unique_ptr<SatellitesPage> satellites_;
  std::unique_ptr<CompassPage> compass_;
};

}  // namespace orvel::test
