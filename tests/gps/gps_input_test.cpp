// GPS input end to end: a recorded receiver behind a pseudo-terminal and a silent gpsd are
// scanned at once; the receiver is found, named by protocol and port, its fixes are handed
// on, and a stop ends and joins every thread, letting go of the port and the connection.
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>


#include "common/test_data.h"
#include "core/settings.h"
#include "gps/gps_input.h"
#include "gps/serial_port.h"
#include "gps_test_support.h"
#include "pty_support.h"

namespace orvel {
namespace {

TEST(GpsInput, FindsAReceiverAndStopJoinsEveryThread) {
  Settings settings;
  settings.openSettingsAt(test::scratchDir("gps-input") / "GisOrvel.conf");
  test::FixCollector gps;
  GpsInput input(gps, settings);
  input.setScanRoots({}, false);
  test::PtyPair receiverPort;
  ASSERT_TRUE(receiverPort.ok());
  input.addScanDevice(receiverPort.slavePath());
  test::ReceiverThread receiver(receiverPort.master(), test::readFile(test::dataFile("gps/nmea/bu353s4.log")), 150);
  uint16_t port = 0;
  const int server = test::listenLocal(port);
  ASSERT_GE(server, 0);
  input.setGpsdSource("127.0.0.1", port);

  input.beginScan();
  ASSERT_TRUE(test::waitUntil([&] { return gps.statusCount("NMEA-0183 через COM1") > 0; }, 4000));
  EXPECT_TRUE(input.receiverFound());
  ASSERT_TRUE(test::waitUntil([&] { return gps.state.currentFix().has(kFixPosition | kFixTime); }, 4000));
  // The receiver stood at 37°47.09'S 175°18.89'E (its own GGA and RMC sentences).
  EXPECT_NEAR(gps.state.currentFix().latitude, -37.7848, 1e-3);
  EXPECT_NEAR(gps.state.currentFix().longitude, 175.3149, 1e-3);
  // The gpsd thread had connected and asked for reports, which never came.
  pollfd incoming{server, POLLIN, 0};
  ASSERT_EQ(::poll(&incoming, 1, 4000), 1);
  const int client = ::accept(server, nullptr, nullptr);
  ASSERT_GE(client, 0);
  char request[256];
  EXPECT_GT(::recv(client, request, sizeof request, 0), 0);
  // The first to speak wins: the others end.
  EXPECT_TRUE(test::waitUntil([&] { return input.activeScanThreads() == 1; }, 4000));

  EXPECT_TRUE(input.stopScanning()) << "every thread ended within the stop's wait";
  EXPECT_EQ(input.activeScanThreads(), 0);
  EXPECT_TRUE(input.isGpsInputShutDown());
  EXPECT_GT(gps.statusCount("Нет соединения с GPS-приемником"), 0);
  // Both were let go: the connection is closed and the port can be claimed again.
  pollfd closed{client, POLLIN, 0};
  EXPECT_EQ(::poll(&closed, 1, 0), 1);
  EXPECT_EQ(::recv(client, request, sizeof request, MSG_DONTWAIT), 0);
  SerialPort again;
  EXPECT_TRUE(again.open(receiverPort.slavePath()));
  ::close(client);
  ::close(server);
}

}  // namespace
}  // namespace orvel
