// Decimal text to NUMBER bytes and back, checked against the byte layouts
// Oracle documents and round trips of many values.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "number_text.h"

namespace varnadp {
namespace {

std::string Bytes(const OCINumber& number) {
  std::string hex;
  char two[3];
  for (int i = 1; i <= number.OCINumberPart[0]; ++i) {
    std::snprintf(two, sizeof two, "%02X", number.OCINumberPart[i]);
    hex += two;
  }
  return hex;
}

std::string ToBytes(const char* text) {
  OCINumber number;
  EXPECT_EQ(NumberParse::kOk, NumberFromDecimal(text, &number)) << text;
  return Bytes(number);
}

std::string Again(const char* text, int scale = 0) {
  OCINumber number;
  EXPECT_EQ(NumberParse::kOk, NumberFromDecimal(text, &number)) << text;
  std::string out;
  AppendNumberDecimal(number, scale, &out);
  return out;
}

struct Layout {
  const char* text;
  const char* bytes;
};

// The worked examples of Oracle's NUMBER layout (DUMP bytes without the length).
TEST(NumberTextTest, TextGivesOraclesBytes) {
  const Layout cases[] = {
      {"0", "80"},           {"1", "C102"},         {"5", "C106"},
      {"100", "C202"},       {"123", "C20218"},     {"123.45", "C202182E"},
      {"14500", "C3022E"},   {"12345678", "C40D23394F"}, {"0.5", "C033"},
      {"0.0000456", "BE2E3D"}, {"-1", "3E6466"},    {"-0.5", "3F3366"},
      {"-0.00734", "401C3D66"}, {"-12345678", "3B59432D1766"},
      {"1e-130", "8002"},    {"-1E-130", "7F6466"}, {"1E125", "FF0B"},
      {"-1e125", "005B66"},  {"-0", "80"},          {"0.000", "80"},
      {"007", "C108"},       {"1.5e3", "C210"},   {"-9.9e125", "000266"},
  };
  for (const Layout& c : cases) EXPECT_EQ(c.bytes, ToBytes(c.text)) << c.text;
}

TEST(NumberTextTest, FortyNinesAreKeptAndFortyOneRoundUp) {
  const std::string forty(40, '9');
  EXPECT_EQ(forty, Again(forty.c_str()));
  const std::string forty_one(41, '9');
  EXPECT_EQ("1E+41", Again(forty_one.c_str()));
}

TEST(NumberTextTest, RoundingIsHalfAwayFromZeroAtTheTwentiethPair) {
  // 21 base-100 digits: the last pair decides, a tie going away from zero.
  EXPECT_EQ("12345678901234567890123456789012345678.94", Again("12345678901234567890123456789012345678.944"));
  EXPECT_EQ("12345678901234567890123456789012345678.95", Again("12345678901234567890123456789012345678.945"));
  EXPECT_EQ("-12345678901234567890123456789012345678.95", Again("-12345678901234567890123456789012345678.945"));
  // A leading pair of one digit leaves 39 decimal digits.
  EXPECT_EQ("1234567890123456789012345678901234567.9", Again("1234567890123456789012345678901234567.895"));
}

TEST(NumberTextTest, DigitsFarBeyondWhatANumberHoldsOnlyMoveTheExponent) {
  const std::string ones(120, '1');
  EXPECT_EQ("1.111111111111111111111111111111111111111E+119", Again(ones.c_str()));
  EXPECT_EQ("0.1111111111111111111111111111111111111111", Again(("0." + ones).c_str()));
  // The first pair holds one digit here ("01"): 39 of them are kept.
  EXPECT_EQ("0.00000000000" + std::string(39, '1'), Again(("0.00000000000" + ones).c_str()));
  const std::string nines = "0." + std::string(100, '9');
  EXPECT_EQ("1", Again(nines.c_str()));
}

TEST(NumberTextTest, OverflowAndUnderflow) {
  OCINumber number;
  EXPECT_EQ(NumberParse::kOverflow, NumberFromDecimal("1e126", &number));
  EXPECT_EQ(NumberParse::kOverflow, NumberFromDecimal("-99999999999999999999999999999999999999999e90", &number));
  // decision: below 1E-130 a value becomes 0, as Oracle's rounding does (UNCONFIRMED in Oracle's documents).
  EXPECT_EQ(NumberParse::kOk, NumberFromDecimal("1e-131", &number));
  EXPECT_EQ("80", Bytes(number));
}

TEST(NumberTextTest, SyntaxErrors) {
  OCINumber number;
  for (const char* text : {"", "-", ".", "1.2.3", "1e", "1e+", "abc", "1x", "--1", "1 "}) {
    EXPECT_EQ(NumberParse::kSyntax, NumberFromDecimal(text, &number)) << text;
  }
}

TEST(NumberTextTest, OutputIsPlainUnlessZerosWouldPile) {
  EXPECT_EQ("0", Again("0"));
  EXPECT_EQ("5", Again("5"));
  EXPECT_EQ("-0.5", Again("-.5"));
  EXPECT_EQ("123.45", Again("123.450"));
  EXPECT_EQ("1000000", Again("1e6"));
  EXPECT_EQ("0.0000456", Again("4.56e-5"));
  EXPECT_EQ("1E+125", Again("1e125"));
  EXPECT_EQ("-9.9E+125", Again("-9.9e125"));
  EXPECT_EQ("1E-130", Again("1e-130"));
  EXPECT_EQ("1.5E-50", Again("15e-51"));
  EXPECT_EQ("1" + std::string(40, '0'), Again("1e40"));
  EXPECT_EQ("1E+41", Again("1e41"));
}

TEST(NumberTextTest, ScaleAddsFractionZerosButNeverDropsDigits) {
  EXPECT_EQ("19.10", Again("19.1", 2));
  EXPECT_EQ("19.00", Again("19", 2));
  EXPECT_EQ("0.00", Again("0", 2));
  EXPECT_EQ("-0.50", Again("-0.5", 2));
  EXPECT_EQ("1.2345", Again("1.2345", 2));
}

TEST(NumberTextTest, ThousandsOfValuesSurviveBothWays) {
  unsigned seed = 12345;
  auto next = [&seed]() { return seed = seed * 1103515245u + 12345u; };
  for (int i = 0; i < 5000; ++i) {
    std::string digits;
    const int count = 1 + static_cast<int>(next() % 38);
    for (int k = 0; k < count; ++k) digits.push_back(static_cast<char>('0' + next() % 10));
    digits[0] = static_cast<char>('1' + next() % 9);
    const int point = static_cast<int>(next() % (count + 1));
    std::string text = (next() % 2 ? "-" : "") + digits.substr(0, static_cast<size_t>(point));
    if (point == 0) text += "0";
    if (point < count) text += "." + digits.substr(static_cast<size_t>(point));
    // Trailing fraction zeros are not part of the value.
    while (text.find('.') != std::string::npos && (text.back() == '0' || text.back() == '.')) {
      const bool dot = text.back() == '.';
      text.pop_back();
      if (dot) break;
    }
    if (text == "-0") text = "0";
    EXPECT_EQ(text, Again(text.c_str())) << text;
  }
}

}  // namespace
}  // namespace varnadp
