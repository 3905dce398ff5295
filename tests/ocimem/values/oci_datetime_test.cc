// OCIDateTime and OCIDate calls: oracle-datatypes.md sections 6 and 7
// through the exported entry points, zones from the system zoneinfo.
#include <cstring>
#include <ctime>
#include <string>

#include "date_cases.h"
#include "oci_fixture.h"

namespace {

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

constexpr const char* kTsMask = "YYYY-MM-DD HH24:MI:SS.FF";
constexpr const char* kTzMask = "YYYY-MM-DD HH24:MI:SS.FF TZR TZD";

struct Stamp {
  int year, month, day, hour, minute, second;
  ub4 nanos;
};

class OciDateTimeTest : public OciValueTest {
 protected:
  OCIDateTime* Make(ub4 type, const Stamp& s, const char* zone) {
    auto* dt = static_cast<OCIDateTime*>(Descriptor(type));
    const sword rc = OCIDateTimeConstruct(
        env_, err_, dt, static_cast<sb2>(s.year), static_cast<ub1>(s.month),
        static_cast<ub1>(s.day), static_cast<ub1>(s.hour), static_cast<ub1>(s.minute),
        static_cast<ub1>(s.second), s.nanos,
        zone != nullptr ? const_cast<OraText*>(T(zone)) : nullptr,
        zone != nullptr ? std::strlen(zone) : 0);
    EXPECT_EQ(rc, OCI_SUCCESS) << LastMessage();
    return dt;
  }

  sword ToText(OCIDateTime* dt, const char* mask, int fsprec, std::string* out, ub4 size = 100) {
    std::string buf(size + 1, '\x7f');
    ub4 buf_size = size;
    const sword rc = OCIDateTimeToText(env_, err_, dt, T(mask),
                                       static_cast<ub1>(std::strlen(mask)),
                                       static_cast<ub1>(fsprec), nullptr, 0, &buf_size,
                                       reinterpret_cast<OraText*>(buf.data()));
    if (rc == OCI_SUCCESS) *out = buf.substr(0, buf_size);
    return rc;
  }

