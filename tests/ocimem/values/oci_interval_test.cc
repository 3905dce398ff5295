// OCIInterval calls: oracle-datatypes.md section 8 through the entry points.
#include <cstring>
#include <string>

#include "oci_fixture.h"

namespace {

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

struct Ds {
  sb4 days, hours, minutes, seconds, nanos;
};

class OciIntervalTest : public OciValueTest {
 protected:
  OCIInterval* YearMonth(sb4 years, sb4 months) {
    auto* iv = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_YM));
    EXPECT_EQ(OCIIntervalSetYearMonth(env_, err_, years, months, iv), OCI_SUCCESS);
    return iv;
  }

  OCIInterval* DaySecond(const Ds& v) {
    auto* iv = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_DS));
    EXPECT_EQ(OCIIntervalSetDaySecond(env_, err_, v.days, v.hours, v.minutes, v.seconds, v.nanos,
                                      iv),
              OCI_SUCCESS);
    return iv;
  }

  std::string Text(OCIInterval* iv, int lfprec, int fsprec) {
    OraText buf[64];
    size_t length = 0;
    EXPECT_EQ(OCIIntervalToText(env_, err_, iv, static_cast<ub1>(lfprec),
                                static_cast<ub1>(fsprec), buf, sizeof buf, &length),
              OCI_SUCCESS)
        << LastMessage();
    return std::string(reinterpret_cast<char*>(buf), length);
  }

  sword FromText(OCIInterval* iv, const char* text) {
    return OCIIntervalFromText(env_, err_, T(text), std::strlen(text), iv);
  }

  Ds GetDs(OCIInterval* iv) {
    Ds v{};
    EXPECT_EQ(OCIIntervalGetDaySecond(env_, err_, &v.days, &v.hours, &v.minutes, &v.seconds,
                                      &v.nanos, iv),
              OCI_SUCCESS);
    return v;
  }
};

// ---- output, 8.1 ----

struct YmOut {
  const char* name;
  sb4 years, months;
  int lfprec;
  const char* text;
};

const YmOut kYmOut[] = {
    {"Row01", 1, 2, 2, "+01-02"},        {"Row02Zero", 0, 0, 2, "+00-00"},
    {"Row03Negative", -1, -6, 2, "-01-06"}, {"Row04ThreeDigits", 123, 4, 3, "+123-04"},
    {"Row05NineDigits", 1, 2, 9, "+000000001-02"}, {"Row13Largest", 99, 11, 2, "+99-11"},
};

class OciIntervalYmOut : public OciIntervalTest, public ::testing::WithParamInterface<YmOut> {};

TEST_P(OciIntervalYmOut, MatchesOracle) {
  const auto& c = GetParam();
  EXPECT_EQ(Text(YearMonth(c.years, c.months), c.lfprec, 0), c.text);
}

INSTANTIATE_TEST_SUITE_P(Sheet, OciIntervalYmOut, ::testing::ValuesIn(kYmOut),
                         [](const auto& info) { return std::string(info.param.name); });

struct DsOut {
  const char* name;
  Ds value;
  int lfprec, fsprec;
  const char* text;
};

