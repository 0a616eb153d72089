// The waypoint dialog: what it shows, what OK writes back, and what it leaves alone.
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>
#include <gtest/gtest.h>

#include "core/message.h"
#include "track/ui/waypoint_dialog.h"
#include "geo/coords.h"
#include "geo/units.h"

namespace orvel {
namespace {

class WaypointDialogTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (!QApplication::instance()) {
      static int argc = 1;
      static char name[] = "test_track_ui";
      static char* argv[] = {name, nullptr};
      new QApplication(argc, argv);
    }
  }
  void SetUp() override {
    waypoint.lat = degreesToSemicircles(55.755833f);
    waypoint.lon = degreesToSemicircles(37.617778f);
    waypoint.altitude = 152.37f;
    setWaypointString(waypoint, kWaypointName, u"001");
    setWaypointString(waypoint, kWaypointComment, u"у реки");
  }
  static QString text(const WaypointEditDialog& dialog, int id) { return dialog.field(id)->text(); }
  static void type(WaypointEditDialog& dialog, int id, const QString& text) { dialog.field(id)->setText(text); }

  Waypoint waypoint;
  LengthFormat lengths;
  Messages messages;
  MessageRecorder recorded{messages};
};

struct LengthCase {
  int unit;
  float value;
  bool givenInMetres;
  bool whole;
  const char16_t* expected;
};

TEST(FormatLength, RoundsToTenthsOrWholeInTheAltitudeUnit) {
  const LengthCase cases[] = {
      {kUnitMetres, 152.37f, true, false, u"152.4"},
      {kUnitMetres, 12.96f, true, false, u"13.0"},  // carries into the units
      {kUnitMetres, 12.94f, true, false, u"12.9"},
      {kUnitMetres, 0.0f, true, false, u"0.0"},
      {kUnitMetres, 0.04f, true, false, u"0.0"},
      {kUnitMetres, -5.25f, true, false, u"-5.3"},
      {kUnitMetres, 9.99f, true, false, u"10.0"},
      {kUnitMetres, 2.5f, true, true, u"3"},
      {kUnitMetres, 2.49f, true, true, u"2"},
      {kUnitMetres, -0.5f, true, true, u"-1"},
      {kUnitMetres, 1234567.0f, true, true, u"1234567"},
      {kUnitFeet, 100.0f, true, false, u"328.1"},  // metres shown in feet
      {kUnitFeet, 100.0f, true, true, u"328"},
      {kUnitFeet, 328.0f, false, false, u"328.0"},  // feet stay feet
      {kUnitMetres, 328.08399f, false, false, u"100.0"},  // feet shown in metres
      {kUnitMetres, 3280.8399f, false, true, u"1000"},
  };
  for (const LengthCase& c : cases) {
    LengthFormat lengths;
    lengths.setAltitudeUnit(c.unit);
    EXPECT_EQ(lengths.formatLength(c.value, c.givenInMetres, c.whole), std::u16string(c.expected))
        << "unit " << c.unit << " value " << c.value << " whole " << c.whole;
  }
}

TEST_F(WaypointDialogTest, AltitudeIsShownInFeetButStoredAsTyped) {
  lengths.setAltitudeUnit(kUnitFeet);
  waypoint.altitude = 100.0f;
  WaypointEditDialog dialog(waypoint, lengths, messages);
  EXPECT_EQ(text(dialog, kWaypointAltitudeId), QStringLiteral("328.1"));
  type(dialog, kWaypointAltitudeId, QStringLiteral("1000"));
  dialog.accept();
  EXPECT_EQ(waypoint.altitude, 1000.0f);
}

TEST_F(WaypointDialogTest, OkWithNothingChangedKeepsThePositionToWholeMapUnits) {
  // A latitude well inside a map unit: the dialog shows the unit's corner, and OK stores it.
  const Semicircles corner = waypoint.lat & ~0xFF;
  waypoint.lat = corner + 250;
  const Semicircles lonCorner = waypoint.lon & ~0xFF;
  waypoint.lon = lonCorner + 250;
  WaypointEditDialog dialog(waypoint, lengths, messages);
  dialog.accept();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  // What remains is the text's rounding to a thousandth of a minute and single precision.
  EXPECT_LE(std::abs(waypoint.lat - corner), 160);
  EXPECT_LE(std::abs(waypoint.lon - lonCorner), 160);
  EXPECT_NEAR(waypoint.altitude, 152.4f, 1e-4f);  // the shown tenths are stored back
  EXPECT_EQ(waypoint.name(), u"001");
}

TEST_F(WaypointDialogTest, OkWritesTheTypedFields) {
  WaypointEditDialog dialog(waypoint, lengths, messages);
  type(dialog, kWaypointLatitudeId, QString::fromUtf8("S10°30.000'"));
  type(dialog, kWaypointLongitudeId, QStringLiteral("20.25"));
  type(dialog, kWaypointNameId, QStringLiteral("Дом"));
  type(dialog, kWaypointAltitudeId, QStringLiteral("-12.5"));
  type(dialog, kWaypointCommentId, QString());
  dialog.accept();
  EXPECT_EQ(waypoint.lat, degreesToSemicircles(-10.5f));
  EXPECT_EQ(waypoint.lon, degreesToSemicircles(20.25f));
  EXPECT_EQ(waypoint.altitude, -12.5f);  // as typed, whatever the unit
  EXPECT_EQ(waypoint.name(), u"Дом");
  EXPECT_EQ(waypoint.strings[kWaypointComment], u"");
}

TEST_F(WaypointDialogTest, UnreadableTextsKeepThePreviousValues) {
  const Waypoint before = waypoint;
  const QString unreadable[] = {QString(), QStringLiteral("abc"), QStringLiteral("высота"),
                                QStringLiteral("-"), QStringLiteral(" ")};
  for (const QString& bad : unreadable) {
    waypoint = before;
    WaypointEditDialog dialog(waypoint, lengths, messages);
    type(dialog, kWaypointLatitudeId, bad);
    type(dialog, kWaypointLongitudeId, bad);
    type(dialog, kWaypointAltitudeId, bad);
    type(dialog, kWaypointNameId, QStringLiteral("новое"));
    dialog.accept();
    EXPECT_EQ(waypoint.lat, before.lat) << bad.toStdString();
    EXPECT_EQ(waypoint.lon, before.lon) << bad.toStdString();
    EXPECT_EQ(waypoint.altitude, before.altitude) << bad.toStdString();
    EXPECT_EQ(waypoint.name(), u"новое");  // the readable field still goes in
  }
}

TEST_F(WaypointDialogTest, EditWaypointTakesTheFieldsOnlyOnOk) {
  const Waypoint before = waypoint;
  for (const bool ok : {false, true}) {
    const bool accepted = editWaypoint(waypoint, lengths, messages, nullptr, [ok](QDialog& shown) {
      auto& dialog = static_cast<WaypointEditDialog&>(shown);
      dialog.field(kWaypointLatitudeId)->setText(QStringLiteral("1.0"));
      dialog.field(kWaypointNameId)->setText(QStringLiteral("Мост"));
      dialog.field(kWaypointAltitudeId)->setText(QStringLiteral("7"));
      ok ? dialog.accept() : dialog.reject();
      return dialog.result();
    });
    EXPECT_EQ(accepted, ok);
    EXPECT_EQ(waypoint == before, !ok) << ok;  // cancel changes nothing
  }
  EXPECT_EQ(waypoint.name(), u"Мост");
  EXPECT_EQ(waypoint.altitude, 7.0f);
}

}  // namespace
}  // namespace orvel
