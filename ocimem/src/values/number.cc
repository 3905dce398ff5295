#include "number.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace ocimem::values {
namespace {

constexpr unsigned char kZeroByte = 0x80;
constexpr unsigned char kPositiveBase = 0xC1;
constexpr unsigned char kNegativeBase = 0x3E;
constexpr unsigned char kNegativeTrailer = 0x66;
constexpr int kMinExponent100 = -65;
constexpr int kMaxExponent100 = 62;
constexpr std::size_t kMaxDecimalDigits = 2 * kMaxMantissaBytes;

// Adds one unit in the last place; returns true when the carry ran out of
// digits (the string is then all zeros).
bool IncrementDigits(std::string* digits) {
  for (std::size_t i = digits->size(); i-- > 0;) {
    if ((*digits)[i] == '9') {
      (*digits)[i] = '0';
    } else {
      ++(*digits)[i];
      return false;
    }
  }
  return true;
}

// Little-endian base-1e9 magnitude, enough for the exact expansion of a double.
using BigInt = std::vector<std::uint32_t>;

void MultiplySmall(BigInt* n, std::uint32_t factor) {
  std::uint64_t carry = 0;
  for (std::uint32_t& limb : *n) {
    std::uint64_t v = static_cast<std::uint64_t>(limb) * factor + carry;
    limb = static_cast<std::uint32_t>(v % 1000000000U);
    carry = v / 1000000000U;
  }
  while (carry != 0) {
    n->push_back(static_cast<std::uint32_t>(carry % 1000000000U));
    carry /= 1000000000U;
  }
}

std::string BigIntToString(const BigInt& n) {
  std::string out = std::to_string(n.back());
  for (std::size_t i = n.size() - 1; i-- > 0;) {
    std::string limb = std::to_string(n[i]);
    out.append(9 - limb.size(), '0');
    out += limb;
  }
  return out;
}

}  // namespace

void Normalize(Decimal* d) {
  std::size_t lead = d->digits.find_first_not_of('0');
  if (lead == std::string::npos) {
    *d = Decimal{};
    return;
  }
  d->digits.erase(0, lead);
  d->exponent -= static_cast<int>(lead);
  d->digits.erase(d->digits.find_last_not_of('0') + 1);
}

