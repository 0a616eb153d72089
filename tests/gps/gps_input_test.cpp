// GPS input end to end, with recorded receivers behind pseudo-terminals and gpsd: found, named,
// handed on, the demo giving way; receivers that come and go; a stop joins every thread.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "common/test_data.h"
#include "common/torture.h"
#include "core/settings.h"
#include "gps/garmin_protocol.h"
#include "gps/gps_input.h"
#include "gps/gpsd_client.h"
#include "gps/nmea_protocol.h"
#include "gps_test_support.h"
#include "pty_support.h"

namespace orvel {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The longest the scanner takes to have the receiver again after it came back: the silence
// that ends the lost attempt, the pause after a loss, the other protocol's wait for an answer,
// and a few bursts; with room for a loaded machine.
constexpr int kTakeUpMs =
    static_cast<int>(NmeaProtocol::kSilenceMs + kLostPauseMs + GarminProtocol::kAckTimeoutMs) + 6000;

// A socket listening on 127.0.0.1, and its port.
int listenLocal(uint16_t& port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in a{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof a;
  if (::bind(fd, reinterpret_cast<sockaddr*>(&a), size) != 0 || ::listen(fd, 4) != 0 ||
      ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size) != 0) {
    ::close(fd);
    return -1;
  }
  port = ntohs(a.sin_port);
  return fd;
}

class GpsInputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    settings.openSettingsAt(test::scratchDir("gps-input") / "GisOrvel.conf");
    input.setScanIndicator({[this] { ++connected; }, [this] { ++noConnection; }});
    input.setScanRoots({}, false);
  }
  bool waitStatus(const std::string& text, int count = 1, int ms = 4000) {
    return waitUntil([&] { return gps.statusCount(text) == count; }, ms);
  }
  std::string history() {
    std::lock_guard lock(gps.mutex);
    std::string out;
    for (const auto& s : gps.statuses) out += "[" + s + "] ";
    return out;
  }
  // Runs `work`, stops the scan, and checks that the stop ended and joined every thread and
  // that nothing the scan started is left behind (no port or connection held); the counts for
  // the figures.
  std::string leavingNothingBehind(const std::function<void()>& work) {
    std::thread([] {}).join();  // so that ThreadSanitizer's own thread, started with the first, is counted before
    const test::ProcessResources before = test::processResources();
    work();
    EXPECT_TRUE(input.stopScanning()) << "every thread ended within the stop's wait";
    EXPECT_EQ(input.activeScanThreads(), 0);
    EXPECT_TRUE(input.isGpsInputShutDown());
    EXPECT_GT(gps.statusCount("Нет соединения с GPS-приемником"), 0);
    receiver = {};
    pty.reset();
    EXPECT_EQ(test::leftBehind(before, test::processResources()), "");
    return "nothing left behind of " + std::to_string(before.threads.size()) + " threads and " +
           std::to_string(before.descriptors.size()) + " descriptors";
  }

  // A receiver on a USB port: a new pseudo-terminal at every plug behind a fixed link (as udev
  // names a receiver), sending the capture from byte `from`, in the middle of a sentence.
  bool plugIn(size_t from) {
    pty = std::make_unique<PtyPair>();
    if (pty->path.empty()) return false;
    std::filesystem::remove(link);
    std::filesystem::create_symlink(pty->path, link);
    send(from);
    return true;
  }
  void send(size_t from) {
    receiver = receiverThread(pty->master, {capture.begin() + static_cast<std::ptrdiff_t>(from), capture.end()});
  }
  // Pulled out in the middle of a sentence.
  void pullOut() {
    receiver = {};
    EXPECT_EQ(::write(pty->master, "$GPRMC,0307", 11), 11);
    pty.reset();
  }
  // Scans the plugged receiver until it is found and has handed on a fix of its own.
  void scanPlugged() {
    ASSERT_TRUE(plugIn(0));
    input.addScanDevice(link);
    input.startScanning();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
    ASSERT_TRUE(waitUntil([&] { return gps.state.currentFix().has(kFixPosition | kFixTime); }, 4000));
    // 37°47.09'S 175°18.89'E (its own GGA and RMC sentences).
    EXPECT_NEAR(gps.state.currentFix().latitude, -37.7848, 1e-3);
    EXPECT_NEAR(gps.state.currentFix().longitude, 175.3149, 1e-3);
  }

  std::atomic<int> connected{0}, noConnection{0};
  const std::vector<uint8_t> capture = test::readFile(test::dataFile("gps/nmea/bu353s4.log"));
  const std::filesystem::path link = test::scratchDir("plugged") / "ttyGPS";
  std::unique_ptr<PtyPair> pty;
  std::jthread receiver;
  Settings settings;
  test::FixCollector gps;
  GpsInput input{gps, settings};
};
using GpsdClient = GpsInputTest;

