// DATE text tables (oracle-datatypes.md section 6) shared by the algorithm
// tests and the OCI tests.
#ifndef TESTS_OCIMEM_VALUES_DATE_CASES_H
#define TESTS_OCIMEM_VALUES_DATE_CASES_H

namespace date_cases {

constexpr const char* kFull = "YYYY-MM-DD HH24:MI:SS";
constexpr const char* kShort = "DD-MON-YY";

struct Date {
  int year, month, day, hour, minute, second;
};

struct ToTextCase {
  const char* name;
  Date date;
  const char* mask;
  const char* text;
};

inline const ToTextCase kToText[] = {
    {"Row01Full", {2001, 2, 3, 4, 5, 6}, kFull, "2001-02-03 04:05:06"},
    {"Row02YearPadded", {99, 12, 31, 23, 59, 59}, kFull, "0099-12-31 23:59:59"},
    {"Row03Maximum", {9999, 12, 31, 23, 59, 59}, kFull, "9999-12-31 23:59:59"},
    {"Row04LeapDay", {2000, 2, 29, 0, 0, 0}, kFull, "2000-02-29 00:00:00"},
    {"Row05BcAbsoluteYear", {-44, 3, 15, 0, 0, 0}, kFull, "0044-03-15 00:00:00"},
    {"Row06Short", {2001, 2, 3, 4, 5, 6}, kShort, "03-FEB-01"},
    {"Row07ShortDecember", {1999, 12, 31, 0, 0, 0}, kShort, "31-DEC-99"},
    {"Row08ShortMay", {2010, 5, 7, 0, 0, 0}, kShort, "07-MAY-10"},
    {"Row09ShortYearOne", {1, 1, 1, 0, 0, 0}, kShort, "01-JAN-01"},
    {"Row10Midnight", {2001, 2, 3, 0, 0, 0}, kFull, "2001-02-03 00:00:00"},
    {"Row11FirstGregorianDay", {1582, 10, 15, 0, 0, 0}, kFull, "1582-10-15 00:00:00"},
    {"Row12LastJulianDay", {1582, 10, 4, 23, 59, 59}, kFull, "1582-10-04 23:59:59"},
    {"Row13Minimum", {-4712, 1, 1, 0, 0, 0}, kFull, "4712-01-01 00:00:00"},
    {"Row14ShortNoon", {2001, 12, 1, 12, 0, 0}, kShort, "01-DEC-01"},
    {"Row15ShortSeptember", {2023, 9, 5, 0, 0, 0}, kShort, "05-SEP-23"},
    {"Row16ShortCenturyYear", {1900, 2, 28, 0, 0, 0}, kShort, "28-FEB-00"},
    {"Row17ShortY2k", {2000, 1, 1, 0, 0, 0}, kShort, "01-JAN-00"},
    // UNCONFIRMED: oracle-datatypes.md §6.2 row 18
    {"Row18ShortBc", {-44, 3, 15, 0, 0, 0}, kShort, "15-MAR-44"},
    {"MonCapitalised", {2001, 2, 3, 0, 0, 0}, "DD-Mon-YY", "03-Feb-01"},
    {"MonLower", {2001, 2, 3, 0, 0, 0}, "DD-mon-YY", "03-feb-01"},
    {"MonthPadded", {2001, 5, 3, 0, 0, 0}, "MONTH", "MAY      "},
    {"MonthFillMode", {2001, 5, 3, 0, 0, 0}, "FMMonth DD", "May 3"},
    {"TwelveHourPm", {2001, 2, 3, 13, 5, 6}, "HH12:MI:SS PM", "01:05:06 PM"},
    {"TwelveHourMidnight", {2001, 2, 3, 0, 5, 6}, "HH:MI AM", "12:05 AM"},
    {"SignedYearBc", {-44, 3, 15, 0, 0, 0}, "SYYYY", "-0044"},
    {"QuotedText", {2001, 2, 3, 4, 5, 6}, "YYYY\"T\"HH24", "2001T04"},
    {"RrrrFullYear", {2001, 2, 3, 0, 0, 0}, "RRRR/RR", "2001/01"},
};

struct FromTextCase {
  const char* name;
  const char* text;
  unsigned length;  // bytes passed; 0 = whole text
  const char* mask;
  Date date;  // expected when ora == 0
  int ora;
  bool uses_clock = false;  // expectation assumes the clock of November 2026
};

// The algorithm tests pin the clock to November 2026 for YY and for fields
// missing from the mask.
inline const FromTextCase kFromText[] = {
    {"Row01Full", "2001-02-03 04:05:06", 0, kFull, {2001, 2, 3, 4, 5, 6}, 0},
    {"Row02DateOnly", "2001-02-03", 0, "YYYY-MM-DD", {2001, 2, 3, 0, 0, 0}, 0},
    {"Row03Minutes", "2001-02-03 04:05", 0, "YYYY-MM-DD HH24:MI", {2001, 2, 3, 4, 5, 0}, 0},
    {"Row04CapDropsFraction", "2001-02-03 04:05:06.789123", 19, kFull, {2001, 2, 3, 4, 5, 6}, 0},
    {"Row05ShortNumbers", "2001-2-3 4:5:6", 0, kFull, {2001, 2, 3, 4, 5, 6}, 0},
    {"Row06OtherPunctuation", "2001/02/03 04.05.06", 0, kFull, {2001, 2, 3, 4, 5, 6}, 0},
    {"Row07NoPunctuation", "20010203040506", 0, kFull, {2001, 2, 3, 4, 5, 6}, 0},
    {"Row08TrailingTimeOmitted", "2001-02-03 04", 0, kFull, {2001, 2, 3, 4, 0, 0}, 0},
    {"Row09LetterForPunctuation", "2001-02-03T04:05:06", 0, kFull, {}, 1861},
    {"Row10Hour24", "2001-02-03 24:00:00", 0, kFull, {}, 1850},
    {"Row11Minute60", "2001-02-03 23:60:00", 0, kFull, {}, 1851},
    {"Row12Second60", "2001-02-03 23:59:60", 0, kFull, {}, 1852},
    {"Row13Month13", "2001-13-01 00:00:00", 0, kFull, {}, 1843},
    {"Row13Month0", "2001-00-01 00:00:00", 0, kFull, {}, 1843},
    {"Row14Day32", "2001-01-32 00:00:00", 0, kFull, {}, 1847},
    {"Row14Day0", "2001-01-00 00:00:00", 0, kFull, {}, 1847},
    {"Row15NotLeap", "2001-02-29 00:00:00", 0, kFull, {}, 1839},
    {"Row15April31", "2001-04-31 00:00:00", 0, kFull, {}, 1839},
    {"Row16MissingGregorianDay", "1582-10-10 00:00:00", 0, kFull, {1582, 10, 15, 0, 0, 0}, 0},
    {"Row17YearZero", "0000-01-01 00:00:00", 0, kFull, {}, 1841},
    // UNCONFIRMED: oracle-datatypes.md §6.4 row 18 (ORA-01858)
    {"Row18LetterInNumber", "2001-0x-03 00:00:00", 0, kFull, {}, 1858},
    {"Row19YearOnly", "2001", 0, kFull, {}, 1840},
    {"Row20WrongOrder", "03-02-2001", 0, "YYYY-MM-DD", {}, 1830},
    {"Row21CapHidesJunk", "2001-02-03 04:05:06 x", 19, kFull, {2001, 2, 3, 4, 5, 6}, 0},
    // UNCONFIRMED: oracle-datatypes.md §6.4 row 22
    {"Row22FiveDigitYear", "10000-01-01", 0, kFull, {}, 1861},
    {"Row23Short", "03-FEB-01", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row24LowerMonth", "03-feb-01", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row24MixedMonth", "03-Feb-01", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row25FullMonthName", "03-FEBRUARY-01", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row26FourDigitYear", "03-FEB-2001", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row27CurrentCentury", "03-FEB-99", 0, kShort, {2099, 2, 3, 0, 0, 0}, 0, true},
    {"Row28ShortFields", "3-FEB-1", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row29Slashes", "03/FEB/01", 0, kShort, {2001, 2, 3, 0, 0, 0}, 0},
    {"Row30NumberForMon", "03-02-01", 0, kShort, {}, 1843},
    {"Row31UnknownMonth", "03-FOO-01", 0, kShort, {}, 1843},
    {"Row32YearMissing", "03-FEB", 0, kShort, {}, 1840},
    {"Row33NotInMonth", "30-FEB-01", 0, kShort, {}, 1839},
    {"Row34TimeAfterShort", "03-FEB-01 10:00", 0, kShort, {}, 1830},
    // decision DT15 (docs/ocimem.md): oracle-datatypes.md §1 gives `HH24:MI:XX` as its
    // example of an unknown element, but X is Oracle's radix element: Z is none.
    {"UnknownElement", "04:05:06", 0, "HH24:MI:ZZ", {}, 1821},
    {"RepeatedElement", "2001-02-03 04:05:06", 0, "YYYY-MM-DD HH24:MM:SS", {}, 1810},
    {"YearTwice", "2001 01", 0, "YYYY YY", {}, 1812},
    {"HourTwice", "04 04", 0, "HH24 HH", {}, 1813},
    {"MonthTwice", "02 FEB", 0, "MM MON", {}, 1816},
    {"LeadingBlanksIgnored", "  2001-02-03", 0, "YYYY-MM-DD", {2001, 2, 3, 0, 0, 0}, 0},
    {"MinimumYear", "-4712-01-01", 0, "SYYYY-MM-DD", {-4712, 1, 1, 0, 0, 0}, 0},
    {"BelowMinimumYear", "-4713-01-01", 0, "SYYYY-MM-DD", {}, 1841},
    {"JulianLeapYear1500", "1500-02-29", 0, "YYYY-MM-DD", {1500, 2, 29, 0, 0, 0}, 0},
    {"GregorianNotLeap1700", "1700-02-29", 0, "YYYY-MM-DD", {}, 1839},
    {"TwelveHourPm", "01:05 PM", 0, "HH12:MI PM", {2026, 11, 1, 13, 5, 0}, 0, true},
    {"TwelveHourRange", "13:05 PM", 0, "HH12:MI PM", {}, 1849},
    {"MeridianMissing", "01:05 XX", 0, "HH12:MI PM", {}, 1855},
    {"MonthNameForMm", "2001-FEB-03", 0, "YYYY-MM-DD", {2001, 2, 3, 0, 0, 0}, 0},
    {"QuotedLiteral", "2001T04", 0, "YYYY\"T\"HH24", {2001, 11, 1, 4, 0, 0}, 0, true},
    {"FractionNotAllowedInDate", "2001", 0, "YYYY.FF", {}, 1821},
};

}  // namespace date_cases

#endif  // TESTS_OCIMEM_VALUES_DATE_CASES_H
