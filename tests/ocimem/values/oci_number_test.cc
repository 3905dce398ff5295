// OCINumber calls: the sheet's tables through the exported entry points, the
// buffer rules and every error path.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "number.h"
#include "number_cases.h"
#include "oci_fixture.h"

namespace {

OCINumber Num(const std::string& text) {
  ocimem::values::Decimal d;
  EXPECT_TRUE(ocimem::values::DecimalFromPlainText(text, &d)) << text;
  OCINumber n;
  EXPECT_EQ(ocimem::values::EncodeNumber(d, n.OCINumberPart), ocimem::values::NumberError::None);
  return n;
}

std::string Plain(const OCINumber& n) {
  ocimem::values::Decimal d;
  EXPECT_EQ(ocimem::values::DecodeNumber(n.OCINumberPart, &d), ocimem::values::NumberError::None);
  return ocimem::values::DecimalToPlainText(d);
}

const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }

class OciNumberTest : public OciValueTest {
 protected:
  sword ToText(const OCINumber& n, const std::string& mask, std::string* out,
               ub4 size = 200) {
    std::string buf(size + 1, '\x7f');
    ub4 buf_size = size;
    const sword rc = OCINumberToText(err_, &n, T(mask.c_str()), static_cast<ub4>(mask.size()),
                                     nullptr, 0, &buf_size,
                                     reinterpret_cast<OraText*>(buf.data()));
    if (rc == OCI_SUCCESS) {
      EXPECT_EQ(buf[buf_size], '\0');
      *out = buf.substr(0, buf_size);
    }
    return rc;
  }

  sword FromText(const std::string& text, const std::string& mask, OCINumber* n) {
    return OCINumberFromText(err_, T(text.c_str()), static_cast<ub4>(text.size()),
                             T(mask.c_str()), static_cast<ub4>(mask.size()), nullptr, 0, n);
  }
};

TEST_F(OciNumberTest, ToTextTableThroughTheCall) {
  for (const auto& c : number_cases::kToText) {
    SCOPED_TRACE(c.name);
    std::string text;
    const sword rc = ToText(Num(c.value), c.mask, &text);
    if (c.text != nullptr) {
      ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
      EXPECT_EQ(text, c.text);
    } else {
      ASSERT_EQ(rc, OCI_ERROR);
      EXPECT_EQ(LastError(), c.ora);
    }
  }
}

TEST_F(OciNumberTest, FromTextTableThroughTheCall) {
  for (const auto& c : number_cases::kFromText) {
    SCOPED_TRACE(c.name);
    const std::string mask = c.mask != nullptr ? c.mask : number_cases::BuildMask(c.text);
    OCINumber n;
    const sword rc = FromText(c.text, mask, &n);
    if (c.value != nullptr) {
      ASSERT_EQ(rc, OCI_SUCCESS) << LastMessage();
      EXPECT_EQ(Plain(n), Plain(Num(c.value)));
    } else {
      ASSERT_EQ(rc, OCI_ERROR);
      EXPECT_EQ(LastError(), c.ora);
    }
  }
}

// The masks an error handle has met are remembered with what was read from them; the
// table again, backwards, on the same handle gives what it gave the first time.
TEST_F(OciNumberTest, ToTextTableAgainBackwardsOnTheSameErrorHandle) {
  std::vector<std::string> first;
  for (const auto& c : number_cases::kToText) {
    std::string text;
    first.push_back(ToText(Num(c.value), c.mask, &text) == OCI_SUCCESS
                        ? text
                        : "ORA-" + std::to_string(LastError()));
  }
  size_t i = first.size();
  for (auto it = std::rbegin(number_cases::kToText); it != std::rend(number_cases::kToText);
       ++it) {
    SCOPED_TRACE(it->name);
    std::string text;
    const std::string again = ToText(Num(it->value), it->mask, &text) == OCI_SUCCESS
                                  ? text
                                  : "ORA-" + std::to_string(LastError());
    EXPECT_EQ(again, first[--i]);
  }
}

