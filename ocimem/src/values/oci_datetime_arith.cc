// OCIDateTime arithmetic, comparison, conversion between kinds and the
// system timestamp. Oracle does timestamp arithmetic in UTC: zoned values are
// moved and compared as instants, values without a zone by their own fields.
#include <ctime>

#include "session/internal.h"
#include "datetime_arith.h"
#include "datetime_kinds.h"
#include "descriptor.h"
#include "interval_text.h"
#include "oci_common.h"

namespace {

using ocimem::values::DateTimeDescriptor;
using ocimem::values::DateTimeFields;
using ocimem::values::DateTimeKind;
using ocimem::values::IntervalDescriptor;
using ocimem::values::IntervalKind;
using ocimem::values::Zone;

// DATE and TIMESTAMP compare with each other, and so do the two zoned kinds
// (as instants); a value with a zone and one without do not.
bool Comparable(const DateTimeDescriptor& a, const DateTimeDescriptor& b) {
  return ocimem::values::IsZonedKind(a.kind) == ocimem::values::IsZonedKind(b.kind);
}

// The fields arithmetic works on: the UTC instant of a zoned value.
DateTimeFields PointFields(const DateTimeDescriptor& d) {
  if (d.kind == DateTimeKind::TimestampTz) return ocimem::values::ToUtc(d.value);
  return ocimem::values::FieldsOf(d.value);
}

// OCIDateTimeIntervalAdd (sign 1) and OCIDateTimeIntervalSub (sign -1).
sword MoveByInterval(const char* function, void* hndl, OCIError* err, OCIDateTime* datetime,
                     OCIInterval* inter, OCIDateTime* outdatetime, int sign) {
  sword rc;
  if (ocimem::Enter(function, err, &rc)) return rc;
  if (ocimem::EnvFromHandle(hndl) == nullptr) return OCI_INVALID_HANDLE;
  const DateTimeDescriptor* d = ocimem::values::AsDateTime(datetime);
  if (d == nullptr) return ocimem::FailArgument(err, 3);
  const IntervalDescriptor* iv = ocimem::values::AsInterval(inter);
  if (iv == nullptr) return ocimem::FailArgument(err, 4);
  DateTimeDescriptor* out = ocimem::values::AsDateTime(outdatetime);
  if (out == nullptr) return ocimem::FailArgument(err, 5);
  // The result is of the input's kind (decision in docs/ocimem.md).
  if (out->kind != d->kind) return ocimem::values::FailDate(err, ocimem::values::kOraNotComparable);
  const DateTimeFields point = PointFields(*d);
  DateTimeFields moved;
  const int ora =
      iv->kind == IntervalKind::YearMonth
          ? ocimem::values::AddMonthsExact(point, sign * iv->value.months, &moved)
          : ocimem::values::AddSeconds(point, sign * iv->value.seconds,
                                       sign * static_cast<std::int64_t>(iv->value.nanos), &moved);
  if (ora != 0) return ocimem::values::FailDate(err, ora);
  out->value = ocimem::values::ValueAtPoint(d->kind, d->value, moved);
  return OCI_SUCCESS;
}

// The current time on the system clock, to the microsecond (as Oracle's
// SYSTIMESTAMP on Linux), and the system's offset from UTC then.
void Now(DateTimeFields* utc, int* offset_minutes) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::tm tm{};
  localtime_r(&now.tv_sec, &tm);
  *offset_minutes = static_cast<int>(tm.tm_gmtoff / 60);
  DateTimeFields epoch;
  epoch.year = 1970;
  ocimem::values::AddSeconds(epoch, now.tv_sec, now.tv_nsec / 1000 * 1000, utc);
}

}  // namespace

