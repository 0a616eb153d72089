// gpsd as a source: its address on the command line, the JSON members we read, reports
// turned into fixes and satellites, and a real gpsd fed by gpsfake that comes and goes.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "common/test_data.h"
#include "common/torture.h"
#include "core/settings.h"
#include "gps/gps_input.h"
#include "gps/gpsd_client.h"
#include "gps/gpsd_json.h"
#include "gps/ole_date.h"
#include "gps_test_support.h"
#include "pty_support.h"

namespace orvel {
namespace {

TEST(GpsdUrl, HostsPortsAndMistakes) {
  struct Case {
    const char* text;
    bool ok;
    const char* host;
    uint16_t port;
  };
  const Case cases[] = {
      {"gpsd://", true, "127.0.0.1", 2947},           {"gpsd://localhost", true, "localhost", 2947},
      {"gpsd://10.0.0.2:3000", true, "10.0.0.2", 3000}, {"gpsd://[::1]:2948", true, "::1", 2948},
      {"gpsd://[::1]", true, "::1", 2947},             {"gpsd://host/", true, "host", 2947},
      {"gpsd://host:", false, "", 0},                  {"gpsd://host:0", false, "", 0},
      {"gpsd://host:65536", false, "", 0},             {"gpsd://host:12ab", false, "", 0},
      {"gpsd://ho#st:2947", false, "", 0},
      {"gpsd://::1:2947", false, "", 0},               {"gpsd://[::1", false, "", 0},
      {"gpsd://[::1]x", false, "", 0},                 {"tcp://host:2947", false, "", 0},
      {"/dev/ttyUSB0", false, "", 0},
  };
  for (const Case& c : cases) {
    GpsdAddress address;
    std::string error;
    ASSERT_EQ(parseGpsdUrl(c.text, address, error), c.ok) << c.text << ": " << error;
    if (!c.ok) {
      EXPECT_FALSE(error.empty()) << c.text;
      continue;
    }
    EXPECT_EQ(address.host, c.host) << c.text;
    EXPECT_EQ(address.port, c.port) << c.text;
  }
}

TEST(GpsdJson, MembersAtTheTopLevelOnly) {
  const std::string report =
      R"({"class":"SKY","note":"a \"quoted\" {brace}, \u0041","satellites":[{"PRN":5,"used":true},)"
      R"({"PRN":7,"el":-3,"used":false},12,{"x":{"PRN":99}}],"hdop" : 1.25 ,"flag":false,"lat":1e-3})";
  EXPECT_EQ(jsonString(report, "class"), "SKY");
  EXPECT_EQ(jsonString(report, "note"), "a \"quoted\" {brace}, A");
  EXPECT_EQ(jsonNumber(report, "hdop"), 1.25);
  EXPECT_EQ(jsonNumber(report, "lat"), 1e-3);
  EXPECT_EQ(jsonBool(report, "flag"), false);
  EXPECT_FALSE(jsonNumber(report, "PRN")) << "nested members are not the object's";
  EXPECT_FALSE(jsonNumber(report, "class")) << "a string is not a number";
  const auto list = jsonObjects(*jsonValue(report, "satellites"));
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(jsonNumber(list[0], "PRN"), 5);
  EXPECT_EQ(jsonBool(list[0], "used"), true);
  EXPECT_EQ(jsonNumber(list[1], "el"), -3);
  EXPECT_FALSE(jsonNumber(list[2], "PRN"));

  for (const char* broken : {"", "{", R"({"lat":)", R"({"lat":1.5)", R"({"a":"unterminated})", R"({"a" 1})",
                             R"(["lat",1])", R"({"lat":nan})", R"({"lat":1.5x})"}) {
    EXPECT_FALSE(jsonNumber(broken, "lat")) << broken;
  }
}

