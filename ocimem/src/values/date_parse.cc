// Date and time text read under a mask, with Oracle's leniency and errors.
#include "date_format.h"

#include <initializer_list>

#include "date_fields.h"
#include "date_fixed.h"
#include "date_resolve.h"
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
    case DateElement::WeekDay: return 1;
    case DateElement::DayOfYear: return 3;
    case DateElement::SecondsOfDay: return 5;
    case DateElement::Julian: return 7;
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

// Where the reader stands in the mask: the modifiers in force and what the
// leniency rules need to know about the element before.
struct State {
  bool fill = false;   // FM
  bool exact = false;  // FX
  bool previous_full = true;
  bool need_full = false;
};

// A run of mask punctuation or quoted text. Without FX, any character that
// is neither letter nor digit stands for any punctuation mark, blanks are
// free, and the punctuation may be left out between numbers written with
// all their digits. With FX the text must be there as written.
int ReadLiteral(const std::vector<DateToken>& tokens, std::size_t* i, Reader* r, State* st) {
  const std::string_view text = r->text;
  std::string run = tokens[*i].text;
  while (*i + 1 < tokens.size() && tokens[*i + 1].element == DateElement::Literal) {
    run += tokens[++*i].text;
  }
  if (r->AtEnd()) return st->exact ? kOraInputTooShort : 0;
  bool has_word = false;
  for (char ch : run) has_word = has_word || IsAlnum(ch);
  if (has_word || st->exact) {
    if (!MatchFold(text, r->pos, run)) return kOraLiteralMismatch;
    r->pos += run.size();
    return 0;
  }
  if (NextIsFraction(tokens, *i)) {
    // The point belongs to the fraction: without fraction digits it
    // stays for the punctuation after FF.
    std::size_t end = r->pos;
    while (end < text.size() && !IsAlnum(text[end])) ++end;
    if (end >= text.size() || !IsDigit(text[end])) return 0;
  }
  const bool keep_sign = NextIsSigned(tokens, *i);
  std::size_t consumed = 0;
  std::size_t marks = 0;  // punctuation read, blanks aside: one per mask character
  while (!r->AtEnd() && !IsAlnum(r->Peek()) &&
         !(keep_sign && (r->Peek() == '+' || r->Peek() == '-'))) {
    if (r->Peek() != ' ') {
      if (marks == run.size()) break;
      ++marks;
    }
    ++r->pos;
    ++consumed;
  }
  if (consumed == 0 && !r->AtEnd()) {
    if (IsAlpha(r->Peek())) return kOraLiteralMismatch;
    if (IsDigit(r->Peek())) {
      if (!st->previous_full || !NextIsNumeric(tokens, *i)) return kOraLiteralMismatch;
      st->need_full = true;
    }
  }
  return 0;
}

// Reads one of `words` (the element's own style only under FX).
bool ReadWord(Reader* r, const DateToken& t, const State& st,
              std::initializer_list<const char*> words, const char** found) {
  for (const char* w : words) {
    if (st.exact && std::string_view(w).size() != t.text.size()) continue;
    if (MatchFold(r->text, r->pos, w)) {
      r->pos += std::string_view(w).size();
      *found = w;
      return true;
    }
  }
  return false;
}

// MON, MONTH, DY, DAY. Without FX a name reads whole or abbreviated; with FX
// only as the element writes it, padded unless in fill mode.
int ReadNameElement(Reader* r, const DateToken& t, const State& st, int* index) {
  const bool month = t.element == DateElement::MonthAbbr || t.element == DateElement::MonthName ||
                     t.element == DateElement::Month;
  const bool whole = t.element == DateElement::MonthName || t.element == DateElement::DayName;
  const int bad = month ? kOraBadMonth : kOraBadWeekDay;
  if (!IsAlpha(r->Peek())) return bad;
  const char* const* names = month ? kMonthNames : kDayNames;
  const int count = month ? 12 : 7;
  const std::size_t begin = r->pos;
  *index = ReadName(r->text, &r->pos, names, count, !st.exact || whole, !st.exact || !whole);
  if (*index < 0) return bad;
  if (st.exact && whole && !st.fill) {
    const std::size_t width = month ? kLongestMonthName : kLongestDayName;
    while (r->pos - begin < width) {
      if (r->AtEnd() || r->Peek() != ' ') return kOraLiteralMismatch;
      ++r->pos;
    }
  }
  return 0;
}

