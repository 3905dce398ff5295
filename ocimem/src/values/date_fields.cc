#include "date_fields.h"

#include "calendar.h"

namespace ocimem::values {
namespace {

// ocimem's calendar has no year 0, so its BC days run one year later in the
// day count than Oracle's numbering, which gives the year before 1 AD numbers
// of its own (decision in docs/ocimem.md).
constexpr std::int64_t kBcShift = 365;
constexpr std::int64_t kFirstAdDay = 1721424;  // DayNumber(1, 1, 1)

const char* const kOnes[] = {"ZERO",    "ONE",     "TWO",       "THREE",    "FOUR",
                             "FIVE",    "SIX",     "SEVEN",     "EIGHT",    "NINE",
                             "TEN",     "ELEVEN",  "TWELVE",    "THIRTEEN", "FOURTEEN",
                             "FIFTEEN", "SIXTEEN", "SEVENTEEN", "EIGHTEEN", "NINETEEN"};
const char* const kTens[] = {"",      "",      "TWENTY",  "THIRTY", "FORTY",
                             "FIFTY", "SIXTY", "SEVENTY", "EIGHTY", "NINETY"};

// 0..99 in words.
std::string Words(int n) {
  if (n < 20) return kOnes[n];
  std::string out = kTens[n / 10];
  if (n % 10 != 0) {
    out += '-';
    out += kOnes[n % 10];
  }
  return out;
}

}  // namespace

int WeekDay(int year, int month, int day) {
  // Day number 0 was a Monday.
  const std::int64_t r = (DayNumber(year, month, day) + 1) % 7;
  return static_cast<int>(r < 0 ? r + 7 : r) + 1;
}

int DayOfYear(int year, int month, int day) {
  return static_cast<int>(DayNumber(year, month, day) - DayNumber(year, 1, 1)) + 1;
}

int DaysInYear(int year) {
  const int next = year == -1 ? 1 : year + 1;
  if (year == kMaxYear) return 365;
  return static_cast<int>(DayNumber(next, 1, 1) - DayNumber(year, 1, 1));
}

bool DateOfDayOfYear(int year, int n, int* month, int* day) {
  if (n < 1 || n > DaysInYear(year)) return false;
  int y = 0;
  DateFromDayNumber(DayNumber(year, 1, 1) + n - 1, &y, month, day);
  return true;
}

void IsoWeek(int year, int month, int day, int* iso_year, int* week) {
  const std::int64_t n = DayNumber(year, month, day);
  std::int64_t monday_based = n % 7;  // 0 on a Monday
  if (monday_based < 0) monday_based += 7;
  const std::int64_t thursday = n - monday_based + 3;
  int m = 0;
  int d = 0;
  DateFromDayNumber(thursday, iso_year, &m, &d);
  *week = (DayOfYear(*iso_year, m, d) - 1) / 7 + 1;
}

std::int64_t JulianDay(int year, int month, int day) {
  const std::int64_t n = DayNumber(year, month, day);
  return year < 0 ? n - kBcShift : n;
}

int DateOfJulianDay(std::int64_t j, int* year, int* month, int* day) {
  if (j < 1 || j > kMaxJulian) return 1854;
  std::int64_t n = j;
  if (j < kFirstAdDay) {
    n = j + kBcShift;
    if (n >= kFirstAdDay) return 1841;
  }
  DateFromDayNumber(n, year, month, day);
  return 0;
}

std::string SpelledYear(int year) {
  const int y = year < 0 ? -year : year;
  const int high = y / 100;
  const int low = y % 100;
  if (high == 0) return Words(low);
  if (high % 10 == 0 && low < 10) {
    std::string out = Words(high / 10) + " THOUSAND";
    if (low != 0) out += " " + Words(low);
    return out;
  }
  if (low == 0) return Words(high) + " HUNDRED";
  return Words(high) + " " + Words(low);
}

}  // namespace ocimem::values
