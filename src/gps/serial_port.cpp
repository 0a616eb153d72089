#include "gps/serial_port.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace orvel {
namespace {

speed_t speedFor(uint32_t baud) {
  switch (baud) {
    case 1200: return B1200;
    case 2400: return B2400;
    case 4800: return B4800;
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 115200: return B115200;
    default: return B0;
  }
}

tcflag_t sizeFor(uint8_t dataBits) {
  switch (dataBits) {
    case 5: return CS5;
    case 6: return CS6;
    case 7: return CS7;
    default: return CS8;
  }
}

}  // namespace

SerialPort::~SerialPort() { close(); }

bool SerialPort::open(const std::string& path) {
  close();
  const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  // A terminal must be one; claim it so that nobody else opens it while we read. The lock
  // keeps out other readers that lock (and our own threads) even where the terminal's
  // exclusive mode does not hold, as for root.
  if (::isatty(fd) != 1 || ::flock(fd, LOCK_EX | LOCK_NB) != 0 || ::ioctl(fd, TIOCEXCL) != 0) {
    ::close(fd);
    return false;
  }
  fd_ = fd;
  failed_ = false;
  path_ = path;
  setLineSettings(4800, 8, false, 1);
  if (failed_) {
    close();
    return false;
  }
  return true;
}

void SerialPort::close() {
  if (fd_ >= 0) {
    // Output stuck behind flow control would hold close() for the line's closing wait.
    ::tcflush(fd_, TCOFLUSH);
    ::ioctl(fd_, TIOCNXCL);
    ::close(fd_);
  }
  fd_ = -1;
  failed_ = false;
}

void SerialPort::setLineSettings(uint32_t baud, uint8_t dataBits, bool parity, uint8_t stopBits) {
  if (!healthy()) return;
  const speed_t speed = speedFor(baud);
  if (speed == B0) return;
  termios tio{};
  if (::tcgetattr(fd_, &tio) != 0) return fail();
  ::cfmakeraw(&tio);
  tio.c_cflag &= ~(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
  tio.c_cflag |= sizeFor(dataBits) | CLOCAL | CREAD;
  if (parity) tio.c_cflag |= PARENB;
  if (stopBits >= 2) tio.c_cflag |= CSTOPB;
  tio.c_iflag &= ~(IXON | IXOFF | IXANY | INPCK);
  if (parity) tio.c_iflag |= INPCK;
  tio.c_cc[VMIN] = 0;
  tio.c_cc[VTIME] = 0;
  ::cfsetispeed(&tio, speed);
  ::cfsetospeed(&tio, speed);
  if (::tcsetattr(fd_, TCSANOW, &tio) != 0) return fail();
  baud_ = baud;
}

void SerialPort::purge() {
  if (healthy()) ::tcflush(fd_, TCIOFLUSH);
}

void SerialPort::write(std::span<const uint8_t> bytes) {
  if (!healthy()) return;
  const uint32_t limit = timeouts_.writeTotalConstant + timeouts_.writeTotalMultiplier * static_cast<uint32_t>(bytes.size());
  const uint32_t start = tickCount();
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = ::write(fd_, bytes.data() + done, bytes.size() - done);
    if (n > 0) {
      done += static_cast<size_t>(n);
      continue;
    }
    if (n < 0 && errno != EAGAIN && errno != EINTR) return fail();
    const uint32_t spent = tickCount() - start;
    if (spent >= limit) return;  // a write time-out is not an error
    pollfd p{fd_, POLLOUT, 0};
    if (::poll(&p, 1, static_cast<int>(limit - spent)) < 0 && errno != EINTR) return fail();
    if (p.revents & (POLLERR | POLLHUP | POLLNVAL)) return fail();
  }
}

size_t SerialPort::bytesWaiting() {
  if (!healthy()) return 0;
  int waiting = 0;
  if (::ioctl(fd_, FIONREAD, &waiting) != 0) {
    fail();
    return 0;
  }
  if (waiting > 0) return static_cast<size_t>(waiting);
  // Nothing queued: tell a quiet line from a dead one (a pseudo-terminal's writer gone, an
  // adapter unplugged), which shows as a hang-up or an error.
  pollfd p{fd_, POLLIN, 0};
  if (::poll(&p, 1, 0) > 0 && (p.revents & (POLLERR | POLLHUP | POLLNVAL))) fail();
  return 0;
}

size_t SerialPort::read(std::span<uint8_t> out) {
  if (!healthy() || out.empty()) return 0;
  const ssize_t n = ::read(fd_, out.data(), out.size());
  if (n > 0) return static_cast<size_t>(n);
  if (n == 0 || (errno != EAGAIN && errno != EINTR)) fail();
  return 0;
}

}  // namespace orvel
