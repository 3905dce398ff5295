// The functions that make TIMESTAMP values: SYSTIMESTAMP (now, in the operating system's
// zone), CURRENT_TIMESTAMP (now, in the session's zone), LOCALTIMESTAMP (its local time,
// without zone) and TO_TIMESTAMP (text read with a mask, NLS_TIMESTAMP_FORMAT without one).
#include <chrono>
#include <initializer_list>

#include "objects/value_descriptors.h"
#include "session/session_nls.h"
#include "sql/sql_expr.h"
#include "sql/sql_time.h"
#include "values/calendar.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/datetime_arith.h"
#include "values/datetime_kinds.h"
#include "values/descriptor.h"
#include "values/oci_common.h"

namespace ocimem {
namespace {

bool DateError(int ora, SqlError* error) {
  return SetError(error, ora, values::DateErrorText(ora));
}

// Now in UTC, to the microsecond.
values::DateTimeFields UtcNow() {
  using namespace std::chrono;
  auto since = system_clock::now().time_since_epoch();
  std::int64_t micros = duration_cast<microseconds>(since).count();
  std::int64_t seconds = micros / 1000000;
  values::DateTimeFields f;
  values::FromEpochSeconds(values::ToEpochSeconds(1970, 1, 1, 0, 0, 0) + seconds, &f.year,
                           &f.month, &f.day, &f.hour, &f.minute, &f.second);
  f.nanos = static_cast<std::uint32_t>((micros % 1000000) * 1000);
  return f;
}

bool Now(const ExecContext& ctx, const std::string& setting, bool zoned, Value* out,
         SqlError* error) {
  values::Zone zone;
  if (int ora = values::ResolveSessionZone(setting, &zone)) return DateError(ora, error);
  values::DateTimeFields local;
  values::ZoneOutput shown;
  values::FromUtc(UtcNow(), zone, &local, &shown);
  values::DateTimeValue v;
  if (!zoned) {
    values::SetFields(local, &v);
    return MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP, values::DateTimeKind::Timestamp, v, out,
                               error);
  }
  if (int ora = values::MakeZonedValue(local, zone, "", &v)) return DateError(ora, error);
  return MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP_TZ, values::DateTimeKind::TimestampTz, v, out,
                             error);
}

// Local fields of a DATE or datetime value, and its UTC instant when it has one.
bool FieldsOfValue(const Value& v, values::DateTimeFields* local, bool* has_utc,
                   values::DateTimeFields* utc) {
  *has_utc = false;
  if (v.kind == Value::Kind::kDate) {
    local->year = v.date.OCIDateYYYY;
    local->month = v.date.OCIDateMM;
    local->day = v.date.OCIDateDD;
    local->hour = v.date.OCIDateTime.OCITimeHH;
    local->minute = v.date.OCIDateTime.OCITimeMI;
    local->second = v.date.OCIDateTime.OCITimeSS;
    return true;
  }
  const values::DateTimeDescriptor* d = values::AsDateTime(v.handle);
  if (d == nullptr) return false;
  *local = values::FieldsOf(d->value);
  if (d->kind == values::DateTimeKind::TimestampTz) {
    *has_utc = true;
    *utc = values::ToUtc(d->value);
  } else if (d->kind == values::DateTimeKind::TimestampLtz) {
    *has_utc = true;
    *utc = *local;
  }
  return true;
}

bool OneOf(const std::string& unit, std::initializer_list<const char*> names) {
  for (const char* n : names) {
    if (unit == n) return true;
  }
  return false;
}

std::int64_t Seconds(const values::DateTimeFields& f) {
  return values::ToEpochSeconds(f.year, f.month, f.day, f.hour, f.minute, f.second);
}