  sword FromText(OCIDateTime* dt, const char* text, const char* mask) {
    return OCIDateTimeFromText(env_, err_, T(text), std::strlen(text), T(mask),
                               static_cast<ub1>(std::strlen(mask)), nullptr, 0, dt);
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
    EXPECT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, dt, &h, &m), OCI_SUCCESS);
    return h * 60 + m;
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

// ---- output, oracle-datatypes.md 7.2 ----

struct ToTextCase {
  const char* name;
  ub4 type;
  Stamp value;
  const char* zone;
  int fsprec;
  const char* mask;
  const char* session;
  const char* text;
};

const ToTextCase kToText[] = {
    {"Row01Micro", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 123456000}, nullptr, 6, kTsMask,
     "+00:00", "2001-02-03 04:05:06.123456"},
    {"Row02ZeroFraction", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 0}, nullptr, 6, kTsMask,
     "+00:00", "2001-02-03 04:05:06.000000"},
    {"Row03OneDigit", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 500000000}, nullptr, 1, kTsMask,
     "+00:00", "2001-02-03 04:05:06.5"},
    {"Row04Nano", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 123456789}, nullptr, 9, kTsMask,
     "+00:00", "2001-02-03 04:05:06.123456789"},
    // UNCONFIRMED: oracle-datatypes.md §7.2 row 5 (cut)
    {"Row05Cut", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 123456789}, nullptr, 3, kTsMask,
     "+00:00", "2001-02-03 04:05:06.123"},
    // UNCONFIRMED: oracle-datatypes.md §7.2 row 6 (cut, not carried)
    {"Row06NoCarry", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 999999900}, nullptr, 6, kTsMask,
     "+00:00", "2001-02-03 04:05:06.999999"},
    {"Row07NoFractionInMask", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 123000000}, nullptr, 6,
     "YYYY-MM-DD HH24:MI:SS", "+00:00", "2001-02-03 04:05:06"},
    // UNCONFIRMED: oracle-datatypes.md §7.2 row 8 (empty TZD)
    {"Row08OffsetEmptyTzd", OCI_DTYPE_TIMESTAMP_TZ, {2001, 2, 3, 4, 5, 6, 250000000}, "+05:30", 2,
     kTzMask, "+00:00", "2001-02-03 04:05:06.25 +05:30 "},
    // UNCONFIRMED: oracle-datatypes.md §7.2 row 9 (empty TZD)
    {"Row09NegativeOffset", OCI_DTYPE_TIMESTAMP_TZ, {2001, 2, 3, 4, 5, 6, 250000000}, "-08:00", 2,
     kTzMask, "+00:00", "2001-02-03 04:05:06.25 -08:00 "},
    {"Row10RegionDaylight", OCI_DTYPE_TIMESTAMP_TZ, {1999, 10, 1, 1, 30, 10, 0},
     "America/Los_Angeles", 2, kTzMask, "+00:00", "1999-10-01 01:30:10.00 AMERICA/LOS_ANGELES PDT"},
    {"Row11RegionStandard", OCI_DTYPE_TIMESTAMP_TZ, {1999, 12, 1, 1, 30, 10, 0},
     "America/Los_Angeles", 0, "YYYY-MM-DD HH24:MI:SS TZR TZD", "+00:00",
     "1999-12-01 01:30:10 AMERICA/LOS_ANGELES PST"},
    {"Row12LocalInSessionOffset", OCI_DTYPE_TIMESTAMP_LTZ, {2001, 2, 3, 12, 0, 0, 0}, "+00:00", 6,
     kTsMask, "+02:00", "2001-02-03 14:00:00.000000"},
    {"Row13OneMicro", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 1000}, nullptr, 6, kTsMask,
     "+00:00", "2001-02-03 04:05:06.000001"},
    {"Row14FirstYear", OCI_DTYPE_TIMESTAMP, {1, 1, 1, 0, 0, 0, 0}, nullptr, 6, kTsMask, "+00:00",
     "0001-01-01 00:00:00.000000"},
    {"Row15Last", OCI_DTYPE_TIMESTAMP, {9999, 12, 31, 23, 59, 59, 999999999}, nullptr, 9, kTsMask,
     "+00:00", "9999-12-31 23:59:59.999999999"},
    // UNCONFIRMED: oracle-datatypes.md §7.2 row 16 (empty TZD)
    {"Row16Utc", OCI_DTYPE_TIMESTAMP_TZ, {2001, 2, 3, 4, 5, 6, 123000000}, "+00:00", 3, kTzMask,
     "+00:00", "2001-02-03 04:05:06.123 +00:00 "},
    {"Row17LocalInSessionRegion", OCI_DTYPE_TIMESTAMP_LTZ, {2001, 7, 1, 12, 0, 0, 0}, "+00:00", 6,
     kTsMask, "America/Los_Angeles", "2001-07-01 05:00:00.000000"},
    {"RegionCaseFolded", OCI_DTYPE_TIMESTAMP_TZ, {2022, 10, 27, 10, 19, 37, 0}, "america/new_york",
     0, "YYYY-MM-DD HH24-MI-SS TZR TZD", "+00:00", "2022-10-27 10-19-37 AMERICA/NEW_YORK EDT"},
    {"TzhTzm", OCI_DTYPE_TIMESTAMP_TZ, {2001, 2, 3, 4, 5, 6, 0}, "-03:30", 0,
     "YYYY-MM-DD HH24:MI:SS TZH:TZM", "+00:00", "2001-02-03 04:05:06 -03:30"},
    {"FixedDigitsFf3", OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 123456789}, nullptr, 9,
     "HH24:MI:SS.FF3", "+00:00", "04:05:06.123"},
    {"SessionRegionAppliesWithoutZone", OCI_DTYPE_TIMESTAMP_TZ, {2001, 7, 1, 12, 0, 0, 0},
     nullptr, 0, "YYYY-MM-DD HH24:MI:SS TZR TZD", "America/New_York",
     "2001-07-01 12:00:00 AMERICA/NEW_YORK EDT"},
};

class OciDateTimeToText : public OciDateTimeTest,
                          public ::testing::WithParamInterface<ToTextCase> {};

