#include "map/img/img_map_file.h"

#include <new>

#include "map/img/img_container.h"

namespace orvel {
namespace {

constexpr const char* kUnsupported = "Не поддерживаемый формат файла либо файл поврежден.";
constexpr const char* kEncrypted = "Карта зашифрована.\n (ПРИМЕЧАНИЕ: Зашифрованные карты не поддерживаются.)";
constexpr const char* kNoMemory = "Не достаточно свободной памяти.";

// Why a tile could not be read, in the user's words; empty when it could.
std::string reason(ImgTileStatus status, const ImgTile& tile) {
  switch (status) {
    case ImgTileStatus::kOk: return {};
    case ImgTileStatus::kUnsupported: return kUnsupported;
    case ImgTileStatus::kEncrypted: return kEncrypted;
    case ImgTileStatus::kNoMemory: return kNoMemory;
    case ImgTileStatus::kBadLabelCoding:
      return "Unsupported label code schema: " + std::to_string(tile.labelCoding());
  }
  return kUnsupported;
}

MapRect unite(const MapRect& a, const MapRect& b) {
  return MapRect{a.west < b.west ? a.west : b.west, a.south < b.south ? a.south : b.south,
                 a.east > b.east ? a.east : b.east, a.north > b.north ? a.north : b.north};
}

}  // namespace

ImgMapFile::ImgMapFile() = default;
ImgMapFile::~ImgMapFile() = default;

bool ImgMapFile::probe(Bytes file) { return isImgContainer(file); }

bool ImgMapFile::load(Bytes file) {
  if (file.size() < 22) return fail(kUnsupported);

  // A non-zero key scrambles every byte, the header included: work on a descrambled copy.
  xorKey_ = imgXorKey(file);
  if (xorKey_ == 0) {
    file_ = file;
  } else {
    try {
      copy_.assign(file.begin(), file.end());
    } catch (const std::bad_alloc&) {
      return fail(kNoMemory);
    }
    for (uint8_t& byte : copy_) byte ^= xorKey_;
    file_ = copy_;
  }

  const ImgDirectory dir = scanImgDirectory(file_);
  blockSize_ = dir.blockSize;
  tileName_ = dir.tileName;
  if (dir.subfiles[kSubfileTre].found && dir.subfiles[kSubfileRgn].found && dir.subfiles[kSubfileLbl].found) {
    return loadTile(dir);
  }
  return loadSet();
}

bool ImgMapFile::loadTile(const ImgDirectory& dir) {
  try {
    tiles_.emplace_back(dir.tileName, dir.subfiles);
    tileBounds_.resize(1);
  } catch (const std::bad_alloc&) {
    return fail(kNoMemory);
  }
  ImgTile& tile = tiles_.front();
  const ImgTileStatus header = tile.loadHeader(file_);
  bounds_ = tile.bounds();  // set even for a locked tile
  tileBounds_[0] = tile.bounds();
  if (header != ImgTileStatus::kOk) return fail(reason(header, tile));
  const ImgTileStatus index = tile.loadIndex(file_);
  return index == ImgTileStatus::kOk || fail(reason(index, tile));
}

bool ImgMapFile::loadSet() {
  mapSet_ = true;
  size_t locked = 0;
  try {
    std::vector<ImgTileFiles> found = scanImgTiles(file_);
    tiles_.reserve(found.size());
    for (ImgTileFiles& files : found) {
      ImgTile tile(std::move(files.name), files.subfiles);
      if (!tile.hasAll()) continue;  // the product, sort and index subfiles
      const ImgTileStatus status = tile.loadHeader(file_);
      if (status == ImgTileStatus::kEncrypted) ++locked;
      if (status != ImgTileStatus::kOk) continue;
      tiles_.push_back(std::move(tile));
    }
    tiles_.shrink_to_fit();
    tileBounds_.reserve(tiles_.size());
    for (const ImgTile& tile : tiles_) tileBounds_.push_back(tile.bounds());
    visited_.reserve(tiles_.size());
  } catch (const std::bad_alloc&) {
    return fail(kNoMemory);
  }
  if (tiles_.empty()) {
    if (locked > 0) return fail(kEncrypted);
    return fail(kUnsupported);
  }
  bounds_ = tileBounds_.front();
  for (const MapRect& b : tileBounds_) bounds_ = unite(bounds_, b);
  return true;
}

void ImgMapFile::tilesMeeting(const MapRect& area, std::vector<uint32_t>& out) const {
  out.clear();
  for (size_t i = 0; i < tileBounds_.size(); ++i) {
    if (intersects(tileBounds_[i], area)) out.push_back(static_cast<uint32_t>(i));
  }
}

}  // namespace orvel
