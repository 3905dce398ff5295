#include "interval_text.h"

#include <cctype>

#include "date_format.h"

namespace ocimem::values {
namespace {

constexpr std::int64_t kNanosPerSecond = 1000000000;
constexpr std::int64_t kSecondsPerDay = 86400;

std::string Pad(std::int64_t v, int width) {
  std::string s = std::to_string(v);
  if (static_cast<int>(s.size()) < width) s.insert(0, static_cast<std::size_t>(width) - s.size(), '0');
  return s;
}

struct Cursor {
  std::string_view s;
  std::size_t pos = 0;
  bool AtEnd() const { return pos >= s.size(); }
  void SkipBlanks() {
    while (!AtEnd() && s[pos] == ' ') ++pos;
  }
  // Unsigned decimal; false when no digit. Keeps at most 19 digits of value.
  bool Number(std::int64_t* v, int* digits) {
    const std::size_t begin = pos;
    std::int64_t n = 0;
    while (!AtEnd() && std::isdigit(static_cast<unsigned char>(s[pos]))) {
      if (pos - begin < 18) n = n * 10 + (s[pos] - '0');
      ++pos;
    }
    *digits = static_cast<int>(pos - begin);
    *v = n;
    return pos > begin;
  }
  bool Take(char c) {
    if (AtEnd() || s[pos] != c) return false;
    ++pos;
    return true;
  }
};

}  // namespace

int MakeYearMonth(std::int64_t years, std::int64_t months, IntervalValue* out) {
  const std::int64_t total = years * 12 + months;
  const std::int64_t magnitude = total < 0 ? -total : total;
  if (magnitude / 12 > kMaxLeadingField) return kOraLeadingPrecision;
  *out = IntervalValue{};
  out->months = total;
  return 0;
}

int MakeDaySecond(std::int64_t days, std::int64_t hours, std::int64_t minutes,
                  std::int64_t seconds, std::int64_t nanos, IntervalValue* out) {
  std::int64_t total = days * kSecondsPerDay + hours * 3600 + minutes * 60 + seconds +
                       nanos / kNanosPerSecond;
  std::int64_t ns = nanos % kNanosPerSecond;
  // One sign for every field.
  if (total > 0 && ns < 0) {
    --total;
    ns += kNanosPerSecond;
  } else if (total < 0 && ns > 0) {
    ++total;
    ns -= kNanosPerSecond;
  }
  const std::int64_t magnitude = total < 0 ? -total : total;
  if (magnitude / kSecondsPerDay > kMaxLeadingField) return kOraLeadingPrecision;
  *out = IntervalValue{};
  out->seconds = total;
  out->nanos = static_cast<std::int32_t>(ns);
  return 0;
}

void SplitYearMonth(const IntervalValue& v, std::int32_t* years, std::int32_t* months) {
  *years = static_cast<std::int32_t>(v.months / 12);
  *months = static_cast<std::int32_t>(v.months % 12);
}

void SplitDaySecond(const IntervalValue& v, std::int32_t* days, std::int32_t* hours,
                    std::int32_t* minutes, std::int32_t* seconds, std::int32_t* nanos) {
  *days = static_cast<std::int32_t>(v.seconds / kSecondsPerDay);
  const std::int64_t rest = v.seconds % kSecondsPerDay;
  *hours = static_cast<std::int32_t>(rest / 3600);
  *minutes = static_cast<std::int32_t>(rest % 3600 / 60);
  *seconds = static_cast<std::int32_t>(rest % 60);
  *nanos = v.nanos;
}

int FormatInterval(IntervalKind kind, const IntervalValue& v, int lfprec, int fsprec,
                   std::string* out) {
  if (lfprec < 0 || lfprec > 9 || fsprec < 0 || fsprec > 9) return kOraPrecisionRange;
  std::string text;
  if (kind == IntervalKind::YearMonth) {
    const std::int64_t m = v.months < 0 ? -v.months : v.months;
    text += v.months < 0 ? '-' : '+';
    text += Pad(m / 12, lfprec);
    text += '-';
    text += Pad(m % 12, 2);
  } else {
    const bool negative = v.seconds < 0 || v.nanos < 0;
    const std::int64_t s = v.seconds < 0 ? -v.seconds : v.seconds;
    const std::int64_t ns = v.nanos < 0 ? -v.nanos : v.nanos;
    text += negative ? '-' : '+';
    text += Pad(s / kSecondsPerDay, lfprec);
    text += ' ';
    text += Pad(s % kSecondsPerDay / 3600, 2);
    text += ':';
    text += Pad(s % 3600 / 60, 2);
    text += ':';
    text += Pad(s % 60, 2);
    if (fsprec > 0) {
      text += '.';
      // Digits beyond the precision are cut.
      text += Pad(ns, 9).substr(0, static_cast<std::size_t>(fsprec));
    }
  }
  *out = std::move(text);
  return 0;
}

int ParseInterval(IntervalKind kind, std::string_view text, IntervalValue* out) {
  Cursor c{text};
  c.SkipBlanks();
  bool negative = false;
  if (c.Take('-')) {
    negative = true;
  } else {
    c.Take('+');
  }
  std::int64_t lead = 0;
  int lead_digits = 0;
  if (!c.Number(&lead, &lead_digits)) return kOraIntervalInvalid;
  const int sign = negative ? -1 : 1;
  if (kind == IntervalKind::YearMonth) {
    std::int64_t months = 0;
    int digits = 0;
    if (!c.Take('-') || !c.Number(&months, &digits)) return kOraIntervalInvalid;
    c.SkipBlanks();
    if (!c.AtEnd()) return kOraIntervalInvalid;
    if (lead_digits > 9) return kOraLeadingPrecision;
    if (months > 11) return kOraBadMonth;
    return MakeYearMonth(sign * lead, sign * months, out);
  }
  const std::size_t before_blank = c.pos;
  c.SkipBlanks();
  if (c.pos == before_blank) return kOraIntervalInvalid;
  std::int64_t h = 0, m = 0, s = 0, frac = 0;
  int digits = 0;
  if (!c.Number(&h, &digits) || !c.Take(':') || !c.Number(&m, &digits) || !c.Take(':') ||
      !c.Number(&s, &digits)) {
    return kOraIntervalInvalid;
  }
  int frac_digits = 0;
  if (c.Take('.')) c.Number(&frac, &frac_digits);
  c.SkipBlanks();
  if (!c.AtEnd()) return kOraIntervalInvalid;
  if (lead_digits > 9) return kOraLeadingPrecision;
  if (h > 23) return kOraBadHour;
  if (m > 59) return kOraBadMinute;
  if (s > 59) return kOraBadSecond;
  if (frac_digits > 9) return kOraBadFraction;
  for (int k = frac_digits; k < 9; ++k) frac *= 10;
  return MakeDaySecond(sign * lead, sign * h, sign * m, sign * s, sign * frac, out);
}

}  // namespace ocimem::values
