// The value calls given what a careless or broken caller hands them: corrupt
// NUMBER bytes, foreign or freed descriptors, long masks, empty and oversized
// buffers, embedded NULs and bytes outside ASCII. Every call must answer with
// a status and an Oracle error, never crash or read past what it was given
// (these tests are meant to run under the address sanitizer too).
#include <atomic>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "oci_fixture.h"

namespace {

const OraText* T(const std::string& s) { return reinterpret_cast<const OraText*>(s.data()); }

class RobustnessTest : public OciValueTest {
 protected:
  // OCI_SUCCESS, or OCI_ERROR carrying one of `codes`.
  void ExpectSuccessOr(sword rc, const std::set<int>& codes, const std::string& what) {
    if (rc == OCI_SUCCESS) return;
    ASSERT_EQ(rc, OCI_ERROR) << what;
    EXPECT_EQ(codes.count(LastError()), 1U) << what << ": " << LastMessage();
  }
};

// Fills the 22 bytes with a deterministic pattern that keeps `length`.
OCINumber Corrupt(std::mt19937* rng, unsigned length) {
  OCINumber n;
  for (ub1& b : n.OCINumberPart) b = static_cast<ub1>((*rng)() & 0xFF);
  n.OCINumberPart[0] = static_cast<ub1>(length);
  return n;
}

TEST_F(RobustnessTest, LengthBytesOutsideOneToTwentyOneAreInvalidNumbers) {
  for (unsigned length : {0U, 22U, 23U, 100U, 255U}) {
    OCINumber n;
    std::memset(n.OCINumberPart, 0xC1, sizeof n.OCINumberPart);
    n.OCINumberPart[0] = static_cast<ub1>(length);
    OraText buf[64];
    ub4 size = sizeof buf;
    EXPECT_EQ(OCINumberToText(err_, &n, T(std::string("FM99999")), 7, nullptr, 0, &size, buf),
              OCI_ERROR);
    EXPECT_EQ(LastError(), 22060) << length;
    EXPECT_EQ(LastMessage(), "ORA-22060: argument [2] is an invalid or uninitialized number\n");
    double d = 0;
    EXPECT_EQ(OCINumberToReal(err_, &n, sizeof d, &d), OCI_ERROR);
    EXPECT_EQ(LastError(), 22060);
    sb8 i = 0;
    EXPECT_EQ(OCINumberToInt(err_, &n, sizeof i, OCI_NUMBER_SIGNED, &i), OCI_ERROR);
    EXPECT_EQ(LastError(), 22060);
  }
}

TEST_F(RobustnessTest, ZeroedNumberIsInvalid) {
  OCINumber n;
  std::memset(&n, 0, sizeof n);
  double d = 0;
  EXPECT_EQ(OCINumberToReal(err_, &n, sizeof d, &d), OCI_ERROR);
  EXPECT_EQ(LastError(), 22060);
  sword cmp = 0;
  OCINumber one;
  const std::string text = "1";
  ASSERT_EQ(OCINumberFromText(err_, T(text), 1, T(std::string("9")), 1, nullptr, 0, &one),
            OCI_SUCCESS);
  EXPECT_EQ(OCINumberCmp(err_, &one, &n, &cmp), OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-22060: argument [3] is an invalid or uninitialized number\n");
}

TEST_F(RobustnessTest, LegacyInfinitiesAreInvalid) {
  OCINumber minus{};
  minus.OCINumberPart[0] = 1;
  minus.OCINumberPart[1] = 0x00;
  OCINumber plus{};
  plus.OCINumberPart[0] = 2;
  plus.OCINumberPart[1] = 0xFF;
  plus.OCINumberPart[2] = 0x65;
  for (const OCINumber* n : {&minus, &plus}) {
    double d = 0;
    EXPECT_EQ(OCINumberToReal(err_, n, sizeof d, &d), OCI_ERROR);
    EXPECT_EQ(LastError(), 22060);
  }
}

TEST_F(RobustnessTest, RandomNumberBytesGiveAValueOrInvalidNumber) {
  std::mt19937 rng(20261122);
  const std::string mask = "FM" + std::string(28, '9') + "." + std::string(29, '9');
  for (int round = 0; round < 20000; ++round) {
    const OCINumber n = Corrupt(&rng, 1 + rng() % 21);
    OraText buf[64];
    ub4 size = sizeof buf;
    ExpectSuccessOr(OCINumberToText(err_, &n, T(mask), static_cast<ub4>(mask.size()), nullptr,
                                    0, &size, buf),
                    {22060, 22065}, "ToText " + std::to_string(round));
    double d = 0;
    ExpectSuccessOr(OCINumberToReal(err_, &n, sizeof d, &d), {22060}, "ToReal");
    float f = 0;
    ExpectSuccessOr(OCINumberToReal(err_, &n, sizeof f, &f), {22060}, "ToReal 4");
    sb8 i = 0;
    ExpectSuccessOr(OCINumberToInt(err_, &n, sizeof i, OCI_NUMBER_SIGNED, &i), {22060, 22053},
                    "ToInt");
    sword cmp = 0;
    ExpectSuccessOr(OCINumberCmp(err_, &n, &n, &cmp), {22060}, "Cmp");
    if (OCINumberCmp(err_, &n, &n, &cmp) == OCI_SUCCESS) {
      EXPECT_EQ(cmp, 0);
    }
  }
}

TEST_F(RobustnessTest, ValidNumbersSurviveTheirOwnBytes) {
  // Every valid OCINumber written by FromText decodes again after the unused
  // tail is filled with garbage.
  std::mt19937 rng(7);
  for (int round = 0; round < 2000; ++round) {
    std::string text = (rng() % 2) ? "-" : "";
    const unsigned digits = 1 + rng() % 45;
    for (unsigned k = 0; k < digits; ++k) text += static_cast<char>('0' + rng() % 10);
    if (rng() % 2) text.insert(text.size() - rng() % digits, ".");
    std::string mask;
    for (char c : text) mask += c == '-' ? 'S' : (c == '.' ? '.' : '9');
    OCINumber n;
    ASSERT_EQ(OCINumberFromText(err_, T(text), static_cast<ub4>(text.size()), T(mask),
                                static_cast<ub4>(mask.size()), nullptr, 0, &n),
              OCI_SUCCESS)
        << text;
    for (unsigned k = n.OCINumberPart[0] + 1U; k < sizeof n.OCINumberPart; ++k) {
      n.OCINumberPart[k] = static_cast<ub1>(rng());
    }
    double d = 0;
    EXPECT_EQ(OCINumberToReal(err_, &n, sizeof d, &d), OCI_SUCCESS) << text;
  }
}

TEST_F(RobustnessTest, NumberTextWithNulAndHighBytesIsInvalidFormat) {
  const std::string text("1\0" "2", 3);
  OCINumber n;
  EXPECT_EQ(OCINumberFromText(err_, T(text), 3, T(text), 3, nullptr, 0, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 22061);
  const std::string high = "5\xE9";
  const std::string high_mask = "9\xE9";
  EXPECT_EQ(OCINumberFromText(err_, T(high), 2, T(high_mask), 2, nullptr, 0, &n), OCI_ERROR);
  EXPECT_EQ(LastError(), 22061);
}

// Texts with far more integer digits than the mask has places, for short
// masks and for the longest plain mask: refused as invalid input, without
// the digits ever being kept beyond the places (found by fuzzing: the digits
// overran a buffer sized by the mask).
TEST_F(RobustnessTest, IntegerDigitsBeyondEveryPlaceOfThePlainMaskAreInvalidInput) {
  const std::string masks[] = {"9", "S9999", "9999.99", std::string(38, '9'),
                               "S" + std::string(30, '9') + "." + std::string(8, '9')};
  for (const std::string& mask : masks) {
    for (size_t digits : {mask.size() + 1, size_t{41}, size_t{60}, size_t{200}}) {
      for (const char* sign : {"", "-", "+"}) {
        const std::string text = sign + std::string(digits, '4');
        OCINumber n;
        EXPECT_EQ(OCINumberFromText(err_, T(text), static_cast<ub4>(text.size()), T(mask),
                                    static_cast<ub4>(mask.size()), nullptr, 0, &n),
                  OCI_ERROR)
            << mask << " " << text;
        EXPECT_EQ(LastError(), 22062) << mask << " " << text;
      }
    }
  }
}

TEST_F(RobustnessTest, NumberToTextWithZeroBufferWritesNothing) {
  OCINumber n;
  const std::string text = "5";
  ASSERT_EQ(OCINumberFromText(err_, T(text), 1, T(std::string("9")), 1, nullptr, 0, &n),
            OCI_SUCCESS);
  OraText buf[4] = {'x', 'x', 'x', 'x'};
  ub4 size = 0;
  EXPECT_EQ(OCINumberToText(err_, &n, T(std::string("FM9")), 3, nullptr, 0, &size, buf),
            OCI_ERROR);
  EXPECT_EQ(LastMessage(), "ORA-22059: buffer size [0] is too small - [2] is needed\n");
  EXPECT_EQ(buf[0], 'x');
}

TEST_F(RobustnessTest, NumberToTextWithHugeBufferSizeWritesOnlyTheText) {
  OCINumber n;
  const std::string text = "-12.5";
  ASSERT_EQ(OCINumberFromText(err_, T(text), 5, T(std::string("S99.9")), 5, nullptr, 0, &n),
            OCI_SUCCESS);
  std::vector<OraText> buf(16, 'x');
  ub4 size = 0xFFFFFFFFU;
  ASSERT_EQ(OCINumberToText(err_, &n, T(std::string("FM999.99")), 8, nullptr, 0, &size,
                            buf.data()),
            OCI_SUCCESS);
  EXPECT_EQ(size, 5U);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf.data())), "-12.5");
  EXPECT_EQ(buf[6], 'x');
}

