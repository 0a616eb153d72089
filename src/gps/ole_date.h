#pragma once
// Automation dates: UTC date and time as days since 1899-12-30 00:00 in a double, the time of
// day in the fraction. Before day 0 the whole part counts days backwards while the fraction
// still counts forwards: -1.25 is 1899-12-29 06:00. Valid from year 100 to 9999.
#include <cstdint>
#include <string>

namespace orvel {

struct CalendarTime {
  int year = 0;
  int month = 0;   // 1-12
  int day = 0;     // 1-31
  int hour = 0;    // 0-23
  int minute = 0;  // 0-59
  int second = 0;  // 0-59
  int millisecond = 0;  // 0-999
  friend bool operator==(const CalendarTime&, const CalendarTime&) = default;
};

// Days between 1899-12-30 and 1970-01-01.
inline constexpr double kUnixEpochAutomationDate = 25569.0;

// False, with `out` untouched, for a field out of its range or a year outside 100-9999.
bool calendarToAutomationDate(const CalendarTime& time, double& out);
// Rounds to the nearest millisecond. False, with `out` untouched, outside years 100-9999
// or for a value that is not a number.
bool automationDateToCalendar(double date, CalendarTime& out);

// Seconds since 1970-01-01 00:00 UTC (fractions kept) and back.
double unixSecondsToAutomationDate(double seconds);
double automationDateToUnixSeconds(double date);

// "YYYY-MM-DDTHH:MM:SSZ", rounded to the nearest second; empty when the date is invalid.
std::string formatIso8601Utc(double date);

}  // namespace orvel
