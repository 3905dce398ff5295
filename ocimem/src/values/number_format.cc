#include "number_format.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ocimem::values {
namespace {

// ASCII only: the host's C locale must not change how a mask reads.
char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool StartsWithFold(std::string_view s, std::size_t pos, std::string_view word) {
  if (s.size() - pos < word.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (Upper(s[pos + i]) != word[i]) return false;
  }
  return true;
}

std::size_t DigitPositions(const std::string& positions) {
  return static_cast<std::size_t>(
      std::count_if(positions.begin(), positions.end(), [](char c) { return c != ','; }));
}

}  // namespace

int ParseNumberModel(std::string_view mask, NumberModel* out) {
  NumberModel model;
  std::size_t pos = 0;
  if (StartsWithFold(mask, 0, "FM")) {
    model.fill_mode = true;
    pos = 2;
  }
  const std::size_t first = pos;
  bool any_digit = false;
  bool ended = false;  // MI / PR / trailing S close the model
  while (pos < mask.size()) {
    if (ended) return kOraInvalidFormat;
    const char c = Upper(mask[pos]);
    if (c == '9' || c == '0') {
      (model.has_point ? model.fraction : model.integer) += c;
      any_digit = true;
      ++pos;
    } else if (c == '.' || c == 'D') {
      if (model.has_point) return kOraInvalidFormat;
      model.has_point = true;
      ++pos;
    } else if (c == ',' || c == 'G') {
      if (model.has_point || DigitPositions(model.integer) == 0) return kOraInvalidFormat;
      model.integer += ',';
      ++pos;
    } else if (c == 'S') {
      if (model.sign != NumberModel::Sign::Default) return kOraInvalidFormat;
      if (pos == first) {
        model.sign = NumberModel::Sign::LeadingS;
      } else if (pos + 1 == mask.size()) {
        model.sign = NumberModel::Sign::TrailingS;
        ended = true;
      } else {
        return kOraInvalidFormat;
      }
      ++pos;
    } else if (c == '$') {
      if (model.dollar) return kOraInvalidFormat;
      model.dollar = true;
      if (any_digit) model.unsupported = true;
      ++pos;
    } else if (StartsWithFold(mask, pos, "MI") || StartsWithFold(mask, pos, "PR")) {
      if (model.sign != NumberModel::Sign::Default || pos + 2 != mask.size()) {
        return kOraInvalidFormat;
      }
      model.sign = c == 'M' ? NumberModel::Sign::TrailingMI : NumberModel::Sign::Brackets;
      pos += 2;
      ended = true;
    } else if (StartsWithFold(mask, pos, "EEEE")) {
      if (!any_digit) return kOraInvalidFormat;
      model.unsupported = true;
      pos += 4;
    } else if (StartsWithFold(mask, pos, "RN") || StartsWithFold(mask, pos, "TM")) {
      model.unsupported = true;
      pos += 2;
    } else if (c == 'B' || c == 'C' || c == 'L' || c == 'U' || c == 'V' || c == 'X') {
      model.unsupported = true;
      ++pos;
    } else {
      return kOraInvalidFormat;
    }
  }
  model.plain_fill = model.fill_mode && model.sign == NumberModel::Sign::Default &&
                     !model.dollar && !model.unsupported &&
                     model.integer.find_first_not_of('9') == std::string::npos &&
                     model.fraction.find_first_not_of('9') == std::string::npos;
  *out = model;
  return 0;
}

