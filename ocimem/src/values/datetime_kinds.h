// How each kind of datetime descriptor keeps its value: DATE and TIMESTAMP
// local fields without a zone, TIMESTAMP WITH TIME ZONE local fields in the
// value's own zone, TIMESTAMP WITH LOCAL TIME ZONE the UTC instant, shown in
// the session time zone.
#ifndef OCIMEM_VALUES_DATETIME_KINDS_H
#define OCIMEM_VALUES_DATETIME_KINDS_H

#include <string_view>

#include "datetime.h"
#include "datetime_arith.h"
#include "descriptor.h"

namespace ocimem::values {

bool IsZonedKind(DateTimeKind k);

// Stores local fields (read or constructed) into a descriptor of any kind:
// for the zoned kinds they are local time in `given`, or in `session` when
// `given` is nullptr. 0 or the ORA error of MakeZonedValue.
int StoreLocal(DateTimeDescriptor* d, DateTimeFields local, const Zone* given,
               std::string_view abbreviation, const Zone& session);

// The fields a caller sees and the zone they are shown with. `session` is read
// only for a LOCAL TIME ZONE value.
DateTimeFields Shown(const DateTimeDescriptor& d, const Zone& session, ZoneOutput* zone,
                     bool* has_zone);

// Where a value lies on the time line: its UTC instant for the zoned kinds,
// its own fields for DATE and TIMESTAMP.
TimePoint PointOf(const DateTimeDescriptor& d);

// The value of kind `kind` whose point (as PointOf sees it) has the fields
// `point`; a TIMESTAMP WITH TIME ZONE keeps the zone of `like`, its offset
// following the region's rules at the new instant.
DateTimeValue ValueAtPoint(DateTimeKind kind, const DateTimeValue& like,
                           const DateTimeFields& point);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DATETIME_KINDS_H