TEST_P(OciDateTimeToText, MatchesOracle) {
  const auto& c = GetParam();
  setenv("ORA_SDTZ", c.session, 1);
  OCIDateTime* dt = Make(c.type, c.value, c.zone);
  std::string text;
  ASSERT_EQ(ToText(dt, c.mask, c.fsprec, &text), OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(text, c.text);
}

INSTANTIATE_TEST_SUITE_P(Sheet, OciDateTimeToText, ::testing::ValuesIn(kToText),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciDateTimeTest, TextExactlyFillingTheBufferHasNoTerminator) {
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 0}, nullptr);
  std::string buf(20, '\x7f');
  ub4 size = 19;
  ASSERT_EQ(OCIDateTimeToText(env_, err_, dt, T("YYYY-MM-DD HH24:MI:SS"), 21, 0, nullptr, 0,
                              &size, reinterpret_cast<OraText*>(buf.data())),
            OCI_SUCCESS);
  EXPECT_EQ(size, 19U);
  EXPECT_EQ(buf.substr(0, 19), "2001-02-03 04:05:06");
  EXPECT_EQ(buf[19], '\x7f');
}

TEST_F(OciDateTimeTest, TextLongerThanTheBufferFails) {
  // UNCONFIRMED: oracle-datatypes.md §6.2 buffer rule (ORA-01877)
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 0}, nullptr);
  std::string text;
  ASSERT_EQ(ToText(dt, kTsMask, 6, &text, 20), OCI_ERROR);
  EXPECT_EQ(LastError(), 1877);
}

TEST_F(OciDateTimeTest, PrecisionAboveNineIsRefused) {
  // UNCONFIRMED: oracle-datatypes.md §1 ORA-30088 (which calls check)
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 0}, nullptr);
  std::string text;
  ASSERT_EQ(ToText(dt, kTsMask, 10, &text), OCI_ERROR);
  EXPECT_EQ(LastError(), 30088);
}

TEST_F(OciDateTimeTest, ZoneElementOnPlainTimestampIsRefused) {
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 0}, nullptr);
  std::string text;
  ASSERT_EQ(ToText(dt, kTzMask, 6, &text), OCI_ERROR);
  EXPECT_EQ(LastError(), 1821);
}

// ---- input, oracle-datatypes.md 7.4 ----

struct FromTextCase {
  const char* name;
  ub4 type;
  const char* text;
  const char* mask;
  Stamp value;
  int offset_minutes;
  int ora;
};

