// OCIDateTimeIntervalAdd, OCIDateTimeIntervalSub, OCIDateTimeSubtract and
// OCIDateTimeCompare on descriptors of every kind, as a program calls them.
#include <cstring>
#include <string>
#include <type_traits>

#include "oci_fixture.h"

namespace {

template <typename A, typename B>
constexpr bool Same() {
  return std::is_same<A, B>::value;
}

static_assert(Same<decltype(&OCIDateTimeIntervalAdd),
                   sword (*)(void*, OCIError*, OCIDateTime*, OCIInterval*, OCIDateTime*)>(),
              "OCIDateTimeIntervalAdd");
static_assert(Same<decltype(&OCIDateTimeIntervalSub),
                   sword (*)(void*, OCIError*, OCIDateTime*, OCIInterval*, OCIDateTime*)>(),
              "OCIDateTimeIntervalSub");
static_assert(Same<decltype(&OCIDateTimeSubtract),
                   sword (*)(void*, OCIError*, OCIDateTime*, OCIDateTime*, OCIInterval*)>(),
              "OCIDateTimeSubtract");
static_assert(Same<decltype(&OCIDateTimeCompare),
                   sword (*)(void*, OCIError*, const OCIDateTime*, const OCIDateTime*, sword*)>(),
              "OCIDateTimeCompare");

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

constexpr const char* kTs = "SYYYY-MM-DD HH24:MI:SS.FF9";
constexpr const char* kTz = "SYYYY-MM-DD HH24:MI:SS.FF9 TZR TZD";

class OciDateTimeArithTest : public OciValueTest {
 protected:
  OCIDateTime* Read(ub4 type, const char* text, const char* mask) {
    auto* dt = static_cast<OCIDateTime*>(Descriptor(type));
    EXPECT_EQ(OCIDateTimeFromText(env_, err_, T(text), std::strlen(text), T(mask),
                                  static_cast<ub1>(std::strlen(mask)), nullptr, 0, dt),
              OCI_SUCCESS)
        << text << ": " << LastMessage();
    return dt;
  }

  OCIInterval* Interval(ub4 type, const char* text) {
    auto* iv = static_cast<OCIInterval*>(Descriptor(type));
    EXPECT_EQ(OCIIntervalFromText(env_, err_, T(text), std::strlen(text), iv), OCI_SUCCESS)
        << text << ": " << LastMessage();
    return iv;
  }

  std::string Text(OCIDateTime* dt, const char* mask) {
    OraText buf[128];
    ub4 size = sizeof buf;
    EXPECT_EQ(OCIDateTimeToText(env_, err_, dt, T(mask), static_cast<ub1>(std::strlen(mask)), 9,
                                nullptr, 0, &size, buf),
              OCI_SUCCESS)
        << LastMessage();
    return std::string(reinterpret_cast<char*>(buf), size);
  }

