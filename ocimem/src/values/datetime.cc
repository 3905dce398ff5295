#include "datetime.h"

#include <cstdlib>
#include <ctime>

#include "calendar.h"

namespace ocimem::values {
namespace {

bool SameFold(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const char x = a[i] >= 'a' && a[i] <= 'z' ? static_cast<char>(a[i] - 'a' + 'A') : a[i];
    const char y = b[i] >= 'a' && b[i] <= 'z' ? static_cast<char>(b[i] - 'a' + 'A') : b[i];
    if (x != y) {
      return false;
    }
  }
  return true;
}

std::int64_t LocalSeconds(const DateTimeFields& f) {
  return ToUnixSeconds(f.year, f.month, f.day, f.hour, f.minute, f.second);
}

DateTimeFields FromUnix(std::int64_t s, std::uint32_t nanos) {
  DateTimeFields f;
  FromEpochSeconds(s + ToEpochSeconds(1970, 1, 1, 0, 0, 0), &f.year, &f.month, &f.day, &f.hour,
                   &f.minute, &f.second);
  f.nanos = nanos;
  return f;
}

int OsOffsetMinutes() {
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  return static_cast<int>(tm.tm_gmtoff / 60);
}

}  // namespace

DateTimeFields FieldsOf(const DateTimeValue& v) {
  DateTimeFields f;
  f.year = v.year;
  f.month = v.month;
  f.day = v.day;
  f.hour = v.hour;
  f.minute = v.minute;
  f.second = v.second;
  f.nanos = v.nanos;
  return f;
}

void SetFields(const DateTimeFields& f, DateTimeValue* v) {
  v->year = f.year;
  v->month = f.month;
  v->day = f.day;
  v->hour = f.hour;
  v->minute = f.minute;
  v->second = f.second;
  v->nanos = f.nanos;
}

int ResolveZoneText(std::string_view text, Zone* out) {
  Zone z;
  const int rc = ParseOffset(text, &z.offset_minutes);
  if (rc > 0) return rc;
  if (rc < 0) {
    z.rules = FindRegion(text);
    if (z.rules == nullptr) return kOraRegionNotFound;
    z.is_region = true;
    z.region = std::string(text);
  }
  *out = z;
  return 0;
}

int ResolveSessionZone(const std::string& setting, Zone* out) {
  std::string value = setting;
  if (value.empty()) {
    const char* env = std::getenv("ORA_SDTZ");
    value = env != nullptr ? env : "OS_TZ";
  }
  if (SameFold(value, "OS_TZ") || SameFold(value, "LOCAL")) {
    *out = Zone{};
    out->offset_minutes = OsOffsetMinutes();
    return 0;
  }
  if (SameFold(value, "DB_TZ") || SameFold(value, "DBTIMEZONE")) {
    *out = Zone{};
    return 0;
  }
  return ResolveZoneText(value, out);
}

int MakeZonedValue(const DateTimeFields& local, const Zone& zone, std::string_view abbreviation,
                   DateTimeValue* out) {
  DateTimeValue v;
  SetFields(local, &v);
  if (!zone.is_region) {
    v.offset_minutes = zone.offset_minutes;
    *out = v;
    return 0;
  }
  const std::vector<std::int64_t> instants = zone.rules->FromLocal(LocalSeconds(local));
  if (instants.empty()) return kOraFieldNotFound;
  std::int64_t chosen = instants.front();
  bool found = false;
  for (std::int64_t t : instants) {
    const LocalTimeType type = zone.rules->At(t);
    if (!abbreviation.empty()) {
      if (SameFold(type.abbreviation, abbreviation)) {
        chosen = t;
        found = true;
      }
    } else if (!type.is_dst) {
      chosen = t;
      found = true;
    }
  }
  if (!found && !abbreviation.empty()) return kOraBadZone;
  const LocalTimeType type = zone.rules->At(chosen);
  v.offset_minutes = type.offset_seconds / 60;
  v.region = zone.region;
  v.abbreviation = type.abbreviation;
  *out = v;
  return 0;
}

DateTimeFields ToUtc(const DateTimeValue& zoned) {
  return FromUnix(LocalSeconds(FieldsOf(zoned)) - zoned.offset_minutes * 60, zoned.nanos);
}

void FromUtc(const DateTimeFields& utc, const Zone& zone, DateTimeFields* local,
             ZoneOutput* shown) {
  const std::int64_t t = LocalSeconds(utc);
  ZoneOutput z;
  int offset_seconds = zone.offset_minutes * 60;
  if (zone.is_region) {
    const LocalTimeType type = zone.rules->At(t);
    offset_seconds = type.offset_seconds / 60 * 60;
    z.is_region = true;
    z.region = zone.region;
    z.abbreviation = type.abbreviation;
  }
  z.offset_minutes = offset_seconds / 60;
  *local = FromUnix(t + offset_seconds, utc.nanos);
  if (shown != nullptr) *shown = z;
}

}  // namespace ocimem::values
