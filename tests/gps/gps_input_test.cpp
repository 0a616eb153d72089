// GPS input end to end over pseudo-terminals with recorded receivers behind them: it finds
// the receiver, names the protocol and port, the fixes are handed on; an unplugged receiver
// is reported and searched for again; of two ports the first to speak wins; a stop ends and
// joins every thread; the settings decide which ports are scanned.
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <fcntl.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "core/settings.h"
#include "common/test_data.h"
#include "common/torture.h"
#include "gps/garmin_protocol.h"
#include "gps/gps_input.h"
#include "gps/nmea_protocol.h"
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

    // Each case's pseudo-terminal is a new device, which keeps a number of its own.
    int number = 0;
    for (const SerialPortInfo& port : input.scanPortList()) {
      if (port.path == pty.slavePath()) number = port.number;
    }
    ASSERT_GT(number, 0);
    input.startScanning();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM" + std::to_string(number))) << history();
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

// A receiver on a USB port that is pulled out and put back: a pseudo-terminal behind a fixed
// link (as udev names a receiver), a new one at every plug.
class PluggedReceiver {
 public:
  explicit PluggedReceiver(std::filesystem::path link) : link_(std::move(link)) {}
  const std::filesystem::path& link() const { return link_; }
  // Plugs in a receiver that begins `capture` at byte `from`, in the middle of a sentence.
  bool plugIn(const std::vector<uint8_t>& capture, size_t from) {
    pty_ = std::make_unique<test::PtyPair>();
    if (!pty_->ok()) return false;
    std::filesystem::remove(link_);
    std::filesystem::create_symlink(pty_->slavePath(), link_);
    receiver_ = std::make_unique<test::ReceiverThread>(
        pty_->master(), std::vector<uint8_t>(capture.begin() + static_cast<std::ptrdiff_t>(from), capture.end()), 150);
    return true;
  }
  // Pulls it out in the middle of a sentence.
  void pullOut() {
    receiver_.reset();
    if (!pty_) return;
    test::writeAll(pty_->master(), reinterpret_cast<const uint8_t*>("$GPRMC,0307"), 11);
    pty_.reset();
  }
  // The receiver stops sending and the port is left to the test; resume() goes on.
  void stopSending() { receiver_.reset(); }
  void resume(const std::vector<uint8_t>& capture) {
    receiver_ = std::make_unique<test::ReceiverThread>(pty_->master(), capture, 150);
  }
  int master() const { return pty_ ? pty_->master() : -1; }

 private:
  std::filesystem::path link_;
  std::unique_ptr<test::PtyPair> pty_;
  std::unique_ptr<test::ReceiverThread> receiver_;
};

// The longest the scanner takes to have the receiver again after it came back: the silence
// that ends the lost attempt, the pause after a loss, the other protocol's wait for an answer,
// and a few bursts; with room for a loaded machine.
constexpr int kTakeUpMs =
    static_cast<int>(NmeaProtocol::kSilenceMs + kLostPauseMs + GarminProtocol::kAckTimeoutMs) + 6000;

