#include "gps/gpsd_client.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <vector>

#include "core/utf.h"
#include "gps/gps_state.h"
#include "gps/gpsd_json.h"
#include "gps/port_reader.h"
#include "gps/ole_date.h"

namespace orvel {
namespace {

constexpr uint32_t kConnectTimeoutMs = 3000;
constexpr uint32_t kFirstRetryMs = 1000;
constexpr uint32_t kLongestRetryMs = 30000;
constexpr uint32_t kSilenceMs = 5000;  // a connected gpsd that sends nothing this long lost its receiver

// "YYYY-MM-DDTHH:MM:SS[.fff]Z" as an automation date.
bool parseIsoTime(const std::string& text, double& out) {
  CalendarTime t;
  double seconds = 0;
  char zone = 0;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%lf%c", &t.year, &t.month, &t.day, &t.hour, &t.minute, &seconds,
                  &zone) != 7 ||
      zone != 'Z' || !(seconds >= 0 && seconds < 61)) {
    return false;
  }
  t.second = std::min(59, static_cast<int>(seconds));
  if (!calendarToAutomationDate(t, out)) return false;
  out += (seconds - t.second) / 86400.0;
  return true;
}

uint32_t nonNegative(std::optional<double> v) {
  if (!v || !(*v > 0) || *v > 1e6) return 0;
  return static_cast<uint32_t>(std::floor(*v + 0.5));
}

}  // namespace

