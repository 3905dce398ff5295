// OCIDateTimeConvert between the datetime kinds, OCIDateTimeSysTimeStamp, and
// how every new datetime call checks its handles and arguments.
#include <cstring>
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

static_assert(Same<decltype(&OCIDateTimeConvert),
                   sword (*)(void*, OCIError*, OCIDateTime*, OCIDateTime*)>(),
              "OCIDateTimeConvert");
static_assert(Same<decltype(&OCIDateTimeSysTimeStamp), sword (*)(void*, OCIError*, OCIDateTime*)>(),
              "OCIDateTimeSysTimeStamp");

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

struct Stamp {
  int year, month, day, hour, minute, second;
  ub4 nanos;
};

class OciDateTimeConvertTest : public OciValueTest {
 protected:
  OCIDateTime* Make(ub4 type, const Stamp& s, const char* zone) {
    auto* dt = static_cast<OCIDateTime*>(Descriptor(type));
    EXPECT_EQ(OCIDateTimeConstruct(env_, err_, dt, static_cast<sb2>(s.year),
                                   static_cast<ub1>(s.month), static_cast<ub1>(s.day),
                                   static_cast<ub1>(s.hour), static_cast<ub1>(s.minute),
                                   static_cast<ub1>(s.second), s.nanos,
                                   zone != nullptr ? const_cast<OraText*>(T(zone)) : nullptr,
                                   zone != nullptr ? std::strlen(zone) : 0),
              OCI_SUCCESS)
        << LastMessage();
    return dt;
  }

  Stamp Get(OCIDateTime* dt) {
    Stamp s{};
    sb2 y = 0;
    ub1 mo = 0, d = 0, h = 0, mi = 0, se = 0;
    EXPECT_EQ(OCIDateTimeGetDate(env_, err_, dt, &y, &mo, &d), OCI_SUCCESS);
    EXPECT_EQ(OCIDateTimeGetTime(env_, err_, dt, &h, &mi, &se, &s.nanos), OCI_SUCCESS);
    s.year = y;
    s.month = mo;
    s.day = d;
    s.hour = h;
    s.minute = mi;
    s.second = se;
    return s;
  }

  int OffsetMinutes(OCIDateTime* dt) {
    sb1 h = 0, m = 0;
    EXPECT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, dt, &h, &m), OCI_SUCCESS) << LastMessage();
    return h * 60 + m;
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
};

void ExpectStamp(const Stamp& got, const Stamp& want) {
  EXPECT_EQ(got.year, want.year);
  EXPECT_EQ(got.month, want.month);
  EXPECT_EQ(got.day, want.day);
  EXPECT_EQ(got.hour, want.hour);
  EXPECT_EQ(got.minute, want.minute);
  EXPECT_EQ(got.second, want.second);
  EXPECT_EQ(got.nanos, want.nanos);
}

// ---- OCIDateTimeConvert: the fields as the value shows them, the session time zone
// for a kind with a zone (decision DT12, docs/ocimem.md) ----

struct ConvertCase {
  const char* name;
  ub4 from;
  Stamp value;
  const char* zone;  // of the source, for OCIDateTimeConstruct
  ub4 to;
  const char* session;
  Stamp shown;       // what the converted value shows
  int offset;        // its offset in minutes, for the zoned kinds
};

const Stamp kStamp{2001, 2, 3, 4, 5, 6, 123456789};
constexpr ub4 kTs = OCI_DTYPE_TIMESTAMP;
constexpr ub4 kTz = OCI_DTYPE_TIMESTAMP_TZ;
constexpr ub4 kLtz = OCI_DTYPE_TIMESTAMP_LTZ;
constexpr ub4 kDate = OCI_DTYPE_DATE;

