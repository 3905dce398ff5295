// OCIDate arithmetic and comparison, and the system date.
#include <ctime>

#include "session/internal.h"
#include "calendar.h"
#include "datetime_arith.h"
#include "oci_common.h"

namespace {

using ocimem::values::DateTimeFields;

DateTimeFields FieldsOf(const OCIDate& d) {
  DateTimeFields f;
  f.year = d.OCIDateYYYY;
  f.month = d.OCIDateMM;
  f.day = d.OCIDateDD;
  f.hour = d.OCIDateTime.OCITimeHH;
  f.minute = d.OCIDateTime.OCITimeMI;
  f.second = d.OCIDateTime.OCITimeSS;
  return f;
}

void Store(const DateTimeFields& f, OCIDate* d) {
  d->OCIDateYYYY = static_cast<sb2>(f.year);
  d->OCIDateMM = static_cast<ub1>(f.month);
  d->OCIDateDD = static_cast<ub1>(f.day);
  d->OCIDateTime.OCITimeHH = static_cast<ub1>(f.hour);
  d->OCIDateTime.OCITimeMI = static_cast<ub1>(f.minute);
  d->OCIDateTime.OCITimeSS = static_cast<ub1>(f.second);
}

// The shared front of the calls on two dates (arguments 2 and 3) with a
// result (argument 4): OCI_SUCCESS, or the status to return.
sword CheckTwo(const char* function, OCIError* err, const OCIDate* date1, const OCIDate* date2,
               const void* result) {
  sword rc;
  if (ocimem::Enter(function, err, &rc)) return rc;
  if (date1 == nullptr) return ocimem::FailArgument(err, 2);
  if (date2 == nullptr) return ocimem::FailArgument(err, 3);
  if (result == nullptr) return ocimem::FailArgument(err, 4);
  if (int ora = ocimem::values::CheckOciDate(*date1)) return ocimem::values::FailDate(err, ora);
  if (int ora = ocimem::values::CheckOciDate(*date2)) return ocimem::values::FailDate(err, ora);
  return OCI_SUCCESS;
}

// OCIDateAddDays and OCIDateAddMonths: a checked date (argument 2) moved into
// the result (argument 4), which may be the same date.
sword Move(const char* function, OCIError* err, const OCIDate* date, sb4 amount, OCIDate* result,
           int (*move)(const DateTimeFields&, std::int64_t, DateTimeFields*)) {
  sword rc;
  if (ocimem::Enter(function, err, &rc)) return rc;
  if (date == nullptr) return ocimem::FailArgument(err, 2);
  if (result == nullptr) return ocimem::FailArgument(err, 4);
  if (int ora = ocimem::values::CheckOciDate(*date)) return ocimem::values::FailDate(err, ora);
  DateTimeFields moved;
  if (int ora = move(FieldsOf(*date), amount, &moved)) return ocimem::values::FailDate(err, ora);
  Store(moved, result);
  return OCI_SUCCESS;
}

int AddDays(const DateTimeFields& f, std::int64_t days, DateTimeFields* out) {
  return ocimem::values::AddSeconds(f, days * 86400, 0, out);
}

}  // namespace

extern "C" {

sword OCIDateAddDays(OCIError* err, const OCIDate* date, sb4 num_days, OCIDate* result) try {
  return Move("OCIDateAddDays", err, date, num_days, result, AddDays);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateAddMonths(OCIError* err, const OCIDate* date, sb4 num_months, OCIDate* result) try {
  return Move("OCIDateAddMonths", err, date, num_months, result,
              ocimem::values::AddMonthsLastDay);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateDaysBetween(OCIError* err, const OCIDate* date1, const OCIDate* date2,
                         sb4* num_days) try {
  const sword rc = CheckTwo("OCIDateDaysBetween", err, date1, date2, num_days);
  if (rc != OCI_SUCCESS) return rc;
  // date1 - date2 in days; the time of day is not counted.
  *num_days = static_cast<sb4>(
      ocimem::values::DayNumber(date1->OCIDateYYYY, date1->OCIDateMM, date1->OCIDateDD) -
      ocimem::values::DayNumber(date2->OCIDateYYYY, date2->OCIDateMM, date2->OCIDateDD));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateCompare(OCIError* err, const OCIDate* date1, const OCIDate* date2, sword* result) try {
  const sword rc = CheckTwo("OCIDateCompare", err, date1, date2, result);
  if (rc != OCI_SUCCESS) return rc;
  *result = ocimem::values::Compare(ocimem::values::TimePointOf(FieldsOf(*date1)),
                                    ocimem::values::TimePointOf(FieldsOf(*date2)));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateSysDate(OCIError* err, OCIDate* sys_date) try {
  sword rc;
  if (ocimem::Enter("OCIDateSysDate", err, &rc)) return rc;
  if (sys_date == nullptr) return ocimem::FailArgument(err, 2);
  // The client's clock in the system's own time zone, as SYSDATE shows the server's.
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  DateTimeFields f;
  f.year = tm.tm_year + 1900;
  f.month = tm.tm_mon + 1;
  f.day = tm.tm_mday;
  f.hour = tm.tm_hour;
  f.minute = tm.tm_min;
  f.second = tm.tm_sec > 59 ? 59 : tm.tm_sec;
  Store(f, sys_date);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
