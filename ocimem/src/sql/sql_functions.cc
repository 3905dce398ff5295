// SQL functions in expressions, dispatched by name: ORA-00904 for a name that is none,
// ORA-00909 for a wrong number of arguments.  Most return NULL when an argument is NULL;
// NVL, NVL2, COALESCE, DECODE, REPLACE and CONCAT do not.
#include "sql/sql_functions.h"

#include <algorithm>
#include <cstring>
#include <ctime>

#include "session/session_nls.h"
#include "sql/sql_expr.h"
#include "sql/sql_time.h"
#include "values/calendar.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/datetime_arith.h"
#include "values/descriptor.h"
#include "values/number_arith.h"
#include "values/number_format.h"
#include "values/oci_common.h"

namespace ocimem {

using values::Decimal;

namespace {

struct FunctionInfo {
  const char* name;
  size_t min_args;
  size_t max_args;
};

constexpr size_t kMany = 255;

const FunctionInfo kFunctions[] = {
    {"NVL", 2, 2},          {"NVL2", 3, 3},         {"COALESCE", 1, kMany},
    {"DECODE", 3, kMany},   {"ABS", 1, 1},          {"MOD", 2, 2},
    {"FLOOR", 1, 1},        {"CEIL", 1, 1},         {"SIGN", 1, 1},
    {"UPPER", 1, 1},        {"LOWER", 1, 1},        {"LENGTH", 1, 1},
    {"SUBSTR", 2, 3},       {"INSTR", 2, 4},        {"LPAD", 2, 3},
    {"RPAD", 2, 3},         {"TRIM", 1, 2},         {"LTRIM", 1, 2},
    {"RTRIM", 1, 2},        {"REPLACE", 2, 3},      {"CONCAT", 2, 2},
    {"ROUND", 1, 2},        {"TRUNC", 1, 2},        {"TO_CHAR", 1, 2},
    {"TO_NUMBER", 1, 2},    {"TO_DATE", 1, 2},      {"SYSDATE", 0, 0},
    {"CURRENT_DATE", 0, 0}, {"ADD_MONTHS", 2, 2},   {"MONTHS_BETWEEN", 2, 2},
    {"LAST_DAY", 1, 1},     {"SYSTIMESTAMP", 0, 0}, {"CURRENT_TIMESTAMP", 0, 0},
    {"LOCALTIMESTAMP", 0, 0}, {"TO_TIMESTAMP", 1, 2}, {"GREATEST", 1, kMany},
    {"LEAST", 1, kMany},    {"NULLIF", 2, 2},       {"EXTRACT", 1, 1},
    {"CAST", 1, 1},         {"NUMTODSINTERVAL", 2, 2}, {"NUMTOYMINTERVAL", 2, 2},
    {"TO_DSINTERVAL", 1, 1}, {"TO_YMINTERVAL", 1, 1},
};

const FunctionInfo* Find(const std::string& name) {
  for (const FunctionInfo& f : kFunctions) {
    if (name == f.name) return &f;
  }
  return nullptr;
}

// The characters of UTF-8 text, one string each.
std::vector<std::string> Chars(const std::string& s) {
  std::vector<std::string> out;
  for (size_t i = 0; i < s.size();) {
    unsigned char c = static_cast<unsigned char>(s[i]);
    size_t n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    n = std::min(n, s.size() - i);
    out.push_back(s.substr(i, n));
    i += n;
  }
  return out;
}

std::string Join(const std::vector<std::string>& chars, size_t from, size_t count) {
  std::string out;
  for (size_t i = from; i < chars.size() && i < from + count; ++i) out += chars[i];
  return out;
}

bool Integer(const Value& v, std::int64_t* out, SqlError* error) {
  Decimal d;
  if (!ToNumber(v, &d, error)) return false;
  d = values::TruncateToFraction(d, 0);
  if (!values::DecimalToInt64(d, out)) *out = d.negative ? INT32_MIN : INT32_MAX;
  return true;
}

bool NumberResult(const Decimal& d, Value* out, SqlError* error) {
  return NumberValue(d, out, error);
}

bool DateOf(const Value& v, values::DateTimeFields* f, SqlError* error) {
  OCIDate d;
  if (!ToDate(v, &d, error)) return false;
  f->year = d.OCIDateYYYY;
  f->month = d.OCIDateMM;
  f->day = d.OCIDateDD;
  f->hour = d.OCIDateTime.OCITimeHH;
  f->minute = d.OCIDateTime.OCITimeMI;
  f->second = d.OCIDateTime.OCITimeSS;
  return true;
}

void DateResult(const values::DateTimeFields& f, Value* out) {
  *out = Value();
  out->kind = Value::Kind::kDate;
  out->date.OCIDateYYYY = static_cast<sb2>(f.year);
  out->date.OCIDateMM = static_cast<ub1>(f.month);
  out->date.OCIDateDD = static_cast<ub1>(f.day);
  out->date.OCIDateTime.OCITimeHH = static_cast<ub1>(f.hour);
  out->date.OCIDateTime.OCITimeMI = static_cast<ub1>(f.minute);
  out->date.OCIDateTime.OCITimeSS = static_cast<ub1>(f.second);
}

bool DateError(int ora, SqlError* error) {
  return SetError(error, ora, values::DateErrorText(ora));
}

// The machine's local time as the database's clock.
void Now(values::DateTimeFields* f) {
  std::time_t t = std::time(nullptr);
  std::tm tm{};
  localtime_r(&t, &tm);
  f->year = tm.tm_year + 1900;
  f->month = tm.tm_mon + 1;
  f->day = tm.tm_mday;
  f->hour = tm.tm_hour;
  f->minute = tm.tm_min;
  f->second = tm.tm_sec;
}

bool ToCharFn(const std::vector<Value>& a, Value* out, SqlError* error) {
  const Value& v = a[0];
  // An interval is written in its own form whatever the mask (decision IV10).
  if (a.size() == 1 || v.kind == Value::Kind::kInterval) {
    std::string text;
    if (!ToText(v, &text, error)) return false;
    TextValue(text, out);
    return true;
  }
  std::string mask;
  if (!ToText(a[1], &mask, error)) return false;
  if (v.kind == Value::Kind::kDateTime) {
    const values::DateTimeDescriptor* d = values::AsDateTime(v.handle);
    const values::DateMask* m = nullptr;
    if (d == nullptr) return Inconsistent("TIMESTAMP", v, error);
    if (int ora = values::CachedDateMask(mask, &m)) return DateError(ora, error);
    values::ZoneOutput zone;
    zone.is_region = !d->value.region.empty();
    zone.region = d->value.region;
    zone.offset_minutes = d->value.offset_minutes;
    zone.abbreviation = d->value.abbreviation;
    bool zoned = d->kind == values::DateTimeKind::TimestampTz;
    values::DateTimeFields fields = values::FieldsOf(d->value);
    if (d->kind == values::DateTimeKind::TimestampLtz) {
      // LOCAL TIME ZONE values are shown in the session's time zone.
      values::Zone session;
      if (int ora = values::ResolveSessionZone(CurrentNls().time_zone, &session)) {
        return DateError(ora, error);
      }
      values::ZoneOutput shown;
      values::FromUtc(values::FieldsOf(d->value), session, &fields, &shown);
    }
    std::string text;
    // FF without digits shows six (decision EX9).
    if (int ora = values::FormatDateTime(*m, fields, true, 6,
                                         zoned ? &zone : nullptr, &text)) {
      return DateError(ora, error);
    }
    TextValue(text, out);
    return true;
  }
  if (v.kind == Value::Kind::kDate) {
    const values::DateMask* m = nullptr;
    if (int ora = values::CachedDateMask(mask, &m)) return DateError(ora, error);
    values::DateTimeFields f;
    if (!DateOf(v, &f, error)) return false;
    std::string text;
    if (int ora = values::FormatDateTime(*m, f, false, 0, nullptr, &text)) {
      return DateError(ora, error);
    }
    TextValue(text, out);
    return true;
  }
  Decimal d;
  if (!ToNumber(v, &d, error)) return false;
  values::NumberModel model;
  if (values::ParseNumberModel(mask, &model) != 0) {
    return SetError(error, 1481, "invalid number format model");
  }
  std::string text;
  if (values::FormatNumber(d, model, &text) != 0) {
    if (model.unsupported) return SetError(error, 1481, "invalid number format model");
    text.assign(mask.size() + 1, '#');
  }
  TextValue(text, out);
  return true;
}

bool TrimChars(const std::string& side, const std::vector<std::string>& set,
               const std::string& source, Value* out) {
  std::vector<std::string> chars = Chars(source);
  size_t from = 0;
  size_t to = chars.size();
  auto in_set = [&](const std::string& c) {
    return std::find(set.begin(), set.end(), c) != set.end();
  };
  if (side != "TRAILING") {
    while (from < to && in_set(chars[from])) ++from;
  }
  if (side != "LEADING") {
    while (to > from && in_set(chars[to - 1])) --to;
  }
  TextValue(Join(chars, from, to - from), out);
  return true;
}

bool Pad(bool left, const std::vector<Value>& a, Value* out, SqlError* error) {
  std::string source;
  std::int64_t n = 0;
  std::string fill = " ";
  if (!ToText(a[0], &source, error) || !Integer(a[1], &n, error)) return false;
  if (a.size() > 2 && !ToText(a[2], &fill, error)) return false;
  if (n <= 0 || fill.empty()) {
    *out = Value();
    return true;
  }
  n = std::min<std::int64_t>(n, 32767);
  std::vector<std::string> chars = Chars(source);
  if (static_cast<size_t>(n) <= chars.size()) {
    TextValue(Join(chars, 0, static_cast<size_t>(n)), out);
    return true;
  }
  std::vector<std::string> f = Chars(fill);
  std::string padding;
  for (size_t i = 0; i < static_cast<size_t>(n) - chars.size(); ++i) padding += f[i % f.size()];
  TextValue(left ? padding + source : source + padding, out);
  return true;
}

bool Substr(const std::vector<Value>& a, Value* out, SqlError* error) {
  std::string source;
  std::int64_t pos = 0;
  std::int64_t len = INT32_MAX;
  if (!ToText(a[0], &source, error) || !Integer(a[1], &pos, error)) return false;
  if (a.size() > 2 && !Integer(a[2], &len, error)) return false;
  std::vector<std::string> chars = Chars(source);
  auto size = static_cast<std::int64_t>(chars.size());
  if (len < 1) {
    *out = Value();
    return true;
  }
  if (pos == 0) pos = 1;
  std::int64_t start = pos > 0 ? pos - 1 : size + pos;
  if (start < 0 || start >= size) {
    *out = Value();
    return true;
  }
  TextValue(Join(chars, static_cast<size_t>(start), static_cast<size_t>(std::min(len, size))),
            out);
  return true;
}

bool Instr(const std::vector<Value>& a, Value* out, SqlError* error) {
  std::string s;
  std::string sub;
  std::int64_t pos = 1;
  std::int64_t nth = 1;
  if (!ToText(a[0], &s, error) || !ToText(a[1], &sub, error)) return false;
  if (a.size() > 2 && !Integer(a[2], &pos, error)) return false;
  if (a.size() > 3 && !Integer(a[3], &nth, error)) return false;
  if (pos == 0 || nth <= 0) {
    if (nth <= 0) {
      return SetError(error, 1428, "argument '" + std::to_string(nth) +
                                       "' is out of range");
    }
    return NumberResult(Decimal{}, out, error);
  }
  std::vector<std::string> hay = Chars(s);
  std::vector<std::string> needle = Chars(sub);
  auto n = static_cast<std::int64_t>(hay.size());
  auto m = static_cast<std::int64_t>(needle.size());
  auto at = [&](std::int64_t i) {
    if (i < 0 || i + m > n) return false;
    for (std::int64_t k = 0; k < m; ++k) {
      if (hay[static_cast<size_t>(i + k)] != needle[static_cast<size_t>(k)]) return false;
    }
    return true;
  };
  std::int64_t found = 0;
  std::int64_t hits = 0;
  if (pos > 0) {
    for (std::int64_t i = pos - 1; i + m <= n; ++i) {
      if (at(i) && ++hits == nth) {
        found = i + 1;
        break;
      }
    }
  } else {
    for (std::int64_t i = n + pos; i >= 0; --i) {
      if (at(i) && ++hits == nth) {
        found = i + 1;
        break;
      }
    }
  }
  Decimal d;
  values::DecimalFromInteger(found, &d);
  return NumberResult(d, out, error);
}

bool RoundOrTrunc(bool round, const std::vector<Value>& a, Value* out, SqlError* error) {
  if (a[0].kind == Value::Kind::kDate) {
    std::string unit = "DD";
    if (a.size() > 1 && !ToText(a[1], &unit, error)) return false;
    for (char& c : unit) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return RoundDate(round, a[0].date, unit, out, error);
  }
  Decimal d;
  std::int64_t places = 0;
  if (!ToNumber(a[0], &d, error)) return false;
  if (a.size() > 1 && !Integer(a[1], &places, error)) return false;
  places = std::clamp<std::int64_t>(places, -200, 200);
  int p = static_cast<int>(places);
  return NumberResult(round ? values::RoundToFraction(d, p) : values::TruncateToFraction(d, p),
                      out, error);
}

bool MonthsBetween(const std::vector<Value>& a, Value* out, SqlError* error) {
  values::DateTimeFields x;
  values::DateTimeFields y;
  if (!DateOf(a[0], &x, error) || !DateOf(a[1], &y, error)) return false;
  Decimal months;
  values::DecimalFromInteger((x.year - y.year) * 12 + (x.month - y.month), &months);
  bool x_last = x.day == values::DaysInMonth(x.year, x.month);
  bool y_last = y.day == values::DaysInMonth(y.year, y.month);
  if (x.day != y.day && !(x_last && y_last)) {
    // The rest as a fraction of a 31-day month, the time of day included.
    std::int64_t seconds = (x.day - y.day) * 86400LL +
                           (x.hour - y.hour) * 3600LL + (x.minute - y.minute) * 60LL +
                           (x.second - y.second);
    Decimal s;
    Decimal frac;
    values::DecimalFromInteger(seconds, &s);
    values::DivideDecimals(s, Decimal{false, "26784", 7}, &frac);
    months = values::AddDecimals(months, frac);
  }
  return NumberResult(months, out, error);
}

// Functions that see every argument, NULL or not.
bool NullTolerant(const std::string& name) {
  return name == "NVL" || name == "NVL2" || name == "COALESCE" || name == "DECODE" ||
         name == "REPLACE" || name == "CONCAT" || name == "NULLIF";
}

}  // namespace

bool IsSqlFunction(const std::string& name) { return Find(name) != nullptr; }

bool CallFunction(const ExecContext& ctx, const RowScope& scope, const Expr& e, Value* out,
                  SqlError* error) {
  const FunctionInfo* f = Find(e.text);
  if (f == nullptr) return SetError(error, 904, "\"" + e.text + "\": invalid identifier");
  if (e.args.size() < f->min_args || e.args.size() > f->max_args) {
    return SetError(error, 909, "invalid number of arguments");
  }
  const std::string& name = e.text;
  *out = Value();
  // The functions that choose which arguments to evaluate.
  if (name == "NVL" || name == "COALESCE") {
    for (const Expr& arg : e.args) {
      if (!EvalExpr(ctx, scope, arg, out, error)) return false;
      if (!IsNull(*out)) return true;
    }
    return true;
  }
  if (name == "NVL2") {
    Value first;
    if (!EvalExpr(ctx, scope, e.args[0], &first, error)) return false;
    return EvalExpr(ctx, scope, e.args[IsNull(first) ? 2 : 1], out, error);
  }
  if (name == "DECODE") {
    Value subject;
    if (!EvalExpr(ctx, scope, e.args[0], &subject, error)) return false;
    size_t i = 1;
    for (; i + 1 < e.args.size(); i += 2) {
      Value search;
      if (!EvalExpr(ctx, scope, e.args[i], &search, error)) return false;
      bool hit = IsNull(subject) && IsNull(search);  // DECODE matches NULL with NULL
      if (!IsNull(subject) && !IsNull(search)) {
        int c = 1;
        if (!CompareValues(subject, search, &c, error)) return false;
        hit = c == 0;
      }
      if (hit) return EvalExpr(ctx, scope, e.args[i + 1], out, error);
    }
    if (i < e.args.size()) return EvalExpr(ctx, scope, e.args[i], out, error);
    return true;
  }
  std::vector<Value> a(e.args.size());
  bool any_null = false;
  for (size_t i = 0; i < e.args.size(); ++i) {
    if (!EvalExpr(ctx, scope, e.args[i], &a[i], error)) return false;
    any_null = any_null || IsNull(a[i]);
  }
  if (any_null && !NullTolerant(name)) return true;
  Decimal d;
  if (name == "ABS" || name == "FLOOR" || name == "CEIL" || name == "SIGN") {
    if (!ToNumber(a[0], &d, error)) return false;
    if (name == "ABS") d.negative = false;
    if (name == "FLOOR") d = values::FloorDecimal(d);
    if (name == "CEIL") d = values::CeilDecimal(d);
    if (name == "SIGN") {
      std::int64_t s = d.IsZero() ? 0 : d.negative ? -1 : 1;
      values::DecimalFromInteger(s, &d);
    }
    return NumberResult(d, out, error);
  }
  if (name == "MOD") {
    Decimal y;
    if (!ToNumber(a[0], &d, error) || !ToNumber(a[1], &y, error)) return false;
    return NumberResult(values::RemainderDecimals(d, y), out, error);
  }
  if (name == "ROUND" || name == "TRUNC") return RoundOrTrunc(name == "ROUND", a, out, error);
  std::string s;
  if (name == "UPPER" || name == "LOWER") {
    if (!ToText(a[0], &s, error)) return false;
    for (char& c : s) {
      auto u = static_cast<unsigned char>(c);
      if (u < 0x80) c = static_cast<char>(name == "UPPER" ? std::toupper(u) : std::tolower(u));
    }
    TextValue(s, out);
    out->fixed_char = a[0].fixed_char;
    return true;
  }
  if (name == "LENGTH") {
    if (!ToText(a[0], &s, error)) return false;
    values::DecimalFromInteger(static_cast<std::int64_t>(Chars(s).size()), &d);
    return NumberResult(d, out, error);
  }
  if (name == "SUBSTR") return Substr(a, out, error);
  if (name == "INSTR") return Instr(a, out, error);
  if (name == "LPAD" || name == "RPAD") return Pad(name == "LPAD", a, out, error);
  if (name == "TRIM" || name == "LTRIM" || name == "RTRIM") {
    std::string set = " ";
    const Value& source = name == "TRIM" && e.star ? a[1] : a[0];
    if (!ToText(source, &s, error)) return false;
    if (name == "TRIM" && e.star) {
      if (!ToText(a[0], &set, error)) return false;
      if (Chars(set).size() != 1) {
        return SetError(error, 30001, "trim set should have only one character");
      }
    } else if (name != "TRIM" && a.size() > 1 && !ToText(a[1], &set, error)) {
      return false;
    }
    std::string side = name == "LTRIM" ? "LEADING" : name == "RTRIM" ? "TRAILING" : e.option;
    return TrimChars(side, Chars(set), s, out);
  }
  if (name == "REPLACE") {
    if (IsNull(a[0])) return true;
    std::string from;
    std::string to;
    if (!ToText(a[0], &s, error) || !ToText(a[1], &from, error)) return false;
    if (a.size() > 2 && !ToText(a[2], &to, error)) return false;
    if (from.empty()) {
      TextValue(s, out);
      return true;
    }
    std::string r;
    for (size_t i = 0; i < s.size();) {
      if (s.compare(i, from.size(), from) == 0) {
        r += to;
        i += from.size();
      } else {
        r.push_back(s[i++]);
      }
    }
    TextValue(r, out);
    return true;
  }
  if (name == "CONCAT") {
    std::string x;
    std::string y;
    if (!ToText(a[0], &x, error) || !ToText(a[1], &y, error)) return false;
    TextValue(x + y, out);
    return true;
  }
  if (name == "TO_CHAR") return ToCharFn(a, out, error);
  if (name == "TO_NUMBER") {
    if (a.size() == 1) {
      if (!ToNumber(a[0], &d, error)) return false;
      return NumberResult(d, out, error);
    }
    std::string mask;
    if (!ToText(a[0], &s, error) || !ToText(a[1], &mask, error)) return false;
    values::NumberModel model;
    if (values::ParseNumberModel(mask, &model) != 0) {
      return SetError(error, 1481, "invalid number format model");
    }
    if (values::ParseNumber(s, model, &d) != 0) return SetError(error, 1722, "invalid number");
    return NumberResult(d, out, error);
  }
  if (name == "TO_DATE") {
    if (a[0].kind == Value::Kind::kDate && a.size() == 1) {
      *out = a[0];
      return true;
    }
    std::string mask = CurrentNls().date_format;
    if (!ToText(a[0], &s, error)) return false;
    if (a.size() > 1 && !ToText(a[1], &mask, error)) return false;
    const values::DateMask* m = nullptr;
    if (int ora = values::CachedDateMask(mask, &m)) return DateError(ora, error);
    values::DateParseOptions options;
    options.current_year = values::CurrentYear();
    options.current_month = values::CurrentMonth();
    values::DateTimeFields fields;
    if (int ora = values::ParseDateTime(s, *m, options, &fields, nullptr)) {
      return DateError(ora, error);
    }
    DateResult(fields, out);
    return true;
  }
  values::DateTimeFields fields;
  if (name == "SYSDATE" || name == "CURRENT_DATE") {
    Now(&fields);
    DateResult(fields, out);
    return true;
  }
  if (name == "ADD_MONTHS") {
    std::int64_t months = 0;
    values::DateTimeFields moved;
    if (!DateOf(a[0], &fields, error) || !Integer(a[1], &months, error)) return false;
    if (int ora = values::AddMonthsLastDay(fields, months, &moved)) return DateError(ora, error);
    DateResult(moved, out);
    return true;
  }
  if (name == "LAST_DAY") {
    if (!DateOf(a[0], &fields, error)) return false;
    fields.day = values::DaysInMonth(fields.year, fields.month);
    DateResult(fields, out);
    return true;
  }
  if (name == "MONTHS_BETWEEN") return MonthsBetween(a, out, error);
  if (name == "CAST" && e.cast) return CastValue(ctx, *e.cast, a[0], out, error);
  if (name == "GREATEST" || name == "LEAST" || name == "NULLIF" || name == "EXTRACT") {
    return PickFunction(name, e.option, a, out, error);
  }
  if (name == "SYSTIMESTAMP" || name == "CURRENT_TIMESTAMP" || name == "LOCALTIMESTAMP" ||
      name == "TO_TIMESTAMP") {
    return TimestampFunction(ctx, name, a, out, error);
  }
  if (IsIntervalFunction(name)) return IntervalFunction(ctx, name, a, out, error);
  return SetError(error, 904, "\"" + name + "\": invalid identifier");
}

}  // namespace ocimem
