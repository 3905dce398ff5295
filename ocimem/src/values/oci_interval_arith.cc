// OCIInterval addition, subtraction and comparison. Both operands and the
// result must be of one kind: YEAR TO MONTH with YEAR TO MONTH, DAY TO SECOND
// with DAY TO SECOND.
#include "session/internal.h"
#include "datetime_arith.h"
#include "descriptor.h"
#include "interval_text.h"
#include "oci_common.h"

namespace {

using ocimem::values::IntervalDescriptor;
using ocimem::values::IntervalKind;

// The shared front: entry checks, the two operands (arguments 3 and 4) and the
// result (argument 5, checked by the caller when it is not an interval).
sword Operands(const char* function, void* hndl, OCIError* err, const OCIInterval* inter1,
               const OCIInterval* inter2, const IntervalDescriptor** a,
               const IntervalDescriptor** b) {
  sword rc;
  if (ocimem::Enter(function, err, &rc)) return rc;
  if (ocimem::EnvFromHandle(hndl) == nullptr) return OCI_INVALID_HANDLE;
  *a = ocimem::values::AsInterval(inter1);
  if (*a == nullptr) return ocimem::FailArgument(err, 3);
  *b = ocimem::values::AsInterval(inter2);
  if (*b == nullptr) return ocimem::FailArgument(err, 4);
  return OCI_SUCCESS;
}

// OCIIntervalAdd (sign 1) and OCIIntervalSubtract (sign -1).
sword Combine(const char* function, void* hndl, OCIError* err, const OCIInterval* inter1,
              const OCIInterval* inter2, OCIInterval* result, int sign) {
  const IntervalDescriptor* a = nullptr;
  const IntervalDescriptor* b = nullptr;
  const sword rc = Operands(function, hndl, err, inter1, inter2, &a, &b);
  if (rc != OCI_SUCCESS) return rc;
  IntervalDescriptor* out = ocimem::values::AsInterval(result);
  if (out == nullptr) return ocimem::FailArgument(err, 5);
  if (a->kind != b->kind || out->kind != a->kind) {
    return ocimem::values::FailDate(err, ocimem::values::kOraNotComparable);
  }
  ocimem::values::IntervalValue v;
  const int ora =
      a->kind == IntervalKind::YearMonth
          ? ocimem::values::MakeYearMonth(0, a->value.months + sign * b->value.months, &v)
          : ocimem::values::MakeDaySecond(
                0, 0, 0, a->value.seconds + sign * b->value.seconds,
                static_cast<std::int64_t>(a->value.nanos) + sign * b->value.nanos, &v);
  if (ora != 0) return ocimem::values::FailDate(err, ora);
  out->value = v;
  return OCI_SUCCESS;
}

}  // namespace

extern "C" {

sword OCIIntervalAdd(void* hndl, OCIError* err, OCIInterval* addend1, OCIInterval* addend2,
                     OCIInterval* result) try {
  return Combine("OCIIntervalAdd", hndl, err, addend1, addend2, result, 1);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalSubtract(void* hndl, OCIError* err, OCIInterval* minuend,
                          OCIInterval* subtrahend, OCIInterval* result) try {
  return Combine("OCIIntervalSubtract", hndl, err, minuend, subtrahend, result, -1);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIntervalCompare(void* hndl, OCIError* err, OCIInterval* inter1, OCIInterval* inter2,
                         sword* result) try {
  const IntervalDescriptor* a = nullptr;
  const IntervalDescriptor* b = nullptr;
  const sword rc = Operands("OCIIntervalCompare", hndl, err, inter1, inter2, &a, &b);
  if (rc != OCI_SUCCESS) return rc;
  if (result == nullptr) return ocimem::FailArgument(err, 5);
  if (a->kind != b->kind) return ocimem::values::FailDate(err, ocimem::values::kOraNotComparable);
  if (a->kind == IntervalKind::YearMonth) {
    *result = a->value.months < b->value.months ? -1 : (a->value.months > b->value.months ? 1 : 0);
    return OCI_SUCCESS;
  }
  ocimem::values::TimePoint pa{a->value.seconds, a->value.nanos};
  ocimem::values::TimePoint pb{b->value.seconds, b->value.nanos};
  *result = ocimem::values::Compare(pa, pb);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
