// GPS input end to end over pseudo-terminals with recorded receivers behind them: it finds
// the receiver, names the protocol and port, the fixes are handed on; an unplugged receiver
// is reported and searched for again; a stop ends and joins every thread; the settings
// decide which ports are scanned.
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
  std::vector<uint8_t> capture(const std::string& relative) { return test::readFile(test::dataFile(relative)); }
  GpsFix currentFix() { return gps.state.currentFix(); }

  std::atomic<int> connected{0}, noConnection{0};
  Settings settings;
  test::FixCollector gps;
  GpsInput input{gps, settings};
};

TEST_F(GpsInputTest, FindsAnNmeaReceiverAndHandsOnItsFixes) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  input.addScanDevice(pty.slavePath());
  test::ReceiverThread receiver(pty.master(), bytes, 150);

  input.startScanning();
  ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
  EXPECT_TRUE(sawStatus("Поиск данных - NMEA-0183..."));
  EXPECT_TRUE(input.receiverFound());
  ASSERT_TRUE(test::waitUntil([this] { return currentFix().has(kFixPosition | kFixTime); }, kPatienceMs));
  const GpsFix fix = currentFix();
  // The receiver stood at 37°47.09'S 175°18.89'E (its own GGA and RMC sentences).
  EXPECT_NEAR(fix.latitude, -37.7848, 1e-3);
  EXPECT_NEAR(fix.longitude, 175.3149, 1e-3);
  EXPECT_TRUE(test::waitUntil([this] { return gps.state.getSatelliteCount() > 0; }, kPatienceMs));
  EXPECT_EQ(connected, 1);
  EXPECT_FALSE(input.isGpsInputShutDown());

  input.stopScanning();
  EXPECT_EQ(input.activeScanThreads(), 0);
  EXPECT_TRUE(input.isGpsInputShutDown());
  EXPECT_TRUE(sawStatus("Нет соединения с GPS-приемником"));
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

}  // namespace
}  // namespace orvel