// The start of the period of `f` that `unit` names; its length in seconds for ROUND of the
// periods of fixed length (0 for the others).
bool PeriodStart(const std::string& unit, const values::DateTimeFields& f,
                 values::DateTimeFields* start, std::int64_t* length) {
  *start = f;
  start->minute = start->second = 0;
  start->nanos = 0;
  *length = 0;
  if (OneOf(unit, {"MI"})) {
    start->minute = f.minute;
    *length = 60;
    return true;
  }
  if (OneOf(unit, {"HH", "HH12", "HH24"})) {
    *length = 3600;
    return true;
  }
  start->hour = 0;
  if (OneOf(unit, {"DD", "DDD", "J"})) {
    *length = 86400;
    return true;
  }
  std::int64_t day = values::DayNumber(f.year, f.month, f.day);
  auto back = [&](std::int64_t from, std::int64_t days) {
    values::DateFromDayNumber(from - days, &start->year, &start->month, &start->day);
  };
  if (OneOf(unit, {"DAY", "DY", "D"})) {  // weeks from Sunday
    back(day, (day + 1) % 7);
    *length = 7 * 86400;
    return true;
  }
  if (OneOf(unit, {"IW"})) {  // ISO weeks from Monday
    back(day, day % 7);
    *length = 7 * 86400;
    return true;
  }
  if (OneOf(unit, {"WW"})) {  // weeks from the first of the year
    back(day, (day - values::DayNumber(f.year, 1, 1)) % 7);
    *length = 7 * 86400;
    return true;
  }
  if (OneOf(unit, {"W"})) {  // weeks from the first of the month
    back(day, (day - values::DayNumber(f.year, f.month, 1)) % 7);
    *length = 7 * 86400;
    return true;
  }
  start->day = 1;
  if (OneOf(unit, {"MONTH", "MON", "MM", "RM"})) return true;
  if (OneOf(unit, {"Q"})) {
    start->month = (f.month - 1) / 3 * 3 + 1;
    return true;
  }
  start->month = 1;
  if (OneOf(unit, {"SYYYY", "YYYY", "YEAR", "SYEAR", "YYY", "YY", "Y", "IYYY", "IYY", "IY",
                   "I"})) {
    return true;
  }
  if (OneOf(unit, {"CC", "SCC"})) {
    start->year = f.year > 0 ? (f.year - 1) / 100 * 100 + 1 : f.year;
    return true;
  }
  return false;
}

}  // namespace

bool ParseTimestampText(const std::string& text, const std::string& mask,
                        values::DateTimeFields* out, SqlError* error) {
  const values::DateMask* m = nullptr;
  if (int ora = values::CachedDateMask(mask, &m)) return DateError(ora, error);
  values::DateParseOptions options;
  options.allow_fraction = true;
  options.current_year = values::CurrentYear();
  options.current_month = values::CurrentMonth();
  if (int ora = values::ParseDateTime(text, *m, options, out, nullptr)) {
    return DateError(ora, error);
  }
  return true;
}

bool MakeIntervalDs(const ExecContext& ctx, std::int64_t seconds, std::int32_t nanos,
                    Value* out, SqlError* error) {
  void* desc = nullptr;
  if (AllocValueDescriptor(nullptr, OCI_DTYPE_INTERVAL_DS, &desc) != OCI_SUCCESS ||
      desc == nullptr) {
    return SetError(error, 4030, "out of process memory");
  }
  ctx.temporaries.emplace_back(desc, [](void* p) { FreeValueDescriptor(p); });
  values::IntervalDescriptor* d = values::AsInterval(desc);
  d->kind = values::IntervalKind::DaySecond;
  d->value.months = 0;
  d->value.seconds = seconds;
  d->value.nanos = nanos;
  *out = Value();
  out->kind = Value::Kind::kInterval;
  out->handle = desc;
  out->desc_type = OCI_DTYPE_INTERVAL_DS;
  out->leading_precision = 9;
  out->fraction_precision = 9;
  return true;
}

