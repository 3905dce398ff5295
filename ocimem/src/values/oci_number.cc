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

static_assert(ocimem::values::kNumberSize == OCI_NUMBER_SIZE, "a NUMBER's bytes fill an OCINumber");

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
  if (ocimem::values::ParseShapedNumber(View(str, str_length), View(fmt, fmt_length),
                                       number->OCINumberPart)) {
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
