// The objects of an IMG map as an .orv map to write.
#include <algorithm>

#include "map/img/img_map_file.h"
#include "map/img/label_decoder.h"
#include "map/img/rgn_decoder.h"
#include "map/orv/convert/orv_writer.h"

namespace orvel {
namespace {

// Collects the decoded objects of one subdivision section into a block, in level units.
class Collector final : public ObjectConsumer {
 public:
  Collector(const ImgMapFile& img, unsigned shift, std::vector<OrvObjectIn>& into)
      : img_(img), shift_(shift), into_(into) {}

  void onObject(const MapObject& object) override {
    OrvObjectIn out;
    out.type = static_cast<uint16_t>(object.type);
    out.points.reserve(object.points.size());
    for (const MapPoint& p : object.points) out.points.push_back(MapPoint{p.x >> shift_, p.y >> shift_});
    if (object.labelRef != 0) {
      char16_t text[kLabelCapacity + 1];
      const int length = decodeLabel(img_.labelData(), labelByteOffset(object.labelRef, img_.labelShift()),
                                     static_cast<LabelSchema>(img_.labelSchema()), img_.codePage(), text);
      out.label = orvLabelText(std::u16string_view(text, static_cast<size_t>(length)));
    }
    into_.push_back(std::move(out));
  }

 private:
  const ImgMapFile& img_;
  unsigned shift_;
  std::vector<OrvObjectIn>& into_;
};

}  // namespace

bool orvFromImg(const ImgMapFile& img, std::span<const int> levelBits, OrvMapIn& out, std::string& error) {
  out = OrvMapIn{};
  if (img.isMapSet()) {
    // One .orv holds one map; a set's tiles would each need their own file.
    error = "map sets of several tiles cannot be converted yet; convert single-tile maps";
    return false;
  }
  out.bounds = img.bounds();
  const ImgDecodeInput in = makeImgDecodeInput(img);
  const auto levels = img.levels();
  for (size_t l = 0; l < levels.size(); ++l) {
    const ImgLevel& level = levels[l];
    if (level.inherited || level.bits < 1 || level.bits > 24) continue;
    if (!levelBits.empty() && std::find(levelBits.begin(), levelBits.end(), int{level.bits}) == levelBits.end()) {
      continue;
    }
    OrvLevelIn orvLevel;
    orvLevel.bits = level.bits;
    const unsigned shift = 24u - level.bits;
    for (const ImgSubdivision& sub : img.subdivisions()) {
      if (sub.level != l) continue;
      OrvBlockIn block;
      Collector areas(img, shift, block.areas);
      Collector lines(img, shift, block.lines);
      Collector points(img, shift, block.points);
      decodeSection(in, sub, kSectionPolygons, areas);
      decodeSection(in, sub, kSectionPolylines, lines);
      decodeSection(in, sub, kSectionPoints, points);
      decodeSection(in, sub, kSectionIndexedPoints, points);
      if (!block.empty()) orvLevel.blocks.push_back(std::move(block));
    }
    out.levels.push_back(std::move(orvLevel));
  }
  if (out.levels.empty()) {
    error = "no level of the map to write";
    return false;
  }
  return true;
}

}  // namespace orvel
