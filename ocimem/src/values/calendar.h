// Oracle's calendar: Julian before 15 October 1582, Gregorian from then on,
// years -4712..9999 with no year 0 (negative years are BC).
#ifndef OCIMEM_VALUES_CALENDAR_H
#define OCIMEM_VALUES_CALENDAR_H

#include <cstdint>

namespace ocimem::values {

constexpr int kMinYear = -4712;
constexpr int kMaxYear = 9999;

bool IsLeapYear(int year);
int DaysInMonth(int year, int month);
// 5..14 October 1582 do not exist.
bool IsMissingGregorianDay(int year, int month, int day);
bool IsValidDate(int year, int month, int day);

// Continuous day count (Julian day number) for date arithmetic.
std::int64_t DayNumber(int year, int month, int day);
void DateFromDayNumber(std::int64_t jdn, int* year, int* month, int* day);

// Seconds since an epoch at 4713 BC; used to move between zones.
std::int64_t ToEpochSeconds(int year, int month, int day, int hour, int minute, int second);
void FromEpochSeconds(std::int64_t s, int* year, int* month, int* day, int* hour, int* minute,
                      int* second);

// Seconds since 1970-01-01 00:00:00 (Unix time) of the same civil fields.
std::int64_t ToUnixSeconds(int year, int month, int day, int hour, int minute, int second);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_CALENDAR_H
