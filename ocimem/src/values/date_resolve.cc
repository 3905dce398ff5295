#include "date_resolve.h"

#include "calendar.h"
#include "date_fields.h"

namespace ocimem::values {
using date_text::Group;

int ResolveParsed(const ParsedFields& p, const DateParseOptions& options, DateTimeFields* out) {
  int year = p.Has(Group::Year) ? p.year : options.current_year;
  if (p.bc && p.Filled(Group::Year)) year = -year;
  int month = p.Has(Group::Month) ? p.month : options.current_month;
  int day = p.Has(Group::Day) ? p.day : 1;
  if (p.Filled(Group::Julian)) {
    int jy = 0;
    int jm = 0;
    int jd = 0;
    if (int rc = DateOfJulianDay(p.julian, &jy, &jm, &jd)) return rc;
    if (p.Filled(Group::Year) && year != jy) return kOraYearConflictsJulian;
    if (p.Filled(Group::Month) && month != jm) return kOraMonthConflictsJulian;
    if (p.Filled(Group::Day) && day != jd) return kOraDayConflictsJulian;
    year = jy;
    month = jm;
    day = jd;
  } else {
    if (year < kMinYear || year > kMaxYear || year == 0) return kOraBadYear;
    if (p.Filled(Group::DayOfYear)) {
      if (!DateOfDayOfYear(year, p.day_of_year, &month, &day)) return kOraBadDayOfYear;
    } else {
      if (day > DaysInMonth(year, month)) return kOraDayNotValidForMonth;
      // The days dropped by the Gregorian reform read as its first day.
      if (IsMissingGregorianDay(year, month, day)) day = 15;
    }
  }
  if (p.Filled(Group::WeekDay) && WeekDay(year, month, day) != p.week_day) {
    return kOraWeekDayConflicts;
  }
  int hour = p.hour;
  if (p.twelve_hour) hour = hour % 12 + (p.pm ? 12 : 0);
  int minute = p.minute;
  int second = p.second;
  if (p.Filled(Group::SecondsOfDay)) {
    const int h = p.seconds_of_day / 3600;
    const int m = p.seconds_of_day / 60 % 60;
    const int s = p.seconds_of_day % 60;
    if (p.Filled(Group::Hour) && hour != h) return kOraHourConflictsSeconds;
    if (p.Filled(Group::Minute) && minute != m) return kOraMinuteConflictsSeconds;
    if (p.Filled(Group::Second) && second != s) return kOraSecondConflictsSeconds;
    hour = h;
    minute = m;
    second = s;
  }
  out->year = year;
  out->month = month;
  out->day = day;
  out->hour = hour;
  out->minute = minute;
  out->second = second;
  out->nanos = p.nanos;
  return 0;
}

}  // namespace ocimem::values