// "FM999.99", "FM9999.9" and "FM990.99" have the same length and last byte, so they are
// remembered in one place in turn: each call reads its own mask.
TEST_F(OciNumberTest, MasksRememberedInOnePlaceDoNotMix) {
  std::string text;
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    ASSERT_EQ(ToText(Num("1234.5"), "FM9999.9", &text), OCI_SUCCESS);
    EXPECT_EQ(text, "1234.5");
    ASSERT_EQ(ToText(Num("1234.5"), "FM999.99", &text), OCI_ERROR);
    EXPECT_EQ(LastError(), 22065);
    ASSERT_EQ(ToText(Num("0.5"), "FM999.99", &text), OCI_SUCCESS);
    EXPECT_EQ(text, ".5");
    ASSERT_EQ(ToText(Num("0.5"), "FM990.99", &text), OCI_SUCCESS);
    EXPECT_EQ(text, "0.5");
    ASSERT_EQ(ToText(Num("0.5"), "fm999.99", &text), OCI_SUCCESS);
    EXPECT_EQ(text, ".5");
  }
}

// A mask longer than those remembered, and the same mask's text changed in place between
// two calls, are read afresh.
TEST_F(OciNumberTest, LongMasksAndMasksChangedInPlace) {
  std::string text;
  const std::string long_mask = "FM" + std::string(38, '9') + "." + std::string(10, '9');
  ASSERT_EQ(ToText(Num("-12345678901234567890.125"), long_mask, &text), OCI_SUCCESS);
  EXPECT_EQ(text, "-12345678901234567890.125");
  ASSERT_EQ(ToText(Num("7"), long_mask, &text), OCI_SUCCESS);
  EXPECT_EQ(text, "7.");
  std::string mask = "FM99.9";
  ASSERT_EQ(ToText(Num("12.5"), mask, &text), OCI_SUCCESS);
  EXPECT_EQ(text, "12.5");
  mask[2] = '0';  // "FM09.9", in the same buffer
  ASSERT_EQ(ToText(Num("2.5"), mask, &text), OCI_SUCCESS);
  EXPECT_EQ(text, "02.5");
}

TEST_F(OciNumberTest, OverflowMessage) {
  std::string text;
  ASSERT_EQ(ToText(Num("123456"), "FM99999", &text), OCI_ERROR);
  EXPECT_EQ(LastMessage(),
            "ORA-22065: number to text translation for the given format causes overflow\n");
}

