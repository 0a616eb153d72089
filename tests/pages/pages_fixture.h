#pragma once
// A page host of a given size that counts repaints, a settings store of each test's own, an
// empty GPS state, and the widget application the gauge dialog needs.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QString>

#include "core/settings.h"
#include "common/recording_device.h"
#include "common/test_data.h"
#include "gps/gps_state.h"
#include "pages/page.h"
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

class PagesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ensureWidgetApplication();
    static int serial = 0;
    const std::filesystem::path dir = scratchDir("pages-" + std::to_string(serial++));
    ASSERT_EQ(openSettingsAt(dir / "Orvel" / "GisOrvel.conf"), 0);
    setPagesGpsState(&gps);
    useSize(240, 320);
  }
  void TearDown() override {
    setPageHost(PageHost{});
    setPagesGpsState(nullptr);
    closeSettings();
  }

  void useSize(int width, int height) {
    width_ = width;
    height_ = height;
    PageHost host;
    host.invalidate = [this] { ++repaints_; };
    host.clientWidth = [this] { return width_; };
    host.clientHeight = [this] { return height_; };
    host.showPopupMenu = [this](int menu, int x, int y) { popups_.push_back({menu, x, y}); };
    setPageHost(std::move(host));
  }

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

  struct Popup {
    int menu, x, y;
  };
  GpsState gps;
  int width_ = 240;
  int height_ = 320;
  int repaints_ = 0;
  std::vector<Popup> popups_;
};

}  // namespace orvel::test
