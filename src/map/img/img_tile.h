#pragma once
// One map tile of an IMG container: its TRE, RGN, LBL and NET subfiles. The header part
// (bounds, lock flag, level table) is read when the container is opened; the subdivision
// index and the data areas when the tile is first needed, so that a set of thousands of
// tiles opens by reading one small header per tile.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "map/img/img_container.h"
#include "map/img/img_subdivision.h"
#include "map/img/label_decoder.h"
#include "map/format/map_file.h"

namespace orvel {

// One map level record of the TRE subfile.
struct ImgLevel {
  uint8_t bits = 0;           // bits per coordinate (1 to 24 in a sound file)
  bool inherited = false;     // inherited levels are never drawn
  uint8_t zoom = 0;           // the record's zoom number (bits 0-6), for information only
  uint16_t subdivisions = 0;  // number of subdivisions of this level
};

// Why a tile could not be read. kBadLabelCoding carries the coding in labelCoding().
enum class ImgTileStatus : uint8_t { kOk, kUnsupported, kEncrypted, kNoMemory, kBadLabelCoding };

class ImgTile {
 public:
  ImgTile() = default;
  ImgTile(std::string name, const std::array<ImgSubfile, 4>& subfiles) : name_(std::move(name)), subfiles_(subfiles) {}

  // Reads the TRE header: bounds (kept even when the tile is locked), the lock flag, the
  // level table. Needs TRE, RGN and LBL to have been found.
  ImgTileStatus loadHeader(Bytes file);
  // Builds the subdivision index and finds the RGN, LBL and NET areas. After loadHeader.
  ImgTileStatus loadIndex(Bytes file);
  // loadIndex once, on first use; false when the tile cannot be read.
  bool ensureIndex(Bytes file) {
    if (state_ == State::kHeader) state_ = loadIndex(file) == ImgTileStatus::kOk ? State::kIndexed : State::kBad;
    return state_ == State::kIndexed;
  }
  bool hasAll() const {
    return subfiles_[kSubfileTre].found && subfiles_[kSubfileRgn].found && subfiles_[kSubfileLbl].found;
  }

  const std::string& name() const { return name_; }  // 8 characters
  const MapRect& bounds() const { return bounds_; }
  std::span<const ImgLevel> levels() const { return levels_; }
  size_t subdivisionCount() const;  // from the level table; known before the index
  std::span<const ImgSubdivision> subdivisions() const { return subdivisions_; }
  Bytes rgnData() const { return rgnData_; }
  Bytes labelData() const { return labelData_; }
  Bytes poiProperties() const { return poiProperties_; }
  Bytes netData() const { return netData_; }
  LabelSchema labelSchema() const { return labelSchema_; }
  uint8_t labelCoding() const { return labelCoding_; }
  uint16_t codePage() const { return codePage_; }
  uint8_t labelShift() const { return labelShift_; }
  const ImgSubfile& subfile(ImgSubfileType type) const { return subfiles_[static_cast<size_t>(type)]; }
  bool hasNet() const { return subfiles_[kSubfileNet].found; }

 private:
  enum class State : uint8_t { kHeader, kIndexed, kBad };

  std::string name_;
  std::array<ImgSubfile, 4> subfiles_{};
  MapRect bounds_;
  State state_ = State::kHeader;
  std::vector<ImgLevel> levels_;
  std::vector<ImgSubdivision> subdivisions_;
  Bytes subdivisionSection_;
  Bytes rgnData_;
  Bytes labelData_;
  Bytes poiProperties_;
  Bytes netData_;
  LabelSchema labelSchema_ = LabelSchema::SixBit;
  uint8_t labelCoding_ = 0;
  uint8_t labelShift_ = 0;
  uint16_t codePage_ = 0;
};

}  // namespace orvel