TEST_F(RobustnessTest, LongestAdapterNumberMasks) {
  // Precision 38 with scale -84 and a scale of 127 are the widest masks the
  // adapter can build.
  OCINumber n;
  const std::string text = "12345678901234567890123456789012345678";
  ASSERT_EQ(OCINumberFromText(err_, T(text), static_cast<ub4>(text.size()),
                              T(std::string(text.size(), '9')), static_cast<ub4>(text.size()),
                              nullptr, 0, &n),
            OCI_SUCCESS);
  const std::string wide = "FM" + std::string(122, '9');
  std::vector<OraText> buf(wide.size() + 1);
  ub4 size = static_cast<ub4>(buf.size());
  ASSERT_EQ(OCINumberToText(err_, &n, T(wide), static_cast<ub4>(wide.size()), nullptr, 0, &size,
                            buf.data()),
            OCI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf.data()), size), text);
  const std::string fine = "FM." + std::string(127, '9');
  buf.assign(fine.size() + 1, 0);
  size = static_cast<ub4>(buf.size());
  EXPECT_EQ(OCINumberToText(err_, &n, T(fine), static_cast<ub4>(fine.size()), nullptr, 0, &size,
                            buf.data()),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 22065);
}

// ---- DATE ----

OCIDate MakeDate(sb2 y, ub1 m, ub1 d) {
  OCIDate date{};
  date.OCIDateYYYY = y;
  date.OCIDateMM = m;
  date.OCIDateDD = d;
  return date;
}

