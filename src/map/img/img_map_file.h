#pragma once
// The Garmin IMG map: a container of subfiles of which the TRE, RGN, LBL and NET of the
// first map tile are used. Loading builds only the subdivision index; objects are decoded
// from the RGN data while drawing, labels from the LBL data when drawn.
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "map/img/img_container.h"
#include "map/img/img_subdivision.h"
#include "map/img/label_decoder.h"
#include "map/labels/label_placer.h"
#include "map/map_file.h"

namespace orvel {

// One map level record of the TRE subfile.
struct ImgLevel {
  uint8_t bits = 0;           // bits per coordinate (1 to 24 in a sound file)
  bool inherited = false;     // inherited levels are never drawn
  uint8_t zoom = 0;           // the record's zoom number (bits 0-6), for information only
  uint16_t subdivisions = 0;  // number of subdivisions of this level
};

class ImgMapFile final : public MapFile {
 public:
  ImgMapFile();
  ~ImgMapFile() override;
  ImgMapFile(const ImgMapFile&) = delete;
  ImgMapFile& operator=(const ImgMapFile&) = delete;

  bool probe(Bytes file) override;
  bool load(Bytes file) override;
  void decode(const MapView& view, const MapRect& visible, ObjectConsumer& consumer) override;
  void draw(QPainter& painter, const MapView& view, const MapRect& visible) override;
  // labelRef as stored in the map: the text starts at byte labelRef << labelShift() of the
  // label data.
  int getLabel(uint32_t labelRef, char16_t* out) override;
  void describe(MapFacts& facts) const override;

  // All of these are valid after a successful load, for the object's life.
  std::span<const ImgLevel> levels() const { return levels_; }
  std::span<const ImgSubdivision> subdivisions() const { return subdivisions_; }
  // Every section range of every subdivision lies inside rgnData().
  Bytes rgnData() const { return rgnData_; }
  Bytes labelData() const { return labelData_; }
  LabelSchema labelSchema() const { return labelSchema_; }
  uint8_t labelCoding() const { return labelCoding_; }  // 6, 9 or 10
  uint16_t codePage() const { return codePage_; }      // 0 = the system's default
  uint8_t labelShift() const { return labelShift_; }  // label reference n means byte n << shift
  Bytes poiProperties() const { return poiProperties_; }  // empty when the map has none
  Bytes netData() const { return netData_; }  // road data to the end of NET; empty without NET
  const std::string& tileName() const { return tileName_; }  // 8 characters
  uint16_t blockSize() const { return blockSize_; }  // 0 when the exponents sum to 16 or more
  uint8_t xorKey() const { return xorKey_; }         // 0 when the file is not scrambled
  // The bytes read: the file itself, or the descrambled private copy.
  Bytes fileBytes() const { return file_; }
  // Where a subfile starts in fileBytes() (0 when the tile has none).
  uint32_t subfileOffset(ImgSubfileType type) const { return subfileOffsets_[static_cast<size_t>(type)]; }
  bool hasNet() const { return hasNet_; }

 private:
  std::vector<uint8_t> copy_;  // descrambled bytes when xorKey_ != 0
  Bytes file_;
  uint8_t xorKey_ = 0;
  uint16_t blockSize_ = 0;
  std::string tileName_;
  std::vector<ImgLevel> levels_;
  std::vector<ImgSubdivision> subdivisions_;
  Bytes rgnData_;
  uint16_t codePage_ = 0;
  LabelSchema labelSchema_ = LabelSchema::SixBit;
  uint8_t labelCoding_ = 0;
  uint8_t labelShift_ = 0;
  Bytes labelData_;
  Bytes poiProperties_;
  Bytes netData_;
  std::array<uint32_t, 4> subfileOffsets_{};  // TRE, RGN, LBL, NET; for describe
  bool hasNet_ = false;
  LabelPlacer labels_;  // reused by every draw
};

}  // namespace orvel
