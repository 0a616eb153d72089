#include <cstdint>
#include <span>
#include <string>

#include <gtest/gtest.h>

#include "map/catalogue/catalogue.h"

namespace orvel {
namespace {

// Each table with its lookup.
struct Table {
  std::span<const TypeStyle> (*rows)();
  const TypeStyle* (*find)(uint32_t code);
};
const Table kTables[] = {{polygonTypes, findPolygonType}, {lineTypes, findLineType}, {pointTypes, findPointType}};

std::string nameOf(const TypeStyle* row) { return row ? row->name : "(none)"; }

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
  for (const Table& table : kTables) {
    for (uint32_t code = 0; code <= 0xFFFF; ++code) {
      ASSERT_EQ(table.find(code), slowFind(table.rows(), static_cast<uint16_t>(code)))
          << "table " << &table - kTables << " code 0x" << std::hex << code;
    }
  }
}

// The quirks a plain range lookup would get wrong, by name.
TEST(CatalogueLookup, Quirks) {
  EXPECT_EQ(nameOf(findPointType(0x4E00)), "Restroom");  // its range ends below its key
  EXPECT_EQ(findPointType(0x4E01), nullptr);
  EXPECT_EQ(nameOf(findLineType(0x3F)), "Tram way");  // the last row matches only exactly
  EXPECT_EQ(findLineType(0x40), nullptr);
  EXPECT_EQ(nameOf(findPointType(0xF106)), "Pagoda");  // the program's own point types
  EXPECT_EQ(nameOf(findPolygonType(0x10002)), "City");  // codes are taken modulo 65536
  EXPECT_EQ(nameOf(findPointType(0x3F106)), "Pagoda");
  EXPECT_EQ(findTypeStyle(nullptr, 10, 1), nullptr);  // a table without rows finds nothing
  EXPECT_EQ(findTypeStyle(polygonTypes().data(), 1, 0), nullptr);
  EXPECT_EQ(findTypeStyle(polygonTypes().data(), 2, 0x02), &polygonTypes()[1]);
  EXPECT_STREQ(typeName(findPointType(0x4E01)), "Unknown");
  EXPECT_STREQ(typeName(findPointType(0x2B03)), "Camping/RV-Park");
}

}  // namespace
}  // namespace orvel
