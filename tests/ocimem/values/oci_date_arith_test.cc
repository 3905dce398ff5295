// OCIDateAddDays, OCIDateAddMonths, OCIDateDaysBetween, OCIDateCompare and
// OCIDateSysDate, as a program calls them on OCIDate values.
#include <ctime>
#include <functional>
#include <string>
#include <type_traits>

#include "oci_fixture.h"

namespace {

template <typename A, typename B>
constexpr bool Same() {
  return std::is_same<A, B>::value;
}

static_assert(Same<decltype(&OCIDateAddDays), sword (*)(OCIError*, const OCIDate*, sb4, OCIDate*)>(),
              "OCIDateAddDays");
static_assert(Same<decltype(&OCIDateAddMonths),
                   sword (*)(OCIError*, const OCIDate*, sb4, OCIDate*)>(),
              "OCIDateAddMonths");
static_assert(Same<decltype(&OCIDateDaysBetween),
                   sword (*)(OCIError*, const OCIDate*, const OCIDate*, sb4*)>(),
              "OCIDateDaysBetween");
static_assert(Same<decltype(&OCIDateSysDate), sword (*)(OCIError*, OCIDate*)>(), "OCIDateSysDate");
static_assert(Same<decltype(&OCIDateCompare),
                   sword (*)(OCIError*, const OCIDate*, const OCIDate*, sword*)>(),
              "OCIDateCompare");

struct Day {
  int year, month, day, hour, minute, second;
};

OCIDate MakeDate(const Day& v) {
  OCIDate d{};
  OCIDateSetDate(&d, static_cast<sb2>(v.year), static_cast<ub1>(v.month), static_cast<ub1>(v.day));
  OCIDateSetTime(&d, static_cast<ub1>(v.hour), static_cast<ub1>(v.minute),
                 static_cast<ub1>(v.second));
  return d;
}

void ExpectDate(const OCIDate& d, const Day& v) {
  EXPECT_EQ(d.OCIDateYYYY, v.year);
  EXPECT_EQ(d.OCIDateMM, v.month);
  EXPECT_EQ(d.OCIDateDD, v.day);
  EXPECT_EQ(d.OCIDateTime.OCITimeHH, v.hour);
  EXPECT_EQ(d.OCIDateTime.OCITimeMI, v.minute);
  EXPECT_EQ(d.OCIDateTime.OCITimeSS, v.second);
}

struct MoveCase {
  const char* name;
  Day from;
  sb4 amount;
  Day to;  // expected when ora == 0
  int ora;
};

class OciDateArithTest : public OciValueTest {};

// ---- OCIDateAddDays ----

const MoveCase kAddDays[] = {
    {"NextDay", {2001, 2, 3, 4, 5, 6}, 1, {2001, 2, 4, 4, 5, 6}, 0},
    {"Zero", {2001, 2, 3, 4, 5, 6}, 0, {2001, 2, 3, 4, 5, 6}, 0},
    {"EndOfFebruary", {2001, 2, 28, 23, 59, 59}, 1, {2001, 3, 1, 23, 59, 59}, 0},
    {"LeapDay", {2000, 2, 28, 0, 0, 0}, 1, {2000, 2, 29, 0, 0, 0}, 0},
    {"NewYear", {2000, 12, 31, 12, 0, 0}, 1, {2001, 1, 1, 12, 0, 0}, 0},
    {"BackOverALeapYear", {2001, 2, 3, 0, 0, 0}, -365, {2000, 2, 4, 0, 0, 0}, 0},
    {"OverTheReform", {1582, 10, 4, 0, 0, 0}, 1, {1582, 10, 15, 0, 0, 0}, 0},
    {"BackOverTheReform", {1582, 10, 15, 0, 0, 0}, -1, {1582, 10, 4, 0, 0, 0}, 0},
    {"IntoBc", {1, 1, 1, 0, 0, 0}, -1, {-1, 12, 31, 0, 0, 0}, 0},
    {"OutOfBc", {-1, 12, 31, 0, 0, 0}, 1, {1, 1, 1, 0, 0, 0}, 0},
    {"BcLeapDay", {-1, 2, 28, 0, 0, 0}, 1, {-1, 2, 29, 0, 0, 0}, 0},
    {"LastDay", {9999, 12, 30, 0, 0, 0}, 1, {9999, 12, 31, 0, 0, 0}, 0},
    {"PastTheLastDay", {9999, 12, 31, 0, 0, 0}, 1, {}, 1841},
    {"BeforeTheFirstDay", {-4712, 1, 1, 0, 0, 0}, -1, {}, 1841},
    {"FarFuture", {2001, 2, 3, 0, 0, 0}, 2147483647, {}, 1841},
    {"FarPast", {2001, 2, 3, 0, 0, 0}, -2147483647 - 1, {}, 1841},
};

class OciDateAddDays : public OciDateArithTest, public ::testing::WithParamInterface<MoveCase> {};

TEST_P(OciDateAddDays, MatchesOracle) {
  const auto& c = GetParam();
  const OCIDate from = MakeDate(c.from);
  OCIDate to{};
  const sword rc = OCIDateAddDays(err_, &from, c.amount, &to);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  ExpectDate(to, c.to);
}

INSTANTIATE_TEST_SUITE_P(Table, OciDateAddDays, ::testing::ValuesIn(kAddDays),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- OCIDateAddMonths: the ADD_MONTHS rule ----

const MoveCase kAddMonths[] = {
    {"SameDay", {2001, 1, 15, 4, 5, 6}, 1, {2001, 2, 15, 4, 5, 6}, 0},
    {"ShorterMonthClamps", {2001, 1, 31, 0, 0, 0}, 1, {2001, 2, 28, 0, 0, 0}, 0},
    {"ShorterMonthClampsLeap", {2000, 1, 31, 0, 0, 0}, 1, {2000, 2, 29, 0, 0, 0}, 0},
    {"ThirtiethToFebruary", {2001, 1, 30, 0, 0, 0}, 1, {2001, 2, 28, 0, 0, 0}, 0},
    // Oracle's own examples: Feb. 28 + 1 month = March 31, November 30 - 3 months = August 31.
    {"LastDayStaysLast", {2001, 2, 28, 0, 0, 0}, 1, {2001, 3, 31, 0, 0, 0}, 0},
    {"LastDayStaysLastBackwards", {2001, 11, 30, 0, 0, 0}, -3, {2001, 8, 31, 0, 0, 0}, 0},
    {"LeapDayPlusAYear", {2004, 2, 29, 0, 0, 0}, 12, {2005, 2, 28, 0, 0, 0}, 0},
    {"LeapDayPlusFourYears", {2004, 2, 29, 0, 0, 0}, 48, {2008, 2, 29, 0, 0, 0}, 0},
    {"TwentyEighthOfLeapFebruary", {2004, 2, 28, 0, 0, 0}, 12, {2005, 2, 28, 0, 0, 0}, 0},
    {"LastOfFebruaryToLeapFebruary", {2003, 2, 28, 0, 0, 0}, 12, {2004, 2, 29, 0, 0, 0}, 0},
    // Seen with a real client: 2019-12-31 + 2 = 2020-02-29, + 2 = 2020-04-30, - 1 = 2020-03-31.
    {"ObservedStep1", {2019, 12, 31, 0, 0, 0}, 2, {2020, 2, 29, 0, 0, 0}, 0},
    {"ObservedStep2", {2020, 2, 29, 0, 0, 0}, 2, {2020, 4, 30, 0, 0, 0}, 0},
    {"ObservedStep3", {2020, 4, 30, 0, 0, 0}, -1, {2020, 3, 31, 0, 0, 0}, 0},
    {"BackAYear", {2001, 1, 15, 0, 0, 0}, -12, {2000, 1, 15, 0, 0, 0}, 0},
    {"NegativeAcrossTheYear", {2001, 2, 15, 0, 0, 0}, -14, {1999, 12, 15, 0, 0, 0}, 0},
    {"IntoBc", {1, 3, 15, 0, 0, 0}, -3, {-1, 12, 15, 0, 0, 0}, 0},
    {"OutOfBc", {-1, 12, 15, 0, 0, 0}, 1, {1, 1, 15, 0, 0, 0}, 0},
    {"BcLeapFebruary", {-1, 1, 31, 0, 0, 0}, 1, {-1, 2, 29, 0, 0, 0}, 0},
    // decision DT8 (docs/ocimem.md): a day the Gregorian reform dropped becomes 15 October 1582
    {"IntoTheReformGap", {1582, 9, 10, 0, 0, 0}, 1, {1582, 10, 15, 0, 0, 0}, 0},
    {"LastMonth", {9999, 11, 30, 0, 0, 0}, 1, {9999, 12, 31, 0, 0, 0}, 0},
    {"PastTheLastMonth", {9999, 12, 15, 0, 0, 0}, 1, {}, 1841},
    {"BeforeTheFirstMonth", {-4712, 1, 15, 0, 0, 0}, -1, {}, 1841},
    {"FarFuture", {2001, 2, 3, 0, 0, 0}, 2147483647, {}, 1841},
};

class OciDateAddMonths : public OciDateArithTest, public ::testing::WithParamInterface<MoveCase> {};

TEST_P(OciDateAddMonths, MatchesOracle) {
  const auto& c = GetParam();
  const OCIDate from = MakeDate(c.from);
  OCIDate to{};
  const sword rc = OCIDateAddMonths(err_, &from, c.amount, &to);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  ExpectDate(to, c.to);
}

INSTANTIATE_TEST_SUITE_P(Table, OciDateAddMonths, ::testing::ValuesIn(kAddMonths),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciDateArithTest, ResultMayBeTheInput) {
  OCIDate d = MakeDate({2001, 1, 31, 4, 5, 6});
  ASSERT_EQ(OCIDateAddMonths(err_, &d, 1, &d), OCI_SUCCESS);
  ExpectDate(d, {2001, 2, 28, 4, 5, 6});
  ASSERT_EQ(OCIDateAddDays(err_, &d, 1, &d), OCI_SUCCESS);
  ExpectDate(d, {2001, 3, 1, 4, 5, 6});
}

// ---- OCIDateDaysBetween: date1 - date2, the time of day not counted ----

struct BetweenCase {
  const char* name;
  Day date1, date2;
  sb4 days;
};

const BetweenCase kBetween[] = {
    // Seen with a real client: 6 June 1944 - 7 December 1941 = 912.
    {"Observed", {1944, 6, 6, 0, 0, 0}, {1941, 12, 7, 0, 0, 0}, 912},
    {"Reversed", {1941, 12, 7, 0, 0, 0}, {1944, 6, 6, 0, 0, 0}, -912},
    {"SameDayOtherTime", {2001, 2, 3, 23, 59, 59}, {2001, 2, 3, 0, 0, 0}, 0},
    {"TimeIgnored", {2001, 2, 3, 23, 59, 59}, {2001, 2, 4, 0, 0, 0}, -1},
    {"LeapYear", {2001, 1, 1, 0, 0, 0}, {2000, 1, 1, 0, 0, 0}, 366},
    {"AcrossTheReform", {1582, 10, 15, 0, 0, 0}, {1582, 10, 4, 0, 0, 0}, 1},
    {"AcrossTheEra", {1, 1, 1, 0, 0, 0}, {-1, 12, 31, 0, 0, 0}, 1},
    {"WholeRange", {9999, 12, 31, 0, 0, 0}, {-4712, 1, 1, 0, 0, 0}, 5373118},
};

TEST_F(OciDateArithTest, DaysBetween) {
  for (const BetweenCase& c : kBetween) {
    SCOPED_TRACE(c.name);
    const OCIDate a = MakeDate(c.date1);
    const OCIDate b = MakeDate(c.date2);
    sb4 days = 12345;
    ASSERT_EQ(OCIDateDaysBetween(err_, &a, &b, &days), OCI_SUCCESS) << LastMessage();
    EXPECT_EQ(days, c.days);
  }
}

// ---- OCIDateCompare ----

TEST_F(OciDateArithTest, CompareOrdersByDateAndTime) {
  struct Row {
    Day a, b;
    sword result;
  };
  const Row rows[] = {
      {{2001, 2, 3, 4, 5, 6}, {2001, 2, 3, 4, 5, 6}, 0},
      {{2001, 2, 3, 4, 5, 6}, {2001, 2, 3, 4, 5, 7}, -1},
      {{2001, 2, 3, 4, 5, 7}, {2001, 2, 3, 4, 5, 6}, 1},
      {{2001, 2, 3, 0, 0, 0}, {2000, 12, 31, 23, 59, 59}, 1},
      {{-1, 12, 31, 23, 59, 59}, {1, 1, 1, 0, 0, 0}, -1},
      {{-4712, 1, 1, 0, 0, 0}, {-4711, 1, 1, 0, 0, 0}, -1},
      {{1582, 10, 4, 23, 0, 0}, {1582, 10, 15, 1, 0, 0}, -1},
  };
  for (const Row& r : rows) {
    const OCIDate a = MakeDate(r.a);
    const OCIDate b = MakeDate(r.b);
    sword result = 7;
    ASSERT_EQ(OCIDateCompare(err_, &a, &b, &result), OCI_SUCCESS) << LastMessage();
    EXPECT_EQ(result, r.result) << r.a.year << "-" << r.a.month << "-" << r.a.day;
  }
}

// Oracle's calls return an error for a date that is not valid; the codes are those
// OCIDateToText gives for the same fields.
// UNCONFIRMED: oracle-datatypes.md §6.4 codes reused for a stored date that is not valid
TEST_F(OciDateArithTest, InvalidDatesAreRefused) {
  struct Row {
    Day bad;
    int ora;
  };
  const Row rows[] = {{{2001, 2, 30, 0, 0, 0}, 1839}, {{0, 1, 1, 0, 0, 0}, 1841},
                      {{2001, 13, 1, 0, 0, 0}, 1843}, {{2001, 1, 32, 0, 0, 0}, 1847},
                      {{2001, 1, 1, 24, 0, 0}, 1850}, {{2001, 1, 1, 0, 60, 0}, 1851},
                      {{2001, 1, 1, 0, 0, 60}, 1852}, {{1582, 10, 10, 0, 0, 0}, 1839}};
  const OCIDate good = MakeDate({2001, 2, 3, 0, 0, 0});
  for (const Row& r : rows) {
    SCOPED_TRACE(r.ora);
    const OCIDate bad = MakeDate(r.bad);
    OCIDate out{};
    sb4 days = 0;
    sword result = 0;
    EXPECT_EQ(OCIDateAddDays(err_, &bad, 1, &out), OCI_ERROR);
    EXPECT_EQ(LastError(), r.ora);
    EXPECT_EQ(OCIDateAddMonths(err_, &bad, 1, &out), OCI_ERROR);
    EXPECT_EQ(LastError(), r.ora);
    EXPECT_EQ(OCIDateDaysBetween(err_, &good, &bad, &days), OCI_ERROR);
    EXPECT_EQ(LastError(), r.ora);
    EXPECT_EQ(OCIDateCompare(err_, &bad, &good, &result), OCI_ERROR);
    EXPECT_EQ(LastError(), r.ora);
  }
}

// ---- OCIDateSysDate: the system's local time (decision DT13, docs/ocimem.md) ----

TEST_F(OciDateArithTest, SysDateIsTheLocalClock) {
  const auto local = [](std::time_t t) {
    std::tm tm{};
    localtime_r(&t, &tm);
    return MakeDate({tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                     tm.tm_sec > 59 ? 59 : tm.tm_sec});
  };
  const OCIDate before = local(std::time(nullptr));
  OCIDate now{};
  ASSERT_EQ(OCIDateSysDate(err_, &now), OCI_SUCCESS);
  const OCIDate after = local(std::time(nullptr));
  sword a = 2;
  sword b = 2;
  ASSERT_EQ(OCIDateCompare(err_, &before, &now, &a), OCI_SUCCESS);
  ASSERT_EQ(OCIDateCompare(err_, &now, &after, &b), OCI_SUCCESS);
  EXPECT_LE(a, 0);
  EXPECT_LE(b, 0);
}

// ---- arguments, as the other OCIDate calls check them ----

TEST_F(OciDateArithTest, NullArgumentsAndHandles) {
  const OCIDate d = MakeDate({2001, 2, 3, 0, 0, 0});
  OCIDate out{};
  sb4 days = 0;
  sword result = 0;
  struct Row {
    const char* call;
    std::function<sword()> run;
    int position;
  };
  const Row rows[] = {
      {"AddDays date", [&] { return OCIDateAddDays(err_, nullptr, 1, &out); }, 2},
      {"AddDays result", [&] { return OCIDateAddDays(err_, &d, 1, nullptr); }, 4},
      {"AddMonths date", [&] { return OCIDateAddMonths(err_, nullptr, 1, &out); }, 2},
      {"AddMonths result", [&] { return OCIDateAddMonths(err_, &d, 1, nullptr); }, 4},
      {"DaysBetween date1", [&] { return OCIDateDaysBetween(err_, nullptr, &d, &days); }, 2},
      {"DaysBetween date2", [&] { return OCIDateDaysBetween(err_, &d, nullptr, &days); }, 3},
      {"DaysBetween result", [&] { return OCIDateDaysBetween(err_, &d, &d, nullptr); }, 4},
      {"Compare date1", [&] { return OCIDateCompare(err_, nullptr, &d, &result); }, 2},
      {"Compare date2", [&] { return OCIDateCompare(err_, &d, nullptr, &result); }, 3},
      {"Compare result", [&] { return OCIDateCompare(err_, &d, &d, nullptr); }, 4},
      {"SysDate", [&] { return OCIDateSysDate(err_, nullptr); }, 2},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.call);
    EXPECT_EQ(r.run(), OCI_ERROR);
    EXPECT_EQ(LastMessage(), "ORA-21560: argument " + std::to_string(r.position) +
                                 " is null, invalid, or out of range\n");
  }
  EXPECT_EQ(OCIDateAddDays(nullptr, &d, 1, &out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateAddMonths(nullptr, &d, 1, &out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateDaysBetween(nullptr, &d, &d, &days), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateCompare(nullptr, &d, &d, &result), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateSysDate(nullptr, &out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateSysDate(reinterpret_cast<OCIError*>(env_), &out), OCI_INVALID_HANDLE);
}

TEST_F(OciDateArithTest, InjectedFaultIsReported) {
  const sb4 codes[] = {1841};
  const char* const texts[] = {"(full) year must be between -4713 and +9999, and not be 0"};
  ocimemFaultArm("OCIDateAddMonths", 1, OCI_ERROR, codes, texts, 1);
  const OCIDate d = MakeDate({2001, 2, 3, 0, 0, 0});
  OCIDate out{};
  EXPECT_EQ(OCIDateAddMonths(err_, &d, 1, &out), OCI_ERROR);
  EXPECT_EQ(LastError(), 1841);
  EXPECT_EQ(OCIDateAddMonths(err_, &d, 1, &out), OCI_SUCCESS);
}

}  // namespace
