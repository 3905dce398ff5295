// OCIIntervalAdd, OCIIntervalSubtract and OCIIntervalCompare, as a program
// calls them on interval descriptors.
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>

#include "oci_fixture.h"

namespace {

template <typename A, typename B>
constexpr bool Same() {
  return std::is_same<A, B>::value;
}

static_assert(Same<decltype(&OCIIntervalAdd),
                   sword (*)(void*, OCIError*, OCIInterval*, OCIInterval*, OCIInterval*)>(),
              "OCIIntervalAdd");
static_assert(Same<decltype(&OCIIntervalSubtract),
                   sword (*)(void*, OCIError*, OCIInterval*, OCIInterval*, OCIInterval*)>(),
              "OCIIntervalSubtract");
static_assert(Same<decltype(&OCIIntervalCompare),
                   sword (*)(void*, OCIError*, OCIInterval*, OCIInterval*, sword*)>(),
              "OCIIntervalCompare");

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

constexpr ub4 kYm = OCI_DTYPE_INTERVAL_YM;
constexpr ub4 kDs = OCI_DTYPE_INTERVAL_DS;

class OciIntervalArithTest : public OciValueTest {
 protected:
  OCIInterval* Make(ub4 type, const char* text) {
    auto* iv = static_cast<OCIInterval*>(Descriptor(type));
    EXPECT_EQ(OCIIntervalFromText(env_, err_, T(text), std::strlen(text), iv), OCI_SUCCESS)
        << text << ": " << LastMessage();
    return iv;
  }

