// Label texts of an IMG map.
#include "map/img/img_map_file.h"
#include "map/img/label_decoder.h"

namespace orvel {

// A reference counts in units of 2^shift bytes (the LBL header's offset multiplier), so
// that maps whose label data outgrow 22 bits of byte offset still reach every label.
int ImgMapFile::getLabel(uint32_t labelRef, char16_t* out) {
  return decodeLabel(labelData_, labelByteOffset(labelRef, labelShift_), labelSchema_, codePage_, out);
}

}  // namespace orvel
