// The masks a host builds from a column's precision and scale ("FM99999.99") are read
// from their text and their values written without a model; these tests hold that way
// to the model's: the same masks recognised, the same text, the same refusals.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "number.h"
#include "number_format.h"

namespace {

using ocimem::values::Decimal;
using ocimem::values::DecimalDigits;
using ocimem::values::NumberModel;
using ocimem::values::PlainShape;

TEST(NumberPlainShape, ReadsTheHostMasks) {
  PlainShape shape;
  ASSERT_TRUE(ocimem::values::PlainMaskShape("FM99999.99", &shape));
  EXPECT_EQ(shape.int_positions, 5);
  EXPECT_EQ(shape.frac_positions, 2);
  EXPECT_TRUE(shape.has_point);
  ASSERT_TRUE(ocimem::values::PlainMaskShape("fm999", &shape));
  EXPECT_EQ(shape.int_positions, 3);
  EXPECT_EQ(shape.frac_positions, 0);
  EXPECT_FALSE(shape.has_point);
  ASSERT_TRUE(ocimem::values::PlainMaskShape("FM.9", &shape));
  EXPECT_EQ(shape.int_positions, 0);
  EXPECT_EQ(shape.frac_positions, 1);
  for (const char* other : {"999.99", "FM999D99", "FM0999", "FM999.90", "FMS999", "FM999MI",
                            "FM9,999", "FM$999", "FM9.9.9", "FM9 9", "F", ""}) {
    EXPECT_FALSE(ocimem::values::PlainMaskShape(other, &shape)) << other;
  }
}

// Every mask of up to eight bytes over the bytes that matter: where the text is read as a
// plain shape, the model agrees on every position.
TEST(NumberPlainShape, AgreesWithTheModelOnEveryShortMask) {
  const char kBytes[] = {'F', 'M', 'f', 'm', '9', '0', '.', 'D', 'S'};
  const int kCount = sizeof kBytes;
  int recognised = 0;
  for (int length = 0; length <= 6; ++length) {
    long total = 1;
    for (int i = 0; i < length; ++i) total *= kCount;
    for (long code = 0; code < total; ++code) {
      std::string mask;
      long c = code;
      for (int i = 0; i < length; ++i, c /= kCount) mask += kBytes[c % kCount];
      PlainShape shape;
      if (!ocimem::values::PlainMaskShape(mask, &shape)) continue;
      ++recognised;
      NumberModel model;
      ASSERT_EQ(ocimem::values::ParseNumberModel(mask, &model), 0) << mask;
      ASSERT_TRUE(model.plain_fill) << mask;
      ASSERT_EQ(static_cast<long>(model.integer.size()), shape.int_positions) << mask;
      ASSERT_EQ(static_cast<long>(model.fraction.size()), shape.frac_positions) << mask;
      ASSERT_EQ(model.has_point, shape.has_point) << mask;
    }
  }
  // "FM" in four cases, then r bytes of nines with at most one point: r + 1 shapes for
  // r = 0..4.
  EXPECT_EQ(recognised, 4 * (1 + 2 + 3 + 4 + 5));
}

// Long masks, read eight bytes at a time: every count of nines up to 45 on both sides of
// the point, and each of them with one nine turned into a zero, which no plain mask has.
TEST(NumberPlainShape, ReadsLongMasksAndRefusesAZeroAnywhere) {
  for (int whole = 0; whole <= 45; ++whole) {
    for (int fraction = -1; fraction <= 45; ++fraction) {
      std::string mask = "FM" + std::string(static_cast<std::size_t>(whole), '9');
      if (fraction >= 0) mask += "." + std::string(static_cast<std::size_t>(fraction), '9');
      PlainShape shape;
      ASSERT_TRUE(ocimem::values::PlainMaskShape(mask, &shape)) << mask;
      EXPECT_EQ(shape.int_positions, whole) << mask;
      EXPECT_EQ(shape.frac_positions, fraction < 0 ? 0 : fraction) << mask;
      EXPECT_EQ(shape.has_point, fraction >= 0) << mask;
      for (std::size_t k = 2; k < mask.size(); ++k) {
        if (mask[k] != '9') continue;
        std::string zero = mask;
        zero[k] = '0';
        ASSERT_FALSE(ocimem::values::PlainMaskShape(zero, &shape)) << zero;
        NumberModel model;
        ASSERT_EQ(ocimem::values::ParseNumberModel(zero, &model), 0) << zero;
        ASSERT_FALSE(model.plain_fill) << zero;
      }
    }
  }
}

// Random values (integers, fractions, tiny and huge magnitudes, both signs, zero) through
// both ways of the same masks: the same length (or the same refusal) and the same text.
TEST(NumberPlainShape, WritesAsTheModelOnRandomValues) {
  std::mt19937_64 rng(1124);
  const char* const kMasks[] = {"FM999999999999", "FM999999999999.99", "FM999", "FM9",
                                "FM99999999999999999999999999.99999999999999999999999999999",
                                "FM.999", "FM9.", "FM", "FM99.9999999999"};
  int written = 0;
  for (const char* mask : kMasks) {
    PlainShape shape;
    ASSERT_TRUE(ocimem::values::PlainMaskShape(mask, &shape)) << mask;
    NumberModel model;
    ASSERT_EQ(ocimem::values::ParseNumberModel(mask, &model), 0);
    for (int i = 0; i < 20000; ++i) {
      Decimal d;
      d.negative = rng() % 2 == 0;
      const int count = static_cast<int>(rng() % 12);
      for (int k = 0; k < count; ++k) d.digits += static_cast<char>('0' + rng() % 10);
      d.exponent = static_cast<int>(rng() % 30) - 12;
      unsigned char bytes[22];
      if (ocimem::values::EncodeNumber(d, bytes) != ocimem::values::NumberError::None) continue;
      DecimalDigits digits;
      ASSERT_EQ(ocimem::values::DecodeNumberDigits(bytes, &digits),
                ocimem::values::NumberError::None);
      const std::size_t room = rng() % 4 == 0 ? rng() % 12 : 200;
      char a[200];
      char b[200];
      const int na = ocimem::values::FormatPlainNumberBytes(
          bytes, shape.int_positions, shape.frac_positions, shape.has_point, a, room);
      const int nb = ocimem::values::FormatNumberPlain(digits, model, b, room);
      ASSERT_EQ(na, nb) << mask;
      if (na >= 0) {
        ++written;
        ASSERT_EQ(std::string(a, static_cast<std::size_t>(na)),
                  std::string(b, static_cast<std::size_t>(nb)))
            << mask;
      }
    }
  }
  EXPECT_GT(written, 10000);
}

// Random bytes, mostly not a NUMBER at all: the text straight from the bytes is written
// exactly when they decode, and then is the model's.
TEST(NumberPlainShape, WritesFromBytesOnlyWhatDecodes) {
  std::mt19937_64 rng(2411);
  const char* const kMasks[] = {"FM999999999999.99", "FM99999999999999999999999999999999999999",
                                "FM.9999999999999999999999999999999999999999"};
  int decoded = 0;
  int refused = 0;
  for (const char* mask : kMasks) {
    PlainShape shape;
    ASSERT_TRUE(ocimem::values::PlainMaskShape(mask, &shape)) << mask;
    NumberModel model;
    ASSERT_EQ(ocimem::values::ParseNumberModel(mask, &model), 0);
    for (int i = 0; i < 50000; ++i) {
      unsigned char bytes[22] = {};
      bytes[0] = static_cast<unsigned char>(rng() % 23);
      const int mantissa = bytes[0] > 0 ? bytes[0] - 1 : 0;
      bytes[1] = static_cast<unsigned char>(rng() % 256);
      // Digits mostly in range, now and then out of it.
      for (int k = 2; k <= mantissa + 1 && k < 22; ++k) {
        bytes[k] = static_cast<unsigned char>(rng() % 16 == 0 ? rng() % 256 : 1 + rng() % 101);
      }
      if (rng() % 3 == 0 && mantissa >= 1 && mantissa + 1 < 22) bytes[mantissa + 1] = 0x66;
      char a[200];
      char b[200];
      const int na = ocimem::values::FormatPlainNumberBytes(
          bytes, shape.int_positions, shape.frac_positions, shape.has_point, a, sizeof a);
      DecimalDigits digits;
      if (ocimem::values::DecodeNumberDigits(bytes, &digits) != ocimem::values::NumberError::None) {
        ASSERT_EQ(na, -1) << mask;
        ++refused;
        continue;
      }
      ++decoded;
      const int nb = ocimem::values::FormatNumberPlain(digits, model, b, sizeof b);
      ASSERT_EQ(na, nb) << mask;
      if (na >= 0) {
        ASSERT_EQ(std::string(a, static_cast<std::size_t>(na)),
                  std::string(b, static_cast<std::size_t>(nb)))
            << mask;
      }
    }
  }
  EXPECT_GT(decoded, 1000);
  EXPECT_GT(refused, 1000);
}

}  // namespace