const DsOut kDsOut[] = {
    {"Row06", {1, 2, 2, 2, 980000000}, 2, 6, "+01 02:02:02.980000"},
    {"Row07", {1, 2, 2, 2, 980000000}, 3, 2, "+001 02:02:02.98"},
    // UNCONFIRMED: oracle-datatypes.md §8.1 row 8 (fraction cut, not rounded)
    {"Row08NoFraction", {1, 2, 2, 2, 980000000}, 2, 0, "+01 02:02:02"},
    {"Row09Zero", {0, 0, 0, 0, 0}, 2, 6, "+00 00:00:00.000000"},
    {"Row10Negative", {-1, -2, 0, 0, 0}, 2, 6, "-01 02:00:00.000000"},
    {"Row11Hours", {0, 8, 0, 0, 0}, 2, 2, "+00 08:00:00.00"},
    {"Row12DayAndHalf", {1, 12, 0, 0, 0}, 9, 9, "+000000001 12:00:00.000000000"},
    {"Row14NegativeFraction", {-3, -4, -5, -6, -700000000}, 2, 3, "-03 04:05:06.700"},
    {"Row15OneSecond", {0, 0, 0, 1, 0}, 2, 6, "+00 00:00:01.000000"},
    {"Row16OneNano", {0, 0, 0, 0, 1}, 2, 9, "+00 00:00:00.000000001"},
    {"Row17MaxDays", {999999999, 0, 0, 0, 0}, 9, 0, "+999999999 00:00:00"},
    {"ObservedSqlPlus", {24855, 3, 14, 7, 147483647}, 9, 9, "+000024855 03:14:07.147483647"},
    {"ObservedDay2Second6", {0, 6, 30, 0, 0}, 2, 6, "+00 06:30:00.000000"},
    {"FieldsNormalised", {0, 25, 0, 0, 0}, 2, 0, "+01 01:00:00"},
};

class OciIntervalDsOut : public OciIntervalTest, public ::testing::WithParamInterface<DsOut> {};

TEST_P(OciIntervalDsOut, MatchesOracle) {
  const auto& c = GetParam();
  EXPECT_EQ(Text(DaySecond(c.value), c.lfprec, c.fsprec), c.text);
}

INSTANTIATE_TEST_SUITE_P(Sheet, OciIntervalDsOut, ::testing::ValuesIn(kDsOut),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciIntervalTest, LeadingFieldWiderThanPrecisionPrintsAllDigits) {
  // UNCONFIRMED: oracle-datatypes.md §8.1 (b)
  EXPECT_EQ(Text(DaySecond({360, 12, 45, 49, 0}), 2, 6), "+360 12:45:49.000000");
}

TEST_F(OciIntervalTest, PrecisionAboveNineIsRefused) {
  // UNCONFIRMED: oracle-datatypes.md §1 ORA-30088
  OCIInterval* iv = YearMonth(1, 2);
  OraText buf[64];
  size_t length = 0;
  EXPECT_EQ(OCIIntervalToText(env_, err_, iv, 10, 0, buf, sizeof buf, &length), OCI_ERROR);
  EXPECT_EQ(LastError(), 30088);
}

TEST_F(OciIntervalTest, BufferTooSmall) {
  // UNCONFIRMED: oracle-datatypes.md §8.1 (c)
  OCIInterval* iv = YearMonth(1, 2);
  OraText buf[8];
  size_t length = 0;
  EXPECT_EQ(OCIIntervalToText(env_, err_, iv, 2, 0, buf, 5, &length), OCI_ERROR);
  EXPECT_EQ(LastError(), 1877);
  EXPECT_EQ(OCIIntervalToText(env_, err_, iv, 2, 0, buf, 6, &length), OCI_SUCCESS);
  EXPECT_EQ(length, 6U);
}

// ---- input, 8.2 ----

struct InCase {
  const char* name;
  ub4 type;
  const char* text;
  Ds value;  // YM: days = years, hours = months
  int ora;
};

