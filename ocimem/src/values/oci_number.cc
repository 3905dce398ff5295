// OCINumber entry points: argument checks and Oracle's error reporting around
// the NUMBER conversions of number.cc and number_format.cc.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "session/internal.h"
#include "session/same_bytes.h"
#include "number.h"
#include "number_format.h"
#include "oci_common.h"

namespace {

using ocimem::values::Decimal;
using ocimem::values::NumberError;

std::string Quoted(const oratext* p, ub4 length) {
  return std::string(reinterpret_cast<const char*>(p), length);
}

sword FailInvalidNumber(OCIError* err, int position) {
  return ocimem::Fail(err, ocimem::values::kOraInvalidNumber,
                      "argument [" + std::to_string(position) +
                          "] is an invalid or uninitialized number");
}

sword FailOverflow(OCIError* err) {
  return ocimem::Fail(err, ocimem::values::kOraNumberOverflow, "overflow error");
}

sword Store(OCIError* err, const Decimal& d, OCINumber* number) {
  unsigned char bytes[ocimem::values::kNumberSize];
  if (ocimem::values::EncodeNumber(d, bytes) != NumberError::None) return FailOverflow(err);
  std::memcpy(number->OCINumberPart, bytes, sizeof bytes);
  return OCI_SUCCESS;
}

bool HasNlsParams(const oratext* nls, ub4 length) { return nls != nullptr && length != 0; }

int CachedNumberModel(std::string_view mask, const ocimem::values::NumberModel** out) {
  thread_local ocimem::values::MaskCache<ocimem::values::NumberModel,
                                         ocimem::values::ParseNumberModel>
      cache;
  return cache.Get(mask, out);
}

std::string_view View(const oratext* p, ub4 length) {
  return std::string_view(reinterpret_cast<const char*>(p), length);
}

// OCINumberFromText for the masks a host builds from a text's own shape: an optional
// leading 'S', '9's and an optional '.' with more '9's ("S9999.99" for "-1234.50").  Writes
// the same bytes as ParseNumber and EncodeNumber would and returns true; false when the
// mask or the text is anything else (the general path then decides, errors included).
constexpr std::size_t kFastMaskDigits = 38;  // never rounded, never out of range

bool FastNumberFromText(std::string_view text, std::string_view mask, OCINumber* number) {
  std::size_t m = 0;
  const bool leading_s = !mask.empty() && mask[0] == 'S';
  if (leading_s) ++m;
  std::size_t int_positions = 0;
  while (m < mask.size() && mask[m] == '9') {
    ++int_positions;
    ++m;
  }
  if (int_positions == 0) return false;
  std::size_t frac_positions = 0;
  bool has_point = false;
  if (m < mask.size() && mask[m] == '.') {
    has_point = true;
    ++m;
    while (m < mask.size() && mask[m] == '9') {
      ++frac_positions;
      ++m;
    }
  }
  if (m != mask.size() || int_positions + frac_positions > kFastMaskDigits) return false;

  std::size_t pos = 0;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
    negative = text[pos++] == '-';
  } else if (leading_s) {
    return false;
  }
  char digits[kFastMaskDigits + 2];
  std::size_t count = 0;
  const std::size_t int_begin = pos;
  // More digits than the mask has places is the general path's case: stop
  // at the first one, before it overruns the buffer.
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
    if (pos - int_begin >= int_positions) return false;
    digits[count++] = text[pos++];
  }
  const int int_digits = static_cast<int>(count);
  if (pos < text.size() && text[pos] == '.') {
    if (!has_point) return false;
    ++pos;
    const std::size_t frac_begin = pos;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
      if (pos - frac_begin >= frac_positions) return false;
      digits[count++] = text[pos++];
    }
  }
  if (pos != text.size() || count == 0) return false;

  // Normalise: value = 0.<digits> * 10^exponent without leading or trailing zeros.
  std::size_t first = 0;
  while (first < count && digits[first] == '0') ++first;
  std::memset(number->OCINumberPart, 0, sizeof number->OCINumberPart);
  if (first == count) {
    number->OCINumberPart[0] = 1;
    number->OCINumberPart[1] = 0x80;
    return true;
  }
  while (digits[count - 1] == '0') --count;
  int exponent = int_digits - static_cast<int>(first);
  // Base-100 digits aligned on the decimal point.
  char aligned[kFastMaskDigits + 2];
  std::size_t n = 0;
  if (exponent % 2 != 0) {
    aligned[n++] = '0';
    ++exponent;
  }
  for (std::size_t k = first; k < count; ++k) aligned[n++] = digits[k];
  if (n % 2 != 0) aligned[n++] = '0';
  const int exponent100 = exponent / 2 - 1;
  const std::size_t pairs = n / 2;
  unsigned char* bytes = number->OCINumberPart;
  for (std::size_t i = 0; i < pairs; ++i) {
    const int pair = (aligned[2 * i] - '0') * 10 + (aligned[2 * i + 1] - '0');
    bytes[2 + i] = static_cast<unsigned char>(negative ? 101 - pair : pair + 1);
  }
  if (negative) {
    bytes[1] = static_cast<unsigned char>(0x3E - exponent100);
    std::size_t length = 1 + pairs;
    if (pairs < static_cast<std::size_t>(ocimem::values::kMaxMantissaBytes)) {
      bytes[2 + pairs] = 0x66;
      ++length;
    }
    bytes[0] = static_cast<unsigned char>(length);
  } else {
    bytes[1] = static_cast<unsigned char>(0xC1 + exponent100);
    bytes[0] = static_cast<unsigned char>(1 + pairs);
  }
  return true;
}