bool parseGpsdUrl(std::string_view text, GpsdAddress& out, std::string& error) {
  constexpr std::string_view kScheme = "gpsd://";
  if (text.substr(0, kScheme.size()) != kScheme) {
    error = "not a gpsd address (gpsd://HOST[:PORT])";
    return false;
  }
  std::string_view rest = text.substr(kScheme.size());
  if (!rest.empty() && rest.back() == '/') rest.remove_suffix(1);
  GpsdAddress address;
  std::string_view portText;
  bool hasPort = false;
  if (!rest.empty() && rest.front() == '[') {
    const size_t close = rest.find(']');
    if (close == std::string_view::npos) {
      error = "unclosed '[' in the gpsd address";
      return false;
    }
    address.host = std::string(rest.substr(1, close - 1));
    rest.remove_prefix(close + 1);
    if (!rest.empty()) {
      if (rest.front() != ':') {
        error = "unexpected text after ']' in the gpsd address";
        return false;
      }
      hasPort = true;
      portText = rest.substr(1);
    }
  } else {
    const size_t colon = rest.find(':');
    if (colon != std::string_view::npos && rest.find(':', colon + 1) != std::string_view::npos) {
      error = "an IPv6 gpsd address goes in brackets: gpsd://[::1]:2947";
      return false;
    }
    if (colon != std::string_view::npos) {
      hasPort = true;
      portText = rest.substr(colon + 1);
      rest = rest.substr(0, colon);
    }
    if (!rest.empty()) address.host = std::string(rest);
  }
  if (address.host.empty() || address.host.find_first_of("/?# ") != std::string::npos) {
    error = "bad host in the gpsd address";
    return false;
  }
  if (hasPort) {
    unsigned long port = 0;
    const bool digits = !portText.empty() && portText.size() <= 5 &&
                        std::all_of(portText.begin(), portText.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (digits) port = std::stoul(std::string(portText));
    if (!digits || port == 0 || port > 65535) {
      error = "bad port in the gpsd address";
      return false;
    }
    address.port = static_cast<uint16_t>(port);
  }
  out = address;
  return true;
}

void GpsdDecoder::reset() {
  partial_.clear();
  overlong_ = false;
  haveHdop_ = haveVdop_ = haveUsed_ = false;
}

bool GpsdDecoder::process(std::span<const uint8_t> bytes) {
  bool any = false;
  for (const uint8_t b : bytes) {
    if (b == '\n') {
      if (!overlong_) any = handleLine(partial_) || any;
      partial_.clear();
      overlong_ = false;
    } else if (partial_.size() >= kMaxLine) {
      overlong_ = true;
    } else {
      partial_ += static_cast<char>(b);
    }
  }
  return any;
}

bool GpsdDecoder::handleLine(std::string_view line) {
  const auto type = jsonString(line, "class");
  if (type == "TPV") {
    handleTpv(line);
    return true;
  }
  if (type == "SKY") {
    handleSky(line);
    return true;
  }
  return false;
}

void GpsdDecoder::handleTpv(std::string_view report) {
  GpsFix fix;
  if (const auto time = jsonString(report, "time")) {
    if (parseIsoTime(*time, fix.time)) fix.flags |= kFixTime;
  }
  const auto lat = jsonNumber(report, "lat"), lon = jsonNumber(report, "lon");
  if (lat && lon && std::fabs(*lat) <= 90 && std::fabs(*lon) <= 180) {
    fix.latitude = static_cast<float>(*lat);
    fix.longitude = static_cast<float>(*lon);
    fix.flags |= kFixPosition;
  }
  // Newer gpsd names the altitude above sea level altMSL; older ones call it alt.
  auto alt = jsonNumber(report, "altMSL");
  if (!alt) alt = jsonNumber(report, "alt");
  if (alt) {
    fix.altitude = static_cast<float>(*alt);
    fix.flags |= kFixAltitude;
  }
  if (const auto sep = jsonNumber(report, "geoidSep")) {
    fix.geoidSeparation = static_cast<float>(*sep);
    fix.flags |= kFixGeoidSeparation;
  }
  auto eph = jsonNumber(report, "eph");
  const auto epx = jsonNumber(report, "epx"), epy = jsonNumber(report, "epy");
  if (!eph && epx && epy) eph = std::sqrt(*epx * *epx + *epy * *epy);
  if (eph) {
    fix.horizontalError = static_cast<float>(*eph);
    fix.flags |= kFixHorizontalError;
  }
  if (const auto epv = jsonNumber(report, "epv")) {
    fix.verticalError = static_cast<float>(*epv);
    fix.flags |= kFixVerticalError;
  }
  if (const auto speed = jsonNumber(report, "speed")) {
    fix.speed = static_cast<float>(*speed * 3.6);  // m/s to km/h
    fix.flags |= kFixSpeed;
  }
  if (const auto track = jsonNumber(report, "track")) {
    fix.course = static_cast<float>(*track);
    fix.flags |= kFixCourse;
  }
  if (const auto climb = jsonNumber(report, "climb")) {
    fix.verticalSpeed = static_cast<float>(*climb);
    fix.flags |= kFixVerticalSpeed;
  }
  if (const auto magvar = jsonNumber(report, "magvar")) {
    fix.magneticVariation = static_cast<float>(*magvar);
    fix.flags |= kFixMagneticVariation;
  }
  if (haveHdop_) {
    fix.hdop = hdop_;
    fix.flags |= kFixHdop;
  }
  if (haveVdop_) {
    fix.vdop = vdop_;
    fix.flags |= kFixVdop;
  }
  if (haveUsed_) {
    fix.satellitesUsed = used_;
    fix.flags |= kFixSatellitesUsed;
  }
  // mode: 0 unknown, 1 no fix, 2 2D, 3 3D; status 2 is a differential fix.
  if (const auto mode = jsonNumber(report, "mode")) {
    const bool differential = jsonNumber(report, "status").value_or(1) == 2;
    uint32_t code = kFixTypeUnknown;
    if (*mode == 1) code = kFixTypeInvalid;
    if (*mode == 2) code = differential ? kFixType2DDiff : kFixType2D;
    if (*mode == 3) code = differential ? kFixType3DDiff : kFixType3D;
    if (*mode == 0 && !fix.has(kFixPosition)) code = kFixTypeInvalid;
    setFixType(fix, code);
  }
  sink_.updateFix(fix);
}

void GpsdDecoder::handleSky(std::string_view report) {
  const auto hdop = jsonNumber(report, "hdop"), vdop = jsonNumber(report, "vdop");
  if (hdop) hdop_ = static_cast<float>(*hdop);
  if (vdop) vdop_ = static_cast<float>(*vdop);
  haveHdop_ = haveHdop_ || hdop;
  haveVdop_ = haveVdop_ || vdop;
  const auto list = jsonValue(report, "satellites");
  if (!list) {
    if (const auto used = jsonNumber(report, "uSat")) {
      used_ = nonNegative(used);
      haveUsed_ = true;
    }
    return;
  }
  const std::vector<std::string_view> satellites = jsonObjects(*list);
  const size_t count = std::min<size_t>(satellites.size(), kMaxSatellites);
  std::vector<SatelliteInfo> inView;
  inView.reserve(count);
  uint32_t used = 0;
  for (size_t i = 0; i < count; ++i) {
    const std::string_view s = satellites[i];
    inView.push_back(SatelliteInfo{nonNegative(jsonNumber(s, "PRN")), nonNegative(jsonNumber(s, "el")),
                                 nonNegative(jsonNumber(s, "az")), nonNegative(jsonNumber(s, "ss"))});
    if (jsonBool(s, "used").value_or(false)) ++used;
  }
  sink_.setSatellites(inView);
  used_ = used;
  haveUsed_ = true;
  sink_.satellitesChanged();
}

namespace {

// A connected socket, or -1. Every wait is a poll of at most kPollMs after which
// `cancelled` is asked, so a stop is never held up by the name lookup or the connection.
int connectTo(const GpsdAddress& address, HostLookups& lookups, const std::function<bool()>& cancelled) {
  const AddressList found = lookups.lookup(address.host, address.port, cancelled);
  int result = -1;
  for (addrinfo* a = found.get(); a && result < 0 && !cancelled(); a = a->ai_next) {
    const int fd = ::socket(a->ai_family, a->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, a->ai_protocol);
    if (fd < 0) continue;
    if (::connect(fd, a->ai_addr, a->ai_addrlen) == 0) {
      result = fd;
      break;
    }
    if (errno == EINPROGRESS) {
      const uint32_t start = tickCount();
      while (!cancelled() && tickCount() - start < kConnectTimeoutMs) {
        pollfd p{fd, POLLOUT, 0};
        if (::poll(&p, 1, static_cast<int>(kPollMs)) <= 0) continue;
        int error = 0;
        socklen_t size = sizeof error;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0) result = fd;
        break;
      }
    }
    if (result != fd) ::close(fd);
  }
  return result;
}

bool sendAll(int fd, std::string_view text, const std::function<bool()>& cancelled) {
  size_t done = 0;
  const uint32_t start = tickCount();
  while (done < text.size() && tickCount() - start < kConnectTimeoutMs && !cancelled()) {
    const ssize_t n = ::send(fd, text.data() + done, text.size() - done, MSG_NOSIGNAL);
    if (n > 0) {
      done += static_cast<size_t>(n);
    } else if (n < 0 && errno != EAGAIN && errno != EINTR) {
      return false;
    } else {
      pollfd p{fd, POLLOUT, 0};
      ::poll(&p, 1, static_cast<int>(kPollMs));
    }
  }
  return done == text.size();
}

}  // namespace

