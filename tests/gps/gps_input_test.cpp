// GPS input end to end: recorded receivers behind pseudo-terminals and a silent gpsd are
// scanned at once; the receiver is found, named by protocol and the port's own number, its
// fixes are handed on, the demo gives way, and a stop ends and joins every thread, letting
// go of the port and the connection. Receivers that come and go (pulled out mid-sentence, a
// port flooded with random bytes): the status line tells it, the receiver is taken up again,
// and no thread or descriptor is left behind.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "common/torture.h"
#include "core/settings.h"
#include "gps/garmin_protocol.h"
#include "gps/gps_input.h"
#include "gps/nmea_protocol.h"
#include "gps/serial_port.h"
#include "gps_test_support.h"
#include "pty_support.h"

namespace orvel {
namespace {

// The longest the scanner takes to have the receiver again after it came back: the silence
// that ends the lost attempt, the pause after a loss, the other protocol's wait for an answer,
// and a few bursts; with room for a loaded machine.
constexpr int kTakeUpMs =
    static_cast<int>(NmeaProtocol::kSilenceMs + kLostPauseMs + GarminProtocol::kAckTimeoutMs) + 6000;

// A receiver on a USB port that is pulled out and put back: a pseudo-terminal behind a fixed
// link (as udev names a receiver), a new one at every plug.
class PluggedReceiver {
 public:
  explicit PluggedReceiver(std::vector<uint8_t> capture)
      : link_(test::scratchDir("plugged") / "ttyGPS"), capture_(std::move(capture)) {}
  const std::filesystem::path& link() const { return link_; }
  int master() const { return pty_->master(); }
  size_t size() const { return capture_.size(); }
  // Plugs in a receiver that begins the capture at byte `from`, in the middle of a sentence.
  bool plugIn(size_t from) {
    pty_ = std::make_unique<test::PtyPair>();
    if (!pty_->ok()) return false;
    std::filesystem::remove(link_);
    std::filesystem::create_symlink(pty_->slavePath(), link_);
    send(from);
    return true;
  }
  // Pulls it out in the middle of a sentence.
  void pullOut() {
    receiver_.reset();
    test::writeAll(pty_->master(), reinterpret_cast<const uint8_t*>("$GPRMC,0307"), 11);
    pty_.reset();
  }
  void stopSending() { receiver_.reset(); }
  void send(size_t from) {
    receiver_ = std::make_unique<test::ReceiverThread>(
        pty_->master(), std::vector<uint8_t>(capture_.begin() + static_cast<std::ptrdiff_t>(from), capture_.end()), 150);
  }

 private:
  std::filesystem::path link_;
  std::vector<uint8_t> capture_;
  std::unique_ptr<test::PtyPair> pty_;
  std::unique_ptr<test::ReceiverThread> receiver_;
};

class GpsInputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    settings.openSettingsAt(test::scratchDir("gps-input") / "GisOrvel.conf");
    input.setScanIndicator({[this] { ++connected; }, [this] { ++noConnection; }});
    input.setScanRoots({}, false);
  }
  bool waitStatus(const std::string& text, int count = 1, int ms = 4000) {
    return test::waitUntil([&] { return gps.statusCount(text) == count; }, ms);
  }
  std::string history() {
    std::lock_guard lock(gps.mutex);
    std::string out;
    for (const auto& s : gps.statuses) out += "[" + s + "] ";
    return out;
  }
  // Scans a receiver plugged in behind a link until it is found, runs `disturb`, stops, and
  // checks that nothing the scan started is left behind; returns the counts for the figures.
  std::string comeAndGo(const std::function<void(PluggedReceiver&)>& disturb) {
    const test::ProcessResources before = test::processResources();
    {
      PluggedReceiver usb(test::readFile(test::dataFile("gps/nmea/bu353s4.log")));
      EXPECT_TRUE(usb.plugIn(0));
      input.addScanDevice(usb.link());
      input.startScanning();
      EXPECT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
      if (!HasFailure()) disturb(usb);
      input.stopScanning();
    }
    EXPECT_EQ(test::leftBehind(before, test::processResources()), "");
    return "nothing left behind of " + std::to_string(before.threads.size()) + " threads and " +
           std::to_string(before.descriptors.size()) + " descriptors";
  }

  std::atomic<int> connected{0}, noConnection{0};
  Settings settings;
  test::FixCollector gps;
  GpsInput input{gps, settings};
};

