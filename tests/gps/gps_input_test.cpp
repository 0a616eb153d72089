// GPS input end to end over pseudo-terminals with recorded receivers behind them: it finds
// the receiver, names the protocol and port, the fixes are handed on; an unplugged receiver
// is reported and searched for again; of two ports the first to speak wins; a stop ends and
// joins every thread; the settings decide which ports are scanned.
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <string>
#include <vector>

#include "core/settings.h"
#include "common/test_data.h"
#include "gps/gps_input.h"
#include "gps/serial_port.h"
#include "gps_test_support.h"
#include "pty_support.h"

namespace orvel {
namespace {

// How long the tests wait for something that takes the scanner well under a second.
constexpr int kPatienceMs = 4000;

class GpsInputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto dir = test::scratchDir("scanner-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    settings.openSettingsAt(dir / "GisOrvel.conf");
    input.setScanIndicator({[this] { ++connected; }, [this] { ++noConnection; }});
    input.setScanRoots({}, false);
  }

  bool sawStatus(const std::string& text) { return gps.statusCount(text) > 0; }
  bool waitStatus(const std::string& text, int ms = kPatienceMs) {
    return test::waitUntil([&] { return sawStatus(text); }, ms);
  }
  std::string history() {
    std::lock_guard lock(gps.mutex);
    std::string out;
    for (const auto& s : gps.statuses) out += "[" + s + "] ";
    return out;
  }
  std::vector<uint8_t> capture(const std::string& relative) {
    const auto path = test::dataFile(relative);
    return path.empty() ? std::vector<uint8_t>{} : test::readFile(path);
  }
  GpsFix currentFix() { return gps.state.currentFix(); }

  std::atomic<int> connected{0}, noConnection{0};
  Settings settings;
  test::FixCollector gps;
  GpsInput input{gps, settings};
};

TEST_F(GpsInputTest, FindsAnNmeaReceiverAndHandsOnItsFixes) {
  struct Case {
    const char* capture;
    size_t chunk;    // 0: the receiver's own bursts; else pieces this large
    uint32_t flags;  // what its fixes carry
    double latitude, longitude;
  };
  const Case cases[] = {
      // 37°47.09'S 175°18.89'E (its own GGA and RMC sentences).
      {"gps/nmea/bu353s4.log", 0, kFixPosition | kFixTime, -37.7848, 175.3149},
      // Whole reads of 1 KB with "$PFEC," sentences between the GGA ones: 33°49.03'S 18°43.93'E.
      {"gps/nmea/hp58534a.log", 1024, kFixPosition, -33.8172, 18.7321},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.capture);
    const auto bytes = capture(c.capture);
    ASSERT_FALSE(bytes.empty());
    test::PtyPair pty;
    ASSERT_TRUE(pty.ok());
    input.clearScanSources();
    input.addScanDevice(pty.slavePath());
    {
      std::lock_guard lock(gps.mutex);
      gps.statuses.clear();
    }
    const size_t before = gps.fixesSoFar().size();
    test::ReceiverThread receiver(pty.master(), bytes, 150, false, c.chunk);
    const int connectedBefore = connected;
    // Fixes that carry what the receiver gives, handed on after the scan began.
    auto fixes = [&] {
      std::vector<GpsFix> found;
      const std::vector<GpsFix> all = gps.fixesSoFar();
      for (size_t i = before; i < all.size(); ++i) {
        if (all[i].has(c.flags)) found.push_back(all[i]);
      }
      return found;
    };

    input.startScanning();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
    EXPECT_TRUE(sawStatus("Поиск данных - NMEA-0183..."));
    EXPECT_TRUE(input.receiverFound());
    // Several reads later the receiver is still kept: no read broke the protocol.
    ASSERT_TRUE(test::waitUntil([&] { return fixes().size() >= 4; }, kPatienceMs)) << history();
    EXPECT_FALSE(sawStatus("Ошибка протокола.")) << history();
    const GpsFix fix = fixes().back();
    EXPECT_NEAR(fix.latitude, c.latitude, 1e-3);
    EXPECT_NEAR(fix.longitude, c.longitude, 1e-3);
    EXPECT_TRUE(test::waitUntil([this] { return gps.state.getSatelliteCount() > 0; }, kPatienceMs));
    EXPECT_EQ(connected, connectedBefore + 1);
    EXPECT_FALSE(input.isGpsInputShutDown());

    input.stopScanning();
    EXPECT_EQ(input.activeScanThreads(), 0);
    EXPECT_TRUE(input.isGpsInputShutDown());
    EXPECT_TRUE(sawStatus("Нет соединения с GPS-приемником"));
  }
}