namespace {

// "00" "01" ... "99": the two decimal digits of a base-100 digit.
struct DigitPairs {
  char text[200];
  constexpr DigitPairs() : text() {
    for (int i = 0; i < 100; ++i) {
      text[2 * i] = static_cast<char>('0' + i / 10);
      text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
  }
};
constexpr DigitPairs kDigitPairs;

}  // namespace

NumberError DecodeNumberDigits(const unsigned char* bytes, DecimalDigits* out) {
  DecimalDigits& d = *out;
  d.negative = false;
  d.count = 0;
  d.exponent = 0;
  d.first = 0;
  const int length = bytes[0];
  if (length < 1 || length > kNumberSize - 1) return NumberError::Invalid;
  const unsigned char* p = bytes + 1;
  if (length == 1) {
    return p[0] == kZeroByte ? NumberError::None : NumberError::Invalid;
  }
  // Invalid bytes leave zero behind.
  auto invalid = [&d]() {
    d.negative = false;
    d.count = 0;
    d.exponent = 0;
    d.first = 0;
    return NumberError::Invalid;
  };
  int exponent100 = 0;
  int mantissa = length - 1;
  char* digit_out = d.buffer;
  if (p[0] & 0x80) {
    exponent100 = p[0] - kPositiveBase;
    for (int i = 1; i <= mantissa; ++i) {
      const unsigned digit = static_cast<unsigned>(p[i]) - 1U;  // 1..100 hold 0..99
      if (digit > 99U) return invalid();
      std::memcpy(digit_out, kDigitPairs.text + 2 * digit, 2);
      digit_out += 2;
    }
    if (p[1] == 1 || p[mantissa] == 1) return invalid();
  } else {
    d.negative = true;
    exponent100 = kNegativeBase - p[0];
    if (p[mantissa] == kNegativeTrailer) {
      --mantissa;
    } else if (mantissa != kMaxMantissaBytes) {
      return invalid();
    }
    if (mantissa < 1) return invalid();
    for (int i = 1; i <= mantissa; ++i) {
      const unsigned digit = 101U - static_cast<unsigned>(p[i]);  // 101..2 hold 0..99
      if (digit > 99U) return invalid();
      std::memcpy(digit_out, kDigitPairs.text + 2 * digit, 2);
      digit_out += 2;
    }
    if (p[1] == 101 || p[mantissa] == 101) return invalid();
  }
  // Normalize: no leading or trailing zero digit; all zeros is zero, unsigned.
  const char* first = d.buffer;
  const char* last = digit_out;
  while (first != last && *first == '0') ++first;
  if (first == last) {
    d.negative = false;
    return NumberError::None;
  }
  while (last[-1] == '0') --last;
  const int lead = static_cast<int>(first - d.buffer);
  d.first = lead;
  d.count = static_cast<int>(last - first);
  d.exponent = 2 * (exponent100 + 1) - lead;
  return NumberError::None;
}

int FormatPlainNumberBytes(const unsigned char* bytes, long int_positions, long frac_positions,
                           bool has_point, char* buf, std::size_t room) {
  const int length = bytes[0];
  if (length < 1 || length > kNumberSize - 1) return -1;
  const unsigned char* p = bytes + 1;
  if (length == 1) {
    if (p[0] != kZeroByte) return -1;
    const std::size_t n = has_point ? 2 : 1;
    if (n + 1 > room) return -1;
    buf[0] = '0';
    if (has_point) buf[1] = '.';
    return static_cast<int>(n);
  }
  // The decimal digits of the base-100 digits, checked as DecodeNumberDigits checks them.
  char digits[2 * kMaxMantissaBytes];
  char* digit_out = digits;
  int mantissa = length - 1;
  int exponent100 = 0;
  const bool negative = (p[0] & 0x80) == 0;
  if (!negative) {
    exponent100 = p[0] - kPositiveBase;
    for (int i = 1; i <= mantissa; ++i) {
      const unsigned digit = static_cast<unsigned>(p[i]) - 1U;
      if (digit > 99U) return -1;
      std::memcpy(digit_out, kDigitPairs.text + 2 * digit, 2);
      digit_out += 2;
    }
    if (p[1] == 1 || p[mantissa] == 1) return -1;
  } else {
    exponent100 = kNegativeBase - p[0];
    if (p[mantissa] == kNegativeTrailer) {
      --mantissa;
    } else if (mantissa != kMaxMantissaBytes) {
      return -1;
    }
    if (mantissa < 1) return -1;
    for (int i = 1; i <= mantissa; ++i) {
      const unsigned digit = 101U - static_cast<unsigned>(p[i]);
      if (digit > 99U) return -1;
      std::memcpy(digit_out, kDigitPairs.text + 2 * digit, 2);
      digit_out += 2;
    }
    if (p[1] == 101 || p[mantissa] == 101) return -1;
  }
  // The first and last base-100 digits are not zero: at most one zero to drop at each end.
  const long lead = digits[0] == '0' ? 1 : 0;
  const long trail = digit_out[-1] == '0' ? 1 : 0;
  const char* first = digits + lead;
  const long count = static_cast<long>(digit_out - digits) - lead - trail;
  const long exponent = 2L * (exponent100 + 1) - lead;
  if (exponent + frac_positions < count) return -1;  // rounds
  const long int_digits = exponent > 0 ? exponent : 0;
  if (int_digits > int_positions) return -1;  // overflow
  const long frac_digits = count > exponent ? count - exponent : 0;
  const std::size_t n = (negative ? 1U : 0U) + static_cast<std::size_t>(int_digits) +
                        (has_point ? 1U : 0U) + static_cast<std::size_t>(frac_digits);
  if (n + 1 > room) return -1;
  char* q = buf;
  if (negative) *q++ = '-';
  const long int_given = int_digits < count ? int_digits : count;
  std::memcpy(q, first, static_cast<std::size_t>(int_given));
  q += int_given;
  for (long i = int_given; i < int_digits; ++i) *q++ = '0';
  if (has_point) *q++ = '.';
  const long frac_zeros = exponent < 0 ? -exponent : 0;
  for (long j = 0; j < frac_zeros; ++j) *q++ = '0';
  std::memcpy(q, first + int_given, static_cast<std::size_t>(frac_digits - frac_zeros));
  return static_cast<int>(n);
}

NumberError DecodeNumber(const unsigned char* bytes, Decimal* out) {
  // A bad length byte, or a one-byte value other than zero, leaves `out` as it was.
  const int length = bytes[0];
  if (length < 1 || length > kNumberSize - 1) return NumberError::Invalid;
  if (length == 1 && bytes[1] != kZeroByte) return NumberError::Invalid;
  DecimalDigits d;
  const NumberError e = DecodeNumberDigits(bytes, &d);
  if (e != NumberError::None) {
    *out = Decimal{};
    return e;
  }
  out->negative = d.negative;
  out->digits.assign(d.Digits(), static_cast<std::size_t>(d.count));
  out->exponent = d.exponent;
  return NumberError::None;
}

NumberError EncodeNumber(const Decimal& value, unsigned char* bytes) {
  Decimal d = value;
  Normalize(&d);
  std::memset(bytes, 0, kNumberSize);
  if (d.IsZero()) {
    bytes[0] = 1;
    bytes[1] = kZeroByte;
    return NumberError::None;
  }
  std::string digits = d.digits;
  int exponent = d.exponent;
  // Align on base-100 digit boundaries counted from the decimal point.
  if (exponent % 2 != 0) {
    digits.insert(digits.begin(), '0');
    ++exponent;
  }
  if (digits.size() > kMaxDecimalDigits) {
    bool up = digits[kMaxDecimalDigits] >= '5';
    digits.resize(kMaxDecimalDigits);
    if (up && IncrementDigits(&digits)) {
      digits = "01";
      exponent += 2;
    }
  }
  digits.erase(digits.find_last_not_of('0') + 1);
  if (digits.size() % 2 != 0) digits += '0';
  const int exponent100 = exponent / 2 - 1;
  if (exponent100 > kMaxExponent100) return NumberError::Overflow;
  if (exponent100 < kMinExponent100) {
    bytes[0] = 1;
    bytes[1] = kZeroByte;
    return NumberError::None;
  }
  const int pairs = static_cast<int>(digits.size() / 2);
  for (int i = 0; i < pairs; ++i) {
    int pair = (digits[2 * i] - '0') * 10 + (digits[2 * i + 1] - '0');
    bytes[2 + i] = static_cast<unsigned char>(d.negative ? 101 - pair : pair + 1);
  }
  if (d.negative) {
    bytes[1] = static_cast<unsigned char>(kNegativeBase - exponent100);
    int length = 1 + pairs;
    if (pairs < kMaxMantissaBytes) {
      bytes[2 + pairs] = kNegativeTrailer;
      ++length;
    }
    bytes[0] = static_cast<unsigned char>(length);
  } else {
    bytes[1] = static_cast<unsigned char>(kPositiveBase + exponent100);
    bytes[0] = static_cast<unsigned char>(1 + pairs);
  }
  return NumberError::None;
}

Decimal RoundToFraction(const Decimal& d, int frac_digits) {
  if (d.IsZero()) return d;
  const long keep = static_cast<long>(d.exponent) + frac_digits;
  if (keep >= static_cast<long>(d.digits.size())) return d;
  if (keep < 0) return Decimal{};
  Decimal r = d;
  const bool up = d.digits[static_cast<std::size_t>(keep)] >= '5';
  r.digits.resize(static_cast<std::size_t>(keep));
  if (up) {
    if (IncrementDigits(&r.digits)) {
      r.digits.insert(r.digits.begin(), '1');
      ++r.exponent;
    }
  }
  Normalize(&r);
  if (!r.IsZero()) r.negative = d.negative;
  return r;
}

int CompareNumbers(const unsigned char* a, const unsigned char* b) {
  const unsigned char* pa = a + 1;
  const unsigned char* pb = b + 1;
  const bool less = std::lexicographical_compare(pa, pa + a[0], pb, pb + b[0]);
  if (less) return -1;
  const bool greater = std::lexicographical_compare(pb, pb + b[0], pa, pa + a[0]);
  return greater ? 1 : 0;
}

bool DecimalFromUnsigned(std::uint64_t v, Decimal* out) {
  Decimal d;
  d.digits = std::to_string(v);
  d.exponent = static_cast<int>(d.digits.size());
  Normalize(&d);
  *out = d;
  return true;
}

bool DecimalFromInteger(std::int64_t v, Decimal* out) {
  const bool negative = v < 0;
  const std::uint64_t magnitude =
      negative ? static_cast<std::uint64_t>(-(v + 1)) + 1 : static_cast<std::uint64_t>(v);
  DecimalFromUnsigned(magnitude, out);
  out->negative = negative && !out->IsZero();
  return true;
}

namespace {

// Magnitude of an already rounded integral decimal, if it fits 64 bits.
bool IntegralMagnitude(const Decimal& r, std::uint64_t* out) {
  if (r.IsZero()) {
    *out = 0;
    return true;
  }
  if (r.exponent > 20) return false;
  std::string text = r.digits;
  text.append(static_cast<std::size_t>(r.exponent) - r.digits.size(), '0');
  if (text.size() == 20 && text > "18446744073709551615") return false;
  *out = std::strtoull(text.c_str(), nullptr, 10);
  return true;
}

}  // namespace

bool DecimalToInt64(const Decimal& d, std::int64_t* out) {
  const Decimal r = RoundToFraction(d, 0);
  std::uint64_t magnitude = 0;
  if (!IntegralMagnitude(r, &magnitude)) return false;
  if (r.negative) {
    if (magnitude > static_cast<std::uint64_t>(INT64_MAX) + 1) return false;
    *out = magnitude == static_cast<std::uint64_t>(INT64_MAX) + 1
               ? INT64_MIN
               : -static_cast<std::int64_t>(magnitude);
  } else {
    if (magnitude > static_cast<std::uint64_t>(INT64_MAX)) return false;
    *out = static_cast<std::int64_t>(magnitude);
  }
  return true;
}

bool DecimalToUint64(const Decimal& d, std::uint64_t* out) {
  const Decimal r = RoundToFraction(d, 0);
  if (r.negative) return false;
  return IntegralMagnitude(r, out);
}

Decimal DecimalFromDouble(double v) {
  Decimal d;
  if (v == 0 || !std::isfinite(v)) return d;
  int binary_exponent = 0;
  const double fraction = std::frexp(std::fabs(v), &binary_exponent);
  // v = mantissa * 2^(binary_exponent - 53) with an integral 53-bit mantissa.
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 53));
  int shift = binary_exponent - 53;
  BigInt n{static_cast<std::uint32_t>(mantissa % 1000000000U),
           static_cast<std::uint32_t>((mantissa / 1000000000U) % 1000000000U),
           static_cast<std::uint32_t>(mantissa / 1000000000000000000ULL)};
  while (n.size() > 1 && n.back() == 0) n.pop_back();
  int decimal_shift = 0;
  // Powers are applied in the largest steps whose product with a limb still
  // fits 64 bits (2^29 and 5^13 against limbs below 10^9).
  if (shift >= 0) {
    for (; shift >= 29; shift -= 29) MultiplySmall(&n, 1U << 29);
    if (shift > 0) MultiplySmall(&n, 1U << shift);
  } else {
    // m / 2^k == m * 5^k / 10^k
    decimal_shift = shift;
    std::uint32_t pending = 1;
    for (; shift < 0; ++shift) {
      pending *= 5;
      if (pending == 1220703125U) {  // 5^13
        MultiplySmall(&n, pending);
        pending = 1;
      }
    }
    if (pending != 1) MultiplySmall(&n, pending);
  }
  d.digits = BigIntToString(n);
  d.exponent = static_cast<int>(d.digits.size()) + decimal_shift;
  d.negative = v < 0;
  Normalize(&d);
  return d;
}