const ConvertCase kConverts[] = {
    {"TimestampToDate", kTs, kStamp, nullptr, kDate, "+00:00", {2001, 2, 3, 4, 5, 6, 0}, 0},
    {"DateToTimestamp", kDate, {2001, 2, 3, 4, 5, 6, 0}, nullptr, kTs, "+00:00",
     {2001, 2, 3, 4, 5, 6, 0}, 0},
    // The session time zone is used for a datetime without a zone (Oracle's words).
    {"TimestampToZoneTakesTheSessionZone", kTs, kStamp, nullptr, kTz, "+02:00", kStamp, 120},
    {"TimestampToZoneTakesTheSessionRegion", kTs, {2001, 7, 1, 12, 0, 0, 0}, nullptr, kTz,
     "America/Los_Angeles", {2001, 7, 1, 12, 0, 0, 0}, -420},
    {"TimestampToLocalInTheSessionZone", kTs, kStamp, nullptr, kLtz, "-03:30", kStamp, -210},
    // Seen with a real client: the zone is dropped, and LOCAL TIME ZONE keeps the time.
    {"ObservedZoneToTimestamp", kTz, {1969, 7, 24, 16, 50, 35, 0}, "UTC", kTs, "+05:00",
     {1969, 7, 24, 16, 50, 35, 0}, 0},
    {"ObservedZoneToLocal", kTz, {1969, 7, 24, 16, 50, 35, 0}, "UTC", kLtz, "+05:00",
     {1969, 7, 24, 16, 50, 35, 0}, 300},
    {"LocalToZoneIsTheSameInstant", kLtz, {2001, 2, 3, 12, 0, 0, 0}, "+00:00", kTz, "+02:00",
     {2001, 2, 3, 14, 0, 0, 0}, 120},
    {"LocalToTimestampInTheSessionZone", kLtz, {2001, 2, 3, 12, 0, 0, 0}, "+00:00", kTs,
     "America/Los_Angeles", {2001, 2, 3, 4, 0, 0, 0}, 0},
    {"ZoneToZoneKeepsTheZone", kTz, kStamp, "-08:00", kTz, "+02:00", kStamp, -480},
    {"ZoneToDate", kTz, kStamp, "+05:30", kDate, "+00:00", {2001, 2, 3, 4, 5, 6, 0}, 0},
};

class OciDateTimeConvert : public OciDateTimeConvertTest,
                           public ::testing::WithParamInterface<ConvertCase> {};

TEST_P(OciDateTimeConvert, MatchesOracle) {
  const auto& c = GetParam();
  setenv("ORA_SDTZ", c.session, 1);
  OCIDateTime* in = Make(c.from, c.value, c.zone);
  auto* out = static_cast<OCIDateTime*>(Descriptor(c.to));
  ASSERT_EQ(OCIDateTimeConvert(env_, err_, in, out), OCI_SUCCESS) << LastMessage();
  ExpectStamp(Get(out), c.shown);
  if (c.to == kTz || c.to == kLtz) {
    EXPECT_EQ(OffsetMinutes(out), c.offset);
  } else {
    sb1 h = 0, m = 0;
    EXPECT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, out, &h, &m), OCI_ERROR);
    EXPECT_EQ(LastError(), 1878);
  }
}

INSTANTIATE_TEST_SUITE_P(Table, OciDateTimeConvert, ::testing::ValuesIn(kConverts),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciDateTimeConvertTest, ConvertedRegionIsWrittenWithItsName) {
  setenv("ORA_SDTZ", "America/New_York", 1);
  OCIDateTime* in = Make(kTs, {2001, 7, 1, 12, 0, 0, 0}, nullptr);
  auto* out = static_cast<OCIDateTime*>(Descriptor(kTz));
  ASSERT_EQ(OCIDateTimeConvert(env_, err_, in, out), OCI_SUCCESS);
  EXPECT_EQ(Text(out, "YYYY-MM-DD HH24:MI TZR TZD"), "2001-07-01 12:00 AMERICA/NEW_YORK EDT");
}

TEST_F(OciDateTimeConvertTest, LocalTimeInTheSessionsSpringGapIsRefused) {
  setenv("ORA_SDTZ", "America/Los_Angeles", 1);
  OCIDateTime* in = Make(kTs, {2000, 4, 2, 2, 30, 0, 0}, nullptr);
  auto* out = static_cast<OCIDateTime*>(Descriptor(kTz));
  EXPECT_EQ(OCIDateTimeConvert(env_, err_, in, out), OCI_ERROR);
  EXPECT_EQ(LastError(), 1878);
}