// This library speaks the session defaults only (decimal '.', group ',').
sword FailNlsParams(OCIError* err, const oratext* nls, ub4 length) {
  return ocimem::Fail(err, 22064, "invalid NLS parameter string [" + Quoted(nls, length) + "]");
}

}  // namespace

extern "C" {

sword OCINumberToText(OCIError* err, const OCINumber* number, const oratext* fmt, ub4 fmt_length,
                      const oratext* nls_params, ub4 nls_p_length, ub4* buf_size,
                      oratext* buf) try {
  sword rc;
  if (ocimem::Enter("OCINumberToText", err, &rc)) return rc;
  if (number == nullptr) return ocimem::FailArgument(err, 2);
  if (fmt == nullptr) return ocimem::FailArgument(err, 3);
  if (buf_size == nullptr) return ocimem::FailArgument(err, 7);
  if (buf == nullptr) return ocimem::FailArgument(err, 8);
  if (HasNlsParams(nls_params, nls_p_length)) {
    return FailNlsParams(err, nls_params, nls_p_length);
  }
  const std::string_view mask = View(fmt, fmt_length);
  // The masks a host builds from a column's precision and scale ("FM99999.99") are read
  // from their text; their values mostly need neither a model nor rounding, and their
  // text comes straight from the number's bytes.
  // The host's masks repeat from call to call: they are remembered with their shapes on
  // the error handle (a thread's own).
  ocimem::values::PlainShape shape;
  bool plain_mask = false;
  ocimem::NumberMaskLookup* last = nullptr;
  if (fmt_length != 0) {
    last = &ocimem::AsError(err)->number_masks[ocimem::NumberMaskSlot(mask.data(), fmt_length)];
  }
  if (last != nullptr && last->length == fmt_length &&
      ocimem::SameBytes(last->text, mask.data(), mask.size())) {
    plain_mask = last->plain;
    shape.int_positions = last->int_positions;
    shape.frac_positions = last->frac_positions;
    shape.has_point = last->has_point;
  } else {
    plain_mask = ocimem::values::PlainMaskShape(mask, &shape);
    if (last != nullptr && fmt_length <= ocimem::NumberMaskLookup::kMaxMask) {
      last->length = fmt_length;
      last->plain = plain_mask;
      last->int_positions = shape.int_positions;
      last->frac_positions = shape.frac_positions;
      last->has_point = shape.has_point;
      std::memcpy(last->text, mask.data(), mask.size());
    }
  }
  if (plain_mask) {
    const int plain = ocimem::values::FormatPlainNumberBytes(
        number->OCINumberPart, shape.int_positions, shape.frac_positions, shape.has_point,
        reinterpret_cast<char*>(buf), *buf_size);
    if (plain >= 0) {
      buf[plain] = '\0';
      *buf_size = static_cast<ub4>(plain);
      return OCI_SUCCESS;
    }
  }
  ocimem::values::DecimalDigits digits;
  if (ocimem::values::DecodeNumberDigits(number->OCINumberPart, &digits) != NumberError::None) {
    return FailInvalidNumber(err, 2);
  }
  const ocimem::values::NumberModel* model = nullptr;
  if (CachedNumberModel(mask, &model) != 0) {
    return ocimem::Fail(err, ocimem::values::kOraInvalidFormat,
                        "invalid format text [" + Quoted(fmt, fmt_length) + "]");
  }
  // The common masks need neither a string nor rounding.
  const int plain = ocimem::values::FormatNumberPlain(digits, *model,
                                                      reinterpret_cast<char*>(buf), *buf_size);
  if (plain >= 0) {
    buf[plain] = '\0';
    *buf_size = static_cast<ub4>(plain);
    return OCI_SUCCESS;
  }
  Decimal value;
  value.negative = digits.negative;
  value.digits.assign(digits.Digits(), static_cast<std::size_t>(digits.count));
  value.exponent = digits.exponent;
  std::string text;
  if (ocimem::values::FormatNumber(value, *model, &text) != 0) {
    if (model->unsupported) {
      return ocimem::Fail(err, ocimem::values::kOraInvalidFormat,
                          "invalid format text [" + Quoted(fmt, fmt_length) + "]");
    }
    return ocimem::Fail(err, ocimem::values::kOraTextOverflow,
                        "number to text translation for the given format causes overflow");
  }
  const auto needed = static_cast<ub4>(text.size() + 1);
  if (*buf_size < needed) {
    return ocimem::Fail(err, 22059,
                        "buffer size [" + std::to_string(*buf_size) + "] is too small - [" +
                            std::to_string(needed) + "] is needed");
  }
  std::memcpy(buf, text.data(), text.size());
  buf[text.size()] = '\0';
  *buf_size = static_cast<ub4>(text.size());
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCINumberFromText(OCIError* err, const oratext* str, ub4 str_length, const oratext* fmt,
                        ub4 fmt_length, const oratext* nls_params, ub4 nls_p_length,
                        OCINumber* number) try {
  sword rc;
  if (ocimem::Enter("OCINumberFromText", err, &rc)) return rc;
  if (str == nullptr) return ocimem::FailArgument(err, 2);
  if (fmt == nullptr) return ocimem::FailArgument(err, 4);
  if (number == nullptr) return ocimem::FailArgument(err, 8);
  if (HasNlsParams(nls_params, nls_p_length)) {
    return FailNlsParams(err, nls_params, nls_p_length);
  }
  if (FastNumberFromText(View(str, str_length), View(fmt, fmt_length), number)) {
    return OCI_SUCCESS;
  }
  const ocimem::values::NumberModel* model = nullptr;
  if (CachedNumberModel(View(fmt, fmt_length), &model) != 0) {
    return ocimem::Fail(err, ocimem::values::kOraInvalidFormat,
                        "invalid format text [" + Quoted(fmt, fmt_length) + "]");
  }
  Decimal value;
  if (ocimem::values::ParseNumber(View(str, str_length), *model, &value) != 0) {
    return ocimem::Fail(err, ocimem::values::kOraInvalidInput,
                        "invalid input string [" + Quoted(str, str_length) + "]");
  }
  return Store(err, value, number);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCINumberToReal(OCIError* err, const OCINumber* number, uword rsl_length, void* rsl) try {
  sword rc;
  if (ocimem::Enter("OCINumberToReal", err, &rc)) return rc;
  if (number == nullptr) return ocimem::FailArgument(err, 2);
  if (rsl_length != sizeof(float) && rsl_length != sizeof(double)) {
    return ocimem::FailArgument(err, 3);
  }
  if (rsl == nullptr) return ocimem::FailArgument(err, 4);
  thread_local Decimal value;
  if (ocimem::values::DecodeNumber(number->OCINumberPart, &value) != NumberError::None) {
    return FailInvalidNumber(err, 2);
  }
  if (rsl_length == sizeof(float)) {
    const float f = ocimem::values::DecimalToFloat(value);
    std::memcpy(rsl, &f, sizeof f);
  } else {
    const double d = ocimem::values::DecimalToDouble(value);
    std::memcpy(rsl, &d, sizeof d);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCINumberFromReal(OCIError* err, const void* rnum, uword rnum_length, OCINumber* number) try {
  sword rc;
  if (ocimem::Enter("OCINumberFromReal", err, &rc)) return rc;
  if (rnum == nullptr) return ocimem::FailArgument(err, 2);
  if (rnum_length != sizeof(float) && rnum_length != sizeof(double)) {
    return ocimem::FailArgument(err, 3);
  }
  if (number == nullptr) return ocimem::FailArgument(err, 4);
  double v = 0;
  if (rnum_length == sizeof(float)) {
    float f = 0;
    std::memcpy(&f, rnum, sizeof f);
    v = f;
  } else {
    std::memcpy(&v, rnum, sizeof v);
  }
  if (std::isnan(v)) {
    return ocimem::Fail(err, ocimem::values::kOraInvalidInput, "invalid input string [NaN]");
  }
  if (std::isinf(v)) return FailOverflow(err);
  // Far below the smallest NUMBER even after rounding: zero, without
  // expanding the binary value's hundreds of decimal digits.
  if (std::fabs(v) < 1e-131) return Store(err, Decimal{}, number);
  return Store(err, ocimem::values::DecimalFromDouble(v), number);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCINumberFromInt(OCIError* err, const void* inum, uword inum_length, uword inum_s_flag,
                       OCINumber* number) try {
  sword rc;
  if (ocimem::Enter("OCINumberFromInt", err, &rc)) return rc;
  if (inum == nullptr) return ocimem::FailArgument(err, 2);
  if (inum_length != 1 && inum_length != 2 && inum_length != 4 && inum_length != 8) {
    return ocimem::FailArgument(err, 3);
  }
  if (inum_s_flag != OCI_NUMBER_SIGNED && inum_s_flag != OCI_NUMBER_UNSIGNED) {
    return ocimem::FailArgument(err, 4);
  }
  if (number == nullptr) return ocimem::FailArgument(err, 5);
  Decimal value;
  if (inum_s_flag == OCI_NUMBER_SIGNED) {
    std::int64_t v = 0;
    switch (inum_length) {
      case 1: { std::int8_t x; std::memcpy(&x, inum, 1); v = x; break; }
      case 2: { std::int16_t x; std::memcpy(&x, inum, 2); v = x; break; }
      case 4: { std::int32_t x; std::memcpy(&x, inum, 4); v = x; break; }
      default: std::memcpy(&v, inum, 8); break;
    }
    ocimem::values::DecimalFromInteger(v, &value);
  } else {
    std::uint64_t v = 0;
    switch (inum_length) {
      case 1: { std::uint8_t x; std::memcpy(&x, inum, 1); v = x; break; }
      case 2: { std::uint16_t x; std::memcpy(&x, inum, 2); v = x; break; }
      case 4: { std::uint32_t x; std::memcpy(&x, inum, 4); v = x; break; }
      default: std::memcpy(&v, inum, 8); break;
    }
    ocimem::values::DecimalFromUnsigned(v, &value);
  }
  return Store(err, value, number);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCINumberToInt(OCIError* err, const OCINumber* number, uword rsl_length, uword rsl_flag,
                     void* rsl) try {
  sword rc;
  if (ocimem::Enter("OCINumberToInt", err, &rc)) return rc;
  if (number == nullptr) return ocimem::FailArgument(err, 2);
  if (rsl_length != 1 && rsl_length != 2 && rsl_length != 4 && rsl_length != 8) {
    return ocimem::FailArgument(err, 3);
  }
  if (rsl_flag != OCI_NUMBER_SIGNED && rsl_flag != OCI_NUMBER_UNSIGNED) {
    return ocimem::FailArgument(err, 4);
  }
  if (rsl == nullptr) return ocimem::FailArgument(err, 5);
  Decimal value;
  if (ocimem::values::DecodeNumber(number->OCINumberPart, &value) != NumberError::None) {
    return FailInvalidNumber(err, 2);
  }
  const unsigned bits = 8U * rsl_length;
  if (rsl_flag == OCI_NUMBER_SIGNED) {
    std::int64_t v = 0;
    if (!ocimem::values::DecimalToInt64(value, &v)) return FailOverflow(err);
    if (bits < 64) {
      const std::int64_t limit = std::int64_t{1} << (bits - 1);
      if (v >= limit || v < -limit) return FailOverflow(err);
    }
    switch (rsl_length) {
      case 1: { auto x = static_cast<std::int8_t>(v); std::memcpy(rsl, &x, 1); break; }
      case 2: { auto x = static_cast<std::int16_t>(v); std::memcpy(rsl, &x, 2); break; }
      case 4: { auto x = static_cast<std::int32_t>(v); std::memcpy(rsl, &x, 4); break; }
      default: std::memcpy(rsl, &v, 8); break;
    }
  } else {
    std::uint64_t v = 0;
    if (!ocimem::values::DecimalToUint64(value, &v)) return FailOverflow(err);
    if (bits < 64 && v >= (std::uint64_t{1} << bits)) return FailOverflow(err);
    switch (rsl_length) {
      case 1: { auto x = static_cast<std::uint8_t>(v); std::memcpy(rsl, &x, 1); break; }
      case 2: { auto x = static_cast<std::uint16_t>(v); std::memcpy(rsl, &x, 2); break; }
      case 4: { auto x = static_cast<std::uint32_t>(v); std::memcpy(rsl, &x, 4); break; }
      default: std::memcpy(rsl, &v, 8); break;
    }
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCINumberCmp(OCIError* err, const OCINumber* number1, const OCINumber* number2,
                   sword* result) try {
  sword rc;
  if (ocimem::Enter("OCINumberCmp", err, &rc)) return rc;
  if (number1 == nullptr) return ocimem::FailArgument(err, 2);
  if (number2 == nullptr) return ocimem::FailArgument(err, 3);
  if (result == nullptr) return ocimem::FailArgument(err, 4);
  Decimal ignored;
  if (ocimem::values::DecodeNumber(number1->OCINumberPart, &ignored) != NumberError::None) {
    return FailInvalidNumber(err, 2);
  }
  if (ocimem::values::DecodeNumber(number2->OCINumberPart, &ignored) != NumberError::None) {
    return FailInvalidNumber(err, 3);
  }
  *result = ocimem::values::CompareNumbers(number1->OCINumberPart, number2->OCINumberPart);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