TEST_F(RobustnessTest, ZeroedDateIsRefused) {
  OCIDate date;
  std::memset(&date, 0, sizeof date);
  OraText buf[32];
  ub4 size = sizeof buf;
  const std::string mask = "DD-MON-YY";
  EXPECT_EQ(OCIDateToText(err_, &date, T(mask), 9, nullptr, 0, &size, buf), OCI_ERROR);
  EXPECT_EQ(LastError(), 1841);
}

TEST_F(RobustnessTest, CorruptDateFieldsAreRefusedBeforeFormatting) {
  // Month names are looked up by the month: out-of-range months must never
  // reach the table.
  const std::string mask = "DD-MON-YY";
  for (ub1 month : {ub1{0}, ub1{13}, ub1{255}}) {
    OCIDate date = MakeDate(2001, month, 1);
    OraText buf[32];
    ub4 size = sizeof buf;
    EXPECT_EQ(OCIDateToText(err_, &date, T(mask), 9, nullptr, 0, &size, buf), OCI_ERROR);
    EXPECT_EQ(LastError(), 1843) << int{month};
  }
  OCIDate late = MakeDate(2001, 1, 1);
  late.OCIDateTime.OCITimeHH = 255;
  OraText buf[32];
  ub4 size = sizeof buf;
  EXPECT_EQ(OCIDateToText(err_, &late, T(mask), 9, nullptr, 0, &size, buf), OCI_ERROR);
  EXPECT_EQ(LastError(), 1850);
}

