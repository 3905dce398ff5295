// ALTER SESSION SET: the NLS formats and the time zone of the session. Every setting is
// checked before any takes effect, so a statement that fails changes nothing.
#include <memory>
#include <string_view>

#include "sql/sql_exec.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/oci_common.h"

namespace ocimem {
namespace {

bool SetFormat(const AlterSessionStatement::Setting& setting, std::string* format,
               SqlError* error) {
  const values::DateMask* mask = nullptr;
  if (int ora = values::CachedDateMask(setting.value, &mask)) {
    return SetError(error, ora, values::DateErrorText(ora));
  }
  *format = setting.value;
  return true;
}

bool SetTimeZone(const AlterSessionStatement::Setting& setting, std::string* zone,
                 SqlError* error) {
  if (!setting.quoted) {
    // LOCAL: the zone the session started with; DBTIMEZONE: the database's.
    if (setting.value == "LOCAL") {
      zone->clear();
      return true;
    }
    if (setting.value == "DBTIMEZONE") {
      *zone = "DBTIMEZONE";
      return true;
    }
    return SetError(error, 922, "missing or invalid option");
  }
  values::Zone resolved;
  if (int ora = values::ResolveZoneText(setting.value, &resolved)) {
    return SetError(error, ora, values::DateErrorText(ora));
  }
  *zone = setting.value;
  return true;
}

bool SameLetters(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    const char x = a[i] >= 'a' && a[i] <= 'z' ? static_cast<char>(a[i] - 'a' + 'A') : a[i];
    if (x != b[i]) return false;
  }
  return true;
}

// NLS_LANGUAGE and NLS_TERRITORY: only the settings every session already has.
bool KeepLanguage(const AlterSessionStatement::Setting& setting, const char* only,
                  SqlError* error) {
  if (SameLetters(setting.value, only)) return true;
  return SetError(error, 12705, "Cannot access NLS data files or invalid environment specified");
}

}  // namespace

bool AlterSession(const ExecContext& ctx, const AlterSessionStatement& s, SqlError* error) {
  auto nls = std::make_shared<SessionNls>(*ctx.session->nls);
  for (const AlterSessionStatement::Setting& setting : s.settings) {
    bool ok;
    if (setting.name == "NLS_DATE_FORMAT") {
      ok = SetFormat(setting, &nls->date_format, error);
    } else if (setting.name == "NLS_TIMESTAMP_FORMAT") {
      ok = SetFormat(setting, &nls->timestamp_format, error);
    } else if (setting.name == "NLS_TIMESTAMP_TZ_FORMAT") {
      ok = SetFormat(setting, &nls->timestamp_tz_format, error);
    } else if (setting.name == "TIME_ZONE") {
      ok = SetTimeZone(setting, &nls->time_zone, error);
    } else if (setting.name == "NLS_LANGUAGE") {
      ok = KeepLanguage(setting, "AMERICAN", error);
    } else if (setting.name == "NLS_TERRITORY") {
      ok = KeepLanguage(setting, "AMERICA", error);
    } else {
      ok = SetError(error, 2248, "invalid option for ALTER SESSION");
    }
    if (!ok) return false;
  }
  ctx.session->nls = std::move(nls);
  return true;
}

}  // namespace ocimem
