// Plain value forms behind OCIDateTime and OCIInterval descriptors. The
// conversion code works on these; the descriptors only wrap them with a tag.
#ifndef OCIMEM_VALUES_VALUE_TYPES_H
#define OCIMEM_VALUES_VALUE_TYPES_H

#include <cstdint>
#include <string>

namespace ocimem::values {

enum class DateTimeKind : std::uint8_t { Date, Timestamp, TimestampTz, TimestampLtz };

// Broken-down calendar time. For TimestampTz the fields are local time in
// the value's own zone; for TimestampLtz they are the UTC instant (shown in
// the session time zone); otherwise they carry no zone at all.
struct DateTimeValue {
  int year = 1;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::uint32_t nanos = 0;
  int offset_minutes = 0;  // UTC offset in effect for the local fields (TZ only)
  std::string region;      // upper-case region name, empty for a plain offset
  std::string abbreviation;  // TZD of the region at that instant
};

enum class IntervalKind : std::uint8_t { YearMonth, DaySecond };

// Both forms are kept as totals so that every field shares one sign.
struct IntervalValue {
  std::int64_t months = 0;   // YEAR TO MONTH
  std::int64_t seconds = 0;  // DAY TO SECOND, whole seconds
  std::int32_t nanos = 0;    // DAY TO SECOND, same sign as seconds
};

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_VALUE_TYPES_H
