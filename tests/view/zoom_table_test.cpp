#include <gtest/gtest.h>

#include "view/map_view.h"

namespace orvel {
namespace {

TEST(ZoomTable, EqualsTheScaleSeries) {
  const ZoomEntry expected[kZoomSteps] = {
      {u"5 м", 24, 40000, 2097},      {u"8 м", 24, 40000, 3355},
      {u"12 м", 24, 40000, 5033},     {u"20 м", 24, 40000, 8388},
      {u"30 м", 24, 40000, 12582},    {u"50 м", 24, 40000, 20971},
      {u"80 м", 24, 40000, 33554},    {u"120 м", 24, 4000, 5033},
      {u"200 м", 23, 4000, 8388},     {u"300 м", 23, 4000, 12582},
      {u"500 м", 22, 4000, 20971},    {u"800 м", 21, 4000, 33554},
      {u"1.2 км", 21, 400, 5033},     {u"2 км", 20, 400, 8388},
      {u"3 км", 19, 400, 12582},      {u"5 км", 18, 400, 20971},
      {u"8 км", 18, 400, 33554},      {u"12 км", 17, 40, 5033},
      {u"20 км", 16, 40, 8388},       {u"30 км", 16, 40, 12582},
      {u"50 км", 15, 40, 20971},      {u"80 км", 14, 40, 33554},
      {u"120 км", 14, 40, 50331},     {u"200 км", 13, 40, 83886},
      {u"300 км", 12, 40, 125829},    {u"500 км", 12, 40, 209715},
      {u"800 км", 11, 40, 335544},
  };
  const auto& table = zoomTable();
  for (int i = 0; i < kZoomSteps; ++i) {
    SCOPED_TRACE(i);
    EXPECT_TRUE(table[i].label == expected[i].label);
    EXPECT_EQ(table[i].level, expected[i].level);
    EXPECT_EQ(table[i].unitsDen, expected[i].unitsDen);
    EXPECT_EQ(table[i].unitsNum, expected[i].unitsNum);
  }
}

}  // namespace
}  // namespace orvel