const InCase kIn[] = {
    {"Row01Demo", OCI_DTYPE_INTERVAL_YM, "01-02", {1, 2, 0, 0, 0}, 0},
    {"Row02Plus", OCI_DTYPE_INTERVAL_YM, "+1-2", {1, 2, 0, 0, 0}, 0},
    {"Row03Minus", OCI_DTYPE_INTERVAL_YM, "-1-6", {-1, -6, 0, 0, 0}, 0},
    {"Row04NineDigits", OCI_DTYPE_INTERVAL_YM, "+000000001-02", {1, 2, 0, 0, 0}, 0},
    {"Row05Zero", OCI_DTYPE_INTERVAL_YM, "0-0", {0, 0, 0, 0, 0}, 0},
    // UNCONFIRMED: oracle-datatypes.md §8.2 row 6
    {"Row06Month12", OCI_DTYPE_INTERVAL_YM, "1-12", {}, 1843},
    // UNCONFIRMED: oracle-datatypes.md §1 ORA-01873 (01868 or 01873 from the client)
    {"Row07TenDigits", OCI_DTYPE_INTERVAL_YM, "1000000000-00", {}, 1873},
    // UNCONFIRMED: oracle-datatypes.md §8.2 row 8
    {"Row08WrongKind", OCI_DTYPE_INTERVAL_YM, "1 02:00:00", {}, 1867},
    {"Row09Demo", OCI_DTYPE_INTERVAL_DS, "1 02:02:02.98", {1, 2, 2, 2, 980000000}, 0},
    {"Row10Demo", OCI_DTYPE_INTERVAL_DS, "0 08:00:00.00", {0, 8, 0, 0, 0}, 0},
    {"Row11Written", OCI_DTYPE_INTERVAL_DS, "+01 02:02:02.980000", {1, 2, 2, 2, 980000000}, 0},
    {"Row12NegativeDay", OCI_DTYPE_INTERVAL_DS, "-1 0:0:0", {-1, 0, 0, 0, 0}, 0},
    {"Row13TwoBlanks", OCI_DTYPE_INTERVAL_DS, "1  2:3:4", {1, 2, 3, 4, 0}, 0},
    {"Row14Hour24", OCI_DTYPE_INTERVAL_DS, "1 24:00:00", {}, 1850},
    {"Row15Minute60", OCI_DTYPE_INTERVAL_DS, "1 00:60:00", {}, 1851},
    {"Row16Second60", OCI_DTYPE_INTERVAL_DS, "1 00:00:60", {}, 1852},
    // UNCONFIRMED: oracle-datatypes.md §1 ORA-01873 (01868 or 01873 from the client)
    {"Row17TenDigits", OCI_DTYPE_INTERVAL_DS, "1000000000 00:00:00", {}, 1873},
    // UNCONFIRMED: oracle-datatypes.md §8.2 row 18
    {"Row18WrongKind", OCI_DTYPE_INTERVAL_DS, "01-02", {}, 1867},
    // UNCONFIRMED: oracle-datatypes.md §8.2 row 19 (ORA-01880)
    {"Row19TenFractionDigits", OCI_DTYPE_INTERVAL_DS, "1 00:00:00.1234567891", {}, 1880},
    // UNCONFIRMED: oracle-datatypes.md §8.2 (shortened forms refused)
    {"ShortYm", OCI_DTYPE_INTERVAL_YM, "5", {}, 1867},
    // UNCONFIRMED: oracle-datatypes.md §8.2 (shortened forms refused)
    {"ShortDs", OCI_DTYPE_INTERVAL_DS, "90", {}, 1867},
    // UNCONFIRMED: oracle-datatypes.md §8.2 (ISO 8601 refused)
    {"IsoDuration", OCI_DTYPE_INTERVAL_DS, "P1DT2H", {}, 1867},
    {"Empty", OCI_DTYPE_INTERVAL_DS, "", {}, 1867},
    {"ExtraField", OCI_DTYPE_INTERVAL_DS, "1 00:00:00 5", {}, 1867},
    {"SurroundingBlanks", OCI_DTYPE_INTERVAL_DS, "  +0 00:01:30  ", {0, 0, 1, 30, 0}, 0},
};

class OciIntervalIn : public OciIntervalTest, public ::testing::WithParamInterface<InCase> {};

TEST_P(OciIntervalIn, MatchesOracle) {
  const auto& c = GetParam();
  auto* iv = static_cast<OCIInterval*>(Descriptor(c.type));
  const sword rc = FromText(iv, c.text);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  if (c.type == OCI_DTYPE_INTERVAL_YM) {
    sb4 y = 0, m = 0;
    ASSERT_EQ(OCIIntervalGetYearMonth(env_, err_, &y, &m, iv), OCI_SUCCESS);
    EXPECT_EQ(y, c.value.days);
    EXPECT_EQ(m, c.value.hours);
  } else {
    const Ds v = GetDs(iv);
    EXPECT_EQ(v.days, c.value.days);
    EXPECT_EQ(v.hours, c.value.hours);
    EXPECT_EQ(v.minutes, c.value.minutes);
    EXPECT_EQ(v.seconds, c.value.seconds);
    EXPECT_EQ(v.nanos, c.value.nanos);
  }
}

