#include "track/mps_reader.h"

#include <algorithm>

#include "track/le_bytes.h"

namespace orvel {
namespace {

MpsPoint decodePoint(const uint8_t* p) {
  MpsPoint point;
  point.latitude = static_cast<Semicircles>(le::load32(p));
  point.longitude = static_cast<Semicircles>(le::load32(p + 4));
  point.hasAltitude = p[8] != 0;
  point.altitude = le::loadDouble(p + 9);
  point.hasTime = p[17] != 0;
  point.time = le::load32(p + 18);
  point.hasDepth = p[22] != 0;
  point.depth = le::loadDouble(p + 23);
  return point;
}

std::optional<MpsTrack> readTrack(std::span<const uint8_t> data, bool cutShort) {
  MpsTrack track;
  const auto zero = std::find(data.begin(), data.end(), uint8_t{0});
  if (zero == data.end()) return std::nullopt;
  track.name.assign(data.begin(), zero);
  size_t pos = static_cast<size_t>(zero - data.begin()) + 1;
  if (data.size() - pos < 9) return std::nullopt;
  track.display = data[pos];
  track.colour = le::load32(data.data() + pos + 1);
  uint32_t count = le::load32(data.data() + pos + 5);
  pos += 9;
  if (cutShort) count = static_cast<uint32_t>((data.size() - pos) / kMpsPointSize);
  if ((data.size() - pos) / kMpsPointSize != count || (!cutShort && (data.size() - pos) % kMpsPointSize != 0)) {
    return std::nullopt;
  }
  track.pointBytes = data.subspan(pos, size_t{count} * kMpsPointSize);
  track.points.reserve(count);
  for (uint32_t i = 0; i < count; ++i, pos += kMpsPointSize) track.points.push_back(decodePoint(data.data() + pos));
  return track;
}

}  // namespace

std::optional<MpsFile> readMpsFile(std::span<const uint8_t> bytes, bool cutShort) {
  if (cutShort && bytes.empty()) return MpsFile{};
  if (bytes.size() < 6 || std::memcmp(bytes.data(), "MsRcd\0", 6) != 0) return std::nullopt;
  MpsFile file;
  size_t pos = 6;
  while (pos < bytes.size()) {
    if (file.ended || bytes.size() - pos < 5) return std::nullopt;
    MpsRecord record;
    record.offset = pos;
    record.length = le::load32(bytes.data() + pos);
    record.type = static_cast<char>(bytes[pos + 4]);
    pos += 5;
    // A track cut short is the last record and runs to the end of the file, whether its
    // length is still the placeholder or was patched while its count was not.
    const bool open = cutShort && record.type == 'T' &&
                      (record.length == kMpsLengthPlaceholder || bytes.size() - pos <= record.length);
    if (open) record.length = static_cast<uint32_t>(bytes.size() - pos);
    if (bytes.size() - pos < record.length) return std::nullopt;
    const auto data = bytes.subspan(pos, record.length);
    pos += record.length;
    file.records.push_back(record);
    switch (record.type) {
      case 'D':
        if (data.empty()) return std::nullopt;
        file.version = static_cast<char>(data[0]);
        break;
      case 'T': {
        auto track = readTrack(data, open);
        if (!track) return std::nullopt;
        file.tracks.push_back(std::move(*track));
        break;
      }
      case 'V':
        file.ended = true;
        break;
      default:
        break;
    }
  }
  return file;
}

}  // namespace orvel