TEST(GpsdDecoder, FieldsModesAndUnits) {
  test::FixCollector fixes;
  GpsdDecoder decoder(fixes);
  decoder.handleLine(R"({"class":"SKY","hdop":0.9,"vdop":1.4,"uSat":7})");
  decoder.handleLine(
      R"({"class":"TPV","mode":3,"status":2,"time":"2024-05-01T12:30:15.500Z","lat":43.7,"lon":7.42,)"
      R"("alt":50.0,"altMSL":48.5,"speed":10.0,"track":270.5,"climb":-0.5,"epx":3.0,"epy":4.0,"epv":6.0})");
  decoder.handleLine(R"({"class":"TPV","mode":1,"lat":43.7,"lon":7.42,"eph":12})");
  decoder.handleLine(R"({"class":"VERSION","release":"3.22"})");
  decoder.handleLine("not json at all");
  ASSERT_EQ(fixes.fixes.size(), 2u);
  const GpsFix& f = fixes.fixes[0];
  EXPECT_EQ(f.fixType, kFixType3DDiff);
  EXPECT_FLOAT_EQ(f.altitude, 48.5f) << "altitude above sea level, not the ellipsoid";
  EXPECT_FLOAT_EQ(f.speed, 36.0f);
  EXPECT_FLOAT_EQ(f.course, 270.5f);
  EXPECT_FLOAT_EQ(f.verticalSpeed, -0.5f);
  EXPECT_FLOAT_EQ(f.horizontalError, 5.0f);
  EXPECT_FLOAT_EQ(f.verticalError, 6.0f);
  EXPECT_FLOAT_EQ(f.vdop, 1.4f);
  EXPECT_EQ(f.satellitesUsed, 7u);
  CalendarTime t;
  ASSERT_TRUE(automationDateToCalendar(f.time, t));
  EXPECT_EQ(t, (CalendarTime{2024, 5, 1, 12, 30, 15, 500}));
  // No fix: position, errors and dilutions become invalid together.
  EXPECT_EQ(fixes.fixes[1].fixType, kFixTypeInvalid);
  EXPECT_FALSE(fixes.fixes[1].flags & kNoFixClearMask);
}

