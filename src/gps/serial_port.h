#pragma once
// One serial device opened for a receiver: raw 8-bit line, no flow control, never blocking.
// Reads and writes are bounded: a read takes only what is already waiting, a write gives up
// when the port's write time-outs run out. After a read or write error (the device was
// unplugged, the other end of a pseudo-terminal closed) the port counts as failed: it reads
// nothing and writes nothing until it is opened again.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "gps/gps_protocol.h"

namespace orvel {

class SerialPort final : public GpsPort {
 public:
  SerialPort() = default;
  ~SerialPort() override;
  SerialPort(const SerialPort&) = delete;
  SerialPort& operator=(const SerialPort&) = delete;

  // Opens `path` for reading and writing, exclusively (a second open by anyone fails), and
  // sets a raw 4800 baud 8N1 line. False, with the port closed, when that fails.
  bool open(const std::string& path);
  void close();
  bool isOpen() const { return fd_ >= 0; }
  // Open, and no error since.
  bool healthy() const { return fd_ >= 0 && !failed_; }
  const std::string& path() const { return path_; }

  // Baud rates a receiver uses (1200..115200); others are refused and the line stays as it
  // was. Parity is even when `parity` is set; the receiver lines use none.
  void setLineSettings(uint32_t baud, uint8_t dataBits, bool parity, uint8_t stopBits) override;
  void setTimeouts(const PortTimeouts& timeouts) override { timeouts_ = timeouts; }
  void purge() override;
  // Writes all of `bytes` unless the write time-out (multiplier per byte plus constant)
  // runs out first.
  void write(std::span<const uint8_t> bytes) override;

  // Bytes waiting in the receive queue; 0 when none, closed or failed.
  size_t bytesWaiting();
  // Reads at most out.size() waiting bytes without waiting; returns how many (0 on error).
  size_t read(std::span<uint8_t> out);

  uint32_t baud() const { return baud_; }

 private:
  void fail() { failed_ = true; }

  int fd_ = -1;
  bool failed_ = false;
  std::string path_;
  uint32_t baud_ = 0;
  PortTimeouts timeouts_{};
};

}  // namespace orvel