bool RoundDate(bool round, const OCIDate& date, const std::string& unit, Value* out,
               SqlError* error) {
  values::DateTimeFields f;
  f.year = date.OCIDateYYYY;
  f.month = date.OCIDateMM;
  f.day = date.OCIDateDD;
  f.hour = date.OCIDateTime.OCITimeHH;
  f.minute = date.OCIDateTime.OCITimeMI;
  f.second = date.OCIDateTime.OCITimeSS;
  values::DateTimeFields start;
  std::int64_t length = 0;
  if (!PeriodStart(unit, f, &start, &length)) {
    return SetError(error, 1899, "bad precision specifier");
  }
  if (round) {
    values::DateTimeFields next = start;
    bool up = false;
    if (length > 0) {
      up = Seconds(f) - Seconds(start) >= length / 2;
      if (up && values::AddSeconds(start, length, 0, &next) != 0) return DateError(1841, error);
    } else {
      // Months round up from the 16th, quarters from the 16th of their second month, years
      // from July, centuries from their fifty-first year.
      int months = OneOf(unit, {"MONTH", "MON", "MM", "RM"}) ? 1 : OneOf(unit, {"Q"}) ? 3 : 12;
      if (OneOf(unit, {"CC", "SCC"})) {
        up = f.year - start.year >= 50;
        next.year = start.year + 100;
      } else {
        int into = (f.year - start.year) * 12 + (f.month - start.month);
        up = months == 1 ? f.day >= 16
                         : months == 3 ? into > 1 || (into == 1 && f.day >= 16) : f.month >= 7;
        int m = start.month - 1 + months;
        next.year = start.year + m / 12;
        next.month = m % 12 + 1;
      }
    }
    if (up) start = next;
  }
  if (start.year < values::kMinYear || start.year > values::kMaxYear || start.year == 0) {
    return DateError(values::kOraBadYear, error);
  }
  *out = Value();
  out->kind = Value::Kind::kDate;
  out->date.OCIDateYYYY = static_cast<sb2>(start.year);
  out->date.OCIDateMM = static_cast<ub1>(start.month);
  out->date.OCIDateDD = static_cast<ub1>(start.day);
  out->date.OCIDateTime.OCITimeHH = static_cast<ub1>(start.hour);
  out->date.OCIDateTime.OCITimeMI = static_cast<ub1>(start.minute);
  out->date.OCIDateTime.OCITimeSS = static_cast<ub1>(start.second);
  return true;
}

namespace {

// A DATE or datetime value in the datetime kind of `t`.
bool FitDateTimeKind(const ExecContext& ctx, const ValueType& t, Value* v, SqlError* error) {
  if (v->kind == Value::Kind::kText && t.descriptor_type != OCI_DTYPE_TIMESTAMP_TZ) {
    // Text is read in NLS_TIMESTAMP_FORMAT as a TIMESTAMP, then fitted below.
    values::DateTimeFields fields;
    if (!ParseTimestampText(v->bytes, CurrentNls().timestamp_format, &fields, error)) {
      return false;
    }
    values::DateTimeValue plain;
    values::SetFields(fields, &plain);
    if (!MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP, values::DateTimeKind::Timestamp, plain, v,
                             error)) {
      return false;
    }
  }
  if (v->kind != Value::Kind::kDate &&
      (v->kind != Value::Kind::kDateTime || v->desc_type == t.descriptor_type)) {
    return true;
  }
  values::DateTimeFields local;
  values::DateTimeFields utc;
  bool has_utc = false;
  if (!FieldsOfValue(*v, &local, &has_utc, &utc)) return true;
  values::Zone zone;
  const std::string setting = ctx.session != nullptr ? ctx.session->nls->time_zone : "";
  if (int ora = values::ResolveSessionZone(setting, &zone)) return DateError(ora, error);
  values::DateTimeValue out;
  if (t.descriptor_type == OCI_DTYPE_TIMESTAMP) {
    // A zoned value keeps its own local time; LOCAL TIME ZONE shows the session's.
    if (has_utc && v->kind == Value::Kind::kDateTime &&
        values::AsDateTime(v->handle)->kind == values::DateTimeKind::TimestampLtz) {
      values::ZoneOutput shown;
      values::FromUtc(utc, zone, &local, &shown);
    }
    values::SetFields(local, &out);
    return MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP, values::DateTimeKind::Timestamp, out, v,
                               error);
  }
  if (!has_utc) {
    values::DateTimeValue zoned;
    if (int ora = values::MakeZonedValue(local, zone, "", &zoned)) return DateError(ora, error);
    utc = values::ToUtc(zoned);
  }
  if (t.descriptor_type == OCI_DTYPE_TIMESTAMP_LTZ) {
    values::SetFields(utc, &out);
    return MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP_LTZ, values::DateTimeKind::TimestampLtz,
                               out, v, error);
  }
  if (v->kind == Value::Kind::kDateTime &&
      values::AsDateTime(v->handle)->kind == values::DateTimeKind::TimestampTz) {
    return true;
  }
  values::ZoneOutput shown;
  values::FromUtc(utc, zone, &local, &shown);
  if (int ora = values::MakeZonedValue(local, zone, "", &out)) return DateError(ora, error);
  return MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP_TZ, values::DateTimeKind::TimestampTz, out, v,
                             error);
}

}  // namespace