// The receiver pulled out mid-sentence and put back, again and again: each time the loss is
// reported and the receiver taken up again, the input never stops scanning, and in the end
// no thread or descriptor is left behind.
TEST_F(GpsInputTest, AReceiverPulledOutAndPutBackIsTakenUpEveryTime) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  ASSERT_FALSE(bytes.empty());
  std::mt19937 random(std::random_device{}());
  const test::ProcessResources before = test::processResources();
  const int times = test::tortureCount(1, 20);
  {
    PluggedReceiver usb(test::scratchDir("replugged") / "ttyGPS");
    ASSERT_TRUE(usb.plugIn(bytes, 0));
    input.addScanDevice(usb.link());
    input.startScanning();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
    for (int time = 1; time <= times; ++time) {
      SCOPED_TRACE("time " + std::to_string(time));
      usb.pullOut();
      ASSERT_TRUE(test::waitUntil([&] { return gps.statusCount("Не обнаружено данных.") == time; }, kTakeUpMs))
          << history();
      EXPECT_FALSE(input.receiverFound());
      EXPECT_EQ(noConnection, time);
      ASSERT_TRUE(usb.plugIn(bytes, std::uniform_int_distribution<size_t>(0, bytes.size() / 2)(random)));
      ASSERT_TRUE(test::waitUntil([&] { return gps.statusCount("NMEA-0183 через COM1") == time + 1; }, kTakeUpMs))
          << history();
      EXPECT_GE(gps.statusCount("Поиск данных - Протокол Garmin..."), time) << "the search went on with Garmin";
      EXPECT_TRUE(input.isScanning());
      EXPECT_EQ(input.activeScanThreads(), 1);
    }
    EXPECT_EQ(connected, times + 1);
    input.stopScanning();
  }
  EXPECT_EQ(test::leftBehind(before, test::processResources()), "");
  test::reportTorture("receiver: pulled out and put back " + std::to_string(times) + " times, taken up every time, " +
                      "nothing left behind of " + std::to_string(before.threads.size()) + " threads and " +
                      std::to_string(before.descriptors.size()) + " descriptors");
}

// A port flooded with random bytes at 115200 baud instead of sentences: the scanner reports
// the broken stream, keeps searching through the flood, takes the receiver up when its
// sentences return, and leaves no thread or descriptor behind.
TEST_F(GpsInputTest, AFloodOfRandomBytesIsSurvivedAndTheReceiverTakenUpAfterIt) {
  const auto bytes = capture("gps/nmea/bu353s4.log");
  ASSERT_FALSE(bytes.empty());
  const test::ProcessResources before = test::processResources();
  const int seconds = test::tortureCount(3, 60);
  size_t offered = 0, flooded = 0;
  {
    PluggedReceiver usb(test::scratchDir("flooded") / "ttyGPS");
    ASSERT_TRUE(usb.plugIn(bytes, 0));
    input.addScanDevice(usb.link());
    input.startScanning();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
    usb.stopSending();
    const int flags = ::fcntl(usb.master(), F_GETFL);
    ::fcntl(usb.master(), F_SETFL, flags | O_NONBLOCK);  // what the port cannot take is lost, as on a line
    std::mt19937 random(std::random_device{}());
    const auto start = std::chrono::steady_clock::now();
    for (auto now = start; now < start + std::chrono::seconds(seconds); now = std::chrono::steady_clock::now()) {
      const auto due = static_cast<size_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now - start).count()) *
                       115200 / 10 / 1000;  // ten bits a byte
      std::vector<uint8_t> slice(std::min<size_t>(due - offered, 4096));
      for (uint8_t& b : slice) b = static_cast<uint8_t>(random());
      offered += slice.size();
      const ssize_t n = slice.empty() ? 0 : ::write(usb.master(), slice.data(), slice.size());
      if (n > 0) flooded += static_cast<size_t>(n);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ::fcntl(usb.master(), F_SETFL, flags);
    EXPECT_TRUE(sawStatus("Ошибка протокола.")) << history();
    EXPECT_TRUE(input.isScanning());
    EXPECT_EQ(input.activeScanThreads(), 1);
    const int found = gps.statusCount("NMEA-0183 через COM1");
    usb.resume(bytes);
    ASSERT_TRUE(test::waitUntil([&] { return gps.statusCount("NMEA-0183 через COM1") > found; }, kTakeUpMs))
        << history();
    input.stopScanning();
  }
  EXPECT_EQ(test::leftBehind(before, test::processResources()), "");
  test::reportTorture("flood: " + std::to_string(seconds) + " s of random bytes at 115200 baud (" +
                      std::to_string(offered) + " bytes, " + std::to_string(flooded) +
                      " taken by the port), receiver taken up after it, nothing left behind of " +
                      std::to_string(before.threads.size()) + " threads and " +
                      std::to_string(before.descriptors.size()) + " descriptors");
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
