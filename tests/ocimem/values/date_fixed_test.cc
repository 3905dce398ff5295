// Masks of fixed shape take a short way through FormatDateTime and ParseDateTime; these
// tests hold it to the general way: the same text, the same fields, the same errors.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "calendar.h"
#include "date_fixed.h"
#include "date_format.h"

namespace {

using ocimem::values::DateMask;
using ocimem::values::DateParseOptions;
using ocimem::values::DateTimeFields;
using ocimem::values::ZoneInput;

const char* const kFixedMasks[] = {
    "YYYY-MM-DD HH24:MI:SS",   "YYYY-MM-DD HH24:MI:SS.FF", "YYYY-MM-DD HH24:MI:SS.FF3",
    "YYYY-MM-DD",              "YYYYMMDD",                 "DD.MM.YYYY",
    "MM/DD/YYYY HH24:MI",      "YYYYMMDDHH24MISS",         "DD-MM-YYYY HH24.MI.SS.FF9",
    "YYYY-MM-DD\"/\"HH24:MI", "yyyy-mm-dd hh24:mi:ss.ff1", "SS:MI:HH24 DD/MM/YYYY",
};

DateMask Parsed(const char* text) {
  DateMask mask;
  EXPECT_EQ(ocimem::values::ParseDateMask(text, &mask), 0) << text;
  return mask;
}

DateMask General(const DateMask& mask) {
  DateMask slow = mask;
  slow.fixed = false;
  return slow;
}

TEST(DateFixedMask, RecognisesTheFixedShapes) {
  for (const char* text : kFixedMasks) EXPECT_TRUE(Parsed(text).fixed) << text;
}

TEST(DateFixedMask, LeavesEveryOtherMaskToTheGeneralWay) {
  for (const char* text :
       {"FMYYYY-MM-DD", "FXYYYY-MM-DD", "YYYY-MM-DD HH:MI:SS", "YYYY-MON-DD", "DDTH-MM-YYYY",
        "YYYY-MM", "MM-DD", "YYYY-MM-DD\"T\"HH24:MI", "YYYY-MM-DD-DD", "YY-MM-DD",
        "RRRR-MM-DD", "SYYYY-MM-DD", "YYYY-MM-DD HH24:MI:SS TZR", "YYYY-MM-DD AM",
        "J", "YYYY-MM-DD SSSSS", "YYYY-MM-DD HH24:MI:SS.FF.FF"}) {
    EXPECT_FALSE(Parsed(text).fixed) << text;
  }
}

DateTimeFields RandomValue(std::mt19937& rng) {
  DateTimeFields v;
  const int kind = static_cast<int>(rng() % 10);
  v.year = kind == 0 ? -static_cast<int>(rng() % 4712) - 1 : 1 + static_cast<int>(rng() % 9999);
  if (kind == 1) v.year = static_cast<int>(rng() % 3) == 0 ? 1582 : 1 + static_cast<int>(rng() % 99);
  v.month = 1 + static_cast<int>(rng() % 12);
  v.day = 1 + static_cast<int>(rng() % static_cast<unsigned>(
                                   ocimem::values::DaysInMonth(v.year, v.month)));
  v.hour = static_cast<int>(rng() % 24);
  v.minute = static_cast<int>(rng() % 60);
  v.second = static_cast<int>(rng() % 60);
  v.nanos = static_cast<std::uint32_t>(rng() % 1000000000U);
  if (kind == 2) v.nanos = 0;
  return v;
}

TEST(DateFixedMask, FormatsAsTheGeneralWayOnRandomValues) {
  std::mt19937 rng(20261124);
  for (const char* text : kFixedMasks) {
    const DateMask fast = Parsed(text);
    const DateMask slow = General(fast);
    for (int i = 0; i < 4000; ++i) {
      const DateTimeFields v = RandomValue(rng);
      const bool allow_fraction = rng() % 4 != 0;
      const int fsprec = static_cast<int>(rng() % 10);
      std::string a = "stale";
      std::string b;
      const int ra = ocimem::values::FormatDateTime(fast, v, allow_fraction, fsprec, nullptr, &a);
      const int rb = ocimem::values::FormatDateTime(slow, v, allow_fraction, fsprec, nullptr, &b);
      ASSERT_EQ(ra, rb) << text << " year " << v.year;
      if (ra == 0) {
        ASSERT_EQ(a, b) << text << " year " << v.year;
      }
    }
  }
}

void ExpectSameParse(const std::string& input, const DateMask& fast, const DateMask& slow,
                     bool allow_fraction) {
  DateParseOptions options;
  options.allow_fraction = allow_fraction;
  options.current_year = 2026;
  options.current_month = 11;
  DateTimeFields a;
  DateTimeFields b;
  ZoneInput za;
  za.present = true;  // must be reset by a successful read
  ZoneInput zb;
  const int ra = ocimem::values::ParseDateTime(input, fast, options, &a, &za);
  const int rb = ocimem::values::ParseDateTime(input, slow, options, &b, &zb);
  ASSERT_EQ(ra, rb) << "\"" << input << "\"";
  if (ra != 0) return;
  EXPECT_EQ(a.year, b.year) << input;
  EXPECT_EQ(a.month, b.month) << input;
  EXPECT_EQ(a.day, b.day) << input;
  EXPECT_EQ(a.hour, b.hour) << input;
  EXPECT_EQ(a.minute, b.minute) << input;
  EXPECT_EQ(a.second, b.second) << input;
  EXPECT_EQ(a.nanos, b.nanos) << input;
  EXPECT_EQ(za.present, zb.present) << input;
}

// A text of the mask's shape with one change: a byte dropped, replaced or added.
std::string Mutated(std::string text, std::mt19937& rng) {
  const char kBytes[] = "0123456789 -:./aZ";
  if (text.empty()) return "1";
  const std::size_t at = rng() % text.size();
  switch (rng() % 4) {
    case 0: text.erase(at, 1); break;
    case 1: text[at] = kBytes[rng() % (sizeof kBytes - 1)]; break;
    case 2: text.insert(at, 1, kBytes[rng() % (sizeof kBytes - 1)]); break;
    default: text.push_back(kBytes[rng() % (sizeof kBytes - 1)]); break;
  }
  return text;
}

TEST(DateFixedMask, ReadsAsTheGeneralWayOnWrittenAndMutatedTexts) {
  std::mt19937 rng(7);
  for (const char* text : kFixedMasks) {
    const DateMask fast = Parsed(text);
    const DateMask slow = General(fast);
    for (int i = 0; i < 3000; ++i) {
      const DateTimeFields v = RandomValue(rng);
      std::string written;
      if (ocimem::values::FormatDateTime(slow, v, true, 1 + static_cast<int>(rng() % 9), nullptr,
                                         &written) != 0) {
        continue;
      }
      ExpectSameParse(written, fast, slow, true);
      ExpectSameParse(written, fast, slow, false);
      ExpectSameParse(Mutated(written, rng), fast, slow, true);
      ExpectSameParse(" " + written, fast, slow, true);
    }
  }
}

TEST(DateFixedMask, InvalidDatesAndTimesFailAsTheGeneralWay) {
  const DateMask fast = Parsed("YYYY-MM-DD HH24:MI:SS.FF");
  const DateMask slow = General(fast);
  for (const char* input :
       {"2023-02-29 00:00:00.1", "2024-02-29 00:00:00.1", "2023-04-31 10:00:00.5",
        "1582-10-10 12:00:00.0", "1582-10-15 12:00:00.0", "0000-01-01 00:00:00.0",
        "2023-13-01 00:00:00.0", "2023-00-10 00:00:00.0", "2023-01-00 00:00:00.0",
        "2023-01-01 24:00:00.0", "2023-01-01 23:60:00.0", "2023-01-01 23:59:60.0",
        "2023-01-01 23:59:59.1234567890", "2023-01-01 23:59:59.123456789",
        "2023-01-01 23:59:59.", "2023-01-01 23:59:59", "2023-1-1 1:2:3.4",
        "1500-02-29 00:00:00.0", "9999-12-31 23:59:59.999999999", "2023-01-01T23:59:59.1",
        "", "2023"}) {
    ExpectSameParse(input, fast, slow, true);
  }
}

}  // namespace