TEST_F(RobustnessTest, DateMaskOf255BytesIsFormattedOrRefused) {
  OCIDate date = MakeDate(2001, 2, 3);
  // 255 bytes of punctuation: a valid mask whose text is 255 bytes.
  const std::string dashes(255, '-');
  std::vector<OraText> buf(300, 'x');
  ub4 size = 255;
  ASSERT_EQ(OCIDateToText(err_, &date, T(dashes), 255, nullptr, 0, &size, buf.data()),
            OCI_SUCCESS);
  EXPECT_EQ(size, 255U);
  EXPECT_EQ(buf[255], 'x');  // no room for a terminator: none is written
  // 255 bytes of repeated elements.
  std::string repeated;
  while (repeated.size() + 5 <= 255) repeated += "YYYY-";
  repeated.resize(255, 'Y');
  size = static_cast<ub4>(buf.size());
  ASSERT_EQ(OCIDateToText(err_, &date, T(repeated), 255, nullptr, 0, &size, buf.data()),
            OCI_SUCCESS);
  std::string expected;
  for (int k = 0; k < 51; ++k) expected += "2001-";
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf.data()), size), expected);
  // 51 month names of 9 bytes each outgrow any page.
  std::string months;
  for (int k = 0; k < 51; ++k) months += "MONTH";
  size = static_cast<ub4>(buf.size());
  EXPECT_EQ(OCIDateToText(err_, &date, T(months), 255, nullptr, 0, &size, buf.data()), OCI_ERROR);
  EXPECT_EQ(LastError(), 1877);
  // The same mask on input names the year many times.
  OCIDate out;
  EXPECT_EQ(OCIDateFromText(err_, T(std::string("2001")), 4, T(repeated), 255, nullptr, 0, &out),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1810);
  // An unterminated quote running to the 255th byte.
  const std::string quoted = "\"" + std::string(254, 'a');
  size = static_cast<ub4>(buf.size());
  EXPECT_EQ(OCIDateToText(err_, &date, T(quoted), 255, nullptr, 0, &size, buf.data()), OCI_ERROR);
  EXPECT_EQ(LastError(), 1821);
}

TEST_F(RobustnessTest, DateTextWithNulOrHighBytes) {
  const std::string mask = "YYYY-MM-DD HH24:MI:SS";
  OCIDate out;
  // A NUL is punctuation like any other non-alphanumeric byte.
  const std::string nul("2001\0" "02-03", 10);
  ASSERT_EQ(OCIDateFromText(err_, T(nul), 10, T(mask), static_cast<ub1>(mask.size()), nullptr, 0,
                            &out),
            OCI_SUCCESS);
  EXPECT_EQ(out.OCIDateMM, 2);
  EXPECT_EQ(out.OCIDateDD, 3);
  // Bytes outside ASCII are not digits: where the month's digits should start a byte that
  // is no digit stands, ORA-01858 (oracle-datatypes.md, the date input errors; decision DT7
  // for the punctuation left over).
  const std::string high = "2001-\xC3\xA9-03";
  EXPECT_EQ(OCIDateFromText(err_, T(high), static_cast<ub4>(high.size()), T(mask),
                            static_cast<ub1>(mask.size()), nullptr, 0, &out),
            OCI_ERROR);
  const int code = LastError();
  EXPECT_EQ(1858, code);
  const std::string month = "03-F\xC3\xA9" "B-01";
  const std::string short_mask = "DD-MON-YY";
  EXPECT_EQ(OCIDateFromText(err_, T(month), static_cast<ub4>(month.size()), T(short_mask), 9,
                            nullptr, 0, &out),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1843);
}

