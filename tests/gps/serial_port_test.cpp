// SerialPort on a pseudo-terminal: the line it sets, reading only what waits, writes that
// reach the other end, and an unplugged device that turns into a failed port.
#include <gtest/gtest.h>

#include <termios.h>

#include <array>
#include <string>

#include "gps/serial_port.h"
#include "pty_support.h"

namespace orvel {
namespace {

TEST(SerialPort, OpensRawAtTheBaudAskedForAndOnlyOnce) {
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  SerialPort port;
  ASSERT_TRUE(port.open(pty.slavePath()));
  EXPECT_TRUE(port.healthy());
  port.setLineSettings(9600, 8, false, 1);
  EXPECT_EQ(port.baud(), 9600u);
  port.setLineSettings(12345, 8, false, 1);  // not a receiver's rate: the line stays
  EXPECT_EQ(port.baud(), 9600u);

  SerialPort second;
  EXPECT_FALSE(second.open(pty.slavePath())) << "a port in use must not be opened twice";
  EXPECT_FALSE(second.open("/nonexistent/ttyUSB0"));
  EXPECT_FALSE(second.open("/dev/null")) << "not a terminal";
  port.close();
  EXPECT_TRUE(second.open(pty.slavePath()));
}

TEST(SerialPort, ReadsWhatWaitsAndWritesToTheOtherEnd) {
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  SerialPort port;
  ASSERT_TRUE(port.open(pty.slavePath()));
  port.setTimeouts(kReceiverTimeouts);
  EXPECT_EQ(port.bytesWaiting(), 0u);

  const std::string sentence = "$GPGGA,1*00\r\n";
  ASSERT_TRUE(test::writeAll(pty.master(), reinterpret_cast<const uint8_t*>(sentence.data()), sentence.size()));
  ASSERT_TRUE(test::waitUntil([&] { return port.bytesWaiting() == sentence.size(); }, 2000));
  std::array<uint8_t, 5> part{};
  ASSERT_EQ(port.read(part), 5u);
  EXPECT_EQ(std::string(part.begin(), part.end()), "$GPGG");
  EXPECT_EQ(port.bytesWaiting(), sentence.size() - 5);
  port.purge();
  EXPECT_EQ(port.bytesWaiting(), 0u);

  static constexpr uint8_t kStart[] = {0x10, 0x0A, 0x02, 0x31, 0x00, 0xC3, 0x10, 0x03};
  port.write(kStart);
  std::array<uint8_t, 16> got{};
  pollfd p{pty.master(), POLLIN, 0};
  ASSERT_EQ(::poll(&p, 1, 2000), 1);
  ASSERT_EQ(::read(pty.master(), got.data(), got.size()), 8);
  EXPECT_TRUE(std::equal(std::begin(kStart), std::end(kStart), got.begin()));
  EXPECT_TRUE(port.healthy());
}

TEST(SerialPort, AnUnpluggedDeviceFailsThePortWithoutBlocking) {
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  SerialPort port;
  ASSERT_TRUE(port.open(pty.slavePath()));
  pty.closeMaster();
  EXPECT_EQ(port.bytesWaiting(), 0u);
  std::array<uint8_t, 8> buffer{};
  EXPECT_EQ(port.read(buffer), 0u);
  EXPECT_FALSE(port.healthy());
  EXPECT_TRUE(port.isOpen());
  static constexpr uint8_t kStop[] = {0x10, 0x0A, 0x02, 0x32, 0x00, 0xC2, 0x10, 0x03};
  port.write(kStop);  // nothing happens, nothing blocks
  EXPECT_EQ(port.bytesWaiting(), 0u);
}

}  // namespace
}  // namespace orvel
