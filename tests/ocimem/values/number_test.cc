// NUMBER algorithms: the byte format, rounding, format models and reals.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "number.h"
#include "number_cases.h"
#include "number_format.h"

namespace {

using ocimem::values::Decimal;
using ocimem::values::NumberError;

Decimal Parse(const std::string& text) {
  Decimal d;
  EXPECT_TRUE(ocimem::values::DecimalFromPlainText(text, &d)) << text;
  return d;
}

std::vector<unsigned char> Encode(const Decimal& d) {
  std::vector<unsigned char> bytes(ocimem::values::kNumberSize);
  EXPECT_EQ(ocimem::values::EncodeNumber(d, bytes.data()), NumberError::None);
  return bytes;
}

std::string Hex(const std::vector<unsigned char>& bytes) {
  std::string out;
  char buf[4];
  for (int i = 1; i <= bytes[0]; ++i) {
    std::snprintf(buf, sizeof buf, i == 1 ? "%02X" : " %02X", bytes[static_cast<std::size_t>(i)]);
    out += buf;
  }
  return out;
}

Decimal Decode(const std::vector<unsigned char>& bytes) {
  Decimal d;
  EXPECT_EQ(ocimem::values::DecodeNumber(bytes.data(), &d), NumberError::None);
  return d;
}

std::string Stored(const std::string& text) {
  return ocimem::values::DecimalToPlainText(Decode(Encode(Parse(text))));
}

struct TextResult {
  int ora = 0;
  std::string text;
};

TextResult ToText(const std::string& value, const std::string& mask) {
  TextResult r;
  ocimem::values::NumberModel model;
  r.ora = ocimem::values::ParseNumberModel(mask, &model);
  if (r.ora == 0) r.ora = ocimem::values::FormatNumber(Decode(Encode(Parse(value))), model, &r.text);
  if (r.ora == 0 && model.unsupported) r.ora = ocimem::values::kOraInvalidFormat;
  return r;
}

TextResult FromText(const std::string& text, const std::string& mask) {
  TextResult r;
  ocimem::values::NumberModel model;
  r.ora = ocimem::values::ParseNumberModel(mask, &model);
  Decimal d;
  if (r.ora == 0) r.ora = ocimem::values::ParseNumber(text, model, &d);
  if (r.ora != 0) return r;
  std::vector<unsigned char> bytes(ocimem::values::kNumberSize);
  if (ocimem::values::EncodeNumber(d, bytes.data()) != NumberError::None) {
    r.ora = ocimem::values::kOraNumberOverflow;
    return r;
  }
  r.text = ocimem::values::DecimalToPlainText(Decode(bytes));
  return r;
}

// ---- byte format (oracle-datatypes.md 2.2) ----

struct ByteCase {
  const char* name;
  const char* value;
  const char* hex;
};

const ByteCase kBytes[] = {
    {"Zero", "0", "80"},
    {"One", "1", "C1 02"},
    {"Five", "5", "C1 06"},
    {"Hundred", "100", "C2 02"},
    {"OneTwoThree", "123", "C2 02 18"},
    {"Fraction", "123.45", "C2 02 18 2E"},
    {"TrailingPairStripped", "14500", "C3 02 2E"},
    {"EightDigits", "12345678", "C4 0D 23 39 4F"},
    {"Half", "0.5", "C0 33"},
    {"SmallFraction", "0.0000456", "BE 2E 3D"},
    {"MinusOne", "-1", "3E 64 66"},
    {"MinusHalf", "-0.5", "3F 33 66"},
    {"MinusSmallFraction", "-0.00734", "40 1C 3D 66"},
    {"MinusEightDigits", "-12345678", "3B 59 43 2D 17 66"},
    {"SmallestPositive", "1E-130", "80 02"},
    {"SmallestNegative", "-1E-130", "7F 64 66"},
    {"OneE125", "1E125", "FF 0B"},
    {"MinusOneE125", "-1E125", "00 5B 66"},
    {"MinusNinePointNineE125", "-9.9E125", "00 02 66"},
    {"NormalisedScale", "-1234.50", "3D 59 43 33 66"},
};

class NumberBytes : public ::testing::TestWithParam<ByteCase> {};

TEST_P(NumberBytes, EncodesAsOracle) {
  const ByteCase& c = GetParam();
  const auto bytes = Encode(Parse(c.value));
  EXPECT_EQ(Hex(bytes), c.hex);
  EXPECT_EQ(ocimem::values::DecimalToPlainText(Decode(bytes)),
            ocimem::values::DecimalToPlainText(Parse(c.value)));
}

INSTANTIATE_TEST_SUITE_P(Sheet, NumberBytes, ::testing::ValuesIn(kBytes),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(NumberBytesTest, LargestPositiveHasTwentyMantissaBytes) {
  const auto bytes = Encode(Parse(std::string(40, '9') + std::string(86, '0')));
  ASSERT_EQ(bytes[0], 21);
  EXPECT_EQ(bytes[1], 0xFF);
  for (int i = 2; i <= 21; ++i) EXPECT_EQ(bytes[static_cast<std::size_t>(i)], 0x64) << i;
}

TEST(NumberBytesTest, LargestNegativeHasNoTrailer) {
  const auto bytes = Encode(Parse("-" + std::string(40, '9') + std::string(86, '0')));
  ASSERT_EQ(bytes[0], 21);
  EXPECT_EQ(bytes[1], 0x00);
  for (int i = 2; i <= 21; ++i) EXPECT_EQ(bytes[static_cast<std::size_t>(i)], 0x02) << i;
}

TEST(NumberBytesTest, OneE126Overflows) {
  std::vector<unsigned char> bytes(22);
  EXPECT_EQ(ocimem::values::EncodeNumber(Parse("1E126"), bytes.data()), NumberError::Overflow);
  EXPECT_EQ(ocimem::values::EncodeNumber(Parse("-1E126"), bytes.data()), NumberError::Overflow);
}

TEST(NumberBytesTest, RoundingUpToOneE126Overflows) {
  std::vector<unsigned char> bytes(22);
  const Decimal d = Parse(std::string(41, '9') + std::string(85, '0'));
  EXPECT_EQ(ocimem::values::EncodeNumber(d, bytes.data()), NumberError::Overflow);
}

// UNCONFIRMED: oracle-datatypes.md §2.3 (underflow becomes zero)
TEST(NumberBytesTest, BelowSmallestBecomesZero) {
  EXPECT_EQ(Hex(Encode(Parse("9E-131"))), "80");
  EXPECT_EQ(Hex(Encode(Parse("-9E-131"))), "80");
}

TEST(NumberBytesTest, FortyDigitsKeptFortyOneRounded) {
  EXPECT_EQ(Stored(std::string(40, '9')), std::string(40, '9'));
  EXPECT_EQ(Stored(std::string(41, '9')), "1" + std::string(41, '0'));
  EXPECT_EQ(Stored(std::string(42, '9')), "1" + std::string(42, '0'));
}

TEST(NumberBytesTest, OddExponentKeepsThirtyNineDigits) {
  // The first base-100 digit then holds a single decimal digit.
  EXPECT_EQ(Stored("12345678901234567890123456789012345678912"),
            "12345678901234567890123456789012345678900");
  EXPECT_EQ(Stored("12345678901234567890123456789012345678950"),
            "12345678901234567890123456789012345679000");
}

TEST(NumberBytesTest, NoNegativeZero) {
  EXPECT_EQ(Hex(Encode(Parse("-0"))), "80");
  EXPECT_EQ(Hex(Encode(Parse("-0.000"))), "80");
}

struct InvalidBytesCase {
  const char* name;
  std::vector<unsigned char> bytes;
};

class NumberInvalidBytes : public ::testing::TestWithParam<InvalidBytesCase> {};

TEST_P(NumberInvalidBytes, AreRejected) {
  std::vector<unsigned char> bytes = GetParam().bytes;
  bytes.resize(22);
  Decimal d;
  EXPECT_EQ(ocimem::values::DecodeNumber(bytes.data(), &d), NumberError::Invalid);
}

// UNCONFIRMED: oracle-datatypes.md §1 ORA-22060 (exact checks)
INSTANTIATE_TEST_SUITE_P(
    Checks, NumberInvalidBytes,
    ::testing::Values(InvalidBytesCase{"LengthZero", {0}},
                      InvalidBytesCase{"LengthTooLarge", {22, 0xC1, 2}},
                      InvalidBytesCase{"SingleByteNotZero", {1, 0xC1}},
                      InvalidBytesCase{"MinusInfinity", {1, 0x00}},
                      InvalidBytesCase{"PlusInfinity", {2, 0xFF, 0x65}},
                      InvalidBytesCase{"DigitOutOfRange", {2, 0xC1, 0x70}},
                      InvalidBytesCase{"LeadingZeroDigit", {3, 0xC1, 0x01, 0x02}},
                      InvalidBytesCase{"TrailingZeroDigit", {3, 0xC1, 0x02, 0x01}},
                      InvalidBytesCase{"NegativeWithoutTrailer", {3, 0x3E, 0x64, 0x64}},
                      InvalidBytesCase{"NegativeTrailerOnly", {2, 0x3E, 0x66}}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- NUMBER -> text ----

class NumberToTextTable : public ::testing::TestWithParam<number_cases::ToTextCase> {};

TEST_P(NumberToTextTable, MatchesOracle) {
  const auto& c = GetParam();
  const TextResult r = ToText(c.value, c.mask);
  if (c.text != nullptr) {
    EXPECT_EQ(r.ora, 0);
    EXPECT_EQ(r.text, c.text);
  } else {
    EXPECT_EQ(r.ora, c.ora);
  }
}

INSTANTIATE_TEST_SUITE_P(Sheet, NumberToTextTable, ::testing::ValuesIn(number_cases::kToText),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- text -> NUMBER ----

class NumberFromTextTable : public ::testing::TestWithParam<number_cases::FromTextCase> {};

TEST_P(NumberFromTextTable, MatchesOracle) {
  const auto& c = GetParam();
  const std::string mask = c.mask != nullptr ? c.mask : number_cases::BuildMask(c.text);
  const TextResult r = FromText(c.text, mask);
  if (c.value != nullptr) {
    EXPECT_EQ(r.ora, 0);
    EXPECT_EQ(r.text, ocimem::values::DecimalToPlainText(Parse(c.value)));
  } else {
    EXPECT_EQ(r.ora, c.ora);
  }
}

INSTANTIATE_TEST_SUITE_P(Sheet, NumberFromTextTable, ::testing::ValuesIn(number_cases::kFromText),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(NumberFromTextTest, Row27IntegerOf127DigitsOverflows) {
  // UNCONFIRMED: oracle-datatypes.md §4.4 row 27 (ORA-22053)
  const std::string text = "1" + std::string(126, '0');
  EXPECT_EQ(FromText(text, number_cases::BuildMask(text)).ora, 22053);
}

TEST(NumberFromTextTest, Row28BelowSmallestReadsAsZero) {
  // UNCONFIRMED: oracle-datatypes.md §4.4 row 28
  const std::string text = "0." + std::string(131, '0') + "1";
  const TextResult r = FromText(text, number_cases::BuildMask(text));
  EXPECT_EQ(r.ora, 0);
  EXPECT_EQ(r.text, "0");
}

TEST(NumberFromTextTest, LargestValueReadsBack) {
  const std::string text = std::string(40, '9') + std::string(86, '0');
  const TextResult r = FromText(text, number_cases::BuildMask(text));
  EXPECT_EQ(r.ora, 0);
  EXPECT_EQ(r.text, text);
}

// ---- random round trips ----

// A random NUMBER: 1..20 base-100 digits, any exponent of the range.
std::vector<unsigned char> RandomNumber(std::mt19937_64& rng, int min_e100, int max_e100) {
  std::uniform_int_distribution<int> len_dist(1, 20);
  std::uniform_int_distribution<int> digit(0, 99);
  std::uniform_int_distribution<int> exp_dist(min_e100, max_e100);
  const int len = len_dist(rng);
  Decimal d;
  for (int i = 0; i < len; ++i) {
    int v = digit(rng);
    if ((i == 0 || i == len - 1) && v == 0) v = 1;
    d.digits += static_cast<char>('0' + v / 10);
    d.digits += static_cast<char>('0' + v % 10);
  }
  d.exponent = 2 * (exp_dist(rng) + 1);
  d.negative = (rng() & 1) != 0;
  ocimem::values::Normalize(&d);
  return Encode(d);
}

TEST(NumberRoundTripTest, FullRangeTextIsExact) {
  std::mt19937_64 rng(20261122);
  const std::string mask = "FM" + std::string(126, '9') + "." + std::string(170, '9');
  ocimem::values::NumberModel model;
  ASSERT_EQ(ocimem::values::ParseNumberModel(mask, &model), 0);
  for (int i = 0; i < 3000; ++i) {
    const auto bytes = RandomNumber(rng, -65, 62);
    std::string text;
    ASSERT_EQ(ocimem::values::FormatNumber(Decode(bytes), model, &text), 0);
    const std::string built = number_cases::BuildMask(text);
    ocimem::values::NumberModel back_model;
    ASSERT_EQ(ocimem::values::ParseNumberModel(built, &back_model), 0) << text;
    Decimal back;
    ASSERT_EQ(ocimem::values::ParseNumber(text, back_model, &back), 0) << text;
    EXPECT_EQ(Hex(Encode(back)), Hex(bytes)) << text;
  }
}

TEST(NumberRoundTripTest, WideAdapterMaskIsExactWhereItFits) {
  std::mt19937_64 rng(7);
  int checked = 0;
  for (int i = 0; i < 3000; ++i) {
    const auto bytes = RandomNumber(rng, -15, 13);
    const Decimal d = Decode(bytes);
    const int frac = static_cast<int>(d.digits.size()) - d.exponent;
    if (frac > 29 || d.exponent > 28) continue;
    const TextResult r = ToText(ocimem::values::DecimalToPlainText(d), number_cases::kMask60);
    ASSERT_EQ(r.ora, 0);
    const TextResult back = FromText(r.text, number_cases::BuildMask(r.text));
    ASSERT_EQ(back.ora, 0) << r.text;
    EXPECT_EQ(back.text, ocimem::values::DecimalToPlainText(d));
    ++checked;
  }
  EXPECT_GT(checked, 500);
}

// ---- comparison ----

TEST(NumberCompareTest, OrdersAsNumbers) {
  const char* sorted[] = {"-9.9E125", "-1E125", "-12345678", "-1234.5", "-1.5", "-1",
                          "-0.5", "-0.00734", "-1E-130", "0", "1E-130", "0.0000456",
                          "0.5", "1", "1.5", "5", "100", "123", "123.45", "14500",
                          "12345678", "1E125"};
  const std::size_t n = sizeof sorted / sizeof sorted[0];
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      const auto a = Encode(Parse(sorted[i]));
      const auto b = Encode(Parse(sorted[j]));
      const int expected = i < j ? -1 : (i > j ? 1 : 0);
      EXPECT_EQ(ocimem::values::CompareNumbers(a.data(), b.data()), expected)
          << sorted[i] << " vs " << sorted[j];
    }
  }
}

TEST(NumberCompareTest, IgnoresBytesBeyondTheLength) {
  auto a = Encode(Parse("5"));
  auto b = Encode(Parse("5"));
  b[10] = 0x77;
  EXPECT_EQ(ocimem::values::CompareNumbers(a.data(), b.data()), 0);
}

// ---- integers ----

TEST(NumberIntegerTest, ExtremesRoundTrip) {
  for (std::int64_t v : {INT64_MIN, INT64_MIN + 1, std::int64_t{-1}, std::int64_t{0},
                         std::int64_t{1}, INT64_MAX}) {
    Decimal d;
    ocimem::values::DecimalFromInteger(v, &d);
    std::int64_t back = 0;
    ASSERT_TRUE(ocimem::values::DecimalToInt64(Decode(Encode(d)), &back));
    EXPECT_EQ(back, v);
  }
  Decimal d;
  ocimem::values::DecimalFromUnsigned(UINT64_MAX, &d);
  std::uint64_t back = 0;
  ASSERT_TRUE(ocimem::values::DecimalToUint64(Decode(Encode(d)), &back));
  EXPECT_EQ(back, UINT64_MAX);
}

TEST(NumberIntegerTest, RoundsHalfAwayFromZero) {
  std::int64_t v = 0;
  ASSERT_TRUE(ocimem::values::DecimalToInt64(Parse("2.5"), &v));
  EXPECT_EQ(v, 3);
  ASSERT_TRUE(ocimem::values::DecimalToInt64(Parse("-2.5"), &v));
  EXPECT_EQ(v, -3);
  ASSERT_TRUE(ocimem::values::DecimalToInt64(Parse("2.4"), &v));
  EXPECT_EQ(v, 2);
}

TEST(NumberIntegerTest, OutOfRangeFails) {
  std::int64_t v = 0;
  std::uint64_t u = 0;
  EXPECT_FALSE(ocimem::values::DecimalToInt64(Parse("9223372036854775808"), &v));
  EXPECT_FALSE(ocimem::values::DecimalToInt64(Parse("-9223372036854775809"), &v));
  EXPECT_FALSE(ocimem::values::DecimalToUint64(Parse("18446744073709551616"), &u));
  EXPECT_FALSE(ocimem::values::DecimalToUint64(Parse("-1"), &u));
  EXPECT_FALSE(ocimem::values::DecimalToInt64(Parse("1E40"), &v));
}

// ---- reals (oracle-datatypes.md 5) ----

struct FromRealCase {
  const char* name;
  double value;
  bool is_float;
  const char* expected;
};

const FromRealCase kFromReal[] = {
    {"Row01Zero", 0.0, false, "0"},
    {"Row02NegativeZero", -0.0, false, "0"},
    {"Row03One", 1.0, false, "1"},
    {"Row04Half", 0.5, false, ".5"},
    // UNCONFIRMED: oracle-datatypes.md §5 row 5 (exact binary value, rounded at 40 digits)
    {"Row05Tenth", 0.1, false, ".1000000000000000055511151231257827021182"},
    // UNCONFIRMED: oracle-datatypes.md §5 row 6
    {"Row06OddExponent", 123.456, false, "123.456000000000003069544618483632802963"},
    // UNCONFIRMED: oracle-datatypes.md §5 row 7
    {"Row07OneThird", 1.0 / 3.0, false, ".3333333333333333148296162562473909929395"},
    {"Row08TwoPow53", 9007199254740992.0, false, "9007199254740992"},
    {"Row09OneE22", 1e22, false, "10000000000000000000000"},
    // UNCONFIRMED: oracle-datatypes.md §5 row 11
    {"Row11Tiny", 1e-300, false, "0"},
    // UNCONFIRMED: oracle-datatypes.md §5 row 12
    {"Row12FloatTenth", static_cast<double>(0.1f), true, ".100000001490116119384765625"},
    // UNCONFIRMED: oracle-datatypes.md §5 row 13
    {"Row13FloatPi", static_cast<double>(3.14159265f), true, "3.1415927410125732421875"},
};

class NumberFromRealTable : public ::testing::TestWithParam<FromRealCase> {};

TEST_P(NumberFromRealTable, KeepsTheBinaryValue) {
  const auto& c = GetParam();
  const Decimal d = ocimem::values::DecimalFromDouble(c.value);
  EXPECT_EQ(ocimem::values::DecimalToPlainText(Decode(Encode(d))), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Sheet, NumberFromRealTable, ::testing::ValuesIn(kFromReal),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(NumberRealTest, Row10HugeDoubleOverflows) {
  // UNCONFIRMED: oracle-datatypes.md §5 row 10 (ORA-22053)
  std::vector<unsigned char> bytes(22);
  EXPECT_EQ(ocimem::values::EncodeNumber(ocimem::values::DecimalFromDouble(1e300), bytes.data()),
            NumberError::Overflow);
}

std::uint64_t Bits(double d) {
  std::uint64_t b;
  std::memcpy(&b, &d, sizeof b);
  return b;
}

TEST(NumberRealTest, Row14TenthToDouble) {
  EXPECT_EQ(Bits(ocimem::values::DecimalToDouble(Parse("0.1"))), 0x3FB999999999999AULL);
}

TEST(NumberRealTest, Row15FortyDigitThirdIsNearestDouble) {
  // UNCONFIRMED: oracle-datatypes.md §5 row 15 (correctly rounded)
  EXPECT_EQ(ocimem::values::DecimalToDouble(Parse("." + std::string(40, '3'))), 1.0 / 3.0);
}

TEST(NumberRealTest, Row16SeventeenDigitsCorrectlyRounded) {
  EXPECT_EQ(ocimem::values::DecimalToDouble(Parse("454208758447380.91")), 454208758447380.9375);
}

TEST(NumberRealTest, Row17SmallestToDouble) {
  EXPECT_EQ(ocimem::values::DecimalToDouble(Parse("1E-130")), 1e-130);
}

TEST(NumberRealTest, Row18FloatNearest) {
  EXPECT_EQ(ocimem::values::DecimalToFloat(Parse("16777217")), 16777216.0f);
}

TEST(NumberRealTest, Row19FloatOverflowIsInfinity) {
  // UNCONFIRMED: oracle-datatypes.md §5 row 19
  EXPECT_TRUE(std::isinf(ocimem::values::DecimalToFloat(Parse("1E50"))));
  EXPECT_LT(ocimem::values::DecimalToFloat(Parse("-1E50")), 0.0f);
}

TEST(NumberRealTest, Row20FloatUnderflowIsZero) {
  // UNCONFIRMED: oracle-datatypes.md §5 row 20
  EXPECT_EQ(ocimem::values::DecimalToFloat(Parse("1E-130")), 0.0f);
}

TEST(NumberRealTest, FloatPiFromNumber) {
  EXPECT_EQ(ocimem::values::DecimalToFloat(Parse("3.14159265")), 3.14159265f);
}

TEST(NumberRealTest, RandomDoublesRoundTripExactly) {
  std::mt19937_64 rng(99);
  std::uniform_real_distribution<double> mantissa(1.0, 10.0);
  std::uniform_int_distribution<int> exponent(-129, 124);
  for (int i = 0; i < 2000; ++i) {
    double v = mantissa(rng) * std::pow(10.0, exponent(rng));
    if ((rng() & 1) != 0) v = -v;
    const Decimal d = Decode(Encode(ocimem::values::DecimalFromDouble(v)));
    EXPECT_EQ(Bits(ocimem::values::DecimalToDouble(d)), Bits(v)) << v;
  }
}

TEST(NumberRealTest, RandomFloatsRoundTripExactly) {
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<float> dist(-1e30f, 1e30f);
  for (int i = 0; i < 2000; ++i) {
    const float v = dist(rng) * std::pow(10.0f, -static_cast<float>(rng() % 60));
    const Decimal d = Decode(Encode(ocimem::values::DecimalFromDouble(v)));
    EXPECT_EQ(ocimem::values::DecimalToFloat(d), v) << v;
  }
}

TEST(NumberRealTest, IntegersUpToTwoPow53SurviveBothWays) {
  for (double v : {1.0, 2.0, 1e15, 9007199254740991.0, 9007199254740992.0, -9007199254740992.0}) {
    const Decimal d = Decode(Encode(ocimem::values::DecimalFromDouble(v)));
    EXPECT_EQ(ocimem::values::DecimalToDouble(d), v);
  }
}

}  // namespace