// Numeric elements: the digits, range-checked into `p`.
int ReadNumber(const std::vector<DateToken>& tokens, std::size_t i, Reader* r, State* st,
               const DateParseOptions& options, ParsedFields* p, ZoneInput* z) {
  const DateToken& t = tokens[i];
  const std::string_view text = r->text;
  if (!IsDigit(r->Peek())) {
    if (t.element == DateElement::Month && IsAlpha(r->Peek()) && !st->exact) {
      int index = 0;
      if (int rc = ReadNameElement(r, t, *st, &index)) return rc;
      p->month = index + 1;
      st->previous_full = true;
      st->need_full = false;
      return 0;
    }
    const bool signed_year =
        t.element == DateElement::SignedYear4 && (r->Peek() == '-' || r->Peek() == '+');
    if (!signed_year) return kOraNonNumeric;
  }
  bool negative = false;
  if (t.element == DateElement::SignedYear4 && (r->Peek() == '-' || r->Peek() == '+')) {
    negative = text[r->pos++] == '-';
  }
  const int full_width = Width(t.element);
  int width = Width(t.element);
  if ((t.element == DateElement::Year2 || t.element == DateElement::RoundYear2) &&
      !NextIsNumeric(tokens, i) && !st->exact) {
    width = 4;  // YY and RR also take a full year
  }
  const std::size_t begin = r->pos;
  while (!r->AtEnd() && IsAlnum(r->Peek()) && r->pos - begin < static_cast<std::size_t>(width)) {
    ++r->pos;
  }
  std::int64_t v = 0;
  for (std::size_t k = begin; k < r->pos; ++k) {
    if (!IsDigit(text[k])) return kOraNonNumeric;
    v = v * 10 + (text[k] - '0');
  }
  const int count = static_cast<int>(r->pos - begin);
  if (count == 0) return kOraNonNumeric;
  if (st->exact && !st->fill && count != full_width) return kOraDigitCount;
  if (st->need_full && count < full_width) return kOraLiteralMismatch;
  st->need_full = false;
  st->previous_full = count >= full_width;
  switch (t.element) {
    case DateElement::Year4:
    case DateElement::SignedYear4:
      if (v == 0) return kOraBadYear;
      p->year = static_cast<int>(negative ? -v : v);
      break;
    case DateElement::Year2:
      p->year = count > 2 ? static_cast<int>(v)
                          : options.current_year / 100 * 100 + static_cast<int>(v);
      if (p->year == 0) return kOraBadYear;
      break;
    case DateElement::RoundYear2:
    case DateElement::RoundYear4: {
      // RRRR given two digits reads them as RR does.
      if (count > 2) {
        p->year = static_cast<int>(v);
        if (p->year == 0) return kOraBadYear;
        break;
      }
      const int century = options.current_year / 100 * 100;
      const int current = options.current_year % 100;
      p->year = century + static_cast<int>(v);
      if (current < 50 && v >= 50) p->year -= 100;
      if (current >= 50 && v < 50) p->year += 100;
      break;
    }
    case DateElement::Month:
      if (v < 1 || v > 12) return kOraBadMonth;
      p->month = static_cast<int>(v);
      break;
    case DateElement::Day:
      if (v < 1 || v > 31) return kOraBadDay;
      p->day = static_cast<int>(v);
      break;
    case DateElement::Hour24:
      if (v > 23) return kOraBadHour;
      p->hour = static_cast<int>(v);
      break;
    case DateElement::Hour12:
      if (v < 1 || v > 12) return kOraBadHour12;
      p->hour = static_cast<int>(v);
      p->twelve_hour = true;
      break;
    case DateElement::Minute:
      if (v > 59) return kOraBadMinute;
      p->minute = static_cast<int>(v);
      break;
    case DateElement::Second:
      if (v > 59) return kOraBadSecond;
      p->second = static_cast<int>(v);
      break;
    case DateElement::WeekDay:
      if (v < 1 || v > 7) return kOraBadWeekDay;
      p->week_day = static_cast<int>(v);
      break;
    case DateElement::DayOfYear:
      if (v < 1 || v > 366) return kOraBadDayOfYear;
      p->day_of_year = static_cast<int>(v);
      break;
    case DateElement::Julian:
      if (v < 1 || v > kMaxJulian) return kOraBadJulian;
      p->julian = v;
      break;
    case DateElement::SecondsOfDay:
      if (v > 86399) return kOraBadSecondsOfDay;
      p->seconds_of_day = static_cast<int>(v);
      break;
    case DateElement::ZoneMinute: {
      if (v > 59) return kOraZoneMinute;
      z->present = true;
      const int h = z->offset_minutes / 60;
      const bool neg = z->offset_minutes < 0;
      z->offset_minutes = (neg ? -1 : 1) * ((neg ? -h : h) * 60 + static_cast<int>(v));
      break;
    }
    default:
      break;
  }
  return 0;
}