const FromTextCase kFromText[] = {
    {"Row01Offset", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.123456 +05:30", kTzMask,
     {2001, 2, 3, 4, 5, 6, 123456000}, 330, 0},
    // UNCONFIRMED: oracle-datatypes.md §7.4 row 2 (empty TZD)
    {"Row02EmptyTzd", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.123456 +05:30 ", kTzMask,
     {2001, 2, 3, 4, 5, 6, 123456000}, 330, 0},
    {"Row03OneDigitHour", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.5 -8:00", kTzMask,
     {2001, 2, 3, 4, 5, 6, 500000000}, -480, 0},
    {"Row04NoFraction", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06 +00:00", kTzMask,
     {2001, 2, 3, 4, 5, 6, 0}, 0, 0},
    {"Row05RegionStandard", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.1 America/Los_Angeles PST",
     kTzMask, {2001, 2, 3, 4, 5, 6, 100000000}, -480, 0},
    {"Row06OverlapDaylight", OCI_DTYPE_TIMESTAMP_TZ,
     "1999-10-31 01:30:10.00 America/Los_Angeles PDT",
     kTzMask, {1999, 10, 31, 1, 30, 10, 0}, -420, 0},
    {"Row07OverlapStandard", OCI_DTYPE_TIMESTAMP_TZ,
     "1999-10-31 01:30:10.00 America/Los_Angeles PST",
     kTzMask, {1999, 10, 31, 1, 30, 10, 0}, -480, 0},
    {"Row08Gap", OCI_DTYPE_TIMESTAMP_TZ, "2000-04-02 02:30:00.00 America/Los_Angeles", kTzMask,
     {}, 0, 1878},
    {"Row09UnknownRegion", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.1 Mars/Base", kTzMask, {},
     0, 1882},
    {"Row10SessionZone", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.1", kTzMask,
     {2001, 2, 3, 4, 5, 6, 100000000}, 180, 0},
    {"Row11Hour25", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 25:05:06.1 +01:00", kTzMask, {}, 0, 1850},
    {"Row12Feb30", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-30 04:05:06.1 +01:00", kTzMask, {}, 0, 1839},
    {"Row13Junk", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.1 +01:00 PST junk", kTzMask, {}, 0,
     1830},
    // UNCONFIRMED: oracle-datatypes.md §7.4 row 14 (ORA-01880 for a tenth digit)
    {"Row14TenDigits", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06.1234567891 +01:00", kTzMask,
     {}, 0, 1880},
    {"Row15FractionWithoutFf", OCI_DTYPE_TIMESTAMP, "2001-02-03 04:05:06.5",
     "YYYY-MM-DD HH24:MI:SS", {}, 0, 1830},
    {"DemoUpperCaseRegion", OCI_DTYPE_TIMESTAMP_TZ, "2000-4-1 23:24:54 AMERICA/LOS_ANGELES",
     "YYYY-MM-DD HH24:MI:SS TZR", {2000, 4, 1, 23, 24, 54, 0}, -480, 0},
    {"PlainTimestamp", OCI_DTYPE_TIMESTAMP, "2001-02-03 04:05:06.000001", kTsMask,
     {2001, 2, 3, 4, 5, 6, 1000}, 0, 0},
    {"PlainTimestampRefusesZoneMask", OCI_DTYPE_TIMESTAMP, "2001-02-03 04:05:06 +01:00", kTzMask,
     {}, 0, 1821},
    {"OffsetHourOutOfRange", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06 +16:00", kTzMask, {}, 0,
     1874},
    {"OffsetMinuteOutOfRange", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06 +01:60", kTzMask, {},
     0, 1875},
    // UNCONFIRMED: oracle-datatypes.md §7.3 (TZD not of the region: ORA-01857)
    {"ForeignAbbreviation", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06 America/Los_Angeles EST",
     kTzMask,
     {}, 0, 1857},
    {"ZoneHourAndMinute", OCI_DTYPE_TIMESTAMP_TZ, "2001-02-03 04:05:06 -03:30",
     "YYYY-MM-DD HH24:MI:SS TZH:TZM", {2001, 2, 3, 4, 5, 6, 0}, -210, 0},
    {"LocalTimeZoneWithOffsetText", OCI_DTYPE_TIMESTAMP_LTZ, "2001-02-03 04:05:06 +01:00",
     "YYYY-MM-DD HH24:MI:SS TZR", {2001, 2, 3, 6, 5, 6, 0}, 0, 0},
    {"MissingDay", OCI_DTYPE_TIMESTAMP, "1582-10-10 12:34:56", "YYYY-MM-DD HH24:MI:SS",
     {1582, 10, 15, 12, 34, 56, 0}, 0, 0},
};

class OciDateTimeFromText : public OciDateTimeTest,
                            public ::testing::WithParamInterface<FromTextCase> {};

TEST_P(OciDateTimeFromText, MatchesOracle) {
  const auto& c = GetParam();
  setenv("ORA_SDTZ", "+03:00", 1);
  auto* dt = static_cast<OCIDateTime*>(Descriptor(c.type));
  const sword rc = FromText(dt, c.text, c.mask);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  ExpectStamp(Get(dt), c.value);
  if (c.type == OCI_DTYPE_TIMESTAMP_TZ) {
    EXPECT_EQ(OffsetMinutes(dt), c.offset_minutes);
  }
}

INSTANTIATE_TEST_SUITE_P(Sheet, OciDateTimeFromText, ::testing::ValuesIn(kFromText),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciDateTimeTest, WrittenTextReadsBack) {
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP_TZ, {1999, 10, 31, 1, 30, 10, 0},
      "America/Los_Angeles");
  std::string text;
  ASSERT_EQ(ToText(dt, kTzMask, 2, &text), OCI_SUCCESS);
  auto* back = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  ASSERT_EQ(FromText(back, text.c_str(), kTzMask), OCI_SUCCESS) << text;
  std::string again;
  ASSERT_EQ(ToText(back, kTzMask, 2, &again), OCI_SUCCESS);
  EXPECT_EQ(again, text);
}

// Regions whose abbreviations are numbers (`+04`, `-03`) are written with
// them, so they must read back, and they still pick one side of an overlap.
TEST_F(OciDateTimeTest, NumericZoneAbbreviationsReadBack) {
  const char* texts[] = {"2021-02-03 04:05:06.00 ASIA/DUBAI +04",
                         "2021-02-03 04:05:06.00 AMERICA/SAO_PAULO -03",
                         "2001-02-03 04:05:06.00 AMERICA/SAO_PAULO -02",
                         "2021-02-03 04:05:06.00 ETC/GMT+5 -05"};
  for (const char* text : texts) {
    auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
    ASSERT_EQ(FromText(dt, text, kTzMask), OCI_SUCCESS) << text << " " << LastMessage();
    std::string out;
    ASSERT_EQ(ToText(dt, kTzMask, 2, &out), OCI_SUCCESS);
    EXPECT_EQ(out, text);
  }
  // Sao Paulo left daylight time at midnight on 18 Feb 2001: 23:30 on the
  // 17th happened twice.
  auto* summer = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  auto* winter = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  ASSERT_EQ(FromText(summer, "2001-02-17 23:30:00.00 America/Sao_Paulo -02", kTzMask),
            OCI_SUCCESS);
  ASSERT_EQ(FromText(winter, "2001-02-17 23:30:00.00 America/Sao_Paulo -03", kTzMask),
            OCI_SUCCESS);
  sb1 hour = 0;
  sb1 minute = 0;
  ASSERT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, summer, &hour, &minute), OCI_SUCCESS);
  EXPECT_EQ(hour, -2);
  ASSERT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, winter, &hour, &minute), OCI_SUCCESS);
  EXPECT_EQ(hour, -3);
}

