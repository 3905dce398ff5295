// Time zone regions from the system's zoneinfo database (TZif files, Debian
// package tzdata), looked up case-insensitively, and plain UTC offsets.
#ifndef OCIMEM_VALUES_TIMEZONE_H
#define OCIMEM_VALUES_TIMEZONE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ocimem::values {

struct LocalTimeType {
  int offset_seconds = 0;
  bool is_dst = false;
  std::string abbreviation;
};

// One region's rules: explicit transitions, then the POSIX rule of the
// file's footer for later instants.
class ZoneRules {
 public:
  static std::unique_ptr<ZoneRules> FromTzif(const std::string& bytes);

  LocalTimeType At(std::int64_t unix_seconds) const;

  // Instants whose local time is `local` (seconds since 1970 on the local
  // clock): none in a gap, two in an overlap (earlier first).
  std::vector<std::int64_t> FromLocal(std::int64_t local) const;

 private:
  struct Rule;  // POSIX TZ footer
  LocalTimeType FromFooter(std::int64_t unix_seconds) const;

  std::vector<std::int64_t> transitions_;
  std::vector<std::uint8_t> transition_types_;
  std::vector<LocalTimeType> types_;
  std::shared_ptr<Rule> footer_;
};

// The rules of a region, or nullptr when no zoneinfo file has that name
// (any case). The zoneinfo directory is $TZDIR or /usr/share/zoneinfo.
const ZoneRules* FindRegion(std::string_view name);

// Parses "[+|-]hh:mm" (one-digit hours allowed). 0, ORA-01874 or ORA-01875;
// -1 when the text is not an offset at all.
int ParseOffset(std::string_view text, int* minutes);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_TIMEZONE_H
