#include "scalar_def.h"

namespace coldef {
namespace {

// "YYYY-MM-DD HH24:MI:SS": the part of every DATE and TIMESTAMP text before the fraction.
constexpr unsigned kDateTimeTextSize = 19;

// ".FF" writes the point and fs_precision digits; with precision 0 the adapter leaves it out.
unsigned FractionSize(unsigned fs_precision) { return fs_precision == 0 ? 0 : 1 + fs_precision; }

bool IsNational(const MemberDescription& m) { return m.charset_form == SQLCS_NCHAR; }

}  // namespace

bool IsObjectCode(OCITypeCode typecode) { return typecode == OCI_TYPECODE_OBJECT; }

bool IsCollectionCode(OCITypeCode typecode) {
  return typecode == OCI_TYPECODE_NAMEDCOLLECTION;
}

// Every type code whose value an instance holds as an OCINumber.
bool IsNumericCode(OCITypeCode typecode) {
  switch (typecode) {
    case OCI_TYPECODE_NUMBER:
    case OCI_TYPECODE_INTEGER:
    case OCI_TYPECODE_FLOAT:
    case OCI_TYPECODE_DECIMAL:
    case OCI_TYPECODE_REAL:
    case OCI_TYPECODE_DOUBLE:
    case OCI_TYPECODE_SMALLINT:
    case OCI_TYPECODE_OCTET:
    case OCI_TYPECODE_SIGNED8:
    case OCI_TYPECODE_SIGNED16:
    case OCI_TYPECODE_SIGNED32:
    case OCI_TYPECODE_UNSIGNED8:
    case OCI_TYPECODE_UNSIGNED16:
    case OCI_TYPECODE_UNSIGNED32:
      return true;
    default:
      return false;
  }
}

bool HasCharsetForm(OCITypeCode typecode) {
  return typecode == OCI_TYPECODE_VARCHAR || typecode == OCI_TYPECODE_VARCHAR2 ||
         typecode == OCI_TYPECODE_CHAR || typecode == OCI_TYPECODE_CLOB;
}

bool HasFsPrecision(OCITypeCode typecode) {
  return typecode == OCI_TYPECODE_TIMESTAMP || typecode == OCI_TYPECODE_TIMESTAMP_TZ ||
         typecode == OCI_TYPECODE_TIMESTAMP_LTZ || typecode == OCI_TYPECODE_INTERVAL_DS;
}

bool HasLfPrecision(OCITypeCode typecode) {
  return typecode == OCI_TYPECODE_INTERVAL_YM || typecode == OCI_TYPECODE_INTERVAL_DS;
}

// "YYYY-MM-DD HH24:MI:SS[.FF]", and " TZR TZD" for WITH TIME ZONE. WITH LOCAL TIME ZONE is
// written without its zone.
unsigned TimestampTextSize(OCITypeCode typecode, unsigned fs_precision) {
  unsigned size = kDateTimeTextSize + FractionSize(fs_precision);
  if (typecode == OCI_TYPECODE_TIMESTAMP_TZ) {
    size += 1 + kZoneRegionRoom + 1 + kZoneAbbreviationRoom;
  }
  return size;
}

// A sign, the leading field padded to its precision, then "-MM" (YEAR TO MONTH) or
// " HH:MI:SS[.F...]" (DAY TO SECOND).
unsigned IntervalTextSize(OCITypeCode typecode, unsigned lf_precision, unsigned fs_precision) {
  if (typecode == OCI_TYPECODE_INTERVAL_YM) return 1 + lf_precision + 3;
  return 1 + lf_precision + 9 + FractionSize(fs_precision);
}

void FillScalarDef(const MemberDescription& m, Column_Def* def) {
  def->Flags = COLDEF_DEFINED;
  def->DataSize = m.data_size;
  const OCITypeCode tc = m.typecode;
  if (IsNumericCode(tc)) {
    // As text, with the precision and scale the adapter builds its number mask from.
    def->DataType = SQLT_NUM;
    def->ExtType = SQLT_STR;
    def->Precision = m.precision;
    def->Scale = m.scale;
    return;
  }
  switch (tc) {
    case OCI_TYPECODE_VARCHAR:
    case OCI_TYPECODE_VARCHAR2:
      def->DataType = IsNational(m) ? OCI_TYPECODE_NVARCHAR2 : SQLT_CHR;
      break;
    case OCI_TYPECODE_CHAR:
      def->DataType = IsNational(m) ? OCI_TYPECODE_NCHAR : SQLT_AFC;
      break;
    case OCI_TYPECODE_CLOB:
      def->DataType = IsNational(m) ? OCI_TYPECODE_NCLOB : SQLT_CLOB;
      break;
    case OCI_TYPECODE_BLOB:
      def->DataType = SQLT_BLOB;
      break;
    case OCI_TYPECODE_RAW:
      def->DataType = SQLT_BIN;
      break;
    case OCI_TYPECODE_DATE:
      // ExtType 12 with DisplaySize 19 selects "YYYY-MM-DD HH24:MI:SS".
      def->DataType = SQLT_DAT;
      def->DisplaySize = kDateTimeTextSize;
      break;
    case OCI_TYPECODE_TIMESTAMP:
    case OCI_TYPECODE_TIMESTAMP_TZ:
    case OCI_TYPECODE_TIMESTAMP_LTZ:
      def->DataType = tc;
      def->ExtType = SQLT_STR;
      def->Scale = m.fs_precision;
      def->DisplaySize = TimestampTextSize(tc, m.fs_precision);
      return;
    case OCI_TYPECODE_INTERVAL_YM:
    case OCI_TYPECODE_INTERVAL_DS: {
      const ub1 fs_precision = tc == OCI_TYPECODE_INTERVAL_DS ? m.fs_precision : ub1{0};
      def->DataType = tc;
      def->ExtType = SQLT_STR;
      def->Precision = m.lf_precision;
      def->Scale = fs_precision;
      def->DisplaySize = IntervalTextSize(tc, m.lf_precision, fs_precision);
      return;
    }
    default:
      // REF (110) and BFILE (114) have type codes equal to their SQLT_ codes; every other
      // code is one the adapter does not convert. Either way the code is kept, so that the
      // adapter refuses the member as an unsupported data type.
      def->DataType = tc;
      break;
  }
  // Text, LOB, RAW and DATE values travel in their own form.
  def->ExtType = static_cast<short>(def->DataType);
}

}  // namespace coldef