  std::string Text(OCIInterval* iv) {
    OraText buf[64];
    size_t length = 0;
    EXPECT_EQ(OCIIntervalToText(env_, err_, iv, 9, 9, buf, sizeof buf, &length), OCI_SUCCESS)
        << LastMessage();
    return std::string(reinterpret_cast<char*>(buf), length);
  }
};

// ---- OCIDateTimeIntervalAdd / OCIDateTimeIntervalSub ----

struct MoveCase {
  const char* name;
  ub4 type;
  const char* value;      // read with kTs, or kTz for the zoned kinds
  ub4 interval_type;
  const char* interval;
  bool subtract;
  const char* result;     // written with the same mask; empty when ora != 0
  int ora;
};

constexpr ub4 kTsType = OCI_DTYPE_TIMESTAMP;
constexpr ub4 kTzType = OCI_DTYPE_TIMESTAMP_TZ;
constexpr ub4 kYm = OCI_DTYPE_INTERVAL_YM;
constexpr ub4 kDs = OCI_DTYPE_INTERVAL_DS;

const MoveCase kMoves[] = {
    {"DaySecond", kTsType, "2001-02-03 04:05:06.5", kDs, "1 02:03:04.6", false,
     " 2001-02-04 06:08:11.100000000", 0},
    {"IntoLeapDay", kTsType, "2000-02-28 23:00:00", kDs, "0 01:00:00", false,
     " 2000-02-29 00:00:00.000000000", 0},
    {"NanosecondCarriesIntoTheYear", kTsType, "2001-12-31 23:59:59.999999999", kDs,
     "0 00:00:00.000000001", false, " 2002-01-01 00:00:00.000000000", 0},
    {"NegativeInterval", kTsType, "2001-02-03 04:05:06", kDs, "-1 00:00:00.25", false,
     " 2001-02-02 04:05:05.750000000", 0},
    {"SubtractDay", kTsType, "2001-03-01 00:00:00", kDs, "1 00:00:00", true,
     " 2001-02-28 00:00:00.000000000", 0},
    {"OverTheReform", kTsType, "1582-10-04 12:00:00", kDs, "1 00:00:00", false,
     " 1582-10-15 12:00:00.000000000", 0},
    {"IntoBc", kTsType, "0001-01-01 00:00:00", kDs, "0 00:00:00.5", true,
     "-0001-12-31 23:59:59.500000000", 0},
    {"PastTheLastDay", kTsType, "9999-12-31 23:59:59.5", kDs, "0 00:00:00.5", false, "", 1841},
    {"BeforeTheFirstDay", kTsType, "-4712-01-01 00:00:00", kDs, "0 00:00:00.000000001", true, "",
     1841},
    {"Months", kTsType, "2001-01-15 04:05:06", kYm, "1-2", false, " 2002-03-15 04:05:06.000000000",
     0},
    {"MonthsBack", kTsType, "2001-01-15 00:00:00", kYm, "-1-2", false,
     " 1999-11-15 00:00:00.000000000", 0},
    {"MonthsSubtracted", kTsType, "2001-01-15 00:00:00", kYm, "1-1", true,
     " 1999-12-15 00:00:00.000000000", 0},
    // An INTERVAL YEAR TO MONTH never moves the day: a day the month lacks is ORA-01839.
    {"ThirtyFirstPlusAMonth", kTsType, "2001-01-31 00:00:00", kYm, "0-1", false, "", 1839},
    {"LeapDayPlusAYear", kTsType, "2004-02-29 00:00:00", kYm, "1-0", false, "", 1839},
    {"LeapDayPlusFourYears", kTsType, "2004-02-29 00:00:00", kYm, "4-0", false,
     " 2008-02-29 00:00:00.000000000", 0},
    {"ThirtyFirstMinusAMonth", kTsType, "2001-03-31 00:00:00", kYm, "0-1", true, "", 1839},
    {"MonthsIntoBc", kTsType, "0001-03-15 00:00:00", kYm, "0-3", true,
     "-0001-12-15 00:00:00.000000000", 0},
    {"MonthsPastTheEnd", kTsType, "9999-12-15 00:00:00", kYm, "0-1", false, "", 1841},
    {"LargestInterval", kTsType, "2001-01-15 00:00:00", kYm, "999999999-11", false, "", 1841},
    // Zoned values move as instants and keep their zone.
    {"OffsetKept", kTzType, "2001-02-03 20:00:00 -05:00", kDs, "0 05:00:00", false,
     " 2001-02-04 01:00:00.000000000 -05:00 ", 0},
    // Seen with a real client: 1969-07-20 20:18:04 UTC + 0 21:35:56 = 1969-07-21 17:54:00 UTC.
    {"ObservedUtc", kTzType, "1969-07-20 20:18:04 UTC", kDs, "0 21:35:56", false,
     " 1969-07-21 17:54:00.000000000 UTC UTC", 0},
    {"ObservedUtcBack", kTzType, "1969-07-21 17:54:00 UTC", kDs, "0 21:35:56", true,
     " 1969-07-20 20:18:04.000000000 UTC UTC", 0},
    // A day later across the spring change is 24 hours later: 13:00 daylight time.
    {"RegionAcrossSpringForward", kTzType, "2000-04-01 12:00:00 America/Los_Angeles", kDs,
     "1 00:00:00",
     false, " 2000-04-02 13:00:00.000000000 AMERICA/LOS_ANGELES PDT", 0},
    {"RegionAcrossFallBack", kTzType, "2000-10-28 12:00:00 America/Los_Angeles", kDs, "1 00:00:00",
     false,
     " 2000-10-29 11:00:00.000000000 AMERICA/LOS_ANGELES PST", 0},
    // decision DT10 (docs/ocimem.md): months are added to the UTC instant of a zoned value
    {"RegionMonthsAcrossSpringForward", kTzType, "2000-03-15 12:00:00 America/Los_Angeles", kYm,
     "0-1",
     false, " 2000-04-15 13:00:00.000000000 AMERICA/LOS_ANGELES PDT", 0},
};

class OciDateTimeMove : public OciDateTimeArithTest,
                        public ::testing::WithParamInterface<MoveCase> {};

TEST_P(OciDateTimeMove, MatchesOracle) {
  const auto& c = GetParam();
  const char* mask = c.type == kTzType ? kTz : kTs;
  OCIDateTime* in = Read(c.type, c.value, mask);
  OCIInterval* iv = Interval(c.interval_type, c.interval);
  auto* out = static_cast<OCIDateTime*>(Descriptor(c.type));
  const sword rc = c.subtract ? OCIDateTimeIntervalSub(env_, err_, in, iv, out)
                              : OCIDateTimeIntervalAdd(env_, err_, in, iv, out);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(out, mask), c.result);
}

