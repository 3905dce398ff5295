// Date format elements read by OCIDateFromText and OCIDateTimeFromText: the
// elements TO_DATE accepts, the ones it refuses (ORA-01820), the conflicts
// between them, the RR window, and the FX and FM modifiers.
#include <cstring>
#include <ctime>
#include <string>

#include "date_format.h"
#include "oci_fixture.h"

namespace {

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

struct Day {
  int year, month, day, hour, minute, second;
};

struct InCase {
  const char* name;
  const char* text;
  const char* mask;
  Day date;  // expected when ora == 0
  int ora;
};

class OciDateInputTest : public OciValueTest {
 protected:
  sword Read(const char* text, const char* mask, OCIDate* d) {
    return OCIDateFromText(err_, T(text), static_cast<ub4>(std::strlen(text)), T(mask),
                           static_cast<ub1>(std::strlen(mask)), nullptr, 0, d);
  }

  void Check(const InCase& c) {
    OCIDate d{};
    const sword rc = Read(c.text, c.mask, &d);
    if (c.ora != 0) {
      ASSERT_EQ(rc, OCI_ERROR);
      EXPECT_EQ(LastError(), c.ora) << LastMessage();
      return;
    }
    ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
    EXPECT_EQ(d.OCIDateYYYY, c.date.year);
    EXPECT_EQ(d.OCIDateMM, c.date.month);
    EXPECT_EQ(d.OCIDateDD, c.date.day);
    EXPECT_EQ(d.OCIDateTime.OCITimeHH, c.date.hour);
    EXPECT_EQ(d.OCIDateTime.OCITimeMI, c.date.minute);
    EXPECT_EQ(d.OCIDateTime.OCITimeSS, c.date.second);
  }
};

constexpr Day kSat{2001, 2, 3, 0, 0, 0};

const InCase kIn[] = {
    // J: Oracle's Julian day, 1 to 5373484.
    {"Julian", "2451545", "J", {2000, 1, 1, 0, 0, 0}, 0},
    {"JulianWithTime", "2451944 04:05:06", "J HH24:MI:SS", {2001, 2, 3, 4, 5, 6}, 0},
    {"JulianLast", "5373484", "J", {9999, 12, 31, 0, 0, 0}, 0},
    {"JulianFirstAdDay", "1721424", "J", {1, 1, 1, 0, 0, 0}, 0},
    // decision DT1 (docs/ocimem.md): J of BC dates
    {"JulianFirst", "1", "J", {-4712, 1, 1, 0, 0, 0}, 0},
    {"JulianZero", "0", "J", {}, 1854},
    {"JulianPastTheEnd", "5373485", "J", {}, 1854},
    // Oracle gives ORA-01841 for the day before 1 January 1 AD (a year 0).
    {"JulianYearZero", "1721423", "J", {}, 1841},
    {"JulianAgreesWithYear", "2451545 2000", "J YYYY", {2000, 1, 1, 0, 0, 0}, 0},
    {"JulianYearConflict", "2451545 2001", "J YYYY", {}, 1831},
    {"JulianMonthConflict", "2451545 02", "J MM", {}, 1833},
    {"JulianDayConflict", "2451545 02", "J DD", {}, 1834},
    {"JulianWeekDayConflict", "2451545 SUN", "J DY", {}, 1835},
    {"JulianWeekDayAgrees", "2451545 SAT", "J DY", {2000, 1, 1, 0, 0, 0}, 0},
    {"JulianPrecludesDayOfYear", "2451545 001", "J DDD", {}, 1811},
    // DDD: the day of the year.
    {"DayOfYear", "2001-034", "YYYY-DDD", kSat, 0},
    {"DayOfYearLeap", "2000-366", "YYYY-DDD", {2000, 12, 31, 0, 0, 0}, 0},
    {"DayOfYearNotLeap", "2001-366", "YYYY-DDD", {}, 1848},
    {"DayOfYearZero", "2001-000", "YYYY-DDD", {}, 1848},
    {"DayOfYearPast366", "2001-367", "YYYY-DDD", {}, 1848},
    {"DayOfYearReformYear", "1582-355", "YYYY-DDD", {1582, 12, 31, 0, 0, 0}, 0},
    {"DayOfYearAcrossTheReform", "1582-278", "YYYY-DDD", {1582, 10, 15, 0, 0, 0}, 0},
    // decision DT2 (docs/ocimem.md): DDD with a month or a day of the month
    {"DayOfYearWithMonth", "2001-034-02", "YYYY-DDD-MM", {}, 1816},
    {"DayOfYearWithDay", "2001-034-03", "YYYY-DDD-DD", {}, 1810},
    // D, DY, DAY: the day of the week must be the date's own (decision DT4, docs/ocimem.md).
    {"WeekDayNumber", "2001-02-03 7", "YYYY-MM-DD D", kSat, 0},
    {"WeekDayNumberConflict", "2001-02-03 1", "YYYY-MM-DD D", {}, 1835},
    {"WeekDayNumberEight", "2001-02-03 8", "YYYY-MM-DD D", {}, 1846},
    {"WeekDayNumberZero", "2001-02-03 0", "YYYY-MM-DD D", {}, 1846},
    {"DayAbbr", "SAT 2001-02-03", "DY YYYY-MM-DD", kSat, 0},
    {"DayAbbrLower", "sat, 2001-02-03", "DY, YYYY-MM-DD", kSat, 0},
    {"DayName", "Saturday 2001-02-03", "DAY YYYY-MM-DD", kSat, 0},
    {"DayNameConflict", "Friday 2001-02-03", "DAY YYYY-MM-DD", {}, 1835},
    {"DayNameUnknown", "Caturday 2001-02-03", "DAY YYYY-MM-DD", {}, 1846},
    {"DayNameDigit", "7 2001-02-03", "DAY YYYY-MM-DD", {}, 1846},
    {"WeekDayTwice", "7 SAT 2001-02-03", "D DY YYYY-MM-DD", {}, 1817},
    {"DayAbbrTwice", "SAT SAT 2001-02-03", "DY DY YYYY-MM-DD", {}, 1810},
    // AD/BC, A.D./B.C.
    {"EraBc", "0044-03-15 BC", "YYYY-MM-DD BC", {-44, 3, 15, 0, 0, 0}, 0},
    {"EraAdUnderBcElement", "0044-03-15 AD", "YYYY-MM-DD BC", {44, 3, 15, 0, 0, 0}, 0},
    {"EraDottedUnderPlainElement", "0044-03-15 b.c.", "YYYY-MM-DD AD", {-44, 3, 15, 0, 0, 0}, 0},
    {"EraLeftOut", "0044-03-15", "YYYY-MM-DD AD", {44, 3, 15, 0, 0, 0}, 0},
    {"EraFirstYear", "4712-01-01 B.C.", "YYYY-MM-DD B.C.", {-4712, 1, 1, 0, 0, 0}, 0},
    {"EraBeyondTheFirstYear", "4713-01-01 BC", "YYYY-MM-DD BC", {}, 1841},
    {"EraMissing", "2001-02-03 XX", "YYYY-MM-DD AD", {}, 1856},
    {"EraWithSignedYear", "2001 AD", "SYYYY AD", {}, 1819},
    {"EraStylesMixed", "2001 AD A.D.", "YYYY AD A.D.", {}, 1815},
    {"EraTwice", "2001 AD BC", "YYYY AD BC", {}, 1810},
    {"EraBcLeapDay", "0001-02-29 BC", "YYYY-MM-DD BC", {-1, 2, 29, 0, 0, 0}, 0},
    // AM/PM, A.M./P.M.
    {"MeridianDotted", "2001-02-03 04:05 p.m.", "YYYY-MM-DD HH:MI A.M.", {2001, 2, 3, 16, 5, 0}, 0},
    {"MeridianWithHour24", "2001-02-03 16 PM", "YYYY-MM-DD HH24 PM", {}, 1818},
    {"MeridianStylesMixed", "04 AM P.M.", "HH AM P.M.", {}, 1814},
    // SSSSS: seconds past midnight.
    {"SecondsOfDay", "2001-02-03 14706", "YYYY-MM-DD SSSSS", {2001, 2, 3, 4, 5, 6}, 0},
    {"SecondsOfDayLast", "2001-02-03 86399", "YYYY-MM-DD SSSSS", {2001, 2, 3, 23, 59, 59}, 0},
    {"SecondsOfDayTooMany", "2001-02-03 86400", "YYYY-MM-DD SSSSS", {}, 1853},
    {"SecondsOfDayAgrees", "2001-02-03 04 14706", "YYYY-MM-DD HH24 SSSSS",
     {2001, 2, 3, 4, 5, 6}, 0},
    {"SecondsOfDayHourConflict", "2001-02-03 05 14706", "YYYY-MM-DD HH24 SSSSS", {}, 1836},
    {"SecondsOfDayMinuteConflict", "2001-02-03 06 14706", "YYYY-MM-DD MI SSSSS", {}, 1837},
    {"SecondsOfDaySecondConflict", "2001-02-03 07 14706", "YYYY-MM-DD SS SSSSS", {}, 1838},
    // RRRR takes four digits as they are, and two digits as RR does.
    {"RoundYearFourDigits", "03-02-1949", "DD-MM-RRRR", {1949, 2, 3, 0, 0, 0}, 0},
    // Quoted text matches as written, in any case.
    {"QuotedText", "2001-02-03T04", "YYYY-MM-DD\"T\"HH24", {2001, 2, 3, 4, 0, 0}, 0},
    {"QuotedTextAnyCase", "2001-02-03t04", "YYYY-MM-DD\"T\"HH24", {2001, 2, 3, 4, 0, 0}, 0},
    {"QuotedTextMismatch", "2001-02-03X04", "YYYY-MM-DD\"T\"HH24", {}, 1861},
    {"QuotedWords", "on 2001-02-03 at 4", "\"on \"YYYY-MM-DD\" at \"HH24", {2001, 2, 3, 4, 0, 0},
     0},
    // Oracle's table "Matching Character Data and Format Models with the FX Format Model
    // Modifier", row by row.
    {"FxTableRow1", "15/ JAN /1998", "DD-MON-YYYY", {1998, 1, 15, 0, 0, 0}, 0},
    // decision DT7 (docs/ocimem.md): the table says "Error"; the code is ocimem's (YYYY meets '/')
    {"FxTableRow2", " 15! JAN % /1998", "DD-MON-YYYY", {}, 1858},
    {"FxTableRow3", "15/JAN/1998", "FXDD-MON-YYYY", {}, 1861},
    {"FxTableRow4", "15-JAN-1998", "FXDD-MON-YYYY", {1998, 1, 15, 0, 0, 0}, 0},
    {"FxTableRow5", "1-JAN-1998", "FXDD-MON-YYYY", {}, 1862},
    {"FxTableRow6", "01-JAN-1998", "FXDD-MON-YYYY", {1998, 1, 1, 0, 0, 0}, 0},
    {"FxTableRow7", "1-JAN-1998", "FXFMDD-MON-YYYY", {1998, 1, 1, 0, 0, 0}, 0},
    // More of FX: numbers need all their digits, punctuation must be there, nothing may be
    // left out at the end, and the element substitutes (MON for MM, YYYY for YY) are off
    // (decision DT6, docs/ocimem.md, for the names and styles).
    {"FxShortNumbers", "2001-2-3", "FXYYYY-MM-DD", {}, 1862},
    {"FxFillModeShortNumbers", "2001-2-3", "FXFMYYYY-MM-DD", kSat, 0},
    {"FxPunctuationLeftOut", "20010203", "FXYYYY-MM-DD", {}, 1861},
    {"FxTrailingTimeLeftOut", "2001-02-03", "FXYYYY-MM-DD HH24:MI:SS", {}, 1840},
    {"FxNoMonthNameForMm", "2001-FEB-03", "FXYYYY-MM-DD", {}, 1858},
    {"FxFullNameForMon", "03-FEBRUARY-2001", "FXDD-MON-YYYY", {}, 1861},
    {"FxFourDigitsForYy", "03-02-2001", "FXDD-MM-YY", {}, 1830},
    {"FxPunctuationAnyCaseQuoted", "2001t02", "FXYYYY\"T\"MM", {2001, 2, 1, 0, 0, 0}, 0},
    {"FxToggledOffForTheTime", "2001-02-03 4.5", "FXYYYY-MM-DD FXHH24:MI", {2001, 2, 3, 4, 5, 0},
     0},
    // decision DT6 (docs/ocimem.md): FX keeps leading blanks (YYYY meets ' ')
    {"FxLeadingBlank", " 2001-02-03", "FXYYYY-MM-DD", {}, 1858},
    {"FxMonthNamePadded", "03-MAY      -2001", "FXDD-MONTH-YYYY", {2001, 5, 3, 0, 0, 0}, 0},
    {"FxMonthNameFillMode", "03-MAY-2001", "FXDD-FMMONTH-YYYY", {2001, 5, 3, 0, 0, 0}, 0},
    // decision DT6 (docs/ocimem.md): a MONTH name under FX without FM is read with its padding
    {"FxMonthNameUnpadded", "03-MAY-2001", "FXDD-MONTH-YYYY", {}, 1861},
    {"FxMeridianStyle", "04 P.M.", "FXHH AM", {}, 1855},
};

class OciDateInput : public OciDateInputTest, public ::testing::WithParamInterface<InCase> {};

TEST_P(OciDateInput, MatchesOracle) { Check(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Elements, OciDateInput, ::testing::ValuesIn(kIn),
                         [](const auto& info) { return std::string(info.param.name); });

// Elements that TO_CHAR writes and TO_DATE refuses.
TEST_F(OciDateInputTest, OutputOnlyElementsAreRefused) {
  for (const char* mask : {"YYYY CC", "SCC", "YEAR", "SYEAR", "YYYY Q", "YYYY WW", "YYYY W",
                           "YYYY IW", "IYYY", "IYY", "IY", "I"}) {
    SCOPED_TRACE(mask);
    OCIDate d{};
    EXPECT_EQ(Read("2001 01", mask, &d), OCI_ERROR);
    EXPECT_EQ(LastError(), 1820);
    EXPECT_EQ(LastMessage(), "ORA-01820: format code cannot appear in date input format\n");
  }
}

// decision DT16 (docs/ocimem.md): the TH suffix is for output only, as Oracle documents;
// in an input mask it is refused as the output-only elements are.
TEST_F(OciDateInputTest, OrdinalSuffixIsRefused) {
  for (const char* mask : {"DDTH-MON-YYYY", "DD-MON-YYYYth"}) {
    SCOPED_TRACE(mask);
    OCIDate d{};
    EXPECT_EQ(Read("03RD-FEB-2001", mask, &d), OCI_ERROR);
    EXPECT_EQ(LastError(), 1820);
  }
}

// What OCIDateToText writes with the new elements, OCIDateFromText reads back.
TEST_F(OciDateInputTest, WrittenTextReadsBack) {
  const char* const kMasks[] = {"Day, DD Month YYYY AD HH12:MI:SS P.M.", "J SSSSS",
                                "SYYYY-DDD HH24:MI:SS", "FXDY DD-MON-YYYY B.C. HH24:MI:SS",
                                "FXFMDD/MM/YYYY AD FMHH24:MI:SS"};
  const Day kDates[] = {{2001, 2, 3, 4, 5, 6},    {-44, 3, 15, 13, 0, 59},
                        {1582, 10, 15, 23, 59, 59}, {9999, 12, 31, 12, 0, 0},
                        {2000, 2, 29, 0, 0, 0}};
  for (const char* mask : kMasks) {
    for (const Day& v : kDates) {
      OCIDate d{};
      OCIDateSetDate(&d, static_cast<sb2>(v.year), static_cast<ub1>(v.month),
                     static_cast<ub1>(v.day));
      OCIDateSetTime(&d, static_cast<ub1>(v.hour), static_cast<ub1>(v.minute),
                     static_cast<ub1>(v.second));
      OraText buf[128];
      ub4 size = sizeof buf;
      ASSERT_EQ(OCIDateToText(err_, &d, T(mask), static_cast<ub1>(std::strlen(mask)), nullptr, 0,
                              &size, buf),
                OCI_SUCCESS);
      const std::string text(reinterpret_cast<char*>(buf), size);
      SCOPED_TRACE(std::string(mask) + " / " + text);
      OCIDate back{};
      ASSERT_EQ(OCIDateFromText(err_, buf, size, T(mask), static_cast<ub1>(std::strlen(mask)),
                                nullptr, 0, &back),
                OCI_SUCCESS)
          << LastMessage();
      EXPECT_EQ(back.OCIDateYYYY, d.OCIDateYYYY);
      EXPECT_EQ(back.OCIDateMM, d.OCIDateMM);
      EXPECT_EQ(back.OCIDateDD, d.OCIDateDD);
      EXPECT_EQ(back.OCIDateTime.OCITimeHH, d.OCIDateTime.OCITimeHH);
      EXPECT_EQ(back.OCIDateTime.OCITimeMI, d.OCIDateTime.OCITimeMI);
      EXPECT_EQ(back.OCIDateTime.OCITimeSS, d.OCIDateTime.OCITimeSS);
    }
  }
}

// X reads the radix character; FF after a point reads the fraction.
TEST_F(OciDateInputTest, RadixAndFractionOfATimestamp) {
  auto* ts = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  const char* text = "2001-02-03 04:05:06.5";
  for (const char* mask : {"YYYY-MM-DD HH24:MI:SSXFF", "YYYY-MM-DD HH24:MI:SS.FF",
                           "FXYYYY-MM-DD HH24:MI:SSXFF"}) {
    SCOPED_TRACE(mask);
    ASSERT_EQ(OCIDateTimeFromText(env_, err_, T(text), std::strlen(text), T(mask),
                                  static_cast<ub1>(std::strlen(mask)), nullptr, 0, ts),
              OCI_SUCCESS)
        << LastMessage();
    ub1 h = 0, mi = 0, s = 0;
    ub4 fsec = 0;
    ASSERT_EQ(OCIDateTimeGetTime(env_, err_, ts, &h, &mi, &s, &fsec), OCI_SUCCESS);
    EXPECT_EQ(fsec, 500000000U);
    EXPECT_EQ(s, 6);
  }
  // decision DT5 (docs/ocimem.md): X reads only the point of territory AMERICA
  const char* comma = "2001-02-03 04:05:06,5";
  EXPECT_EQ(OCIDateTimeFromText(env_, err_, T(comma), std::strlen(comma),
                                T("YYYY-MM-DD HH24:MI:SSXFF"), 24, nullptr, 0, ts),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1830);
  // FF3 under FX needs its three digits.
  EXPECT_EQ(OCIDateTimeFromText(env_, err_, T(text), std::strlen(text),
                                T("FXYYYY-MM-DD HH24:MI:SS.FF3"), 27, nullptr, 0, ts),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1862);
}

// RR and RRRR with two digits: the century depends on the last two digits of the clock's
// year (the rule of Oracle's SQL Reference, "The RR Datetime Format Element").
TEST_F(OciDateInputTest, RoundYearFollowsTheMachineClock) {
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  const int year = tm.tm_year + 1900;
  const int century = year / 100 * 100;
  const bool late = year % 100 >= 50;
  for (const char* mask : {"DD-MM-RR", "DD-MM-RRRR"}) {
    SCOPED_TRACE(mask);
    OCIDate d{};
    ASSERT_EQ(Read("03-02-49", mask, &d), OCI_SUCCESS);
    EXPECT_EQ(d.OCIDateYYYY, century + 49 + (late ? 100 : 0));
    ASSERT_EQ(Read("03-02-50", mask, &d), OCI_SUCCESS);
    EXPECT_EQ(d.OCIDateYYYY, century + 50 - (late ? 0 : 100));
  }
}

// The RR window at the years where it turns, with the clock pinned.
struct WindowCase {
  int current_year;
  const char* text;
  int year;
};

const WindowCase kWindow[] = {
    {2026, "49", 2049}, {2026, "50", 1950}, {2026, "00", 2000}, {2026, "99", 1999},
    {2049, "49", 2049}, {2049, "50", 1950}, {2050, "49", 2149}, {2050, "50", 2050},
    {2050, "00", 2100}, {2099, "99", 2099}, {1999, "49", 2049}, {1999, "50", 1950},
    {2000, "49", 2049}, {2000, "50", 1950}, {2026, "1949", 1949}, {2026, "2050", 2050},
};

TEST(DateRoundYearWindow, AroundFortyNineAndFifty) {
  for (const WindowCase& c : kWindow) {
    for (const char* mask : {"RR", "RRRR"}) {
      SCOPED_TRACE(std::to_string(c.current_year) + " " + c.text + " " + mask);
      ocimem::values::DateMask m;
      ASSERT_EQ(ocimem::values::ParseDateMask(mask, &m), 0);
      ocimem::values::DateParseOptions options;
      options.current_year = c.current_year;
      options.current_month = 6;
      ocimem::values::DateTimeFields f;
      ASSERT_EQ(ocimem::values::ParseDateTime(c.text, m, options, &f, nullptr), 0);
      EXPECT_EQ(f.year, c.year);
    }
  }
}

}  // namespace
