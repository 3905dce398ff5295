// Zoned datetime values: resolving zone texts and the session time zone, and
// moving between local time and instants.
#ifndef OCIMEM_VALUES_DATETIME_H
#define OCIMEM_VALUES_DATETIME_H

#include <string>
#include <string_view>

#include "date_format.h"
#include "timezone.h"
#include "value_types.h"

namespace ocimem::values {

constexpr int kOraFieldNotFound = 1878;
constexpr int kOraRegionNotFound = 1882;

struct Zone {
  bool is_region = false;
  int offset_minutes = 0;
  std::string region;
  const ZoneRules* rules = nullptr;
};

// An offset "[+|-]hh:mm" or a region name: 0, 1874, 1875 or 1882.
int ResolveZoneText(std::string_view text, Zone* out);

// The session time zone: `setting` when not empty, else $ORA_SDTZ, else the
// operating system's current offset. OS_TZ / DB_TZ name the OS zone and the
// database zone (UTC here).
int ResolveSessionZone(const std::string& setting, Zone* out);

// Local fields in `zone` -> a TIMESTAMP WITH TIME ZONE value. `abbreviation`
// (TZD) picks between the two instants of an autumn overlap; without it the
// standard-time instant is taken. 0, 1857 or 1878 (spring gap).
int MakeZonedValue(const DateTimeFields& local, const Zone& zone, std::string_view abbreviation,
                   DateTimeValue* out);

// The UTC fields of a zoned value.
DateTimeFields ToUtc(const DateTimeValue& zoned);

// UTC fields -> local fields in `zone`, with its zone for output.
void FromUtc(const DateTimeFields& utc, const Zone& zone, DateTimeFields* local, ZoneOutput* shown);

DateTimeFields FieldsOf(const DateTimeValue& v);
void SetFields(const DateTimeFields& f, DateTimeValue* v);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATETIME_H