TEST_F(OciDateTimeTest, OffsetTextReadsBack) {
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP_TZ, {2001, 2, 3, 4, 5, 6, 250000000}, "-03:30");
  std::string text;
  ASSERT_EQ(ToText(dt, kTzMask, 2, &text), OCI_SUCCESS);
  auto* back = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  ASSERT_EQ(FromText(back, text.c_str(), kTzMask), OCI_SUCCESS) << text;
  EXPECT_EQ(OffsetMinutes(back), -210);
}

TEST_F(OciDateTimeTest, OffsetWestIsNegativeInBothParts) {
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP_TZ, {2001, 2, 3, 4, 5, 6, 0}, "-03:30");
  sb1 h = 0, m = 0;
  ASSERT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, dt, &h, &m), OCI_SUCCESS);
  EXPECT_EQ(h, -3);
  EXPECT_EQ(m, -30);
}

TEST_F(OciDateTimeTest, PlainTimestampHasNoOffset) {
  // UNCONFIRMED: oci-semantics.md 11.3 (error for a value without zone)
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP, {2001, 2, 3, 4, 5, 6, 0}, nullptr);
  sb1 h = 0, m = 0;
  EXPECT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, dt, &h, &m), OCI_ERROR);
  EXPECT_EQ(LastError(), 1878);
}

TEST_F(OciDateTimeTest, LocalTimeZoneValueIsShownInTheSessionZone) {
  setenv("ORA_SDTZ", "+00:00", 1);
  OCIDateTime* dt = Make(OCI_DTYPE_TIMESTAMP_LTZ, {2001, 2, 3, 12, 0, 0, 0}, nullptr);
  setenv("ORA_SDTZ", "-05:00", 1);
  ExpectStamp(Get(dt), {2001, 2, 3, 7, 0, 0, 0});
  EXPECT_EQ(OffsetMinutes(dt), -300);
}

TEST_F(OciDateTimeTest, DateDescriptorKeepsNoFraction) {
  OCIDateTime* dt = Make(OCI_DTYPE_DATE, {2001, 2, 3, 4, 5, 6, 123456789}, nullptr);
  ExpectStamp(Get(dt), {2001, 2, 3, 4, 5, 6, 0});
}

