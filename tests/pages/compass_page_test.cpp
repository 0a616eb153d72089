#include "pages/compass_page.h"
#include "pages_fixture.h"

namespace orvel::test {
namespace {

class CompassPageTest : public PagesTest {
 protected:
  std::vector<QLineF> ticks(const std::vector<DrawCall>& calls) {
    std::vector<QLineF> lines;
    for (const DrawCall& call : calls) {
      if (call.kind != DrawCall::Kind::Lines) continue;
      const QPolygonF ends = call.devicePoints();
      for (int i = 0; i + 1 < ends.size(); i += 2) lines.emplace_back(ends[i], ends[i + 1]);
    }
    return lines;
  }
  static int polygons(const std::vector<DrawCall>& calls) {
    int count = 0;
    for (const DrawCall& call : calls) count += call.kind == DrawCall::Kind::Polygon;
    return count;
  }
};

TEST_F(CompassPageTest, WithoutCourseTicksSitOnTheTensAndNoArrow) {
  // 240 x 320: centre (120, 160), R = 80.
  const std::vector<DrawCall> calls = record(compassPage());
  const std::vector<QLineF> lines = ticks(calls);
  ASSERT_EQ(lines.size(), 36u);
  EXPECT_EQ(lines[0], QLineF(195, 160, 200, 160));  // 0: to the right
  EXPECT_EQ(lines[9], QLineF(120, 235, 120, 240));  // 90: down (clockwise on screen)
  EXPECT_EQ(lines[18], QLineF(46, 160, 41, 160));  // rounding adds 0.5 and truncates
  EXPECT_EQ(lines[27], QLineF(120, 86, 120, 81));
  EXPECT_EQ(polygons(calls), 0);
}

TEST_F(CompassPageTest, CourseTurnsTheTicksAndDrawsTheArrow) {
  GpsFix fix;
  fix.flags = kFixCourse;
  fix.course = 5.0f;
  gps.exchangeFix(fix);
  const std::vector<DrawCall> calls = record(compassPage());
  const std::vector<QLineF> lines = ticks(calls);
  ASSERT_EQ(lines.size(), 36u);
  // Tick 0 now sits at -5 degrees: 80 * cos 5 = 79.7, 80 * sin -5 = -7.0.
  EXPECT_EQ(lines[0].p2(), QPointF(200, 154));
  EXPECT_EQ(polygons(calls), 2);
}

}  // namespace
}  // namespace orvel::test
