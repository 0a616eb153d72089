// The scanner end to end over pseudo-terminals with recorded receivers behind them: it finds
// the receiver, names the protocol and port, the fixes reach the GPS state; an unplugged
// receiver is reported and searched for again; of two ports the first to speak wins; a stop
// ends every thread; the settings decide which ports are scanned.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>
#include <vector>

#include "core/settings.h"
#include "core/utf.h"
#include "common/test_data.h"
#include "gps/fix_processing.h"
#include "gps/gps_state.h"
#include "gps/port_scanner.h"
#include "pty_support.h"

namespace orvel {
namespace {

// How long the tests wait for something that takes the scanner well under a second.
constexpr int kPatienceMs = 4000;

class PortScannerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto dir = test::scratchDir("scanner-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    openSettingsAt(dir / "GisOrvel.conf");
    resetGpsState();
    setFixObserver({});
    setScanIndicator({[this] { ++connected; }, [this] { ++noConnection; }});
    setScanRoots({}, false);
    clearScanSources();
    setGpsMessagePoster([this](int message) {
      if (message == kMsgStatusChanged) {
        char16_t text[kStatusTextLength + 1];
        getStatusText(text, sizeof text / sizeof text[0]);
        std::lock_guard lock(mutex);
        statuses.push_back(utf16ToUtf8(text));
      }
      clearLatch(message);
    });
  }
  void TearDown() override {
    stopScanning();
    setGpsMessagePoster(nullptr);
    setScanIndicator({});
    clearScanSources();
    closeSettings();
  }

  bool sawStatus(const std::string& text) {
    std::lock_guard lock(mutex);
    return std::find(statuses.begin(), statuses.end(), text) != statuses.end();
  }
  bool waitStatus(const std::string& text, int ms = kPatienceMs) {
    return test::waitUntil([&] { return sawStatus(text); }, ms);
  }
  std::string history() {
    std::lock_guard lock(mutex);
    std::string out;
    for (const auto& s : statuses) out += "[" + s + "] ";
    return out;
  }
  std::vector<uint8_t> capture(const std::string& relative) {
    const auto path = test::dataFile(relative);
    return path.empty() ? std::vector<uint8_t>{} : test::readFile(path);
  }

  std::mutex mutex;
  std::vector<std::string> statuses;
  std::atomic<int> connected{0}, noConnection{0};
};

TEST_F(PortScannerTest, FindsAnNmeaReceiverAndItsFixesReachTheState) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  addScanDevice(pty.slavePath());
  test::ReceiverThread receiver(pty.master(), bytes, 150);

  startScanning();
  ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
  EXPECT_TRUE(sawStatus("Поиск данных - NMEA-0183..."));
  EXPECT_TRUE(receiverFound());
  ASSERT_TRUE(test::waitUntil([] { return currentFix().has(kFixPosition | kFixTime); }, kPatienceMs));
  const GpsFix fix = currentFix();
  // The receiver stood at 37°47.09'S 175°18.89'E (its own GGA and RMC sentences).
  EXPECT_NEAR(fix.latitude, -37.7848, 1e-3);
  EXPECT_NEAR(fix.longitude, 175.3149, 1e-3);
  EXPECT_TRUE(test::waitUntil([] { return getSatelliteCount() > 0; }, kPatienceMs));
  EXPECT_EQ(connected, 1);
  EXPECT_FALSE(isGpsInputShutDown());

  stopScanning();
  EXPECT_EQ(activeScanThreads(), 0);
  EXPECT_TRUE(isGpsInputShutDown());
  EXPECT_TRUE(sawStatus("Нет соединения с GPS-приемником"));
}

TEST_F(PortScannerTest, FindsAGarminReceiverAfterNmeaGivesUp) {
  const auto bytes = capture("gps/garmin_binary/garmin18x-bin.raw");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  addScanDevice(pty.slavePath());
  test::ReceiverThread receiver(pty.master(), bytes, 150, true);

  beginScan();
  ASSERT_TRUE(waitStatus("Протокол Garmin через COM1", 8000)) << history();
  EXPECT_TRUE(sawStatus("Поиск данных - NMEA-0183..."));
  EXPECT_TRUE(sawStatus("Поиск данных - Протокол Garmin..."));
  ASSERT_TRUE(test::waitUntil([] { return currentFix().has(kFixPosition); }, kPatienceMs));
  // Position records of the GPS 18x near San Antonio, TX, in radians in the capture.
  EXPECT_NEAR(currentFix().latitude, 29.4456, 1e-3);
  EXPECT_NEAR(currentFix().longitude, -98.6066, 1e-3);
  EXPECT_GT(receiver.acks(), 0);
  EXPECT_FALSE(sawStatus("Ошибка протокола.")) << history();
}