INSTANTIATE_TEST_SUITE_P(Table, OciDateTimeMove, ::testing::ValuesIn(kMoves),
                         [](const auto& info) { return std::string(info.param.name); });

// A LOCAL TIME ZONE value is an instant: a day later is 24 hours later, whatever the
// session's clock does in between.
TEST_F(OciDateTimeArithTest, LocalTimeZoneMovesAsAnInstant) {
  setenv("ORA_SDTZ", "America/Los_Angeles", 1);
  OCIDateTime* in = Read(OCI_DTYPE_TIMESTAMP_LTZ, "2000-04-01 12:00:00", kTs);
  OCIInterval* day = Interval(kDs, "1 00:00:00");
  auto* out = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_LTZ));
  ASSERT_EQ(OCIDateTimeIntervalAdd(env_, err_, in, day, out), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(out, kTs), " 2000-04-02 13:00:00.000000000");
}

// The DATE kind keeps no fraction of a second (decision DT9, docs/ocimem.md).
TEST_F(OciDateTimeArithTest, DateKindDropsTheFraction) {
  auto* in = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_DATE));
  ASSERT_EQ(OCIDateTimeConstruct(env_, err_, in, 2001, 2, 3, 4, 5, 6, 0, nullptr, 0), OCI_SUCCESS);
  OCIInterval* iv = Interval(kDs, "0 00:00:01.75");
  auto* out = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_DATE));
  ASSERT_EQ(OCIDateTimeIntervalAdd(env_, err_, in, iv, out), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(out, "YYYY-MM-DD HH24:MI:SS"), "2001-02-03 04:05:07");
  ub1 h = 0, mi = 0, s = 0;
  ub4 fsec = 1;
  ASSERT_EQ(OCIDateTimeGetTime(env_, err_, out, &h, &mi, &s, &fsec), OCI_SUCCESS);
  EXPECT_EQ(fsec, 0U);
}

