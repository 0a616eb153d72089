#pragma once
// Packets of the Garmin binary serial protocol. On the wire: DLE, id, data size, data,
// checksum, DLE, ETX; a DLE inside is sent twice. The checksum is the two's complement of
// the 8-bit sum of id, size and data.
#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace orvel {

inline constexpr uint8_t kDle = 0x10;
inline constexpr uint8_t kEtx = 0x03;

inline constexpr uint8_t kGarminAck = 6;
inline constexpr uint8_t kGarminCommand = 10;
inline constexpr uint8_t kGarminNak = 21;
inline constexpr uint8_t kGarminPvt = 51;  // position, velocity and time record
inline constexpr uint8_t kGarminCommandStartPvt = 49;
inline constexpr uint8_t kGarminCommandStopPvt = 50;

using GarminWirePacket = std::array<uint8_t, 8>;
inline constexpr GarminWirePacket kStartPvtPacket{0x10, 0x0A, 0x02, 0x31, 0x00, 0xC3, 0x10, 0x03};
inline constexpr GarminWirePacket kStopPvtPacket{0x10, 0x0A, 0x02, 0x32, 0x00, 0xC2, 0x10, 0x03};
// Kept for completeness; the receiver is paced with the stop command instead.
inline constexpr GarminWirePacket kAckPvtPacket{0x10, 0x06, 0x02, 0x33, 0x00, 0xC5, 0x10, 0x03};
inline constexpr GarminWirePacket kNakPvtPacket{0x10, 0x15, 0x02, 0x33, 0x00, 0xB6, 0x10, 0x03};

// The checksum of id, size and data.
uint8_t garminChecksum(std::span<const uint8_t> idSizeData);

// The packet as a well-behaved sender puts it on the wire, with the size taken from the data
// (at most 255 bytes are sent) and every DLE after the leading one doubled.
std::vector<uint8_t> frameGarminPacket(uint8_t id, std::span<const uint8_t> data);

// Assembles received bytes into packets the way the program always has: the leading DLE is
// not stored, the DLE before ETX is stored as the last byte, a doubled DLE is stored twice,
// and the byte after a doubled DLE starts a new packet (so a packet whose data hold a DLE is
// lost, usually to its checksum). Bytes beyond 256 are dropped.
class GarminFramer {
 public:
  static constexpr size_t kPacketSize = 256;

  void reset() {
    length_ = 0;
    lastByte_ = 0;
  }
  // True when `b` ends a packet (ETX after DLE); packet() then holds it.
  bool feed(uint8_t b);
  // Id, size, data, checksum and the closing DLE.
  std::span<const uint8_t> packet() const { return {packet_.data(), length_}; }

 private:
  void append(uint8_t b) {
    if (length_ < packet_.size()) packet_[length_++] = b;
  }
  std::array<uint8_t, kPacketSize> packet_{};
  size_t length_ = 0;
  uint8_t lastByte_ = 0;
};

enum class GarminPacketCheck {
  kChecksumMismatch,  // ignored, but still counts as a packet
  kMalformed,         // too short, or its size does not match its length
  kGood,
};
// Checks a packet as GarminFramer stores it.
GarminPacketCheck checkGarminPacket(std::span<const uint8_t> packet);

// Finds the well-formed packets of a stream (proper DLE unstuffing, valid checksum, matching
// size) and calls `found` with each one's id, data and the offset just past its ETX.
void scanGarminPackets(std::span<const uint8_t> bytes,
                       const std::function<void(uint8_t id, std::span<const uint8_t> data, size_t end)>& found);

}  // namespace orvel