TEST_F(OciNumberTest, InvalidFormatMessageNamesTheMask) {
  OCINumber n;
  ASSERT_EQ(FromText("1e5", "9e9", &n), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-22061: invalid format text [9e9]\n");
}

TEST_F(OciNumberTest, InvalidInputMessageNamesTheText) {
  OCINumber n;
  ASSERT_EQ(FromText("12345", "9999", &n), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-22062: invalid input string [12345]\n");
}

TEST_F(OciNumberTest, AdapterPageAlwaysFits) {
  // Page = mask length + 1; the widest text is one shorter than the mask.
  std::string text;
  const std::string mask = "FM99999999.99";
  ASSERT_EQ(ToText(Num("-12345678.99"), mask, &text, static_cast<ub4>(mask.size() + 1)),
            OCI_SUCCESS);
  EXPECT_EQ(text, "-12345678.99");
  ASSERT_EQ(ToText(Num("0"), "FM", &text, 3), OCI_SUCCESS);
  EXPECT_EQ(text, "0");
}

TEST_F(OciNumberTest, BufferWithoutRoomForTerminatorFails) {
  // UNCONFIRMED: oracle-datatypes.md §3.6 (the NUL must fit)
  std::string text;
  ASSERT_EQ(ToText(Num("12.5"), "FM99.99", &text, 4), OCI_ERROR);
  EXPECT_EQ(LastError(), 22059);
  EXPECT_EQ(LastMessage(), "ORA-22059: buffer size [4] is too small - [5] is needed\n");
}

TEST_F(OciNumberTest, InvalidNumberBytesAreRejected) {
  OCINumber n{};
  std::string text;
  ASSERT_EQ(ToText(n, "FM99", &text), OCI_ERROR);
  EXPECT_EQ(LastError(), 22060);
}

TEST_F(OciNumberTest, NlsParametersAreRefused) {
  const OCINumber n = Num("1");
  ub4 size = 10;
  OraText buf[10];
  ASSERT_EQ(OCINumberToText(err_, &n, T("FM9"), 3, T("NLS_NUMERIC_CHARACTERS=',.'"), 27, &size,
                            buf),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 22064);
  EXPECT_EQ(LastMessage(), "ORA-22064: invalid NLS parameter string [NLS_NUMERIC_CHARACTERS=',.']\n");
}

// UNCONFIRMED: oci-semantics.md 2.2 (ORA-21560 for a NULL argument)
TEST_F(OciNumberTest, NullArgumentsAreErrors) {
  const OCINumber n = Num("1");
  ub4 size = 10;
  OraText buf[10];
  EXPECT_EQ(OCINumberToText(err_, nullptr, T("FM9"), 3, nullptr, 0, &size, buf), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
  EXPECT_EQ(OCINumberToText(err_, &n, nullptr, 0, nullptr, 0, &size, buf), OCI_ERROR);
  EXPECT_EQ(OCINumberToText(err_, &n, T("FM9"), 3, nullptr, 0, nullptr, buf), OCI_ERROR);
  EXPECT_EQ(OCINumberToText(err_, &n, T("FM9"), 3, nullptr, 0, &size, nullptr), OCI_ERROR);
  OCINumber out;
  EXPECT_EQ(OCINumberFromText(err_, nullptr, 0, T("9"), 1, nullptr, 0, &out), OCI_ERROR);
  EXPECT_EQ(OCINumberFromText(err_, T("1"), 1, T("9"), 1, nullptr, 0, nullptr), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
}

TEST_F(OciNumberTest, NullErrorHandleIsInvalidHandle) {
  const OCINumber n = Num("1");
  ub4 size = 10;
  OraText buf[10];
  EXPECT_EQ(OCINumberToText(nullptr, &n, T("FM9"), 3, nullptr, 0, &size, buf),
            OCI_INVALID_HANDLE);
  OCINumber out;
  EXPECT_EQ(OCINumberFromText(nullptr, T("1"), 1, T("9"), 1, nullptr, 0, &out),
            OCI_INVALID_HANDLE);
}

TEST_F(OciNumberTest, InjectedFaultIsReported) {
  const sb4 codes[] = {1722};
  const char* messages[] = {"invalid number"};
  ocimemFaultArm("OCINumberFromText", 1, OCI_ERROR, codes, messages, 1);
  OCINumber n;
  EXPECT_EQ(FromText("1", "9", &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 1722);
  EXPECT_EQ(FromText("1", "9", &n), OCI_SUCCESS);
}

TEST_F(OciNumberTest, SuccessClearsEarlierDiagnostics) {
  OCINumber n;
  ASSERT_EQ(FromText("x", "x", &n), OCI_ERROR);
  ASSERT_EQ(FromText("1", "9", &n), OCI_SUCCESS);
  EXPECT_EQ(LastError(), 0);
}

// ---- reals ----

TEST_F(OciNumberTest, RealRoundTripBothSizes) {
  const double d = 123.456;
  OCINumber n;
  ASSERT_EQ(OCINumberFromReal(err_, &d, sizeof d, &n), OCI_SUCCESS);
  EXPECT_EQ(Plain(n), "123.456000000000003069544618483632802963");
  double back = 0;
  ASSERT_EQ(OCINumberToReal(err_, &n, sizeof back, &back), OCI_SUCCESS);
  EXPECT_EQ(back, d);
  const float f = 0.1f;
  ASSERT_EQ(OCINumberFromReal(err_, &f, sizeof f, &n), OCI_SUCCESS);
  EXPECT_EQ(Plain(n), ".100000001490116119384765625");
  float fback = 0;
  ASSERT_EQ(OCINumberToReal(err_, &n, sizeof fback, &fback), OCI_SUCCESS);
  EXPECT_EQ(fback, f);
}

// UNCONFIRMED: oci-semantics.md 2.2 (ORA-21560 for the size argument)
TEST_F(OciNumberTest, RealSizeZeroIsAnError) {
  const double d = 1;
  OCINumber n = Num("1");
  EXPECT_EQ(OCINumberFromReal(err_, &d, 0, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
  double out = 0;
  EXPECT_EQ(OCINumberToReal(err_, &n, 0, &out), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
}

TEST_F(OciNumberTest, RealOverflowAndNaN) {
  // UNCONFIRMED: oracle-datatypes.md §5 (ORA-22053 for overflow and infinity, ORA-22062 for NaN)
  OCINumber n;
  const double huge = 1e300;
  EXPECT_EQ(OCINumberFromReal(err_, &huge, sizeof huge, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 22053);
  const double inf = HUGE_VAL;
  EXPECT_EQ(OCINumberFromReal(err_, &inf, sizeof inf, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 22053);
  const double nan = std::nan("");
  EXPECT_EQ(OCINumberFromReal(err_, &nan, sizeof nan, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 22062);
}

// ---- integers ----

TEST_F(OciNumberTest, IntegersOfEveryWidth) {
  OCINumber n;
  const std::int8_t i1 = -128;
  ASSERT_EQ(OCINumberFromInt(err_, &i1, 1, OCI_NUMBER_SIGNED, &n), OCI_SUCCESS);
  EXPECT_EQ(Plain(n), "-128");
  const std::uint16_t u2 = 65535;
  ASSERT_EQ(OCINumberFromInt(err_, &u2, 2, OCI_NUMBER_UNSIGNED, &n), OCI_SUCCESS);
  EXPECT_EQ(Plain(n), "65535");
  const std::int64_t i8 = INT64_MIN;
  ASSERT_EQ(OCINumberFromInt(err_, &i8, 8, OCI_NUMBER_SIGNED, &n), OCI_SUCCESS);
  EXPECT_EQ(Plain(n), "-9223372036854775808");
  std::int64_t back8 = 0;
  ASSERT_EQ(OCINumberToInt(err_, &n, 8, OCI_NUMBER_SIGNED, &back8), OCI_SUCCESS);
  EXPECT_EQ(back8, INT64_MIN);
  std::int32_t back4 = 0;
  const OCINumber big = Num("2147483647");
  ASSERT_EQ(OCINumberToInt(err_, &big, 4, OCI_NUMBER_SIGNED, &back4), OCI_SUCCESS);
  EXPECT_EQ(back4, 2147483647);
}

// UNCONFIRMED: oracle-datatypes.md §1 ORA-22053 (overflow code of the client library)
TEST_F(OciNumberTest, IntegerOverflowIsAnError) {
  std::int16_t out = 0;
  const OCINumber n = Num("32768");
  EXPECT_EQ(OCINumberToInt(err_, &n, 2, OCI_NUMBER_SIGNED, &out), OCI_ERROR);
  EXPECT_EQ(LastError(), 22053);
  std::uint32_t u = 0;
  const OCINumber negative = Num("-1");
  EXPECT_EQ(OCINumberToInt(err_, &negative, 4, OCI_NUMBER_UNSIGNED, &u), OCI_ERROR);
  EXPECT_EQ(LastError(), 22053);
}

// UNCONFIRMED: oci-semantics.md 2.2 (ORA-21560 for a bad flag or width)
TEST_F(OciNumberTest, IntegerBadSignFlagOrWidth) {
  OCINumber n;
  const std::int32_t v = 1;
  EXPECT_EQ(OCINumberFromInt(err_, &v, 4, 7, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
  EXPECT_EQ(OCINumberFromInt(err_, &v, 3, OCI_NUMBER_SIGNED, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
}

// ---- comparison ----

TEST_F(OciNumberTest, CmpOrdersValues) {
  const OCINumber a = Num("-1.5");
  const OCINumber b = Num("-1");
  sword result = 99;
  ASSERT_EQ(OCINumberCmp(err_, &a, &b, &result), OCI_SUCCESS);
  EXPECT_LT(result, 0);
  ASSERT_EQ(OCINumberCmp(err_, &b, &a, &result), OCI_SUCCESS);
  EXPECT_GT(result, 0);
  ASSERT_EQ(OCINumberCmp(err_, &a, &a, &result), OCI_SUCCESS);
  EXPECT_EQ(result, 0);
}

TEST_F(OciNumberTest, CmpRejectsInvalidNumber) {
  const OCINumber a = Num("1");
  const OCINumber bad{};
  sword result = 0;
  EXPECT_EQ(OCINumberCmp(err_, &a, &bad, &result), OCI_ERROR);
  EXPECT_EQ(LastError(), 22060);
}

}  // namespace
