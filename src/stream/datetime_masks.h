// Oracle format models of DATE and TIMESTAMP text, shared by both
// directions of the conversion.
#ifndef SRC_STREAM_DATETIME_MASKS_H_
#define SRC_STREAM_DATETIME_MASKS_H_

#include <oci.h>

static constexpr char ADP_DATE_MASK_FULL[] = "YYYY-MM-DD HH24:MI:SS";
static constexpr char ADP_DATE_MASK_SHORT[] = "DD-MON-YY";

// With fractional seconds when the scale is not 0; with the zone only for
// TIMESTAMP WITH TIME ZONE (WITH LOCAL TIME ZONE is written without it).
inline const char* AdpTimestampMask(ub2 nDataType, short nScale) {
  const bool bZone = nDataType == SQLT_TIMESTAMP_TZ;
  if (nScale != 0) {
    return bZone ? "YYYY-MM-DD HH24:MI:SS.FF TZR TZD" : "YYYY-MM-DD HH24:MI:SS.FF";
  }
  return bZone ? "YYYY-MM-DD HH24:MI:SS TZR TZD" : "YYYY-MM-DD HH24:MI:SS";
}

#endif  // SRC_STREAM_DATETIME_MASKS_H_
