#include "orv_test_util.h"

#include <cstring>

#include "map/img/label_decoder.h"
#include "map/orv/convert/orv_writer.h"

namespace orvel::test {

void Collect::onObject(const MapObject& object) {
  Decoded d;
  d.kind = object.kind;
  d.type = object.type;
  for (const MapPoint& p : object.points) {
    // The level keeps coordinates to its own resolution.
    d.points.push_back(MapPoint{static_cast<int32_t>(static_cast<uint32_t>(p.x >> shift_) << shift_),
                                static_cast<int32_t>(static_cast<uint32_t>(p.y >> shift_) << shift_)});
  }
  d.labelRef = object.labelRef;
  if (object.labelRef != 0) {
    char16_t text[kLabelCapacity + 1] = {};
    int length = 0;
    if (imgLabels_ && img_) {
      length = decodeLabel(img_->labelData(), labelByteOffset(object.labelRef, img_->labelShift()),
                           static_cast<LabelSchema>(img_->labelSchema()), img_->codePage(), text);
    } else {
      length = map_.getLabel(object.labelRef, text);
    }
    d.label = orvLabelText(std::u16string_view(text, static_cast<size_t>(length)));
  }
  objects.push_back(std::move(d));
}

const std::vector<std::string>& singleTileMaps() {
  static const std::vector<std::string> maps{
      "monaco_default_6bit.img", "monaco_default_6bit_xor5a.img", "monaco_cp1252.img", "monaco_unicode.img",
      "liechtenstein_route_cp1252_bs512.img"};
  return maps;
}

void putU32(std::vector<uint8_t>& bytes, size_t at, uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[at + static_cast<size_t>(i)] = static_cast<uint8_t>(value >> (8 * i));
}

namespace {
void appendU32(std::vector<uint8_t>& out, uint32_t v) {
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}
void appendU16(std::vector<uint8_t>& out, uint32_t v) {
  out.push_back(static_cast<uint8_t>(v));
  out.push_back(static_cast<uint8_t>(v >> 8));
}
unsigned lengthBytes(size_t n) { return n == 0 ? 0 : n < 0x100 ? 1 : n < 0x10000 ? 2 : 3; }
}  // namespace

std::vector<uint8_t> RawFile::build() {
  std::vector<uint8_t> out(kOrvHeaderSize, 0);
  const size_t tablesAt = out.size();
  for (const auto& table : tables) appendCodeTable(out, table);
  sharedStart = static_cast<uint32_t>(out.size());
  out.insert(out.end(), sharedArea.begin(), sharedArea.end());
  const size_t levelTable = out.size();
  size_t headers = levelTable + kOrvLevelEntrySize * levels.size();
  size_t headerBytes = 0;
  for (const RawLevel& level : levels) {
    for (const RawBlock& b : level.blocks) {
      headerBytes += kOrvBlockHeaderSize;
      for (const auto& s : b.sections) headerBytes += lengthBytes(s.size());
    }
  }
  size_t data = headers + headerBytes;
  size_t blockAt = headers;
  for (const RawLevel& level : levels) {
    appendU32(out, static_cast<uint32_t>(blockAt));
    appendU16(out, static_cast<uint32_t>(level.blocks.size()));
    appendU16(out, level.bits);
    for (const RawBlock& b : level.blocks) {
      blockAt += kOrvBlockHeaderSize;
      for (const auto& s : b.sections) blockAt += lengthBytes(s.size());
    }
  }
  std::vector<uint8_t> objectData;
  for (const RawLevel& level : levels) {
    for (const RawBlock& b : level.blocks) {
      appendU32(out, b.x);
      appendU32(out, b.y);
      appendU16(out, b.w);
      appendU16(out, b.h);
      uint32_t word = static_cast<uint32_t>(data + objectData.size());
      for (size_t i = 0; i < 3; ++i) word |= lengthBytes(b.sections[i].size()) << (24 + 2 * i);
      appendU32(out, word);
      for (const auto& s : b.sections) {
        for (unsigned k = 0; k < lengthBytes(s.size()); ++k) out.push_back(static_cast<uint8_t>(s.size() >> (8 * k)));
      }
      for (const auto& s : b.sections) objectData.insert(objectData.end(), s.begin(), s.end());
    }
  }
  out.insert(out.end(), objectData.begin(), objectData.end());
  std::memcpy(out.data(), "GORV", 4);
  putU32(out, kOrvVersionAt, kOrvVersion);
  putU32(out, kOrvFileSizeAt, static_cast<uint32_t>(out.size()));
  putU32(out, kOrvBoundsAt, static_cast<uint32_t>(bounds.west) << 8);
  putU32(out, kOrvBoundsAt + 4, static_cast<uint32_t>(bounds.south) << 8);
  putU32(out, kOrvBoundsAt + 8, static_cast<uint32_t>(bounds.east) << 8);
  putU32(out, kOrvBoundsAt + 12, static_cast<uint32_t>(bounds.north) << 8);
  putU32(out, kOrvCodeTablesAt, static_cast<uint32_t>(tablesAt));
  putU32(out, kOrvSharedLabelsAt, sharedStart);
  putU32(out, kOrvSharedIndexBitsAt, sharedIndexBits);
  putU32(out, kOrvLevelTableAt, static_cast<uint32_t>(levelTable));
  putU32(out, kOrvLevelCountAt, static_cast<uint32_t>(levels.size()));
  putU32(out, kOrvBiasXAt, static_cast<uint32_t>(biasX));
  putU32(out, kOrvBiasYAt, static_cast<uint32_t>(biasY));
  return out;
}

}  // namespace orvel::test