TEST_F(GpsInputTest, FindsAReceiverAndStopJoinsEveryThread) {
  uint16_t port = 0;
  const int server = listenLocal(port);
  ASSERT_GE(server, 0);
  leavingNothingBehind([&] {
    pty = std::make_unique<PtyPair>();
    // Whole reads of 1 KB with "$PFEC," sentences between the GGA ones.
    receiver = receiverThread(pty->master, test::readFile(test::dataFile("gps/nmea/hp58534a.log")), 1024);
    input.addScanDevice(pty->path);
    input.setGpsdSource("127.0.0.1", port);
    DemoReplayOptions demo;
    demo.burstMs = 150;
    ASSERT_TRUE(input.demoReplay().startDemoReplay(test::dataFile("gps/nmea/bundg_zeus_9.log").string(), demo));

    input.beginScan();
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1")) << history();
    EXPECT_TRUE(input.receiverFound());
    // The demo runs until a receiver is found; several reads later the receiver is still kept.
    ASSERT_TRUE(waitUntil([&] { return !input.demoReplay().isDemoReplaying(); }, 4000));
    const size_t before = gps.fixesSoFar().size();
    ASSERT_TRUE(waitUntil([&] { return gps.fixesSoFar().size() >= before + 4; }, 4000)) << history();
    EXPECT_EQ(gps.statusCount("Ошибка протокола."), 0) << history();
    const std::vector<GpsFix> fixes = gps.fixesSoFar();
    for (size_t i = before; i < fixes.size(); ++i) {  // 33°49.03'S 18°43.93'E
      EXPECT_TRUE(fixes[i].has(kFixPosition)) << i;
      EXPECT_NEAR(fixes[i].latitude, -33.8172, 1e-3);
      EXPECT_NEAR(fixes[i].longitude, 18.7321, 1e-3);
    }
    // The gpsd thread had connected and asked for reports, which never came.
    pollfd incoming{server, POLLIN, 0};
    ASSERT_EQ(::poll(&incoming, 1, 4000), 1);
    const int client = ::accept(server, nullptr, nullptr);
    char request[256];
    EXPECT_GT(::recv(client, request, sizeof request, 0), 0);
    ::close(client);
    // The first to speak wins: the others end.
    EXPECT_TRUE(waitUntil([&] { return input.activeScanThreads() == 1; }, 4000));
  });
  ::close(server);
}

