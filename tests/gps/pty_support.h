#pragma once
// Pseudo-terminal pairs standing in for serial ports, and a receiver behind one: a thread
// that writes a recorded capture into the master end at a receiver's pace. The scanner opens
// the slave end by its path, as it would a USB receiver. A socket listening on the loopback
// address stands in for gpsd.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "gps/capture_replay.h"

namespace orvel::test {

class PtyPair {
 public:
  PtyPair() {
    char name[256] = {};
    if (::openpty(&master_, &slave_, name, nullptr, nullptr) != 0) return;
    termios tio{};  // raw from the start: no echo back into the master, no line editing
    ::tcgetattr(slave_, &tio);
    ::cfmakeraw(&tio);
    ::tcsetattr(slave_, TCSANOW, &tio);
    path_ = name;
  }
  // The slave end is held so that the terminal lives while the scanner reopens it.
  ~PtyPair() {
    if (master_ >= 0) ::close(master_);
    if (slave_ >= 0) ::close(slave_);
  }
  PtyPair(const PtyPair&) = delete;
  PtyPair& operator=(const PtyPair&) = delete;
  bool ok() const { return master_ >= 0 && !path_.empty(); }
  int master() const { return master_; }
  const std::string& slavePath() const { return path_; }

 private:
  int master_ = -1, slave_ = -1;
  std::string path_;
};

inline bool writeAll(int fd, const uint8_t* data, size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, data, size);
    if (n <= 0) return false;
    data += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

// Writes `capture` burst by burst into `fd`, `gapMs` apart, over and over until stopped; with
// `chunk`, in pieces of that many bytes instead (as a USB receiver delivers large reads). What
// the other end writes is read and dropped.
class ReceiverThread {
 public:
  ReceiverThread(int fd, std::vector<uint8_t> capture, uint32_t gapMs, size_t chunk = 0)
      : thread_([this, fd, capture = std::move(capture), gapMs, chunk] { run(fd, capture, gapMs, chunk); }) {}
  ~ReceiverThread() {
    stop_ = true;
    thread_.join();
  }

 private:
  void run(int fd, const std::vector<uint8_t>& capture, uint32_t gapMs, size_t chunk) {
    std::vector<size_t> bursts = chunk > 0 ? std::vector<size_t>{} : analyseCapture(capture).burstStarts;
    for (size_t at = chunk; chunk > 0 && at < capture.size(); at += chunk) bursts.push_back(at);
    bursts.insert(bursts.begin(), 0);
    bursts.push_back(capture.size());
    while (!stop_) {
      for (size_t b = 0; b + 1 < bursts.size() && !stop_; ++b) {
        if (!writeAll(fd, capture.data() + bursts[b], bursts[b + 1] - bursts[b])) return;
        const auto due = std::chrono::steady_clock::now() + std::chrono::milliseconds(gapMs);
        while (!stop_ && std::chrono::steady_clock::now() < due) {
          pollfd p{fd, POLLIN, 0};
          uint8_t in[256];
          if (::poll(&p, 1, 10) > 0 && (p.revents & POLLIN) && ::read(fd, in, sizeof in) <= 0) return;
        }
      }
    }
  }

  std::atomic<bool> stop_{false};
  std::thread thread_;
};

// A listening socket on 127.0.0.1 and its port.
inline int listenLocal(uint16_t& port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof a;
  if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&a), size) != 0 || ::listen(fd, 4) != 0 ||
      ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &size) != 0) {
    if (fd >= 0) ::close(fd);
    return -1;
  }
  port = ntohs(a.sin_port);
  return fd;
}

// Polls `done` every 10 ms for up to `ms`; its last answer.
inline bool waitUntil(const std::function<bool()>& done, int ms) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  while (!done()) {
    if (std::chrono::steady_clock::now() >= until) return done();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

}  // namespace orvel::test
