#pragma once
// Pseudo-terminals standing in for serial ports, and a receiver behind one: a thread that
// writes a recorded capture into the master end at a receiver's pace. The scanner opens the
// slave end by its path, as it would a USB receiver.
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "gps/capture_replay.h"

namespace orvel {

using PtyClock = std::chrono::steady_clock;

// Polls `done` every 10 ms for up to `ms`; its last answer.
inline bool waitUntil(const std::function<bool()>& done, int ms) {
  for (const auto until = PtyClock::now() + std::chrono::milliseconds(ms); !done(); std::this_thread::sleep_for(std::chrono::milliseconds(10))) {
    if (PtyClock::now() >= until) return done();
  }
  return true;
}

// A pseudo-terminal, raw from the start (no echo back into the master, no line editing). The
// slave end is held so that the terminal lives while the scanner reopens it.
struct PtyPair {
  PtyPair() {
    char name[256] = {};
    termios tio{};
    if (::openpty(&master, &slave, name, nullptr, nullptr) != 0 || ::tcgetattr(slave, &tio) != 0) return;
    ::cfmakeraw(&tio);
    ::tcsetattr(slave, TCSANOW, &tio);
    path = name;
  }
  ~PtyPair() { ::close(master), ::close(slave); }
  PtyPair(const PtyPair&) = delete;
  int master = -1, slave = -1;
  std::string path;
};

// A receiver: writes `capture` into `fd` burst by burst, 150 ms apart, over and over until
// stopped; with `chunk`, in pieces of that many bytes instead (as a USB receiver delivers
// large reads). What the other end writes is read and dropped.
inline std::jthread receiverThread(int fd, std::vector<uint8_t> capture, size_t chunk = 0) {
  return std::jthread([fd, capture = std::move(capture), chunk](const std::stop_token& stop) {
    std::vector<size_t> bursts = chunk > 0 ? std::vector<size_t>{} : analyseCapture(capture).burstStarts;
    for (size_t at = chunk; chunk > 0 && at < capture.size(); at += chunk) bursts.push_back(at);
    bursts.insert(bursts.begin(), 0);
    bursts.push_back(capture.size());
    for (size_t b = 0; !stop.stop_requested(); b = (b + 1) % (bursts.size() - 1)) {
      for (size_t at = bursts[b]; at < bursts[b + 1];) {
        const ssize_t n = ::write(fd, capture.data() + at, bursts[b + 1] - at);
        if (n <= 0) return;
        at += static_cast<size_t>(n);
      }
      for (const auto due = PtyClock::now() + std::chrono::milliseconds(150); !stop.stop_requested() && PtyClock::now() < due;) {
        pollfd p{fd, POLLIN, 0};
        uint8_t in[256];
        if (::poll(&p, 1, 10) > 0 && (p.revents & POLLIN) && ::read(fd, in, sizeof in) <= 0) return;
      }
    }
  });
}

}  // namespace orvel