TEST_F(RobustnessTest, RandomDateTextsNeverCrash) {
  std::mt19937 rng(42);
  const std::string alphabet = "0123456789-: /.FEBJANfebxT+\t\xFF";
  const std::string masks[] = {"YYYY-MM-DD HH24:MI:SS", "YYYY-MM-DD", "YYYY-MM-DD HH24:MI",
                               "DD-MON-YY"};
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const unsigned length = rng() % 24;
    for (unsigned k = 0; k < length; ++k) text += alphabet[rng() % alphabet.size()];
    const std::string& mask = masks[rng() % 4];
    OCIDate out;
    const sword rc = OCIDateFromText(err_, T(text), static_cast<ub4>(text.size()), T(mask),
                                     static_cast<ub1>(mask.size()), nullptr, 0, &out);
    if (rc == OCI_SUCCESS) {
      // Whatever was accepted is a date that formats.
      OraText buf[32];
      ub4 size = sizeof buf;
      const std::string full = "YYYY-MM-DD HH24:MI:SS";
      EXPECT_EQ(OCIDateToText(err_, &out, T(full), 21, nullptr, 0, &size, buf), OCI_SUCCESS)
          << text;
    } else {
      ASSERT_EQ(rc, OCI_ERROR);
      const int code = LastError();
      EXPECT_TRUE(code >= 1800 && code <= 1899) << text << " " << code;
    }
  }
}

// ---- descriptors ----

TEST_F(RobustnessTest, ForeignPointersAreNotDescriptors) {
  OCIDate date = MakeDate(2001, 2, 3);
  OCINumber number{};
  long on_stack[8] = {};
  std::vector<void*> foreign = {&date, &number, on_stack, err_, env_};
  const std::string mask = "YYYY-MM-DD HH24:MI:SS";
  for (void* p : foreign) {
    OraText buf[64];
    ub4 size = sizeof buf;
    EXPECT_EQ(OCIDateTimeToText(env_, err_, static_cast<OCIDateTime*>(p), T(mask), 21, 0, nullptr,
                                0, &size, buf),
              OCI_ERROR);
    EXPECT_EQ(LastError(), 21560);
    const std::string text = "2001-02-03 04:05:06";
    EXPECT_EQ(OCIDateTimeFromText(env_, err_, T(text), text.size(), T(mask), 21, nullptr, 0,
                                  static_cast<OCIDateTime*>(p)),
              OCI_ERROR);
    EXPECT_EQ(LastError(), 21560);
    size_t length = 0;
    EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(p), 2, 6, buf, sizeof buf,
                                &length),
              OCI_ERROR);
    EXPECT_EQ(LastError(), 21560);
    EXPECT_EQ(OCIIntervalFromText(env_, err_, T(std::string("1-2")), 3,
                                  static_cast<OCIInterval*>(p)),
              OCI_ERROR);
    EXPECT_EQ(LastError(), 21560);
  }
}

TEST_F(RobustnessTest, DescriptorOfTheOtherFamilyIsRefused) {
  void* interval = Descriptor(OCI_DTYPE_INTERVAL_DS);
  void* timestamp = Descriptor(OCI_DTYPE_TIMESTAMP);
  const std::string mask = "YYYY-MM-DD HH24:MI:SS";
  OraText buf[64];
  ub4 size = sizeof buf;
  EXPECT_EQ(OCIDateTimeToText(env_, err_, static_cast<OCIDateTime*>(interval), T(mask), 21, 0,
                              nullptr, 0, &size, buf),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
  size_t length = 0;
  EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(timestamp), 2, 6, buf,
                              sizeof buf, &length),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
}

TEST_F(RobustnessTest, FreedDescriptorIsNoLongerRecognised) {
  void* d = nullptr;
  ASSERT_EQ(OCIDescriptorAlloc(env_, &d, OCI_DTYPE_INTERVAL_YM, 0, nullptr), OCI_SUCCESS);
  ASSERT_EQ(OCIDescriptorFree(d, OCI_DTYPE_INTERVAL_YM), OCI_SUCCESS);
  // Another allocation may reuse the address; only test when it did not.
  void* other = Descriptor(OCI_DTYPE_TIMESTAMP);
  if (other == d) GTEST_SKIP() << "address reused";
  OraText buf[32];
  size_t length = 0;
  EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(d), 2, 0, buf, sizeof buf,
                              &length),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 21560);
}

