// Date and time text read under a mask, with Oracle's leniency and errors.
#include "date_format.h"

#include <atomic>
#include <cstdlib>
#include <ctime>

#include "calendar.h"
#include "date_text.h"

namespace ocimem::values {
using namespace date_text;  // NOLINT(build/namespaces)

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

}  // namespace ocimem::values
