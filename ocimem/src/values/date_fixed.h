// Masks of fixed shape, written and read position by position (date_fixed.cc).
#ifndef OCIMEM_VALUES_DATE_FIXED_H
#define OCIMEM_VALUES_DATE_FIXED_H

#include <string>
#include <string_view>

#include "date_format.h"

namespace ocimem::values {

// True for a mask of YYYY, MM, DD (all three), HH24, MI, SS and FF, none twice and none
// with TH, and literals without letters or digits; no FM or FX.
bool IsFixedMask(const DateMask& mask);

// The text FormatDateTime writes for `value` with such a mask; false when the value needs
// the general formatter (a year outside 1..9999, a fraction not allowed, ...).
bool FormatFixed(const DateMask& mask, const DateTimeFields& value, bool allow_fraction,
                 int fsprec, std::string* out);
// The same text into `buf`, which has room for kFixedTextRoom bytes: its length, or -1.
constexpr int kFixedTextRoom = 128;
int FormatFixedText(const DateMask& mask, const DateTimeFields& value, bool allow_fraction,
                    int fsprec, char* buf);

// The value ParseDateTime reads from `text` when the text has exactly the mask's shape
// (every digit of every element, the literals as written) and a valid date and time;
// false for anything else, which the general parser then reads or refuses.
bool ParseFixed(std::string_view text, const DateMask& mask, DateTimeFields* value);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATE_FIXED_H
