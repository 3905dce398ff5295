#include "number_text.h"

#include <cstring>

namespace varnadp {
namespace {

constexpr int kMaxPairs = 20;     // base-100 digits of a NUMBER
constexpr int kMaxExponent = 62;  // base-100 exponent of 9.99...E125
constexpr int kMinExponent = -65;  // of 1E-130
constexpr int kMaxZeros = 40;     // plain notation up to this many padding zeros
constexpr int kKeptDigits = 44;   // significant digits read: 21 pairs and more

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

NumberParse NumberFromDecimal(std::string_view text, OCINumber* number) {
  size_t i = 0;
  const bool negative = i < text.size() && text[i] == '-';
  if (negative) ++i;
  // The significant digits, one place kept in front for the alignment below, and the
  // decimal exponent of the last one. Digits beyond kKeptDigits cannot change the
  // rounding to 20 pairs: they only move the exponent.
  char kept[1 + kKeptDigits + 1];
  char* digits = kept + 1;
  int count = 0;
  long exponent = 0;
  bool any = false;
  bool point = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '.' && !point) {
      point = true;
      continue;
    }
    if (!IsDigit(c)) break;
    any = true;
    if (point) --exponent;
    if (c == '0' && count == 0) continue;
    if (count < kKeptDigits) {
      digits[count++] = c;
    } else {
      ++exponent;
    }
  }
  if (!any) return NumberParse::kSyntax;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    bool minus = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) minus = text[i++] == '-';
    if (i == text.size() || !IsDigit(text[i])) return NumberParse::kSyntax;
    long e = 0;
    for (; i < text.size() && IsDigit(text[i]); ++i) {
      if (e < 100000) e = e * 10 + (text[i] - '0');
    }
    exponent += minus ? -e : e;
  }
  if (i != text.size()) return NumberParse::kSyntax;
  // Trailing zeros move into the exponent.
  while (count > 0 && digits[count - 1] == '0') {
    --count;
    ++exponent;
  }
  std::memset(number->OCINumberPart, 0, sizeof number->OCINumberPart);
  if (count == 0) {
    number->OCINumberPart[0] = 1;
    number->OCINumberPart[1] = 0x80;
    return NumberParse::kOk;
  }
  // Align to base 100: an even exponent and an even count of digits.
  if (exponent % 2 != 0) {
    digits[count++] = '0';
    --exponent;
  }
  if (count % 2 != 0) {
    *--digits = '0';
    ++count;
  }
  int pairs[kMaxPairs + 1];
  const int total = count / 2;
  count = 0;
  long top = exponent / 2 + total - 1;  // base-100 exponent of the first pair
  for (int k = 0; k < total && count <= kMaxPairs; ++k) {
    pairs[count++] = (digits[2 * k] - '0') * 10 + (digits[2 * k + 1] - '0');
  }
  if (count > kMaxPairs) {
    bool up = pairs[kMaxPairs] >= 50;
    count = kMaxPairs;
    for (int k = count - 1; up && k >= 0; --k) {
      if (++pairs[k] < 100) {
        up = false;
      } else {
        pairs[k] = 0;
      }
    }
    if (up) {
      pairs[0] = 1;
      count = 1;
      ++top;
    }
  }
  while (count > 1 && pairs[count - 1] == 0) --count;
  if (top > kMaxExponent) return NumberParse::kOverflow;
  if (top < kMinExponent) {
    number->OCINumberPart[0] = 1;
    number->OCINumberPart[1] = 0x80;
    return NumberParse::kOk;
  }
  ub1* bytes = number->OCINumberPart;
  int length = 1;
  if (negative) {
    bytes[1] = static_cast<ub1>(62 - top);
    for (int k = 0; k < count; ++k) bytes[++length] = static_cast<ub1>(101 - pairs[k]);
    if (count < kMaxPairs) bytes[++length] = 0x66;
  } else {
    bytes[1] = static_cast<ub1>(193 + top);
    for (int k = 0; k < count; ++k) bytes[++length] = static_cast<ub1>(pairs[k] + 1);
  }
  bytes[0] = static_cast<ub1>(length);
  return NumberParse::kOk;
}

void AppendNumberDecimal(const OCINumber& number, int scale, std::string* out) {
  const ub1* bytes = number.OCINumberPart;
  const int length = bytes[0];
  if (length <= 1 || length > 21) {
    out->push_back('0');
    if (scale > 0) {
      out->push_back('.');
      out->append(static_cast<size_t>(scale), '0');
    }
    return;
  }
  const bool negative = (bytes[1] & 0x80) == 0;
  const int top = negative ? 62 - bytes[1] : bytes[1] - 193;
  int end = length;
  if (negative && bytes[end] == 0x66) --end;
  // Decimal digits and the decimal exponent of the first one.
  char digits[2 * kMaxPairs];
  int count = 0;
  for (int k = 2; k <= end; ++k) {
    const int pair = negative ? 101 - bytes[k] : bytes[k] - 1;
    digits[count++] = static_cast<char>('0' + pair / 10);
    digits[count++] = static_cast<char>('0' + pair % 10);
  }
  int first = 0;  // skip the leading zero of the first pair
  if (count > 0 && digits[0] == '0') first = 1;
  while (count > first + 1 && digits[count - 1] == '0') --count;
  const int lead = 2 * top + 2 - first;  // digits before the point (may be <= 0 or > count)
  const int shown = count - first;
  if (negative) out->push_back('-');
  if (lead - shown > kMaxZeros || -lead > kMaxZeros) {
    out->push_back(digits[first]);
    if (shown > 1) {
      out->push_back('.');
      out->append(digits + first + 1, static_cast<size_t>(shown - 1));
    }
    out->push_back('E');
    const int e = lead - 1;
    out->push_back(e < 0 ? '-' : '+');
    out->append(std::to_string(e < 0 ? -e : e));
    return;
  }
  int fraction = 0;
  if (lead <= 0) {
    out->append("0.");
    out->append(static_cast<size_t>(-lead), '0');
    out->append(digits + first, static_cast<size_t>(shown));
    fraction = -lead + shown;
  } else if (lead >= shown) {
    out->append(digits + first, static_cast<size_t>(shown));
    out->append(static_cast<size_t>(lead - shown), '0');
  } else {
    out->append(digits + first, static_cast<size_t>(lead));
    out->push_back('.');
    out->append(digits + first + lead, static_cast<size_t>(shown - lead));
    fraction = shown - lead;
  }
  if (fraction < scale) {
    if (fraction == 0) out->push_back('.');
    out->append(static_cast<size_t>(scale - fraction), '0');
  }
}

}  // namespace varnadp
