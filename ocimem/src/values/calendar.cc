#include "calendar.h"

namespace ocimem::values {
namespace {

constexpr std::int64_t kFirstGregorianDay = 2299161;  // 1582-10-15
constexpr std::int64_t kUnixEpochDay = 2440588;       // 1970-01-01

// Astronomical numbering: 1 BC is year 0.
int Astronomical(int year) { return year < 0 ? year + 1 : year; }

bool IsGregorian(int year, int month, int day) {
  if (year != 1582) return year > 1582;
  if (month != 10) return month > 10;
  return day >= 15;
}

std::int64_t FloorDiv(std::int64_t a, std::int64_t b) {
  std::int64_t q = a / b;
  if ((a % b != 0) && ((a < 0) != (b < 0))) --q;
  return q;
}

}  // namespace

bool IsLeapYear(int year) {
  const int y = Astronomical(year);
  if (year < 1582) return y % 4 == 0;
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

int DaysInMonth(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month == 2 && IsLeapYear(year)) return 29;
  return kDays[month - 1];
}

bool IsMissingGregorianDay(int year, int month, int day) {
  return year == 1582 && month == 10 && day >= 5 && day <= 14;
}

bool IsValidDate(int year, int month, int day) {
  return year >= kMinYear && year <= kMaxYear && year != 0 && month >= 1 && month <= 12 &&
         day >= 1 && day <= DaysInMonth(year, month) && !IsMissingGregorianDay(year, month, day);
}

std::int64_t DayNumber(int year, int month, int day) {
  const std::int64_t a = (14 - month) / 12;
  const std::int64_t y = Astronomical(year) + 4800 - a;
  const std::int64_t m = month + 12 * a - 3;
  const std::int64_t base = day + (153 * m + 2) / 5 + 365 * y + y / 4;
  if (IsGregorian(year, month, day)) return base - y / 100 + y / 400 - 32045;
  return base - 32083;
}

void DateFromDayNumber(std::int64_t jdn, int* year, int* month, int* day) {
  std::int64_t b = 0;
  std::int64_t c = 0;
  if (jdn >= kFirstGregorianDay) {
    const std::int64_t a = jdn + 32044;
    b = (4 * a + 3) / 146097;
    c = a - 146097 * b / 4;
  } else {
    c = jdn + 32082;
  }
  const std::int64_t d = (4 * c + 3) / 1461;
  const std::int64_t e = c - 1461 * d / 4;
  const std::int64_t m = (5 * e + 2) / 153;
  *day = static_cast<int>(e - (153 * m + 2) / 5 + 1);
  *month = static_cast<int>(m + 3 - 12 * (m / 10));
  const auto astro = static_cast<int>(100 * b + d - 4800 + m / 10);
  *year = astro <= 0 ? astro - 1 : astro;
}

std::int64_t ToEpochSeconds(int year, int month, int day, int hour, int minute, int second) {
  return DayNumber(year, month, day) * 86400 + hour * 3600 + minute * 60 + second;
}

void FromEpochSeconds(std::int64_t s, int* year, int* month, int* day, int* hour, int* minute,
                      int* second) {
  const std::int64_t jdn = FloorDiv(s, 86400);
  std::int64_t rest = s - jdn * 86400;
  DateFromDayNumber(jdn, year, month, day);
  *hour = static_cast<int>(rest / 3600);
  rest %= 3600;
  *minute = static_cast<int>(rest / 60);
  *second = static_cast<int>(rest % 60);
}

std::int64_t ToUnixSeconds(int year, int month, int day, int hour, int minute, int second) {
  return ToEpochSeconds(year, month, day, hour, minute, second) - kUnixEpochDay * 86400;
}

}  // namespace ocimem::values
