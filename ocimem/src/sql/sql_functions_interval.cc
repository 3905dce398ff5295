// The interval functions: NUMTODSINTERVAL and NUMTOYMINTERVAL (a number of a unit),
// TO_DSINTERVAL and TO_YMINTERVAL (Oracle's interval text or an ISO 8601 duration), and EXTRACT of a field of an interval.
#include <cctype>

#include "sql/sql_time.h"
#include "values/date_format.h"
#include "values/descriptor.h"
#include "values/interval_text.h"
#include "values/number_arith.h"

namespace ocimem {
namespace {

using values::Decimal;

bool DateError(int ora, SqlError* error) {
  return SetError(error, ora, values::DateErrorText(ora));
}

// A unit written in any case, blanks around it allowed.
std::string UnitOf(const std::string& text) {
  size_t from = text.find_first_not_of(' ');
  size_t to = text.find_last_not_of(' ');
  std::string unit = from == std::string::npos ? "" : text.substr(from, to - from + 1);
  for (char& c : unit) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return unit;
}

// n units as whole months (cut, IV3) or as seconds rounded to the nanosecond.
bool NumberToInterval(const ExecContext& ctx, bool year_month, const Decimal& n,
                      const std::string& unit, Value* out, SqlError* error) {
  static const struct {
    const char* name;
    bool year_month;
    const char* digits;
    int exponent;
  } kUnits[] = {{"YEAR", true, "12", 2},     {"MONTH", true, "1", 1},
                {"DAY", false, "864", 5},    {"HOUR", false, "36", 4},
                {"MINUTE", false, "6", 2},   {"SECOND", false, "1", 1}};
  for (const auto& u : kUnits) {
    if (unit != u.name || u.year_month != year_month) continue;
    Decimal amount = values::MultiplyDecimals(n, Decimal{false, u.digits, u.exponent});
    values::IntervalValue v;
    if (year_month) {
      std::int64_t months = 0;
      if (!values::DecimalToInt64(values::TruncateToFraction(amount, 0), &months)) {
        return DateError(values::kOraLeadingPrecision, error);
      }
      if (int ora = values::MakeYearMonth(0, months, &v)) return DateError(ora, error);
      return MakeIntervalValue(ctx, values::IntervalKind::YearMonth, v, 9, 0, out, error);
    }
    amount = values::RoundToFraction(amount, 9);
    Decimal whole = values::TruncateToFraction(amount, 0);
    std::int64_t seconds = 0;
    std::int64_t nanos = 0;
    if (!values::DecimalToInt64(whole, &seconds) ||
        !values::DecimalToInt64(values::MultiplyDecimals(values::SubtractDecimals(amount, whole),
                                                         Decimal{false, "1", 10}),
                                &nanos)) {
      return DateError(values::kOraLeadingPrecision, error);
    }
    if (int ora = values::MakeDaySecond(0, 0, 0, seconds, nanos, &v)) {
      return DateError(ora, error);
    }
    return MakeIntervalValue(ctx, values::IntervalKind::DaySecond, v, 9, 9, out, error);
  }
  return SetError(error, 1760, "illegal argument for function");
}

// An ISO 8601 duration, `[-]P[nY][nM][nD][T[nH][nM][n[.f]S]]`: years and months for
// TO_YMINTERVAL (the day and time parts read and left out), days to seconds for
// TO_DSINTERVAL (no years or months). 0 or ORA-01867.
int ReadIsoDuration(bool year_month, const std::string& text, values::IntervalValue* out) {
  size_t i = 0;
  int sign = 1;
  if (i < text.size() && text[i] == '-') {
    sign = -1;
    ++i;
  }
  if (i >= text.size() || text[i] != 'P') return values::kOraIntervalInvalid;
  ++i;
  std::int64_t years = 0, months = 0, days = 0, hours = 0, minutes = 0, seconds = 0, nanos = 0;
  bool in_time = false;
  bool any = false;
  // The designators in their order; each at most once.
  const char* order = "YMD";
  size_t next = 0;
  while (i < text.size()) {
    if (text[i] == 'T' && !in_time) {
      in_time = true;
      order = "HMS";
      next = 0;
      ++i;
      continue;
    }
    std::int64_t n = 0;
    size_t digits = 0;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0) {
      if (digits < 12) n = n * 10 + (text[i] - '0');
      ++digits;
      ++i;
    }
    std::int64_t fraction = 0;
    bool has_fraction = i < text.size() && text[i] == '.';
    if (has_fraction) {
      ++i;
      std::string f;
      while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0) {
        f += text[i++];
      }
      if (f.size() > 9) return values::kOraIntervalInvalid;
      f.append(9 - f.size(), '0');
      fraction = std::stoll(f);
    }
    if (digits == 0 || digits > 9 || i >= text.size()) return values::kOraIntervalInvalid;
    char designator = text[i++];
    while (order[next] != '\0' && order[next] != designator) ++next;
    if (order[next] == '\0') return values::kOraIntervalInvalid;
    ++next;
    if (has_fraction && !(in_time && designator == 'S')) return values::kOraIntervalInvalid;
    any = true;
    if (!in_time) {
      if (designator == 'Y') years = n;
      if (designator == 'M') months = n;
      if (designator == 'D') days = n;
    } else {
      if (designator == 'H') hours = n;
      if (designator == 'M') minutes = n;
      if (designator == 'S') {
        seconds = n;
        nanos = fraction;
      }
    }
  }
  if (!any) return values::kOraIntervalInvalid;
  if (year_month) return values::MakeYearMonth(sign * years, sign * months, out);
  if (years != 0 || months != 0) return values::kOraIntervalInvalid;
  return values::MakeDaySecond(sign * days, sign * hours, sign * minutes, sign * seconds,
                               sign * nanos, out);
}

}  // namespace

