// OCIDate text conversions.
#include <cstring>
#include <string>

#include "session/internal.h"
#include "calendar.h"
#include "date_fixed.h"
#include "date_format.h"
#include "oci_common.h"

namespace {
using ocimem::values::DateTimeFields;
}  // namespace

extern "C" {

sword OCIDateToText(OCIError* err, const OCIDate* date, const oratext* fmt, ub1 fmt_length,
                    const oratext* lang_name, ub4 lang_length, ub4* buf_size, oratext* buf) try {
  sword rc;
  if (ocimem::Enter("OCIDateToText", err, &rc)) return rc;
  if (date == nullptr) return ocimem::FailArgument(err, 2);
  if (buf_size == nullptr) return ocimem::FailArgument(err, 7);
  if (buf == nullptr) return ocimem::FailArgument(err, 8);
  if (!ocimem::values::IsAmerican(lang_name, lang_length)) return ocimem::values::FailLanguage(err);
  if (int ora = ocimem::values::CheckOciDate(*date)) return ocimem::values::FailDate(err, ora);
  const ocimem::values::DateMask* mask = nullptr;
  if (int ora = ocimem::values::CachedDateMask(ocimem::values::MaskOrDefault(fmt, fmt_length),
                                               &mask)) {
    return ocimem::values::FailDate(err, ora);
  }
  DateTimeFields v;
  v.year = date->OCIDateYYYY;
  v.month = date->OCIDateMM;
  v.day = date->OCIDateDD;
  v.hour = date->OCIDateTime.OCITimeHH;
  v.minute = date->OCIDateTime.OCITimeMI;
  v.second = date->OCIDateTime.OCITimeSS;
  if (mask->fixed) {
    char fixed[ocimem::values::kFixedTextRoom];
    const int n = ocimem::values::FormatFixedText(*mask, v, false, 0, fixed);
    if (n >= 0) {
      return ocimem::values::CopyText(err, fixed, static_cast<std::size_t>(n), buf_size, buf);
    }
  }
  thread_local std::string text;  // keeps its buffer from call to call
  if (int ora = ocimem::values::FormatDateTime(*mask, v, false, 0, nullptr, &text)) {
    return ocimem::values::FailDate(err, ora);
  }
  return ocimem::values::CopyText(err, text, buf_size, buf);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateFromText(OCIError* err, const oratext* date_str, ub4 d_str_length, const oratext* fmt,
                      ub1 fmt_length, const oratext* lang_name, ub4 lang_length,
                      OCIDate* date) try {
  sword rc;
  if (ocimem::Enter("OCIDateFromText", err, &rc)) return rc;
  if (date_str == nullptr) return ocimem::FailArgument(err, 2);
  if (date == nullptr) return ocimem::FailArgument(err, 8);
  if (!ocimem::values::IsAmerican(lang_name, lang_length)) return ocimem::values::FailLanguage(err);
  const ocimem::values::DateMask* mask = nullptr;
  if (int ora = ocimem::values::CachedDateMask(ocimem::values::MaskOrDefault(fmt, fmt_length),
                                               &mask)) {
    return ocimem::values::FailDate(err, ora);
  }
  ocimem::values::DateParseOptions options;
  if (mask->needs_clock) {
    options.current_year = ocimem::values::CurrentYear();
    options.current_month = ocimem::values::CurrentMonth();
  }
  DateTimeFields v;
  const std::string_view text(reinterpret_cast<const char*>(date_str), d_str_length);
  if (int ora = ocimem::values::ParseDateTime(text, *mask, options, &v, nullptr)) {
    return ocimem::values::FailDate(err, ora);
  }
  date->OCIDateYYYY = static_cast<sb2>(v.year);
  date->OCIDateMM = static_cast<ub1>(v.month);
  date->OCIDateDD = static_cast<ub1>(v.day);
  date->OCIDateTime.OCITimeHH = static_cast<ub1>(v.hour);
  date->OCIDateTime.OCITimeMI = static_cast<ub1>(v.minute);
  date->OCIDateTime.OCITimeSS = static_cast<ub1>(v.second);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