// The result may be the input descriptor itself; its kind must be the input's
// (decision DT9, docs/ocimem.md).
TEST_F(OciDateTimeArithTest, ResultDescriptor) {
  OCIDateTime* ts = Read(kTsType, "2001-02-03 04:05:06", kTs);
  OCIInterval* iv = Interval(kDs, "1 00:00:00");
  ASSERT_EQ(OCIDateTimeIntervalAdd(env_, err_, ts, iv, ts), OCI_SUCCESS);
  EXPECT_EQ(Text(ts, kTs), " 2001-02-04 04:05:06.000000000");
  auto* tz = static_cast<OCIDateTime*>(Descriptor(kTzType));
  EXPECT_EQ(OCIDateTimeIntervalAdd(env_, err_, ts, iv, tz), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-01870: the intervals or datetimes are not mutually comparable\n");
  EXPECT_EQ(OCIDateTimeIntervalSub(env_, err_, ts, iv, tz), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
}

// ---- OCIDateTimeSubtract: indate1 - indate2 as INTERVAL DAY TO SECOND ----

struct DifferenceCase {
  const char* name;
  ub4 type1;
  const char* value1;
  ub4 type2;
  const char* value2;
  const char* interval;  // written with leading precision 9 and 9 fraction digits
  int ora;
};

const DifferenceCase kDifferences[] = {
    // Seen with a real client: 1969-07-21 17:54:00 UTC - 1969-07-20 20:18:04 UTC = 0 21:35:56.
    {"Observed", kTzType, "1969-07-21 17:54:00 UTC", kTzType, "1969-07-20 20:18:04 UTC",
     "+000000000 21:35:56.000000000", 0},
    {"ObservedReversed", kTzType, "1969-07-20 20:18:04 UTC", kTzType, "1969-07-21 17:54:00 UTC",
     "-000000000 21:35:56.000000000", 0},
    {"OneDay", kTsType, "2001-03-01 00:00:00", kTsType, "2001-02-28 00:00:00",
     "+000000001 00:00:00.000000000", 0},
    {"LeapDayBetween", kTsType, "2000-03-01 00:00:00", kTsType, "2000-02-28 00:00:00",
     "+000000002 00:00:00.000000000", 0},
    {"NegativeFraction", kTsType, "2001-02-03 00:00:00.25", kTsType, "2001-02-03 00:00:00.75",
     "-000000000 00:00:00.500000000", 0},
    {"BorrowedSecond", kTsType, "2001-02-03 00:00:01.25", kTsType, "2001-02-03 00:00:00.75",
     "+000000000 00:00:00.500000000", 0},
    {"AcrossTheEra", kTsType, "0001-01-01 00:00:00", kTsType, "-0001-12-31 00:00:00",
     "+000000001 00:00:00.000000000", 0},
    {"AcrossTheReform", kTsType, "1582-10-15 00:00:00", kTsType, "1582-10-04 00:00:00",
     "+000000001 00:00:00.000000000", 0},
    {"WholeRange", kTsType, "9999-12-31 23:59:59.999999999", kTsType, "-4712-01-01 00:00:00",
     "+005373118 23:59:59.999999999", 0},
    {"AcrossZones", kTzType, "2001-02-03 12:00:00 +02:00", kTzType, "2001-02-03 12:00:00 -03:00",
     "-000000000 05:00:00.000000000", 0},
    {"SameInstantOtherZones", kTzType, "2001-02-03 12:00:00 +02:00", kTzType,
     "2001-02-03 07:00:00 -03:00", "+000000000 00:00:00.000000000", 0},
    {"RegionAcrossSpringForward", kTzType, "2000-04-02 12:00:00 America/Los_Angeles", kTzType,
     "2000-04-01 12:00:00 America/Los_Angeles", "+000000000 23:00:00.000000000", 0},
    // decision DT11 (docs/ocimem.md): which kinds are mutually comparable
    {"TimestampAndZone", kTsType, "2001-02-03 12:00:00", kTzType, "2001-02-03 12:00:00 +00:00",
     "", 1870},
    {"ZoneAndTimestamp", kTzType, "2001-02-03 12:00:00 +00:00", kTsType, "2001-02-03 12:00:00",
     "", 1870},
};

class OciDateTimeDifference : public OciDateTimeArithTest,
                              public ::testing::WithParamInterface<DifferenceCase> {};

TEST_P(OciDateTimeDifference, MatchesOracle) {
  const auto& c = GetParam();
  OCIDateTime* a = Read(c.type1, c.value1, c.type1 == kTzType ? kTz : kTs);
  OCIDateTime* b = Read(c.type2, c.value2, c.type2 == kTzType ? kTz : kTs);
  auto* iv = static_cast<OCIInterval*>(Descriptor(kDs));
  const sword rc = OCIDateTimeSubtract(env_, err_, a, b, iv);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(iv), c.interval);
}

INSTANTIATE_TEST_SUITE_P(Table, OciDateTimeDifference, ::testing::ValuesIn(kDifferences),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciDateTimeArithTest, DifferenceFieldsShareOneSign) {
  OCIDateTime* a = Read(kTzType, "1969-07-20 20:18:04 UTC", kTz);
  OCIDateTime* b = Read(kTzType, "1969-07-21 17:54:00.5 UTC", kTz);
  auto* iv = static_cast<OCIInterval*>(Descriptor(kDs));
  ASSERT_EQ(OCIDateTimeSubtract(env_, err_, a, b, iv), OCI_SUCCESS);
  sb4 d = 1, h = 1, m = 1, s = 1, f = 1;
  ASSERT_EQ(OCIIntervalGetDaySecond(env_, err_, &d, &h, &m, &s, &f, iv), OCI_SUCCESS);
  EXPECT_EQ(d, 0);
  EXPECT_EQ(h, -21);
  EXPECT_EQ(m, -35);
  EXPECT_EQ(s, -56);
  EXPECT_EQ(f, -500000000);
}

// A LOCAL TIME ZONE value and a WITH TIME ZONE value are both instants, and a DATE
// compares with a TIMESTAMP (decision DT11, docs/ocimem.md).
TEST_F(OciDateTimeArithTest, DifferenceOfComparableKinds) {
  setenv("ORA_SDTZ", "+02:00", 1);
  OCIDateTime* ltz = Read(OCI_DTYPE_TIMESTAMP_LTZ, "2001-02-03 14:00:00", kTs);
  OCIDateTime* tz = Read(kTzType, "2001-02-03 12:00:00 +00:00", kTz);
  auto* iv = static_cast<OCIInterval*>(Descriptor(kDs));
  ASSERT_EQ(OCIDateTimeSubtract(env_, err_, ltz, tz, iv), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(iv), "+000000000 00:00:00.000000000");
  auto* date = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_DATE));
  ASSERT_EQ(OCIDateTimeConstruct(env_, err_, date, 2001, 2, 3, 0, 0, 0, 0, nullptr, 0),
            OCI_SUCCESS);
  OCIDateTime* ts = Read(kTsType, "2001-02-02 12:00:00", kTs);
  ASSERT_EQ(OCIDateTimeSubtract(env_, err_, date, ts, iv), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(iv), "+000000000 12:00:00.000000000");
}

