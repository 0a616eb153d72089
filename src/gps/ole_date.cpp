#include "gps/ole_date.h"

#include <cmath>
#include <cstdio>

namespace orvel {
namespace {

constexpr int64_t kMillisecondsPerDay = 86400000;
constexpr int64_t kFirstDay = -657434;  // 0100-01-01
constexpr int64_t kLastDay = 2958465;   // 9999-12-31

bool isLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) {
  static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeap(year) ? 29 : kDays[month - 1];
}

// Days from 1970-01-01 to the given proleptic Gregorian date, counting in 400-year eras of
// 146097 days with the year starting in March, so that the leap day ends the year.
int64_t daysFromCivil(int64_t year, int64_t month, int64_t day) {
  year -= month <= 2 ? 1 : 0;
  const int64_t era = (year >= 0 ? year : year - 399) / 400;
  const int64_t yearOfEra = year - era * 400;
  const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

void civilFromDays(int64_t days, int& year, int& month, int& day) {
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const int64_t dayOfEra = days - era * 146097;
  const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
  day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
}

constexpr int64_t kAutomationDayZero = -25569;  // 1899-12-30 counted from 1970-01-01

// The calendar day (counted from 1899-12-30) and the milliseconds into it, the time rounded
// to the nearest multiple of `stepMs`. A time rounded up to midnight belongs to the next day.
bool splitDate(double date, int64_t stepMs, int64_t& day, int64_t& ms) {
  if (!std::isfinite(date) || date <= static_cast<double>(kFirstDay - 1) ||
      date >= static_cast<double>(kLastDay + 1)) {
    return false;
  }
  const double whole = std::trunc(date);
  const double steps = std::fabs(date - whole) * static_cast<double>(kMillisecondsPerDay / stepMs);
  day = static_cast<int64_t>(whole);
  ms = std::llround(steps) * stepMs;
  if (ms >= kMillisecondsPerDay) {
    ms -= kMillisecondsPerDay;
    day += 1;
  }
  return day >= kFirstDay && day <= kLastDay;
}

CalendarTime calendarFrom(int64_t day, int64_t ms) {
  CalendarTime t;
  civilFromDays(day + kAutomationDayZero, t.year, t.month, t.day);
  t.millisecond = static_cast<int>(ms % 1000);
  t.second = static_cast<int>(ms / 1000 % 60);
  t.minute = static_cast<int>(ms / 60000 % 60);
  t.hour = static_cast<int>(ms / 3600000);
  return t;
}

}  // namespace

bool calendarToAutomationDate(const CalendarTime& t, double& out) {
  if (t.year < 100 || t.year > 9999 || t.month < 1 || t.month > 12) return false;
  if (t.day < 1 || t.day > daysInMonth(t.year, t.month)) return false;
  if (t.hour < 0 || t.hour > 23 || t.minute < 0 || t.minute > 59 || t.second < 0 ||
      t.second > 59 || t.millisecond < 0 || t.millisecond > 999) {
    return false;
  }
  const int64_t day = daysFromCivil(t.year, t.month, t.day) - kAutomationDayZero;
  const int64_t ms = ((int64_t{t.hour} * 60 + t.minute) * 60 + t.second) * 1000 + t.millisecond;
  const double fraction = static_cast<double>(ms) / static_cast<double>(kMillisecondsPerDay);
  out = day >= 0 ? static_cast<double>(day) + fraction : static_cast<double>(day) - fraction;
  return true;
}

bool automationDateToCalendar(double date, CalendarTime& out) {
  int64_t day = 0;
  int64_t ms = 0;
  if (!splitDate(date, 1, day, ms)) return false;
  out = calendarFrom(day, ms);
  return true;
}

double unixSecondsToAutomationDate(double seconds) {
  return seconds / 86400.0 + kUnixEpochAutomationDate;
}

double automationDateToUnixSeconds(double date) {
  return (date - kUnixEpochAutomationDate) * 86400.0;
}

std::string formatIso8601Utc(double date) {
  int64_t day = 0;
  int64_t ms = 0;
  if (!splitDate(date, 1000, day, ms)) return {};
  const CalendarTime t = calendarFrom(day, ms);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", t.year, t.month, t.day, t.hour,
                t.minute, t.second);
  return text;
}

}  // namespace orvel
