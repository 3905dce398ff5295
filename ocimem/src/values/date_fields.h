// Fields of a date that are derived from it rather than stored: day of the
// week and of the year, weeks, the ISO year, Oracle's Julian day number and
// the year spelled in English. Used by the format elements D, DY, DAY, DDD,
// WW, W, IW, IYYY, J and YEAR in both directions.
#ifndef OCIMEM_VALUES_DATE_FIELDS_H
#define OCIMEM_VALUES_DATE_FIELDS_H

#include <cstdint>
#include <string>

namespace ocimem::values {

constexpr std::int64_t kMaxJulian = 5373484;  // 31-DEC-9999

// 1 for Sunday .. 7 for Saturday (territory AMERICA).
int WeekDay(int year, int month, int day);
// 1 for 1 January; 1582 has 355 days.
int DayOfYear(int year, int month, int day);
int DaysInYear(int year);
// Month and day of the n-th day of `year`; false when the year has no such day.
bool DateOfDayOfYear(int year, int n, int* month, int* day);
// ISO 8601 week (1..53, weeks begin on Monday, week 1 holds the year's first
// Thursday) and the year that week belongs to.
void IsoWeek(int year, int month, int day, int* iso_year, int* week);

// Oracle's Julian day (element J): the astronomical day number for AD dates
// (1 January 1 AD is 1721424, 31 December 9999 is 5373484), and for BC dates
// the count that starts with 1 on 1 January 4712 BC, as Oracle's documented
// minimum has it.
std::int64_t JulianDay(int year, int month, int day);
// The date of a Julian day: 0, ORA-01854 outside 1..5373484, or ORA-01841 for
// the numbers between the last BC day and 1 January 1 AD, which name no date.
int DateOfJulianDay(std::int64_t j, int* year, int* month, int* day);

// The absolute value of `year` in words, upper case: 1998 is NINETEEN
// NINETY-EIGHT, 2001 TWO THOUSAND ONE, 2010 TWENTY TEN.
std::string SpelledYear(int year);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATE_FIELDS_H