namespace {

std::string ScientificText(const Decimal& d) {
  std::string text = d.negative ? "-" : "";
  text += d.digits;
  text += 'e';
  text += std::to_string(d.exponent - static_cast<int>(d.digits.size()));
  return text;
}

}  // namespace

double DecimalToDouble(const Decimal& d) {
  if (d.IsZero()) return 0.0;
  return std::strtod(ScientificText(d).c_str(), nullptr);
}

float DecimalToFloat(const Decimal& d) {
  if (d.IsZero()) return 0.0f;
  return std::strtof(ScientificText(d).c_str(), nullptr);
}

std::string DecimalToPlainText(const Decimal& d) {
  if (d.IsZero()) return "0";
  std::string out = d.negative ? "-" : "";
  const int len = static_cast<int>(d.digits.size());
  if (d.exponent <= 0) {
    out += '.';
    out.append(static_cast<std::size_t>(-d.exponent), '0');
    out += d.digits;
  } else if (d.exponent >= len) {
    out += d.digits;
    out.append(static_cast<std::size_t>(d.exponent - len), '0');
  } else {
    out += d.digits.substr(0, static_cast<std::size_t>(d.exponent));
    out += '.';
    out += d.digits.substr(static_cast<std::size_t>(d.exponent));
  }
  return out;
}

bool DecimalFromPlainText(std::string_view text, Decimal* out) {
  Decimal d;
  std::size_t i = 0;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) d.negative = text[i++] == '-';
  bool any_digit = false;
  bool seen_point = false;
  int integer_digits = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      d.digits += c;
      any_digit = true;
      if (!seen_point) ++integer_digits;
    } else if (c == '.' && !seen_point) {
      seen_point = true;
    } else {
      break;
    }
  }
  if (!any_digit) return false;
  long exponent = integer_digits;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    bool negative_exp = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative_exp = text[i++] == '-';
    if (i == text.size()) return false;
    long e = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
      e = std::min(e * 10 + (text[i] - '0'), 100000L);
    }
    exponent += negative_exp ? -e : e;
  }
  if (i != text.size()) return false;
  d.exponent = static_cast<int>(exponent);
  const bool negative = d.negative;
  Normalize(&d);
  d.negative = negative && !d.IsZero();
  *out = d;
  return true;
}

}  // namespace ocimem::values