TEST_F(GpsInputTest, FindsAGarminReceiverAfterNmeaGivesUp) {
  const auto bytes = capture("gps/garmin_binary/garmin18x-bin.raw");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  input.addScanDevice(pty.slavePath());
  test::ReceiverThread receiver(pty.master(), bytes, 150, true);

  input.beginScan();
  ASSERT_TRUE(waitStatus("Протокол Garmin через COM1", 8000)) << history();
  EXPECT_TRUE(sawStatus("Поиск данных - NMEA-0183..."));
  EXPECT_TRUE(sawStatus("Поиск данных - Протокол Garmin..."));
  ASSERT_TRUE(test::waitUntil([this] { return currentFix().has(kFixPosition); }, kPatienceMs));
  // Position records of the GPS 18x near San Antonio, TX, in radians in the capture.
  EXPECT_NEAR(currentFix().latitude, 29.4456, 1e-3);
  EXPECT_NEAR(currentFix().longitude, -98.6066, 1e-3);
  EXPECT_GT(receiver.acks(), 0);
  EXPECT_FALSE(sawStatus("Ошибка протокола.")) << history();
}

TEST_F(GpsInputTest, AnUnpluggedReceiverIsReportedAndSearchedForAgain) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  input.addScanDevice(pty.slavePath());
  auto receiver = std::make_unique<test::ReceiverThread>(pty.master(), bytes, 150);
  input.beginScan();
  ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();

  receiver.reset();
  pty.closeMaster();
  // Five seconds of silence, then the report, a pause, and the search resumes with the
  // other protocol.
  ASSERT_TRUE(waitStatus("Не обнаружено данных.", 8000)) << history();
  EXPECT_FALSE(input.receiverFound());
  EXPECT_EQ(noConnection, 1);
  ASSERT_TRUE(waitStatus("Поиск данных - Протокол Garmin...", 4000)) << history();
  EXPECT_EQ(input.activeScanThreads(), 1);
}

TEST_F(GpsInputTest, OfTwoPortsTheFirstToSpeakWinsAndTheOtherEnds) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  if (bytes.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair quiet, talking;
  ASSERT_TRUE(quiet.ok() && talking.ok());
  input.addScanDevice(quiet.slavePath());
  input.addScanDevice(talking.slavePath());
  input.beginScan();
  ASSERT_TRUE(test::waitUntil([this] { return input.activeScanThreads() == 2; }, kPatienceMs));
  test::ReceiverThread receiver(talking.master(), bytes, 150);

  ASSERT_TRUE(waitStatus("NMEA-0183 через COM2")) << history();
  EXPECT_TRUE(test::waitUntil([this] { return input.activeScanThreads() == 1; }, kPatienceMs));
  EXPECT_FALSE(sawStatus("NMEA-0183 через COM1"));
}

