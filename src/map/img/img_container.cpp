#include "map/img/img_container.h"

#include <cstring>

#include "map/img/byte_reader.h"

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

ImgDirectory scanImgDirectory(std::span<const uint8_t> file) {
  ImgDirectory dir;
  dir.blockSize = imgBlockSize(file);
  uint32_t headerEnd = 0;
  if (!readU32At(file, kHeaderAreaEnd, headerEnd)) return dir;
  // Unsigned on purpose: a header end below the directory start gives a huge count, which
  // the end of the file then cuts short.
  const uint32_t count = (headerEnd - static_cast<uint32_t>(kImgDirectoryStart)) / kImgDirectoryEntrySize;

  for (uint64_t i = 0; i < count; ++i) {
    const uint64_t at = kImgDirectoryStart + i * kImgDirectoryEntrySize;
    if (at + kImgDirectoryEntrySize > file.size()) break;
    const auto entry = file.subspan(static_cast<size_t>(at), kImgDirectoryEntrySize);
    if (entry[kEntryFlag] != 1 || entry[kEntryPartHigh] != 0) continue;

    const auto name = entry.subspan(kEntryName, kEntryNameLength);
    if (dir.tileName.empty()) {
      dir.tileName.assign(name.begin(), name.end());
    } else if (std::memcmp(dir.tileName.data(), name.data(), kEntryNameLength) != 0) {
      continue;
    }

    for (int type = kSubfileTre; type <= kSubfileNet; ++type) {
      if (std::memcmp(entry.data() + kEntryType, kTypeNames[type], 3) != 0) continue;
      uint16_t firstBlock = 0;
      uint32_t size = 0;
      readU16At(entry, kEntryFirstBlock, firstBlock);
      readU32At(entry, kEntrySize, size);
      ImgSubfile& subfile = dir.subfiles[static_cast<size_t>(type)];
      subfile.found = true;
      subfile.offset = uint32_t{firstBlock} * dir.blockSize;
      subfile.size = size;
    }
  }
  return dir;
}

}  // namespace orvel
