// Arithmetic with intervals, as Oracle's datetime/interval table has it: a DATE or datetime
// plus or minus an interval is of the datetime's type (a DATE loses the fraction of a
// second), an interval plus a datetime too; intervals of one kind add and subtract;
// an interval times or divided by a number is an interval. Zoned values move as UTC
// instants and keep their zone.
#include <cstdlib>

#include "sql/sql_time.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/datetime_arith.h"
#include "values/datetime_kinds.h"
#include "values/descriptor.h"
#include "values/interval_text.h"
#include "values/number_arith.h"

namespace ocimem {
namespace {

using values::Decimal;

bool DateError(int ora, SqlError* error) {
  return SetError(error, ora, values::DateErrorText(ora));
}

// An interval with a number in + or -, intervals of two kinds, an interval minus a
// datetime (IV1).
bool NotForArithmetic(SqlError* error) {
  return SetError(error, 30081, "invalid data type for datetime/interval arithmetic");
}

bool IsTime(const Value& v) {
  return v.kind == Value::Kind::kDate || v.kind == Value::Kind::kDateTime;
}

// A DATE or datetime moved by an interval (`sign` 1 or -1).
bool Move(const ExecContext& ctx, const Value& time, const values::IntervalDescriptor& iv,
          int sign, Value* out, SqlError* error) {
  values::DateTimeFields point;
  const values::DateTimeDescriptor* d = nullptr;
  if (time.kind == Value::Kind::kDate) {
    point.year = time.date.OCIDateYYYY;
    point.month = time.date.OCIDateMM;
    point.day = time.date.OCIDateDD;
    point.hour = time.date.OCIDateTime.OCITimeHH;
    point.minute = time.date.OCIDateTime.OCITimeMI;
    point.second = time.date.OCIDateTime.OCITimeSS;
  } else {
    d = values::AsDateTime(time.handle);
    if (d == nullptr) return Inconsistent("TIMESTAMP", time, error);
    // Oracle moves zoned values as UTC instants.
    point = d->kind == values::DateTimeKind::TimestampTz ? values::ToUtc(d->value)
                                                         : values::FieldsOf(d->value);
  }
  values::DateTimeFields moved;
  int ora = iv.kind == values::IntervalKind::YearMonth
                ? values::AddMonthsExact(point, sign * iv.value.months, &moved)
                : values::AddSeconds(point, sign * iv.value.seconds,
                                     sign * static_cast<std::int64_t>(iv.value.nanos), &moved);
  if (ora != 0) return DateError(ora, error);
  if (d == nullptr) {
    // DATE plus an interval is a DATE: the fraction of a second is lost (IV2).
    *out = Value();
    out->kind = Value::Kind::kDate;
    out->date.OCIDateYYYY = static_cast<sb2>(moved.year);
    out->date.OCIDateMM = static_cast<ub1>(moved.month);
    out->date.OCIDateDD = static_cast<ub1>(moved.day);
    out->date.OCIDateTime.OCITimeHH = static_cast<ub1>(moved.hour);
    out->date.OCIDateTime.OCITimeMI = static_cast<ub1>(moved.minute);
    out->date.OCIDateTime.OCITimeSS = static_cast<ub1>(moved.second);
    return true;
  }
  if (!MakeDateTimeValue(ctx, d->kind, values::ValueAtPoint(d->kind, d->value, moved), out,
                         error)) {
    return false;
  }
  out->fraction_precision = time.fraction_precision;
  return true;
}

// The seconds of a DAY TO SECOND interval as one number.
Decimal SecondsOf(const values::IntervalValue& v) {
  Decimal seconds;
  Decimal nanos;
  values::DecimalFromInteger(v.seconds, &seconds);
  values::DecimalFromInteger(v.nanos, &nanos);
  Decimal fraction;
  values::DivideDecimals(nanos, Decimal{false, "1", 10}, &fraction);
  return values::AddDecimals(seconds, fraction);
}

// An interval times or divided by a number: months are cut to whole months (IV3), seconds
// rounded to the nanosecond.
bool Scale(const ExecContext& ctx, const values::IntervalDescriptor& iv, const Decimal& n,
           bool divide, Value* out, SqlError* error) {
  bool ym = iv.kind == values::IntervalKind::YearMonth;
  Decimal amount;
  if (ym) {
    values::DecimalFromInteger(iv.value.months, &amount);
  } else {
    amount = SecondsOf(iv.value);
  }
  Decimal r;
  if (divide) {
    if (!values::DivideDecimals(amount, n, &r)) {
      return SetError(error, 1476, "divisor is equal to zero");
    }
  } else {
    r = values::MultiplyDecimals(amount, n);
  }
  values::IntervalValue v;
  if (ym) {
    std::int64_t months = 0;
    if (!values::DecimalToInt64(values::TruncateToFraction(r, 0), &months)) {
      return DateError(values::kOraLeadingPrecision, error);
    }
    if (int ora = values::MakeYearMonth(0, months, &v)) return DateError(ora, error);
    return MakeIntervalValue(ctx, iv.kind, v, 9, 0, out, error);
  }
  r = values::RoundToFraction(r, 9);
  Decimal whole = values::TruncateToFraction(r, 0);
  std::int64_t seconds = 0;
  std::int64_t nanos = 0;
  if (!values::DecimalToInt64(whole, &seconds) ||
      !values::DecimalToInt64(
          values::MultiplyDecimals(values::SubtractDecimals(r, whole), Decimal{false, "1", 10}),
          &nanos)) {
    return DateError(values::kOraLeadingPrecision, error);
  }
  if (int ora = values::MakeDaySecond(0, 0, 0, seconds, nanos, &v)) return DateError(ora, error);
  return MakeIntervalValue(ctx, iv.kind, v, 9, 9, out, error);
}

}  // namespace

bool FitInterval(const ExecContext& ctx, const ValueType& t, Value* v, SqlError* error) {
  bool ym = t.descriptor_type == OCI_DTYPE_INTERVAL_YM;
  values::IntervalKind kind = ym ? values::IntervalKind::YearMonth : values::IntervalKind::DaySecond;
  values::IntervalValue value;
  if (v->kind == Value::Kind::kText) {
    if (int ora = values::ParseInterval(kind, v->bytes, &value)) return DateError(ora, error);
  } else if (v->kind == Value::Kind::kInterval) {
    const values::IntervalDescriptor* d = values::AsInterval(v->handle);
    if (d == nullptr || d->kind != kind) return true;
    value = d->value;
  } else {
    return true;
  }
  std::int64_t limit = 1;
  for (int i = 0; i < t.leading_precision; ++i) limit *= 10;
  if (!ym) {
    // The fraction rounded half away from zero to the type's digits.
    std::int64_t unit = 1;
    for (int i = t.fraction_precision; i < 9; ++i) unit *= 10;
    std::int64_t nanos = value.nanos;
    std::int64_t rounded = (nanos < 0 ? -1 : 1) * ((std::abs(nanos) + unit / 2) / unit * unit);
    if (int ora = values::MakeDaySecond(0, 0, 0, value.seconds, rounded, &value)) {
      return DateError(ora, error);
    }
  }
  std::int64_t lead = ym ? value.months / 12 : value.seconds / 86400;
  if (lead >= limit || -lead >= limit) return DateError(values::kOraLeadingPrecision, error);
  return MakeIntervalValue(ctx, kind, value, t.leading_precision, t.fraction_precision, v,
                           error);
}

bool DateTimeArithmetic(const ExecContext& ctx, const std::string& op, const Value& a,
                        const Value& b, Value* out, SqlError* error) {
  bool ia = a.kind == Value::Kind::kInterval;
  bool ib = b.kind == Value::Kind::kInterval;
  if (!ia && !ib) return TimestampArithmetic(ctx, op, a, b, out, error);
  const values::IntervalDescriptor* x = ia ? values::AsInterval(a.handle) : nullptr;
  const values::IntervalDescriptor* y = ib ? values::AsInterval(b.handle) : nullptr;
  if ((ia && x == nullptr) || (ib && y == nullptr)) return Inconsistent("NUMBER", ia ? a : b, error);
  if (ia && ib) {
    if (op == "*" || op == "/") return Inconsistent("NUMBER", a, error);
    if (x->kind != y->kind) return NotForArithmetic(error);
    int sign = op == "-" ? -1 : 1;
    values::IntervalValue v;
    int ora = x->kind == values::IntervalKind::YearMonth
                  ? values::MakeYearMonth(0, x->value.months + sign * y->value.months, &v)
                  : values::MakeDaySecond(0, 0, 0, x->value.seconds + sign * y->value.seconds,
                                          x->value.nanos + sign * y->value.nanos, &v);
    if (ora != 0) return DateError(ora, error);
    return MakeIntervalValue(ctx, x->kind, v, 9, 9, out, error);
  }
  const Value& other = ia ? b : a;
  const values::IntervalDescriptor& iv = ia ? *x : *y;
  if (IsTime(other)) {
    if (op == "*" || op == "/") return Inconsistent("NUMBER", other, error);
    if (op == "-" && ia) return NotForArithmetic(error);
    return Move(ctx, other, iv, op == "-" ? -1 : 1, out, error);
  }
  if (op == "+" || op == "-") {
    if (other.kind != Value::Kind::kNumber && other.kind != Value::Kind::kText) {
      return Inconsistent("NUMBER", other, error);
    }
    return NotForArithmetic(error);
  }
  // A number divided by an interval.
  if (op == "/" && ib) return Inconsistent("NUMBER", b, error);
  Decimal n;
  if (!ToNumber(other, &n, error)) return false;
  return Scale(ctx, iv, n, op == "/", out, error);
}

bool DateTimeArithmeticType(const ValueType& a, const ValueType& b, ValueType* out) {
  bool ia = a.kind == ValueKind::kInterval;
  bool ib = b.kind == ValueKind::kInterval;
  if (!ia && !ib) return false;
  const ValueType& iv = ia ? a : b;
  const ValueType& other = ia ? b : a;
  bool ym = iv.descriptor_type == OCI_DTYPE_INTERVAL_YM;
  if (other.kind == ValueKind::kDate || other.kind == ValueKind::kDateTime) {
    *out = other;
    if (other.kind == ValueKind::kDateTime) *out = DateTimeValueType(other.descriptor_type, 9);
    return true;
  }
  *out = IntervalValueType(ym, 9, 9);
  return true;
}

}  // namespace ocimem
