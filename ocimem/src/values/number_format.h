// Number format models (TO_CHAR / TO_NUMBER style masks) for OCINumberToText
// and OCINumberFromText. Results are Oracle error numbers (0 = success).
#ifndef OCIMEM_VALUES_NUMBER_FORMAT_H
#define OCIMEM_VALUES_NUMBER_FORMAT_H

#include <string>
#include <string_view>

#include "number.h"

namespace ocimem::values {

constexpr int kOraNumberOverflow = 22053;
constexpr int kOraInvalidNumber = 22060;
constexpr int kOraInvalidFormat = 22061;
constexpr int kOraInvalidInput = 22062;
constexpr int kOraTextOverflow = 22065;

struct NumberModel {
  enum class Sign { Default, LeadingS, TrailingS, TrailingMI, Brackets };
  bool fill_mode = false;
  Sign sign = Sign::Default;
  bool dollar = false;
  std::string integer;   // '9', '0' and ',' positions, left to right
  bool has_point = false;
  std::string fraction;  // '9' and '0' positions
  // A valid model that uses an element this library does not convert with
  // (B C L U V X EEEE RN TM).
  bool unsupported = false;
};

// Returns 0 or kOraInvalidFormat.
int ParseNumberModel(std::string_view mask, NumberModel* out);

// Returns 0, kOraTextOverflow or kOraInvalidFormat.
int FormatNumber(const Decimal& value, const NumberModel& model, std::string* out);

// Returns 0 or kOraInvalidInput; the result is not yet range-checked.
int ParseNumber(std::string_view text, const NumberModel& model, Decimal* out);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_NUMBER_FORMAT_H