// Oracle refuses an INTERVAL YEAR TO MONTH as the difference of two datetimes.
TEST_F(OciDateTimeArithTest, YearMonthDifferenceIsRefused) {
  OCIDateTime* a = Read(kTsType, "2001-02-03 00:00:00", kTs);
  OCIDateTime* b = Read(kTsType, "2000-02-03 00:00:00", kTs);
  auto* ym = static_cast<OCIInterval*>(Descriptor(kYm));
  EXPECT_EQ(OCIDateTimeSubtract(env_, err_, a, b, ym), OCI_ERROR);
  EXPECT_EQ(LastMessage(),
            "ORA-30086: interval year-month result not allowed for datetime subtraction\n");
}

// ---- OCIDateTimeCompare: across zones the UTC instants compare ----

struct CompareCase {
  const char* name;
  ub4 type1;
  const char* value1;
  ub4 type2;
  const char* value2;
  sword result;
  int ora;
};

const CompareCase kCompares[] = {
    // Seen with a real client: 20:18:04 +00:00 and 16:18:04 -04:00 are equal.
    {"ObservedEqualAcrossZones", kTzType, "1969-07-20 20:18:04 +00:00", kTzType,
     "1969-07-20 16:18:04 -04:00", 0, 0},
    {"EarlierLocalLaterInstant", kTzType, "2001-02-03 10:00:00 -05:00", kTzType,
     "2001-02-03 12:00:00 +00:00", 1, 0},
    {"LaterLocalEarlierInstant", kTzType, "2001-02-03 12:00:00 +05:00", kTzType,
     "2001-02-03 10:00:00 +00:00", -1, 0},
    {"OverlapDaylightFirst", kTzType, "1999-10-31 01:30:10 America/Los_Angeles PDT", kTzType,
     "1999-10-31 01:30:10 America/Los_Angeles PST", -1, 0},
    {"RegionAndOffset", kTzType, "2001-07-01 12:00:00 America/Los_Angeles", kTzType,
     "2001-07-01 19:00:00 +00:00", 0, 0},
    {"Timestamps", kTsType, "2001-02-03 04:05:06.000000001", kTsType, "2001-02-03 04:05:06", 1, 0},
    {"TimestampsEqual", kTsType, "2001-02-03 04:05:06", kTsType, "2001-02-03 04:05:06", 0, 0},
    {"BcBeforeAd", kTsType, "-0001-12-31 23:59:59.999999999", kTsType, "0001-01-01 00:00:00", -1,
     0},
    // decision DT11 (docs/ocimem.md): which kinds are mutually comparable
    {"TimestampAndZone", kTsType, "2001-02-03 12:00:00", kTzType, "2001-02-03 12:00:00 +00:00", 0,
     1870},
};