// Debian's gpsd, fed a capture over and over by gpsfake on a loopback port, in a process
// group of its own so that it is stopped whole. gpsfake feeds from the start (-n): waiting
// for a client, it misses one that connected before it began to look.
class Gpsfake {
 public:
  Gpsfake(const std::filesystem::path& capture, uint16_t port) : child_(::fork()) {
    if (child_ != 0) {
      if (child_ > 0) ::setpgid(child_, child_);
      return;
    }
    ::setpgid(0, 0);
    std::freopen("/dev/null", "w", stderr);
    std::freopen("/dev/null", "w", stdout);
    ::execl("/usr/bin/gpsfake", "gpsfake", "-n", "-q", "-c", "0.05", "-P", std::to_string(port).c_str(),
            capture.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  ~Gpsfake() {
    if (child_ > 0) ::kill(-child_, SIGTERM), ::waitpid(child_, nullptr, 0);
  }
  bool started() const { return child_ > 0; }

 private:
  const pid_t child_;
};

// Whether the gpsd at `port` sends a TPV report to a client of its own within `ms`. Now and
// then gpsfake starts a gpsd that it never gives its device: that gpsd answers, with an empty
// device list, and reports nothing.
bool gpsdReports(uint16_t port, int ms) {
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(port);
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int fd = -1;
  std::string seen;
  const bool reported = test::waitUntil([&] {
    if (fd < 0) {  // gpsd may not listen yet
      fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
      if (::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 ||
          ::send(fd, kGpsdWatch.data(), kGpsdWatch.size(), MSG_NOSIGNAL) <= 0) {
        ::close(fd);
        fd = -1;
      }
      return false;
    }
    char chunk[4096];
    const ssize_t n = ::recv(fd, chunk, sizeof chunk, MSG_DONTWAIT);
    if (n > 0) seen.append(chunk, static_cast<size_t>(n));
    return seen.find("\"class\":\"TPV\"") != std::string::npos;
  }, ms);
  if (fd >= 0) ::close(fd);
  return reported;
}

// The real thing as the viewer meets it: GPS input with a gpsd source, and a gpsd that is
// stopped and started again, again and again. Each time the loss is reported and gpsd taken
// up again within the client's waits; the fixes are the receiver's; in the end no thread or
// descriptor is left behind.
TEST(GpsdClient, RealGpsdStoppedAndStartedAgain) {
  const auto capture = test::dataFile("gps/nmea/bu353s4.log");
  ASSERT_EQ(::access("/usr/bin/gpsfake", X_OK), 0) << "gpsfake is missing (Debian package gpsd-clients)";
  ASSERT_EQ(::access("/usr/sbin/gpsd", X_OK), 0) << "gpsd is missing (Debian package gpsd)";
  uint16_t port = 0;
  const int probe = test::listenLocal(port);
  ASSERT_GE(probe, 0);
  ::close(probe);
  const std::string found = "gpsd через 127.0.0.1:" + std::to_string(port);
  const test::ProcessResources before = test::processResources();
  const int times = test::tortureCount(1, 20);
  int feedless = 0;  // gpsfake runs that never fed their gpsd
  test::FixCollector sink;
  const auto history = [&] {
    std::lock_guard lock(sink.mutex);
    std::string out;
    for (const auto& status : sink.statuses) out += "[" + status + "] ";
    return out;
  };
  {
    Settings settings;
    GpsInput input(sink, settings);
    input.setScanRoots({}, false);
    input.setGpsdSource("127.0.0.1", port);
    input.beginScan();
    for (int time = 0; time <= times; ++time) {
      SCOPED_TRACE("time " + std::to_string(time));
      auto gpsd = std::make_unique<Gpsfake>(capture, port);
      for (int start = 1; start < 4 && !gpsdReports(port, 10000); ++start, ++feedless) {
        gpsd.reset();  // that gpsd never had the receiver: start again
        gpsd = std::make_unique<Gpsfake>(capture, port);
      }
      ASSERT_TRUE(gpsd->started());
      // gpsfake takes a while to start, and the client's waits between attempts grow up to
      // half a minute.
      ASSERT_TRUE(test::waitUntil([&] { return sink.statusCount(found) == time + 1; }, 45000)) << history();
      const size_t fixes = sink.fixesSoFar().size();
      ASSERT_TRUE(test::waitUntil([&] { return sink.fixesSoFar().size() > fixes; }, 10000));
      EXPECT_TRUE(input.receiverFound());
      EXPECT_EQ(input.activeScanThreads(), 1);
      if (time == times) break;
      gpsd.reset();  // gpsd goes away, and with it the receiver
      ASSERT_TRUE(test::waitUntil([&] { return sink.statusCount("Не обнаружено данных.") == time + 1; }, 10000))
          << history();
      EXPECT_FALSE(input.receiverFound());
    }
    input.stopScanning();
  }
  EXPECT_EQ(test::leftBehind(before, test::processResources()), "");
  for (const GpsFix& f : sink.fixes) {
    if (!f.has(kFixPosition)) continue;
    EXPECT_NEAR(f.latitude, -37.7848, 1e-3);
    EXPECT_NEAR(f.longitude, 175.3149, 1e-3);
    EXPECT_TRUE(f.fixType == kFixType2D || f.fixType == kFixType3D) << f.fixType;
  }
  test::reportTorture("gpsd: stopped and started again " + std::to_string(times) + " times (" +
                      std::to_string(feedless) + " gpsfake starts without the receiver left out), taken up every time, " +
                      "nothing left behind of " + std::to_string(before.threads.size()) + " threads and " +
                      std::to_string(before.descriptors.size()) + " descriptors");
}

}  // namespace
}  // namespace orvel