bool FitDateTime(const ExecContext& ctx, const ValueType& t, Value* v, SqlError* error) {
  if (t.kind == ValueKind::kInterval) return FitInterval(ctx, t, v, error);
  if (t.kind == ValueKind::kDate && v->kind == Value::Kind::kDateTime) {
    // A datetime stored as a DATE: the fields it shows, without the fraction (as CAST).
    const values::DateTimeDescriptor* d = values::AsDateTime(v->handle);
    if (d == nullptr) return true;
    values::DateTimeFields f = values::FieldsOf(d->value);
    if (d->kind == values::DateTimeKind::TimestampLtz) {
      values::Zone zone;
      const std::string setting = ctx.session != nullptr ? ctx.session->nls->time_zone : "";
      if (int ora = values::ResolveSessionZone(setting, &zone)) return DateError(ora, error);
      values::ZoneOutput shown;
      values::FromUtc(values::FieldsOf(d->value), zone, &f, &shown);
    }
    *v = Value();
    v->kind = Value::Kind::kDate;
    v->date.OCIDateYYYY = static_cast<sb2>(f.year);
    v->date.OCIDateMM = static_cast<ub1>(f.month);
    v->date.OCIDateDD = static_cast<ub1>(f.day);
    v->date.OCIDateTime.OCITimeHH = static_cast<ub1>(f.hour);
    v->date.OCIDateTime.OCITimeMI = static_cast<ub1>(f.minute);
    v->date.OCIDateTime.OCITimeSS = static_cast<ub1>(f.second);
    return true;
  }
  if (t.kind != ValueKind::kDateTime) return true;
  if (!FitDateTimeKind(ctx, t, v, error)) return false;
  const values::DateTimeDescriptor* d =
      v->kind == Value::Kind::kDateTime ? values::AsDateTime(v->handle) : nullptr;
  if (d == nullptr || t.fraction_precision >= 9) return true;
  // The fraction of a second rounded to the type's digits.
  std::int64_t unit = 1;
  for (int i = t.fraction_precision; i < 9; ++i) unit *= 10;
  std::int64_t nanos = d->value.nanos;
  std::int64_t rounded = (nanos + unit / 2) / unit * unit;
  if (rounded == nanos) return true;
  values::DateTimeFields point = d->kind == values::DateTimeKind::TimestampTz
                                     ? values::ToUtc(d->value)
                                     : values::FieldsOf(d->value);
  values::DateTimeFields moved;
  if (int ora = values::AddSeconds(point, 0, rounded - nanos, &moved)) {
    return DateError(ora, error);
  }
  values::DateTimeValue fitted = values::ValueAtPoint(d->kind, d->value, moved);
  return MakeDateTimeValueOf(ctx, v->desc_type, d->kind, fitted, v, error);
}

bool TimestampFunction(const ExecContext& ctx, const std::string& name,
                       const std::vector<Value>& args, Value* out, SqlError* error) {
  if (name == "SYSTIMESTAMP") return Now(ctx, "OS_TZ", true, out, error);
  const std::string session_zone = ctx.session != nullptr ? ctx.session->nls->time_zone : "";
  if (name == "CURRENT_TIMESTAMP") return Now(ctx, session_zone, true, out, error);
  if (name == "LOCALTIMESTAMP") return Now(ctx, session_zone, false, out, error);
  // TO_TIMESTAMP
  if (args[0].kind == Value::Kind::kDateTime && args.size() == 1) {
    *out = args[0];
    return true;
  }
  std::string text;
  std::string mask = CurrentNls().timestamp_format;
  if (!ToText(args[0], &text, error)) return false;
  if (args.size() > 1 && !ToText(args[1], &mask, error)) return false;
  values::DateTimeFields fields;
  if (!ParseTimestampText(text, mask, &fields, error)) return false;
  values::DateTimeValue v;
  values::SetFields(fields, &v);
  return MakeDateTimeValueOf(ctx, OCI_DTYPE_TIMESTAMP, values::DateTimeKind::Timestamp, v, out,
                             error);
}

}  // namespace ocimem