bool IsIntervalFunction(const std::string& name) {
  return name == "NUMTODSINTERVAL" || name == "NUMTOYMINTERVAL" || name == "TO_DSINTERVAL" ||
         name == "TO_YMINTERVAL";
}

bool IntervalFunction(const ExecContext& ctx, const std::string& name,
                      const std::vector<Value>& args, Value* out, SqlError* error) {
  bool year_month = name == "NUMTOYMINTERVAL" || name == "TO_YMINTERVAL";
  if (name == "NUMTODSINTERVAL" || name == "NUMTOYMINTERVAL") {
    Decimal n;
    std::string unit;
    if (!ToNumber(args[0], &n, error) || !ToText(args[1], &unit, error)) return false;
    return NumberToInterval(ctx, year_month, n, UnitOf(unit), out, error);
  }
  // TO_DSINTERVAL, TO_YMINTERVAL: Oracle's interval text; an interval is taken as it is.
  values::IntervalKind kind =
      year_month ? values::IntervalKind::YearMonth : values::IntervalKind::DaySecond;
  if (args[0].kind == Value::Kind::kInterval) {
    const values::IntervalDescriptor* d = values::AsInterval(args[0].handle);
    if (d != nullptr && d->kind == kind) {
      *out = args[0];
      return true;
    }
  }
  if (args[0].kind != Value::Kind::kText) {
    return Inconsistent("CHAR", args[0], error);
  }
  values::IntervalValue v;
  const std::string& text = args[0].bytes;
  size_t first = text.find_first_not_of(' ');
  bool iso = first != std::string::npos &&
             (text[first] == 'P' || (text[first] == '-' && text.compare(first, 2, "-P") == 0));
  if (iso) {
    size_t last = text.find_last_not_of(' ');
    if (int ora = ReadIsoDuration(year_month, text.substr(first, last - first + 1), &v)) {
      return DateError(ora, error);
    }
  } else if (int ora = values::ParseInterval(kind, text, &v)) {
    return DateError(ora, error);
  }
  return MakeIntervalValue(ctx, kind, v, 9, 9, out, error);
}

bool ExtractInterval(const std::string& field, const Value& v, Value* out, SqlError* error) {
  const values::IntervalDescriptor* d = values::AsInterval(v.handle);
  if (d == nullptr) return Inconsistent("INTERVAL", v, error);
  std::int64_t n = 0;
  if (d->kind == values::IntervalKind::YearMonth) {
    if (field == "YEAR") {
      n = d->value.months / 12;
    } else if (field == "MONTH") {
      n = d->value.months % 12;
    } else {
      return SetError(error, 30076, "invalid extract field for extract source");
    }
  } else {
    std::int64_t s = d->value.seconds;
    if (field == "DAY") {
      n = s / 86400;
    } else if (field == "HOUR") {
      n = s % 86400 / 3600;
    } else if (field == "MINUTE") {
      n = s % 3600 / 60;
    } else if (field == "SECOND") {
      // The seconds with their fraction, of the interval's sign.
      Decimal whole;
      Decimal nanos;
      values::DecimalFromInteger(s % 60, &whole);
      values::DecimalFromInteger(d->value.nanos, &nanos);
      Decimal fraction;
      values::DivideDecimals(nanos, Decimal{false, "1", 10}, &fraction);
      return NumberValue(values::AddDecimals(whole, fraction), out, error);
    } else {
      return SetError(error, 30076, "invalid extract field for extract source");
    }
  }
  Decimal d2;
  values::DecimalFromInteger(n, &d2);
  return NumberValue(d2, out, error);
}

}  // namespace ocimem
