// Date format elements written by OCIDateToText and OCIDateTimeToText: the
// day, week, year, era, century, Julian and radix elements, their case and
// fill mode, and quoted text (Oracle's "Datetime Format Elements").
#include <cstring>
#include <string>

#include "oci_fixture.h"

namespace {

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

struct Day {
  int year, month, day, hour, minute, second;
};

class OciDateElementTest : public OciValueTest {
 protected:
  // OCIDateToText with a buffer far larger than any result.
  sword DateText(const Day& v, const char* mask, std::string* out) {
    OCIDate d{};
    OCIDateSetDate(&d, static_cast<sb2>(v.year), static_cast<ub1>(v.month),
                   static_cast<ub1>(v.day));
    OCIDateSetTime(&d, static_cast<ub1>(v.hour), static_cast<ub1>(v.minute),
                   static_cast<ub1>(v.second));
    OraText buf[128];
    ub4 size = sizeof buf;
    const sword rc = OCIDateToText(err_, &d, T(mask), static_cast<ub1>(std::strlen(mask)),
                                   nullptr, 0, &size, buf);
    if (rc == OCI_SUCCESS) *out = std::string(reinterpret_cast<char*>(buf), size);
    return rc;
  }
};

struct OutCase {
  const char* name;
  Day date;
  const char* mask;
  const char* text;
};

// 3 February 2001 was a Saturday; 2001 began on a Monday.
constexpr Day kSat{2001, 2, 3, 4, 5, 6};
constexpr Day kBc{-44, 3, 15, 13, 0, 0};

const OutCase kOut[] = {
    // D, DY, DAY: Sunday is day 1 in territory AMERICA; the element's case sets the name's.
    {"WeekDayNumber", kSat, "D", "7"},
    {"DayAbbrUpper", kSat, "DY", "SAT"},
    {"DayAbbrCapital", kSat, "Dy", "Sat"},
    {"DayAbbrLower", kSat, "dy", "sat"},
    {"DayNamePadded", kSat, "DAY|", "SATURDAY |"},
    {"DayNameCapitalPadded", kSat, "Day|", "Saturday |"},
    {"DayNameLowerFill", kSat, "FMday|", "saturday|"},
    {"WednesdayIsTheLongest", {2001, 2, 7, 0, 0, 0}, "DAY|", "WEDNESDAY|"},
    {"MayPadded", {2001, 5, 3, 0, 0, 0}, "Month|", "May      |"},
    // DDD, J, SSSSS, Q, WW, W
    {"DayOfYear", kSat, "DDD", "034"},
    {"DayOfYearFill", kSat, "FMDDD", "34"},
    {"DayOfYearLeapEnd", {2000, 12, 31, 0, 0, 0}, "DDD", "366"},
    {"DayOfYearReformYear", {1582, 12, 31, 0, 0, 0}, "DDD", "355"},
    {"JulianDay", kSat, "J", "2451944"},
    {"JulianY2k", {2000, 1, 1, 0, 0, 0}, "J", "2451545"},
    {"JulianFirstAdDay", {1, 1, 1, 0, 0, 0}, "J", "1721424"},
    {"JulianLastDay", {9999, 12, 31, 0, 0, 0}, "J", "5373484"},
    {"JulianAcrossTheReform", {1582, 10, 15, 0, 0, 0}, "J", "2299161"},
    {"JulianLastJulianCalendarDay", {1582, 10, 4, 0, 0, 0}, "J", "2299160"},
    // decision DT1 (docs/ocimem.md): J of BC dates
    {"JulianFirstDay", {-4712, 1, 1, 0, 0, 0}, "J", "0000001"},
    {"JulianFill", {-4712, 1, 1, 0, 0, 0}, "FMJ", "1"},
    {"SecondsOfDay", kSat, "SSSSS", "14706"},
    {"SecondsOfDayMidnight", {2001, 2, 3, 0, 0, 0}, "SSSSS", "00000"},
    {"SecondsOfDayLast", {2001, 2, 3, 23, 59, 59}, "SSSSS", "86399"},
    {"QuarterFirst", kSat, "Q", "1"},
    {"QuarterLast", {2001, 12, 1, 0, 0, 0}, "Q", "4"},
    {"WeekOfYear", kSat, "WW", "05"},
    {"WeekOfYearSeventhDay", {2001, 1, 7, 0, 0, 0}, "WW", "01"},
    {"WeekOfYearEighthDay", {2001, 1, 8, 0, 0, 0}, "WW", "02"},
    {"WeekOfYearLeapEnd", {2000, 12, 31, 0, 0, 0}, "WW", "53"},
    {"WeekOfMonthFirst", kSat, "W", "1"},
    {"WeekOfMonth28", {2001, 2, 28, 0, 0, 0}, "W", "4"},
    {"WeekOfMonth29", {2000, 2, 29, 0, 0, 0}, "W", "5"},
    // IW, IYYY: ISO weeks begin on Monday; week 1 holds the year's first Thursday.
    {"IsoWeek", kSat, "IW IYYY IYY IY I", "05 2001 001 01 1"},
    {"IsoWeek53LastDay", {2004, 12, 31, 0, 0, 0}, "IW IYYY", "53 2004"},
    {"IsoWeek53NextYear", {2005, 1, 1, 0, 0, 0}, "IW IYYY YYYY", "53 2004 2005"},
    {"IsoWeek1", {2005, 1, 3, 0, 0, 0}, "IW IYYY", "01 2005"},
    {"IsoWeek1PreviousYear", {2007, 12, 31, 0, 0, 0}, "IW IYYY YYYY", "01 2008 2007"},
    {"IsoWeek1OfNextYearInDecember", {2008, 12, 29, 0, 0, 0}, "IW IYYY", "01 2009"},
    {"IsoWeek53OnASunday", {2010, 1, 3, 0, 0, 0}, "IW IYYY", "53 2009"},
    {"IsoWeek52Y2k", {2000, 1, 1, 0, 0, 0}, "IW IYYY", "52 1999"},
    {"IsoWeekFill", {2005, 1, 3, 0, 0, 0}, "FMIW", "1"},
    // AD/BC, A.D./B.C.: either element writes the value's era, in the element's case.
    {"EraAd", kSat, "YYYY AD", "2001 AD"},
    {"EraBcElementOnAdDate", kSat, "YYYY BC", "2001 AD"},
    {"EraDotted", kSat, "A.D.", "A.D."},
    {"EraLower", kSat, "b.c.", "a.d."},
    {"EraBc", kBc, "YYYY BC", "0044 BC"},
    {"EraBcDotted", kBc, "YYYY A.D.", "0044 B.C."},
    {"EraBcCapital", kBc, "Bc", "Bc"},
    {"FillModeBcMonth", {-1952, 2, 25, 0, 0, 0}, "FMMonth DD, YYYY BC", "February 25, 1952 BC"},
    // AM/PM, A.M./P.M.
    {"MeridianDottedMorning", kSat, "HH:MI P.M.", "04:05 A.M."},
    {"MeridianLowerAfternoon", {2001, 2, 3, 13, 5, 6}, "HH12 am", "01 pm"},
    {"MeridianNoon", {2001, 2, 3, 12, 0, 0}, "HH AM", "12 PM"},
    // CC, SCC: 2000 is in the 20th century, 2001 in the 21st.
    {"Century", kSat, "CC", "21"},
    {"CenturyYear2000", {2000, 6, 1, 0, 0, 0}, "CC", "20"},
    {"CenturyYear1900", {1900, 6, 1, 0, 0, 0}, "CC", "19"},
    {"CenturyYear99", {99, 6, 1, 0, 0, 0}, "CC", "01"},
    {"CenturyYear101", {101, 6, 1, 0, 0, 0}, "CC", "02"},
    {"SignedCenturyAd", kSat, "SCC", " 21"},
    {"SignedCenturyAdFill", kSat, "FMSCC", "21"},
    {"SignedCenturyBc", kBc, "SCC", "-01"},
    {"CenturyBcUnsigned", kBc, "CC", "01"},
    {"SignedCenturyFirstYear", {-4712, 1, 1, 0, 0, 0}, "SCC", "-48"},
    // YEAR, SYEAR: decision DT3 (docs/ocimem.md), how years are spelled
    {"YearSpelled", {1998, 7, 4, 0, 0, 0}, "YEAR", "NINETEEN NINETY-EIGHT"},
    {"YearSpelledCapital", {1998, 7, 4, 0, 0, 0}, "Year", "Nineteen Ninety-Eight"},
    {"YearSpelledLower", {1998, 7, 4, 0, 0, 0}, "year", "nineteen ninety-eight"},
    {"YearSpelledThousand", {2000, 7, 4, 0, 0, 0}, "YEAR", "TWO THOUSAND"},
    {"YearSpelledThousandOne", kSat, "YEAR", "TWO THOUSAND ONE"},
    {"YearSpelledTwentyTen", {2010, 7, 4, 0, 0, 0}, "YEAR", "TWENTY TEN"},
    {"YearSpelledTwentyTwentyOne", {2021, 7, 4, 0, 0, 0}, "Year", "Twenty Twenty-One"},
    {"YearSpelledHundred", {1900, 7, 4, 0, 0, 0}, "YEAR", "NINETEEN HUNDRED"},
    {"YearSpelledTwoDigits", {44, 7, 4, 0, 0, 0}, "YEAR", "FORTY-FOUR"},
    {"SignedYearSpelledBc", kBc, "SYEAR", "-FORTY-FOUR"},
    {"SignedYearSpelledAd", kSat, "SYEAR", " TWO THOUSAND ONE"},
    // FM toggles: padding and leading zeros off after the first FM, on after the second.
    {"FillModeToggles", kSat, "FMDD-FMMM-YYYY", "3-02-2001"},
    {"FillModeNumbers", kSat, "FMHH24:MI:SS", "4:5:6"},
    {"FillModeSignedYear", kBc, "FMSYYYY", "-44"},
    // Quoted text is copied as written, element names in it included.
    {"QuotedElementNames", kSat, "\"Day \"DD\" of \"Month", "Day 03 of February "},
    {"QuotedEmpty", kSat, "DD\"\"MM", "0302"},
    {"Punctuation", kSat, "YYYY/MM/DD;HH24,MI.SS", "2001/02/03;04,05.06"},
    // TH: the English ordinal of the number before it, in the case of that element
    // (DD upper, Dd and dd lower) whatever the case of TH itself.
    {"OrdinalUpper", kSat, "DDTH", "03RD"},
    {"OrdinalCaseOfTheElement", kSat, "DDth", "03RD"},
    {"OrdinalCapitalElement", kSat, "DdTH", "03rd"},
    {"OrdinalLowerElement", kSat, "ddth", "03rd"},
    {"OrdinalFill", {2030, 12, 1, 0, 0, 0}, "fmDdth Month", "1st December"},
    {"OrdinalFillUpper", {2030, 12, 1, 0, 0, 0}, "fmDDth Month", "1ST December"},
    {"OrdinalCentury", {2030, 12, 30, 0, 0, 0}, "Ccth \"Century\"", "21st Century"},
    {"OrdinalOfEveryNumber", {2007, 4, 3, 2, 1, 1}, "FMyyyyTH, mmTH, ddTH, hhTH, miTH, ssTH",
     "2007th, 4th, 3rd, 2nd, 1st, 1st"},
    {"OrdinalEleventh", {2001, 2, 11, 0, 0, 0}, "DDTH", "11TH"},
    {"OrdinalTwelfth", {2001, 2, 12, 0, 0, 0}, "DDTH", "12TH"},
    {"OrdinalThirteenth", {2001, 2, 13, 0, 0, 0}, "DDTH", "13TH"},
    {"OrdinalTwentyFirst", {2001, 2, 21, 0, 0, 0}, "DDTH", "21ST"},
    {"OrdinalTwentySecond", {2001, 2, 22, 0, 0, 0}, "DDTH", "22ND"},
    {"OrdinalHundredEleventh", {2001, 4, 21, 0, 0, 0}, "DDDTH", "111TH"},
    {"OrdinalHundredTwentyFirst", {2001, 5, 1, 0, 0, 0}, "DDDTH", "121ST"},
    {"OrdinalInALongDate", {2024, 3, 1, 0, 0, 0}, "Day, DDth Month YYYY",
     "Friday   , 01ST March     2024"},
};

class OciDateElementOut : public OciDateElementTest,
                          public ::testing::WithParamInterface<OutCase> {};

TEST_P(OciDateElementOut, MatchesOracle) {
  const auto& c = GetParam();
  std::string text;
  ASSERT_EQ(DateText(c.date, c.mask, &text), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(text, c.text);
}

INSTANTIATE_TEST_SUITE_P(Elements, OciDateElementOut, ::testing::ValuesIn(kOut),
                         [](const auto& info) { return std::string(info.param.name); });

// Every day of one week, by number, abbreviation and name.
TEST_F(OciDateElementTest, EveryDayOfAWeek) {
  const char* const kNames[] = {"SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY",
                                "THURSDAY", "FRIDAY", "SATURDAY"};
  for (int i = 0; i < 7; ++i) {
    const Day d{2001, 2, 4 + i, 0, 0, 0};  // 4 February 2001 was a Sunday
    std::string text;
    ASSERT_EQ(DateText(d, "D FMDAY DY", &text), OCI_SUCCESS) << LastMessage();
    EXPECT_EQ(text, std::to_string(i + 1) + " " + kNames[i] + " " +
                        std::string(kNames[i], 3));
  }
}

// The days on either side of the Gregorian reform follow each other.
TEST_F(OciDateElementTest, WeekDaysAcrossTheReform) {
  std::string before;
  std::string after;
  ASSERT_EQ(DateText({1582, 10, 4, 0, 0, 0}, "DY D", &before), OCI_SUCCESS);
  ASSERT_EQ(DateText({1582, 10, 15, 0, 0, 0}, "DY D", &after), OCI_SUCCESS);
  EXPECT_EQ(before, "THU 5");
  EXPECT_EQ(after, "FRI 6");
}

// TIMESTAMP values take the same elements, and X, the radix character.
TEST_F(OciDateElementTest, TimestampElementsAndRadix) {
  auto* ts = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  ASSERT_EQ(OCIDateTimeConstruct(env_, err_, ts, 2001, 2, 3, 16, 5, 6, 123456000, nullptr, 0),
            OCI_SUCCESS);
  const char* mask = "Dy DDD J SSSSS IW HH:MI:SSXFF P.M.";
  OraText buf[128];
  ub4 size = sizeof buf;
  ASSERT_EQ(OCIDateTimeToText(env_, err_, ts, T(mask), static_cast<ub1>(std::strlen(mask)), 6,
                              nullptr, 0, &size, buf),
            OCI_SUCCESS)
      << LastMessage();
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size),
            "Sat 034 2451944 57906 05 04:05:06.123456 P.M.");
}

