#include "mapset_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <vector>

#include "map/img/img_container.h"

namespace orvel::bench {
namespace {

constexpr size_t kBlocksPerEntry = 240;  // 16-bit block numbers from 0x20 to the entry's end
constexpr uint32_t kLastBlock = 0xFFFF;

using ByteVector = std::vector<uint8_t>;

uint32_t get(const ByteVector& b, size_t at, int width) {
  uint32_t v = 0;
  for (int i = 0; i < width; ++i) v |= uint32_t{b[at + static_cast<size_t>(i)]} << (8 * i);
  return v;
}

void put(ByteVector& b, size_t at, uint64_t v, int width) {
  for (int i = 0; i < width; ++i) b[at + static_cast<size_t>(i)] = static_cast<uint8_t>(v >> (8 * i));
}

// Adds d to the 24-bit value at `at`, wrapping in 24 bits.
void shift24(ByteVector& b, size_t at, int32_t d) { put(b, at, (get(b, at, 3) + static_cast<uint32_t>(d)) & 0xFFFFFF, 3); }

// Moves a TRE by (dx, dy): its bounds and every subdivision centre. False if it is malformed.
bool moveTre(ByteVector& tre, int32_t dx, int32_t dy) {
  if (tre.size() < 0x31) return false;
  shift24(tre, 0x15, dy);  // north
  shift24(tre, 0x18, dx);  // east
  shift24(tre, 0x1B, dy);  // south
  shift24(tre, 0x1E, dx);  // west
  const uint32_t levelsAt = get(tre, 0x21, 4);
  const uint32_t levelsLength = get(tre, 0x25, 4);
  const uint32_t subsAt = get(tre, 0x29, 4);
  if (uint64_t{levelsAt} + levelsLength > tre.size() || levelsLength < 4) return false;
  std::vector<uint32_t> counts;
  for (uint32_t at = levelsAt; at + 4 <= levelsAt + levelsLength; at += 4) counts.push_back(get(tre, at + 2, 2));
  size_t at = subsAt;
  for (size_t level = 0; level < counts.size(); ++level) {
    const size_t record = level + 1 < counts.size() ? 16 : 14;
    for (uint32_t k = 0; k < counts[level]; ++k, at += record) {
      if (at + record > tre.size()) return false;
      shift24(tre, at + 4, dx);
      shift24(tre, at + 7, dy);
    }
  }
  return true;
}

uint64_t roundUp(uint64_t v, uint64_t block) { return (v + block - 1) / block * block; }

bool writeAt(int fd, const uint8_t* data, size_t length, uint64_t at) {
  while (length > 0) {
    const ssize_t n = pwrite(fd, data, length, static_cast<off_t>(at));
    if (n <= 0) return false;
    data += n;
    length -= static_cast<size_t>(n);
    at += static_cast<uint64_t>(n);
  }
  return true;
}

}  // namespace

bool writeMapSet(const std::filesystem::path& source, const std::filesystem::path& out, int tileCount,
                 uint64_t targetBytes, MapSetLayout& layout, std::string& error) {
  std::ifstream in(source, std::ios::binary);
  const ByteVector file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const ImgDirectory dir = scanImgDirectory(file);
  if (imgXorKey(file) != 0 || !dir.subfiles[kSubfileTre].found || !dir.subfiles[kSubfileRgn].found ||
      !dir.subfiles[kSubfileLbl].found) {
    error = "not a plain single-tile map: " + source.string();
    return false;
  }
  std::array<ByteVector, 3> parts;  // TRE, RGN, LBL
  for (size_t i = 0; i < parts.size(); ++i) {
    const ImgSubfile& s = dir.subfiles[i];
    if (uint64_t{s.offset} + s.size > file.size()) {
      error = "subfile outside the map";
      return false;
    }
    parts[i].assign(file.begin() + s.offset, file.begin() + s.offset + s.size);
  }
  const MapRect original{signExtend24(get(parts[0], 0x1E, 3)), signExtend24(get(parts[0], 0x1B, 3)),
                         signExtend24(get(parts[0], 0x18, 3)), signExtend24(get(parts[0], 0x15, 3))};
  // Cells of whole 2^11 units, so that every level's grid stays aligned.
  const int32_t cellWidth = (original.east - original.west + 2047) / 2048 * 2048;
  const int32_t cellHeight = (original.north - original.south + 2047) / 2048 * 2048;

  layout.tiles = tileCount;
  layout.cellWidth = cellWidth;
  layout.cellHeight = cellHeight;
  layout.columns = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(tileCount))));
  layout.rows = (tileCount + layout.columns - 1) / layout.columns;

  // The block size: the smallest that numbers every block in 16 bits.
  const uint64_t share = targetBytes / static_cast<uint64_t>(tileCount);  // each copy's part of the file
  uint32_t block = 512;
  uint64_t padding = 0;  // the hole after each copy, in whole blocks
  uint64_t entries = 0;
  uint64_t total = 0;
  std::array<uint64_t, 3> partBlocks{};
  for (;; block *= 2) {
    if (block > 32768) {
      error = "too large for 16-bit block numbers";
      return false;
    }
    entries = 0;
    for (size_t i = 0; i < 3; ++i) {
      partBlocks[i] = roundUp(parts[i].size(), block) / block;
      entries += (partBlocks[i] + kBlocksPerEntry - 1) / kBlocksPerEntry;
    }
    entries = entries * static_cast<uint64_t>(tileCount) + 1;  // and the product entry first
    const uint64_t header = roundUp(kImgDirectoryStart + entries * kImgDirectoryEntrySize, block);
    const uint64_t used = (partBlocks[0] + partBlocks[1] + partBlocks[2]) * block;
    padding = used < share ? roundUp(share - used, block) : 0;
    const uint64_t perTile = used + padding;
    total = header + block + perTile * static_cast<uint64_t>(tileCount);  // a block for the product
    if (total / block < kLastBlock) break;
  }
  layout.blockSize = block;
  layout.bytes = total;

  const int fd = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (fd < 0) {
    error = "cannot create " + out.string();
    return false;
  }
  const uint64_t headerEnd = kImgDirectoryStart + entries * kImgDirectoryEntrySize;
  ByteVector directory(roundUp(headerEnd, block), 0);
  const char signature[] = "DSKIMG";
  for (size_t i = 0; i < 6; ++i) directory[0x10 + i] = static_cast<uint8_t>(signature[i]);
  directory[0x61] = 9;
  directory[0x62] = static_cast<uint8_t>(std::log2(block) - 9);
  put(directory, 0x40C, headerEnd, 4);

  // The product entry comes first, as in the sets GPS units load: the first directory
  // entry then names no tile.
  const char product[] = "MAKEGMAPMPS";
  for (size_t c = 0; c < 11; ++c) directory[kImgDirectoryStart + 1 + c] = static_cast<uint8_t>(product[c]);
  directory[kImgDirectoryStart] = 1;
  put(directory, kImgDirectoryStart + 0x20, directory.size() / block, 2);
  for (size_t slot = 1; slot < kBlocksPerEntry; ++slot) put(directory, kImgDirectoryStart + 0x20 + 2 * slot, kLastBlock, 2);

  bool ok = true;
  uint64_t next = directory.size() / block + 1;  // next free block, after the product's
  size_t entry = 1;
  const char* types[] = {"TRE", "RGN", "LBL"};
  layout.bounds = MapRect{};
  for (int k = 0; k < tileCount && ok; ++k) {
    const int32_t dx = (k % layout.columns) * cellWidth;
    const int32_t dy = (k / layout.columns) * cellHeight;
    ByteVector tre = parts[0];
    if (!moveTre(tre, dx, dy)) {
      error = "malformed TRE";
      ok = false;
      break;
    }
    const MapRect moved{original.west + dx, original.south + dy, original.east + dx, original.north + dy};
    layout.bounds = k == 0 ? moved
                           : MapRect{std::min(layout.bounds.west, moved.west), std::min(layout.bounds.south, moved.south),
                                     std::max(layout.bounds.east, moved.east), std::max(layout.bounds.north, moved.north)};
    const std::string name = std::to_string(70000000 + k);
    const std::array<const ByteVector*, 3> bodies{&tre, &parts[1], &parts[2]};
    for (size_t i = 0; i < 3 && ok; ++i) {
      const uint64_t first = next;
      ok = writeAt(fd, bodies[i]->data(), bodies[i]->size(), first * block);
      // The directory entries: the first part holds the size, later parts continue the list.
      for (uint64_t b = 0, part = 0; b < partBlocks[i]; ++part) {
        const size_t at = kImgDirectoryStart + entry++ * kImgDirectoryEntrySize;
        directory[at] = 1;
        for (size_t c = 0; c < 8; ++c) directory[at + 1 + c] = static_cast<uint8_t>(name[c]);
        for (size_t c = 0; c < 3; ++c) directory[at + 9 + c] = static_cast<uint8_t>(types[i][c]);
        put(directory, at + 0x0C, part == 0 ? bodies[i]->size() : 0, 4);
        directory[at + 0x11] = static_cast<uint8_t>(part);
        for (size_t slot = 0; slot < kBlocksPerEntry; ++slot, ++b) {
          put(directory, at + 0x20 + 2 * slot, b < partBlocks[i] ? first + b : kLastBlock, 2);
        }
      }
      next += partBlocks[i];
    }
    next += padding / block;
  }
  ok = ok && writeAt(fd, directory.data(), directory.size(), 0) && ftruncate(fd, static_cast<off_t>(total)) == 0;
  if (::close(fd) != 0) ok = false;
  if (!ok && error.empty()) error = "cannot write " + out.string();
  return ok;
}

}  // namespace orvel::bench
