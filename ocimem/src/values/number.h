// NUMBER values: the 22-byte OCINumber form (length byte + Oracle's on-disk
// bytes) and a decimal form that the text and real conversions work on.
#ifndef OCIMEM_VALUES_NUMBER_H
#define OCIMEM_VALUES_NUMBER_H

#include <cstdint>
#include <string>
#include <string_view>

namespace ocimem::values {

constexpr int kNumberSize = 22;
constexpr int kMaxMantissaBytes = 20;

// value = sign * 0.<digits> * 10^exponent. `digits` has no leading or trailing
// zero; an empty `digits` is zero (and then `negative` is false).
struct Decimal {
  bool negative = false;
  std::string digits;
  int exponent = 0;

  bool IsZero() const { return digits.empty(); }
};

enum class NumberError { None, Invalid, Overflow };

// Reads the 22 bytes; Invalid when they are not a NUMBER this library writes.
NumberError DecodeNumber(const unsigned char* bytes, Decimal* out);

// The value DecodeNumber reads, its digits in a fixed buffer instead of a string (a
// NUMBER has at most 40 significant digits).
struct DecimalDigits {
  bool negative = false;
  int count = 0;  // digits used; 0 is zero
  int exponent = 0;
  int first = 0;  // where the digits start in `buffer`
  char buffer[2 * kMaxMantissaBytes];

  bool IsZero() const { return count == 0; }
  const char* Digits() const { return buffer + first; }
};

// DecodeNumber into a DecimalDigits: the same checks and the same (normalised) value;
// invalid bytes leave zero behind.
NumberError DecodeNumberDigits(const unsigned char* bytes, DecimalDigits* out);

// The text of a NUMBER's bytes under a plain fill-mode mask ("FM", `int_positions` nines,
// the point when `has_point`, `frac_positions` nines) straight from the bytes: the text
// FormatNumberPlain gives, its length returned; -1 (nothing written) when the bytes are
// invalid, the value would round or overflow, or `room` (NUL included) is too small.
int FormatPlainNumberBytes(const unsigned char* bytes, long int_positions, long frac_positions,
                           bool has_point, char* buf, std::size_t room);

// Rounds to 20 base-100 digits (half away from zero); values below 1E-130 in
// magnitude become zero; Overflow when the rounded magnitude reaches 1E126.
NumberError EncodeNumber(const Decimal& value, unsigned char* bytes);

// Removes leading/trailing zero digits and fixes the exponent; keeps zero unsigned.
void Normalize(Decimal* d);

// Rounds to `frac_digits` digits after the decimal point, half away from zero.
Decimal RoundToFraction(const Decimal& d, int frac_digits);

// -1, 0, 1 like memcmp, in numeric order.
int CompareNumbers(const unsigned char* a, const unsigned char* b);

// Integers: signed/unsigned, widths 1, 2, 4, 8.
bool DecimalFromInteger(std::int64_t v, Decimal* out);
bool DecimalFromUnsigned(std::uint64_t v, Decimal* out);
// Rounds half away from zero to an integer; false if it does not fit.
bool DecimalToInt64(const Decimal& d, std::int64_t* out);
bool DecimalToUint64(const Decimal& d, std::uint64_t* out);

// Exact binary expansion of a finite double / float.
Decimal DecimalFromDouble(double v);
// Correctly rounded conversions.
double DecimalToDouble(const Decimal& d);
float DecimalToFloat(const Decimal& d);

// Canonical plain text (`-123.45`, `.5`, `0`): used by tests and tools.
std::string DecimalToPlainText(const Decimal& d);
// Parses `[-]digits[.digits]`; false on anything else.
bool DecimalFromPlainText(std::string_view text, Decimal* out);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_NUMBER_H
