// A session's NLS settings: the formats SQL uses to turn dates and timestamps into text and
// back when no mask is given, and the session time zone, as ALTER SESSION sets them. A
// session starts with Oracle's defaults for AMERICAN_AMERICA; ALTER SESSION replaces the
// whole record, so that a statement keeps the settings it was executed under.
#ifndef OCIMEM_SRC_SESSION_SESSION_NLS_H
#define OCIMEM_SRC_SESSION_SESSION_NLS_H

#include <memory>
#include <string>

namespace ocimem {

struct SessionNls {
  std::string date_format = "DD-MON-RR";
  std::string timestamp_format = "DD-MON-RR HH.MI.SSXFF AM";
  std::string timestamp_tz_format = "DD-MON-RR HH.MI.SSXFF AM TZR";
  // The session time zone as SESSIONTIMEZONE shows it; empty: the client's own, taken
  // from ORA_SDTZ or the operating system when it is asked for.
  std::string time_zone;
};

// The settings a new session starts with (shared, never changed).
std::shared_ptr<const SessionNls> DefaultNls();

// The settings of the statement being executed or fetched on this thread (the defaults
// outside one). SQL's conversions without a mask read them.
const SessionNls& CurrentNls();

// Makes `nls` the current settings of this thread for its lifetime.
class ScopedNls {
 public:
  explicit ScopedNls(const SessionNls* nls);
  ~ScopedNls();
  ScopedNls(const ScopedNls&) = delete;
  ScopedNls& operator=(const ScopedNls&) = delete;

 private:
  const SessionNls* previous_;
};

// SESSIONTIMEZONE and DBTIMEZONE as SQL shows them; 0 or the ORA error of a session time
// zone that cannot be resolved.
int SessionTimeZoneText(const SessionNls& nls, std::string* out);
std::string DbTimeZoneText();

}  // namespace ocimem

#endif  // OCIMEM_SRC_SESSION_SESSION_NLS_H
