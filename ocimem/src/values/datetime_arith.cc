#include "datetime_arith.h"

#include "calendar.h"

namespace ocimem::values {
namespace {

constexpr std::int64_t kNanosPerSecond = 1000000000;

std::int64_t FloorDiv(std::int64_t a, std::int64_t b) {
  std::int64_t q = a / b;
  if (a % b != 0 && ((a < 0) != (b < 0))) --q;
  return q;
}

// Months since 1 BC (astronomical year 0) began, and back; no year 0.
std::int64_t MonthIndex(int year, int month) {
  const std::int64_t astronomical = year < 0 ? year + 1 : year;
  return astronomical * 12 + (month - 1);
}

bool YearMonthOf(std::int64_t index, int* year, int* month) {
  const std::int64_t astronomical = FloorDiv(index, 12);
  const std::int64_t y = astronomical <= 0 ? astronomical - 1 : astronomical;
  if (y < kMinYear || y > kMaxYear) return false;
  *year = static_cast<int>(y);
  *month = static_cast<int>(index - astronomical * 12) + 1;
  return true;
}

// The target month of `f` plus `months`; false when it leaves -4712..9999.
bool TargetMonth(const DateTimeFields& f, std::int64_t months, int* year, int* month) {
  // Far beyond any reachable month: no overflow of the index below.
  if (months > 200000 || months < -200000) return false;
  return YearMonthOf(MonthIndex(f.year, f.month) + months, year, month);
}

}  // namespace

TimePoint TimePointOf(const DateTimeFields& f) {
  TimePoint t;
  t.seconds = ToEpochSeconds(f.year, f.month, f.day, f.hour, f.minute, f.second);
  t.nanos = static_cast<std::int32_t>(f.nanos);
  return t;
}

int FieldsOfTimePoint(const TimePoint& t, DateTimeFields* out) {
  static const std::int64_t kFirst = ToEpochSeconds(kMinYear, 1, 1, 0, 0, 0);
  static const std::int64_t kLast = ToEpochSeconds(kMaxYear, 12, 31, 23, 59, 59);
  if (t.seconds < kFirst || t.seconds > kLast) return kOraBadYear;
  DateTimeFields f;
  FromEpochSeconds(t.seconds, &f.year, &f.month, &f.day, &f.hour, &f.minute, &f.second);
  f.nanos = static_cast<std::uint32_t>(t.nanos);
  *out = f;
  return 0;
}

int Compare(const TimePoint& a, const TimePoint& b) {
  if (a.seconds != b.seconds) return a.seconds < b.seconds ? -1 : 1;
  if (a.nanos != b.nanos) return a.nanos < b.nanos ? -1 : 1;
  return 0;
}

void Difference(const TimePoint& a, const TimePoint& b, std::int64_t* seconds,
                std::int32_t* nanos) {
  std::int64_t s = a.seconds - b.seconds;
  std::int64_t n = static_cast<std::int64_t>(a.nanos) - b.nanos;
  if (s > 0 && n < 0) {
    --s;
    n += kNanosPerSecond;
  } else if (s < 0 && n > 0) {
    ++s;
    n -= kNanosPerSecond;
  }
  *seconds = s;
  *nanos = static_cast<std::int32_t>(n);
}

int AddSeconds(const DateTimeFields& f, std::int64_t seconds, std::int64_t nanos,
               DateTimeFields* out) {
  const std::int64_t total_nanos = static_cast<std::int64_t>(f.nanos) + nanos % kNanosPerSecond;
  TimePoint t = TimePointOf(f);
  t.seconds += seconds + nanos / kNanosPerSecond + FloorDiv(total_nanos, kNanosPerSecond);
  t.nanos = static_cast<std::int32_t>(total_nanos - FloorDiv(total_nanos, kNanosPerSecond) *
                                                        kNanosPerSecond);
  return FieldsOfTimePoint(t, out);
}

int AddMonthsLastDay(const DateTimeFields& f, std::int64_t months, DateTimeFields* out) {
  int year = 0;
  int month = 0;
  if (!TargetMonth(f, months, &year, &month)) return kOraBadYear;
  const int last = DaysInMonth(year, month);
  int day = f.day;
  if (f.day == DaysInMonth(f.year, f.month) || day > last) day = last;
  // The days dropped by the Gregorian reform become its first day, as they do on input.
  if (IsMissingGregorianDay(year, month, day)) day = 15;
  *out = f;
  out->year = year;
  out->month = month;
  out->day = day;
  return 0;
}

int AddMonthsExact(const DateTimeFields& f, std::int64_t months, DateTimeFields* out) {
  int year = 0;
  int month = 0;
  if (!TargetMonth(f, months, &year, &month)) return kOraBadYear;
  if (f.day > DaysInMonth(year, month)) return kOraDayNotValidForMonth;
  *out = f;
  out->year = year;
  out->month = month;
  if (IsMissingGregorianDay(year, month, f.day)) out->day = 15;
  return 0;
}

}  // namespace ocimem::values
