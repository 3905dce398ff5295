// Pieces of date and time text shared by the formatting and the parsing
// of values: ASCII character classes, month names and how mask elements
// group into fields.
#ifndef OCIMEM_VALUES_DATE_TEXT_H
#define OCIMEM_VALUES_DATE_TEXT_H

#include <cstddef>
#include <string_view>

#include "date_format.h"

namespace ocimem::values::date_text {

inline const char* const kMonthNames[] = {"JANUARY", "FEBRUARY", "MARCH",     "APRIL",
                                   "MAY",     "JUNE",     "JULY",      "AUGUST",
                                   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
inline constexpr std::size_t kLongestMonthName = 9;

// Sunday first: D is 1 on a Sunday in territory AMERICA.
inline const char* const kDayNames[] = {"SUNDAY",   "MONDAY", "TUESDAY", "WEDNESDAY",
                                        "THURSDAY", "FRIDAY", "SATURDAY"};
inline constexpr std::size_t kLongestDayName = 9;

// ASCII only, whatever C locale the host has set: masks and month names are
// AMERICAN, and a locale's own letters (or its case rules: the Turkish
// dotless i) must not change how a mask reads.
inline bool IsAlpha(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
inline bool IsAlnum(char c) { return IsAlpha(c) || IsDigit(c); }
inline char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
inline char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
inline bool IsLower(char c) { return c >= 'a' && c <= 'z'; }

inline bool MatchFold(std::string_view s, std::size_t pos, std::string_view word) {
  if (s.size() < pos || s.size() - pos < word.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (Upper(s[pos + i]) != Upper(word[i])) return false;
  }
  return true;
}

inline bool IsNumericElement(DateElement e) {
  switch (e) {
    case DateElement::Year4: case DateElement::SignedYear4: case DateElement::Year2:
    case DateElement::RoundYear2: case DateElement::RoundYear4: case DateElement::Month:
    case DateElement::Day: case DateElement::Hour24: case DateElement::Hour12:
    case DateElement::Minute: case DateElement::Second: case DateElement::Fraction:
    case DateElement::ZoneHour: case DateElement::ZoneMinute: case DateElement::WeekDay:
    case DateElement::DayOfYear: case DateElement::Julian: case DateElement::SecondsOfDay:
      return true;
    default:
      return false;
  }
}

// Numbers that TO_CHAR writes with an ordinal suffix (DDTH, YYYYth, CCth ...).
inline bool TakesOrdinal(DateElement e) {
  switch (e) {
    case DateElement::Fraction: case DateElement::ZoneHour: case DateElement::ZoneMinute:
      return false;
    case DateElement::Century: case DateElement::SignedCentury: case DateElement::Quarter:
    case DateElement::WeekOfYear: case DateElement::WeekOfMonth: case DateElement::IsoWeek:
    case DateElement::IsoYear:
      return true;
    default:
      return IsNumericElement(e);
  }
}

enum class Group { None, Year, Month, Day, Hour, Meridian, Minute, Second, Fraction, Region,
                   Abbr, ZoneHour, ZoneMinute, Era, WeekDay, DayOfYear, Julian, SecondsOfDay };
inline constexpr int kGroups = 32;  // room for every Group, one bit each in DateMask::fields

inline Group GroupOf(DateElement e) {
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
    case DateElement::Era: return Group::Era;
    case DateElement::WeekDay: case DateElement::DayAbbr: case DateElement::DayName:
      return Group::WeekDay;
    case DateElement::DayOfYear: return Group::DayOfYear;
    case DateElement::Julian: return Group::Julian;
    case DateElement::SecondsOfDay: return Group::SecondsOfDay;
    default: return Group::None;
  }
}

// Elements TO_CHAR writes but TO_DATE refuses.
inline bool IsOutputOnly(DateElement e) {
  switch (e) {
    case DateElement::Century: case DateElement::SignedCentury: case DateElement::YearSpelled:
    case DateElement::SignedYearSpelled: case DateElement::Quarter:
    case DateElement::WeekOfYear: case DateElement::WeekOfMonth: case DateElement::IsoWeek:
    case DateElement::IsoYear:
      return true;
    default:
      return false;
  }
}

// Reads a month name (full name or three-letter abbreviation), any case.
inline int ReadMonthName(std::string_view text, std::size_t* pos, int* month) {
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

// Reads one of `count` names: the whole name when `whole`, its first three
// letters when `abbreviated` (the whole name is tried first), any case.
// Returns the name's index, or -1 with *pos unchanged.
inline int ReadName(std::string_view text, std::size_t* pos, const char* const* names, int count,
                    bool whole, bool abbreviated) {
  if (whole) {
    for (int i = 0; i < count; ++i) {
      if (MatchFold(text, *pos, names[i])) {
        *pos += std::string_view(names[i]).size();
        return i;
      }
    }
  }
  if (abbreviated) {
    for (int i = 0; i < count; ++i) {
      if (MatchFold(text, *pos, std::string_view(names[i], 3))) {
        *pos += 3;
        return i;
      }
    }
  }
  return -1;
}

}  // namespace ocimem::values::date_text

#endif  // OCIMEM_VALUES_DATE_TEXT_H
