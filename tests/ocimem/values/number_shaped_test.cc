// Texts read with a mask of their own shape ("S9999.99" for "-1234.50") are encoded without
// a model; these tests hold that way to the model's: the same bytes wherever it answers,
// and no answer (nothing written) for anything the model must decide.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "number.h"
#include "number_format.h"

namespace {

using ocimem::values::Decimal;
using ocimem::values::kNumberSize;
using ocimem::values::NumberModel;
using Bytes = std::vector<unsigned char>;

// The bytes the general way writes, or an empty vector when it fails.
Bytes General(const std::string& text, const std::string& mask) {
  NumberModel model;
  if (ocimem::values::ParseNumberModel(mask, &model) != 0) return {};
  Decimal value;
  if (ocimem::values::ParseNumber(text, model, &value) != 0) return {};
  Bytes bytes(kNumberSize);
  if (ocimem::values::EncodeNumber(value, bytes.data()) != ocimem::values::NumberError::None) {
    return {};
  }
  return bytes;
}

// The shaped way's bytes, or an empty vector when it leaves the text to the
// general way; fails the test when it writes anything then.
Bytes Shaped(const std::string& text, const std::string& mask) {
  Bytes bytes(kNumberSize, 0xA5);
  if (ocimem::values::ParseShapedNumber(text, mask, bytes.data())) return bytes;
  EXPECT_EQ(bytes, Bytes(kNumberSize, 0xA5)) << "wrote while refusing [" << text << "] ["
                                             << mask << "]";
  return {};
}

std::string OwnShape(const std::string& text) {
  std::string mask;
  for (char c : text) {
    mask += (c >= '0' && c <= '9') ? '9' : (c == '+' || c == '-') ? 'S' : c;
  }
  return mask;
}

// Takes the pair the shaped way and checks it against the general way.
void ExpectSameAsGeneral(const std::string& text, const std::string& mask) {
  const Bytes shaped = Shaped(text, mask);
  if (shaped.empty()) return;
  EXPECT_EQ(shaped, General(text, mask)) << "[" << text << "] [" << mask << "]";
}

TEST(NumberShaped, WritesOracleBytes) {
  const Bytes bytes = Shaped("-1234.50", "S9999.99");
  ASSERT_FALSE(bytes.empty());
  // Length 5: exponent, 12, 34, 50 as 101 - pair, then the 102 that ends a
  // negative number.
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 5), (Bytes{5, 0x3D, 89, 67, 51}));
  EXPECT_EQ(bytes[5], 0x66);
  EXPECT_EQ(Bytes(bytes.begin() + 6, bytes.end()), Bytes(kNumberSize - 6, 0));
  const Bytes positive = Shaped("1234.5", "9999.9");
  EXPECT_EQ(Bytes(positive.begin(), positive.begin() + 5), (Bytes{4, 0xC2, 13, 35, 51}));
  EXPECT_EQ(positive, General("1234.5", "9999.9"));
}

TEST(NumberShaped, ZeroInEveryForm) {
  for (const char* text : {"0", "000", "0.000", "-0", "+00.0", "-.0"}) {
    const std::string mask = OwnShape(text);
    const Bytes shaped = Shaped(text, mask);
    if (std::string(text) == "-.0") {
      EXPECT_TRUE(shaped.empty()) << "no integer place in the mask";
      continue;
    }
    ASSERT_FALSE(shaped.empty()) << text;
    EXPECT_EQ(shaped[0], 1) << text;
    EXPECT_EQ(shaped[1], 0x80) << text;
    EXPECT_EQ(shaped, General(text, mask)) << text;
  }
}

TEST(NumberShaped, ThirtyEightDigitsEitherSideOfThePoint) {
  const std::string digits = "12345678901234567890123456789012345678";
  for (std::size_t point = 0; point <= digits.size(); ++point) {
    for (const char* sign : {"", "-"}) {
      std::string text = sign + digits;
      // Point 0: an integer of 38 digits.
      if (point != 0) text.insert(std::string(sign).size() + point, ".");
      const std::string mask = OwnShape(text);
      const Bytes shaped = Shaped(text, mask);
      ASSERT_FALSE(shaped.empty()) << text;
      EXPECT_EQ(shaped, General(text, mask)) << text;
    }
  }
}

// A negative number of twenty base-100 digits has no room for the byte that
// ends the others.
TEST(NumberShaped, TwentyPairsOfANegativeNumberHaveNoEndByte) {
  const std::string text = "-1234567890123456789012345678901234567.8";
  const Bytes shaped = Shaped(text, OwnShape(text));
  ASSERT_FALSE(shaped.empty());
  EXPECT_EQ(shaped[0], 21);
  EXPECT_NE(shaped[21], 0x66);
  EXPECT_EQ(shaped, General(text, OwnShape(text)));
}

