#include "oci_common.h"

#include <cstring>

#include "session/internal.h"
#include "calendar.h"
#include "date_format.h"

namespace ocimem::values {

bool IsAmerican(const oratext* lang, std::size_t length) {
  if (lang == nullptr || length == 0) return true;
  static constexpr std::string_view kAmerican = "AMERICAN";
  if (length != kAmerican.size()) return false;
  for (std::size_t i = 0; i < length; ++i) {
    const oratext c = lang[i];
    if ((c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c) != kAmerican[i]) return false;
  }
  return true;
}

sword FailLanguage(OCIError* err) {
  return Fail(err, 12705, "Cannot access NLS data files or invalid environment specified");
}

sword FailDate(OCIError* err, int ora) { return Fail(err, ora, DateErrorText(ora)); }

sword SessionZone(const Env* env, OCIError* err, Zone* zone) {
  if (int ora = ResolveSessionZone(env->session_time_zone, zone)) return FailDate(err, ora);
  return OCI_SUCCESS;
}

int CheckOciDate(const OCIDate& d) {
  if (d.OCIDateYYYY == 0 || d.OCIDateYYYY < kMinYear || d.OCIDateYYYY > kMaxYear) {
    return kOraBadYear;
  }
  if (d.OCIDateMM < 1 || d.OCIDateMM > 12) return kOraBadMonth;
  if (d.OCIDateDD < 1 || d.OCIDateDD > 31) return kOraBadDay;
  if (!IsValidDate(d.OCIDateYYYY, d.OCIDateMM, d.OCIDateDD)) return kOraDayNotValidForMonth;
  if (d.OCIDateTime.OCITimeHH > 23) return kOraBadHour;
  if (d.OCIDateTime.OCITimeMI > 59) return kOraBadMinute;
  if (d.OCIDateTime.OCITimeSS > 59) return kOraBadSecond;
  return 0;
}

std::string_view MaskOrDefault(const oratext* fmt, std::size_t length) {
  if (fmt == nullptr || length == 0) return "DD-MON-YY";
  return std::string_view(reinterpret_cast<const char*>(fmt), length);
}

int CachedDateMask(std::string_view text, const DateMask** out) {
  thread_local MaskCache<DateMask, ParseDateMask> cache;
  return cache.Get(text, out);
}

sword CopyText(OCIError* err, const char* text, std::size_t length, ub4* buf_size, oratext* buf) {
  if (length > *buf_size) return FailDate(err, 1877);
  std::memcpy(buf, text, length);
  if (length < *buf_size) buf[length] = '\0';
  *buf_size = static_cast<ub4>(length);
  return OCI_SUCCESS;
}

}  // namespace ocimem::values