INSTANTIATE_TEST_SUITE_P(Sheet, OciIntervalIn, ::testing::ValuesIn(kIn),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciIntervalTest, WrittenTextReadsBack) {
  for (const DsOut& c : kDsOut) {
    if (c.fsprec < 9) continue;
    OCIInterval* iv = DaySecond(c.value);
    const std::string text = Text(iv, c.lfprec, c.fsprec);
    auto* back = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_DS));
    ASSERT_EQ(FromText(back, text.c_str()), OCI_SUCCESS) << text;
    EXPECT_EQ(Text(back, c.lfprec, c.fsprec), text);
  }
  OCIInterval* ym = YearMonth(-123, -4);
  auto* back = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_YM));
  ASSERT_EQ(FromText(back, Text(ym, 9, 0).c_str()), OCI_SUCCESS);
  EXPECT_EQ(Text(back, 3, 0), "-123-04");
}

TEST_F(OciIntervalTest, NegativeIntervalHasAllFieldsNegative) {
  const Ds v = GetDs(DaySecond({-3, -4, -5, -6, -700000000}));
  EXPECT_EQ(v.days, -3);
  EXPECT_EQ(v.hours, -4);
  EXPECT_EQ(v.minutes, -5);
  EXPECT_EQ(v.seconds, -6);
  EXPECT_EQ(v.nanos, -700000000);
}

TEST_F(OciIntervalTest, MixedSignsAreNormalised) {
  // UNCONFIRMED: oci-semantics.md 11.4 (normalised)
  const Ds v = GetDs(DaySecond({1, -1, 0, 0, 0}));
  EXPECT_EQ(v.days, 0);
  EXPECT_EQ(v.hours, 23);
  sb4 y = 0, m = 0;
  ASSERT_EQ(OCIIntervalGetYearMonth(env_, err_, &y, &m, YearMonth(1, 14)), OCI_SUCCESS);
  EXPECT_EQ(y, 2);
  EXPECT_EQ(m, 2);
}

// UNCONFIRMED: oracle-datatypes.md §8.2 (ORA-01867 for the wrong kind)
TEST_F(OciIntervalTest, KindMismatchIsRefused) {
  auto* ds = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_DS));
  EXPECT_EQ(OCIIntervalSetYearMonth(env_, err_, 1, 2, ds), OCI_ERROR);
  EXPECT_EQ(LastError(), 1867);
  sb4 y = 0, m = 0;
  EXPECT_EQ(OCIIntervalGetYearMonth(env_, err_, &y, &m, ds), OCI_ERROR);
}

// UNCONFIRMED: oracle-datatypes.md §1 ORA-01873 (which code the client calls raise)
TEST_F(OciIntervalTest, LeadingFieldOverflowOnSet) {
  auto* ym = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_YM));
  EXPECT_EQ(OCIIntervalSetYearMonth(env_, err_, 1000000000, 0, ym), OCI_ERROR);
  EXPECT_EQ(LastError(), 1873);
}

// UNCONFIRMED: oci-semantics.md 2.2 (ORA-21560 for a NULL descriptor)
TEST_F(OciIntervalTest, InvalidHandles) {
  auto* ym = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_YM));
  EXPECT_EQ(OCIIntervalSetYearMonth(env_, nullptr, 1, 2, ym), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIIntervalSetYearMonth(nullptr, err_, 1, 2, ym), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIIntervalSetYearMonth(env_, err_, 1, 2, nullptr), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
}

// UNCONFIRMED: oci-semantics.md 11.1 (content of a fresh descriptor)
TEST_F(OciIntervalTest, FreshDescriptorIsZero) {
  auto* ym = static_cast<OCIInterval*>(Descriptor(OCI_DTYPE_INTERVAL_YM));
  EXPECT_EQ(Text(ym, 2, 0), "+00-00");
}

}  // namespace