TEST(NumberShaped, LeavesEveryOtherMaskToTheGeneralWay) {
  const std::pair<const char*, const char*> cases[] = {
      {"12", "FM99"},          {"12", "99S"},     {"1,234", "9,999"}, {"12", "09"},
      {"12", ""},              {"12", "S"},       {".5", ".9"},       {"12", "9999 "},
      {"1.5", "9.9.9"},        {"12", "S99S"},    {"$12", "$99"},     {"12", "99MI"},
  };
  for (const auto& [text, mask] : cases) {
    EXPECT_TRUE(Shaped(text, mask).empty()) << "[" << text << "] [" << mask << "]";
  }
  // Thirty-nine places are more than a NUMBER keeps unrounded.
  const std::string wide(39, '9');
  EXPECT_TRUE(Shaped(wide, wide).empty());
  EXPECT_TRUE(Shaped("1.5", "9." + std::string(38, '9')).empty());
}

TEST(NumberShaped, LeavesEveryTextThatDoesNotFitToTheGeneralWay) {
  const std::pair<const char*, const char*> cases[] = {
      {"123", "99"},    {"1.234", "9.99"}, {"1.5", "99"},  {"12", "S99"},  {"", "99"},
      {"-", "S9"},      {"+", "9"},        {".", "9.9"},   {"1 ", "99"},   {" 1", "99"},
      {"1e5", "9999"},  {"--1", "S99"},    {"1-", "99"},   {"1.2.3", "9.9"},
  };
  for (const auto& [text, mask] : cases) {
    EXPECT_TRUE(Shaped(text, mask).empty()) << "[" << text << "] [" << mask << "]";
  }
  // A zero byte and bytes above 127 are not digits.
  EXPECT_TRUE(Shaped(std::string("1\0" "2", 3), "999").empty());
  EXPECT_TRUE(Shaped("5\xE9", "99").empty());
}

// A sign the mask does not place is read, as the model reads it.
TEST(NumberShaped, ASignWithoutAnSInTheMask) {
  for (const char* text : {"-12", "+12", "-1.5"}) {
    const std::string mask = OwnShape(text).substr(1);
    const Bytes shaped = Shaped(text, mask);
    ASSERT_FALSE(shaped.empty()) << text;
    EXPECT_EQ(shaped, General(text, mask)) << text;
  }
}

// Texts of random shape with their own masks, and with masks of more or
// fewer places on either side, against the general way.
TEST(NumberShaped, RandomTextsAndMasksAgreeWithTheGeneralWay) {
  std::mt19937 rng(20261125);
  unsigned accepted = 0;
  for (int round = 0; round < 200000; ++round) {
    std::string text;
    const unsigned sign = rng() % 4;
    if (sign == 1) text += '-';
    if (sign == 2) text += '+';
    const unsigned int_digits = rng() % 24;
    const bool zeros = rng() % 4 == 0;
    for (unsigned k = 0; k < int_digits; ++k) {
      text += static_cast<char>('0' + (zeros && k < 3 ? 0 : rng() % 10));
    }
    const bool point = rng() % 2 == 0;
    unsigned frac_digits = 0;
    if (point) {
      text += '.';
      frac_digits = rng() % 20;
      for (unsigned k = 0; k < frac_digits; ++k) {
        text += static_cast<char>('0' + (rng() % 3 == 0 ? 0 : rng() % 10));
      }
    }
    std::string mask = OwnShape(text);
    const std::string shape = mask;
    switch (rng() % 6) {
      case 0: {  // one more or one fewer integer place
        const std::size_t at = mask.find('9');
        if (at == std::string::npos) break;
        if (rng() % 2) mask.insert(at, "9"); else mask.erase(at, 1);
        break;
      }
      case 1:  // fraction places added
        mask += point ? std::string(rng() % 4, '9') : ".99";
        break;
      case 2:  // the sign place taken away or added
        if (!mask.empty() && mask[0] == 'S') mask.erase(0, 1); else mask.insert(0, "S");
        break;
      default:
        break;
    }
    const Bytes shaped = Shaped(text, mask);
    if (mask == shape && int_digits > 0 && int_digits + frac_digits <= 38) {
      ASSERT_FALSE(shaped.empty()) << "its own shape: [" << text << "]";
    }
    if (shaped.empty()) continue;
    ++accepted;
    ASSERT_EQ(shaped, General(text, mask)) << "[" << text << "] [" << mask << "]";
  }
  EXPECT_GT(accepted, 100000U);
}

TEST(NumberShaped, OwnShapeOfEveryTextAnAdapterReads) {
  for (const char* text : {"1", "-1", "99", "100", "0.01", "-0.5", "12345678901.23", "7.0",
                           "-99999999999999999999999999999999999999", "00012", "12.3400"}) {
    ExpectSameAsGeneral(text, OwnShape(text));
    EXPECT_FALSE(Shaped(text, OwnShape(text)).empty()) << text;
  }
}

}  // namespace