TEST_F(RobustnessTest, FreshDescriptorsFormat) {
  // A descriptor nobody has set holds a valid value, whatever the kind.
  const std::string mask = "SYYYY-MM-DD HH24:MI:SS.FF";
  for (ub4 type : {ub4{OCI_DTYPE_TIMESTAMP}, ub4{OCI_DTYPE_TIMESTAMP_TZ},
                   ub4{OCI_DTYPE_TIMESTAMP_LTZ}}) {
    void* d = Descriptor(type);
    OraText buf[64];
    ub4 size = sizeof buf;
    ASSERT_EQ(OCIDateTimeToText(env_, err_, static_cast<OCIDateTime*>(d), T(mask),
                                static_cast<ub1>(mask.size()), 9, nullptr, 0, &size, buf),
              OCI_SUCCESS)
        << type;
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), "-4712-01-01 00:00:00.000000000");
  }
  for (ub4 type : {ub4{OCI_DTYPE_INTERVAL_YM}, ub4{OCI_DTYPE_INTERVAL_DS}}) {
    void* d = Descriptor(type);
    OraText buf[64];
    size_t length = 0;
    ASSERT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(d), 2, 6, buf, sizeof buf,
                                &length),
              OCI_SUCCESS);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), length),
              type == OCI_DTYPE_INTERVAL_YM ? "+00-00" : "+00 00:00:00.000000");
  }
}

TEST_F(RobustnessTest, DateTimeToTextWithZeroBufferWritesNothing) {
  void* d = Descriptor(OCI_DTYPE_TIMESTAMP);
  const std::string mask = "YYYY-MM-DD HH24:MI:SS";
  OraText buf[4] = {'x', 'x', 'x', 'x'};
  ub4 size = 0;
  EXPECT_EQ(OCIDateTimeToText(env_, err_, static_cast<OCIDateTime*>(d), T(mask), 21, 0, nullptr,
                              0, &size, buf),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1877);
  EXPECT_EQ(buf[0], 'x');
  size_t length = 0;
  void* iv = Descriptor(OCI_DTYPE_INTERVAL_DS);
  EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(iv), 2, 6, buf, 0, &length),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1877);
  EXPECT_EQ(buf[0], 'x');
}

TEST_F(RobustnessTest, ExtremeTimestampsRoundTripInEveryKind) {
  // UNCONFIRMED: oracle-datatypes.md §7.1 (a value whose UTC instant falls just
  // outside the year range, 9999-12-31 23:59 at -08:00, is kept and reads back)
  const std::string mask = "SYYYY-MM-DD HH24:MI:SS.FF";
  const std::string texts[] = {"9999-12-31 23:59:59.999999999", "-4712-01-01 00:00:00.000000000"};
  for (const char* session : {"-08:00", "+08:00"}) {
    setenv("ORA_SDTZ", session, 1);
    for (ub4 type : {ub4{OCI_DTYPE_TIMESTAMP}, ub4{OCI_DTYPE_TIMESTAMP_TZ},
                     ub4{OCI_DTYPE_TIMESTAMP_LTZ}}) {
      for (const std::string& text : texts) {
        void* d = Descriptor(type);
        ASSERT_EQ(OCIDateTimeFromText(env_, err_, T(text), text.size(), T(mask),
                                      static_cast<ub1>(mask.size()), nullptr, 0,
                                      static_cast<OCIDateTime*>(d)),
                  OCI_SUCCESS)
            << text << " " << LastMessage();
        OraText buf[64];
        ub4 size = sizeof buf;
        ASSERT_EQ(OCIDateTimeToText(env_, err_, static_cast<OCIDateTime*>(d), T(mask),
                                    static_cast<ub1>(mask.size()), 9, nullptr, 0, &size, buf),
                  OCI_SUCCESS);
        const std::string expected = text[0] == '-' ? text : " " + text;
        EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), size), expected)
            << type << " " << session;
      }
    }
  }
}

