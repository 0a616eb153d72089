#pragma once
// Pseudo-terminal pairs standing in for serial ports, and receivers behind them: a thread
// that writes a recorded capture into the master end at a receiver's pace, and for Garmin
// one that also acknowledges the commands it is sent. The scanner opens the slave end by
// its path, as it would a USB receiver. A socket listening on the loopback address stands
// in for gpsd.
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
    int slave = -1;
    char name[256] = {};
    if (::openpty(&master_, &slave, name, nullptr, nullptr) != 0) return;
    // Raw from the start: no echo back into the master, no line editing.
    termios tio{};
    ::tcgetattr(slave, &tio);
    ::cfmakeraw(&tio);
    ::tcsetattr(slave, TCSANOW, &tio);
    slave_ = slave;
    path_ = name;
  }
  ~PtyPair() {
    closeMaster();
    if (slave_ >= 0) ::close(slave_);
  }
  PtyPair(const PtyPair&) = delete;
  PtyPair& operator=(const PtyPair&) = delete;

  bool ok() const { return master_ >= 0 && !path_.empty(); }
  int master() const { return master_; }
  const std::string& slavePath() const { return path_; }
  // The receiver is unplugged.
  void closeMaster() {
    if (master_ >= 0) ::close(master_);
    master_ = -1;
  }

 private:
  int master_ = -1;
  int slave_ = -1;  // held so that the terminal lives while the scanner reopens it
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
// `chunk`, in pieces of that many bytes instead (as a USB receiver delivers large reads).
// With `ackGarmin`, every Garmin command read from `fd` is acknowledged between bursts.
class ReceiverThread {
 public:
  ReceiverThread(int fd, std::vector<uint8_t> capture, uint32_t gapMs, bool ackGarmin = false, size_t chunk = 0)
      : thread_([this, fd, capture = std::move(capture), gapMs, ackGarmin, chunk] {
          run(fd, capture, gapMs, ackGarmin, chunk);
        }) {}
  ~ReceiverThread() { stop(); }
  void stop() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
  }
  int acks() const { return acks_; }

 private:
  void run(int fd, const std::vector<uint8_t>& capture, uint32_t gapMs, bool ackGarmin, size_t chunk) {
    std::vector<size_t> bursts;
    if (chunk > 0) {
      for (size_t at = 0; at < capture.size(); at += chunk) bursts.push_back(at);
    } else {
      bursts = analyseCapture(capture).burstStarts;
    }
    if (bursts.empty() || bursts.front() != 0) bursts.insert(bursts.begin(), 0);
    while (!stop_) {
      for (size_t b = 0; b < bursts.size() && !stop_; ++b) {
        const size_t end = b + 1 < bursts.size() ? bursts[b + 1] : capture.size();
        if (!writeAll(fd, capture.data() + bursts[b], end - bursts[b])) return;
        const auto due = std::chrono::steady_clock::now() + std::chrono::milliseconds(gapMs);
        while (!stop_ && std::chrono::steady_clock::now() < due) {
          pollfd p{fd, POLLIN, 0};
          if (::poll(&p, 1, 10) <= 0 || !(p.revents & POLLIN)) continue;
          uint8_t in[256];
          const ssize_t n = ::read(fd, in, sizeof in);
          if (n <= 0) return;
          if (!ackGarmin) continue;
          // DLE 0x0A ... is a command; the answer is ACK (id 6) of packet 10.
          for (ssize_t i = 0; i + 1 < n; ++i) {
            if (in[i] == 0x10 && in[i + 1] == 0x0A) {
              static constexpr uint8_t kAck[] = {0x10, 0x06, 0x02, 0x0A, 0x00, 0xEE, 0x10, 0x03};
              writeAll(fd, kAck, sizeof kAck);
              ++acks_;
            }
          }
        }
      }
    }
  }

  std::atomic<bool> stop_{false};
  std::atomic<int> acks_{0};
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