namespace {

// The same text as FormatNumber gives for these models: no pads, no sign but
// '-', integer digits without leading zeros, fraction digits without trailing
// zeros, "0" when both are empty, the point whenever the model has one.
int FormatPlain(bool negative, const char* value_digits, long digits, int exponent,
                long int_positions, long frac_positions, bool has_point, char* buf,
                std::size_t room) {
  const bool zero = digits == 0;
  const long int_digits = zero ? 0 : std::max(0, exponent);
  if (!zero && exponent + frac_positions < digits) return -1;  // rounds
  if (int_digits > int_positions) return -1;                   // overflow
  auto digit_at = [value_digits, digits](long index) {
    return index >= 0 && index < digits ? value_digits[index] : '0';
  };
  // Fraction digits up to the last nonzero one.
  long frac_digits = 0;
  if (!zero) frac_digits = std::max(0L, std::min(frac_positions, digits - exponent));
  while (frac_digits > 0 && digit_at(exponent + frac_digits - 1) == '0') --frac_digits;
  const bool lone_zero = int_digits == 0 && frac_digits == 0;
  const std::size_t length = (negative ? 1 : 0) +
                             static_cast<std::size_t>(lone_zero ? 1 : int_digits) +
                             (has_point ? 1 : 0) + static_cast<std::size_t>(frac_digits);
  if (length + 1 > room) return -1;
  char* p = buf;
  if (negative) *p++ = '-';
  if (lone_zero) *p++ = '0';
  // Integer digits: the value's own digits, then zeros up to the point.
  const long int_given = std::min(int_digits, digits);
  if (int_given > 0) std::memcpy(p, value_digits, static_cast<std::size_t>(int_given));
  p += int_given;
  for (long i = int_given; i < int_digits; ++i) *p++ = '0';
  if (has_point) *p++ = '.';
  // Fraction digits: zeros down to the first digit of a value below 0.1, then its digits.
  const long frac_zeros = std::min(frac_digits, std::max(0L, -static_cast<long>(exponent)));
  for (long j = 0; j < frac_zeros; ++j) *p++ = '0';
  const long frac_given = frac_digits - frac_zeros;
  if (frac_given > 0) {
    std::memcpy(p, value_digits + std::max(0, exponent), static_cast<std::size_t>(frac_given));
  }
  return static_cast<int>(length);
}

}  // namespace

int FormatNumberPlain(const Decimal& value, const NumberModel& model, char* buf,
                      std::size_t room) {
  if (!model.plain_fill) return -1;
  return FormatPlain(value.negative, value.digits.data(), static_cast<long>(value.digits.size()),
                     value.exponent, static_cast<long>(model.integer.size()),
                     static_cast<long>(model.fraction.size()), model.has_point, buf, room);
}

int FormatNumberPlain(const DecimalDigits& value, const NumberModel& model, char* buf,
                      std::size_t room) {
  if (!model.plain_fill) return -1;
  return FormatPlain(value.negative, value.Digits(), value.count, value.exponent,
                     static_cast<long>(model.integer.size()),
                     static_cast<long>(model.fraction.size()), model.has_point, buf, room);
}

namespace {

// The position of the first byte from `pos` that is not '9' (n when there is none),
// eight bytes at a time.
std::size_t SkipNines(std::string_view text, std::size_t pos) {
  const std::size_t n = text.size();
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  constexpr std::uint64_t kNines = 0x3939393939393939ULL;
  for (; pos + 8 <= n; pos += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + pos, sizeof word);
    const std::uint64_t diff = word ^ kNines;
    if (diff != 0) return pos + static_cast<std::size_t>(__builtin_ctzll(diff)) / 8;
  }
#endif
  while (pos < n && text[pos] == '9') ++pos;
  return pos;
}

}  // namespace

bool PlainMaskShape(std::string_view mask, PlainShape* out) {
  const std::size_t n = mask.size();
  if (n < 2 || Upper(mask[0]) != 'F' || Upper(mask[1]) != 'M') return false;
  std::size_t pos = SkipNines(mask, 2);
  out->int_positions = static_cast<long>(pos - 2);
  out->has_point = pos < n && mask[pos] == '.';
  if (!out->has_point) {
    out->frac_positions = 0;
    return pos == n;
  }
  const std::size_t point = ++pos;
  pos = SkipNines(mask, pos);
  out->frac_positions = static_cast<long>(pos - point);
  return pos == n;
}