extern "C" {

sword OCIDateTimeIntervalAdd(void* hndl, OCIError* err, OCIDateTime* datetime, OCIInterval* inter,
                             OCIDateTime* outdatetime) try {
  return MoveByInterval("OCIDateTimeIntervalAdd", hndl, err, datetime, inter, outdatetime, 1);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeIntervalSub(void* hndl, OCIError* err, OCIDateTime* datetime, OCIInterval* inter,
                             OCIDateTime* outdatetime) try {
  return MoveByInterval("OCIDateTimeIntervalSub", hndl, err, datetime, inter, outdatetime, -1);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeSubtract(void* hndl, OCIError* err, OCIDateTime* indate1, OCIDateTime* indate2,
                          OCIInterval* inter) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeSubtract", err, &rc)) return rc;
  if (ocimem::EnvFromHandle(hndl) == nullptr) return OCI_INVALID_HANDLE;
  const DateTimeDescriptor* a = ocimem::values::AsDateTime(indate1);
  if (a == nullptr) return ocimem::FailArgument(err, 3);
  const DateTimeDescriptor* b = ocimem::values::AsDateTime(indate2);
  if (b == nullptr) return ocimem::FailArgument(err, 4);
  IntervalDescriptor* out = ocimem::values::AsInterval(inter);
  if (out == nullptr) return ocimem::FailArgument(err, 5);
  if (!Comparable(*a, *b)) return ocimem::values::FailDate(err, ocimem::values::kOraNotComparable);
  if (out->kind != IntervalKind::DaySecond) {
    return ocimem::values::FailDate(err, ocimem::values::kOraYearMonthDifference);
  }
  std::int64_t seconds = 0;
  std::int32_t nanos = 0;
  ocimem::values::Difference(ocimem::values::PointOf(*a), ocimem::values::PointOf(*b), &seconds,
                             &nanos);
  if (int ora = ocimem::values::MakeDaySecond(0, 0, 0, seconds, nanos, &out->value)) {
    return ocimem::values::FailDate(err, ora);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeCompare(void* hndl, OCIError* err, const OCIDateTime* date1,
                         const OCIDateTime* date2, sword* result) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeCompare", err, &rc)) return rc;
  if (ocimem::EnvFromHandle(hndl) == nullptr) return OCI_INVALID_HANDLE;
  const DateTimeDescriptor* a = ocimem::values::AsDateTime(date1);
  if (a == nullptr) return ocimem::FailArgument(err, 3);
  const DateTimeDescriptor* b = ocimem::values::AsDateTime(date2);
  if (b == nullptr) return ocimem::FailArgument(err, 4);
  if (result == nullptr) return ocimem::FailArgument(err, 5);
  if (!Comparable(*a, *b)) return ocimem::values::FailDate(err, ocimem::values::kOraNotComparable);
  *result = ocimem::values::Compare(ocimem::values::PointOf(*a), ocimem::values::PointOf(*b));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeConvert(void* hndl, OCIError* err, OCIDateTime* indate, OCIDateTime* outdate) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeConvert", err, &rc)) return rc;
  const ocimem::Env* env = ocimem::EnvFromHandle(hndl);
  if (env == nullptr) return OCI_INVALID_HANDLE;
  const DateTimeDescriptor* in = ocimem::values::AsDateTime(indate);
  if (in == nullptr) return ocimem::FailArgument(err, 3);
  DateTimeDescriptor* out = ocimem::values::AsDateTime(outdate);
  if (out == nullptr) return ocimem::FailArgument(err, 4);
  if (in->kind == out->kind) {
    out->value = in->value;
    return OCI_SUCCESS;
  }
  // The fields as the value shows them are kept; a kind with a zone takes
  // them as local time in the session time zone (decision in docs/ocimem.md).
  Zone session;
  if ((in->kind == DateTimeKind::TimestampLtz || ocimem::values::IsZonedKind(out->kind)) &&
      (rc = ocimem::values::SessionZone(env, err, &session)) != OCI_SUCCESS) {
    return rc;
  }
  ocimem::values::ZoneOutput shown_zone;
  bool has_zone = false;
  const DateTimeFields local = ocimem::values::Shown(*in, session, &shown_zone, &has_zone);
  if (int ora = ocimem::values::StoreLocal(out, local, nullptr, {}, session)) {
    return ocimem::values::FailDate(err, ora);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeSysTimeStamp(void* hndl, OCIError* err, OCIDateTime* sys_date) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeSysTimeStamp", err, &rc)) return rc;
  if (ocimem::EnvFromHandle(hndl) == nullptr) return OCI_INVALID_HANDLE;
  DateTimeDescriptor* d = ocimem::values::AsDateTime(sys_date);
  if (d == nullptr) return ocimem::FailArgument(err, 3);
  DateTimeFields utc;
  int offset = 0;
  Now(&utc, &offset);
  DateTimeFields local;
  ocimem::values::AddSeconds(utc, offset * 60LL, 0, &local);
  // The system's time with its offset; a kind without a zone keeps the local
  // fields, LOCAL TIME ZONE the instant (decision in docs/ocimem.md).
  ocimem::values::DateTimeValue v;
  ocimem::values::SetFields(d->kind == DateTimeKind::TimestampLtz ? utc : local, &v);
  if (d->kind == DateTimeKind::TimestampTz) v.offset_minutes = offset;
  if (d->kind == DateTimeKind::Date) v.nanos = 0;
  d->value = v;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
