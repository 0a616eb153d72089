#include "gps/ole_date.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orvel {
namespace {

struct DateCase {
  CalendarTime time;
  double date;
};

// Values as every spreadsheet and automation client stores them.
const DateCase kDates[] = {
    {{1899, 12, 30, 0, 0, 0, 0}, 0.0}, {{1899, 12, 31, 0, 0, 0, 0}, 1.0},
    {{1900, 1, 1, 0, 0, 0, 0}, 2.0}, {{1900, 3, 1, 0, 0, 0, 0}, 61.0},  // 1900 is no leap year
    {{1899, 12, 29, 6, 0, 0, 0}, -1.25}, {{1899, 12, 30, 18, 0, 0, 0}, 0.75},
    {{1970, 1, 1, 0, 0, 0, 0}, 25569.0}, {{2000, 1, 1, 0, 0, 0, 0}, 36526.0},
    {{2000, 2, 29, 12, 0, 0, 0}, 36585.5}, {{2004, 7, 5, 12, 0, 0, 0}, 38173.5},
    {{2014, 12, 31, 23, 59, 59, 0}, 42004.0 + 86399.0 / 86400.0}, {{100, 1, 1, 0, 0, 0, 0}, -657434.0},
    {{9999, 12, 31, 0, 0, 0, 0}, 2958465.0}, {{2019, 12, 15, 20, 46, 57, 500}, 43814.0 + 74817.5 / 86400.0},
};

TEST(OleDate, CalendarToDateAndBack) {
  for (const DateCase& c : kDates) {
    double date = -99.0;
    ASSERT_TRUE(calendarToAutomationDate(c.time, date)) << c.date;
    EXPECT_NEAR(date, c.date, 1e-9) << c.date;
    CalendarTime t;
    ASSERT_TRUE(automationDateToCalendar(c.date, t)) << c.date;
    EXPECT_EQ(t, c.time) << c.date;
  }
}

TEST(OleDate, ImpossibleDatesAreRefusedAndLeaveTheOutput) {
  using C = CalendarTime;
  for (const C& t : {C{2001, 2, 29, 0, 0, 0, 0}, C{1900, 2, 29, 0, 0, 0, 0}, C{2000, 13, 1, 0, 0, 0, 0}, C{2000, 0, 1, 0, 0, 0, 0},
                     C{2000, 4, 31, 0, 0, 0, 0}, C{2000, 1, 0, 0, 0, 0, 0}, C{2000, 1, 1, 24, 0, 0, 0}, C{2000, 1, 1, 0, 60, 0, 0},
                     C{2000, 1, 1, 0, 0, 60, 0}, C{2000, 1, 1, 0, 0, 0, 1000}, C{99, 12, 31, 0, 0, 0, 0}, C{10000, 1, 1, 0, 0, 0, 0}}) {
    double date = 7.0;
    EXPECT_FALSE(calendarToAutomationDate(t, date)) << t.year << "-" << t.month << "-" << t.day;
    EXPECT_EQ(date, 7.0);
  }
  for (double date : {-657435.0, 2958466.0, 1e300, double(NAN), double(INFINITY)}) {
    CalendarTime t{1, 2, 3, 4, 5, 6, 7};
    EXPECT_FALSE(automationDateToCalendar(date, t)) << date;
    EXPECT_EQ(t, (CalendarTime{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(formatIso8601Utc(date), "") << date;
  }
}

TEST(OleDate, RoundingToMidnightCarriesIntoTheNextDay) {
  CalendarTime t;
  ASSERT_TRUE(automationDateToCalendar(36526.0 - 0.0001 / 86400.0, t));  // 0.1 ms before 2000
  EXPECT_EQ(t, (CalendarTime{2000, 1, 1, 0, 0, 0, 0}));
  ASSERT_TRUE(automationDateToCalendar(-1.0 - 86399.9999 / 86400.0, t));  // late on 1899-12-29
  EXPECT_EQ(t, (CalendarTime{1899, 12, 30, 0, 0, 0, 0}));
  // Printed to the second: the captures' expected fixes show the rest of the format.
  EXPECT_EQ(formatIso8601Utc(36526.0 - 0.4 / 86400.0), "2000-01-01T00:00:00Z");
  EXPECT_EQ(formatIso8601Utc(36526.0 - 0.6 / 86400.0), "1999-12-31T23:59:59Z");
}

}  // namespace
}  // namespace orvel