TEST_F(GpsInputTest, FindsAReceiverAndStopJoinsEveryThread) {
  uint16_t port = 0;
  const int server = test::listenLocal(port);
  ASSERT_GE(server, 0);
  struct Case {
    const char* capture;
    size_t chunk;    // 0: the receiver's own bursts; else reads this large
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
    test::PtyPair pty;
    ASSERT_TRUE(pty.ok());
    input.clearScanSources();
    input.addScanDevice(pty.slavePath());
    input.setGpsdSource("127.0.0.1", port);
    // Each pseudo-terminal is a device of its own, which keeps a number of its own.
    int number = 0;
    for (const SerialPortInfo& info : input.scanPortList()) number = info.path == pty.slavePath() ? info.number : number;
    ASSERT_GT(number, 0);
    {
      std::lock_guard lock(gps.mutex);
      gps.statuses.clear();
    }
    // The demo runs until a receiver is found.
    DemoReplayOptions demo;
    demo.burstMs = 150;
    ASSERT_TRUE(input.demoReplay().startDemoReplay(test::dataFile("gps/nmea/bundg_zeus_9.log").string(), demo));
    test::ReceiverThread receiver(pty.master(), test::readFile(test::dataFile(c.capture)), 150, c.chunk);
    input.beginScan();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM" + std::to_string(number))) << history();
    EXPECT_TRUE(input.receiverFound());
    ASSERT_TRUE(test::waitUntil([&] { return !input.demoReplay().isDemoReplaying(); }, 4000));
    // Several reads later the receiver is still kept: no read broke the protocol.
    const size_t before = gps.fixesSoFar().size();
    std::vector<GpsFix> fixes;
    ASSERT_TRUE(test::waitUntil([&] {
      fixes = gps.fixesSoFar();
      fixes.erase(fixes.begin(), fixes.begin() + static_cast<std::ptrdiff_t>(before));
      std::erase_if(fixes, [&](const GpsFix& f) { return !f.has(c.flags); });
      return fixes.size() >= 4;
    }, 4000)) << history();
    EXPECT_EQ(gps.statusCount("Ошибка протокола."), 0) << history();
    EXPECT_NEAR(fixes.back().latitude, c.latitude, 1e-3);
    EXPECT_NEAR(fixes.back().longitude, c.longitude, 1e-3);
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
    EXPECT_TRUE(again.open(pty.slavePath()));
    ::close(client);
  }
  EXPECT_EQ(connected, 2);
  ::close(server);
}

// Pulled out mid-sentence and put back, again and again: each time the loss is reported, the
// search goes on, and the receiver is taken up again under the same number.
TEST_F(GpsInputTest, AReceiverPulledOutAndPutBackIsTakenUpEveryTime) {
  const int times = test::tortureCount(1, 20);
  std::mt19937 random(std::random_device{}());
  const std::string left = comeAndGo([&](PluggedReceiver& usb) {
    for (int time = 1; time <= times; ++time) {
      SCOPED_TRACE("time " + std::to_string(time));
      usb.pullOut();
      ASSERT_TRUE(waitStatus("Не обнаружено данных.", time, kTakeUpMs)) << history();
      EXPECT_FALSE(input.receiverFound());
      EXPECT_EQ(noConnection, time);
      ASSERT_TRUE(usb.plugIn(std::uniform_int_distribution<size_t>(0, usb.size() / 2)(random)));
      ASSERT_TRUE(waitStatus("NMEA-0183 через COM1", time + 1, kTakeUpMs)) << history();
      EXPECT_GE(gps.statusCount("Поиск данных - Протокол Garmin..."), time) << "the search went on with Garmin";
      EXPECT_TRUE(input.isScanning());
      EXPECT_EQ(input.activeScanThreads(), 1);
    }
    EXPECT_EQ(connected, times + 1);
  });
  test::reportTorture("receiver: pulled out and put back " + std::to_string(times) + " times, taken up every time, " +
                      left);
}

// Random bytes at 115200 baud instead of sentences: the broken stream is reported, the search
// goes on through the flood, and the receiver is taken up when its sentences return.
TEST_F(GpsInputTest, AFloodOfRandomBytesIsSurvivedAndTheReceiverTakenUpAfterIt) {
  const int seconds = test::tortureCount(3, 60);
  size_t offered = 0, flooded = 0;
  const std::string left = comeAndGo([&](PluggedReceiver& usb) {
    usb.stopSending();
    const int flags = ::fcntl(usb.master(), F_GETFL);
    ::fcntl(usb.master(), F_SETFL, flags | O_NONBLOCK);  // what the port cannot take is lost, as on a line
    std::mt19937 random(std::random_device{}());
    const auto start = std::chrono::steady_clock::now();
    for (auto now = start; now < start + std::chrono::seconds(seconds); now = std::chrono::steady_clock::now()) {
      const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now - start).count();
      std::vector<uint8_t> slice(std::min<size_t>(static_cast<size_t>(ms) * 11520 / 1000 - offered, 4096));
      for (uint8_t& b : slice) b = static_cast<uint8_t>(random());  // 11520 bytes a second: ten bits a byte
      offered += slice.size();
      const ssize_t n = slice.empty() ? 0 : ::write(usb.master(), slice.data(), slice.size());
      flooded += n > 0 ? static_cast<size_t>(n) : 0;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ::fcntl(usb.master(), F_SETFL, flags);
    EXPECT_GT(gps.statusCount("Ошибка протокола."), 0) << history();
    EXPECT_TRUE(input.isScanning());
    EXPECT_EQ(input.activeScanThreads(), 1);
    const int found = gps.statusCount("NMEA-0183 через COM1");
    usb.send(0);
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1", found + 1, kTakeUpMs)) << history();
  });
  test::reportTorture("flood: " + std::to_string(seconds) + " s of random bytes at 115200 baud (" +
                      std::to_string(offered) + " bytes, " + std::to_string(flooded) +
                      " taken by the port), receiver taken up after it, " + left);
}

}  // namespace
}  // namespace orvel
