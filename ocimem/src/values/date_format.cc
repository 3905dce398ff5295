#include "date_format.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "calendar.h"
#include "date_fixed.h"
#include "date_fields.h"
#include "date_text.h"

namespace ocimem::values {
using namespace date_text;  // NOLINT(build/namespaces)
namespace {

std::atomic<int> g_pinned_year{0};
std::atomic<int> g_pinned_month{1};

// Case of a name element follows how the element is written: MON, Mon, mon;
// with the first letter capital and the second small, every word (and every
// part of a hyphenated word) begins with a capital: Year is Twenty Twenty-One.
std::string ApplyCase(const std::string& written, std::string_view upper_words) {
  std::string out(upper_words);
  const bool first_lower = !written.empty() && IsLower(written[0]);
  const bool second_lower =
      written.size() > 1 && IsLower(written[1]);
  if (first_lower) {
    for (char& c : out) c = Lower(c);
  } else if (second_lower) {
    for (std::size_t i = 1; i < out.size(); ++i) {
      if (IsAlpha(out[i - 1])) out[i] = Lower(out[i]);
    }
  }
  return out;
}

// A name padded with blanks to the longest name of its kind unless in fill mode.
void AppendName(std::string& text, const std::string& written, std::string_view upper_name,
                std::size_t width, bool fill_mode) {
  const std::size_t begin = text.size();
  text += ApplyCase(written, upper_name);
  if (!fill_mode && text.size() - begin < width) text.append(width - (text.size() - begin), ' ');
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

// SYYYY, SCC, SYEAR: a minus sign for BC, a blank for AD unless in fill mode.
void AppendSign(std::string& text, int year, bool fill_mode) {
  if (year < 0) {
    text.push_back('-');
  } else if (!fill_mode) {
    text.push_back(' ');
  }
}

// The ordinal suffix of the number written from `begin`: 1ST, 2ND, 3RD, 11TH, 21ST ... It
// is in capitals when the element is (DD), in small letters when the element's first or
// second letter is small (Dd, dd), whatever the case of TH itself. Zero has no ordinal
// (decision DT16 in docs/ocimem.md).
int AppendOrdinal(std::string& text, std::size_t begin, const std::string& written) {
  const std::size_t end = text.size();
  // The number starts after a sign (SYYYY, SCC) and may have leading zeros.
  const std::size_t first = text.find_first_not_of("-0 ", begin);
  if (first == std::string::npos) return kOraTextTooLong;
  const int tens = end - first > 1 ? text[end - 2] - '0' : 0;
  const int units = text[end - 1] - '0';
  const char* suffix = "TH";
  if (tens != 1 && units == 1) suffix = "ST";
  if (tens != 1 && units == 2) suffix = "ND";
  if (tens != 1 && units == 3) suffix = "RD";
  const bool small = IsLower(written[0]) || (written.size() > 1 && IsLower(written[1]));
  for (const char* c = suffix; *c != '\0'; ++c) text.push_back(small ? Lower(*c) : *c);
  return 0;
}

std::string OffsetText(int offset_minutes) {
  const int magnitude = offset_minutes < 0 ? -offset_minutes : offset_minutes;
  std::string out = offset_minutes < 0 ? "-" : "+";
  out += Padded(magnitude / 60, 2, false);
  out += ':';
  out += Padded(magnitude % 60, 2, false);
  return out;
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

int FormatDateTime(const DateMask& mask, const DateTimeFields& v, bool allow_fraction, int fsprec,
                   const ZoneOutput* zone, std::string* out) {
  if (mask.fixed && FormatFixed(mask, v, allow_fraction, fsprec, out)) return 0;
  // Written straight into `out`, whose buffer a caller may reuse.
  std::string& text = *out;
  text.clear();
  text.reserve(64);  // the usual masks' texts, so that appending never regrows
  bool fill = false;
  const int abs_year = v.year < 0 ? -v.year : v.year;
  for (const DateToken& t : mask.tokens) {
    const std::size_t begin = text.size();
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
        AppendSign(text, v.year, fill);
        AppendPadded(text, abs_year, 4, fill);
        break;
      case DateElement::SignedYearSpelled:
        AppendSign(text, v.year, fill);
        text += ApplyCase(t.text.substr(1), SpelledYear(v.year));
        break;
      case DateElement::YearSpelled: text += ApplyCase(t.text, SpelledYear(v.year)); break;
      case DateElement::SignedCentury: AppendSign(text, v.year, fill); [[fallthrough]];
      case DateElement::Century: AppendPadded(text, (abs_year + 99) / 100, 2, fill); break;
      case DateElement::Era: {
        const bool dotted = t.text.size() == 4;
        const char* word = v.year < 0 ? (dotted ? "B.C." : "BC") : (dotted ? "A.D." : "AD");
        text += ApplyCase(t.text, word);
        break;
      }
      case DateElement::IsoYear:
      case DateElement::IsoWeek: {
        int iso_year = 0;
        int week = 0;
        IsoWeek(v.year, v.month, v.day, &iso_year, &week);
        if (t.element == DateElement::IsoWeek) {
          AppendPadded(text, week, 2, fill);
        } else {
          static const int kModulus[] = {1, 10, 100, 1000, 10000};
          const int abs_iso = iso_year < 0 ? -iso_year : iso_year;
          AppendPadded(text, abs_iso % kModulus[t.digits], t.digits, fill);
        }
        break;
      }
      case DateElement::Quarter: AppendPadded(text, (v.month - 1) / 3 + 1, 1, fill); break;
      case DateElement::WeekOfYear:
        AppendPadded(text, (DayOfYear(v.year, v.month, v.day) - 1) / 7 + 1, 2, fill);
        break;
      case DateElement::WeekOfMonth: AppendPadded(text, (v.day - 1) / 7 + 1, 1, fill); break;
      case DateElement::DayOfYear:
        AppendPadded(text, DayOfYear(v.year, v.month, v.day), 3, fill);
        break;
      case DateElement::Julian: AppendPadded(text, JulianDay(v.year, v.month, v.day), 7, fill); break;
      case DateElement::WeekDay: AppendPadded(text, WeekDay(v.year, v.month, v.day), 1, fill); break;
      case DateElement::DayAbbr:
        text += ApplyCase(t.text, std::string_view(kDayNames[WeekDay(v.year, v.month, v.day) - 1], 3));
        break;
      case DateElement::DayName:
        AppendName(text, t.text, kDayNames[WeekDay(v.year, v.month, v.day) - 1], kLongestDayName,
                   fill);
        break;
      case DateElement::SecondsOfDay:
        AppendPadded(text, v.hour * 3600L + v.minute * 60L + v.second, 5, fill);
        break;
      case DateElement::Radix: text.push_back('.'); break;
      case DateElement::Year2:
      case DateElement::RoundYear2: AppendPadded(text, abs_year % 100, 2, fill); break;
      case DateElement::Month: AppendPadded(text, v.month, 2, fill); break;
      case DateElement::MonthAbbr:
        if (v.month < 1 || v.month > 12) return kOraBadMonth;
        text += ApplyCase(t.text, std::string_view(kMonthNames[v.month - 1], 3));
        break;
      case DateElement::MonthName:
        if (v.month < 1 || v.month > 12) return kOraBadMonth;
        AppendName(text, t.text, kMonthNames[v.month - 1], kLongestMonthName, fill);
        break;
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
    if (t.ordinal) {
      if (int ora = AppendOrdinal(text, begin, t.text)) return ora;
    }
  }
  return 0;
}

const char* DateErrorText(int ora) {
  switch (ora) {
    case kOraFormatTwice: return "format code appears twice";
    case kOraJulianPrecludesDayOfYear: return "Julian date precludes use of day of year";
    case kOraYearTwice: return "year may only be specified once";
    case kOraHourTwice: return "hour may only be specified once";
    case kOraMeridianStyles: return "AM/PM conflicts with use of A.M./P.M.";
    case kOraEraStyles: return "BC/AD conflicts with use of B.C./A.D.";
    case kOraMonthTwice: return "month may only be specified once";
    case kOraWeekDayTwice: return "day of week may only be specified once";
    case kOraHour24Meridian: return "'HH24' precludes use of meridian indicator";
    case kOraSignedYearEra: return "signed year precludes use of BC/AD";
    case kOraOutputOnlyElement: return "format code cannot appear in date input format";
    case kOraDateFormatNotRecognized: return "date format not recognized";
    case kOraYearConflictsJulian: return "year conflicts with Julian date";
    case kOraMonthConflictsJulian: return "month conflicts with Julian date";
    case kOraDayConflictsJulian: return "day of month conflicts with Julian date";
    case kOraWeekDayConflicts: return "day of week conflicts with Julian date";
    case kOraHourConflictsSeconds: return "hour conflicts with seconds in day";
    case kOraMinuteConflictsSeconds: return "minutes of hour conflicts with seconds in day";
    case kOraSecondConflictsSeconds: return "seconds of minute conflicts with seconds in day";
    case kOraInputTooLong: return "date format picture ends before converting entire input string";
    case kOraDayNotValidForMonth: return "date not valid for month specified";
    case kOraInputTooShort: return "input value not long enough for date format";
    case kOraBadYear: return "(full) year must be between -4713 and +9999, and not be 0";
    case kOraBadMonth: return "not a valid month";
    case kOraBadWeekDay: return "not a valid day of the week";
    case kOraBadDay: return "day of month must be between 1 and last day of month";
    case kOraBadDayOfYear: return "day of year must be between 1 and 365 (366 for leap year)";
    case kOraBadHour12: return "hour must be between 1 and 12";
    case kOraBadHour: return "hour must be between 0 and 23";
    case kOraBadMinute: return "minutes must be between 0 and 59";
    case kOraBadSecond: return "seconds must be between 0 and 59";
    case kOraBadSecondsOfDay: return "seconds in day must be between 0 and 86399";
    case kOraBadJulian: return "julian date must be between 1 and 5373484";
    case kOraMeridianRequired: return "AM/A.M. or PM/P.M. required";
    case kOraEraRequired: return "BC/B.C. or AD/A.D. required";
    case kOraBadZone: return "not a valid time zone";
    case kOraNonNumeric: return "a non-numeric character was found where a numeric was expected";
    case kOraLiteralMismatch: return "literal does not match format string";
    case kOraDigitCount: return "the numeric value does not match the length of the format item";
    case kOraZoneHour: return "time zone hour must be between -15 and 15";
    case kOraZoneMinute: return "time zone minute must be between -59 and 59";
    case 1867: return "the interval is invalid";
    case 1870: return "the intervals or datetimes are not mutually comparable";
    case 1873: return "the leading precision of the interval is too small";
    case kOraTextTooLong: return "string is too long for internal buffer";
    case 1878: return "specified field not found in datetime or interval";
    case kOraBadFraction: return "the fractional seconds must be between 0 and 999999999";
    case 1882: return "timezone region not found";
    case 30086: return "interval year-month result not allowed for datetime subtraction";
    case 30088: return "datetime/interval precision is out of range";
    default: return "conversion error";
  }
}

}  // namespace ocimem::values
