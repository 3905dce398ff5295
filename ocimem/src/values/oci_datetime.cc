// OCIDateTime entry points over the descriptors of descriptors.cc.
#include <initializer_list>
#include <string>

#include "session/internal.h"
#include "calendar.h"
#include "date_fixed.h"
#include "date_format.h"
#include "datetime.h"
#include "datetime_kinds.h"
#include "descriptor.h"
#include "oci_common.h"

namespace {

using ocimem::values::DateTimeDescriptor;
using ocimem::values::DateTimeFields;
using ocimem::values::DateTimeKind;
using ocimem::values::SessionZone;
using ocimem::values::Shown;
using ocimem::values::StoreLocal;
using ocimem::values::Zone;

bool Zoned(DateTimeKind k) { return ocimem::values::IsZonedKind(k); }

// The handle's environment; its session time zone is resolved only by the
// calls whose value needs it (a zone read from $ORA_SDTZ or the system clock
// is not free, and most values carry their own zone or none).
sword SessionOf(void* hndl, ocimem::Env** env) {
  *env = ocimem::EnvFromHandle(hndl);
  return *env == nullptr ? OCI_INVALID_HANDLE : OCI_SUCCESS;
}

int CheckFields(const DateTimeFields& f) {
  if (f.year == 0 || f.year < ocimem::values::kMinYear || f.year > ocimem::values::kMaxYear) {
    return ocimem::values::kOraBadYear;
  }
  if (f.month < 1 || f.month > 12) return ocimem::values::kOraBadMonth;
  if (f.day < 1 || f.day > 31) return ocimem::values::kOraBadDay;
  if (!ocimem::values::IsValidDate(f.year, f.month, f.day)) {
    return ocimem::values::kOraDayNotValidForMonth;
  }
  if (f.hour > 23) return ocimem::values::kOraBadHour;
  if (f.minute > 59) return ocimem::values::kOraBadMinute;
  if (f.second > 59) return ocimem::values::kOraBadSecond;
  if (f.nanos > 999999999U) return ocimem::values::kOraBadFraction;
  return 0;
}

}  // namespace

