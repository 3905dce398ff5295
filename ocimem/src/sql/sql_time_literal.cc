// Datetime and interval literals (DATE 'YYYY-MM-DD', TIMESTAMP '... [zone]', INTERVAL '...'
// fields), new datetime and interval values, and the text of TIMESTAMP and INTERVAL values.
#include <cctype>

#include "objects/value_descriptors.h"
#include "session/session_nls.h"
#include "sql/sql_time.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/datetime_kinds.h"
#include "values/descriptor.h"
#include "values/interval_text.h"
#include "values/oci_common.h"

namespace ocimem {
namespace {

bool DateError(int ora, SqlError* error) {
  return SetError(error, ora, values::DateErrorText(ora));
}

bool Blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Digits from `*i` as a number: false when there is none. More than 18 digits are kept as
// 10^18 (wider than any field may be).
bool ReadDigits(std::string_view text, size_t* i, std::int64_t* out, size_t* count) {
  *out = 0;
  *count = 0;
  while (*i < text.size() && std::isdigit(static_cast<unsigned char>(text[*i])) != 0) {
    if (*count < 18) *out = *out * 10 + (text[*i] - '0');
    ++*count;
    ++*i;
  }
  if (*count > 18) *out = 1000000000000000000LL;
  return *count > 0;
}

std::int64_t PowerOfTen(int n) {
  std::int64_t p = 1;
  while (n-- > 0) p *= 10;
  return p;
}

int ReadWithMask(std::string_view text, const char* mask_text, values::DateTimeFields* out) {
  const values::DateMask* mask = nullptr;
  if (int ora = values::CachedDateMask(mask_text, &mask)) return ora;
  values::DateParseOptions options;
  options.allow_fraction = true;
  options.current_year = values::CurrentYear();
  options.current_month = values::CurrentMonth();
  return values::ParseDateTime(text, *mask, options, out, nullptr);
}

}  // namespace

int IntervalFieldOf(std::string_view word) {
  static const char* const kNames[] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"};
  for (int i = 0; i < 6; ++i) {
    if (word == kNames[i]) return i;
  }
  return -1;
}

const char* IntervalFieldName(int field) {
  static const char* const kNames[] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"};
  return field >= 0 && field < 6 ? kNames[field] : "";
}

int ReadIntervalLiteral(std::string_view text, int start, int end, int leading, int fraction,
                        values::IntervalValue* out) {
  size_t i = 0;
  while (i < text.size() && Blank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  std::int64_t fields[6] = {0, 0, 0, 0, 0, 0};
  std::int64_t nanos = 0;
  for (int field = start; field <= end; ++field) {
    if (field > start) {
      if (field == kHourField) {
        if (i >= text.size() || !Blank(text[i])) return values::kOraIntervalInvalid;
        while (i < text.size() && Blank(text[i])) ++i;
      } else {
        char separator = field == kMonthField ? '-' : ':';
        if (i >= text.size() || text[i] != separator) return values::kOraIntervalInvalid;
        ++i;
      }
    }
    size_t count = 0;
    if (!ReadDigits(text, &i, &fields[field], &count)) return values::kOraIntervalInvalid;
    if (field == start) {
      if (fields[field] >= PowerOfTen(leading)) return values::kOraLeadingPrecision;
    } else {
      static const int kLimit[] = {0, 11, 0, 23, 59, 59};
      static const int kError[] = {0, values::kOraBadMonth, 0, values::kOraBadHour,
                                   values::kOraBadMinute, values::kOraBadSecond};
      if (fields[field] > kLimit[field]) return kError[field];
    }
    if (field == kSecondField && i < text.size() && text[i] == '.') {
      ++i;
      std::string digits;
      while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0) {
        digits += text[i++];
      }
      if (digits.size() > 9) return values::kOraBadFraction;
      digits.append(9 - digits.size(), '0');
      nanos = std::stoll(digits);
      // The fraction is rounded to the literal's precision.
      std::int64_t unit = PowerOfTen(9 - fraction);
      nanos = (nanos + unit / 2) / unit * unit;
    }
  }
  while (i < text.size() && Blank(text[i])) ++i;
  if (i != text.size()) return values::kOraIntervalInvalid;
  int sign = negative ? -1 : 1;
  if (start <= kMonthField) {
    return values::MakeYearMonth(sign * fields[kYearField], sign * fields[kMonthField], out);
  }
  return values::MakeDaySecond(sign * fields[kDayField], sign * fields[kHourField],
                               sign * fields[kMinuteField], sign * fields[kSecondField],
                               sign * nanos, out);
}

int ReadDateLiteral(std::string_view text, values::DateTimeFields* out) {
  int ora = ReadWithMask(text, "YYYY-MM-DD", out);
  // Text past the date (a time of day) does not match the literal's format.
  return ora == values::kOraInputTooLong ? values::kOraLiteralMismatch : ora;
}

int ReadTimestampLiteral(std::string_view text, values::DateTimeFields* fields, bool* zoned,
                         values::DateTimeValue* zoned_value) {
  // The date, the time of day, then what is left: the zone.
  std::vector<std::string_view> words;
  size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && Blank(text[i])) ++i;
    size_t from = i;
    while (i < text.size() && !Blank(text[i])) ++i;
    if (i > from) words.push_back(text.substr(from, i - from));
  }
  *zoned = false;
  if (words.empty()) return values::kOraLiteralMismatch;
  std::string datetime(words[0]);
  const char* mask = "YYYY-MM-DD";
  if (words.size() > 1) {
    datetime += " " + std::string(words[1]);
    mask = words[1].find('.') != std::string_view::npos ? "YYYY-MM-DD HH24:MI:SSXFF"
                                                         : "YYYY-MM-DD HH24:MI:SS";
  }
  int ora = ReadWithMask(datetime, mask, fields);
  if (ora == values::kOraInputTooLong) ora = values::kOraLiteralMismatch;
  if (ora != 0 || words.size() < 3) return ora;
  if (words.size() > 4) return values::kOraLiteralMismatch;
  values::Zone zone;
  if (int z = values::ResolveZoneText(words[2], &zone)) return z;
  std::string_view abbreviation = words.size() > 3 ? words[3] : std::string_view();
  if (int z = values::MakeZonedValue(*fields, zone, abbreviation, zoned_value)) return z;
  *zoned = true;
  return 0;
}

