// TIMESTAMP values in expressions: compared with TIMESTAMPs and DATEs on one time line,
// intervals with intervals of their kind; a TIMESTAMP plus or minus days, and minus a
// TIMESTAMP or DATE.
#include "session/session_nls.h"
#include "sql/sql_time.h"
#include "values/calendar.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/descriptor.h"
#include "values/interval_text.h"

namespace ocimem {
namespace {

bool NotNumericValue(const Value& v) {
  return v.kind != Value::Kind::kNumber && v.kind != Value::Kind::kText &&
         v.kind != Value::Kind::kDate;
}

bool Zoned(const Value& v) {
  const values::DateTimeDescriptor* d =
      v.kind == Value::Kind::kDateTime ? values::AsDateTime(v.handle) : nullptr;
  return d != nullptr && d->kind != values::DateTimeKind::Timestamp;
}

// A TIMESTAMP or DATE as seconds and nanoseconds on one time line: a zoned value at its
// UTC instant; a value without zone as it reads, or (`in_session_zone`) as local time in
// the session's time zone, as Oracle takes it when it meets a zoned value.
bool TimeOf(const Value& v, bool in_session_zone, std::int64_t* seconds, std::int64_t* nanos) {
  values::DateTimeFields f;
  int offset = 0;
  if (v.kind == Value::Kind::kText) {
    // Text meeting a TIMESTAMP is read in NLS_TIMESTAMP_FORMAT.
    SqlError ignored;
    if (!ParseTimestampText(v.bytes, CurrentNls().timestamp_format, &f, &ignored)) return false;
  } else if (v.kind == Value::Kind::kDate) {
    f.year = v.date.OCIDateYYYY;
    f.month = v.date.OCIDateMM;
    f.day = v.date.OCIDateDD;
    f.hour = v.date.OCIDateTime.OCITimeHH;
    f.minute = v.date.OCIDateTime.OCITimeMI;
    f.second = v.date.OCIDateTime.OCITimeSS;
  } else {
    const values::DateTimeDescriptor* d =
        v.kind == Value::Kind::kDateTime ? values::AsDateTime(v.handle) : nullptr;
    if (d == nullptr) return false;
    f = values::FieldsOf(d->value);
    // TIMESTAMP WITH LOCAL TIME ZONE keeps the UTC instant.
    offset = d->kind == values::DateTimeKind::TimestampTz ? d->value.offset_minutes : 0;
    in_session_zone = in_session_zone && d->kind == values::DateTimeKind::Timestamp;
  }
  if (in_session_zone) {
    values::Zone zone;
    values::DateTimeValue zoned;
    if (values::ResolveSessionZone(CurrentNls().time_zone, &zone) == 0 &&
        values::MakeZonedValue(f, zone, "", &zoned) == 0) {
      offset = zoned.offset_minutes;
    }
  }
  *seconds = values::ToEpochSeconds(f.year, f.month, f.day, f.hour, f.minute, f.second) -
             offset * 60LL;
  *nanos = f.nanos;
  return true;
}

int Sign(std::int64_t x) { return x < 0 ? -1 : x > 0 ? 1 : 0; }

// Datetimes with datetimes and dates, intervals with intervals of their kind.
bool CompareTimeValues(const Value& a, const Value& b, int* out, SqlError* error) {
  if (a.kind == Value::Kind::kInterval || b.kind == Value::Kind::kInterval) {
    const values::IntervalDescriptor* x =
        a.kind == Value::Kind::kInterval ? values::AsInterval(a.handle) : nullptr;
    const values::IntervalDescriptor* y =
        b.kind == Value::Kind::kInterval ? values::AsInterval(b.handle) : nullptr;
    // Text meeting an interval is read as one of its kind.
    values::IntervalDescriptor text_value;
    for (int side = 0; side < 2; ++side) {
      const Value& v = side == 0 ? a : b;
      const values::IntervalDescriptor* other = side == 0 ? y : x;
      if (v.kind != Value::Kind::kText || other == nullptr) continue;
      text_value.kind = other->kind;
      if (int ora = values::ParseInterval(other->kind, v.bytes, &text_value.value)) {
        return SetError(error, ora, values::DateErrorText(ora));
      }
      (side == 0 ? x : y) = &text_value;
    }
    // Oracle names the interval's type as the one expected.
    if (x == nullptr) return Inconsistent(y != nullptr ? ValueKindName(b) : "INTERVAL", a, error);
    if (y == nullptr || x->kind != y->kind) return Inconsistent(ValueKindName(a), b, error);
    *out = x->kind == values::IntervalKind::YearMonth
               ? Sign(x->value.months - y->value.months)
               : x->value.seconds != y->value.seconds ? Sign(x->value.seconds - y->value.seconds)
                                                      : Sign(x->value.nanos - y->value.nanos);
    return true;
  }
  for (const Value* v : {&a, &b}) {
    values::DateTimeFields ignored;
    if (v->kind == Value::Kind::kText &&
        !ParseTimestampText(v->bytes, CurrentNls().timestamp_format, &ignored, error)) {
      return false;
    }
  }
  std::int64_t sa = 0, na = 0, sb = 0, nb = 0;
  bool zoned = Zoned(a) || Zoned(b);
  if (!TimeOf(a, zoned, &sa, &na)) return Inconsistent("TIMESTAMP", a, error);
  if (!TimeOf(b, zoned, &sb, &nb)) return Inconsistent("TIMESTAMP", b, error);
  *out = sa != sb ? Sign(sa - sb) : Sign(na - nb);
  return true;
}

}  // namespace

bool CompareTimes(const Value& a, const Value& b, int* out, SqlError* error) {
  return CompareTimeValues(a, b, out, error);
}

bool TimestampArithmetic(const ExecContext& ctx, const std::string& op, const Value& a,
                         const Value& b, Value* out, SqlError* error) {
  const Value& ts = a.kind == Value::Kind::kDateTime ? a : b;
  const Value& other = a.kind == Value::Kind::kDateTime ? b : a;
  bool other_time = other.kind == Value::Kind::kDate || other.kind == Value::Kind::kDateTime;
  if (op == "-" && other_time) {
    // TIMESTAMP - TIMESTAMP (or DATE): an INTERVAL DAY TO SECOND.
    bool zoned = Zoned(a) || Zoned(b);
    std::int64_t sa = 0, na = 0, sb = 0, nb = 0;
    if (!TimeOf(a, zoned, &sa, &na) || !TimeOf(b, zoned, &sb, &nb)) {
      return Inconsistent("TIMESTAMP", other, error);
    }
    std::int64_t seconds = sa - sb;
    std::int64_t nanos = na - nb;
    if (seconds > 0 && nanos < 0) {
      --seconds;
      nanos += 1000000000;
    } else if (seconds < 0 && nanos > 0) {
      ++seconds;
      nanos -= 1000000000;
    }
    return MakeIntervalDs(ctx, seconds, static_cast<std::int32_t>(nanos), out, error);
  }
  if ((op != "+" && op != "-") || (op == "-" && &ts == &b) || other_time ||
      NotNumericValue(other)) {
    return Inconsistent("NUMBER", other_time || NotNumericValue(other) ? other : ts, error);
  }
  // TIMESTAMP plus or minus days: a DATE, the fraction of a second dropped.
  const values::DateTimeDescriptor* d = values::AsDateTime(ts.handle);
  if (d == nullptr) return Inconsistent("NUMBER", ts, error);
  values::DateTimeFields f = values::FieldsOf(d->value);
  Value date;
  date.kind = Value::Kind::kDate;
  date.date.OCIDateYYYY = static_cast<sb2>(f.year);
  date.date.OCIDateMM = static_cast<ub1>(f.month);
  date.date.OCIDateDD = static_cast<ub1>(f.day);
  date.date.OCIDateTime.OCITimeHH = static_cast<ub1>(f.hour);
  date.date.OCIDateTime.OCITimeMI = static_cast<ub1>(f.minute);
  date.date.OCIDateTime.OCITimeSS = static_cast<ub1>(f.second);
  return &ts == &a ? DateNumberArithmetic(op, date, other, out, error)
                   : DateNumberArithmetic(op, other, date, out, error);
}


}  // namespace ocimem
