#include "date_format.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "calendar.h"

namespace ocimem::values {
namespace {

const char* const kMonthNames[] = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",
                                   "MAY",     "JUNE",     "JULY",      "AUGUST",
                                   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
constexpr std::size_t kLongestMonthName = 9;

std::atomic<int> g_pinned_year{0};
std::atomic<int> g_pinned_month{1};

// ASCII only, whatever C locale the host has set: masks and month names are
// AMERICAN, and a locale's own letters (or its case rules: the Turkish
// dotless i) must not change how a mask reads.
bool IsAlpha(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsAlnum(char c) { return IsAlpha(c) || IsDigit(c); }
char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool IsLower(char c) { return c >= 'a' && c <= 'z'; }

bool MatchFold(std::string_view s, std::size_t pos, std::string_view word) {
  if (s.size() < pos || s.size() - pos < word.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (Upper(s[pos + i]) != Upper(word[i])) return false;
  }
  return true;
}

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

bool IsNumericElement(DateElement e) {
  switch (e) {
    case DateElement::Year4: case DateElement::SignedYear4: case DateElement::Year2:
    case DateElement::RoundYear2: case DateElement::RoundYear4: case DateElement::Month:
    case DateElement::Day: case DateElement::Hour24: case DateElement::Hour12:
    case DateElement::Minute: case DateElement::Second: case DateElement::Fraction:
    case DateElement::ZoneHour: case DateElement::ZoneMinute:
      return true;
    default:
      return false;
  }
}

enum class Group { None, Year, Month, Day, Hour, Meridian, Minute, Second, Fraction, Region,
                   Abbr, ZoneHour, ZoneMinute };

Group GroupOf(DateElement e) {
  switch (e) {
    case DateElement::Year4: case DateElement::SignedYear4: case DateElement::Year2:
    case DateElement::RoundYear2: case DateElement::RoundYear4: return Group::Year;
    case DateElement::Month: case DateElement::MonthAbbr: case DateElement::MonthName:
      return Group::Month;
    case DateElement::Day: return Group::Day;
    case DateElement::Hour24: case DateElement::Hour12: return Group::Hour;
    case DateElement::Meridian: return Group::Meridian;
    case DateElement::Minute: return Group::Minute;
    case DateElement::Second: return Group::Second;
    case DateElement::Fraction: return Group::Fraction;
    case DateElement::ZoneRegion: return Group::Region;
    case DateElement::ZoneAbbr: return Group::Abbr;
    case DateElement::ZoneHour: return Group::ZoneHour;
    case DateElement::ZoneMinute: return Group::ZoneMinute;
    default: return Group::None;
  }
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

// Reads a month name (full name or three-letter abbreviation), any case.
int ReadMonthName(std::string_view text, std::size_t* pos, int* month) {
  for (int m = 0; m < 12; ++m) {
    if (MatchFold(text, *pos, kMonthNames[m])) {
      *pos += std::string_view(kMonthNames[m]).size();
      *month = m + 1;
      return 0;
    }
  }
  for (int m = 0; m < 12; ++m) {
    if (MatchFold(text, *pos, std::string_view(kMonthNames[m], 3))) {
      *pos += 3;
      *month = m + 1;
      return 0;
    }
  }
  return kOraBadMonth;
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

namespace {

struct Reader {
  std::string_view text;
  std::size_t pos = 0;
  bool AtEnd() const { return pos >= text.size(); }
  char Peek() const { return text[pos]; }
};

int Width(DateElement e) {
  switch (e) {
    case DateElement::Year4: case DateElement::SignedYear4: case DateElement::RoundYear4:
      return 4;
    case DateElement::Fraction: return 9;
    default: return 2;
  }
}

bool NextIsNumeric(const std::vector<DateToken>& tokens, std::size_t i) {
  for (std::size_t j = i + 1; j < tokens.size(); ++j) {
    const DateElement e = tokens[j].element;
    if (e == DateElement::FillMode || e == DateElement::Exact) continue;
    return IsNumericElement(e);
  }
  return false;
}

bool NextIsFraction(const std::vector<DateToken>& tokens, std::size_t i) {
  for (std::size_t j = i + 1; j < tokens.size(); ++j) {
    const DateElement e = tokens[j].element;
    if (e == DateElement::FillMode || e == DateElement::Exact) continue;
    return e == DateElement::Fraction;
  }
  return false;
}

// Whether a '+' or '-' ahead belongs to a signed element rather than to the
// punctuation (an optional fraction in between is looked through).
bool NextIsSigned(const std::vector<DateToken>& tokens, std::size_t i) {
  for (std::size_t j = i + 1; j < tokens.size(); ++j) {
    const DateElement e = tokens[j].element;
    if (e == DateElement::Literal || e == DateElement::FillMode || e == DateElement::Exact ||
        e == DateElement::Fraction) {
      continue;
    }
    return e == DateElement::ZoneRegion || e == DateElement::ZoneHour ||
           e == DateElement::ZoneAbbr || e == DateElement::SignedYear4;
  }
  return false;
}

// Reads "[+|-]h[h]:mm" at the reader.
int ReadOffset(Reader* r, int* minutes) {
  bool negative = false;
  if (!r->AtEnd() && (r->Peek() == '+' || r->Peek() == '-')) negative = r->text[r->pos++] == '-';
  int hours = 0;
  int count = 0;
  while (!r->AtEnd() && IsDigit(r->Peek()) && count < 2) {
    hours = hours * 10 + (r->text[r->pos++] - '0');
    ++count;
  }
  if (count == 0) return kOraBadZone;
  int mins = 0;
  if (!r->AtEnd() && r->Peek() == ':') {
    ++r->pos;
    count = 0;
    while (!r->AtEnd() && IsDigit(r->Peek()) && count < 2) {
      mins = mins * 10 + (r->text[r->pos++] - '0');
      ++count;
    }
    if (count == 0) return kOraZoneMinute;
  }
  if (hours > 15) return kOraZoneHour;
  if (mins > 59) return kOraZoneMinute;
  *minutes = (negative ? -1 : 1) * (hours * 60 + mins);
  return 0;
}

}  // namespace

int ParseDateTime(std::string_view text, const DateMask& mask, const DateParseOptions& options,
                  DateTimeFields* value, ZoneInput* zone) {
  if (int rc = mask.input_error[(options.allow_fraction ? 1 : 0) | (options.allow_zone ? 2 : 0)]) {
    return rc;
  }
  Reader r{text, 0};
  while (!r.AtEnd() && r.Peek() == ' ') ++r.pos;

  bool has[16] = {};
  bool filled[16] = {};
  for (int g = 0; g < 16; ++g) has[g] = (mask.fields >> g & 1U) != 0;

  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::uint32_t nanos = 0;
  bool pm = false;
  bool twelve_hour = false;
  ZoneInput z;
  bool previous_full = true;
  bool need_full = false;
  bool ended = false;

  const auto& tokens = mask.tokens;
  for (std::size_t i = 0; i < tokens.size() && !ended; ++i) {
    const DateToken& t = tokens[i];
    if (t.element == DateElement::FillMode || t.element == DateElement::Exact) continue;
    if (t.element == DateElement::Literal) {
      // A run of mask punctuation matches a run of input punctuation.
      std::string run = t.text;
      while (i + 1 < tokens.size() && tokens[i + 1].element == DateElement::Literal) {
        run += tokens[++i].text;
      }
      if (r.AtEnd()) continue;
      bool has_word = false;
      for (char ch : run) has_word = has_word || IsAlnum(ch);
      if (has_word) {
        if (!MatchFold(text, r.pos, run)) return kOraLiteralMismatch;
        r.pos += run.size();
        continue;
      }
      if (NextIsFraction(tokens, i)) {
        // The point belongs to the fraction: without fraction digits it
        // stays for the punctuation after FF.
        std::size_t end = r.pos;
        while (end < text.size() && !IsAlnum(text[end])) ++end;
        if (end >= text.size() || !IsDigit(text[end])) continue;
      }
      const bool keep_sign = NextIsSigned(tokens, i);
      std::size_t consumed = 0;
      while (!r.AtEnd() && !IsAlnum(r.Peek()) &&
             !(keep_sign && (r.Peek() == '+' || r.Peek() == '-'))) {
        ++r.pos;
        ++consumed;
      }
      if (consumed == 0 && !r.AtEnd()) {
        if (IsAlpha(r.Peek())) return kOraLiteralMismatch;
        if (IsDigit(r.Peek())) {
          if (!previous_full || !NextIsNumeric(tokens, i)) return kOraLiteralMismatch;
          need_full = true;
        }
      }
      continue;
    }
    if (r.AtEnd()) {
      ended = true;
      break;
    }
    const Group group = GroupOf(t.element);
    switch (t.element) {
      case DateElement::MonthAbbr:
      case DateElement::MonthName: {
        if (!IsAlpha(r.Peek())) return kOraBadMonth;
        if (int rc = ReadMonthName(text, &r.pos, &month)) return rc;
        previous_full = true;
        break;
      }
      case DateElement::Meridian: {
        const char* words[] = {"A.M.", "P.M.", "AM", "PM"};
        bool found = false;
        for (const char* w : words) {
          if (MatchFold(text, r.pos, w)) {
            pm = Upper(w[0]) == 'P';
            r.pos += std::string_view(w).size();
            found = true;
            break;
          }
        }
        if (!found) return kOraMeridianRequired;
        break;
      }
      case DateElement::ZoneRegion: {
        z.present = true;
        if (r.Peek() == '+' || r.Peek() == '-' || IsDigit(r.Peek())) {
          if (int rc = ReadOffset(&r, &z.offset_minutes)) return rc;
        } else if (IsAlpha(r.Peek())) {
          const std::size_t begin = r.pos;
          while (!r.AtEnd() && (IsAlnum(r.Peek()) || r.Peek() == '/' || r.Peek() == '_' ||
                                r.Peek() == '+' || r.Peek() == '-')) {
            ++r.pos;
          }
          z.is_region = true;
          z.region = std::string(text.substr(begin, r.pos - begin));
        } else {
          return kOraBadZone;
        }
        break;
      }
      case DateElement::ZoneAbbr: {
        // Letters (`PST`), or the numeric form some regions use (`+04`,
        // `-0330`), which TZD also writes.
        const std::size_t begin = r.pos;
        if (r.Peek() == '+' || r.Peek() == '-') {
          ++r.pos;
          while (!r.AtEnd() && IsDigit(r.Peek()) && r.pos - begin <= 4) ++r.pos;
          if (r.pos - begin == 1) r.pos = begin;  // a lone sign is not one
        } else {
          while (!r.AtEnd() && IsAlpha(r.Peek())) ++r.pos;
        }
        z.abbreviation = std::string(text.substr(begin, r.pos - begin));
        break;
      }
      case DateElement::ZoneHour: {
        bool negative = false;
        if (r.Peek() == '+' || r.Peek() == '-') negative = text[r.pos++] == '-';
        int h = 0;
        int count = 0;
        while (!r.AtEnd() && IsDigit(r.Peek()) && count < 2) {
          h = h * 10 + (text[r.pos++] - '0');
          ++count;
        }
        if (count == 0) return kOraNonNumeric;
        if (h > 15) return kOraZoneHour;
        z.present = true;
        const int minutes_part = z.offset_minutes < 0 ? -z.offset_minutes : z.offset_minutes;
        z.offset_minutes = (negative ? -1 : 1) * (h * 60 + minutes_part % 60);
        break;
      }
      case DateElement::Fraction: {
        if (!IsDigit(r.Peek())) break;  // the fraction may be left out
        int count = 0;
        std::uint32_t v = 0;
        while (!r.AtEnd() && IsDigit(r.Peek()) && count < 9) {
          v = v * 10 + static_cast<std::uint32_t>(text[r.pos++] - '0');
          ++count;
        }
        if (!r.AtEnd() && IsDigit(r.Peek())) return kOraBadFraction;
        for (int k = count; k < 9; ++k) v *= 10;
        nanos = v;
        break;
      }
      default: {
        // Numeric elements; MM falls back to a month name.
        if (!IsDigit(r.Peek())) {
          if (t.element == DateElement::Month && IsAlpha(r.Peek())) {
            if (int rc = ReadMonthName(text, &r.pos, &month)) return rc;
            previous_full = true;
            need_full = false;
            break;
          }
          const bool signed_year = t.element == DateElement::SignedYear4 &&
                                   (r.Peek() == '-' || r.Peek() == '+');
          if (!signed_year) return kOraNonNumeric;
        }
        bool negative = false;
        if (t.element == DateElement::SignedYear4 && (r.Peek() == '-' || r.Peek() == '+')) {
          negative = text[r.pos++] == '-';
        }
        int width = Width(t.element);
        if ((t.element == DateElement::Year2 || t.element == DateElement::RoundYear2) &&
            !NextIsNumeric(tokens, i)) {
          width = 4;  // YY and RR also take a full year
        }
        const std::size_t begin = r.pos;
        while (!r.AtEnd() && IsAlnum(r.Peek()) && r.pos - begin < static_cast<std::size_t>(width)) {
          ++r.pos;
        }
        long v = 0;
        for (std::size_t k = begin; k < r.pos; ++k) {
          if (!IsDigit(text[k])) return kOraNonNumeric;
          v = v * 10 + (text[k] - '0');
        }
        const int count = static_cast<int>(r.pos - begin);
        if (count == 0) return kOraNonNumeric;
        const int full_width = Width(t.element);
        if (need_full && count < full_width) return kOraLiteralMismatch;
        need_full = false;
        previous_full = count >= full_width;
        switch (t.element) {
          case DateElement::Year4:
          case DateElement::RoundYear4:
          case DateElement::SignedYear4:
            if (v == 0) return kOraBadYear;
            year = static_cast<int>(negative ? -v : v);
            break;
          case DateElement::Year2:
            year = count > 2 ? static_cast<int>(v)
                             : options.current_year / 100 * 100 + static_cast<int>(v);
            if (year == 0) return kOraBadYear;
            break;
          case DateElement::RoundYear2: {
            if (count > 2) {
              year = static_cast<int>(v);
              if (year == 0) return kOraBadYear;
              break;
            }
            const int century = options.current_year / 100 * 100;
            const int current = options.current_year % 100;
            year = century + static_cast<int>(v);
            if (current < 50 && v >= 50) year -= 100;
            if (current >= 50 && v < 50) year += 100;
            break;
          }
          case DateElement::Month:
            if (v < 1 || v > 12) return kOraBadMonth;
            month = static_cast<int>(v);
            break;
          case DateElement::Day:
            if (v < 1 || v > 31) return kOraBadDay;
            day = static_cast<int>(v);
            break;
          case DateElement::Hour24:
            if (v > 23) return kOraBadHour;
            hour = static_cast<int>(v);
            break;
          case DateElement::Hour12:
            if (v < 1 || v > 12) return kOraBadHour12;
            hour = static_cast<int>(v);
            twelve_hour = true;
            break;
          case DateElement::Minute:
            if (v > 59) return kOraBadMinute;
            minute = static_cast<int>(v);
            break;
          case DateElement::Second:
            if (v > 59) return kOraBadSecond;
            second = static_cast<int>(v);
            break;
          case DateElement::ZoneMinute: {
            if (v > 59) return kOraZoneMinute;
            z.present = true;
            const int h = z.offset_minutes / 60;
            const bool neg = z.offset_minutes < 0;
            z.offset_minutes = (neg ? -1 : 1) * ((neg ? -h : h) * 60 + static_cast<int>(v));
            break;
          }
          default:
            break;
        }
        break;
      }
    }
    filled[static_cast<int>(group)] = true;
  }
  for (Group g : {Group::Year, Group::Month, Group::Day}) {
    if (has[static_cast<int>(g)] && !filled[static_cast<int>(g)]) return kOraInputTooShort;
  }
  if (!ended && !r.AtEnd()) return kOraInputTooLong;

  if (!has[static_cast<int>(Group::Year)]) year = options.current_year;
  if (!has[static_cast<int>(Group::Month)]) month = options.current_month;
  if (!has[static_cast<int>(Group::Day)]) day = 1;
  if (twelve_hour) hour = hour % 12 + (pm ? 12 : 0);
  if (year < kMinYear || year > kMaxYear) return kOraBadYear;
  if (day > DaysInMonth(year, month)) return kOraDayNotValidForMonth;
  // The days dropped by the Gregorian reform read as its first day.
  if (IsMissingGregorianDay(year, month, day)) day = 15;

  value->year = year;
  value->month = month;
  value->day = day;
  value->hour = hour;
  value->minute = minute;
  value->second = second;
  value->nanos = nanos;
  if (zone != nullptr) *zone = z;
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