TEST_F(OciDateTimeTest, ConstructValidatesFields) {
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  struct Bad {
    Stamp s;
    int ora;
  };
  const Bad bad[] = {{{2001, 2, 29, 0, 0, 0, 0}, 1839}, {{2001, 13, 1, 0, 0, 0, 0}, 1843},
                     {{2001, 1, 32, 0, 0, 0, 0}, 1847}, {{0, 1, 1, 0, 0, 0, 0}, 1841},
                     {{2001, 1, 1, 24, 0, 0, 0}, 1850}, {{2001, 1, 1, 0, 60, 0, 0}, 1851},
                     {{2001, 1, 1, 0, 0, 60, 0}, 1852}, {{2001, 1, 1, 0, 0, 0, 1000000000}, 1880},
                     {{1582, 10, 10, 0, 0, 0, 0}, 1839}};
  for (const Bad& b : bad) {
    EXPECT_EQ(OCIDateTimeConstruct(env_, err_, dt, static_cast<sb2>(b.s.year),
                                   static_cast<ub1>(b.s.month), static_cast<ub1>(b.s.day),
                                   static_cast<ub1>(b.s.hour), static_cast<ub1>(b.s.minute),
                                   static_cast<ub1>(b.s.second), b.s.nanos, nullptr, 0),
              OCI_ERROR);
    EXPECT_EQ(LastError(), b.ora);
  }
}

TEST_F(OciDateTimeTest, ConstructRejectsUnknownRegion) {
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  OraText zone[] = "Mars/Base";
  EXPECT_EQ(OCIDateTimeConstruct(env_, err_, dt, 2001, 1, 1, 0, 0, 0, 0, zone, 9), OCI_ERROR);
  EXPECT_EQ(LastError(), 1882);
  EXPECT_EQ(LastMessage(), "ORA-01882: timezone region not found\n");
}

TEST_F(OciDateTimeTest, ConstructRejectsMalformedOffsetMinute) {
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  OraText zone[] = "-03:-30";
  EXPECT_EQ(OCIDateTimeConstruct(env_, err_, dt, 2001, 1, 1, 0, 0, 0, 0, zone, 7), OCI_ERROR);
  EXPECT_EQ(LastError(), 1875);
}

// UNCONFIRMED: oci-semantics.md 2.2 (ORA-21560 for a pointer that is not a descriptor)
TEST_F(OciDateTimeTest, InvalidHandlesAndDescriptors) {
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  EXPECT_EQ(OCIDateTimeConstruct(nullptr, err_, dt, 2001, 1, 1, 0, 0, 0, 0, nullptr, 0),
            OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIDateTimeConstruct(env_, nullptr, dt, 2001, 1, 1, 0, 0, 0, 0, nullptr, 0),
            OCI_INVALID_HANDLE);
  int not_a_descriptor = 0;
  EXPECT_EQ(OCIDateTimeConstruct(env_, err_, reinterpret_cast<OCIDateTime*>(&not_a_descriptor),
                                 2001, 1, 1, 0, 0, 0, 0, nullptr, 0),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
  auto* interval = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_INTERVAL_DS));
  EXPECT_EQ(OCIDateTimeConstruct(env_, err_, interval, 2001, 1, 1, 0, 0, 0, 0, nullptr, 0),
            OCI_ERROR);
}

TEST_F(OciDateTimeTest, BadSessionZoneIsReported) {
  setenv("ORA_SDTZ", "Nowhere/Land", 1);
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  EXPECT_EQ(FromText(dt, "2001-02-03 04:05:06", kTzMask), OCI_ERROR);
  EXPECT_EQ(LastError(), 1882);
}

