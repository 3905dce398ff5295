// Calendar arithmetic on datetime fields: months added the way ADD_MONTHS
// adds them and the way an INTERVAL YEAR TO MONTH does, seconds added, and
// the distance and order of two points in time. Results are Oracle error
// numbers (0 = success).
#ifndef OCIMEM_VALUES_DATETIME_ARITH_H
#define OCIMEM_VALUES_DATETIME_ARITH_H

#include <cstdint>

#include "date_format.h"

namespace ocimem::values {

constexpr int kOraNotComparable = 1870;
constexpr int kOraYearMonthDifference = 30086;

// A point on ocimem's continuous time line: seconds since the calendar's
// epoch and nanoseconds 0..999999999.
struct TimePoint {
  std::int64_t seconds = 0;
  std::int32_t nanos = 0;
};

TimePoint TimePointOf(const DateTimeFields& f);
// 0, or kOraBadYear when the point lies outside -4712..9999.
int FieldsOfTimePoint(const TimePoint& t, DateTimeFields* out);

// -1, 0 or 1.
int Compare(const TimePoint& a, const TimePoint& b);

// a - b in whole seconds and nanoseconds of the same sign.
void Difference(const TimePoint& a, const TimePoint& b, std::int64_t* seconds,
                std::int32_t* nanos);

// `f` moved by `seconds` and `nanos` (any signs). 0 or kOraBadYear.
int AddSeconds(const DateTimeFields& f, std::int64_t seconds, std::int64_t nanos,
               DateTimeFields* out);

// ADD_MONTHS: the same day of the month `months` later, or the last day of
// that month when the day is the last of its own month or the target month is
// shorter. Time of day kept. 0 or kOraBadYear.
int AddMonthsLastDay(const DateTimeFields& f, std::int64_t months, DateTimeFields* out);

// INTERVAL YEAR TO MONTH arithmetic: the same day of the month `months`
// later, which must exist (kOraDayNotValidForMonth otherwise: 31 January plus
// one month, 29 February plus one year). 0, kOraDayNotValidForMonth or
// kOraBadYear.
int AddMonthsExact(const DateTimeFields& f, std::int64_t months, DateTimeFields* out);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATETIME_ARITH_H