bool MakeDateTimeValue(const ExecContext& ctx, values::DateTimeKind kind,
                       const values::DateTimeValue& value, Value* out, SqlError* error) {
  ub4 type = kind == values::DateTimeKind::TimestampTz    ? OCI_DTYPE_TIMESTAMP_TZ
             : kind == values::DateTimeKind::TimestampLtz ? OCI_DTYPE_TIMESTAMP_LTZ
                                                          : OCI_DTYPE_TIMESTAMP;
  return MakeDateTimeValueOf(ctx, type, kind, value, out, error);
}

bool MakeDateTimeValueOf(const ExecContext& ctx, ub4 type, values::DateTimeKind kind,
                         const values::DateTimeValue& value, Value* out, SqlError* error) {
  void* desc = nullptr;
  if (AllocValueDescriptor(nullptr, type, &desc) != OCI_SUCCESS || desc == nullptr) {
    return SetError(error, 4030, "out of process memory");
  }
  ctx.temporaries.emplace_back(desc, [](void* p) { FreeValueDescriptor(p); });
  values::DateTimeDescriptor* d = values::AsDateTime(desc);
  d->kind = kind;
  d->value = value;
  *out = Value();
  out->kind = Value::Kind::kDateTime;
  out->handle = desc;
  out->desc_type = type;
  return true;
}

bool MakeIntervalValue(const ExecContext& ctx, values::IntervalKind kind,
                       const values::IntervalValue& value, int leading, int fraction,
                       Value* out, SqlError* error) {
  bool ym = kind == values::IntervalKind::YearMonth;
  ub4 type = ym ? OCI_DTYPE_INTERVAL_YM : OCI_DTYPE_INTERVAL_DS;
  void* desc = nullptr;
  if (AllocValueDescriptor(nullptr, type, &desc) != OCI_SUCCESS || desc == nullptr) {
    return SetError(error, 4030, "out of process memory");
  }
  ctx.temporaries.emplace_back(desc, [](void* p) { FreeValueDescriptor(p); });
  values::IntervalDescriptor* d = values::AsInterval(desc);
  d->kind = kind;
  d->value = value;
  *out = Value();
  out->kind = Value::Kind::kInterval;
  out->handle = desc;
  out->desc_type = type;
  out->leading_precision = static_cast<ub1>(leading);
  out->fraction_precision = static_cast<ub1>(ym ? 0 : fraction);
  return true;
}

ValueType DateTimeValueType(ub4 descriptor_type, int fraction) {
  ValueType t;
  t.kind = ValueKind::kDateTime;
  t.descriptor_type = descriptor_type;
  t.typecode = descriptor_type == OCI_DTYPE_TIMESTAMP_TZ    ? OCI_TYPECODE_TIMESTAMP_TZ
               : descriptor_type == OCI_DTYPE_TIMESTAMP_LTZ ? OCI_TYPECODE_TIMESTAMP_LTZ
                                                            : OCI_TYPECODE_TIMESTAMP;
  t.fraction_precision = static_cast<ub1>(fraction);
  return t;
}