// FF and FF1..FF9: up to nine digits, right-padded with zeros. Without FX
// the fraction may be left out; with FX, FFn needs its n digits.
int ReadFraction(const DateToken& t, Reader* r, const State& st, ParsedFields* p) {
  if (!IsDigit(r->Peek())) return st.exact ? kOraNonNumeric : 0;
  int count = 0;
  std::uint32_t v = 0;
  while (!r->AtEnd() && IsDigit(r->Peek()) && count < 9) {
    v = v * 10 + static_cast<std::uint32_t>(r->text[r->pos++] - '0');
    ++count;
  }
  if (!r->AtEnd() && IsDigit(r->Peek())) return kOraBadFraction;
  if (st.exact && t.digits != 0 && count != t.digits) return kOraDigitCount;
  for (int k = count; k < 9; ++k) v *= 10;
  p->nanos = v;
  return 0;
}

// The zone elements TZR, TZD and TZH.
int ReadZone(const DateToken& t, Reader* r, ZoneInput* z) {
  const std::string_view text = r->text;
  switch (t.element) {
    case DateElement::ZoneRegion: {
      z->present = true;
      if (r->Peek() == '+' || r->Peek() == '-' || IsDigit(r->Peek())) {
        return ReadOffset(r, &z->offset_minutes);
      }
      if (!IsAlpha(r->Peek())) return kOraBadZone;
      const std::size_t begin = r->pos;
      while (!r->AtEnd() && (IsAlnum(r->Peek()) || r->Peek() == '/' || r->Peek() == '_' ||
                             r->Peek() == '+' || r->Peek() == '-')) {
        ++r->pos;
      }
      z->is_region = true;
      z->region = std::string(text.substr(begin, r->pos - begin));
      return 0;
    }
    case DateElement::ZoneAbbr: {
      // Letters (`PST`), or the numeric form some regions use (`+04`,
      // `-0330`), which TZD also writes.
      const std::size_t begin = r->pos;
      if (r->Peek() == '+' || r->Peek() == '-') {
        ++r->pos;
        while (!r->AtEnd() && IsDigit(r->Peek()) && r->pos - begin <= 4) ++r->pos;
        if (r->pos - begin == 1) r->pos = begin;  // a lone sign is not one
      } else {
        while (!r->AtEnd() && IsAlpha(r->Peek())) ++r->pos;
      }
      z->abbreviation = std::string(text.substr(begin, r->pos - begin));
      return 0;
    }
    default: {  // TZH
      bool negative = false;
      if (r->Peek() == '+' || r->Peek() == '-') negative = text[r->pos++] == '-';
      int h = 0;
      int count = 0;
      while (!r->AtEnd() && IsDigit(r->Peek()) && count < 2) {
        h = h * 10 + (text[r->pos++] - '0');
        ++count;
      }
      if (count == 0) return kOraNonNumeric;
      if (h > 15) return kOraZoneHour;
      z->present = true;
      const int minutes_part = z->offset_minutes < 0 ? -z->offset_minutes : z->offset_minutes;
      z->offset_minutes = (negative ? -1 : 1) * (h * 60 + minutes_part % 60);
      return 0;
    }
  }
}

