#include "gps/garmin_packet.h"

namespace orvel {

uint8_t garminChecksum(std::span<const uint8_t> idSizeData) {
  uint8_t sum = 0;
  for (uint8_t b : idSizeData) sum = static_cast<uint8_t>(sum + b);
  return static_cast<uint8_t>(-sum);
}

std::vector<uint8_t> frameGarminPacket(uint8_t id, std::span<const uint8_t> data) {
  if (data.size() > 255) data = data.first(255);
  std::vector<uint8_t> body{id, static_cast<uint8_t>(data.size())};
  body.insert(body.end(), data.begin(), data.end());
  body.push_back(garminChecksum(body));
  std::vector<uint8_t> wire{kDle};
  for (uint8_t b : body) {
    wire.push_back(b);
    if (b == kDle) wire.push_back(kDle);
  }
  wire.push_back(kDle);
  wire.push_back(kEtx);
  return wire;
}

bool GarminFramer::feed(uint8_t b) {
  bool ended = false;
  if (lastByte_ == kDle) {
    if (b == kDle) {
      append(b);
    } else if (b == kEtx) {
      ended = true;
    } else {
      length_ = 0;  // a new packet begins with its id
      append(b);
    }
  } else {
    append(b);
  }
  lastByte_ = b;
  return ended;
}

GarminPacketCheck checkGarminPacket(std::span<const uint8_t> packet) {
  const size_t n = packet.size();
  if (n >= 2) {
    // Over id, size and data; a DLE right after a DLE is the stuffing of the first.
    uint8_t sum = 0;
    for (size_t i = 0; i < n - 2; ++i) {
      if (i > 0 && packet[i] == kDle && packet[i - 1] == kDle) continue;
      sum = static_cast<uint8_t>(sum - packet[i]);
    }
    if (sum != packet[n - 2]) return GarminPacketCheck::kChecksumMismatch;
  }
  if (n < 3 || n != static_cast<size_t>(packet[1]) + 4) return GarminPacketCheck::kMalformed;
  return GarminPacketCheck::kGood;
}

void scanGarminPackets(std::span<const uint8_t> bytes,
                       const std::function<void(uint8_t id, std::span<const uint8_t> data, size_t end)>& found) {
  size_t i = 0;
  while (i + 1 < bytes.size()) {
    if (bytes[i] != kDle || bytes[i + 1] == kDle || bytes[i + 1] == kEtx) {
      ++i;
      continue;
    }
    // A candidate packet: unstuff until DLE ETX.
    std::vector<uint8_t> body;
    size_t j = i + 1;
    bool closed = false;
    while (j < bytes.size() && body.size() <= 258) {  // no packet is longer
      if (bytes[j] == kDle) {
        if (j + 1 >= bytes.size()) break;
        if (bytes[j + 1] == kDle) {
          body.push_back(kDle);
          j += 2;
          continue;
        }
        if (bytes[j + 1] == kEtx) closed = true;
        break;
      }
      body.push_back(bytes[j++]);
    }
    const bool wellFormed = closed && body.size() >= 3 && body.size() == static_cast<size_t>(body[1]) + 3 &&
                            garminChecksum(std::span(body).first(body.size() - 1)) == body.back();
    if (!wellFormed) {
      ++i;
      continue;
    }
    found(body[0], std::span(body).subspan(2, body[1]), j + 2);
    i = j + 2;
  }
}

}  // namespace orvel