TEST_F(RobustnessTest, RandomIntervalTextsNeverCrash) {
  std::mt19937 rng(99);
  const std::string alphabet = "0123456789-+: .\t\xFF" "9";
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const unsigned length = rng() % 32;
    for (unsigned k = 0; k < length; ++k) text += alphabet[rng() % alphabet.size()];
    const ub4 type = (rng() % 2) ? OCI_DTYPE_INTERVAL_YM : OCI_DTYPE_INTERVAL_DS;
    void* d = nullptr;
    ASSERT_EQ(OCIDescriptorAlloc(env_, &d, type, 0, nullptr), OCI_SUCCESS);
    const sword rc = OCIIntervalFromText(env_, err_, T(text), text.size(),
                                         static_cast<OCIInterval*>(d));
    if (rc == OCI_SUCCESS) {
      OraText buf[64];
      size_t out = 0;
      EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(d), 9, 9, buf, sizeof buf,
                                  &out),
                OCI_SUCCESS)
          << text;
    } else {
      ASSERT_EQ(rc, OCI_ERROR);
      const std::set<int> codes = {1843, 1850, 1851, 1852, 1867, 1873, 1880};
      EXPECT_EQ(codes.count(LastError()), 1U) << text << " " << LastMessage();
    }
    OCIDescriptorFree(d, type);
  }
}

TEST_F(RobustnessTest, IntervalsAtTheirLargestSetAndRead) {
  void* ym = Descriptor(OCI_DTYPE_INTERVAL_YM);
  ASSERT_EQ(OCIIntervalSetYearMonth(env_, err_, 999999999, 11, static_cast<OCIInterval*>(ym)),
            OCI_SUCCESS);
  EXPECT_EQ(OCIIntervalSetYearMonth(env_, err_, 1000000000, 0, static_cast<OCIInterval*>(ym)),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1873);
  EXPECT_EQ(OCIIntervalSetYearMonth(env_, err_, INT32_MIN, INT32_MIN,
                                    static_cast<OCIInterval*>(ym)),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1873);
  void* ds = Descriptor(OCI_DTYPE_INTERVAL_DS);
  ASSERT_EQ(OCIIntervalSetDaySecond(env_, err_, -999999999, -23, -59, -59, -999999999,
                                    static_cast<OCIInterval*>(ds)),
            OCI_SUCCESS);
  OraText buf[64];
  size_t length = 0;
  ASSERT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(ds), 9, 9, buf, sizeof buf,
                              &length),
            OCI_SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buf), length), "-999999999 23:59:59.999999999");
  EXPECT_EQ(OCIIntervalSetDaySecond(env_, err_, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX,
                                    INT32_MAX, static_cast<OCIInterval*>(ds)),
            OCI_ERROR);
  EXPECT_EQ(LastError(), 1873);
}

}  // namespace

namespace {

// Threads that free one descriptor at the same moment: exactly one frees it,
// the others find it gone (never a double delete).
TEST_F(RobustnessTest, ConcurrentFreesOfOneDescriptorDeleteItOnce) {
  for (int round = 0; round < 200; ++round) {
    void* d = nullptr;
    ASSERT_EQ(OCIDescriptorAlloc(env_, &d, OCI_DTYPE_TIMESTAMP, 0, nullptr), OCI_SUCCESS);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&ready, d] {
        ready.fetch_add(1);
        while (ready.load() < 4) {
        }
        OCIDescriptorFree(d, OCI_DTYPE_TIMESTAMP);
      });
    }
    for (std::thread& t : threads) t.join();
  }
}

