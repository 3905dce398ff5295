// Datetime masks split into elements, and the checks Oracle makes of a mask
// before it reads any text with it.
#include "date_format.h"
#include "date_fixed.h"
#include "date_text.h"

namespace ocimem::values {
using namespace date_text;  // NOLINT(build/namespaces)
namespace {

struct ElementName {
  const char* name;
  DateElement element;
  int digits;
};

// Longest names first so that a prefix never hides a longer element.
const ElementName kElements[] = {
    {"SYYYY", DateElement::SignedYear4, 0},  {"SYEAR", DateElement::SignedYearSpelled, 0},
    {"SSSSS", DateElement::SecondsOfDay, 0}, {"SCC", DateElement::SignedCentury, 0},
    {"YYYY", DateElement::Year4, 0},         {"YEAR", DateElement::YearSpelled, 0},
    {"RRRR", DateElement::RoundYear4, 0},    {"RR", DateElement::RoundYear2, 0},
    {"YY", DateElement::Year2, 0},           {"MONTH", DateElement::MonthName, 0},
    {"MON", DateElement::MonthAbbr, 0},      {"MM", DateElement::Month, 0},
    {"MI", DateElement::Minute, 0},          {"DDD", DateElement::DayOfYear, 0},
    {"DD", DateElement::Day, 0},             {"DAY", DateElement::DayName, 0},
    {"DY", DateElement::DayAbbr, 0},         {"D", DateElement::WeekDay, 0},
    {"HH24", DateElement::Hour24, 0},        {"HH12", DateElement::Hour12, 0},
    {"HH", DateElement::Hour12, 0},          {"SS", DateElement::Second, 0},
    {"FF1", DateElement::Fraction, 1},       {"FF2", DateElement::Fraction, 2},
    {"FF3", DateElement::Fraction, 3},       {"FF4", DateElement::Fraction, 4},
    {"FF5", DateElement::Fraction, 5},       {"FF6", DateElement::Fraction, 6},
    {"FF7", DateElement::Fraction, 7},       {"FF8", DateElement::Fraction, 8},
    {"FF9", DateElement::Fraction, 9},       {"FF", DateElement::Fraction, 0},
    {"TZR", DateElement::ZoneRegion, 0},     {"TZD", DateElement::ZoneAbbr, 0},
    {"TZH", DateElement::ZoneHour, 0},       {"TZM", DateElement::ZoneMinute, 0},
    {"A.M.", DateElement::Meridian, 0},      {"P.M.", DateElement::Meridian, 0},
    {"AM", DateElement::Meridian, 0},        {"PM", DateElement::Meridian, 0},
    {"A.D.", DateElement::Era, 0},           {"B.C.", DateElement::Era, 0},
    {"AD", DateElement::Era, 0},             {"BC", DateElement::Era, 0},
    {"FM", DateElement::FillMode, 0},        {"FX", DateElement::Exact, 0},
    {"CC", DateElement::Century, 0},         {"IYYY", DateElement::IsoYear, 4},
    {"IYY", DateElement::IsoYear, 3},        {"IW", DateElement::IsoWeek, 0},
    {"IY", DateElement::IsoYear, 2},         {"I", DateElement::IsoYear, 1},
    {"J", DateElement::Julian, 0},           {"Q", DateElement::Quarter, 0},
    {"WW", DateElement::WeekOfYear, 0},      {"W", DateElement::WeekOfMonth, 0},
    {"X", DateElement::Radix, 0},
};

bool IsZoneElement(DateElement e) {
  return e == DateElement::ZoneRegion || e == DateElement::ZoneAbbr ||
         e == DateElement::ZoneHour || e == DateElement::ZoneMinute;
}

// AM and A.M. (AD and A.D.) are two styles of one element.
bool Dotted(const DateToken& t) { return t.text.size() == 4; }

bool Has(std::uint32_t fields, Group g) { return (fields >> static_cast<int>(g) & 1U) != 0; }

// Input masks may name each field once, and only fields that TO_DATE reads.
int CheckInputMask(const DateMask& mask, const DateParseOptions& options) {
  const DateToken* seen[kGroups] = {};
  bool hour24 = false;
  bool signed_year = false;
  bool day_of_month = false;
  for (const DateToken& t : mask.tokens) {
    // Oracle documents the suffixes as valid only for output.
    if (t.ordinal) return kOraOutputOnlyElement;
    if (t.element == DateElement::Fraction && !options.allow_fraction) {
      return kOraDateFormatNotRecognized;
    }
    if (IsZoneElement(t.element) && !options.allow_zone) return kOraDateFormatNotRecognized;
    if (IsOutputOnly(t.element)) return kOraOutputOnlyElement;
    hour24 = hour24 || t.element == DateElement::Hour24;
    signed_year = signed_year || t.element == DateElement::SignedYear4;
    day_of_month = day_of_month || t.element == DateElement::Day;
    const Group g = GroupOf(t.element);
    if (g == Group::None) continue;
    const DateToken*& slot = seen[static_cast<int>(g)];
    if (slot != nullptr) {
      if (g == Group::Meridian && Dotted(*slot) != Dotted(t)) return kOraMeridianStyles;
      if (g == Group::Era && Dotted(*slot) != Dotted(t)) return kOraEraStyles;
      if (slot->element == t.element) return kOraFormatTwice;
      if (g == Group::Year) return kOraYearTwice;
      if (g == Group::Hour) return kOraHourTwice;
      if (g == Group::Month) return kOraMonthTwice;
      if (g == Group::WeekDay) return kOraWeekDayTwice;
      return kOraFormatTwice;
    }
    slot = &t;
  }
  const std::uint32_t f = mask.fields;
  if (hour24 && Has(f, Group::Meridian)) return kOraHour24Meridian;
  if (signed_year && Has(f, Group::Era)) return kOraSignedYearEra;
  if (Has(f, Group::Julian) && Has(f, Group::DayOfYear)) return kOraJulianPrecludesDayOfYear;
  // A day of the year names the month and the day once more (decision in
  // docs/ocimem.md).
  if (Has(f, Group::DayOfYear) && Has(f, Group::Month)) return kOraMonthTwice;
  if (Has(f, Group::DayOfYear) && day_of_month) return kOraFormatTwice;
  return 0;
}

}  // namespace

int ParseDateMask(std::string_view mask, DateMask* out) {
  DateMask result;
  std::size_t pos = 0;
  while (pos < mask.size()) {
    const char c = mask[pos];
    if (c == '"') {
      const std::size_t close = mask.find('"', pos + 1);
      if (close == std::string_view::npos) return kOraDateFormatNotRecognized;
      result.tokens.push_back({DateElement::Literal,
                               std::string(mask.substr(pos + 1, close - pos - 1)), 0, false});
      pos = close + 1;
      continue;
    }
    bool matched = false;
    for (const ElementName& e : kElements) {
      if (MatchFold(mask, pos, e.name)) {
        const std::size_t len = std::string_view(e.name).size();
        pos += len;
        // TH after a number asks for its English ordinal (Oracle's datetime suffix).
        const bool ordinal = TakesOrdinal(e.element) && MatchFold(mask, pos, "TH");
        result.tokens.push_back({e.element, std::string(mask.substr(pos - len, len)), e.digits,
                                 ordinal});
        if (ordinal) pos += 2;
        matched = true;
        break;
      }
    }
    if (matched) continue;
    if (IsAlnum(c)) return kOraDateFormatNotRecognized;
    result.tokens.push_back({DateElement::Literal, std::string(1, c), 0, false});
    ++pos;
  }
  bool has_year = false;
  bool has_month = false;
  for (const DateToken& t : result.tokens) {
    const Group g = GroupOf(t.element);
    result.fields |= 1U << static_cast<int>(g);
    has_year = has_year || g == Group::Year;
    has_month = has_month || g == Group::Month;
    if (t.element == DateElement::Year2 || t.element == DateElement::RoundYear2) {
      result.needs_clock = true;
    }
  }
  for (const DateToken& t : result.tokens) {
    if (t.element == DateElement::Exact) {
      result.exact_from_start = !result.exact_from_start;
    } else if (t.element != DateElement::FillMode) {
      break;
    }
  }
  for (int k = 0; k < 4; ++k) {
    DateParseOptions options;
    options.allow_fraction = (k & 1) != 0;
    options.allow_zone = (k & 2) != 0;
    result.input_error[k] = CheckInputMask(result, options);
  }
  if (!has_year || !has_month) result.needs_clock = true;
  result.fixed = IsFixedMask(result);
  *out = std::move(result);
  return 0;
}

}  // namespace ocimem::values
