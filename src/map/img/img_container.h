#pragma once
// The IMG container: its XOR-scrambled signature, its block size and the directory that
// says where the subfiles of the map tile start.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvel {

inline constexpr size_t kImgDirectoryStart = 0x600;
inline constexpr size_t kImgDirectoryEntrySize = 512;

enum ImgSubfileType : int { kSubfileTre = 0, kSubfileRgn = 1, kSubfileLbl = 2, kSubfileNet = 3 };

// The key every byte of the file is XORed with: byte 0x10 XOR 'D' (0 for files too short).
uint8_t imgXorKey(std::span<const uint8_t> file);

// True if the signature at 0x10, descrambled with imgXorKey, reads "DSKIMG".
bool isImgContainer(std::span<const uint8_t> file);

// 2^(e1 + e2) from bytes 0x61 and 0x62, kept in 16 bits: a sum of 16 or more gives 0.
// 0 for files too short to hold the exponents. Reads descrambled bytes.
uint16_t imgBlockSize(std::span<const uint8_t> file);

struct ImgSubfile {
  bool found = false;
  uint32_t offset = 0;  // first block x block size
  uint32_t size = 0;    // the entry's size field; only used to bound the NET road data
};

struct ImgDirectory {
  uint16_t blockSize = 0;
  std::string tileName;                // 8 bytes of the first in-use entry; empty if none
  std::array<ImgSubfile, 4> subfiles;  // ImgSubfileType order
};

// Scans the directory of descrambled bytes. Only in-use first parts (flag 1, byte 0x11
// zero) of the first tile count; a later entry of the same type replaces an earlier one.
// The scan ends at the entry count of the header or at the first entry that does not lie
// wholly inside the file, whichever comes first.
ImgDirectory scanImgDirectory(std::span<const uint8_t> file);

// The subfiles of one tile of a map set.
struct ImgTileFiles {
  std::string name;                    // 8 bytes of the entries' name
  std::array<ImgSubfile, 4> subfiles;  // ImgSubfileType order
};

// Scans the directory of a map set: every in-use entry, grouped by tile name in the order
// the names first appear. A subfile starts at the first block of its first part (byte 0x11
// zero), which also holds the whole size; later parts only continue it, so they neither
// move nor resize it. As for one tile, a later first part of the same type replaces an
// earlier one, and the scan ends where scanImgDirectory's does.
std::vector<ImgTileFiles> scanImgTiles(std::span<const uint8_t> file);

}  // namespace orvel
