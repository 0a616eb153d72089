// The polygon and line tables, sorted by key. Row 0 of each documents the defaults and is
// never returned by the lookup.
#include <array>

#include "map/catalogue/catalogue.h"

namespace orvel {
namespace {

constexpr FillRef kNoFill{};

constexpr FillRef solid(uint32_t r, uint32_t g, uint32_t b) {
  return {FillKind::Solid, (r << 16) | (g << 8) | b};
}

constexpr FillRef pattern(uint32_t bitmapId) { return {FillKind::Pattern, bitmapId}; }

constexpr TypeStyle area(uint16_t key, uint16_t end, const char* name, FillRef fill,
                         LabelId label) {
  return {key, end, name, fill, PenId::None, PenId::None, 0, label};
}

constexpr TypeStyle line(uint16_t key, uint16_t end, const char* name, PenId pen,
                         PenId secondPen, LabelId label) {
  return {key, end, name, kNoFill, pen, secondPen, 0, label};
}

constexpr std::array<TypeStyle, kPolygonTypeCount> kPolygons{{
    area(0x00, 0, "Unknown", pattern(120), LabelId::ABlack),
    area(0x01, 0x03, "City", solid(192, 192, 192), LabelId::ABlack),
    area(0x04, 0, "Military base", solid(128, 128, 128), LabelId::ABlack),
    area(0x05, 0, "Parking lot", solid(128, 128, 128), LabelId::ABlack),
    area(0x06, 0, "Parking garage", solid(128, 128, 128), LabelId::ABlack),
    area(0x07, 0, "Airport", solid(128, 128, 128), LabelId::ABlack),
    area(0x08, 0, "Shopping center", solid(255, 0, 0), LabelId::ABlack),
    area(0x09, 0, "Marina", solid(255, 0, 0), LabelId::ABlack),
    area(0x0A, 0, "University/College", solid(255, 0, 0), LabelId::ABlack),
    area(0x0B, 0, "Hospital", solid(255, 0, 0), LabelId::ABlack),
    area(0x0C, 0, "Industrial complex", solid(128, 128, 128), LabelId::ABlack),
    area(0x0D, 0, "Reservation", solid(183, 233, 153), LabelId::ABlack),
    area(0x0E, 0, "Airport runway", solid(192, 192, 192), LabelId::ABlack),
    area(0x13, 0, "Man-made area", solid(150, 150, 150), LabelId::ABlack),
    area(0x14, 0x16, "National park", solid(183, 233, 153), LabelId::ABlack),
    area(0x17, 0, "City park", solid(144, 192, 0), LabelId::ABlack),
    area(0x18, 0, "Golf course", pattern(120), LabelId::ABlack),
    area(0x19, 0, "Sports complex", solid(128, 128, 128), LabelId::ABlack),
    area(0x1A, 0, "Cemetery", pattern(116), LabelId::ABlack),
    area(0x1E, 0x20, "State park", solid(183, 233, 153), LabelId::ABlack),
    area(0x28, 0, "Ocean", solid(0, 128, 255), LabelId::ANavy),
    area(0x29, 0, "Blue-Unknown", solid(0, 128, 255), LabelId::ANavy),
    area(0x32, 0, "Sea", solid(0, 128, 255), LabelId::ANavy),
    area(0x3B, 0, "Blue-Unknown", solid(0, 128, 255), LabelId::ANavy),
    area(0x3C, 0x40, "Lake", solid(0, 128, 255), LabelId::ANavy),
    area(0x41, 0, "Small lake", solid(0, 128, 255), LabelId::ANavy),
    area(0x42, 0x44, "Lake", solid(0, 128, 255), LabelId::ANavy),
    area(0x45, 0, "Blue-Unknown", solid(0, 128, 255), LabelId::ANavy),
    area(0x46, 0x49, "River", solid(0, 128, 255), LabelId::ANavy),
    area(0x4A, 0, "Definition area", kNoFill, LabelId::ABlack),
    area(0x4B, 0, "Background", kNoFill, LabelId::ABlack),
    area(0x4C, 0, "Intermittent water", pattern(121), LabelId::ANavy),
    area(0x4D, 0, "Glacier", solid(0, 255, 255), LabelId::ABlack),
    area(0x4E, 0, "Orchard/Plantation", pattern(117), LabelId::ABlack),
    area(0x4F, 0, "Scrub", pattern(118), LabelId::ABlack),
    area(0x50, 0, "Forest", solid(183, 233, 153), LabelId::ABlack),
    area(0x51, 0, "Wetland/Swamp", pattern(122), LabelId::ANavy),
    area(0x52, 0, "Tundra", pattern(119), LabelId::ABlack),
    area(0x53, 0, "Flat", solid(255, 255, 255), LabelId::ABlack),
    area(0x6A, 0, "Square", solid(192, 192, 192), LabelId::ABlack),
    area(0x6B, 0, "Boulevard, Avenue", solid(192, 192, 192), LabelId::ABlack),
    area(0x6C, 0, "Living building", solid(150, 150, 150), LabelId::ABlack),
    area(0x70, 0, "Black polygon", solid(0, 0, 0), LabelId::ABlack),
    area(0x71, 0, "Dark red polygon", solid(128, 0, 0), LabelId::ABlack),
    area(0x72, 0, "Dark green polygon", solid(0, 128, 0), LabelId::ABlack),
    area(0x73, 0, "Dark yellow polygon", solid(128, 128, 0), LabelId::ABlack),
    area(0x74, 0, "Dark blue polygon", solid(0, 0, 128), LabelId::ABlack),
    area(0x75, 0, "Dark magenta polygon", solid(128, 0, 128), LabelId::ABlack),
    area(0x76, 0, "Dark cyan polygon", solid(0, 128, 128), LabelId::ABlack),
    area(0x77, 0, "Light gray polygon", solid(192, 192, 192), LabelId::ABlack),
    area(0x78, 0, "Dark gray polygon", solid(96, 96, 96), LabelId::ABlack),
    area(0x79, 0, "Red polygon", solid(255, 0, 0), LabelId::ABlack),
    area(0x7A, 0, "Green polygon", solid(0, 255, 0), LabelId::ABlack),
    area(0x7B, 0, "Yellow polygon", solid(255, 255, 0), LabelId::ABlack),
    area(0x7C, 0, "Blue polygon", solid(0, 0, 255), LabelId::ABlack),
    area(0x7D, 0, "Magenta polygon", solid(255, 0, 255), LabelId::ABlack),
    area(0x7E, 0, "Cyan polygon", solid(0, 255, 255), LabelId::ABlack),
    area(0x7F, 0, "White polygon", solid(255, 255, 255), LabelId::ABlack),
}};

constexpr std::array<TypeStyle, kLineTypeCount> kLines{{
    line(0x00, 0, "Unknown", PenId::Street, PenId::None, LabelId::ABlack),
    line(0x01, 0, "Major highway", PenId::HighwayCasing, PenId::HighwayInner, LabelId::ABlack),
    line(0x02, 0, "Principal highway", PenId::PrincipalHighway, PenId::None, LabelId::ABlack),
    line(0x03, 0, "Other highway", PenId::MainRoad, PenId::None, LabelId::ABlack),
    line(0x04, 0, "Arterial road, medium", PenId::MainRoad, PenId::None, LabelId::ABlack),
    line(0x05, 0, "Arterial road, thin", PenId::MainRoad, PenId::None, LabelId::ABlack),
    line(0x06, 0, "Residential street", PenId::Street, PenId::None, LabelId::ABlack),
    line(0x07, 0, "Alley", PenId::Street, PenId::None, LabelId::ABlack),
    line(0x08, 0x09, "Highway ramp", PenId::Street, PenId::None, LabelId::ABlack),
    line(0x0A, 0, "Unpaved road", PenId::Street, PenId::None, LabelId::ABlack),
    line(0x0B, 0, "Major HWY connector", PenId::HighwayCasing, PenId::HighwayInner, LabelId::ABlack),
    line(0x0C, 0, "Roundabout", PenId::MainRoad, PenId::None, LabelId::ABlack),
    line(0x14, 0, "Railroad", PenId::RailroadBase, PenId::RailroadTies, LabelId::ABlack),
    line(0x15, 0, "Shoreline", PenId::Shoreline, PenId::None, LabelId::ABlack),
    line(0x16, 0, "Trail", PenId::Trail, PenId::None, LabelId::ABlack),
    line(0x18, 0, "Stream", PenId::Stream, PenId::None, LabelId::ABlue),
    line(0x19, 0, "Time-zone", PenId::Default, PenId::None, LabelId::ABlack),
    line(0x1A, 0x1B, "Ferry", PenId::Trail, PenId::None, LabelId::ABlack),
    line(0x1C, 0, "Political border", PenId::Border, PenId::None, LabelId::AGreen),
    line(0x1D, 0, "County border", PenId::Border, PenId::None, LabelId::AGreen),
    line(0x1E, 0, "International border", PenId::Border, PenId::None, LabelId::AGreen),
    line(0x1F, 0, "River", PenId::Stream, PenId::None, LabelId::ABlue),
    line(0x20, 0, "Minor land contour", PenId::LandMinor, PenId::None, LabelId::ABrown),
    line(0x21, 0, "Intermediate land contour", PenId::LandIntermediate, PenId::None, LabelId::ABrown),
    line(0x22, 0, "Major land contour", PenId::LandMajor, PenId::None, LabelId::ABrown),
    line(0x23, 0, "Minor depth contour", PenId::DepthMinor, PenId::None, LabelId::ACyan),
    line(0x24, 0, "Intermediate depth contour", PenId::DepthIntermediate, PenId::None, LabelId::ACyan),
    line(0x25, 0, "Major depth contour", PenId::DepthMajor, PenId::None, LabelId::ACyan),
    line(0x26, 0, "Intermittent stream", PenId::IntermittentStream, PenId::None, LabelId::ABlue),
    line(0x27, 0, "Airport runway", PenId::HighwayCasing, PenId::HighwayInner, LabelId::ABlack),
    line(0x28, 0, "Pipeline", PenId::Default, PenId::None, LabelId::ABlack),
    line(0x29, 0, "Power line", PenId::Default, PenId::None, LabelId::ABlack),
    line(0x2A, 0, "Marine boundary (no line)", PenId::Default, PenId::None, LabelId::ABlack),
    line(0x2B, 0, "Marine hazard (no line)", PenId::Default, PenId::None, LabelId::ABlack),
    line(0x3F, 0, "Tram way", PenId::Tram, PenId::None, LabelId::ABlack),
}};

}  // namespace

std::span<const TypeStyle> polygonTypes() { return kPolygons; }
std::span<const TypeStyle> lineTypes() { return kLines; }

}  // namespace orvel
