#include "track/waypoint_file.h"

#include <algorithm>

#include "track/le_bytes.h"

namespace orvel {
namespace {

void putRaw(std::string& bytes, const uint8_t* data, size_t count) {
  bytes.append(reinterpret_cast<const char*>(data), count);
}

void put32(std::string& bytes, uint32_t value) {
  uint8_t raw[4];
  le::store32(raw, value);
  putRaw(bytes, raw, sizeof raw);
}

void readFixedRecord(const uint8_t* p, Waypoint& w) {
  w.reserved0 = le::load32(p);
  w.lon = static_cast<Semicircles>(le::load32(p + 4));
  w.lat = static_cast<Semicircles>(le::load32(p + 8));
  w.time = le::loadDouble(p + 12);
  w.altitude = le::loadFloat(p + 20);
  w.reserved24 = le::load32(p + 24);
  w.attributeA = p[28];
  w.attributeB = p[29];
  w.reserved30 = le::load16(p + 30);
}

}  // namespace

std::u16string_view Waypoint::name() const {
  const std::u16string_view text = strings[kWaypointName];
  return text.substr(0, text.find(u'\0'));
}

void setWaypointString(Waypoint& waypoint, size_t slot, std::u16string_view text) {
  if (slot >= kWaypointStrings) return;
  waypoint.strings[slot] = std::u16string(text.substr(0, text.find(u'\0')));
}

bool parseWaypointFile(std::span<const uint8_t> bytes, std::vector<Waypoint>& out) {
  const size_t size = bytes.size();
  if (size < 5 || bytes[0] != 'W' || bytes[1] != 'O') return false;
  const size_t fixedSize = bytes[3];
  const size_t stringCount = bytes[4];
  size_t pos = 3 + size_t{bytes[2]};
  // Records of no bytes at all would never reach the end.
  if (fixedSize == 0 && stringCount == 0) return pos >= size;
  while (pos < size) {
    // The fixed record is always read as 32 bytes, whatever size the header gives it.
    if (size - pos < std::max(kWaypointRecordSize, fixedSize)) return false;
    Waypoint w;
    readFixedRecord(bytes.data() + pos, w);
    pos += fixedSize;
    for (size_t i = 0; i < stringCount; ++i) {
      if (size - pos < 4) return false;
      const uint64_t units = le::load32(bytes.data() + pos);
      pos += 4;
      if (size - pos < 2 * units) return false;
      if (i < kWaypointStrings) {
        std::u16string& text = w.strings[i];
        text.resize(static_cast<size_t>(units));
        for (size_t u = 0; u < units; ++u) text[u] = static_cast<char16_t>(le::load16(bytes.data() + pos + 2 * u));
      }
      pos += static_cast<size_t>(2 * units);
    }
    out.push_back(std::move(w));
  }
  return true;
}

std::string waypointFileHeader() {
  return std::string{'W', 'O', 2, static_cast<char>(kWaypointRecordSize), static_cast<char>(kWaypointStrings)};
}

void appendWaypointRecord(std::string& bytes, const Waypoint& w) {
  uint8_t fixed[kWaypointRecordSize] = {};
  le::store32(fixed, w.reserved0);
  le::store32(fixed + 4, static_cast<uint32_t>(w.lon));
  le::store32(fixed + 8, static_cast<uint32_t>(w.lat));
  le::storeDouble(fixed + 12, w.time);
  le::storeFloat(fixed + 20, w.altitude);
  le::store32(fixed + 24, w.reserved24);
  fixed[28] = w.attributeA;
  fixed[29] = w.attributeB;
  le::store16(fixed + 30, w.reserved30);
  putRaw(bytes, fixed, sizeof fixed);
  for (const std::u16string& text : w.strings) {
    put32(bytes, static_cast<uint32_t>(text.size()));
    for (char16_t unit : text) {
      uint8_t raw[2];
      le::store16(raw, static_cast<uint16_t>(unit));
      putRaw(bytes, raw, sizeof raw);
    }
  }
}

}  // namespace orvel