bool ParseShapedNumber(std::string_view text, std::string_view mask, unsigned char* bytes) {
  constexpr std::size_t kMaxPositions = 38;  // never rounded, never out of range
  const std::size_t mask_size = mask.size();
  const bool leading_s = mask_size != 0 && mask[0] == 'S';
  const std::size_t int_begin = leading_s ? 1 : 0;
  std::size_t m = SkipNines(mask, int_begin);
  const std::size_t int_positions = m - int_begin;
  if (int_positions == 0) return false;
  std::size_t frac_positions = 0;
  const bool has_point = m < mask_size && mask[m] == '.';
  if (has_point) {
    const std::size_t frac_begin = ++m;
    m = SkipNines(mask, m);
    frac_positions = m - frac_begin;
  }
  if (m != mask_size || int_positions + frac_positions > kMaxPositions) return false;

  const char* p = text.data();
  const char* const end = p + text.size();
  bool negative = false;
  if (p != end && (*p == '+' || *p == '-')) {
    negative = *p++ == '-';
  } else if (leading_s) {
    return false;
  }
  // The digits, the point left out, between two '0's: digits[0] is the one
  // before the first, so that pairs can start a place early without a test.
  char digits[kMaxPositions + 2];
  digits[0] = '0';
  std::size_t count = 0;
  // More digits than the mask has places: stop at the first one, before it
  // overruns the buffer.
  for (; p != end && static_cast<unsigned char>(*p - '0') < 10; ++p) {
    if (count == int_positions) return false;
    digits[++count] = *p;
  }
  const std::size_t int_digits = count;
  if (p != end && *p == '.') {
    if (!has_point) return false;
    const std::size_t frac_end = count + frac_positions;
    for (++p; p != end && static_cast<unsigned char>(*p - '0') < 10; ++p) {
      if (count == frac_end) return false;
      digits[++count] = *p;
    }
  }
  if (p != end || count == 0) return false;

  std::memset(bytes, 0, static_cast<std::size_t>(kNumberSize));
  // value = 0.<digits from the first non-zero one> * 10^exponent.
  std::size_t first = 1;
  while (first <= count && digits[first] == '0') ++first;
  if (first > count) {
    bytes[0] = 1;
    bytes[1] = 0x80;
    return true;
  }
  while (digits[count] == '0') --count;
  digits[count + 1] = '0';
  long exponent = static_cast<long>(int_digits) - static_cast<long>(first - 1);
  // Base-100 digits stand on the decimal point: an odd exponent starts a
  // place early, on a '0'.
  std::size_t from = first;
  if ((exponent & 1) != 0) {
    --from;
    ++exponent;
  }
  const std::size_t pairs = (count - from + 2) / 2;
  const long exponent100 = exponent / 2 - 1;
  const char* d = digits + from;
  unsigned char* out = bytes + 2;
  if (negative) {
    for (std::size_t i = 0; i < pairs; ++i, d += 2) {
      out[i] = static_cast<unsigned char>(101 - ((d[0] - '0') * 10 + (d[1] - '0')));
    }
    bytes[1] = static_cast<unsigned char>(0x3E - exponent100);
    std::size_t length = 1 + pairs;
    if (pairs < static_cast<std::size_t>(kMaxMantissaBytes)) {
      out[pairs] = 0x66;
      ++length;
    }
    bytes[0] = static_cast<unsigned char>(length);
  } else {
    for (std::size_t i = 0; i < pairs; ++i, d += 2) {
      out[i] = static_cast<unsigned char>((d[0] - '0') * 10 + (d[1] - '0') + 1);
    }
    bytes[1] = static_cast<unsigned char>(0xC1 + exponent100);
    bytes[0] = static_cast<unsigned char>(1 + pairs);
  }
  return true;
}

int FormatNumber(const Decimal& value, const NumberModel& model, std::string* out) {
  if (model.unsupported) return kOraInvalidFormat;
  const int int_positions = static_cast<int>(DigitPositions(model.integer));
  const int frac_positions = static_cast<int>(model.fraction.size());
  const Decimal r = RoundToFraction(value, frac_positions);
  const int int_digits = r.IsZero() ? 0 : std::max(0, r.exponent);
  if (int_digits > int_positions) return kOraTextOverflow;

  auto digit_at = [&r](int index) {
    return index >= 0 && index < static_cast<int>(r.digits.size())
               ? r.digits[static_cast<std::size_t>(index)]
               : '0';
  };
  std::string integer;
  for (int i = 0; i < int_digits; ++i) integer += digit_at(i);
  // A '0' element forces digits from its position to the point.
  const std::size_t first_zero = model.integer.find('0');
  if (first_zero != std::string::npos) {
    const auto width = static_cast<std::size_t>(
        DigitPositions(model.integer.substr(first_zero)));
    if (integer.size() < width) integer.insert(0, width - integer.size(), '0');
  }
  std::string fraction;
  for (int j = 0; j < frac_positions; ++j) fraction += digit_at(r.exponent + j);
  if (model.fill_mode) {
    const std::size_t last_zero = model.fraction.rfind('0');
    const std::size_t keep = last_zero == std::string::npos ? 0 : last_zero + 1;
    while (fraction.size() > keep && fraction.back() == '0') fraction.pop_back();
  }
  if (integer.empty() && fraction.empty()) integer = "0";

  // Lay the integer digits into the mask's positions from the right.
  const char pad = model.fill_mode ? '\0' : ' ';
  std::string laid;
  std::size_t remaining = integer.size();
  std::size_t pads = 0;
  for (std::size_t i = model.integer.size(); i-- > 0;) {
    if (remaining > 0) {
      laid += model.integer[i] == ',' ? ',' : integer[--remaining];
    } else if (pad != '\0') {
      ++pads;
    }
  }
  // Digits a '0' forced or a lone zero may exceed the positions (mask "FM").
  while (remaining > 0) laid += integer[--remaining];
  std::reverse(laid.begin(), laid.end());

  const bool negative = value.negative;
  std::string head;
  std::string tail;
  switch (model.sign) {
    case NumberModel::Sign::Default:
      if (negative) {
        head = "-";
      } else if (!model.fill_mode) {
        head = " ";
      }
      break;
    case NumberModel::Sign::LeadingS:
      head = negative ? "-" : "+";
      break;
    case NumberModel::Sign::TrailingS:
      tail = negative ? "-" : "+";
      break;
    case NumberModel::Sign::TrailingMI:
      if (negative) {
        tail = "-";
      } else if (!model.fill_mode) {
        tail = " ";
      }
      break;
    case NumberModel::Sign::Brackets:
      if (negative) {
        head = "<";
        tail = ">";
      } else if (!model.fill_mode) {
        head = " ";
        tail = " ";
      }
      break;
  }
  std::string text(pads, ' ');
  text += head;
  if (model.dollar) text += '$';
  text += laid;
  if (model.has_point) text += '.';
  text += fraction;
  text += tail;
  *out = std::move(text);
  return 0;
}

