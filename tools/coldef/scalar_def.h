// What describe reports about one attribute or collection element, and how a scalar one
// becomes a Column_Def: the adapter's DataType code and the external form, sizes, precision
// and scale that a host asks for. Pure functions, no OCI calls.
#ifndef TOOLS_COLDEF_SCALAR_DEF_H
#define TOOLS_COLDEF_SCALAR_DEF_H

#include <string>

#include "coldef.h"

namespace coldef {

// One attribute of an object type or the element of a collection type, copied out of its
// describe parameter. Only the fields that belong to the type code are read from Oracle;
// the others stay 0.
struct MemberDescription {
  std::string name;  // attribute name as stored; empty for a collection element
  OCITypeCode typecode = 0;
  ub2 data_size = 0;
  ub1 precision = 0;
  sb1 scale = 0;
  ub1 fs_precision = 0;
  ub1 lf_precision = 0;
  ub1 charset_form = 0;
  std::string type_schema;  // object and collection members: their type and its owner
  std::string type_name;
};

// Room kept in a TIMESTAMP WITH TIME ZONE text for the region name (TZR) and for its
// abbreviation (TZD). The longest region names of the time zone database have 30 to 32
// characters (America/Argentina/ComodRivadavia); twice that leaves margin for names to come.
constexpr unsigned kZoneRegionRoom = 64;
constexpr unsigned kZoneAbbreviationRoom = 16;

// Which describe attributes a member of this type code carries.
bool IsObjectCode(OCITypeCode typecode);
bool IsCollectionCode(OCITypeCode typecode);
bool IsNumericCode(OCITypeCode typecode);
bool HasCharsetForm(OCITypeCode typecode);
bool HasFsPrecision(OCITypeCode typecode);
bool HasLfPrecision(OCITypeCode typecode);

// The longest text the adapter's masks give for a TIMESTAMP of this kind and precision, and
// the longest text OCIIntervalToText gives for an INTERVAL of these precisions.
unsigned TimestampTextSize(OCITypeCode typecode, unsigned fs_precision);
unsigned IntervalTextSize(OCITypeCode typecode, unsigned lf_precision, unsigned fs_precision);

// Fills the fields of a scalar member's record except its names and links: Flags,
// DataType, ExtType, DataSize, DisplaySize, Precision and Scale.
void FillScalarDef(const MemberDescription& member, Column_Def* def);

}  // namespace coldef

#endif  // TOOLS_COLDEF_SCALAR_DEF_H