void readGpsd(const GpsdAddress& address, ScanSignals& signals, GpsSink& sink, const ScanIndicator& indicator,
              HostLookups& lookups) {
  const auto say = [&](std::u16string_view text) { sink.setStatusText(text); };
  const std::string where = address.host.find(':') != std::string::npos
                                ? "[" + address.host + "]:" + std::to_string(address.port)
                                : address.host + ":" + std::to_string(address.port);
  GpsdDecoder decoder(sink);
  uint32_t retryMs = kFirstRetryMs;
  bool searching = true;
  const std::function<bool()> ended = [&] {
    return searching ? signals.stopSet() || signals.foundSet() : signals.stopSet();
  };
  std::vector<uint8_t> chunk(kReadChunk);

  while (!ended()) {
    say(u"Поиск данных - gpsd...");
    const int fd = connectTo(address, lookups, ended);
    if (fd >= 0 && sendAll(fd, kGpsdWatch, ended)) {
      decoder.reset();
      uint32_t lastData = tickCount();
      for (;;) {
        if (searching ? signals.waitStopOrFound(0) : signals.stopSet()) break;
        pollfd p{fd, POLLIN, 0};
        const int ready = ::poll(&p, 1, static_cast<int>(kPollMs));
        if (ready < 0 && errno != EINTR) break;
        if (ready <= 0) {
          if (!searching && tickCount() - lastData > kSilenceMs) break;
          continue;
        }
        const ssize_t n = ::recv(fd, chunk.data(), chunk.size(), 0);
        if (n == 0 || (n < 0 && errno != EAGAIN && errno != EINTR)) break;
        if (n < 0) continue;
        const bool report = decoder.process(std::span<const uint8_t>(chunk.data(), static_cast<size_t>(n)));
        if (report) lastData = tickCount();
        if (report && searching) {
          searching = false;
          retryMs = kFirstRetryMs;
          signals.setFound();
          say(u"gpsd через " + utf8ToUtf16(where).value_or(u""));
          if (indicator.connected) indicator.connected();
        }
      }
    }
    if (fd >= 0) ::close(fd);
    if (ended()) return;
    if (!searching) {
      // The receiver behind gpsd went quiet, or gpsd itself went away.
      searching = true;
      signals.resetFound();
      say(u"Не обнаружено данных.");
      if (indicator.noConnection) indicator.noConnection();
    }
    sink.fixLost();
    if (signals.waitStopOrFound(retryMs)) return;
    retryMs = std::min(retryMs * 2, kLongestRetryMs);
  }
}

}  // namespace orvel