extern "C" {

sword OCIDateTimeConstruct(void* hndl, OCIError* err, OCIDateTime* datetime, sb2 yr, ub1 mnth,
                           ub1 dy, ub1 hr, ub1 mm, ub1 ss, ub4 fsec, OraText* timezone,
                           size_t timezone_length) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeConstruct", err, &rc)) return rc;
  ocimem::Env* env = nullptr;
  if ((rc = SessionOf(hndl, &env)) != OCI_SUCCESS) return rc;
  DateTimeDescriptor* d = ocimem::values::AsDateTime(datetime);
  if (d == nullptr) return ocimem::FailArgument(err, 3);
  DateTimeFields f;
  f.year = yr;
  f.month = mnth;
  f.day = dy;
  f.hour = hr;
  f.minute = mm;
  f.second = ss;
  f.nanos = fsec;
  if (int ora = CheckFields(f)) return ocimem::values::FailDate(err, ora);
  Zone given;
  const bool has_zone = timezone != nullptr && timezone_length != 0 && Zoned(d->kind);
  if (has_zone) {
    const std::string_view text(reinterpret_cast<const char*>(timezone), timezone_length);
    if (int ora = ocimem::values::ResolveZoneText(text, &given)) {
      return ocimem::values::FailDate(err, ora);
    }
  }
  Zone session;
  if (Zoned(d->kind) && !has_zone && (rc = SessionZone(env, err, &session)) != OCI_SUCCESS) {
    return rc;
  }
  if (int ora = StoreLocal(d, f, has_zone ? &given : nullptr, {}, session)) {
    return ocimem::values::FailDate(err, ora);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

namespace {

// The shared front of the three getters: the usual entry checks, the
// descriptor (argument 3), the caller's out pointers (arguments 4 on), and
// the fields as the value shows them (in the session zone for LOCAL).
// Returns OCI_SUCCESS with *f, *zone and *has_zone filled, or the status to
// return.
sword ReadShown(const char* function, void* hndl, OCIError* err, const OCIDateTime* datetime,
                std::initializer_list<const void*> outs, DateTimeFields* f,
                ocimem::values::ZoneOutput* zone, bool* has_zone) {
  sword rc;
  if (ocimem::Enter(function, err, &rc)) return rc;
  ocimem::Env* env = nullptr;
  if ((rc = SessionOf(hndl, &env)) != OCI_SUCCESS) return rc;
  const DateTimeDescriptor* d = ocimem::values::AsDateTime(datetime);
  if (d == nullptr) return ocimem::FailArgument(err, 3);
  int position = 4;
  for (const void* out : outs) {
    if (out == nullptr) return ocimem::FailArgument(err, position);
    ++position;
  }
  Zone session;
  if (d->kind == DateTimeKind::TimestampLtz &&
      (rc = SessionZone(env, err, &session)) != OCI_SUCCESS) {
    return rc;
  }
  *has_zone = false;
  *f = Shown(*d, session, zone, has_zone);
  return OCI_SUCCESS;
}

}  // namespace

sword OCIDateTimeGetDate(void* hndl, OCIError* err, const OCIDateTime* date, sb2* yr, ub1* mnth,
                         ub1* dy) try {
  DateTimeFields f;
  ocimem::values::ZoneOutput zone;
  bool has_zone = false;
  const sword rc =
      ReadShown("OCIDateTimeGetDate", hndl, err, date, {yr, mnth, dy}, &f, &zone, &has_zone);
  if (rc != OCI_SUCCESS) return rc;
  *yr = static_cast<sb2>(f.year);
  *mnth = static_cast<ub1>(f.month);
  *dy = static_cast<ub1>(f.day);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeGetTime(void* hndl, OCIError* err, OCIDateTime* datetime, ub1* hr, ub1* mm,
                         ub1* ss, ub4* fsec) try {
  DateTimeFields f;
  ocimem::values::ZoneOutput zone;
  bool has_zone = false;
  const sword rc = ReadShown("OCIDateTimeGetTime", hndl, err, datetime, {hr, mm, ss, fsec}, &f,
                             &zone, &has_zone);
  if (rc != OCI_SUCCESS) return rc;
  *hr = static_cast<ub1>(f.hour);
  *mm = static_cast<ub1>(f.minute);
  *ss = static_cast<ub1>(f.second);
  *fsec = f.nanos;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeGetTimeZoneOffset(void* hndl, OCIError* err, const OCIDateTime* datetime,
                                   sb1* hr, sb1* mm) try {
  DateTimeFields f;
  ocimem::values::ZoneOutput zone;
  bool has_zone = false;
  const sword rc = ReadShown("OCIDateTimeGetTimeZoneOffset", hndl, err, datetime, {hr, mm}, &f,
                             &zone, &has_zone);
  if (rc != OCI_SUCCESS) return rc;
  if (!has_zone) return ocimem::values::FailDate(err, ocimem::values::kOraFieldNotFound);
  *hr = static_cast<sb1>(zone.offset_minutes / 60);
  *mm = static_cast<sb1>(zone.offset_minutes % 60);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeToText(void* hndl, OCIError* err, const OCIDateTime* date, const OraText* fmt,
                        ub1 fmt_length, ub1 fsprec, const OraText* lang_name, size_t lang_length,
                        ub4* buf_size, OraText* buf) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeToText", err, &rc)) return rc;
  ocimem::Env* env = nullptr;
  if ((rc = SessionOf(hndl, &env)) != OCI_SUCCESS) return rc;
  const DateTimeDescriptor* d = ocimem::values::AsDateTime(date);
  if (d == nullptr) return ocimem::FailArgument(err, 3);
  if (buf_size == nullptr) return ocimem::FailArgument(err, 9);
  if (buf == nullptr) return ocimem::FailArgument(err, 10);
  if (fsprec > 9) return ocimem::values::FailDate(err, 30088);
  if (!ocimem::values::IsAmerican(lang_name, lang_length)) return ocimem::values::FailLanguage(err);
  std::string_view mask_text;
  if (fmt != nullptr && fmt_length != 0) {
    mask_text = std::string_view(reinterpret_cast<const char*>(fmt), fmt_length);
  } else {
    mask_text = Zoned(d->kind) && d->kind != DateTimeKind::TimestampLtz
                    ? "DD-MON-RR HH.MI.SSXFF AM TZR"
                    : "DD-MON-RR HH.MI.SSXFF AM";
  }
  const ocimem::values::DateMask* mask = nullptr;
  if (int ora = ocimem::values::CachedDateMask(mask_text, &mask)) {
    return ocimem::values::FailDate(err, ora);
  }
  Zone session;
  if (d->kind == DateTimeKind::TimestampLtz &&
      (rc = SessionZone(env, err, &session)) != OCI_SUCCESS) {
    return rc;
  }
  ocimem::values::ZoneOutput zone;
  bool has_zone = false;
  const DateTimeFields f = Shown(*d, session, &zone, &has_zone);
  if (mask->fixed) {
    char fixed[ocimem::values::kFixedTextRoom];
    const int n = ocimem::values::FormatFixedText(*mask, f, true, fsprec, fixed);
    if (n >= 0) {
      return ocimem::values::CopyText(err, fixed, static_cast<std::size_t>(n), buf_size, buf);
    }
  }
  thread_local std::string text;  // keeps its buffer from call to call
  if (int ora = ocimem::values::FormatDateTime(*mask, f, true, fsprec, has_zone ? &zone : nullptr,
                                               &text)) {
    return ocimem::values::FailDate(err, ora);
  }
  return ocimem::values::CopyText(err, text, buf_size, buf);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIDateTimeFromText(void* hndl, OCIError* err, const OraText* date_str, size_t dstr_length,
                          const OraText* fmt, ub1 fmt_length, const OraText* lang_name,
                          size_t lang_length, OCIDateTime* date) try {
  sword rc;
  if (ocimem::Enter("OCIDateTimeFromText", err, &rc)) return rc;
  ocimem::Env* env = nullptr;
  if ((rc = SessionOf(hndl, &env)) != OCI_SUCCESS) return rc;
  if (date_str == nullptr) return ocimem::FailArgument(err, 3);
  DateTimeDescriptor* d = ocimem::values::AsDateTime(date);
  if (d == nullptr) return ocimem::FailArgument(err, 9);
  if (!ocimem::values::IsAmerican(lang_name, lang_length)) return ocimem::values::FailLanguage(err);
  // Oracle's NLS_TIMESTAMP_FORMAT and NLS_TIMESTAMP_TZ_FORMAT for territory AMERICA.
  std::string_view mask_text = d->kind == DateTimeKind::TimestampTz
                                   ? "DD-MON-RR HH.MI.SSXFF AM TZR"
                                   : "DD-MON-RR HH.MI.SSXFF AM";
  if (fmt != nullptr && fmt_length != 0) {
    mask_text = std::string_view(reinterpret_cast<const char*>(fmt), fmt_length);
  }
  const ocimem::values::DateMask* mask = nullptr;
  if (int ora = ocimem::values::CachedDateMask(mask_text, &mask)) {
    return ocimem::values::FailDate(err, ora);
  }
  ocimem::values::DateParseOptions options;
  options.allow_fraction = true;
  options.allow_zone = Zoned(d->kind);
  if (mask->needs_clock) {
    options.current_year = ocimem::values::CurrentYear();
    options.current_month = ocimem::values::CurrentMonth();
  }
  DateTimeFields f;
  ocimem::values::ZoneInput zone_in;
  const std::string_view text(reinterpret_cast<const char*>(date_str), dstr_length);
  if (int ora = ocimem::values::ParseDateTime(text, *mask, options, &f, &zone_in)) {
    return ocimem::values::FailDate(err, ora);
  }
  Zone given;
  if (zone_in.present) {
    if (zone_in.is_region) {
      if (int ora = ocimem::values::ResolveZoneText(zone_in.region, &given)) {
        return ocimem::values::FailDate(err, ora);
      }
    } else {
      given.offset_minutes = zone_in.offset_minutes;
    }
  }
  // A TZD after a plain offset carries no information and is ignored.
  const std::string_view abbreviation = given.is_region ? zone_in.abbreviation : std::string_view{};
  Zone session;
  if (Zoned(d->kind) && !zone_in.present &&
      (rc = SessionZone(env, err, &session)) != OCI_SUCCESS) {
    return rc;
  }
  if (int ora = StoreLocal(d, f, zone_in.present ? &given : nullptr, abbreviation, session)) {
    return ocimem::values::FailDate(err, ora);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

}  // extern "C"