// Oracle's NLS_TIMESTAMP_FORMAT and NLS_TIMESTAMP_TZ_FORMAT when no mask is given.
TEST_F(OciDateElementTest, DefaultTimestampMasks) {
  auto* ts = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  ASSERT_EQ(OCIDateTimeConstruct(env_, err_, ts, 2001, 2, 3, 16, 5, 6, 123456000, nullptr, 0),
            OCI_SUCCESS);
  OraText buf[128];
  ub4 size = sizeof buf;
  ASSERT_EQ(OCIDateTimeToText(env_, err_, ts, nullptr, 0, 6, nullptr, 0, &size, buf),
            OCI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), "03-FEB-01 04.05.06.123456 PM");

  auto* tz = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  ASSERT_EQ(OCIDateTimeFromText(env_, err_, T("03-FEB-01 04.05.06.5 PM -05:00"), 30, nullptr, 0,
                                nullptr, 0, tz),
            OCI_SUCCESS)
      << LastMessage();
  size = sizeof buf;
  ASSERT_EQ(OCIDateTimeToText(env_, err_, tz, nullptr, 0, 3, nullptr, 0, &size, buf),
            OCI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), "03-FEB-01 04.05.06.500 PM -05:00");
}

// decision DT16 (docs/ocimem.md): TH of a zero is refused, as an Oracle server was seen
// to refuse ssTH at second 0; TH after an element that is no number is no element.
TEST_F(OciDateElementTest, OrdinalOfZeroAndOfNames) {
  std::string text;
  EXPECT_EQ(DateText({2007, 4, 3, 2, 1, 0}, "ssTH", &text), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-01877: string is too long for internal buffer\n");
  for (const char* mask : {"MonthTH", "DAYTH", "DYTH"}) {
    SCOPED_TRACE(mask);
    EXPECT_EQ(DateText(kSat, mask, &text), OCI_ERROR);
    EXPECT_EQ(LastError(), 1821);
  }
}

// Names of days and months are looked up by their number: a stored value
// outside the calendar is refused, never read past the tables.
TEST_F(OciDateElementTest, InvalidStoredDateIsRefusedByDayElements) {
  for (const char* mask : {"DAY", "DY", "D", "J", "IW"}) {
    SCOPED_TRACE(mask);
    std::string text;
    EXPECT_EQ(DateText({2001, 13, 3, 0, 0, 0}, mask, &text), OCI_ERROR);
    EXPECT_EQ(LastError(), 1843);
  }
}

}  // namespace
