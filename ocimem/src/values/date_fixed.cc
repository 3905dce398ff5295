// Masks of fixed shape: the numeric elements YYYY, MM, DD, HH24, MI, SS and FF with
// literals of punctuation between them ("YYYY-MM-DD HH24:MI:SS.FF"). Such a mask writes
// every common value, and reads the text it writes, position by position; anything else
// (years BC, a fraction a mask cannot take, text of another shape, every error) is left
// to the general formatter and parser, which give the same results the long way.
#include "date_fixed.h"

#include <cstring>

#include "calendar.h"
#include "date_text.h"

namespace ocimem::values {
using namespace date_text;  // NOLINT(build/namespaces)

bool IsFixedMask(const DateMask& mask) {
  unsigned seen = 0;
  for (const DateToken& t : mask.tokens) {
    unsigned bit = 0;
    switch (t.element) {
      case DateElement::Literal:
        if (t.text.empty()) return false;
        for (char c : t.text) {
          if (IsAlnum(c) || c == '"') return false;
        }
        continue;
      case DateElement::Year4: bit = 1; break;
      case DateElement::Month: bit = 2; break;
      case DateElement::Day: bit = 4; break;
      case DateElement::Hour24: bit = 8; break;
      case DateElement::Minute: bit = 16; break;
      case DateElement::Second: bit = 32; break;
      case DateElement::Fraction: bit = 64; break;
      default: return false;
    }
    if (t.ordinal || (seen & bit) != 0) return false;
    seen |= bit;
  }
  return (seen & 7U) == 7U;
}

namespace {

inline char* Put2(char* p, int v) {
  p[0] = static_cast<char>('0' + v / 10);
  p[1] = static_cast<char>('0' + v % 10);
  return p + 2;
}

}  // namespace

int FormatFixedText(const DateMask& mask, const DateTimeFields& v, bool allow_fraction,
                    int fsprec, char* buf) {
  if (v.year < 1 || v.year > 9999 || v.month < 1 || v.month > 12 || v.day < 0 || v.day > 99 ||
      v.hour < 0 || v.hour > 99 || v.minute < 0 || v.minute > 99 || v.second < 0 ||
      v.second > 99 || v.nanos > 999999999U) {
    return -1;
  }
  char* p = buf;
  for (const DateToken& t : mask.tokens) {
    switch (t.element) {
      case DateElement::Literal:
        if (t.text.size() == 1 && buf + kFixedTextRoom - p >= 32) {
          *p++ = t.text[0];  // the usual '-', ':', ' ' and '.'
          break;
        }
        if (t.text.size() > 16 || buf + kFixedTextRoom - p < 32) return -1;
        for (char c : t.text) *p++ = c;
        break;
      case DateElement::Year4:
        p = Put2(p, v.year / 100);
        p = Put2(p, v.year % 100);
        break;
      case DateElement::Month: p = Put2(p, v.month); break;
      case DateElement::Day: p = Put2(p, v.day); break;
      case DateElement::Hour24: p = Put2(p, v.hour); break;
      case DateElement::Minute: p = Put2(p, v.minute); break;
      case DateElement::Second: p = Put2(p, v.second); break;
      case DateElement::Fraction: {
        if (!allow_fraction) return -1;
        const int digits = t.digits != 0 ? t.digits : fsprec;
        if (digits < 0 || digits > 9) return -1;
        std::uint32_t n = v.nanos;
        char nine[9];
        for (int i = 8; i >= 0; --i) {
          nine[i] = static_cast<char>('0' + n % 10);
          n /= 10;
        }
        for (int i = 0; i < digits; ++i) *p++ = nine[i];
        break;
      }
      default: return -1;
    }
  }
  return static_cast<int>(p - buf);
}

bool FormatFixed(const DateMask& mask, const DateTimeFields& v, bool allow_fraction, int fsprec,
                 std::string* out) {
  char buf[kFixedTextRoom];
  const int n = FormatFixedText(mask, v, allow_fraction, fsprec, buf);
  if (n < 0) return false;
  out->assign(buf, static_cast<std::size_t>(n));
  return true;
}

bool ParseFixed(std::string_view text, const DateMask& mask, DateTimeFields* value) {
  const char* p = text.data();
  const char* const end = p + text.size();
  auto digits = [&p, end](int count, int* out) {
    if (end - p < count) return false;
    int v = 0;
    for (int i = 0; i < count; ++i) {
      const char c = p[i];
      if (c < '0' || c > '9') return false;
      v = v * 10 + (c - '0');
    }
    p += count;
    *out = v;
    return true;
  };
  DateTimeFields v;
  v.hour = 0;
  v.minute = 0;
  v.second = 0;
  v.nanos = 0;
  for (const DateToken& t : mask.tokens) {
    switch (t.element) {
      case DateElement::Literal: {
        const std::size_t n = t.text.size();
        if (static_cast<std::size_t>(end - p) < n) return false;
        // The usual '-', ':', ' ' and '.' compared in line.
        if (n == 1 ? *p != t.text[0] : std::memcmp(p, t.text.data(), n) != 0) return false;
        p += n;
        break;
      }
      case DateElement::Year4: if (!digits(4, &v.year)) return false; break;
      case DateElement::Month: if (!digits(2, &v.month)) return false; break;
      case DateElement::Day: if (!digits(2, &v.day)) return false; break;
      case DateElement::Hour24: if (!digits(2, &v.hour)) return false; break;
      case DateElement::Minute: if (!digits(2, &v.minute)) return false; break;
      case DateElement::Second: if (!digits(2, &v.second)) return false; break;
      case DateElement::Fraction: {
        int count = 0;
        std::uint32_t n = 0;
        while (p < end && *p >= '0' && *p <= '9' && count < 9) {
          n = n * 10 + static_cast<std::uint32_t>(*p++ - '0');
          ++count;
        }
        if (count == 0 || (p < end && *p >= '0' && *p <= '9')) return false;
        for (int k = count; k < 9; ++k) n *= 10;
        v.nanos = n;
        break;
      }
      default: return false;
    }
  }
  if (p != end) return false;
  if (v.year < 1 || v.month < 1 || v.month > 12 || v.day < 1 ||
      v.day > DaysInMonth(v.year, v.month) || IsMissingGregorianDay(v.year, v.month, v.day) ||
      v.hour > 23 || v.minute > 59 || v.second > 59) {
    return false;
  }
  *value = v;
  return true;
}

}  // namespace ocimem::values
