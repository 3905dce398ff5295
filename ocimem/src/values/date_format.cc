#include "date_format.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "calendar.h"
#include "date_text.h"

namespace ocimem::values {
using namespace date_text;  // NOLINT(build/namespaces)
namespace {


std::atomic<int> g_pinned_year{0};
std::atomic<int> g_pinned_month{1};



struct ElementName {
  const char* name;
  DateElement element;
  int digits;
};

// Longest names first so that a prefix never hides a longer element.
const ElementName kElements[] = {
    {"SYYYY", DateElement::SignedYear4, 0}, {"YYYY", DateElement::Year4, 0},
    {"RRRR", DateElement::RoundYear4, 0},   {"RR", DateElement::RoundYear2, 0},
    {"YY", DateElement::Year2, 0},          {"MONTH", DateElement::MonthName, 0},
    {"MON", DateElement::MonthAbbr, 0},     {"MM", DateElement::Month, 0},
    {"MI", DateElement::Minute, 0},         {"DD", DateElement::Day, 0},
    {"HH24", DateElement::Hour24, 0},       {"HH12", DateElement::Hour12, 0},
    {"HH", DateElement::Hour12, 0},         {"SS", DateElement::Second, 0},
    {"FF1", DateElement::Fraction, 1},      {"FF2", DateElement::Fraction, 2},
    {"FF3", DateElement::Fraction, 3},      {"FF4", DateElement::Fraction, 4},
    {"FF5", DateElement::Fraction, 5},      {"FF6", DateElement::Fraction, 6},
    {"FF7", DateElement::Fraction, 7},      {"FF8", DateElement::Fraction, 8},
    {"FF9", DateElement::Fraction, 9},      {"FF", DateElement::Fraction, 0},
    {"TZR", DateElement::ZoneRegion, 0},    {"TZD", DateElement::ZoneAbbr, 0},
    {"TZH", DateElement::ZoneHour, 0},      {"TZM", DateElement::ZoneMinute, 0},
    {"A.M.", DateElement::Meridian, 0},     {"P.M.", DateElement::Meridian, 0},
    {"AM", DateElement::Meridian, 0},       {"PM", DateElement::Meridian, 0},
    {"FM", DateElement::FillMode, 0},       {"FX", DateElement::Exact, 0},
};

// Case of a name element follows how the element is written: MON, Mon, mon.
std::string ApplyCase(const std::string& written, std::string_view upper_word) {
  std::string out(upper_word);
  const bool first_lower = !written.empty() && IsLower(written[0]);
  const bool second_lower =
      written.size() > 1 && IsLower(written[1]);
  if (first_lower) {
    for (char& c : out) c = Lower(c);
  } else if (second_lower) {
    for (std::size_t i = 1; i < out.size(); ++i) out[i] = Lower(out[i]);
  }
  return out;
}

std::string Padded(long value, int width, bool fill_mode) {
  std::string digits = std::to_string(value);
  if (!fill_mode && static_cast<int>(digits.size()) < width) {
    digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
  }
  return digits;
}

// Padded(value, width, fill_mode) appended to `text` without a string of its own, in
// one append.
void AppendPadded(std::string& text, long value, int width, bool fill_mode) {
  if (width == 2 && value >= 0 && value < 100) {  // month, day, hour, minute, second
    if (value >= 10 || !fill_mode) text.push_back(static_cast<char>('0' + value / 10));
    text.push_back(static_cast<char>('0' + value % 10));
    return;
  }
  if (value < 0 || width > 16) {
    text += Padded(value, width, fill_mode);
    return;
  }
  char digits[40];
  char* const end = digits + sizeof digits;
  char* p = end;
  do {
    *--p = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  if (!fill_mode) {
    while (end - p < width) *--p = '0';
  }
  text.append(p, static_cast<std::size_t>(end - p));
}

std::string OffsetText(int offset_minutes) {
  const int magnitude = offset_minutes < 0 ? -offset_minutes : offset_minutes;
  std::string out = offset_minutes < 0 ? "-" : "+";
  out += Padded(magnitude / 60, 2, false);
  out += ':';
  out += Padded(magnitude % 60, 2, false);
  return out;
}



bool IsZoneElement(DateElement e) {
  return e == DateElement::ZoneRegion || e == DateElement::ZoneAbbr ||
         e == DateElement::ZoneHour || e == DateElement::ZoneMinute;
}

// Input masks may name each field once.
int CheckInputMask(const DateMask& mask, const DateParseOptions& options) {
  const DateToken* seen[16] = {};
  for (const DateToken& t : mask.tokens) {
    if (t.element == DateElement::Fraction && !options.allow_fraction) {
      return kOraDateFormatNotRecognized;
    }
    if (IsZoneElement(t.element) && !options.allow_zone) return kOraDateFormatNotRecognized;
    const Group g = GroupOf(t.element);
    if (g == Group::None) continue;
    const DateToken*& slot = seen[static_cast<int>(g)];
    if (slot != nullptr) {
      if (slot->element == t.element) return kOraFormatTwice;
      if (g == Group::Year) return kOraYearTwice;
      if (g == Group::Hour) return kOraHourTwice;
      if (g == Group::Month) return kOraMonthTwice;
      return kOraFormatTwice;
    }
    slot = &t;
  }
  return 0;
}


}  // namespace

namespace {

// The local calendar of the current second; localtime_r is asked once per
// second and thread, not once per value.
const std::tm& LocalNow() {
  thread_local std::time_t cached_second = -1;
  thread_local std::tm cached{};
  const std::time_t now = std::time(nullptr);
  if (now != cached_second) {
    localtime_r(&now, &cached);
    cached_second = now;
  }
  return cached;
}

}  // namespace

int CurrentYear() {
  const int pinned = g_pinned_year.load();
  if (pinned != 0) return pinned;
  return LocalNow().tm_year + 1900;
}

int CurrentMonth() {
  if (g_pinned_year.load() != 0) return g_pinned_month.load();
  return LocalNow().tm_mon + 1;
}

void PinClockForTesting(int year, int month) {
  g_pinned_month = month;
  g_pinned_year = year;
}

int ParseDateMask(std::string_view mask, DateMask* out) {
  DateMask result;
  std::size_t pos = 0;
  while (pos < mask.size()) {
    const char c = mask[pos];
    if (c == '"') {
      const std::size_t close = mask.find('"', pos + 1);
      if (close == std::string_view::npos) return kOraDateFormatNotRecognized;
      result.tokens.push_back({DateElement::Literal,
                               std::string(mask.substr(pos + 1, close - pos - 1)), 0});
      pos = close + 1;
      continue;
    }
    bool matched = false;
    for (const ElementName& e : kElements) {
      if (MatchFold(mask, pos, e.name)) {
        const std::size_t len = std::string_view(e.name).size();
        result.tokens.push_back({e.element, std::string(mask.substr(pos, len)), e.digits});
        pos += len;
        matched = true;
        break;
      }
    }
    if (matched) continue;
    if (IsAlnum(c)) return kOraDateFormatNotRecognized;
    result.tokens.push_back({DateElement::Literal, std::string(1, c), 0});
    ++pos;
  }
  bool has_year = false;
  bool has_month = false;
  for (int k = 0; k < 4; ++k) {
    DateParseOptions options;
    options.allow_fraction = (k & 1) != 0;
    options.allow_zone = (k & 2) != 0;
    result.input_error[k] = CheckInputMask(result, options);
  }
  for (const DateToken& t : result.tokens) {
    const Group g = GroupOf(t.element);
    result.fields |= 1U << static_cast<int>(g);
    has_year = has_year || g == Group::Year;
    has_month = has_month || g == Group::Month;
    if (t.element == DateElement::Year2 || t.element == DateElement::RoundYear2) {
      result.needs_clock = true;
    }
  }
  if (!has_year || !has_month) result.needs_clock = true;
  *out = std::move(result);
  return 0;
}

int FormatDateTime(const DateMask& mask, const DateTimeFields& v, bool allow_fraction, int fsprec,
                   const ZoneOutput* zone, std::string* out) {
  // Written straight into `out`, whose buffer a caller may reuse.
  std::string& text = *out;
  text.clear();
  text.reserve(64);  // the usual masks' texts, so that appending never regrows
  bool fill = false;
  const int abs_year = v.year < 0 ? -v.year : v.year;
  for (const DateToken& t : mask.tokens) {
    switch (t.element) {
      case DateElement::Literal:
        if (t.text.size() == 1) {
          text.push_back(t.text[0]);  // the usual '-', ':', ' ', in line
        } else {
          text += t.text;
        }
        break;
      case DateElement::FillMode: fill = !fill; break;
      case DateElement::Exact: break;
      case DateElement::Year4:
      case DateElement::RoundYear4: AppendPadded(text, abs_year, 4, fill); break;
      case DateElement::SignedYear4:
        text += v.year < 0 ? "-" : (fill ? "" : " ");
        AppendPadded(text, abs_year, 4, fill);
        break;
      case DateElement::Year2:
      case DateElement::RoundYear2: AppendPadded(text, abs_year % 100, 2, fill); break;
      case DateElement::Month: AppendPadded(text, v.month, 2, fill); break;
      case DateElement::MonthAbbr:
        if (v.month < 1 || v.month > 12) return kOraBadMonth;
        text += ApplyCase(t.text, std::string_view(kMonthNames[v.month - 1], 3));
        break;
      case DateElement::MonthName: {
        if (v.month < 1 || v.month > 12) return kOraBadMonth;
        std::string name = ApplyCase(t.text, kMonthNames[v.month - 1]);
        if (!fill) name.append(kLongestMonthName - name.size(), ' ');
        text += name;
        break;
      }
      case DateElement::Day: AppendPadded(text, v.day, 2, fill); break;
      case DateElement::Hour24: AppendPadded(text, v.hour, 2, fill); break;
      case DateElement::Hour12: AppendPadded(text, v.hour % 12 == 0 ? 12 : v.hour % 12, 2, fill); break;
      case DateElement::Meridian: {
        const bool dotted = t.text.size() == 4;
        const char* word = v.hour < 12 ? (dotted ? "A.M." : "AM") : (dotted ? "P.M." : "PM");
        text += ApplyCase(t.text, word);
        break;
      }
      case DateElement::Minute: AppendPadded(text, v.minute, 2, fill); break;
      case DateElement::Second: AppendPadded(text, v.second, 2, fill); break;
      case DateElement::Fraction: {
        if (!allow_fraction) return kOraDateFormatNotRecognized;
        const int digits = t.digits != 0 ? t.digits : fsprec;
        // Digits beyond the precision are cut, never carried into the seconds.
        if (v.nanos <= 999999999U && digits >= 0) {
          char padded[9];
          std::uint32_t n = v.nanos;
          for (int i = 8; i >= 0; --i) {
            padded[i] = static_cast<char>('0' + n % 10);
            n /= 10;
          }
          text.append(padded, static_cast<std::size_t>(digits < 9 ? digits : 9));
        } else {
          text.append(Padded(v.nanos, 9, false), 0, static_cast<std::size_t>(digits));
        }
        break;
      }
      case DateElement::ZoneRegion:
        if (zone == nullptr) return kOraDateFormatNotRecognized;
        if (zone->is_region) {
          for (char ch : zone->region) text += Upper(ch);
        } else {
          text += OffsetText(zone->offset_minutes);
        }
        break;
      case DateElement::ZoneAbbr:
        if (zone == nullptr) return kOraDateFormatNotRecognized;
        text += zone->abbreviation;
        break;
      case DateElement::ZoneHour: {
        if (zone == nullptr) return kOraDateFormatNotRecognized;
        const int m = zone->offset_minutes;
        text += m < 0 ? "-" : "+";
        text += Padded((m < 0 ? -m : m) / 60, 2, false);
        break;
      }
      case DateElement::ZoneMinute: {
        if (zone == nullptr) return kOraDateFormatNotRecognized;
        const int m = zone->offset_minutes;
        text += Padded((m < 0 ? -m : m) % 60, 2, false);
        break;
      }
    }
  }
  return 0;
}

const char* DateErrorText(int ora) {
  switch (ora) {
    case kOraFormatTwice: return "format code appears twice";
    case kOraYearTwice: return "year may only be specified once";
    case kOraHourTwice: return "hour may only be specified once";
    case kOraMonthTwice: return "month may only be specified once";
    case kOraDateFormatNotRecognized: return "date format not recognized";
    case kOraInputTooLong: return "date format picture ends before converting entire input string";
    case kOraDayNotValidForMonth: return "date not valid for month specified";
    case kOraInputTooShort: return "input value not long enough for date format";
    case kOraBadYear: return "(full) year must be between -4713 and +9999, and not be 0";
    case kOraBadMonth: return "not a valid month";
    case kOraBadDay: return "day of month must be between 1 and last day of month";
    case kOraBadHour12: return "hour must be between 1 and 12";
    case kOraBadHour: return "hour must be between 0 and 23";
    case kOraBadMinute: return "minutes must be between 0 and 59";
    case kOraBadSecond: return "seconds must be between 0 and 59";
    case kOraMeridianRequired: return "AM/A.M. or PM/P.M. required";
    case kOraBadZone: return "not a valid time zone";
    case kOraNonNumeric: return "a non-numeric character was found where a numeric was expected";
    case kOraLiteralMismatch: return "literal does not match format string";
    case kOraZoneHour: return "time zone hour must be between -15 and 15";
    case kOraZoneMinute: return "time zone minute must be between -59 and 59";
    case 1867: return "the interval is invalid";
    case 1873: return "the leading precision of the interval is too small";
    case 1877: return "string is too long for internal buffer";
    case 1878: return "specified field not found in datetime or interval";
    case kOraBadFraction: return "the fractional seconds must be between 0 and 999999999";
    case 1882: return "timezone region not found";
    case 30088: return "datetime/interval precision is out of range";
    default: return "conversion error";
  }
}

}  // namespace ocimem::values
