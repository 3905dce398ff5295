#include "database/sequence.h"

#include <algorithm>

namespace ocimem {

SequenceNumber SequenceMax() {
  SequenceNumber n = 1;
  for (int i = 0; i < 28; ++i) n *= 10;
  return n - 1;
}

SequenceNumber SequenceMinDescending() {
  SequenceNumber n = 1;
  for (int i = 0; i < 27; ++i) n *= 10;
  return -(n - 1);
}

std::string SequenceText(SequenceNumber n) {
  if (n == 0) return "0";
  bool negative = n < 0;
  std::string digits;
  for (; n != 0; n /= 10) {
    int d = static_cast<int>(n % 10);
    digits.push_back(static_cast<char>('0' + (d < 0 ? -d : d)));
  }
  if (negative) digits.push_back('-');
  std::reverse(digits.begin(), digits.end());
  return digits;
}

bool Sequence::Advance(SequenceNumber* out) {
  SequenceNumber v = next;
  if (v > max_value || v < min_value) {
    if (!cycle) return false;
    v = increment > 0 ? min_value : max_value;
  }
  *out = v;
  next = v + increment;
  return true;
}

}  // namespace ocimem