TEST_F(PortScannerTest, AnUnpluggedReceiverIsReportedAndSearchedForAgain) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  addScanDevice(pty.slavePath());
  auto receiver = std::make_unique<test::ReceiverThread>(pty.master(), bytes, 150);
  beginScan();
  ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();

  receiver.reset();
  pty.closeMaster();
  // Five seconds of silence, then the report, a pause, and the search resumes with the
  // other protocol.
  ASSERT_TRUE(waitStatus("Не обнаружено данных.", 8000)) << history();
  EXPECT_FALSE(receiverFound());
  EXPECT_EQ(noConnection, 1);
  ASSERT_TRUE(waitStatus("Поиск данных - Протокол Garmin...", 4000)) << history();
  EXPECT_EQ(activeScanThreads(), 1);
}

TEST_F(PortScannerTest, OfTwoPortsTheFirstToSpeakWinsAndTheOtherEnds) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair quiet, talking;
  ASSERT_TRUE(quiet.ok() && talking.ok());
  addScanDevice(quiet.slavePath());
  addScanDevice(talking.slavePath());
  beginScan();
  ASSERT_TRUE(test::waitUntil([] { return activeScanThreads() == 2; }, kPatienceMs));
  test::ReceiverThread receiver(talking.master(), bytes, 150);

  ASSERT_TRUE(waitStatus("NMEA-0183 через COM2")) << history();
  EXPECT_TRUE(test::waitUntil([] { return activeScanThreads() == 1; }, kPatienceMs));
  EXPECT_FALSE(sawStatus("NMEA-0183 через COM1"));
}

TEST_F(PortScannerTest, StopEndsThreadsThatAreWaitingForData) {
  std::vector<std::unique_ptr<test::PtyPair>> ptys;
  for (int i = 0; i < 4; ++i) {
    ptys.push_back(std::make_unique<test::PtyPair>());
    ASSERT_TRUE(ptys.back()->ok());
    addScanDevice(ptys.back()->slavePath());
  }
  beginScan();
  ASSERT_TRUE(test::waitUntil([] { return activeScanThreads() == 4; }, kPatienceMs));
  EXPECT_TRUE(isScanning());
  stopScanning();
  EXPECT_EQ(activeScanThreads(), 0) << "every thread ended within the stop's wait";
  EXPECT_FALSE(isScanning());
  EXPECT_TRUE(isGpsInputShutDown());
}

TEST_F(PortScannerTest, SettingsDecideWhatIsScanned) {
  test::PtyPair one, two;
  ASSERT_TRUE(one.ok() && two.ok());
  addScanDevice(one.slavePath());
  addScanDevice(two.slavePath());

  writeSettingBool("ScanCOMPorts", false);
  startScanning();
  EXPECT_EQ(activeScanThreads(), 0);
  EXPECT_FALSE(isScanning());
  EXPECT_TRUE(sawStatus("Нет соединения с GPS-приемником"));

  writeSettingBool("ScanCOMPorts", true);
  writeSettingInt("Enable_COM1", 0);
  writeSettingInt("Enable_COM2", 0);
  startScanning();
  EXPECT_EQ(activeScanThreads(), 0);

  writeSettingInt("Enable_COM2", 1);
  startScanning();
  EXPECT_TRUE(test::waitUntil([] { return activeScanThreads() == 1; }, kPatienceMs));
}

TEST_F(PortScannerTest, WhenNoPortOpensTheUserIsTold) {
  addScanDevice("/nonexistent/ttyUSB7");
  addScanDevice("/dev/null");  // not a terminal
  beginScan();
  EXPECT_TRUE(waitStatus("Не удалось открыть ни одного COM-порта.")) << history();
  EXPECT_TRUE(test::waitUntil([] { return activeScanThreads() == 0; }, kPatienceMs));
}

TEST(GpsOption, DevicesAndGpsdAddresses) {
  struct Case {
    const char* value;
    bool ok;
  };
  const Case cases[] = {{"/dev/ttyUSB0", true},          {"/dev/pts/4", true},   {"gpsd://", true},
                        {"gpsd://localhost:2948", true}, {"gpsd://host:x", false}, {"", false}};
  for (const Case& c : cases) {
    std::string error;
    EXPECT_EQ(addGpsOption(c.value, error), c.ok) << c.value;
    EXPECT_EQ(error.empty(), c.ok) << c.value;
  }
  clearScanSources();
  setScanRoots({}, false);
  std::string error;
  ASSERT_TRUE(addGpsOption("/dev/pts/9", error));
  const auto ports = scanPortList();
  ASSERT_EQ(ports.size(), 1u);
  EXPECT_EQ(ports[0].path, "/dev/pts/9");
  EXPECT_EQ(ports[0].number, 1);
  clearScanSources();
  setScanRoots({});
}

}  // namespace
}  // namespace orvel
