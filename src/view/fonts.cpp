#include "view/fonts.h"

#include <array>

namespace orvel {

namespace {

struct FaceRow {
  std::string_view face;    // as the styles name it
  std::string_view family;  // a free family with the same metrics or look
};

// One row per face the program names. Liberation Sans is metric-compatible with Arial;
// DejaVu Sans is the closest widely installed humanist sans to Tahoma.
constexpr std::array kFaces{
    FaceRow{"Arial", "Liberation Sans"},
    FaceRow{"Tahoma", "DejaVu Sans"},
    // "Century Gothic" (the map labels' face) belongs here too, mapped to the geometric sans
    // bundled with the program once that font is in the resources.
};

}  // namespace

QString qtFamilyFor(std::string_view face) {
  for (const FaceRow& row : kFaces) {
    if (row.face == face) {
      return QString::fromLatin1(row.family.data(), qsizetype(row.family.size()));
    }
  }
  return QString::fromUtf8(face.data(), qsizetype(face.size()));
}

}  // namespace orvel
