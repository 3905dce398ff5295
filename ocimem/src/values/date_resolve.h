// What a datetime text gave, element by element, before it becomes a date:
// Julian days, days of the year, seconds of the day, eras and meridians are
// turned into calendar fields and checked against each other here.
#ifndef OCIMEM_VALUES_DATE_RESOLVE_H
#define OCIMEM_VALUES_DATE_RESOLVE_H

#include <cstdint>

#include "date_format.h"
#include "date_text.h"

namespace ocimem::values {

struct ParsedFields {
  bool has[date_text::kGroups] = {};     // the mask names the group
  bool filled[date_text::kGroups] = {};  // the text gave a value for it
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::uint32_t nanos = 0;
  bool twelve_hour = false;
  bool pm = false;
  bool bc = false;
  int week_day = 0;     // D, DY, DAY: 1 (Sunday) .. 7
  int day_of_year = 0;  // DDD
  std::int64_t julian = 0;
  int seconds_of_day = 0;  // SSSSS

  bool Has(date_text::Group g) const { return has[static_cast<int>(g)]; }
  bool Filled(date_text::Group g) const { return filled[static_cast<int>(g)]; }
};

// Calendar fields from what was read, with missing fields taken from
// `options` (the clock); 0 or the ORA error of the first conflict found.
int ResolveParsed(const ParsedFields& p, const DateParseOptions& options, DateTimeFields* out);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATE_RESOLVE_H
