#include "values/number_arith.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ocimem::values {
namespace {

// Magnitudes as strings of decimal digits without a sign, most significant first.
int CompareMagnitudes(const std::string& a, const std::string& b) {
  size_t la = a.find_first_not_of('0');
  size_t lb = b.find_first_not_of('0');
  if (la == std::string::npos) la = a.size();
  if (lb == std::string::npos) lb = b.size();
  size_t na = a.size() - la;
  size_t nb = b.size() - lb;
  if (na != nb) return na < nb ? -1 : 1;
  int c = a.compare(la, na, b, lb, nb);
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

std::string AddMagnitudes(const std::string& a, const std::string& b) {
  std::string out;
  int carry = 0;
  size_t i = a.size();
  size_t j = b.size();
  while (i > 0 || j > 0 || carry != 0) {
    int s = carry;
    if (i > 0) s += a[--i] - '0';
    if (j > 0) s += b[--j] - '0';
    out.push_back(static_cast<char>('0' + s % 10));
    carry = s / 10;
  }
  std::reverse(out.begin(), out.end());
  return out;
}

// a - b for a >= b.
std::string SubtractMagnitudes(const std::string& a, const std::string& b) {
  std::string out = a;
  int borrow = 0;
  size_t j = b.size();
  for (size_t i = out.size(); i > 0; --i) {
    int d = out[i - 1] - '0' - borrow;
    if (j > 0) d -= b[--j] - '0';
    borrow = d < 0 ? 1 : 0;
    if (d < 0) d += 10;
    out[i - 1] = static_cast<char>('0' + d);
  }
  return out;
}

// Long division of magnitudes; `remainder` may be null.
std::string DivideMagnitudes(const std::string& a, const std::string& b, std::string* remainder) {
  std::string q;
  std::string r = "0";
  for (char c : a) {
    if (r == "0") {
      r = std::string(1, c);
    } else {
      r.push_back(c);
    }
    int digit = 0;
    while (CompareMagnitudes(r, b) >= 0) {
      r = SubtractMagnitudes(r, b);
      size_t lead = r.find_first_not_of('0');
      r = lead == std::string::npos ? "0" : r.substr(lead);
      ++digit;
    }
    q.push_back(static_cast<char>('0' + digit));
  }
  if (remainder != nullptr) *remainder = r;
  return q;
}

Decimal FromDigits(bool negative, std::string digits, int exponent) {
  Decimal d;
  d.digits = std::move(digits);
  d.exponent = exponent;
  Normalize(&d);
  d.negative = !d.IsZero() && negative;
  return d;
}

// Both values as integers times 10^low.
void Align(const Decimal& a, const Decimal& b, std::string* ia, std::string* ib, int* low) {
  int low_a = a.exponent - static_cast<int>(a.digits.size());
  int low_b = b.exponent - static_cast<int>(b.digits.size());
  if (a.IsZero()) low_a = low_b;
  if (b.IsZero()) low_b = low_a;
  *low = std::min(low_a, low_b);
  *ia = a.digits + std::string(static_cast<size_t>(low_a - *low), '0');
  *ib = b.digits + std::string(static_cast<size_t>(low_b - *low), '0');
  if (ia->empty()) *ia = "0";
  if (ib->empty()) *ib = "0";
}

Decimal Sum(const Decimal& a, const Decimal& b, bool negate_b) {
  bool b_negative = negate_b ? !b.negative : b.negative;
  if (b.IsZero()) return a;
  if (a.IsZero()) return FromDigits(b_negative, b.digits, b.exponent);
  std::string ia;
  std::string ib;
  int low = 0;
  Align(a, b, &ia, &ib, &low);
  if (a.negative == b_negative) {
    std::string s = AddMagnitudes(ia, ib);
    return FromDigits(a.negative, s, low + static_cast<int>(s.size()));
  }
  int c = CompareMagnitudes(ia, ib);
  if (c == 0) return Decimal{};
  std::string s = c > 0 ? SubtractMagnitudes(ia, ib) : SubtractMagnitudes(ib, ia);
  return FromDigits(c > 0 ? a.negative : b_negative, s, low + static_cast<int>(s.size()));
}

}  // namespace

Decimal AddDecimals(const Decimal& a, const Decimal& b) { return Sum(a, b, false); }
Decimal SubtractDecimals(const Decimal& a, const Decimal& b) { return Sum(a, b, true); }

Decimal MultiplyDecimals(const Decimal& a, const Decimal& b) {
  if (a.IsZero() || b.IsZero()) return Decimal{};
  std::vector<int> acc(a.digits.size() + b.digits.size(), 0);
  for (size_t i = a.digits.size(); i > 0; --i) {
    for (size_t j = b.digits.size(); j > 0; --j) {
      acc[i + j - 1] += (a.digits[i - 1] - '0') * (b.digits[j - 1] - '0');
    }
  }
  for (size_t k = acc.size() - 1; k > 0; --k) {
    acc[k - 1] += acc[k] / 10;
    acc[k] %= 10;
  }
  std::string digits;
  for (int v : acc) digits.push_back(static_cast<char>('0' + v));
  return FromDigits(a.negative != b.negative, digits, a.exponent + b.exponent);
}

bool DivideDecimals(const Decimal& a, const Decimal& b, Decimal* out) {
  if (b.IsZero()) return false;
  if (a.IsZero()) {
    *out = Decimal{};
    return true;
  }
  // 0.A * 10^ea / (0.B * 10^eb): A * 10^k / B carries at least 44 significant digits.
  const int k = 44 + static_cast<int>(b.digits.size());
  std::string dividend = a.digits + std::string(static_cast<size_t>(k), '0');
  std::string q = DivideMagnitudes(dividend, b.digits, nullptr);
  // value = q * 10^(ea - la - k) / 10^(eb - lb)
  int low = a.exponent - static_cast<int>(a.digits.size()) - k - b.exponent +
            static_cast<int>(b.digits.size());
  *out = FromDigits(a.negative != b.negative, q, low + static_cast<int>(q.size()));
  return true;
}

Decimal RemainderDecimals(const Decimal& a, const Decimal& b) {
  if (b.IsZero() || a.IsZero()) return a;
  std::string ia;
  std::string ib;
  int low = 0;
  Align(a, b, &ia, &ib, &low);
  std::string r;
  DivideMagnitudes(ia, ib, &r);
  return FromDigits(a.negative, r, low + static_cast<int>(r.size()));
}

int CompareDecimals(const Decimal& a, const Decimal& b) {
  Decimal d = SubtractDecimals(a, b);
  if (d.IsZero()) return 0;
  return d.negative ? -1 : 1;
}

Decimal TruncateToFraction(const Decimal& d, int frac_digits) {
  if (d.IsZero()) return d;
  const long keep = static_cast<long>(d.exponent) + frac_digits;
  if (keep >= static_cast<long>(d.digits.size())) return d;
  if (keep <= 0) return Decimal{};
  return FromDigits(d.negative, d.digits.substr(0, static_cast<size_t>(keep)), d.exponent);
}

Decimal FloorDecimal(const Decimal& d) {
  Decimal t = TruncateToFraction(d, 0);
  if (d.negative && CompareDecimals(t, d) != 0) {
    Decimal one = FromDigits(false, "1", 1);
    return SubtractDecimals(t, one);
  }
  return t;
}

Decimal CeilDecimal(const Decimal& d) {
  Decimal t = TruncateToFraction(d, 0);
  if (!d.negative && CompareDecimals(t, d) != 0) {
    Decimal one = FromDigits(false, "1", 1);
    return AddDecimals(t, one);
  }
  return t;
}

}  // namespace ocimem::values
