// The pages with a real receiver capture replayed into the GPS state. Set ORVEL_PAGE_SHOTS
// to a folder to keep the pictures.
#include <span>

#include "gps/capture_replay.h"
#include "gps/fix_processing.h"
#include "pages/compass_page.h"
#include "pages/gauges_page.h"
#include "pages/satellites_page.h"
#include "pages_fixture.h"

namespace orvel::test {
namespace {

class ReplayedPages : public PagesTest, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    PagesTest::SetUp();
    const std::filesystem::path capture = dataFile(std::string("gps/nmea/") + GetParam());
    if (capture.empty()) GTEST_SKIP() << "no capture " << GetParam();
    const std::vector<unsigned char> bytes = readFile(capture);
    ASSERT_FALSE(bytes.empty());
    ReplayOptions options;
    options.protocol = ReplayProtocol::kNmea;
    FixProcessor fixes(gps);
    replayCapture(std::span<const uint8_t>(bytes.data(), bytes.size()), fixes, options);
    gaugesPage().resetCells();
    gaugesPage().onFixChanged();
  }

  void keep(const QImage& image, const char* page) {
    const QByteArray folder = qgetenv("ORVEL_PAGE_SHOTS");
    if (folder.isEmpty()) return;
    const QString name = QStringLiteral("%1/%2-%3-%4x%5.png")
                             .arg(QString::fromUtf8(folder), QString::fromLatin1(page),
                                  QString::fromLatin1(GetParam()).section('.', 0, 0))
                             .arg(width_)
                             .arg(height_);
    EXPECT_TRUE(image.save(name));
  }

  static int pixelsOf(const QImage& image, QColor colour) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) count += image.pixelColor(x, y) == colour;
    }
    return count;
  }
};

TEST_P(ReplayedPages, ShowTheReceiversSkySignalsAndReadings) {
  const GpsSnapshot snapshot = gps.gpsSnapshot();
  ASSERT_FALSE(snapshot.satellites.empty());
  ASSERT_TRUE(snapshot.fix.has(kFixPosition));
  for (const QSize size : {QSize(240, 320), QSize(800, 480)}) {
    useSize(size.width(), size.height());

    const QImage satellites = render(satellitesPage());
    keep(satellites, "satellites");
    EXPECT_EQ(pixelsOf(satellites, Qt::magenta), 0);
    EXPECT_GT(pixelsOf(satellites, QColor(255, 0, 0)), 50);  // signal bars
    const std::vector<QString> texts = textsOf(record(satellitesPage()));
    EXPECT_EQ(std::count(texts.begin(), texts.end(), QStringLiteral("-")), 0);

    const QImage gauges = render(gaugesPage());
    keep(gauges, "gauges");
    EXPECT_EQ(pixelsOf(gauges, Qt::magenta), 0);
    // The whole width is used: the right column's cells reach the right edge.
    EXPECT_EQ(gauges.pixelColor(size.width() - 2, 10), QColor(Qt::white));

    const QImage compass = render(compassPage());
    keep(compass, "compass");
    EXPECT_EQ(pixelsOf(compass, Qt::magenta), 0);
  }
  // Every capture here ends with a position.
  EXPECT_NE(gaugesPage().gauges().findGauge(u"y")->gauge->format(), u"-");
  EXPECT_NE(gaugesPage().gauges().findGauge(u"x")->gauge->format(), u"-");
}

INSTANTIATE_TEST_SUITE_P(Captures, ReplayedPages, ::testing::Values("bundg_zeus_9.log", "bu353s4.log", "neo-m8n.log"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                           return QString::fromLatin1(info.param).section('.', 0, 0).remove('_').remove('-').toStdString();
                         });

}  // namespace
}  // namespace orvel::test
