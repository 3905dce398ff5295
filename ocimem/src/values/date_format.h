// Datetime format models (TO_CHAR / TO_DATE style masks) shared by OCIDate
// and OCIDateTime text conversions, NLS language AMERICAN. Results are Oracle
// error numbers (0 = success).
#ifndef OCIMEM_VALUES_DATE_FORMAT_H
#define OCIMEM_VALUES_DATE_FORMAT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ocimem::values {

enum class DateElement {
  Literal,
  Year4,        // YYYY
  SignedYear4,  // SYYYY
  Year2,        // YY
  RoundYear2,   // RR
  RoundYear4,   // RRRR
  Month,        // MM
  MonthAbbr,    // MON
  MonthName,    // MONTH
  Day,          // DD
  Hour24,       // HH24
  Hour12,       // HH, HH12
  Meridian,     // AM, PM, A.M., P.M.
  Minute,       // MI
  Second,       // SS
  Fraction,     // FF, FF1..FF9
  ZoneRegion,   // TZR
  ZoneAbbr,     // TZD
  ZoneHour,     // TZH
  ZoneMinute,   // TZM
  FillMode,     // FM
  Exact,        // FX
  Radix,        // X
  WeekDay,      // D
  DayAbbr,      // DY
  DayName,      // DAY
  DayOfYear,    // DDD
  Julian,       // J
  Era,          // AD, BC, A.D., B.C.
  SecondsOfDay, // SSSSS
  // Output only (ORA-01820 in an input mask):
  Century,          // CC
  SignedCentury,    // SCC
  YearSpelled,      // YEAR
  SignedYearSpelled,  // SYEAR
  Quarter,          // Q
  WeekOfYear,       // WW
  WeekOfMonth,      // W
  IsoWeek,          // IW
  IsoYear,          // IYYY, IYY, IY, I (digits: 4..1)
};

struct DateToken {
  DateElement element = DateElement::Literal;
  std::string text;  // literal bytes, or the element as written (for its case)
  int digits = 0;    // FF1..FF9 (0 for FF); IYYY..I: 4..1
  bool ordinal = false;  // a number followed by TH: 1ST, 2nd ... (output only)
};

// Made by ParseDateMask, which also fills in the facts below so that they are
// not worked out again for every value read with the mask.
struct DateMask {
  std::vector<DateToken> tokens;
  // Reading with this mask takes the year or month from the clock: it has a
  // two-digit year, or no year or month element at all.
  bool needs_clock = false;
  std::uint32_t fields = 0;  // one bit per kind of field the mask names
  // The mask's fault as an input mask (0 when none), by
  // allow_fraction + 2 * allow_zone.
  int input_error[4] = {};
  // The mask asks for exact input (FX) before its first element: leading
  // blanks of the input are then not skipped.
  bool exact_from_start = false;
  // Only fixed-width numeric elements and punctuation (date_fixed.h): the common values
  // are written and read without the general machinery.
  bool fixed = false;
};

struct DateTimeFields {
  int year = 1;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::uint32_t nanos = 0;
};

// Zone of a value for output.
struct ZoneOutput {
  bool is_region = false;
  std::string region;        // printed in upper case
  int offset_minutes = 0;
  std::string abbreviation;  // TZD; empty for a plain offset
};

// Zone as read from text, not yet resolved.
struct ZoneInput {
  bool present = false;
  bool is_region = false;
  int offset_minutes = 0;
  std::string region;
  std::string abbreviation;
};

struct DateParseOptions {
  bool allow_fraction = false;
  bool allow_zone = false;
  int current_year = 2000;   // for YY, RR and a year missing from the mask
  int current_month = 1;
};

constexpr int kOraFormatTwice = 1810;
constexpr int kOraJulianPrecludesDayOfYear = 1811;
constexpr int kOraYearTwice = 1812;
constexpr int kOraHourTwice = 1813;
constexpr int kOraMeridianStyles = 1814;
constexpr int kOraEraStyles = 1815;
constexpr int kOraMonthTwice = 1816;
constexpr int kOraWeekDayTwice = 1817;
constexpr int kOraHour24Meridian = 1818;
constexpr int kOraSignedYearEra = 1819;
constexpr int kOraOutputOnlyElement = 1820;
constexpr int kOraDateFormatNotRecognized = 1821;
constexpr int kOraYearConflictsJulian = 1831;
constexpr int kOraMonthConflictsJulian = 1833;
constexpr int kOraDayConflictsJulian = 1834;
constexpr int kOraWeekDayConflicts = 1835;
constexpr int kOraHourConflictsSeconds = 1836;
constexpr int kOraMinuteConflictsSeconds = 1837;
constexpr int kOraSecondConflictsSeconds = 1838;
constexpr int kOraInputTooLong = 1830;
constexpr int kOraDayNotValidForMonth = 1839;
constexpr int kOraInputTooShort = 1840;
constexpr int kOraBadYear = 1841;
constexpr int kOraBadMonth = 1843;
constexpr int kOraBadWeekDay = 1846;
constexpr int kOraBadDay = 1847;
constexpr int kOraBadDayOfYear = 1848;
constexpr int kOraBadHour12 = 1849;
constexpr int kOraBadHour = 1850;
constexpr int kOraBadMinute = 1851;
constexpr int kOraBadSecond = 1852;
constexpr int kOraBadSecondsOfDay = 1853;
constexpr int kOraBadJulian = 1854;
constexpr int kOraMeridianRequired = 1855;
constexpr int kOraEraRequired = 1856;
constexpr int kOraBadZone = 1857;
constexpr int kOraNonNumeric = 1858;
constexpr int kOraLiteralMismatch = 1861;
constexpr int kOraDigitCount = 1862;
constexpr int kOraZoneHour = 1874;
constexpr int kOraZoneMinute = 1875;
constexpr int kOraTextTooLong = 1877;
constexpr int kOraBadFraction = 1880;

// Returns 0 or kOraDateFormatNotRecognized.
int ParseDateMask(std::string_view mask, DateMask* out);

// fsprec: digits printed by FF. zone: nullptr when the value has no zone
// (then a zone element is kOraDateFormatNotRecognized, as is FF unless
// allow_fraction). `out` is replaced, and undefined after an error.
int FormatDateTime(const DateMask& mask, const DateTimeFields& value, bool allow_fraction,
                   int fsprec, const ZoneOutput* zone, std::string* out);

int ParseDateTime(std::string_view text, const DateMask& mask, const DateParseOptions& options,
                  DateTimeFields* value, ZoneInput* zone);

// The Oracle text for each error number used above.
const char* DateErrorText(int ora);

// Year used for YY/RR and missing fields: the machine clock unless a test
// pins it.
int CurrentYear();
int CurrentMonth();
void PinClockForTesting(int year, int month);  // year 0 releases the pin

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATE_FORMAT_H
