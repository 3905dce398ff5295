// DATE text in both directions, the calendar and the mask checks.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "calendar.h"
#include "date_cases.h"
#include "date_format.h"

namespace {

using ocimem::values::DateTimeFields;

DateTimeFields Fields(const date_cases::Date& d) {
  DateTimeFields f;
  f.year = d.year;
  f.month = d.month;
  f.day = d.day;
  f.hour = d.hour;
  f.minute = d.minute;
  f.second = d.second;
  return f;
}

class DateToTextTable : public ::testing::TestWithParam<date_cases::ToTextCase> {};

TEST_P(DateToTextTable, MatchesOracle) {
  const auto& c = GetParam();
  ocimem::values::DateMask mask;
  ASSERT_EQ(ocimem::values::ParseDateMask(c.mask, &mask), 0);
  std::string text;
  ASSERT_EQ(ocimem::values::FormatDateTime(mask, Fields(c.date), false, 0, nullptr, &text), 0);
  EXPECT_EQ(text, c.text);
}

INSTANTIATE_TEST_SUITE_P(Sheet, DateToTextTable, ::testing::ValuesIn(date_cases::kToText),
                         [](const auto& info) { return std::string(info.param.name); });

class DateFromTextTable : public ::testing::TestWithParam<date_cases::FromTextCase> {};

TEST_P(DateFromTextTable, MatchesOracle) {
  const auto& c = GetParam();
  ocimem::values::DateParseOptions options;
  options.current_year = 2026;
  options.current_month = 11;
  ocimem::values::DateMask mask;
  int rc = ocimem::values::ParseDateMask(c.mask, &mask);
  DateTimeFields f;
  const std::size_t length = c.length != 0 ? c.length : std::strlen(c.text);
  if (rc == 0) {
    rc = ocimem::values::ParseDateTime(std::string_view(c.text, length), mask, options, &f,
                                       nullptr);
  }
  ASSERT_EQ(rc, c.ora);
  if (c.ora != 0) return;
  EXPECT_EQ(f.year, c.date.year);
  EXPECT_EQ(f.month, c.date.month);
  EXPECT_EQ(f.day, c.date.day);
  EXPECT_EQ(f.hour, c.date.hour);
  EXPECT_EQ(f.minute, c.date.minute);
  EXPECT_EQ(f.second, c.date.second);
}

INSTANTIATE_TEST_SUITE_P(Sheet, DateFromTextTable, ::testing::ValuesIn(date_cases::kFromText),
                         [](const auto& info) { return std::string(info.param.name); });

// decision DT15 (docs/ocimem.md): Z, not the sheet's X, stands for an unknown element.
TEST(DateFormatTest, UnknownElementInOutputMask) {
  ocimem::values::DateMask mask;
  EXPECT_EQ(ocimem::values::ParseDateMask("HH24:MI:ZZ", &mask), 1821);
}

TEST(DateFormatTest, UnterminatedQuoteIsRejected) {
  ocimem::values::DateMask mask;
  EXPECT_EQ(ocimem::values::ParseDateMask("YYYY\"abc", &mask), 1821);
}

TEST(DateFormatTest, ZoneElementNeedsAZone) {
  ocimem::values::DateMask mask;
  ASSERT_EQ(ocimem::values::ParseDateMask("YYYY TZR", &mask), 0);
  std::string text;
  EXPECT_EQ(ocimem::values::FormatDateTime(mask, DateTimeFields{}, true, 6, nullptr, &text), 1821);
}

// Month names are looked up by the month: a value that did not come through
// a checked call (a raw date bound by a caller) is refused, never read past
// the table.
TEST(DateFormatTest, MonthOutsideTheYearIsRefusedByNameElements) {
  for (const char* text : {"DD-MON-YY", "MONTH", "Mon"}) {
    ocimem::values::DateMask mask;
    ASSERT_EQ(ocimem::values::ParseDateMask(text, &mask), 0);
    for (int month : {0, 13, 200, -1}) {
      DateTimeFields f;
      f.month = month;
      std::string out;
      EXPECT_EQ(ocimem::values::FormatDateTime(mask, f, false, 0, nullptr, &out), 1843)
          << text << " " << month;
    }
  }
}

TEST(DateFormatTest, RrMapsToNearestCentury) {
  ocimem::values::DateParseOptions options;
  options.current_year = 2026;
  ocimem::values::DateMask mask;
  ASSERT_EQ(ocimem::values::ParseDateMask("DD-MON-RR", &mask), 0);
  DateTimeFields f;
  ASSERT_EQ(ocimem::values::ParseDateTime("03-FEB-99", mask, options, &f, nullptr), 0);
  EXPECT_EQ(f.year, 1999);
  ASSERT_EQ(ocimem::values::ParseDateTime("03-FEB-49", mask, options, &f, nullptr), 0);
  EXPECT_EQ(f.year, 2049);
}

TEST(DateFormatTest, PinnedClockIsUsed) {
  ocimem::values::PinClockForTesting(1987, 6);
  EXPECT_EQ(ocimem::values::CurrentYear(), 1987);
  EXPECT_EQ(ocimem::values::CurrentMonth(), 6);
  ocimem::values::PinClockForTesting(0, 1);
  EXPECT_GE(ocimem::values::CurrentYear(), 2024);
}

// ---- calendar ----

TEST(CalendarTest, LeapYearsSwitchRuleIn1582) {
  EXPECT_TRUE(ocimem::values::IsLeapYear(1500));
  EXPECT_FALSE(ocimem::values::IsLeapYear(1700));
  EXPECT_TRUE(ocimem::values::IsLeapYear(2000));
  EXPECT_FALSE(ocimem::values::IsLeapYear(1900));
  EXPECT_TRUE(ocimem::values::IsLeapYear(2024));
}

// UNCONFIRMED: oracle-datatypes.md §6.1 (BC leap years -1, -5, -9)
TEST(CalendarTest, BcLeapYears) {
  EXPECT_TRUE(ocimem::values::IsLeapYear(-1));
  EXPECT_TRUE(ocimem::values::IsLeapYear(-5));
  EXPECT_FALSE(ocimem::values::IsLeapYear(-4));
}

TEST(CalendarTest, ReformDropsTenDays) {
  EXPECT_EQ(ocimem::values::DayNumber(1582, 10, 15) - ocimem::values::DayNumber(1582, 10, 4), 1);
  EXPECT_FALSE(ocimem::values::IsValidDate(1582, 10, 10));
  EXPECT_TRUE(ocimem::values::IsValidDate(1582, 10, 4));
}

TEST(CalendarTest, DayNumbersRoundTripOverTheWholeRange) {
  std::int64_t previous = ocimem::values::DayNumber(-4712, 1, 1) - 1;
  for (int y = -4712; y <= 9999; ++y) {
    if (y == 0) continue;
    for (int m = 1; m <= 12; ++m) {
      for (int d = 1; d <= ocimem::values::DaysInMonth(y, m); ++d) {
        if (ocimem::values::IsMissingGregorianDay(y, m, d)) continue;
        const std::int64_t n = ocimem::values::DayNumber(y, m, d);
        ASSERT_EQ(n, previous + 1) << y << "-" << m << "-" << d;
        int yy = 0, mm = 0, dd = 0;
        ocimem::values::DateFromDayNumber(n, &yy, &mm, &dd);
        ASSERT_EQ(yy, y);
        ASSERT_EQ(mm, m);
        ASSERT_EQ(dd, d);
        previous = n;
      }
    }
  }
}

TEST(CalendarTest, UnixEpoch) {
  EXPECT_EQ(ocimem::values::ToUnixSeconds(1970, 1, 1, 0, 0, 0), 0);
  EXPECT_EQ(ocimem::values::ToUnixSeconds(2001, 2, 3, 12, 0, 0), 981201600);
}

TEST(DateRoundTripTest, RandomDatesReadBack) {
  std::mt19937 rng(11);
  ocimem::values::DateMask mask;
  ASSERT_EQ(ocimem::values::ParseDateMask(date_cases::kFull, &mask), 0);
  ocimem::values::DateParseOptions options;
  for (int i = 0; i < 5000; ++i) {
    DateTimeFields f;
    f.year = static_cast<int>(rng() % 9999) + 1;
    f.month = static_cast<int>(rng() % 12) + 1;
    f.day = static_cast<int>(rng() % static_cast<unsigned>(ocimem::values::DaysInMonth(f.year, f.month))) + 1;
    if (ocimem::values::IsMissingGregorianDay(f.year, f.month, f.day)) continue;
    f.hour = static_cast<int>(rng() % 24);
    f.minute = static_cast<int>(rng() % 60);
    f.second = static_cast<int>(rng() % 60);
    std::string text;
    ASSERT_EQ(ocimem::values::FormatDateTime(mask, f, false, 0, nullptr, &text), 0);
    DateTimeFields back;
    ASSERT_EQ(ocimem::values::ParseDateTime(text, mask, options, &back, nullptr), 0) << text;
    EXPECT_EQ(back.year, f.year);
    EXPECT_EQ(back.month, f.month);
    EXPECT_EQ(back.day, f.day);
    EXPECT_EQ(back.hour, f.hour);
    EXPECT_EQ(back.minute, f.minute);
    EXPECT_EQ(back.second, f.second);
  }
}

}  // namespace
