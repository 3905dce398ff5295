// What describe reports for the value type of a type attribute, a collection element or a
// column, and the getter of the attribute and element parameters.
#include "describe/describe_attr.h"

namespace ocimem {

// The SQLT_ code describe reports as OCI_ATTR_DATA_TYPE.
ub2 DataType(const ValueType& v) {
  switch (v.kind) {
    case ValueKind::kNumber:
      return SQLT_NUM;
    case ValueKind::kDate:
      return SQLT_DAT;
    case ValueKind::kString:
      return v.typecode == OCI_TYPECODE_CHAR ? SQLT_AFC : SQLT_CHR;
    case ValueKind::kRaw:
      return SQLT_BIN;
    case ValueKind::kRef:
      return SQLT_REF;
    case ValueKind::kObject:
    case ValueKind::kCollection:
      return SQLT_NTY;
    default:
      return v.typecode;  // LOB, TIMESTAMP and INTERVAL codes equal their SQLT_ codes
  }
}

ub2 DataSize(const ValueType& v) {
  switch (v.kind) {
    case ValueKind::kNumber:
      return 22;
    case ValueKind::kDate:
      return 7;
    case ValueKind::kString: {
      // VARCHAR2(n CHAR) reports the bytes n characters may take in AL32UTF8; NCHAR and
      // NVARCHAR2(n), always counted in characters, two bytes each in AL16UTF16.
      ub4 bytes = v.charset_form == SQLCS_NCHAR ? v.length * 2
                  : v.char_semantics           ? v.length * 4
                                               : v.length;
      return static_cast<ub2>(bytes > 0xffff ? 0xffff : bytes);
    }
    case ValueKind::kRaw:
      return static_cast<ub2>(v.length);
    case ValueKind::kDateTime:
      return v.typecode == OCI_TYPECODE_TIMESTAMP_TZ ? 13 : 11;
    case ValueKind::kInterval:
      return v.typecode == OCI_TYPECODE_INTERVAL_YM ? 5 : 11;
    default:
      return 0;  // LOB locators, REFs, objects and collections: no fixed size reported
  }
}

void Precision(const ValueType& v, ub1* precision, sb1* scale) {
  *precision = 0;
  *scale = 0;
  switch (v.kind) {
    case ValueKind::kNumber:
      switch (v.typecode) {
        case OCI_TYPECODE_INTEGER:
        case OCI_TYPECODE_SMALLINT:
          *precision = 38;
          return;
        case OCI_TYPECODE_FLOAT:
          *precision = static_cast<ub1>(v.precision != 0 ? v.precision : 126);
          *scale = -127;
          return;
        case OCI_TYPECODE_REAL:
          *precision = 63;
          *scale = -127;
          return;
        case OCI_TYPECODE_DOUBLE:
          *precision = 126;
          *scale = -127;
          return;
        default:
          *precision = static_cast<ub1>(v.precision);
          *scale = v.scale;
          return;
      }
    case ValueKind::kDateTime:
      *scale = static_cast<sb1>(v.fraction_precision);
      return;
    case ValueKind::kInterval:
      *precision = v.leading_precision;
      if (v.typecode == OCI_TYPECODE_INTERVAL_DS) *scale = static_cast<sb1>(v.fraction_precision);
      return;
    default:
      return;
  }
}

sword ValueAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err) {
  const ValueType& v = *p.value;
  ub1 precision = 0;
  sb1 scale = 0;
  Precision(v, &precision, &scale);
  bool character = v.kind == ValueKind::kString ||
                   (v.kind == ValueKind::kLob && v.typecode == OCI_TYPECODE_CLOB);
  switch (attrtype) {
    case OCI_ATTR_NAME:
      return PutTextAttr(attributep, sizep, p.name);
    case OCI_ATTR_TYPECODE:
      return PutAttr<OCITypeCode>(attributep, sizep, v.typecode);
    case OCI_ATTR_DATA_TYPE:
      return PutAttr<ub2>(attributep, sizep, DataType(v));
    case OCI_ATTR_DATA_SIZE:
      return PutAttr<ub2>(attributep, sizep, DataSize(v));
    case OCI_ATTR_PRECISION:
      return PutAttr<ub1>(attributep, sizep, precision);
    case OCI_ATTR_SCALE:
      return PutAttr<sb1>(attributep, sizep, scale);
    case OCI_ATTR_TYPE_NAME:
      return PutTextAttr(attributep, sizep, p.type_name);
    case OCI_ATTR_SCHEMA_NAME:
      return PutTextAttr(attributep, sizep, p.schema);
    case OCI_ATTR_CHARSET_FORM:
      return PutAttr<ub1>(attributep, sizep, character ? v.charset_form : ub1{0});
    case OCI_ATTR_CHARSET_ID:
      // The database character set AL32UTF8 (873), the national one AL16UTF16 (2000).
      return PutAttr<ub2>(attributep, sizep,
                          !character                      ? ub2{0}
                          : v.charset_form == SQLCS_NCHAR ? ub2{2000}
                                                          : ub2{873});
    case OCI_ATTR_FSPRECISION:
      return PutAttr<ub1>(attributep, sizep, v.fraction_precision);
    case OCI_ATTR_LFPRECISION:
      return PutAttr<ub1>(attributep, sizep, v.leading_precision);
    case OCI_ATTR_CHAR_USED:
      // National character types are always counted in characters.
      return PutAttr<ub1>(attributep, sizep,
                          v.kind == ValueKind::kString &&
                                  (v.char_semantics || v.charset_form == SQLCS_NCHAR)
                              ? ub1{1}
                              : ub1{0});
    case OCI_ATTR_CHAR_SIZE:
      return PutAttr<ub2>(attributep, sizep,
                          static_cast<ub2>(v.kind == ValueKind::kString ? v.length : 0));
    case OCI_ATTR_REF_TDO:
      return PutRefTdo(p, v.named, attributep, sizep, err);  // object and collection types
    case OCI_ATTR_NUM_ELEMS:
      if (p.ptype != OCI_PTYPE_TYPE_COLL) return IllegalAttribute(err);
      return PutAttr<ub4>(attributep, sizep, p.num_elems);  // 0 for a nested table
    default:
      return IllegalAttribute(err);
  }
}

}  // namespace ocimem