// The session time zone matters only to values that are shown or read in it:
// a bad setting leaves every other value alone.
TEST_F(OciDateTimeTest, BadSessionZoneSparesValuesThatDoNotUseIt) {
  setenv("ORA_SDTZ", "Nowhere/Land", 1);
  auto* plain = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  ASSERT_EQ(FromText(plain, "2001-02-03 04:05:06.5", kTsMask), OCI_SUCCESS);
  std::string text;
  ASSERT_EQ(ToText(plain, kTsMask, 1, &text), OCI_SUCCESS);
  EXPECT_EQ(text, "2001-02-03 04:05:06.5");
  auto* zoned = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_TZ));
  ASSERT_EQ(FromText(zoned, "2001-02-03 04:05:06.5 +05:30", kTzMask), OCI_SUCCESS);
  ASSERT_EQ(ToText(zoned, kTzMask, 1, &text), OCI_SUCCESS);
  EXPECT_EQ(text, "2001-02-03 04:05:06.5 +05:30 ");
  sb1 hour = 0;
  sb1 minute = 0;
  ASSERT_EQ(OCIDateTimeGetTimeZoneOffset(env_, err_, zoned, &hour, &minute), OCI_SUCCESS);
  EXPECT_EQ(hour, 5);
  EXPECT_EQ(minute, 30);
  auto* local = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP_LTZ));
  EXPECT_EQ(FromText(local, "2001-02-03 04:05:06.5", kTsMask), OCI_ERROR);
  EXPECT_EQ(LastError(), 1882);
  EXPECT_EQ(ToText(local, kTsMask, 1, &text), OCI_ERROR);
  EXPECT_EQ(LastError(), 1882);
  EXPECT_EQ(OCIDateTimeConstruct(env_, err_, zoned, 2001, 2, 3, 4, 5, 6, 0, nullptr, 0),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1882);
  const std::string zone = "+01:00";
  EXPECT_EQ(OCIDateTimeConstruct(env_, err_, zoned, 2001, 2, 3, 4, 5, 6, 0,
                                 const_cast<OraText*>(T(zone.c_str())), zone.size()),
            OCI_SUCCESS);
}

TEST_F(OciDateTimeTest, InjectedFaultIsReported) {
  const sb4 codes[] = {1843};
  const char* messages[] = {"not a valid month"};
  ocimemFaultArm("OCIDateTimeFromText", 1, OCI_ERROR, codes, messages, 1);
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  EXPECT_EQ(FromText(dt, "2001-02-03 04:05:06", "YYYY-MM-DD HH24:MI:SS"), OCI_ERROR);
  EXPECT_EQ(LastError(), 1843);
}

// ---- OCIDate through the calls ----

class OciDateTest : public OciValueTest {};

TEST_F(OciDateTest, ToTextTableThroughTheCall) {
  for (const auto& c : date_cases::kToText) {
    SCOPED_TRACE(c.name);
    OCIDate d{};
    OCIDateSetDate(&d, static_cast<sb2>(c.date.year), static_cast<ub1>(c.date.month),
                   static_cast<ub1>(c.date.day));
    OCIDateSetTime(&d, static_cast<ub1>(c.date.hour), static_cast<ub1>(c.date.minute),
                   static_cast<ub1>(c.date.second));
    OraText buf[64];
    ub4 size = sizeof buf;
    ASSERT_EQ(OCIDateToText(err_, &d, T(c.mask), static_cast<ub1>(std::strlen(c.mask)), nullptr, 0,
                            &size, buf),
              OCI_SUCCESS)
        << LastMessage();
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), c.text);
  }
}

TEST_F(OciDateTest, FromTextTableThroughTheCall) {
  // The library reads the machine clock; rows that depend on it are checked
  // below and by the algorithm tests.
  for (const auto& c : date_cases::kFromText) {
    if (c.uses_clock) continue;
    SCOPED_TRACE(c.name);
    OCIDate d{};
    const ub4 length = c.length != 0 ? c.length : static_cast<ub4>(std::strlen(c.text));
    const sword rc = OCIDateFromText(err_, T(c.text), length, T(c.mask),
                                     static_cast<ub1>(std::strlen(c.mask)), nullptr, 0, &d);
    if (c.ora != 0) {
      ASSERT_EQ(rc, OCI_ERROR);
      EXPECT_EQ(LastError(), c.ora);
      continue;
    }
    ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
    sb2 y = 0;
    ub1 mo = 0, dd = 0, h = 0, mi = 0, s = 0;
    OCIDateGetDate(&d, &y, &mo, &dd);
    OCIDateGetTime(&d, &h, &mi, &s);
    EXPECT_EQ(y, c.date.year);
    EXPECT_EQ(mo, c.date.month);
    EXPECT_EQ(dd, c.date.day);
    EXPECT_EQ(h, c.date.hour);
    EXPECT_EQ(mi, c.date.minute);
    EXPECT_EQ(s, c.date.second);
  }
}

