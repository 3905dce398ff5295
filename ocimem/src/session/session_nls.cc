#include "session/session_nls.h"

#include <cstdio>
#include <cstdlib>

#include "values/datetime.h"

namespace ocimem {
namespace {

thread_local const SessionNls* g_current = nullptr;

std::string OffsetText(int minutes) {
  char buf[16];
  const char sign = minutes < 0 ? '-' : '+';
  if (minutes < 0) minutes = -minutes;
  std::snprintf(buf, sizeof buf, "%c%02d:%02d", sign, minutes / 60, minutes % 60);
  return buf;
}

}  // namespace

std::shared_ptr<const SessionNls> DefaultNls() {
  static const std::shared_ptr<const SessionNls> defaults = std::make_shared<SessionNls>();
  return defaults;
}

const SessionNls& CurrentNls() {
  if (g_current != nullptr) return *g_current;
  static const SessionNls defaults;
  return defaults;
}

ScopedNls::ScopedNls(const SessionNls* nls) : previous_(g_current) {
  if (nls != nullptr) g_current = nls;
}

ScopedNls::~ScopedNls() { g_current = previous_; }

int SessionTimeZoneText(const SessionNls& nls, std::string* out) {
  values::Zone zone;
  if (int ora = values::ResolveSessionZone(nls.time_zone, &zone)) return ora;
  *out = zone.is_region ? zone.region : OffsetText(zone.offset_minutes);
  return 0;
}

// The database time zone of every in-memory database.
std::string DbTimeZoneText() { return "+00:00"; }

}  // namespace ocimem