// Value calls in several threads on descriptors of their own while others
// allocate and free: lookups and changes of the registry do not disturb
// each other.
TEST_F(RobustnessTest, DescriptorsUsedInSeveralThreads) {
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  OCIError* errs[4] = {};
  for (OCIError*& e : errs) {
    ASSERT_EQ(OCIHandleAlloc(env_, reinterpret_cast<void**>(&e), OCI_HTYPE_ERROR, 0, nullptr),
              OCI_SUCCESS);
  }
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this, t, &failures, err = errs[t]] {
      const std::string mask = "YYYY-MM-DD HH24:MI:SS.FF";
      const std::string text = "2001-02-0" + std::to_string(t + 1) + " 04:05:06.123456";
      for (int k = 0; k < 500; ++k) {
        void* d = nullptr;
        if (OCIDescriptorAlloc(env_, &d, OCI_DTYPE_TIMESTAMP, 0, nullptr) != OCI_SUCCESS) {
          ++failures;
          continue;
        }
        OraText buf[64];
        ub4 size = sizeof buf;
        if (OCIDateTimeFromText(env_, err, T(text), text.size(), T(mask),
                                static_cast<ub1>(mask.size()), nullptr, 0,
                                static_cast<OCIDateTime*>(d)) != OCI_SUCCESS ||
            OCIDateTimeToText(env_, err, static_cast<OCIDateTime*>(d), T(mask),
                              static_cast<ub1>(mask.size()), 6, nullptr, 0, &size,
                              buf) != OCI_SUCCESS ||
            std::string(reinterpret_cast<char*>(buf), size) != text) {
          ++failures;
        }
        OCIDescriptorFree(d, OCI_DTYPE_TIMESTAMP);
      }
    });
  }
  for (std::thread& t : threads) t.join();
  for (OCIError* e : errs) OCIHandleFree(e, OCI_HTYPE_ERROR);
  EXPECT_EQ(failures.load(), 0);
}

}  // namespace

namespace {

// Many descriptors live at once, freed and made again in waves: each one is
// recognised exactly while it is live, with its own type.
TEST_F(RobustnessTest, ManyLiveDescriptorsStayRecognised) {
  std::vector<void*> live;
  std::vector<ub4> types;
  const ub4 kinds[] = {OCI_DTYPE_TIMESTAMP, OCI_DTYPE_TIMESTAMP_TZ, OCI_DTYPE_INTERVAL_YM,
                       OCI_DTYPE_INTERVAL_DS};
  for (int wave = 0; wave < 3; ++wave) {
    for (int k = 0; k < 3000; ++k) {
      void* d = nullptr;
      const ub4 type = kinds[k % 4];
      ASSERT_EQ(OCIDescriptorAlloc(env_, &d, type, 0, nullptr), OCI_SUCCESS);
      live.push_back(d);
      types.push_back(type);
    }
    for (std::size_t k = 0; k < live.size(); ++k) {
      OraText buf[64];
      size_t length = 0;
      const bool interval = types[k] == OCI_DTYPE_INTERVAL_YM || types[k] == OCI_DTYPE_INTERVAL_DS;
      const sword rc = OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(live[k]), 2, 0,
                                         buf, sizeof buf, &length);
      ASSERT_EQ(rc, interval ? OCI_SUCCESS : OCI_ERROR) << k;
    }
    // Free every other one; the freed ones are no longer intervals.
    std::vector<void*> kept;
    std::vector<ub4> kept_types;
    for (std::size_t k = 0; k < live.size(); ++k) {
      if (k % 2 == 0) {
        ASSERT_EQ(OCIDescriptorFree(live[k], types[k]), OCI_SUCCESS);
      } else {
        kept.push_back(live[k]);
        kept_types.push_back(types[k]);
      }
    }
    live.swap(kept);
    types.swap(kept_types);
  }
  for (std::size_t k = 0; k < live.size(); ++k) OCIDescriptorFree(live[k], types[k]);
  // All gone: a freed address that was not reused is refused.
  void* d = nullptr;
  ASSERT_EQ(OCIDescriptorAlloc(env_, &d, OCI_DTYPE_INTERVAL_DS, 0, nullptr), OCI_SUCCESS);
  OraText buf[64];
  size_t length = 0;
  EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(d), 2, 0, buf, sizeof buf,
                              &length),
            OCI_SUCCESS);
  OCIDescriptorFree(d, OCI_DTYPE_INTERVAL_DS);
  EXPECT_EQ(OCIIntervalToText(env_, err_, static_cast<OCIInterval*>(d), 2, 0, buf, sizeof buf,
                              &length),
            OCI_ERROR);
}

}  // namespace