TEST_F(OciDateTest, TwoDigitYearTakesTheMachineCentury) {
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  const int century = (tm.tm_year + 1900) / 100 * 100;
  OCIDate d{};
  ASSERT_EQ(OCIDateFromText(err_, T("03-FEB-99"), 9, T("DD-MON-YY"), 9, nullptr, 0, &d),
            OCI_SUCCESS);
  EXPECT_EQ(d.OCIDateYYYY, century + 99);
  ASSERT_EQ(OCIDateFromText(err_, T("01:05 PM"), 8, T("HH12:MI PM"), 10, nullptr, 0, &d),
            OCI_SUCCESS);
  EXPECT_EQ(d.OCIDateMM, tm.tm_mon + 1);
  EXPECT_EQ(d.OCIDateDD, 1);
  EXPECT_EQ(d.OCIDateTime.OCITimeHH, 13);
}

TEST_F(OciDateTest, NineteenByteBufferForNineteenByteText) {
  OCIDate d{};
  OCIDateSetDate(&d, 2001, 2, 3);
  OCIDateSetTime(&d, 4, 5, 6);
  char buf[20];
  std::memset(buf, 0x7f, sizeof buf);
  ub4 size = 19;
  ASSERT_EQ(OCIDateToText(err_, &d, T(date_cases::kFull), 21, nullptr, 0, &size,
                          reinterpret_cast<OraText*>(buf)),
            OCI_SUCCESS);
  EXPECT_EQ(size, 19U);
  EXPECT_EQ(std::string(buf, 19), "2001-02-03 04:05:06");
  EXPECT_EQ(buf[19], 0x7f);
}

TEST_F(OciDateTest, NullMaskMeansDefault) {
  OCIDate d{};
  OCIDateSetDate(&d, 2001, 2, 3);
  OraText buf[32];
  ub4 size = sizeof buf;
  ASSERT_EQ(OCIDateToText(err_, &d, nullptr, 0, nullptr, 0, &size, buf), OCI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), "03-FEB-01");
}

// UNCONFIRMED: oracle-datatypes.md §6.4 codes reused for a stored date that is not valid
TEST_F(OciDateTest, InvalidStoredDateIsRejected) {
  OCIDate d{};
  OCIDateSetDate(&d, 2001, 2, 30);
  OraText buf[32];
  ub4 size = sizeof buf;
  EXPECT_EQ(OCIDateToText(err_, &d, T(date_cases::kFull), 21, nullptr, 0, &size, buf), OCI_ERROR);
  EXPECT_EQ(LastError(), 1839);
}

TEST_F(OciDateTest, FractionElementIsNotADateElement) {
  OCIDate d{};
  OCIDateSetDate(&d, 2001, 2, 3);
  OraText buf[32];
  ub4 size = sizeof buf;
  EXPECT_EQ(OCIDateToText(err_, &d, T("SS.FF"), 5, nullptr, 0, &size, buf), OCI_ERROR);
  EXPECT_EQ(LastError(), 1821);
}

// UNCONFIRMED: oracle-datatypes.md §0 (AMERICAN only; the code given for another language)
TEST_F(OciDateTest, OtherLanguagesAreRefused) {
  OCIDate d{};
  OCIDateSetDate(&d, 2001, 2, 3);
  OraText buf[32];
  ub4 size = sizeof buf;
  EXPECT_EQ(OCIDateToText(err_, &d, T(date_cases::kShort), 9, T("GERMAN"), 6, &size, buf),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 12705);
  size = sizeof buf;
  EXPECT_EQ(OCIDateToText(err_, &d, T(date_cases::kShort), 9, T("american"), 8, &size, buf),
            OCI_SUCCESS);
}

TEST_F(OciDateTest, ErrorTextIsOracles) {
  OCIDate d{};
  ASSERT_EQ(OCIDateFromText(err_, T("2001-02-03T04:05:06"), 19, T(date_cases::kFull), 21, nullptr,
                            0, &d),
            OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-01861: literal does not match format string\n");
}

}  // namespace
