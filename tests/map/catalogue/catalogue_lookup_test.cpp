#include <cstdint>
#include <ostream>
#include <span>
#include <string>

#include <gtest/gtest.h>

#include "map/catalogue/catalogue.h"

namespace orvel {
namespace {

enum class Kind { Polygon, Line, Point };

std::span<const TypeStyle> tableOf(Kind kind) {
  switch (kind) {
    case Kind::Polygon: return polygonTypes();
    case Kind::Line: return lineTypes();
    case Kind::Point: return pointTypes();
  }
  return {};
}

const TypeStyle* find(Kind kind, uint32_t code) {
  switch (kind) {
    case Kind::Polygon: return findPolygonType(code);
    case Kind::Line: return findLineType(code);
    case Kind::Point: return findPointType(code);
  }
  return nullptr;
}

std::string nameOf(const TypeStyle* row) { return row ? row->name : "(none)"; }

TEST(CatalogueTables, HaveTheirRowCountsAndAreSortedByKey) {
  EXPECT_EQ(polygonTypes().size(), 58u);
  EXPECT_EQ(lineTypes().size(), 35u);
  EXPECT_EQ(pointTypes().size(), 239u);
  for (Kind kind : {Kind::Polygon, Kind::Line, Kind::Point}) {
    auto table = tableOf(kind);
    EXPECT_STREQ(table[0].name, "Unknown");
    for (size_t i = 2; i < table.size(); ++i) {
      EXPECT_LT(table[i - 1].key, table[i].key) << "row " << i;
    }
  }
}

TEST(CatalogueLookup, FindsEveryRowByItsKey) {
  for (Kind kind : {Kind::Polygon, Kind::Line, Kind::Point}) {
    auto table = tableOf(kind);
    for (size_t i = 1; i < table.size(); ++i) {
      EXPECT_EQ(find(kind, table[i].key), &table[i]) << table[i].name;
    }
  }
}

// What the lookup must answer, worked out the slow way: an exact key wins; otherwise the
// code belongs to the nearest row below it if that row is not the table's last and its
// range reaches the code.
const TypeStyle* slowFind(std::span<const TypeStyle> table, uint16_t code) {
  const TypeStyle* below = nullptr;
  size_t belowIndex = 0;
  for (size_t i = 1; i < table.size(); ++i) {
    if (table[i].key == code) return &table[i];
    if (table[i].key < code) {
      below = &table[i];
      belowIndex = i;
    }
  }
  if (below == nullptr) return nullptr;
  if (belowIndex == table.size() - 1) {
    // Past the last key the search ends on the row before the last.
    below = &table[table.size() - 2];
  }
  return below->rangeEnd != 0 && code <= below->rangeEnd ? below : nullptr;
}

TEST(CatalogueLookup, AgreesWithALinearScanForEveryCode) {
  for (Kind kind : {Kind::Polygon, Kind::Line, Kind::Point}) {
    auto table = tableOf(kind);
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
      ASSERT_EQ(find(kind, code), slowFind(table, static_cast<uint16_t>(code)))
          << "table " << static_cast<int>(kind) << " code 0x" << std::hex << code;
    }
  }
}

struct Case {
  Kind kind;
  uint32_t code;
  const char* name;  // nullptr: not found
};

void PrintTo(const Case& c, std::ostream* os) {
  *os << "table " << static_cast<int>(c.kind) << " code 0x" << std::hex << c.code;
}

class CatalogueCases : public ::testing::TestWithParam<Case> {};

TEST_P(CatalogueCases, FindsTheNamedRow) {
  const Case& c = GetParam();
  const TypeStyle* row = find(c.kind, c.code);
  if (c.name == nullptr) {
    EXPECT_EQ(row, nullptr) << nameOf(row);
  } else {
    EXPECT_EQ(nameOf(row), c.name);
  }
}

constexpr Case kCases[] = {
    // Ranges: start, inside, end, one past the end.
    {Kind::Polygon, 0x01, "City"},
    {Kind::Polygon, 0x02, "City"},
    {Kind::Polygon, 0x03, "City"},
    {Kind::Polygon, 0x04, "Military base"},
    {Kind::Polygon, 0x0F, nullptr},
    {Kind::Polygon, 0x15, "National park"},
    {Kind::Polygon, 0x16, "National park"},
    {Kind::Polygon, 0x3E, "Lake"},
    {Kind::Polygon, 0x40, "Lake"},
    {Kind::Polygon, 0x41, "Small lake"},
    {Kind::Polygon, 0x48, "River"},
    {Kind::Polygon, 0x49, "River"},
    {Kind::Polygon, 0x54, nullptr},
    {Kind::Polygon, 0x7F, "White polygon"},
    {Kind::Polygon, 0x80, nullptr},
    {Kind::Line, 0x09, "Highway ramp"},
    {Kind::Line, 0x0D, nullptr},
    {Kind::Line, 0x1B, "Ferry"},
    {Kind::Line, 0x2C, nullptr},
    {Kind::Point, 0x2010, "Exit"},
    {Kind::Point, 0x273F, "Exit"},
    {Kind::Point, 0x2740, nullptr},
    {Kind::Point, 0x1D3F, "Tide prediction"},
    {Kind::Point, 0x1540, nullptr},
    {Kind::Point, 0x593F, "Airport"},
    {Kind::Point, 0x5940, nullptr},
    // Subtypes that have rows of their own, and one past the last of a run.
    {Kind::Point, 0x2A05, "Dining (Deli/Bakery)"},
    {Kind::Point, 0x2A11, "Dining (British Isles)"},
    {Kind::Point, 0x2A12, nullptr},
    {Kind::Point, 0x2F0B, "Parking"},
    {Kind::Point, 0x6405, "Civil bulding"},
    {Kind::Point, 0x6618, "Woods"},
    {Kind::Point, 0x6619, nullptr},
    {Kind::Point, 0x5D00, "Daymark, green square"},
    // The restroom row's range ends below its key: only the key itself matches.
    {Kind::Point, 0x4E00, "Restroom"},
    {Kind::Point, 0x4E01, nullptr},
    {Kind::Point, 0x4E3F, nullptr},
    // The last rows match only exactly; codes below row 1 never match.
    {Kind::Line, 0x3F, "Tram way"},
    {Kind::Line, 0x40, nullptr},
    {Kind::Line, 0x00, nullptr},
    {Kind::Polygon, 0x00, nullptr},
    {Kind::Point, 0x0000, nullptr},
    {Kind::Point, 0x00FF, nullptr},
    {Kind::Point, 0x0101, nullptr},
    // The program's own point types.
    {Kind::Point, 0xF001, "Bus station"},
    {Kind::Point, 0xF002, "Bus stop"},
    {Kind::Point, 0xF003, "Tram stop"},
    {Kind::Point, 0xF004, "Trolley bus stop"},
    {Kind::Point, 0xF005, "Underground station"},
    {Kind::Point, 0xF006, "Railway station"},
    {Kind::Point, 0xF007, "Railway terminal"},
    {Kind::Point, 0xF008, nullptr},
    {Kind::Point, 0xF100, nullptr},
    {Kind::Point, 0xF101, "Orthodox church"},
    {Kind::Point, 0xF102, "Catholic church"},
    {Kind::Point, 0xF103, "Protestant church"},
    {Kind::Point, 0xF104, "Mosque"},
    {Kind::Point, 0xF105, "Synagogue"},
    {Kind::Point, 0xF106, "Pagoda"},
    {Kind::Point, 0xF107, nullptr},
    {Kind::Point, 0xFFFF, nullptr},
    // Codes are taken modulo 65536.
    {Kind::Polygon, 0x10002, "City"},
    {Kind::Point, 0x3F106, "Pagoda"},
};

INSTANTIATE_TEST_SUITE_P(Codes, CatalogueCases, ::testing::ValuesIn(kCases));

TEST(CatalogueLookup, ATableWithoutRowsFindsNothing) {
  EXPECT_EQ(findTypeStyle(nullptr, 10, 1), nullptr);
  EXPECT_EQ(findTypeStyle(polygonTypes().data(), 1, 0), nullptr);
  EXPECT_EQ(findTypeStyle(polygonTypes().data(), 2, 0x02), &polygonTypes()[1]);
}

TEST(CatalogueLookup, NamesUnfoundCodesUnknown) {
  EXPECT_STREQ(typeName(findPointType(0x4E01)), "Unknown");
  EXPECT_STREQ(typeName(findPointType(0x2B03)), "Camping/RV-Park");
}

}  // namespace
}  // namespace orvel
