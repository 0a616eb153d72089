#include "map/img/img_container.h"

#include <cstring>
#include <string_view>
#include <unordered_map>

#include "map/format/byte_reader.h"

namespace orvel {
namespace {

constexpr size_t kSignatureOffset = 0x10;
constexpr char kSignature[] = "DSKIMG";
constexpr size_t kSignatureLength = 6;
constexpr size_t kBlockExponents = 0x61;
constexpr size_t kHeaderAreaEnd = 0x40C;

// Directory entry fields.
constexpr size_t kEntryFlag = 0x00;
constexpr size_t kEntryName = 0x01;
constexpr size_t kEntryNameLength = 8;
constexpr size_t kEntryType = 0x09;
constexpr size_t kEntrySize = 0x0C;
constexpr size_t kEntryPartHigh = 0x11;
constexpr size_t kEntryFirstBlock = 0x20;

constexpr const char* kTypeNames[] = {"TRE", "RGN", "LBL", "NET"};

}  // namespace

uint8_t imgXorKey(std::span<const uint8_t> file) {
  return file.size() > kSignatureOffset ? static_cast<uint8_t>(file[kSignatureOffset] ^ 'D') : 0;
}

bool isImgContainer(std::span<const uint8_t> file) {
  if (file.size() < kSignatureOffset + kSignatureLength) return false;
  const uint8_t key = imgXorKey(file);
  for (size_t i = 0; i < kSignatureLength; ++i) {
    if ((file[kSignatureOffset + i] ^ key) != static_cast<uint8_t>(kSignature[i])) return false;
  }
  return true;
}

uint16_t imgBlockSize(std::span<const uint8_t> file) {
  uint8_t e1 = 0;
  uint8_t e2 = 0;
  if (!(readU8At(file, kBlockExponents, e1) && readU8At(file, kBlockExponents + 1, e2))) return 0;
  const unsigned sum = unsigned{e1} + unsigned{e2};
  return sum >= 16 ? 0 : static_cast<uint16_t>(1u << sum);
}

namespace {

// Calls visit(entry) for every directory entry that lies wholly inside the file, up to the
// entry count of the header.
template <typename Visit>
void forEachImgEntry(std::span<const uint8_t> file, Visit&& visit) {
  uint32_t headerEnd = 0;
  if (!readU32At(file, kHeaderAreaEnd, headerEnd)) return;
  // Unsigned on purpose: a header end below the directory start gives a huge count, which
  // the end of the file then cuts short.
  const uint32_t count = (headerEnd - static_cast<uint32_t>(kImgDirectoryStart)) / kImgDirectoryEntrySize;
  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t at = kImgDirectoryStart + i * kImgDirectoryEntrySize;
    if (at + kImgDirectoryEntrySize > file.size()) break;
    visit(file.subspan(static_cast<size_t>(at), kImgDirectoryEntrySize));
  }
}

// Fills the subfile an in-use first-part entry names, if it is one of the four read.
void takeSubfile(std::span<const uint8_t> entry, uint16_t blockSize, std::array<ImgSubfile, 4>& subfiles) {
  for (int type = kSubfileTre; type <= kSubfileNet; ++type) {
    if (std::memcmp(entry.data() + kEntryType, kTypeNames[type], 3) != 0) continue;
    uint16_t firstBlock = 0;
    uint32_t size = 0;
    readU16At(entry, kEntryFirstBlock, firstBlock);
    readU32At(entry, kEntrySize, size);
    ImgSubfile& subfile = subfiles[static_cast<size_t>(type)];
    subfile.found = true;
    subfile.offset = uint32_t{firstBlock} * blockSize;
    subfile.size = size;
  }
}

bool isFirstPart(std::span<const uint8_t> entry) { return entry[kEntryFlag] == 1 && entry[kEntryPartHigh] == 0; }

}  // namespace

ImgDirectory scanImgDirectory(std::span<const uint8_t> file) {
  ImgDirectory dir;
  dir.blockSize = imgBlockSize(file);
  forEachImgEntry(file, [&](std::span<const uint8_t> entry) {
    if (!isFirstPart(entry)) return;
    const auto name = entry.subspan(kEntryName, kEntryNameLength);
    if (dir.tileName.empty()) {
      dir.tileName.assign(name.begin(), name.end());
    } else if (std::memcmp(dir.tileName.data(), name.data(), kEntryNameLength) != 0) {
      return;
    }
    takeSubfile(entry, dir.blockSize, dir.subfiles);
  });
  return dir;
}

std::vector<ImgTileFiles> scanImgTiles(std::span<const uint8_t> file) {
  std::vector<ImgTileFiles> tiles;
  const uint16_t blockSize = imgBlockSize(file);
  std::unordered_map<std::string_view, size_t> byName;  // views into the file's bytes
  forEachImgEntry(file, [&](std::span<const uint8_t> entry) {
    if (!isFirstPart(entry)) return;
    const std::string_view name(reinterpret_cast<const char*>(entry.data() + kEntryName), kEntryNameLength);
    auto [it, added] = byName.try_emplace(name, tiles.size());
    if (added) tiles.push_back(ImgTileFiles{std::string(name), {}});
    takeSubfile(entry, blockSize, tiles[it->second].subfiles);
  });
  return tiles;
}

}  // namespace orvel