ValueType IntervalValueType(bool year_month, int leading, int fraction) {
  ValueType t;
  t.kind = ValueKind::kInterval;
  t.descriptor_type = year_month ? OCI_DTYPE_INTERVAL_YM : OCI_DTYPE_INTERVAL_DS;
  t.typecode = year_month ? OCI_TYPECODE_INTERVAL_YM : OCI_TYPECODE_INTERVAL_DS;
  t.leading_precision = static_cast<ub1>(leading);
  t.fraction_precision = static_cast<ub1>(year_month ? 0 : fraction);
  return t;
}

void TimeLiteralType(const Expr& e, ValueType* out) {
  if (e.option == "DATE") {
    *out = ValueType();
    out->kind = ValueKind::kDate;
    out->typecode = OCI_TYPECODE_DATE;
    return;
  }
  if (e.option == "TIMESTAMP") {
    // The literal's type is TIMESTAMP(9), WITH TIME ZONE when it names a zone (IV6).
    values::DateTimeFields fields;
    values::DateTimeValue zoned;
    bool has_zone = false;
    ReadTimestampLiteral(e.text, &fields, &has_zone, &zoned);
    *out = DateTimeValueType(has_zone ? OCI_DTYPE_TIMESTAMP_TZ : OCI_DTYPE_TIMESTAMP, 9);
    return;
  }
  bool ym = e.cast && e.cast->base == DataTypeSpec::Base::kIntervalYm;
  *out = IntervalValueType(ym, e.cast ? e.cast->leading_precision : 2,
                           e.cast ? e.cast->fraction_precision : 6);
}

bool TimeLiteralValue(const ExecContext& ctx, const Expr& e, Value* out, SqlError* error) {
  if (e.option == "DATE") {
    values::DateTimeFields f;
    if (int ora = ReadDateLiteral(e.text, &f)) return DateError(ora, error);
    *out = Value();
    out->kind = Value::Kind::kDate;
    out->date.OCIDateYYYY = static_cast<sb2>(f.year);
    out->date.OCIDateMM = static_cast<ub1>(f.month);
    out->date.OCIDateDD = static_cast<ub1>(f.day);
    return true;
  }
  if (e.option == "TIMESTAMP") {
    values::DateTimeFields f;
    values::DateTimeValue zoned;
    bool has_zone = false;
    if (int ora = ReadTimestampLiteral(e.text, &f, &has_zone, &zoned)) {
      return DateError(ora, error);
    }
    if (has_zone) {
      if (!MakeDateTimeValue(ctx, values::DateTimeKind::TimestampTz, zoned, out, error)) {
        return false;
      }
    } else {
      values::DateTimeValue plain;
      values::SetFields(f, &plain);
      if (!MakeDateTimeValue(ctx, values::DateTimeKind::Timestamp, plain, out, error)) {
        return false;
      }
    }
    out->fraction_precision = 9;
    return true;
  }
  // INTERVAL 'text' start [TO end]: option "START" or "START TO END".
  std::string fields = e.option;
  size_t to = fields.find(" TO ");
  int start = IntervalFieldOf(fields.substr(0, to));
  int end = to == std::string::npos ? start : IntervalFieldOf(fields.substr(to + 4));
  int leading = e.cast ? e.cast->leading_precision : 2;
  int fraction = e.cast ? e.cast->fraction_precision : 6;
  values::IntervalValue v;
  if (int ora = ReadIntervalLiteral(e.text, start, end, leading, fraction, &v)) {
    return DateError(ora, error);
  }
  return MakeIntervalValue(ctx,
                           start <= kMonthField ? values::IntervalKind::YearMonth
                                                : values::IntervalKind::DaySecond,
                           v, leading, fraction, out, error);
}

int DescriptorText(const void* descriptor, int leading, int fraction, std::string* out) {
  if (const values::IntervalDescriptor* iv = values::AsInterval(descriptor)) {
    return values::FormatInterval(iv->kind, iv->value, leading,
                                  iv->kind == values::IntervalKind::YearMonth ? 0 : fraction,
                                  out);
  }
  const values::DateTimeDescriptor* d = values::AsDateTime(descriptor);
  if (d == nullptr) return values::kOraNotComparable;
  values::Zone session;
  if (d->kind == values::DateTimeKind::TimestampLtz) {
    if (int ora = values::ResolveSessionZone(CurrentNls().time_zone, &session)) return ora;
  }
  values::ZoneOutput zone;
  bool has_zone = false;
  values::DateTimeFields fields = values::Shown(*d, session, &zone, &has_zone);
  bool tz = d->kind == values::DateTimeKind::TimestampTz;
  const values::DateMask* mask = nullptr;
  const std::string& mask_text =
      tz ? CurrentNls().timestamp_tz_format : CurrentNls().timestamp_format;
  if (int ora = values::CachedDateMask(mask_text, &mask)) return ora;
  return values::FormatDateTime(*mask, fields, true, fraction, tz ? &zone : nullptr, out);
}

}  // namespace ocimem