class OciDateTimeOrder : public OciDateTimeArithTest,
                         public ::testing::WithParamInterface<CompareCase> {};

TEST_P(OciDateTimeOrder, MatchesOracle) {
  const auto& c = GetParam();
  OCIDateTime* a = Read(c.type1, c.value1, c.type1 == kTzType ? kTz : kTs);
  OCIDateTime* b = Read(c.type2, c.value2, c.type2 == kTzType ? kTz : kTs);
  sword result = 7;
  const sword rc = OCIDateTimeCompare(env_, err_, a, b, &result);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(result, c.result);
  sword reversed = 7;
  ASSERT_EQ(OCIDateTimeCompare(env_, err_, b, a, &reversed), OCI_SUCCESS);
  EXPECT_EQ(reversed, -c.result);
}

INSTANTIATE_TEST_SUITE_P(Table, OciDateTimeOrder, ::testing::ValuesIn(kCompares),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciDateTimeArithTest, LocalTimeZoneComparesWithZonedValues) {
  setenv("ORA_SDTZ", "America/Los_Angeles", 1);
  OCIDateTime* ltz = Read(OCI_DTYPE_TIMESTAMP_LTZ, "2001-07-01 12:00:00", kTs);
  OCIDateTime* tz = Read(kTzType, "2001-07-01 19:00:00 +00:00", kTz);
  sword result = 7;
  ASSERT_EQ(OCIDateTimeCompare(env_, err_, ltz, tz, &result), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(result, 0);
  auto* date = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_DATE));
  ASSERT_EQ(OCIDateTimeConstruct(env_, err_, date, 2001, 7, 1, 12, 0, 0, 0, nullptr, 0),
            OCI_SUCCESS);
  OCIDateTime* ts = Read(kTsType, "2001-07-01 12:00:00.5", kTs);
  ASSERT_EQ(OCIDateTimeCompare(env_, err_, date, ts, &result), OCI_SUCCESS);
  EXPECT_EQ(result, -1);
  EXPECT_EQ(OCIDateTimeCompare(env_, err_, date, ltz, &result), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
}

}  // namespace