TEST_F(GpsInputTest, StopJoinsThreadsWaitingOnAQuietPortAndASilentGpsd) {
  test::PtyPair quiet;
  ASSERT_TRUE(quiet.ok());
  input.addScanDevice(quiet.slavePath());
  uint16_t port = 0;
  const int server = test::listenLocal(port);
  ASSERT_GE(server, 0);
  input.setGpsdSource("127.0.0.1", port);
  input.beginScan();
  // The gpsd thread has connected and asked for reports, which never come.
  pollfd incoming{server, POLLIN, 0};
  ASSERT_EQ(::poll(&incoming, 1, kPatienceMs), 1);
  const int client = ::accept(server, nullptr, nullptr);
  ASSERT_GE(client, 0);
  char request[256];
  EXPECT_GT(::recv(client, request, sizeof request, 0), 0);
  EXPECT_EQ(input.activeScanThreads(), 2);
  EXPECT_TRUE(input.isScanning());

  EXPECT_TRUE(input.stopScanning()) << "every thread ended within the stop's wait";
  EXPECT_EQ(input.activeScanThreads(), 0);
  EXPECT_FALSE(input.isScanning());
  EXPECT_TRUE(input.isGpsInputShutDown());
  // Both were let go: the connection is closed and the port can be claimed again.
  pollfd closed{client, POLLIN, 0};
  EXPECT_EQ(::poll(&closed, 1, 0), 1);
  EXPECT_EQ(::recv(client, request, sizeof request, MSG_DONTWAIT), 0);
  SerialPort again;
  EXPECT_TRUE(again.open(quiet.slavePath()));
  ::close(client);
  ::close(server);
}

TEST_F(GpsInputTest, SettingsDecideWhatIsScanned) {
  test::PtyPair one, two;
  ASSERT_TRUE(one.ok() && two.ok());
  input.addScanDevice(one.slavePath());
  input.addScanDevice(two.slavePath());

  settings.writeSettingBool("ScanCOMPorts", false);
  input.startScanning();
  EXPECT_EQ(input.activeScanThreads(), 0);
  EXPECT_FALSE(input.isScanning());
  EXPECT_TRUE(sawStatus("Нет соединения с GPS-приемником"));

  settings.writeSettingBool("ScanCOMPorts", true);
  settings.writeSettingInt("Enable_COM1", 0);
  settings.writeSettingInt("Enable_COM2", 0);
  input.startScanning();
  EXPECT_EQ(input.activeScanThreads(), 0);

  settings.writeSettingInt("Enable_COM2", 1);
  input.startScanning();
  EXPECT_TRUE(test::waitUntil([this] { return input.activeScanThreads() == 1; }, kPatienceMs));
}

TEST_F(GpsInputTest, WhenNoPortOpensTheUserIsTold) {
  input.addScanDevice("/nonexistent/ttyUSB7");
  input.addScanDevice("/dev/null");  // not a terminal
  input.beginScan();
  EXPECT_TRUE(waitStatus("Не удалось открыть ни одного COM-порта.")) << history();
  EXPECT_TRUE(test::waitUntil([this] { return input.activeScanThreads() == 0; }, kPatienceMs));
}

TEST(GpsOption, DevicesAndGpsdAddresses) {
  struct Case {
    const char* value;
    bool ok;
  };
  const Case cases[] = {{"/dev/ttyUSB0", true},          {"/dev/pts/4", true},   {"gpsd://", true},
                        {"gpsd://localhost:2948", true}, {"gpsd://host:x", false}, {"", false}};
  test::FixCollector sink;
  Settings settings;
  GpsInput input(sink, settings), other(sink, settings);
  for (const Case& c : cases) {
    std::string error;
    EXPECT_EQ(input.addGpsOption(c.value, error), c.ok) << c.value;
    EXPECT_EQ(error.empty(), c.ok) << c.value;
  }
  input.clearScanSources();
  input.setScanRoots({}, false);
  other.setScanRoots({}, false);
  std::string error;
  ASSERT_TRUE(input.addGpsOption("/dev/pts/9", error));
  const auto ports = input.scanPortList();
  ASSERT_EQ(ports.size(), 1u);
  EXPECT_EQ(ports[0].path, "/dev/pts/9");
  EXPECT_EQ(ports[0].number, 1);
  EXPECT_TRUE(other.scanPortList().empty()) << "each object has sources of its own";
}

}  // namespace
}  // namespace orvel
