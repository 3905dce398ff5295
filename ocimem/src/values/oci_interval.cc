// OCIInterval entry points over the descriptors of descriptors.cc.
#include <string>

#include "session/internal.h"
#include "descriptor.h"
#include "interval_text.h"
#include "oci_common.h"

namespace {

using ocimem::values::IntervalDescriptor;
using ocimem::values::IntervalKind;

// The environment must be valid even though intervals do not depend on it.
bool BadHandle(void* hndl) { return ocimem::EnvFromHandle(hndl) == nullptr; }

}  // namespace

extern "C" {

sword OCIIntervalSetYearMonth(void* hndl, OCIError* err, sb4 yr, sb4 mnth,
                              OCIInterval* result) try {
  sword rc;
  if (ocimem::Enter("OCIIntervalSetYearMonth", err, &rc)) return rc;
  if (BadHandle(hndl)) return OCI_INVALID_HANDLE;
  IntervalDescriptor* d = ocimem::values::AsInterval(result);
  if (d == nullptr) return ocimem::FailArgument(err, 5);
  if (d->kind != IntervalKind::YearMonth) {
    return ocimem::values::FailDate(err, ocimem::values::kOraIntervalInvalid);
  }
  if (int ora = ocimem::values::MakeYearMonth(yr, mnth, &d->value)) {
    return ocimem::values::FailDate(err, ora);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalSetDaySecond(void* hndl, OCIError* err, sb4 dy, sb4 hr, sb4 mm, sb4 ss, sb4 fsec,
                              OCIInterval* result) try {
  sword rc;
  if (ocimem::Enter("OCIIntervalSetDaySecond", err, &rc)) return rc;
  if (BadHandle(hndl)) return OCI_INVALID_HANDLE;
  IntervalDescriptor* d = ocimem::values::AsInterval(result);
  if (d == nullptr) return ocimem::FailArgument(err, 8);
  if (d->kind != IntervalKind::DaySecond) {
    return ocimem::values::FailDate(err, ocimem::values::kOraIntervalInvalid);
  }
  if (int ora = ocimem::values::MakeDaySecond(dy, hr, mm, ss, fsec, &d->value)) {
    return ocimem::values::FailDate(err, ora);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalGetYearMonth(void* hndl, OCIError* err, sb4* yr, sb4* mnth,
                              const OCIInterval* result) try {
  sword rc;
  if (ocimem::Enter("OCIIntervalGetYearMonth", err, &rc)) return rc;
  if (BadHandle(hndl)) return OCI_INVALID_HANDLE;
  if (yr == nullptr) return ocimem::FailArgument(err, 3);
  if (mnth == nullptr) return ocimem::FailArgument(err, 4);
  const IntervalDescriptor* d = ocimem::values::AsInterval(result);
  if (d == nullptr) return ocimem::FailArgument(err, 5);
  if (d->kind != IntervalKind::YearMonth) {
    return ocimem::values::FailDate(err, ocimem::values::kOraIntervalInvalid);
  }
  ocimem::values::SplitYearMonth(d->value, yr, mnth);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalGetDaySecond(void* hndl, OCIError* err, sb4* dy, sb4* hr, sb4* mm, sb4* ss,
                              sb4* fsec, const OCIInterval* result) try {
  sword rc;
  if (ocimem::Enter("OCIIntervalGetDaySecond", err, &rc)) return rc;
  if (BadHandle(hndl)) return OCI_INVALID_HANDLE;
  if (dy == nullptr) return ocimem::FailArgument(err, 3);
  if (hr == nullptr) return ocimem::FailArgument(err, 4);
  if (mm == nullptr) return ocimem::FailArgument(err, 5);
  if (ss == nullptr) return ocimem::FailArgument(err, 6);
  if (fsec == nullptr) return ocimem::FailArgument(err, 7);
  const IntervalDescriptor* d = ocimem::values::AsInterval(result);
  if (d == nullptr) return ocimem::FailArgument(err, 8);
  if (d->kind != IntervalKind::DaySecond) {
    return ocimem::values::FailDate(err, ocimem::values::kOraIntervalInvalid);
  }
  ocimem::values::SplitDaySecond(d->value, dy, hr, mm, ss, fsec);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalToText(void* hndl, OCIError* err, const OCIInterval* inter, ub1 lfprec,
                        ub1 fsprec, OraText* buffer, size_t buflen, size_t* resultlen) try {
  sword rc;
  if (ocimem::Enter("OCIIntervalToText", err, &rc)) return rc;
  if (BadHandle(hndl)) return OCI_INVALID_HANDLE;
  const IntervalDescriptor* d = ocimem::values::AsInterval(inter);
  if (d == nullptr) return ocimem::FailArgument(err, 3);
  if (buffer == nullptr) return ocimem::FailArgument(err, 6);
  if (resultlen == nullptr) return ocimem::FailArgument(err, 8);
  std::string text;
  if (int ora = ocimem::values::FormatInterval(d->kind, d->value, lfprec, fsprec, &text)) {
    return ocimem::values::FailDate(err, ora);
  }
  if (text.size() > buflen) return ocimem::values::FailDate(err, 1877);
  text.copy(reinterpret_cast<char*>(buffer), text.size());
  if (text.size() < buflen) buffer[text.size()] = '\0';
  *resultlen = text.size();
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalFromText(void* hndl, OCIError* err, const OraText* inpstr, size_t str_len,
                          OCIInterval* result) try {
  sword rc;
  if (ocimem::Enter("OCIIntervalFromText", err, &rc)) return rc;
  if (BadHandle(hndl)) return OCI_INVALID_HANDLE;
  if (inpstr == nullptr) return ocimem::FailArgument(err, 3);
  IntervalDescriptor* d = ocimem::values::AsInterval(result);
  if (d == nullptr) return ocimem::FailArgument(err, 5);
  const std::string_view text(reinterpret_cast<const char*>(inpstr), str_len);
  ocimem::values::IntervalValue v;
  if (int ora = ocimem::values::ParseInterval(d->kind, text, &v)) {
    return ocimem::values::FailDate(err, ora);
  }
  d->value = v;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