// The session time zone is looked up only when the conversion needs it.
TEST_F(OciDateTimeConvertTest, BadSessionZoneFailsOnlyWhereItIsUsed) {
  setenv("ORA_SDTZ", "+00:00", 1);
  OCIDateTime* tz = Make(kTz, kStamp, "+05:30");
  OCIDateTime* ts = Make(kTs, kStamp, nullptr);
  setenv("ORA_SDTZ", "Mars/Base", 1);
  auto* out_ts = static_cast<OCIDateTime*>(Descriptor(kTs));
  EXPECT_EQ(OCIDateTimeConvert(env_, err_, tz, out_ts), OCI_SUCCESS);
  ExpectStamp(Get(out_ts), kStamp);
  auto* out_tz = static_cast<OCIDateTime*>(Descriptor(kTz));
  EXPECT_EQ(OCIDateTimeConvert(env_, err_, ts, out_tz), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-01882: timezone region not found\n");
}

TEST_F(OciDateTimeConvertTest, ConvertIntoItself) {
  OCIDateTime* ts = Make(kTs, kStamp, nullptr);
  ASSERT_EQ(OCIDateTimeConvert(env_, err_, ts, ts), OCI_SUCCESS);
  ExpectStamp(Get(ts), kStamp);
}

// ---- OCIDateTimeSysTimeStamp ----

// decision DT13 (docs/ocimem.md): the system's time, to the microsecond, with the system's
// offset; local fields for the kinds without a zone, the instant for LOCAL TIME ZONE
TEST_F(OciDateTimeConvertTest, SysTimeStampIsTheSystemClockWithItsOffset) {
  const std::time_t before = std::time(nullptr);
  auto* tz = static_cast<OCIDateTime*>(Descriptor(kTz));
  ASSERT_EQ(OCIDateTimeSysTimeStamp(env_, err_, tz), OCI_SUCCESS);
  auto* ts = static_cast<OCIDateTime*>(Descriptor(kTs));
  ASSERT_EQ(OCIDateTimeSysTimeStamp(env_, err_, ts), OCI_SUCCESS);
  auto* ltz = static_cast<OCIDateTime*>(Descriptor(kLtz));
  ASSERT_EQ(OCIDateTimeSysTimeStamp(env_, err_, ltz), OCI_SUCCESS);
  const std::time_t after = std::time(nullptr);

  std::tm tm{};
  localtime_r(&before, &tm);
  EXPECT_EQ(OffsetMinutes(tz), static_cast<int>(tm.tm_gmtoff / 60));
  EXPECT_EQ(Get(tz).nanos % 1000, 0U);

  // The TIMESTAMP holds the same local time as the zoned value.
  auto* local = static_cast<OCIDateTime*>(Descriptor(kTs));
  ASSERT_EQ(OCIDateTimeConvert(env_, err_, tz, local), OCI_SUCCESS);
  auto* gap = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_DS));
  ASSERT_EQ(OCIDateTimeSubtract(env_, err_, ts, local, gap), OCI_SUCCESS);
  sb4 d = 0, h = 0, m = 0, s = 0, f = 0;
  ASSERT_EQ(OCIIntervalGetDaySecond(env_, err_, &d, &h, &m, &s, &f, gap), OCI_SUCCESS);
  EXPECT_EQ(d, 0);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(m, 0);
  EXPECT_LE(s, static_cast<sb4>(after - before));
  EXPECT_GE(s, 0);

  // The LOCAL TIME ZONE value is the same instant as the zoned one.
  ASSERT_EQ(OCIDateTimeSubtract(env_, err_, ltz, tz, gap), OCI_SUCCESS);
  ASSERT_EQ(OCIIntervalGetDaySecond(env_, err_, &d, &h, &m, &s, &f, gap), OCI_SUCCESS);
  EXPECT_EQ(d, 0);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(m, 0);
  EXPECT_LE(s, static_cast<sb4>(after - before));
  EXPECT_GE(s, 0);

  // And the zoned value is now: between the two readings of the clock.
  auto* first = static_cast<OCIDateTime*>(Descriptor(kTz));
  std::tm utc{};
  gmtime_r(&before, &utc);
  ASSERT_EQ(OCIDateTimeConstruct(env_, err_, first, static_cast<sb2>(utc.tm_year + 1900),
                                 static_cast<ub1>(utc.tm_mon + 1), static_cast<ub1>(utc.tm_mday),
                                 static_cast<ub1>(utc.tm_hour), static_cast<ub1>(utc.tm_min),
                                 static_cast<ub1>(utc.tm_sec), 0, const_cast<OraText*>(T("+00:00")),
                                 6),
            OCI_SUCCESS);
  sword order = 7;
  ASSERT_EQ(OCIDateTimeCompare(env_, err_, first, tz, &order), OCI_SUCCESS);
  EXPECT_LE(order, 0);
}

