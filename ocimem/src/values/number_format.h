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
  // Fill mode, '9' positions only, the default sign and no '$': the masks a
  // host builds from a column's precision and scale ("FM999", "FM99999.99").
  bool plain_fill = false;
};

// Returns 0 or kOraInvalidFormat.
int ParseNumberModel(std::string_view mask, NumberModel* out);

// Returns 0, kOraTextOverflow or kOraInvalidFormat.
int FormatNumber(const Decimal& value, const NumberModel& model, std::string* out);

// FormatNumber for a plain_fill model and a value that needs no rounding,
// straight into `buf` (room `room` bytes, NUL included): returns the text's
// length, or -1 when FormatNumber must decide (another model, a value to
// round, an overflow, or too little room); nothing is written then.
int FormatNumberPlain(const Decimal& value, const NumberModel& model, char* buf,
                      std::size_t room);
// The same for a value decoded with DecodeNumberDigits.
int FormatNumberPlain(const DecimalDigits& value, const NumberModel& model, char* buf,
                      std::size_t room);

// The positions of a plain fill-mode mask read straight from its text: "FM" (any case),
// '9's, and optionally '.' and more '9's, which ParseNumberModel reads as a plain_fill
// model with these positions. False for every other mask.
struct PlainShape {
  long int_positions = 0;
  long frac_positions = 0;
  bool has_point = false;
};
bool PlainMaskShape(std::string_view mask, PlainShape* out);

// OCINumberFromText for the masks a host builds from a text's own shape: an optional
// leading 'S', '9's, and optionally '.' and more '9's, 38 positions at most ("S9999.99"
// for "-1234.50").  Writes the kNumberSize bytes that ParseNumber and EncodeNumber would
// write and returns true; false, with nothing written, for any other mask and for any
// text that does not fit it (the general way then decides, errors included).
bool ParseShapedNumber(std::string_view text, std::string_view mask, unsigned char* bytes);

// Returns 0 or kOraInvalidInput; the result is not yet range-checked.
int ParseNumber(std::string_view text, const NumberModel& model, Decimal* out);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_NUMBER_FORMAT_H