  std::string Text(OCIInterval* iv) {
    OraText buf[64];
    size_t length = 0;
    EXPECT_EQ(OCIIntervalToText(env_, err_, iv, 9, 9, buf, sizeof buf, &length), OCI_SUCCESS)
        << LastMessage();
    return std::string(reinterpret_cast<char*>(buf), length);
  }
};

struct SumCase {
  const char* name;
  ub4 type;
  const char* a;
  const char* b;
  bool subtract;
  const char* result;  // with leading precision 9 and 9 fraction digits
  int ora;
};

const SumCase kSums[] = {
    {"YearsAndMonths", kYm, "1-2", "0-11", false, "+000000002-01", 0},
    {"MonthsBorrow", kYm, "1-2", "2-0", true, "-000000000-10", 0},
    {"NegativeCancels", kYm, "-1-6", "1-6", false, "+000000000-00", 0},
    {"NegativeBoth", kYm, "-1-6", "-0-7", false, "-000000002-01", 0},
    {"SubtractNegative", kYm, "0-1", "-0-1", true, "+000000000-02", 0},
    {"YearMonthOverflow", kYm, "999999999-11", "0-1", false, "", 1873},
    {"YearMonthUnderflow", kYm, "-999999999-11", "0-1", true, "", 1873},
    {"DaysAndTime", kDs, "1 02:03:04.5", "0 21:56:55.5", false, "+000000002 00:00:00.000000000", 0},
    {"FractionsBorrow", kDs, "0 00:00:01.25", "0 00:00:00.75", true,
     "+000000000 00:00:00.500000000", 0},
    {"BelowZero", kDs, "0 01:00:00", "1 00:00:00", true, "-000000000 23:00:00.000000000", 0},
    {"NanosecondBelowZero", kDs, "0 00:00:00", "0 00:00:00.000000001", true,
     "-000000000 00:00:00.000000001", 0},
    // Seen with a real client: 02:13:40 + 00:46:20 = 03:00:00, 02:13:40 + -00:13:40 = 02:00:00,
    // 02:13:40 - 01:13:40 = 01:00:00, 02:13:40 - -01:46:20 = 04:00:00.
    {"Observed1", kDs, "+0 02:13:40.000000000", "+0 00:46:20.000000000", false,
     "+000000000 03:00:00.000000000", 0},
    {"Observed2", kDs, "+0 02:13:40.000000000", "-0 00:13:40.000000000", false,
     "+000000000 02:00:00.000000000", 0},
    {"Observed3", kDs, "+0 02:13:40.000000000", "+0 01:13:40.000000000", true,
     "+000000000 01:00:00.000000000", 0},
    {"Observed4", kDs, "+0 02:13:40.000000000", "-0 01:46:20.000000000", true,
     "+000000000 04:00:00.000000000", 0},
    {"LargestDaySecond", kDs, "999999998 23:59:59.999999999", "0 00:00:00.000000001", false,
     "+999999999 00:00:00.000000000", 0},
    {"DaySecondOverflow", kDs, "999999999 23:59:59", "0 00:00:01", false, "", 1873},
    {"DaySecondUnderflow", kDs, "-999999999 23:59:59", "0 00:00:01", true, "", 1873},
};

class OciIntervalSum : public OciIntervalArithTest,
                       public ::testing::WithParamInterface<SumCase> {};

TEST_P(OciIntervalSum, MatchesOracle) {
  const auto& c = GetParam();
  OCIInterval* a = Make(c.type, c.a);
  OCIInterval* b = Make(c.type, c.b);
  auto* out = static_cast<OCIInterval*>(Descriptor(c.type));
  const sword rc = c.subtract ? OCIIntervalSubtract(env_, err_, a, b, out)
                              : OCIIntervalAdd(env_, err_, a, b, out);
  if (c.ora != 0) {
    ASSERT_EQ(rc, OCI_ERROR);
    EXPECT_EQ(LastError(), c.ora);
    EXPECT_EQ(LastMessage(), "ORA-01873: the leading precision of the interval is too small\n");
    return;
  }
  ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
  EXPECT_EQ(Text(out), c.result);
}

INSTANTIATE_TEST_SUITE_P(Table, OciIntervalSum, ::testing::ValuesIn(kSums),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OciIntervalArithTest, ResultMayBeAnOperand) {
  OCIInterval* a = Make(kDs, "1 00:00:00");
  OCIInterval* b = Make(kDs, "0 12:00:00");
  ASSERT_EQ(OCIIntervalAdd(env_, err_, a, b, a), OCI_SUCCESS);
  EXPECT_EQ(Text(a), "+000000001 12:00:00.000000000");
  ASSERT_EQ(OCIIntervalSubtract(env_, err_, a, a, a), OCI_SUCCESS);
  EXPECT_EQ(Text(a), "+000000000 00:00:00.000000000");
}

// An interval of one kind neither adds to nor compares with the other kind.
TEST_F(OciIntervalArithTest, KindsMustMatch) {
  OCIInterval* ym = Make(kYm, "1-0");
  OCIInterval* ds = Make(kDs, "365 00:00:00");
  auto* ym_out = static_cast<OCIInterval*>(Descriptor(kYm));
  auto* ds_out = static_cast<OCIInterval*>(Descriptor(kDs));
  sword result = 7;
  EXPECT_EQ(OCIIntervalAdd(env_, err_, ym, ds, ym_out), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-01870: the intervals or datetimes are not mutually comparable\n");
  EXPECT_EQ(OCIIntervalSubtract(env_, err_, ds, ym, ds_out), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
  EXPECT_EQ(OCIIntervalCompare(env_, err_, ym, ds, &result), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
  EXPECT_EQ(result, 7);
  // decision DT14 (docs/ocimem.md): the result descriptor is of the operands' kind
  EXPECT_EQ(OCIIntervalAdd(env_, err_, ym, ym, ds_out), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
  EXPECT_EQ(OCIIntervalSubtract(env_, err_, ds, ds, ym_out), OCI_ERROR);
  EXPECT_EQ(LastError(), 1870);
}

struct OrderCase {
  ub4 type;
  const char* a;
  const char* b;
  sword result;
};

TEST_F(OciIntervalArithTest, CompareOrders) {
  const OrderCase rows[] = {
      {kYm, "1-0", "0-11", 1},
      {kYm, "-0-1", "0-0", -1},
      {kYm, "-1-6", "-1-6", 0},
      {kYm, "+000000001-02", "1-2", 0},
      // Seen with a real client: 3 12:00:00.000000001 < 3 12:00:00.000000002.
      {kDs, "3 12:00:00.000000001", "3 12:00:00.000000002", -1},
      {kDs, "1 00:00:00", "0 23:59:59.999999999", 1},
      {kDs, "-0 00:00:00.5", "0 00:00:00.5", -1},
      {kDs, "-1 00:00:00", "-0 23:59:59", -1},
  };
  for (const OrderCase& r : rows) {
    SCOPED_TRACE(std::string(r.a) + " vs " + r.b);
    OCIInterval* a = Make(r.type, r.a);
    OCIInterval* b = Make(r.type, r.b);
    sword result = 7;
    ASSERT_EQ(OCIIntervalCompare(env_, err_, a, b, &result), OCI_SUCCESS) << LastMessage();
    EXPECT_EQ(result, r.result);
  }
}

// Lengths compare, whatever fields set them.
TEST_F(OciIntervalArithTest, CompareLengthsSetFieldByField) {
  auto* a = static_cast<OCIInterval*>(Descriptor(kDs));
  ASSERT_EQ(OCIIntervalSetDaySecond(env_, err_, 0, 24, 0, 0, 0, a), OCI_SUCCESS);
  OCIInterval* b = Make(kDs, "1 00:00:00");
  sword result = 7;
  ASSERT_EQ(OCIIntervalCompare(env_, err_, a, b, &result), OCI_SUCCESS);
  EXPECT_EQ(result, 0);
  auto* c = static_cast<OCIInterval*>(Descriptor(kYm));
  ASSERT_EQ(OCIIntervalSetYearMonth(env_, err_, 0, 12, c), OCI_SUCCESS);
  OCIInterval* d = Make(kYm, "1-0");
  ASSERT_EQ(OCIIntervalCompare(env_, err_, c, d, &result), OCI_SUCCESS);
  EXPECT_EQ(result, 0);
}

TEST_F(OciIntervalArithTest, NullArgumentsAndHandles) {
  OCIInterval* ds = Make(kDs, "1 00:00:00");
  auto* dt = static_cast<OCIDateTime*>(Descriptor(OCI_DTYPE_TIMESTAMP));
  auto* foreign = reinterpret_cast<OCIInterval*>(dt);  // a descriptor of the other family
  sword result = 0;
  struct Row {
    const char* call;
    std::function<sword()> run;
    int position;
  };
  const Row rows[] = {
      {"Add addend1", [&] { return OCIIntervalAdd(env_, err_, nullptr, ds, ds); }, 3},
      {"Add addend2", [&] { return OCIIntervalAdd(env_, err_, ds, foreign, ds); }, 4},
      {"Add result", [&] { return OCIIntervalAdd(env_, err_, ds, ds, nullptr); }, 5},
      {"Subtract minuend", [&] { return OCIIntervalSubtract(env_, err_, foreign, ds, ds); }, 3},
      {"Subtract subtrahend", [&] { return OCIIntervalSubtract(env_, err_, ds, nullptr, ds); }, 4},
      {"Subtract result", [&] { return OCIIntervalSubtract(env_, err_, ds, ds, foreign); }, 5},
      {"Compare inter1", [&] { return OCIIntervalCompare(env_, err_, nullptr, ds, &result); }, 3},
      {"Compare inter2", [&] { return OCIIntervalCompare(env_, err_, ds, foreign, &result); }, 4},
      {"Compare result", [&] { return OCIIntervalCompare(env_, err_, ds, ds, nullptr); }, 5},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.call);
    EXPECT_EQ(r.run(), OCI_ERROR);
    EXPECT_EQ(LastMessage(), "ORA-21560: argument " + std::to_string(r.position) +
                                 " is null, invalid, or out of range\n");
  }
  EXPECT_EQ(OCIIntervalAdd(env_, nullptr, ds, ds, ds), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIIntervalAdd(nullptr, err_, ds, ds, ds), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIIntervalSubtract(nullptr, err_, ds, ds, ds), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIIntervalCompare(nullptr, err_, ds, ds, &result), OCI_INVALID_HANDLE);
  EXPECT_EQ(OCIIntervalCompare(env_, reinterpret_cast<OCIError*>(env_), ds, ds, &result),
            OCI_INVALID_HANDLE);
}

TEST_F(OciIntervalArithTest, InjectedFaultIsReported) {
  const sb4 codes[] = {1873};
  const char* const texts[] = {"the leading precision of the interval is too small"};
  ocimemFaultArm("OCIIntervalAdd", 1, OCI_ERROR, codes, texts, 1);
  OCIInterval* ds = Make(kDs, "1 00:00:00");
  EXPECT_EQ(OCIIntervalAdd(env_, err_, ds, ds, ds), OCI_ERROR);
  EXPECT_EQ(LastError(), 1873);
  EXPECT_EQ(OCIIntervalAdd(env_, err_, ds, ds, ds), OCI_SUCCESS);
  EXPECT_EQ(Text(ds), "+000000002 00:00:00.000000000");
}

}  // namespace
