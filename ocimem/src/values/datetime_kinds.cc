#include "datetime_kinds.h"

#include "timezone.h"

namespace ocimem::values {

bool IsZonedKind(DateTimeKind k) {
  return k == DateTimeKind::TimestampTz || k == DateTimeKind::TimestampLtz;
}

int StoreLocal(DateTimeDescriptor* d, DateTimeFields local, const Zone* given,
               std::string_view abbreviation, const Zone& session) {
  if (d->kind == DateTimeKind::Date) local.nanos = 0;
  if (!IsZonedKind(d->kind)) {
    d->value = DateTimeValue{};
    SetFields(local, &d->value);
    return 0;
  }
  DateTimeValue v;
  if (int ora = MakeZonedValue(local, given != nullptr ? *given : session, abbreviation, &v)) {
    return ora;
  }
  if (d->kind == DateTimeKind::TimestampLtz) {
    // An instant: kept in UTC and shown in the session zone.
    DateTimeValue utc;
    SetFields(ToUtc(v), &utc);
    v = utc;
  }
  d->value = v;
  return 0;
}

DateTimeFields Shown(const DateTimeDescriptor& d, const Zone& session, ZoneOutput* zone,
                     bool* has_zone) {
  *has_zone = IsZonedKind(d.kind);
  if (d.kind == DateTimeKind::TimestampLtz) {
    DateTimeFields local;
    FromUtc(FieldsOf(d.value), session, &local, zone);
    return local;
  }
  if (d.kind == DateTimeKind::TimestampTz) {
    zone->is_region = !d.value.region.empty();
    zone->region = d.value.region;
    zone->offset_minutes = d.value.offset_minutes;
    zone->abbreviation = d.value.abbreviation;
  }
  return FieldsOf(d.value);
}

TimePoint PointOf(const DateTimeDescriptor& d) {
  if (d.kind == DateTimeKind::TimestampTz) return TimePointOf(ToUtc(d.value));
  return TimePointOf(FieldsOf(d.value));
}

DateTimeValue ValueAtPoint(DateTimeKind kind, const DateTimeValue& like,
                           const DateTimeFields& point) {
  DateTimeValue v;
  if (kind != DateTimeKind::TimestampTz) {
    SetFields(point, &v);
    if (kind == DateTimeKind::Date) v.nanos = 0;
    return v;
  }
  Zone zone;
  zone.offset_minutes = like.offset_minutes;
  if (!like.region.empty()) zone.rules = FindRegion(like.region);
  zone.is_region = zone.rules != nullptr;
  zone.region = like.region;
  DateTimeFields local;
  ZoneOutput shown;
  FromUtc(point, zone, &local, &shown);
  SetFields(local, &v);
  v.offset_minutes = shown.offset_minutes;
  v.region = like.region;
  v.abbreviation = shown.abbreviation;
  return v;
}

}  // namespace ocimem::values