int ParseNumber(std::string_view text, const NumberModel& model, Decimal* out) {
  if (model.unsupported) return kOraInvalidInput;
  std::size_t pos = 0;
  bool negative = false;
  auto take_sign = [&]() {
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
      negative = text[pos++] == '-';
      return true;
    }
    return false;
  };
  bool brackets = false;
  switch (model.sign) {
    case NumberModel::Sign::LeadingS:
      if (!take_sign()) return kOraInvalidInput;
      break;
    case NumberModel::Sign::Default:
      take_sign();
      break;
    case NumberModel::Sign::Brackets:
      if (pos < text.size() && text[pos] == '<') {
        brackets = true;
        negative = true;
        ++pos;
      }
      break;
    default:
      break;
  }
  if (model.dollar) {
    if (pos >= text.size() || text[pos] != '$') return kOraInvalidInput;
    ++pos;
  }
  const std::size_t int_begin = pos;
  while (pos < text.size() && (IsDigit(text[pos]) || text[pos] == ',')) ++pos;
  const std::string_view int_text = text.substr(int_begin, pos - int_begin);
  if (int_text.size() > model.integer.size()) return kOraInvalidInput;
  std::string digits;
  for (std::size_t k = 0; k < int_text.size(); ++k) {
    const char t = int_text[int_text.size() - 1 - k];
    const char m = model.integer[model.integer.size() - 1 - k];
    if ((t == ',') != (m == ',')) return kOraInvalidInput;
  }
  for (char t : int_text) {
    if (t != ',') digits += t;
  }
  const int int_digits = static_cast<int>(digits.size());
  bool any_digit = int_digits > 0;
  if (pos < text.size() && text[pos] == '.') {
    if (!model.has_point) return kOraInvalidInput;
    ++pos;
    std::size_t frac = 0;
    while (pos < text.size() && IsDigit(text[pos])) {
      digits += text[pos++];
      ++frac;
    }
    if (frac > model.fraction.size()) return kOraInvalidInput;
    any_digit = any_digit || frac > 0;
  }
  switch (model.sign) {
    case NumberModel::Sign::TrailingS:
      if (!take_sign()) return kOraInvalidInput;
      break;
    case NumberModel::Sign::TrailingMI:
      if (pos < text.size() && (text[pos] == '-' || text[pos] == ' ')) {
        negative = text[pos++] == '-';
      }
      break;
    case NumberModel::Sign::Brackets:
      if (brackets) {
        if (pos >= text.size() || text[pos] != '>') return kOraInvalidInput;
        ++pos;
      }
      break;
    default:
      break;
  }
  if (pos != text.size() || !any_digit) return kOraInvalidInput;
  Decimal d;
  d.digits = digits;
  d.exponent = int_digits;
  Normalize(&d);
  d.negative = negative && !d.IsZero();
  *out = d;
  return 0;
}

}  // namespace ocimem::values