// Pulled out mid-sentence and put back, again and again: each time the loss is reported, the
// search goes on, and the receiver is taken up again under the same number.
TEST_F(GpsInputTest, AReceiverPulledOutAndPutBackIsTakenUpEveryTime) {
  const int times = test::tortureCount(1, 20);
  std::mt19937 random(std::random_device{}());
  const std::string left = leavingNothingBehind([&] {
    scanPlugged();
    for (int time = 1; time <= times && !HasFailure(); ++time) {
      SCOPED_TRACE("time " + std::to_string(time));
      pullOut();
      ASSERT_TRUE(waitStatus("Не обнаружено данных.", time, kTakeUpMs)) << history();
      EXPECT_FALSE(input.receiverFound());
      EXPECT_EQ(noConnection, time);
      ASSERT_TRUE(plugIn(std::uniform_int_distribution<size_t>(0, capture.size() / 2)(random)));
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
  const std::string left = leavingNothingBehind([&] {
    scanPlugged();
    if (HasFailure()) return;
    receiver = {};
    const int flags = ::fcntl(pty->master, F_GETFL);
    ::fcntl(pty->master, F_SETFL, flags | O_NONBLOCK);  // what the port cannot take is lost, as on a line
    std::mt19937 random(std::random_device{}());
    for (auto start = Clock::now(), now = start; now < start + std::chrono::seconds(seconds); now = Clock::now()) {
      const auto due = static_cast<size_t>(std::chrono::duration_cast<milliseconds>(now - start).count()) * 11520 / 1000;
      std::vector<uint8_t> slice(std::min<size_t>(due - offered, 4096));  // ten bits a byte
      for (uint8_t& b : slice) b = static_cast<uint8_t>(random());
      offered += slice.size();
      const ssize_t n = slice.empty() ? 0 : ::write(pty->master, slice.data(), slice.size());
      flooded += n > 0 ? static_cast<size_t>(n) : 0;
      std::this_thread::sleep_for(milliseconds(10));
    }
    ::fcntl(pty->master, F_SETFL, flags);
    EXPECT_GT(gps.statusCount("Ошибка протокола."), 0) << history();
    EXPECT_TRUE(input.isScanning());
    EXPECT_EQ(input.activeScanThreads(), 1);
    send(0);
    ASSERT_TRUE(waitStatus("NMEA-0183 через COM1", 2, kTakeUpMs)) << history();
  });
  test::reportTorture("flood: " + std::to_string(seconds) + " s of random bytes at 115200 baud (" +
                      std::to_string(offered) + " bytes, " + std::to_string(flooded) +
                      " taken by the port), receiver taken up after it, " + left);
}

// Debian's gpsd, fed a capture over and over by gpsfake (-n: from the start; waiting for a
// client, it misses one that connected before it began to look) in a process group of its own.
struct Gpsfake {
  Gpsfake(const std::filesystem::path& capture, uint16_t port) : child(::fork()) {
    if (child == 0) {
      ::setpgid(0, 0);
      std::freopen("/dev/null", "w", stderr);
      std::freopen("/dev/null", "w", stdout);
      ::execl("/usr/bin/gpsfake", "gpsfake", "-n", "-q", "-c", "0.05", "-P", std::to_string(port).c_str(),
              capture.c_str(), static_cast<char*>(nullptr));
      ::_exit(127);
    }
    if (child > 0) ::setpgid(child, child);
  }
  ~Gpsfake() {
    if (child > 0) ::kill(-child, SIGTERM), ::waitpid(child, nullptr, 0);
  }
  const pid_t child;
};

// Whether the gpsd at `port` reports to a client of its own within `ms`. Now and then gpsfake
// starts a gpsd that it never gives its device, which reports nothing.
bool gpsdReports(uint16_t port, int ms) {
  ScanSignals signals;
  test::FixCollector sink;
  HostLookups lookups;
  std::thread client([&] { readGpsd(GpsdAddress{"127.0.0.1", port}, signals, sink, {}, lookups); });
  const bool reported = waitUntil([&] { return !sink.fixesSoFar().empty(); }, ms);
  signals.setStop();
  client.join();
  return reported;
}

// gpsd stopped and started again, again and again: each time the loss is reported and gpsd
// taken up again within the client's waits, and the fixes are the receiver's.
TEST_F(GpsdClient, RealGpsdStoppedAndStartedAgain) {
  const auto bu353s4 = test::dataFile("gps/nmea/bu353s4.log");
  ASSERT_EQ(::access("/usr/bin/gpsfake", X_OK), 0) << "gpsfake is missing (Debian package gpsd-clients)";
  ASSERT_EQ(::access("/usr/sbin/gpsd", X_OK), 0) << "gpsd is missing (Debian package gpsd)";
  uint16_t port = 0;
  ::close(listenLocal(port));  // a free port
  ASSERT_GT(port, 0);
  const std::string found = "gpsd через 127.0.0.1:" + std::to_string(port);
  const int times = test::tortureCount(1, 20);
  int feedless = 0;  // gpsfake runs that never fed their gpsd
  const std::string left = leavingNothingBehind([&] {
    input.setGpsdSource("127.0.0.1", port);
    input.beginScan();
    for (int time = 0; time <= times; ++time) {
      SCOPED_TRACE("time " + std::to_string(time));
      auto gpsd = std::make_unique<Gpsfake>(bu353s4, port);
      for (int start = 1; start < 4 && !gpsdReports(port, 10000); ++start, ++feedless) {
        gpsd.reset();  // that gpsd never had the receiver: start again
        gpsd = std::make_unique<Gpsfake>(bu353s4, port);
      }
      ASSERT_GT(gpsd->child, 0);
      // gpsfake takes a while to start, and the client's waits between attempts grow up to
      // half a minute.
      ASSERT_TRUE(waitStatus(found, time + 1, 45000)) << history();
      const size_t fixes = gps.fixesSoFar().size();
      ASSERT_TRUE(waitUntil([&] { return gps.fixesSoFar().size() > fixes; }, 10000));
      EXPECT_TRUE(input.receiverFound());
      EXPECT_EQ(input.activeScanThreads(), 1);
      if (time == times) break;
      gpsd.reset();  // gpsd goes away, and with it the receiver
      ASSERT_TRUE(waitStatus("Не обнаружено данных.", time + 1, 10000)) << history();
      EXPECT_FALSE(input.receiverFound());
    }
  });
  for (const GpsFix& f : gps.fixes) {
    if (!f.has(kFixPosition)) continue;
    EXPECT_NEAR(f.latitude, -37.7848, 1e-3);
    EXPECT_NEAR(f.longitude, 175.3149, 1e-3);
    EXPECT_TRUE(f.fixType == kFixType2D || f.fixType == kFixType3D) << f.fixType;
  }
  test::reportTorture("gpsd: stopped and started again " + std::to_string(times) + " times (" +
                      std::to_string(feedless) + " gpsfake starts without the receiver left out), taken up every time, " +
                      left);
}

}  // namespace
}  // namespace orvel
