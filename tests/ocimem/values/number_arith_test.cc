// Exact NUMBER arithmetic on decimals: sums, differences, products, quotients and
// remainders, checked through the 22-byte form that a NUMBER keeps.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "number_arith.h"

namespace ocimem::values {
namespace {

Decimal D(const char* text) {
  Decimal d;
  EXPECT_TRUE(DecimalFromPlainText(text, &d)) << text;
  return d;
}

// The value as a NUMBER keeps it: rounded to its 40 digits.
std::string Stored(const Decimal& d) {
  unsigned char bytes[kNumberSize];
  std::memset(bytes, 0, sizeof bytes);
  if (EncodeNumber(d, bytes) != NumberError::None) return "overflow";
  Decimal back;
  if (DecodeNumber(bytes, &back) != NumberError::None) return "invalid";
  return DecimalToPlainText(back);
}

TEST(NumberArith, AddAndSubtractExactly) {
  EXPECT_EQ(".3", Stored(AddDecimals(D("0.1"), D("0.2"))));
  EXPECT_EQ("0", Stored(AddDecimals(D("12.5"), D("-12.5"))));
  EXPECT_EQ("-7.25", Stored(SubtractDecimals(D("2.75"), D("10"))));
  EXPECT_EQ("100000000000000000001", Stored(AddDecimals(D("100000000000000000000"), D("1"))));
  EXPECT_EQ("5", Stored(SubtractDecimals(D("0"), D("-5"))));
  EXPECT_EQ("-3", Stored(AddDecimals(D("-1"), D("-2"))));
}

TEST(NumberArith, MultiplyExactly) {
  EXPECT_EQ(".02", Stored(MultiplyDecimals(D("0.1"), D("0.2"))));
  EXPECT_EQ("-6", Stored(MultiplyDecimals(D("-2"), D("3"))));
  EXPECT_EQ("0", Stored(MultiplyDecimals(D("0"), D("-3"))));
  EXPECT_EQ("121932631137021795226185032733622923332237463801111263526900",
            DecimalToPlainText(MultiplyDecimals(D("123456789012345678901234567890"),
                                                D("987654321098765432109876543210"))));
}

TEST(NumberArith, DivideRoundsOnlyOnce) {
  Decimal q;
  ASSERT_TRUE(DivideDecimals(D("1"), D("3"), &q));
  EXPECT_EQ(".3333333333333333333333333333333333333333", Stored(q));
  ASSERT_TRUE(DivideDecimals(D("2"), D("3"), &q));
  EXPECT_EQ(".6666666666666666666666666666666666666667", Stored(q));
  ASSERT_TRUE(DivideDecimals(D("-10"), D("4"), &q));
  EXPECT_EQ("-2.5", Stored(q));
  ASSERT_TRUE(DivideDecimals(D("1"), D("8"), &q));
  EXPECT_EQ(".125", Stored(q));
  EXPECT_FALSE(DivideDecimals(D("1"), D("0"), &q));
}

TEST(NumberArith, RemainderTakesTheDividendsSign) {
  EXPECT_EQ("3", Stored(RemainderDecimals(D("11"), D("4"))));
  EXPECT_EQ("-3", Stored(RemainderDecimals(D("-11"), D("4"))));
  EXPECT_EQ("3", Stored(RemainderDecimals(D("11"), D("-4"))));
  EXPECT_EQ("1.5", Stored(RemainderDecimals(D("7.5"), D("2"))));
  EXPECT_EQ("5", Stored(RemainderDecimals(D("5"), D("0"))));
}

TEST(NumberArith, FloorCeilTruncate) {
  EXPECT_EQ("-3", Stored(FloorDecimal(D("-2.5"))));
  EXPECT_EQ("2", Stored(FloorDecimal(D("2.5"))));
  EXPECT_EQ("-2", Stored(CeilDecimal(D("-2.5"))));
  EXPECT_EQ("3", Stored(CeilDecimal(D("2.1"))));
  EXPECT_EQ("4", Stored(CeilDecimal(D("4"))));
  EXPECT_EQ("2.56", Stored(TruncateToFraction(D("2.567"), 2)));
  EXPECT_EQ("1200", Stored(TruncateToFraction(D("1299"), -2)));
  EXPECT_EQ("0", Stored(TruncateToFraction(D("0.5"), 0)));
  EXPECT_EQ(-1, CompareDecimals(D("-1"), D("0.5")));
  EXPECT_EQ(0, CompareDecimals(D("1.50"), D("1.5")));
}

}  // namespace
}  // namespace ocimem::values
