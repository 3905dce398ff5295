// Functions that pick among their arguments or take a field of one: GREATEST, LEAST,
// NULLIF and EXTRACT.
#include "sql/sql_expr.h"
#include "sql/sql_time.h"
#include "values/datetime.h"
#include "values/descriptor.h"

namespace ocimem {
namespace {

// `v` in the kind of `first`, as GREATEST and LEAST convert their arguments.
bool LikeFirst(const Value& first, const Value& v, Value* out, SqlError* error) {
  if (first.kind == Value::Kind::kNumber) {
    values::Decimal d;
    return ToNumber(v, &d, error) && NumberValue(d, out, error);
  }
  if (first.kind == Value::Kind::kDate) {
    *out = Value();
    out->kind = Value::Kind::kDate;
    return ToDate(v, &out->date, error);
  }
  if (first.kind == Value::Kind::kText) {
    std::string text;
    if (!ToText(v, &text, error)) return false;
    TextValue(text, out);
    out->fixed_char = v.fixed_char && first.fixed_char;
    return true;
  }
  *out = v;
  return true;
}

bool Extract(const std::string& field, const Value& v, Value* out, SqlError* error) {
  if (v.kind == Value::Kind::kInterval) return ExtractInterval(field, v, out, error);
  values::DateTimeFields f;
  bool has_time = false;
  if (v.kind == Value::Kind::kDateTime) {
    const values::DateTimeDescriptor* d = values::AsDateTime(v.handle);
    if (d == nullptr) return Inconsistent("TIMESTAMP", v, error);
    f = values::FieldsOf(d->value);
    has_time = true;
  } else {
    OCIDate date;
    if (!ToDate(v, &date, error)) return false;
    f.year = date.OCIDateYYYY;
    f.month = date.OCIDateMM;
    f.day = date.OCIDateDD;
  }
  std::int64_t n = 0;
  if (field == "YEAR") {
    n = f.year;
  } else if (field == "MONTH") {
    n = f.month;
  } else if (field == "DAY") {
    n = f.day;
  } else if (!has_time) {
    return SetError(error, 30076, "invalid extract field for extract source");
  } else if (field == "HOUR") {
    n = f.hour;
  } else if (field == "MINUTE") {
    n = f.minute;
  } else {
    // SECOND, with its fraction: seconds and nanoseconds as one exact decimal.
    std::string digits = std::to_string(f.second * 1000000000LL + f.nanos);
    values::Decimal exact;
    exact.digits = digits;
    exact.exponent = static_cast<int>(digits.size()) - 9;
    values::Normalize(&exact);
    return NumberValue(exact, out, error);
  }
  values::Decimal d;
  values::DecimalFromInteger(n, &d);
  return NumberValue(d, out, error);
}

}  // namespace

bool PickFunction(const std::string& name, const std::string& option,
                  const std::vector<Value>& a, Value* out, SqlError* error) {
  if (name == "EXTRACT") return Extract(option, a[0], out, error);
  if (name == "NULLIF") {
    *out = a[0];
    if (IsNull(a[0]) || IsNull(a[1])) return true;
    int c = 1;
    if (!CompareValues(a[0], a[1], &c, error)) return false;
    if (c == 0) *out = Value();
    return true;
  }
  // GREATEST and LEAST: every argument in the first one's kind.
  Value best;
  if (!LikeFirst(a[0], a[0], &best, error)) return false;
  for (size_t i = 1; i < a.size(); ++i) {
    Value v;
    if (!LikeFirst(a[0], a[i], &v, error)) return false;
    int c = 0;
    if (!CompareValues(v, best, &c, error)) return false;
    if ((name == "GREATEST" && c > 0) || (name == "LEAST" && c < 0)) best = std::move(v);
  }
  *out = std::move(best);
  return true;
}

}  // namespace ocimem