TEST_F(OciDateTimeConvertTest, SysTimeStampIntoADateKeepsNoFraction) {
  auto* date = static_cast<OCIDateTime*>(Descriptor(kDate));
  ASSERT_EQ(OCIDateTimeSysTimeStamp(env_, err_, date), OCI_SUCCESS);
  EXPECT_EQ(Get(date).nanos, 0U);
}

// ---- handles and arguments, as the existing datetime calls check them ----

TEST_F(OciDateTimeConvertTest, NullArgumentsAndHandles) {
  OCIDateTime* ts = Make(kTs, kStamp, nullptr);
  auto* out = static_cast<OCIDateTime*>(Descriptor(kTs));
  auto* ds = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_DS));
  auto* foreign = reinterpret_cast<OCIDateTime*>(ds);  // a descriptor of the other family
  auto* not_interval = reinterpret_cast<OCIInterval*>(ts);
  sword result = 0;
  struct Row {
    const char* call;
    std::function<sword()> run;
    int position;
  };
  const Row rows[] = {
      {"IntervalAdd datetime", [&] { return OCIDateTimeIntervalAdd(env_, err_, nullptr, ds, out); },
       3},
      {"IntervalAdd interval", [&] { return OCIDateTimeIntervalAdd(env_, err_, ts, nullptr, out); },
       4},
      {"IntervalAdd interval of the other family",
       [&] { return OCIDateTimeIntervalAdd(env_, err_, ts, not_interval, out); }, 4},
      {"IntervalAdd out", [&] { return OCIDateTimeIntervalAdd(env_, err_, ts, ds, nullptr); }, 5},
      {"IntervalSub datetime", [&] { return OCIDateTimeIntervalSub(env_, err_, foreign, ds, out); },
       3},
      {"IntervalSub out", [&] { return OCIDateTimeIntervalSub(env_, err_, ts, ds, foreign); }, 5},
      {"Subtract indate1", [&] { return OCIDateTimeSubtract(env_, err_, nullptr, ts, ds); }, 3},
      {"Subtract indate2", [&] { return OCIDateTimeSubtract(env_, err_, ts, nullptr, ds); }, 4},
      {"Subtract inter", [&] { return OCIDateTimeSubtract(env_, err_, ts, ts, nullptr); }, 5},
      {"Compare date1", [&] { return OCIDateTimeCompare(env_, err_, nullptr, ts, &result); }, 3},
      {"Compare date2", [&] { return OCIDateTimeCompare(env_, err_, ts, foreign, &result); }, 4},
      {"Compare result", [&] { return OCIDateTimeCompare(env_, err_, ts, ts, nullptr); }, 5},
      {"Convert indate", [&] { return OCIDateTimeConvert(env_, err_, nullptr, out); }, 3},
      {"Convert outdate", [&] { return OCIDateTimeConvert(env_, err_, ts, foreign); }, 4},
      {"SysTimeStamp", [&] { return OCIDateTimeSysTimeStamp(env_, err_, nullptr); }, 3},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.call);
    EXPECT_EQ(r.run(), OCI_ERROR);
    EXPECT_EQ(LastMessage(), "ORA-21560: argument " + std::to_string(r.position) +
                                 " is null, invalid, or out of range\n");
  }
  EXPECT_EQ(OCIDateTimeIntervalAdd(env_, nullptr, ts, ds, out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeIntervalAdd(nullptr, err_, ts, ds, out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeIntervalSub(nullptr, err_, ts, ds, out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeSubtract(nullptr, err_, ts, ts, ds), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeCompare(env_, nullptr, ts, ts, &result), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeConvert(nullptr, err_, ts, out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeSysTimeStamp(nullptr, err_, out), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeSysTimeStamp(env_, reinterpret_cast<OCIError*>(env_), out),
            OCI_INVALID_HANDLE);
}

TEST_F(OciDateTimeConvertTest, InjectedFaultIsReported) {
  const sb4 codes[] = {1870};
  const char* const texts[] = {"the intervals or datetimes are not mutually comparable"};
  ocimemFaultArm("OCIDateTimeCompare", 1, OCI_ERROR, codes, texts, 1);
  OCIDateTime* ts = Make(kTs, kStamp, nullptr);
  sword result = 7;
  EXPECT_EQ(OCIDateTimeCompare(env_, err_, ts, ts, &result), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
  EXPECT_EQ(OCIDateTimeCompare(env_, err_, ts, ts, &result), OCI_SUCCESS);
  EXPECT_EQ(result, 0);
}

}  // namespace