// One element at the reader (which is not at the end of the text).
int ReadElement(const std::vector<DateToken>& tokens, std::size_t i, Reader* r, State* st,
                const DateParseOptions& options, ParsedFields* p, ZoneInput* z) {
  const DateToken& t = tokens[i];
  const char* word = nullptr;
  switch (t.element) {
    case DateElement::MonthAbbr:
    case DateElement::MonthName: {
      int index = 0;
      if (int rc = ReadNameElement(r, t, *st, &index)) return rc;
      p->month = index + 1;
      st->previous_full = true;
      return 0;
    }
    case DateElement::DayAbbr:
    case DateElement::DayName: {
      int index = 0;
      if (int rc = ReadNameElement(r, t, *st, &index)) return rc;
      p->week_day = index + 1;
      st->previous_full = true;
      return 0;
    }
    case DateElement::Meridian:
      if (!ReadWord(r, t, *st, {"A.M.", "P.M.", "AM", "PM"}, &word)) return kOraMeridianRequired;
      p->pm = Upper(word[0]) == 'P';
      return 0;
    case DateElement::Era:
      if (!ReadWord(r, t, *st, {"A.D.", "B.C.", "AD", "BC"}, &word)) return kOraEraRequired;
      p->bc = Upper(word[0]) == 'B';
      return 0;
    case DateElement::Radix:
      if (r->Peek() == '.') {
        ++r->pos;
      } else if (st->exact) {
        return kOraLiteralMismatch;
      }
      return 0;
    case DateElement::ZoneRegion:
    case DateElement::ZoneAbbr:
    case DateElement::ZoneHour:
      return ReadZone(t, r, z);
    case DateElement::Fraction:
      return ReadFraction(t, r, *st, p);
    default:
      return ReadNumber(tokens, i, r, st, options, p, z);
  }
}

}  // namespace

int ParseDateTime(std::string_view text, const DateMask& mask, const DateParseOptions& options,
                  DateTimeFields* value, ZoneInput* zone) {
  if (int rc = mask.input_error[(options.allow_fraction ? 1 : 0) | (options.allow_zone ? 2 : 0)]) {
    return rc;
  }
  if (mask.fixed && ParseFixed(text, mask, value)) {
    if (zone != nullptr) *zone = ZoneInput();
    return 0;
  }
  Reader r{text, 0};
  if (!mask.exact_from_start) {
    while (!r.AtEnd() && r.Peek() == ' ') ++r.pos;
  }
  ParsedFields p;
  for (int g = 0; g < kGroups; ++g) p.has[g] = (mask.fields >> g & 1U) != 0;
  ZoneInput z;
  State st;
  bool ended = false;
  const auto& tokens = mask.tokens;
  for (std::size_t i = 0; i < tokens.size() && !ended; ++i) {
    const DateToken& t = tokens[i];
    if (t.element == DateElement::FillMode) {
      st.fill = !st.fill;
      continue;
    }
    if (t.element == DateElement::Exact) {
      st.exact = !st.exact;
      continue;
    }
    if (t.element == DateElement::Literal) {
      if (int rc = ReadLiteral(tokens, &i, &r, &st)) return rc;
      continue;
    }
    if (r.AtEnd()) {
      // Trailing fields may be left out, but not under FX.
      if (st.exact) return kOraInputTooShort;
      ended = true;
      break;
    }
    if (int rc = ReadElement(tokens, i, &r, &st, options, &p, &z)) return rc;
    p.filled[static_cast<int>(GroupOf(t.element))] = true;
  }
  for (Group g : {Group::Year, Group::Month, Group::Day, Group::Julian, Group::DayOfYear}) {
    if (p.Has(g) && !p.Filled(g)) return kOraInputTooShort;
  }
  if (!ended && !r.AtEnd()) return kOraInputTooLong;
  DateTimeFields v;
  if (int rc = ResolveParsed(p, options, &v)) return rc;
  *value = v;
  if (zone != nullptr) *zone = z;
  return 0;
}

}  // namespace ocimem::values
