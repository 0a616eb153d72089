#include <string>

#include <gtest/gtest.h>

#include "map/catalogue/catalogue.h"

namespace orvel {
namespace {

std::string nameOf(const TypeStyle* row) { return row ? row->name : "(none)"; }

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
