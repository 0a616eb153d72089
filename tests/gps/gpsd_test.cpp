// gpsd as a source: its address on the command line, the JSON members we read, and reports
// turned into fixes and satellites.
#include <gtest/gtest.h>

#include <string>

#include "gps/gpsd_client.h"
#include "gps/gpsd_json.h"
#include "gps/ole_date.h"
#include "gps_test_support.h"

namespace orvel {
namespace {

TEST(GpsdUrl, HostsPortsAndMistakes) {
  struct Case {
    const char* text;
    bool ok;
    const char* host;
    uint16_t port;
  };
  const Case cases[] = {
      {"gpsd://", true, "127.0.0.1", 2947},           {"gpsd://localhost", true, "localhost", 2947},
      {"gpsd://10.0.0.2:3000", true, "10.0.0.2", 3000}, {"gpsd://[::1]:2948", true, "::1", 2948},
      {"gpsd://[::1]", true, "::1", 2947},             {"gpsd://host/", true, "host", 2947},
      {"gpsd://host:", false, "", 0},                  {"gpsd://host:0", false, "", 0},
      {"gpsd://host:65536", false, "", 0},             {"gpsd://host:12ab", false, "", 0},
      {"gpsd://ho#st:2947", false, "", 0},
      {"gpsd://::1:2947", false, "", 0},               {"gpsd://[::1", false, "", 0},
      {"gpsd://[::1]x", false, "", 0},                 {"tcp://host:2947", false, "", 0},
      {"/dev/ttyUSB0", false, "", 0},
  };
  for (const Case& c : cases) {
    GpsdAddress address;
    std::string error;
    ASSERT_EQ(parseGpsdUrl(c.text, address, error), c.ok) << c.text << ": " << error;
    if (!c.ok) {
      EXPECT_FALSE(error.empty()) << c.text;
      continue;
    }
    EXPECT_EQ(address.host, c.host) << c.text;
    EXPECT_EQ(address.port, c.port) << c.text;
  }
}

TEST(GpsdJson, MembersAtTheTopLevelOnly) {
  const std::string report =
      R"({"class":"SKY","note":"a \"quoted\" {brace}, \u0041","satellites":[{"PRN":5,"used":true},)"
      R"({"PRN":7,"el":-3,"used":false},12,{"x":{"PRN":99}}],"hdop" : 1.25 ,"flag":false,"lat":1e-3})";
  EXPECT_EQ(jsonString(report, "class"), "SKY");
  EXPECT_EQ(jsonString(report, "note"), "a \"quoted\" {brace}, A");
  EXPECT_EQ(jsonNumber(report, "hdop"), 1.25);
  EXPECT_EQ(jsonNumber(report, "lat"), 1e-3);
  EXPECT_EQ(jsonBool(report, "flag"), false);
  EXPECT_FALSE(jsonNumber(report, "PRN")) << "nested members are not the object's";
  EXPECT_FALSE(jsonNumber(report, "class")) << "a string is not a number";
  const auto list = jsonObjects(*jsonValue(report, "satellites"));
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(jsonNumber(list[0], "PRN"), 5);
  EXPECT_EQ(jsonBool(list[0], "used"), true);
  EXPECT_EQ(jsonNumber(list[1], "el"), -3);
  EXPECT_FALSE(jsonNumber(list[2], "PRN"));

  for (const char* broken : {"", "{", R"({"lat":)", R"({"lat":1.5)", R"({"a":"unterminated})", R"({"a" 1})",
                             R"(["lat",1])", R"({"lat":nan})", R"({"lat":1.5x})"}) {
    EXPECT_FALSE(jsonNumber(broken, "lat")) << broken;
  }
}

TEST(GpsdDecoder, FieldsModesAndUnits) {
  test::FixCollector fixes;
  GpsdDecoder decoder(fixes);
  decoder.handleLine(R"({"class":"SKY","hdop":0.9,"vdop":1.4,"uSat":7})");
  decoder.handleLine(
      R"({"class":"TPV","mode":3,"status":2,"time":"2024-05-01T12:30:15.500Z","lat":43.7,"lon":7.42,)"
      R"("alt":50.0,"altMSL":48.5,"speed":10.0,"track":270.5,"climb":-0.5,"epx":3.0,"epy":4.0,"epv":6.0})");
  decoder.handleLine(R"({"class":"TPV","mode":1,"lat":43.7,"lon":7.42,"eph":12})");
  decoder.handleLine(R"({"class":"VERSION","release":"3.22"})");
  decoder.handleLine("not json at all");
  ASSERT_EQ(fixes.fixes.size(), 2u);
  const GpsFix& f = fixes.fixes[0];
  EXPECT_EQ(f.fixType, kFixType3DDiff);
  // Altitude above sea level, not the ellipsoid; km/h; one horizontal error of both axes.
  const std::pair<float GpsFix::*, float> values[] = {{&GpsFix::altitude, 48.5f}, {&GpsFix::speed, 36.0f},
      {&GpsFix::course, 270.5f}, {&GpsFix::verticalSpeed, -0.5f}, {&GpsFix::horizontalError, 5.0f},
      {&GpsFix::verticalError, 6.0f}, {&GpsFix::vdop, 1.4f}};
  for (const auto& [field, value] : values) EXPECT_FLOAT_EQ(f.*field, value);
  EXPECT_EQ(f.satellitesUsed, 7u);
  CalendarTime t;
  ASSERT_TRUE(automationDateToCalendar(f.time, t));
  EXPECT_EQ(t, (CalendarTime{2024, 5, 1, 12, 30, 15, 500}));
  // No fix: position, errors and dilutions become invalid together.
  EXPECT_EQ(fixes.fixes[1].fixType, kFixTypeInvalid);
  EXPECT_FALSE(fixes.fixes[1].flags & kNoFixClearMask);
}

}  // namespace
}  // namespace orvel
